// The encoding kernels for processors with AVX2.
//
// UTF-8 is built without branches on the length of a code point: 16 units get lanes of two bytes each (or, if some need
// three, of four), the code's bytes stand at the end of the lane, and a byte shuffle squeezes the unused ones out. The
// shuffle comes from a table, chosen by the lengths of the units in 128 bits.
//
// A surrogate pair need not be brought together for that: of its four bytes the first two depend on the high surrogate
// alone, the last two on the low one and the lowest two bits of the high one. So each half is turned into a `payload`
// whose lowest twelve bits make two bytes, and every unit stands for one to three bytes:
//
//     unit             payload                            bytes (x: six payload bits each, from the top)
//     < 0x80           the unit                           the unit
//     < 0x800          the unit                           110xxxxx 10xxxxxx
//     high surrogate   (unit - 0xD7C0) >> 2               11110xxx 10xxxxxx
//     low surrogate    unit & 0x3FF | (high & 3) << 10    10xxxxxx 10xxxxxx
//     other            the unit                           1110xxxx 10xxxxxx 10xxxxxx
//
// (0xD7C0 is 0xD800 - (0x10000 >> 10), which adds the 0x10000 that pairs are counted from.) Lone surrogates become
// U+FFFD by a blend before; malformed text takes the same path as any other. The last units of a text, fewer than a
// block and its neighbours, are left to the 128-bit loops.

#include "kernels/EncodeConstants.h"
#include "kernels/EncodeNarrow.h"
#include "kernels/Kernels.h"

#include <immintrin.h>

namespace qvxsys::text::avx2 {

namespace {

constexpr EncodeConstants const& constants = encodeConstants;

/// Shuffles for 16 bytes. The unused ends of the rows point at nothing (and give zeros).
template<std::size_t Rows>
struct ShuffleTable
{
    alignas(16) std::uint8_t rows[Rows][16];
    std::uint8_t lengths[Rows]; // bytes used
};

/// For eight lanes of two bytes: bit k of the row number is set if lane k uses only its second byte.
constexpr ShuffleTable<256> MakeWordShuffles() noexcept
{
    ShuffleTable<256> table{};
    for (unsigned row = 0; row < 256; ++row) {
        unsigned used = 0;
        for (unsigned lane = 0; lane < 8; ++lane) {
            if ((row >> lane & 1) == 0)
                table.rows[row][used++] = static_cast<std::uint8_t>(2 * lane);
            table.rows[row][used++] = static_cast<std::uint8_t>(2 * lane + 1);
        }
        table.lengths[row] = static_cast<std::uint8_t>(used);
        while (used < 16)
            table.rows[row][used++] = 0x80;
    }
    return table;
}

/// For four lanes of four bytes, of which each uses one to four at its end: bit k of the row number is set if the
/// length of lane k is even, bit 4 + k if it is at most two.
constexpr ShuffleTable<256> MakeDwordShuffles() noexcept
{
    ShuffleTable<256> table{};
    for (unsigned row = 0; row < 256; ++row) {
        unsigned used = 0;
        for (unsigned lane = 0; lane < 4; ++lane) {
            unsigned const length = ((row >> (4 + lane) & 1) != 0 ? 1 : 3) + (row >> lane & 1);
            for (unsigned k = 4 - length; k < 4; ++k)
                table.rows[row][used++] = static_cast<std::uint8_t>(4 * lane + k);
        }
        table.lengths[row] = static_cast<std::uint8_t>(used);
        while (used < 16)
            table.rows[row][used++] = 0x80;
    }
    return table;
}

/// For four lanes of two units: bit k of the row number is set if lane k uses both, else it uses the first.
constexpr ShuffleTable<16> MakeUnitShuffles() noexcept
{
    ShuffleTable<16> table{};
    for (unsigned row = 0; row < 16; ++row) {
        unsigned used = 0;
        for (unsigned lane = 0; lane < 4; ++lane)
            for (unsigned k = 0; k < ((row >> lane & 1) != 0 ? 4U : 2U); ++k)
                table.rows[row][used++] = static_cast<std::uint8_t>(4 * lane + k);
        table.lengths[row] = static_cast<std::uint8_t>(used);
        while (used < 16)
            table.rows[row][used++] = 0x80;
    }
    return table;
}

/// For eight lanes of 32 bits: the numbers of those whose bit in the row number is clear.
struct LaneTable
{
    alignas(8) std::uint8_t rows[256][8];
};

constexpr LaneTable MakeLanesKept() noexcept
{
    LaneTable table{};
    for (unsigned row = 0; row < 256; ++row) {
        unsigned used = 0;
        for (unsigned lane = 0; lane < 8; ++lane)
            if ((row >> lane & 1) == 0)
                table.rows[row][used++] = static_cast<std::uint8_t>(lane);
    }
    return table;
}

constexpr ShuffleTable<256> wordShuffles = MakeWordShuffles();
constexpr ShuffleTable<256> dwordShuffles = MakeDwordShuffles();
constexpr ShuffleTable<16> unitShuffles = MakeUnitShuffles();
constexpr LaneTable lanesKept = MakeLanesKept();

inline __m256i Load(void const* p) noexcept
{
    return _mm256_loadu_si256(static_cast<__m256i const*>(p));
}

inline void Store(void* p, __m256i v) noexcept
{
    _mm256_storeu_si256(static_cast<__m256i*>(p), v);
}

inline __m256i Words(unsigned w) noexcept
{
    return _mm256_set1_epi16(static_cast<short>(w));
}

inline __m256i Dwords(unsigned d) noexcept
{
    return _mm256_set1_epi32(static_cast<int>(d));
}

inline __m128i Lower(__m256i v) noexcept
{
    return _mm256_castsi256_si128(v);
}

inline __m128i Upper(__m256i v) noexcept
{
    return _mm256_extracti128_si256(v, 1);
}

inline std::size_t Count(unsigned mask) noexcept
{
    return static_cast<std::size_t>(_mm_popcnt_u32(mask));
}

/// One bit a byte.
inline unsigned ByteMask(__m256i v) noexcept
{
    return static_cast<unsigned>(_mm256_movemask_epi8(v));
}

/// One bit a lane of 32 bits.
inline unsigned DwordMask(__m256i v) noexcept
{
    return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(v)));
}

/// All ones in each word of v whose bits under `mask` are `value` (both given twice in 32 bits).
inline __m256i WordsWith(__m256i v, unsigned mask, unsigned value) noexcept
{
    return _mm256_cmpeq_epi16(_mm256_and_si256(v, Dwords(mask)), Dwords(value));
}

inline __m256i SurrogatesIn(__m256i v) noexcept
{
    return WordsWith(v, constants.notSmall, constants.surrogate);
}

/// The words of two vectors as bytes, the 32-bit values of two vectors as words; they must fit.
inline __m256i NarrowToBytes(__m256i a, __m256i b) noexcept
{
    return _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), _MM_SHUFFLE(3, 1, 2, 0));
}

inline __m256i NarrowToWords(__m256i a, __m256i b) noexcept
{
    return _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), _MM_SHUFFLE(3, 1, 2, 0));
}

/// Shuffles each half of v by its own row.
inline __m256i ShuffleHalves(__m256i v, std::uint8_t const* lower, std::uint8_t const* upper) noexcept
{
    __m256i const rows = _mm256_inserti128_si256(_mm256_castsi128_si256(narrow::Load(lower)), narrow::Load(upper), 1);
    return _mm256_shuffle_epi8(v, rows);
}

/// The halves of surrogate pairs in a block, as masks of words, and the block with lone surrogates made U+FFFD.
struct Pairs
{
    __m256i units;
    __m256i high;
    __m256i low;
    __m256i before; // the unit before each
    __m256i behind; // the unit behind each
};

/// Sorts the surrogates of the block at src[i], behind which there must be a unit.
[[gnu::always_inline]] inline Pairs FindPairs(__m256i v, char16_t const* src, std::size_t i,
                                              std::size_t& substitutions) noexcept
{
    Pairs p{};
    // Nothing stands before the first block: zero.
    p.before = i > 0 ? Load(src + i - 1) : _mm256_alignr_epi8(v, _mm256_permute2x128_si256(v, v, 0x08), 14);
    p.behind = Load(src + i + 1);
    p.high = _mm256_and_si256(WordsWith(v, constants.half, constants.surrogate),
                              WordsWith(p.behind, constants.half, constants.low));
    p.low = _mm256_and_si256(WordsWith(v, constants.half, constants.low),
                             WordsWith(p.before, constants.half, constants.surrogate));
    __m256i const lone = _mm256_andnot_si256(_mm256_or_si256(p.high, p.low), SurrogatesIn(v));
    substitutions += Count(ByteMask(lone)) / 2;
    p.units = _mm256_blendv_epi8(v, Dwords(constants.replacement), lone);
    return p;
}

/// Whether the block is eight pairs.
inline bool IsAllPairs(__m256i v) noexcept
{
    return ByteMask(_mm256_cmpeq_epi32(_mm256_and_si256(v, Dwords(constants.half)), Dwords(constants.pair))) == ~0U;
}

/// Whether the block begins and ends in the middle of a pair and all between are pairs. The loops then go on from one
/// unit further or back, to see eight pairs in each block to come. They do so in this case only: where a block begins
/// would otherwise have to wait for the one before.
inline bool IsAllSplitPairs(Pairs const& p) noexcept
{
    return ByteMask(p.low) == 0x33333333 && ByteMask(p.high) == 0xCCCCCCCC;
}

inline __m256i PointsOfPairs(__m256i v) noexcept
{
    __m256i const bits = _mm256_and_si256(v, Dwords(constants.lowBits));
    __m256i const offsets = _mm256_madd_epi16(bits, Dwords(constants.pairFactors)); // high * 0x400 + low
    return _mm256_add_epi32(offsets, Dwords(constants.pairBase));
}

/// The last two bytes of 16 units, `tags` or-ed to them unless the unit is in the mask `ascii`.
[[gnu::always_inline]] inline __m256i BackBytes(__m256i payload, __m256i tags, __m256i ascii) noexcept
{
    __m256i const lastByte = _mm256_slli_epi16(payload, 8);
    __m256i const fields = _mm256_or_si256(_mm256_and_si256(lastByte, Dwords(constants.upperSix)),
                                           _mm256_and_si256(_mm256_srli_epi16(payload, 6), Dwords(constants.lowerSix)));
    return _mm256_blendv_epi8(_mm256_or_si256(fields, tags), lastByte, ascii);
}

/// Writes 16 units of at most two bytes.
[[gnu::always_inline]] inline char* PutTwoByteUnits(__m256i back, __m256i ascii, char* out) noexcept
{
    unsigned const rows = ByteMask(_mm256_packs_epi16(ascii, ascii));
    unsigned const lower = rows & 0xFF;
    unsigned const upper = rows >> 24;
    __m256i const bytes = ShuffleHalves(back, wordShuffles.rows[lower], wordShuffles.rows[upper]);
    narrow::Store(out, Lower(bytes));
    out += 16 - Count(lower);
    narrow::Store(out, Upper(bytes));
    return out + 16 - Count(upper);
}

/// Writes 16 units of at most three bytes, of which `small` take at most two. Needs room for 52 bytes.
[[gnu::always_inline]] inline char* PutThreeByteUnits(__m256i payload, __m256i back, __m256i ascii, __m256i small,
                                                      char* out) noexcept
{
    __m256i const top = _mm256_and_si256(_mm256_srli_epi16(payload, 4), Dwords(constants.upperFour));
    __m256i const front = _mm256_or_si256(top, Dwords(constants.lead3));
    __m256i const units02 = _mm256_unpacklo_epi16(front, back); // the first and third four units
    __m256i const units13 = _mm256_unpackhi_epi16(front, back);
    // Byte masks 8 even, 8 small, 8 even, 8 small; brought to four times 4 even, 4 small, a row number each.
    __m256i const even = _mm256_xor_si256(ascii, small);
    unsigned const rows = ByteMask(_mm256_shuffle_epi32(_mm256_packs_epi16(even, small), _MM_SHUFFLE(3, 1, 2, 0)));
    if (rows == 0) { // three bytes each: no wait for tables and lengths
        __m256i const bytes02 = ShuffleHalves(units02, dwordShuffles.rows[0], dwordShuffles.rows[0]);
        __m256i const bytes13 = ShuffleHalves(units13, dwordShuffles.rows[0], dwordShuffles.rows[0]);
        narrow::Store(out, Lower(bytes02));
        narrow::Store(out + 12, Lower(bytes13));
        narrow::Store(out + 24, Upper(bytes02));
        narrow::Store(out + 36, Upper(bytes13));
        return out + 48;
    }
    unsigned const row0 = rows & 0xFF;
    unsigned const row1 = rows >> 8 & 0xFF;
    unsigned const row2 = rows >> 16 & 0xFF;
    unsigned const row3 = rows >> 24;
    __m256i const bytes02 = ShuffleHalves(units02, dwordShuffles.rows[row0], dwordShuffles.rows[row2]);
    __m256i const bytes13 = ShuffleHalves(units13, dwordShuffles.rows[row1], dwordShuffles.rows[row3]);
    narrow::Store(out, Lower(bytes02));
    out += dwordShuffles.lengths[row0];
    narrow::Store(out, Lower(bytes13));
    out += dwordShuffles.lengths[row1];
    narrow::Store(out, Upper(bytes02));
    out += dwordShuffles.lengths[row2];
    narrow::Store(out, Upper(bytes13));
    return out + dwordShuffles.lengths[row3];
}

/// The tags of the last two bytes, given which units have two bytes, or are the first halves of pairs.
inline __m256i TagsOf(__m256i two) noexcept
{
    return _mm256_xor_si256(Dwords(constants.wordTagsTrail), _mm256_and_si256(two, Dwords(constants.two)));
}

inline __m256i TagsOf(__m256i two, __m256i high) noexcept
{
    return _mm256_xor_si256(TagsOf(two), _mm256_and_si256(high, Dwords(constants.high)));
}

/// The units that must be left for the UTF-8 encoders: their room of three bytes each is enough for 52, and there is
/// one behind the block.
constexpr std::size_t wholeBlock = 18;

/// 16 units as UTF-8, surrogates as three bytes. `small` marks those below 0x800.
[[gnu::always_inline]] inline char* EncodeUnits(__m256i v, __m256i small, char* out) noexcept
{
    __m256i const ascii = WordsWith(v, constants.notAscii, 0);
    if (ByteMask(small) == ~0U)
        return PutTwoByteUnits(BackBytes(v, Dwords(constants.wordTags2), ascii), ascii, out);
    return PutThreeByteUnits(v, BackBytes(v, TagsOf(small), ascii), ascii, small, out);
}

/// The bits of eight values of up to 0x1FFFFF, six in a byte, the highest first.
inline __m256i FourFields(__m256i v) noexcept
{
    __m256i const last2 = _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi32(v, 24), Dwords(constants.fourthSix)),
                                          _mm256_and_si256(_mm256_slli_epi32(v, 10), Dwords(constants.thirdSix)));
    __m256i const first2 = _mm256_or_si256(_mm256_and_si256(_mm256_srli_epi32(v, 4), Dwords(constants.secondSix)),
                                           _mm256_srli_epi32(v, 18));
    return _mm256_or_si256(last2, first2);
}

/// The 16 units at src[i], surrogates among them, as UTF-8. Moves i behind them.
[[gnu::always_inline]] inline char* EncodeWithPairs(__m256i v, char16_t const* src, std::size_t& i, char* out,
                                                    std::size_t& substitutions) noexcept
{
    if (IsAllPairs(v)) {
        Store(out, _mm256_or_si256(FourFields(PointsOfPairs(v)), Dwords(constants.tags4)));
        i += 16;
        return out + 32;
    }
    Pairs const p = FindPairs(v, src, i, substitutions);
    if (IsAllSplitPairs(p)) [[unlikely]] { // take back the first half of the first one
        --i;
        return out - 2;
    }
    __m256i const high = _mm256_srli_epi16(_mm256_sub_epi16(v, Dwords(constants.highBase)), 2);
    __m256i const low = _mm256_or_si256(_mm256_and_si256(v, Dwords(constants.lowBits)),
                                        _mm256_slli_epi16(_mm256_and_si256(p.before, Dwords(constants.highRest)), 10));
    __m256i const payload = _mm256_blendv_epi8(_mm256_blendv_epi8(p.units, high, p.high), low, p.low);
    __m256i const ascii = WordsWith(p.units, constants.notAscii, 0);
    __m256i const two = WordsWith(p.units, constants.notSmall, 0);
    __m256i const small = _mm256_or_si256(two, _mm256_or_si256(p.high, p.low));
    __m256i const back = BackBytes(payload, TagsOf(two, p.high), ascii);
    if (ByteMask(small) == ~0U)
        out = PutTwoByteUnits(back, ascii, out);
    else
        out = PutThreeByteUnits(payload, back, ascii, small, out);
    i += 16;
    return out;
}

/// Eight values of any size as UTF-8 by the plain rule.
[[gnu::always_inline]] inline char* EncodeValues(__m256i v, char* out) noexcept
{
    __m256i const fits = _mm256_cmpeq_epi32(_mm256_and_si256(v, Dwords(0xFFE00000)), _mm256_setzero_si256());
    v = _mm256_blendv_epi8(Dwords(replacementCharacter), v, fits);
    __m256i const from2 = _mm256_cmpgt_epi32(v, Dwords(0x7F));
    __m256i const from3 = _mm256_cmpgt_epi32(v, Dwords(0x7FF));
    __m256i const from4 = _mm256_cmpgt_epi32(v, Dwords(0xFFFF));
    __m256i const lastByte = _mm256_slli_epi32(v, 24);
    __m256i tags = _mm256_blendv_epi8(Dwords(constants.tags2), Dwords(constants.tags3), from3);
    tags = _mm256_blendv_epi8(tags, Dwords(constants.tags4), from4);
    __m256i const lanes = _mm256_blendv_epi8(lastByte, _mm256_or_si256(FourFields(v), tags), from2);
    unsigned const even = DwordMask(_mm256_xor_si256(_mm256_xor_si256(from2, from3), from4));
    unsigned const small = DwordMask(from3) ^ 0xFF;
    unsigned const lower = (even & 0x0F) | (small << 4 & 0xF0);
    unsigned const upper = even >> 4 | (small & 0xF0);
    __m256i const bytes = ShuffleHalves(lanes, dwordShuffles.rows[lower], dwordShuffles.rows[upper]);
    narrow::Store(out, Lower(bytes));
    out += dwordShuffles.lengths[lower];
    narrow::Store(out, Upper(bytes));
    return out + dwordShuffles.lengths[upper];
}

/// Eight units (words `v`, with the words behind them and the masks of pair halves) as code points.
[[gnu::always_inline]] inline char32_t* CombinePairs(__m128i v, __m128i behind, __m128i high, __m128i low,
                                                     char32_t* out) noexcept
{
    __m256i const units = _mm256_cvtepu16_epi32(v);
    __m256i const sum = _mm256_add_epi32(_mm256_slli_epi32(units, 10), _mm256_cvtepu16_epi32(behind));
    __m256i const pair = _mm256_sub_epi32(sum, Dwords((0xD800U << 10) + 0xDC00U - 0x10000U));
    __m256i const points = _mm256_blendv_epi8(units, pair, _mm256_cvtepi16_epi32(high));
    unsigned const dropped = DwordMask(_mm256_cvtepi16_epi32(low));
    __m128i const row = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(lanesKept.rows[dropped]));
    Store(out, _mm256_permutevar8x32_epi32(points, _mm256_cvtepu8_epi32(row)));
    return out + 8 - Count(dropped);
}

/// Eight values as UTF-16, with what it cannot hold made U+FFFD.
template<bool Raw>
[[gnu::always_inline]] inline char16_t* NarrowValues(__m256i v, char16_t* out, std::size_t& substitutions) noexcept
{
    // Signed comparisons: values from 0x80000000 up are negative.
    __m256i bad = _mm256_or_si256(_mm256_cmpgt_epi32(v, Dwords(0x10FFFF)), _mm256_srai_epi32(v, 31));
    if (!Raw)
        bad = _mm256_or_si256(bad, _mm256_cmpeq_epi32(_mm256_and_si256(v, Dwords(0xFFFFF800)), Dwords(0xD800)));
    substitutions += Count(DwordMask(bad));
    v = _mm256_blendv_epi8(v, Dwords(replacementCharacter), bad);
    __m256i const supplementary = _mm256_cmpgt_epi32(v, Dwords(0xFFFF));
    // The high surrogate and the tag of the low one by one addition.
    __m256i const high = _mm256_add_epi32(_mm256_srli_epi32(v, 10), Dwords(0xDC00D7C0));
    __m256i const pair = _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi32(v, 16), Dwords(0x03FF0000)), high);
    unsigned const pairs = DwordMask(supplementary);
    __m256i const units = ShuffleHalves(_mm256_blendv_epi8(v, pair, supplementary), unitShuffles.rows[pairs & 0x0F],
                                        unitShuffles.rows[pairs >> 4]);
    narrow::Store(out, Lower(units));
    out += 4 + Count(pairs & 0x0F);
    narrow::Store(out, Upper(units));
    return out + 4 + Count(pairs >> 4);
}

template<bool Raw>
std::size_t Utf32ToUtf16Any(char32_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    char16_t* out = dst;
    std::size_t i = 0;
    for (; n - i >= 16; i += 16) {
        __m256i const a = Load(src + i);
        __m256i const b = Load(src + i + 8);
        __m256i const units = NarrowToWords(a, b);
        if (_mm256_testz_si256(_mm256_or_si256(a, b), Dwords(0xFFFF0000)) != 0 &&
            (Raw || ByteMask(SurrogatesIn(units)) == 0)) {
            Store(out, units);
            out += 16;
        } else {
            out = NarrowValues<Raw>(a, out, substitutions);
            out = NarrowValues<Raw>(b, out, substitutions);
        }
    }
    return static_cast<std::size_t>(narrow::Utf32ToUtf16<Raw>(src, n, i, out, substitutions) - dst);
}

/// v - 0xD800 in each word: high surrogates are the words below 0x400 then.
inline __m256i FromHighSurrogates(void const* p) noexcept
{
    return _mm256_sub_epi16(Load(p), Dwords(constants.surrogate));
}

/// The pairs that begin in the 64 units at src[i]; there must be more behind them.
inline std::size_t CountPairs(char16_t const* src, std::size_t i) noexcept
{
    __m256i const least01 = _mm256_min_epu16(FromHighSurrogates(src + i), FromHighSurrogates(src + i + 16));
    __m256i const least23 = _mm256_min_epu16(FromHighSurrogates(src + i + 32), FromHighSurrogates(src + i + 48));
    if (ByteMask(WordsWith(_mm256_min_epu16(least01, least23), constants.half, 0)) == 0)
        return 0;
    std::size_t bytes = 0;
    for (std::size_t const stop = i + 64; i < stop; i += 16)
        bytes += Count(ByteMask(_mm256_and_si256(WordsWith(Load(src + i), constants.half, constants.surrogate),
                                                 WordsWith(Load(src + i + 1), constants.half, constants.low))));
    return bytes / 2;
}

} // namespace

std::size_t Utf16ToUtf8(char16_t const* src, std::size_t n, char* dst, std::size_t& substitutions) noexcept
{
    char* out = dst;
    std::size_t i = 0;
    while (n - i >= wholeBlock) {
        std::size_t stop = i + 16;
        if (n - i >= 16 + wholeBlock) {
            __m256i const v = Load(src + i);
            __m256i const w = Load(src + i + 16);
            stop = i + 32;
            if (_mm256_testz_si256(_mm256_or_si256(v, w), Dwords(constants.notAscii)) != 0) {
                Store(out, NarrowToBytes(v, w));
                out += 32;
                i = stop;
            }
        }
        while (stop - i >= 16) {
            __m256i const v = Load(src + i);
            __m256i const small = WordsWith(v, constants.notSmall, 0);
            if (ByteMask(small) == ~0U || ByteMask(SurrogatesIn(v)) == 0) {
                out = EncodeUnits(v, small, out);
                i += 16;
            } else {
                out = EncodeWithPairs(v, src, i, out, substitutions);
            }
        }
    }
    // Take back the first half of a pair that the last block ended with.
    if (i > 0 && i < n && IsPairAt(src, n, i - 1)) {
        --i;
        out -= 2;
    }
    return static_cast<std::size_t>(narrow::Utf16ToUtf8(src, n, i, out, substitutions) - dst);
}

std::size_t Utf8LengthOfUtf16(char16_t const* src, std::size_t n) noexcept
{
    // One byte a unit, one more from 0x80 on and one more from 0x800 on, less two for a pair (four bytes, not six).
    std::size_t length = 0;
    std::size_t i = 0;
    for (; n - i > 64; i += 64) {
        std::size_t ascii = 0;
        std::size_t small = 0;
        for (std::size_t k = i; k < i + 64; k += 32) {
            // As bytes that tell the three lengths apart: 0, 1 to 15, and above (by saturation up to 0xFFFF).
            __m256i const classes =
                _mm256_packus_epi16(_mm256_srli_epi16(Load(src + k), 7), _mm256_srli_epi16(Load(src + k + 16), 7));
            ascii += Count(ByteMask(_mm256_cmpeq_epi8(classes, _mm256_setzero_si256())));
            small += Count(ByteMask(_mm256_cmpeq_epi8(_mm256_min_epu8(classes, Words(0x0F0F)), classes)));
        }
        length += std::size_t{3} * 64 - ascii - small - 2 * CountPairs(src, i);
    }
    // The second half of a pair counts as three bytes, as all of the saving was made for the first.
    if (i > 0 && i < n && IsPairAt(src, n, i - 1)) {
        length += 3;
        ++i;
    }
    return length + narrow::Utf8LengthOfUtf16(src, n, i);
}

std::size_t Utf16ToUtf32(char16_t const* src, std::size_t n, char32_t* dst, std::size_t& substitutions) noexcept
{
    char32_t* out = dst;
    std::size_t i = 0;
    while (n - i > 16) {
        __m256i const v = Load(src + i);
        if (ByteMask(SurrogatesIn(v)) == 0) {
            Store(out, _mm256_cvtepu16_epi32(Lower(v)));
            Store(out + 8, _mm256_cvtepu16_epi32(Upper(v)));
            out += 16;
        } else if (IsAllPairs(v)) {
            Store(out, PointsOfPairs(v));
            out += 8;
        } else {
            Pairs const p = FindPairs(v, src, i, substitutions);
            if (IsAllSplitPairs(p)) [[unlikely]] { // the first one is already written
                ++i;
                continue;
            }
            out = CombinePairs(Lower(p.units), Lower(p.behind), Lower(p.high), Lower(p.low), out);
            out = CombinePairs(Upper(p.units), Upper(p.behind), Upper(p.high), Upper(p.low), out);
        }
        i += 16;
    }
    if (i > 0 && i < n && IsPairAt(src, n, i - 1)) // already written with its first half
        ++i;
    return static_cast<std::size_t>(narrow::Utf16ToUtf32(src, n, i, out, substitutions) - dst);
}

std::size_t Utf32ToUtf16(char32_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    return Utf32ToUtf16Any<false>(src, n, dst, substitutions);
}

std::size_t Utf32ToUtf16Raw(char32_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    return Utf32ToUtf16Any<true>(src, n, dst, substitutions);
}

std::size_t Utf32ToUtf8Raw(char32_t const* src, std::size_t n, char* dst) noexcept
{
    char* out = dst;
    std::size_t i = 0;
    for (; n - i >= 16; i += 16) {
        __m256i const a = Load(src + i);
        __m256i const b = Load(src + i + 8);
        __m256i const both = _mm256_or_si256(a, b);
        if (_mm256_testz_si256(both, Dwords(0xFFFF0000)) == 0) {
            out = EncodeValues(a, out);
            out = EncodeValues(b, out);
            continue;
        }
        __m256i const units = NarrowToWords(a, b);
        if (_mm256_testz_si256(both, Dwords(0xFFFFFF80)) != 0) {
            narrow::Store(out, _mm_packus_epi16(Lower(units), Upper(units)));
            out += 16;
        } else {
            out = EncodeUnits(units, WordsWith(units, constants.notSmall, 0), out);
        }
    }
    return static_cast<std::size_t>(narrow::Utf32ToUtf8Raw(src, n, i, out) - dst);
}

void CopyWellFormed(char16_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    std::size_t i = 0;
    for (; n - i > 32; i += 32) {
        __m256i a = Load(src + i);
        __m256i b = Load(src + i + 16);
        if (ByteMask(_mm256_or_si256(SurrogatesIn(a), SurrogatesIn(b))) != 0) {
            a = FindPairs(a, src, i, substitutions).units;
            b = FindPairs(b, src, i + 16, substitutions).units;
        }
        Store(dst + i, a);
        Store(dst + i + 16, b);
    }
    narrow::CopyWellFormed(src, n, i, dst, substitutions);
}

std::size_t CountCodePoints(char16_t const* src, std::size_t n) noexcept
{
    std::size_t pairs = 0;
    std::size_t i = 0;
    for (; n - i > 64; i += 64)
        pairs += CountPairs(src, i);
    return n - pairs - narrow::CountPairs(src, n, i);
}

std::size_t CountUnit(char16_t const* src, std::size_t n, char16_t unit) noexcept
{
    __m256i const units = Words(unit);
    std::size_t found = 0;
    std::size_t i = 0;
    for (; n - i >= 32; i += 32) {
        __m256i const lower = _mm256_cmpeq_epi16(Load(src + i), units);
        __m256i const upper = _mm256_cmpeq_epi16(Load(src + i + 16), units);
        found += Count(ByteMask(_mm256_packs_epi16(lower, upper)));
    }
    return found + narrow::CountUnit(src, n, i, unit);
}

} // namespace qvxsys::text::avx2
