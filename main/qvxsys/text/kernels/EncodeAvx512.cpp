// The encoding kernels for processors with AVX-512 VBMI2.
//
// UTF-8 is built without branches on the length of a code point. Each unit gets a lane with a byte for every byte it
// may need, the bits are spread into the lane (vpmultishiftqb takes six-bit fields from anywhere), tag bits are added,
// and the lanes' unused bytes, which are zero, are squeezed out of the whole vector (vpcompressb).
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
// U+FFFD by a blend before; malformed text takes the same path as any other.
//
// The last units of a text go through the same code with masked loads and stores, which touch nothing outside.

#if defined(__GNUC__) && !defined(__clang__)
// GCC 12 takes the deliberately undefined operand inside its own intrinsics for a mistake (GCC bug 105593).
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include "kernels/EncodeConstants.h"
#include "kernels/EncodeScalar.h"
#include "kernels/Kernels.h"

#include <immintrin.h>

namespace qvxsys::text::avx512 {

namespace {

constexpr EncodeConstants const& constants = encodeConstants;

inline __m512i Words(unsigned w) noexcept
{
    return _mm512_set1_epi16(static_cast<short>(w));
}

inline __m512i Dwords(unsigned d) noexcept
{
    return _mm512_set1_epi32(static_cast<int>(d));
}

inline std::size_t Count(std::uint64_t mask) noexcept
{
    return static_cast<std::size_t>(_mm_popcnt_u64(mask));
}

/// A mask of the first `count` of 32 lanes, all if there are more.
inline __mmask32 FirstOf32(std::size_t count) noexcept
{
    return count < 32 ? _bzhi_u32(~0U, static_cast<unsigned>(count)) : ~0U;
}

inline __mmask16 FirstOf16(std::size_t count) noexcept
{
    return static_cast<__mmask16>(FirstOf32(count));
}

inline __mmask16 LowerHalf(__mmask32 mask) noexcept
{
    return static_cast<__mmask16>(mask);
}

inline __mmask16 UpperHalf(__mmask32 mask) noexcept
{
    return static_cast<__mmask16>(mask >> 16);
}

/// The lower or upper 16 words, each widened to 32 bits.
inline __m512i WidenLower(__m512i words) noexcept
{
    return _mm512_cvtepu16_epi32(_mm512_castsi512_si256(words));
}

inline __m512i WidenUpper(__m512i words) noexcept
{
    return _mm512_cvtepu16_epi32(_mm512_extracti64x4_epi64(words, 1));
}

/// The 32 values of two vectors as words; they must be below 0x10000.
inline __m512i NarrowToWords(__m512i a, __m512i b) noexcept
{
    return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), _mm512_packus_epi32(a, b));
}

/// The 64 words of two vectors as bytes; they must be below 0x80.
inline __m512i NarrowToBytes(__m512i a, __m512i b) noexcept
{
    return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), _mm512_packus_epi16(a, b));
}

/// The units before the first boundary of 64 bytes. Whole vectors that are not aligned touch two cache lines each,
/// which halves the speed of the kernels that do little but load and store.
template<class Unit>
inline std::size_t UnitsToAlign(Unit const* p) noexcept
{
    return (0 - reinterpret_cast<std::uintptr_t>(p)) % 64 / sizeof(Unit);
}

/// From how many units on it pays to align.
constexpr std::size_t longText = 256;

inline __mmask32 SurrogatesIn(__m512i v) noexcept
{
    return _mm512_cmpeq_epi16_mask(_mm512_and_si512(v, Dwords(constants.notSmall)), Dwords(constants.surrogate));
}

/// Which surrogates of a block are halves of pairs and which are lone.
struct Surrogates
{
    __mmask32 high;
    __mmask32 low;
    __mmask32 lone;
};

/// Sorts the surrogates `all` of the block v, which was read from src[i]. Both neighbours of the block count.
inline Surrogates SortSurrogates(__m512i v, __mmask32 all, char16_t const* src, std::size_t n, std::size_t i) noexcept
{
    __mmask32 const high = _mm512_mask_testn_epi16_mask(all, v, Dwords(constants.isLow));
    __mmask32 const low = all ^ high;
    __mmask32 const lowBehind = n - i > 32 && IsLowSurrogate(src[i + 32]) ? 0x80000000U : 0;
    __mmask32 const highBefore = i > 0 && IsHighSurrogate(src[i - 1]) ? 1 : 0;
    Surrogates s{};
    s.high = high & (low >> 1 | lowBehind);
    s.low = low & (high << 1 | highBefore);
    s.lone = all ^ s.high ^ s.low;
    return s;
}

/// v with U+FFFD in the lanes of `lone`.
inline __m512i Substitute(__m512i v, __mmask32 lone, std::size_t& substitutions) noexcept
{
    substitutions += Count(lone);
    return _mm512_mask_mov_epi16(v, lone, Dwords(constants.replacement));
}

/// The bytes of `lanes` under `keep`, written without gaps; returns the position behind them. `Whole` writes 64 bytes.
template<bool Whole>
[[gnu::always_inline]] inline char* StoreKept(char* out, __m512i lanes, __mmask64 keep) noexcept
{
    __m512i const bytes = _mm512_maskz_compress_epi8(keep, lanes);
    std::size_t const length = Count(keep);
    if (Whole)
        _mm512_storeu_si512(out, bytes);
    else
        _mm512_mask_storeu_epi8(out, _bzhi_u64(~0ULL, static_cast<unsigned>(length)), bytes);
    return out + length;
}

/// Units of one or two bytes. `tags` holds the tag bits of both bytes of the units not in `ascii`.
template<bool Whole>
[[gnu::always_inline]] inline char* EncodeWords(__m512i payload, __m512i tags, __mmask32 ascii, __mmask32 valid,
                                                char* out) noexcept
{
    __m512i const fields = _mm512_set1_epi64(0x3036202610160006);
    __m512i const spread = _mm512_multishift_epi64_epi8(fields, payload);
    __m512i lanes = _mm512_ternarylogic_epi32(spread, Dwords(constants.sixBits), tags, 0xEA); // spread & 3F3F | tags
    lanes = _mm512_mask_mov_epi16(lanes, ascii, payload);
    __m512i const first =
        Whole ? Dwords(constants.firstBytes) : _mm512_maskz_mov_epi16(valid, Dwords(constants.firstBytes));
    __m512i const used = _mm512_or_si512(lanes, first);
    return StoreKept<Whole>(out, lanes, _mm512_test_epi8_mask(used, used));
}

/// Values of one to four bytes in lanes of 32 bits. `tags` holds the tag bits of the values not in `ascii`.
template<bool Whole>
[[gnu::always_inline]] inline char* EncodeDwords(__m512i payload, __m512i tags, __mmask16 ascii, __mmask16 valid,
                                                 char* out) noexcept
{
    __m512i const fields = _mm512_set1_epi64(0x20262C3200060C12);
    __m512i const spread = _mm512_multishift_epi64_epi8(fields, payload);
    __m512i lanes = _mm512_ternarylogic_epi32(spread, Dwords(constants.sixBits), tags, 0xEA);
    lanes = _mm512_mask_slli_epi32(lanes, ascii, payload, 24);
    __m512i const last = Whole ? Dwords(constants.lastByte) : _mm512_maskz_mov_epi32(valid, Dwords(constants.lastByte));
    __m512i const used = _mm512_or_si512(lanes, last);
    return StoreKept<Whole>(out, lanes, _mm512_test_epi8_mask(used, used));
}

/// The payloads of the halves of surrogate pairs, see the top of the file.
inline __m512i PairPayloads(__m512i v, Surrogates const& s, char16_t const* src, std::size_t i,
                            __mmask32 valid) noexcept
{
    // The unit before each; nothing stands before the first block, whose lane 0 then is no half that would need it.
    __m512i const before = i > 0 ? _mm512_maskz_loadu_epi16(valid, src + i - 1) : _mm512_maskz_expand_epi16(~1U, v);
    __m512i const high = _mm512_srli_epi16(_mm512_sub_epi16(v, Dwords(constants.highBase)), 2);
    __m512i const lowTop = _mm512_slli_epi16(_mm512_and_si512(before, Dwords(constants.highRest)), 10);
    __m512i const low = _mm512_ternarylogic_epi32(v, Dwords(constants.lowBits), lowTop, 0xEA);
    return _mm512_mask_mov_epi16(_mm512_mask_mov_epi16(v, s.high, high), s.low, low);
}

/// The room EncodeUnits<true> asks for, in units: its second store of 64 bytes begins at most 48 bytes behind the
/// first, and 3 * 38 bytes are enough for both.
constexpr std::size_t wholeBlock = 38;

/// The units v, read from src[i], as UTF-8. `Whole` asks for all 32 lanes and wholeBlock units left.
template<bool Whole>
[[gnu::always_inline]] inline char* EncodeUnits(__m512i v, __mmask32 valid, char16_t const* src, std::size_t n,
                                                std::size_t i, char* out, std::size_t& substitutions) noexcept
{
    __mmask32 const ascii = _mm512_testn_epi16_mask(v, Dwords(constants.notAscii));
    __mmask32 const large = _mm512_test_epi16_mask(v, Dwords(constants.notSmall));
    if (large == 0)
        return EncodeWords<Whole>(v, Dwords(constants.wordTags2), ascii, valid, out);
    __mmask32 const surrogates = SurrogatesIn(v);
    if (surrogates == 0) {
        __m512i const two = Dwords(constants.tags2);
        __m512i const three = Dwords(constants.tags3);
        __m512i const lowerTags = _mm512_mask_mov_epi32(two, LowerHalf(large), three);
        __m512i const upperTags = _mm512_mask_mov_epi32(two, UpperHalf(large), three);
        out = EncodeDwords<Whole>(WidenLower(v), lowerTags, LowerHalf(ascii), LowerHalf(valid), out);
        return EncodeDwords<Whole>(WidenUpper(v), upperTags, UpperHalf(ascii), UpperHalf(valid), out);
    }
    Surrogates const s = SortSurrogates(v, surrogates, src, n, i);
    v = Substitute(v, s.lone, substitutions);
    __mmask32 const three = large ^ s.high ^ s.low;
    __m512i const payload = PairPayloads(v, s, src, i, valid);
    __m512i tags = _mm512_mask_mov_epi16(Dwords(constants.wordTags2), s.high, Dwords(constants.wordTagsHigh));
    tags = _mm512_mask_mov_epi16(tags, s.low | three, Dwords(constants.wordTagsTrail));
    if (three == 0)
        return EncodeWords<Whole>(payload, tags, ascii, valid, out);
    __m512i const lead = Dwords(constants.lead3);
    __m512i lowerTags = _mm512_slli_epi32(WidenLower(tags), 16);
    __m512i upperTags = _mm512_slli_epi32(WidenUpper(tags), 16);
    lowerTags = _mm512_mask_or_epi32(lowerTags, LowerHalf(three), lowerTags, lead);
    upperTags = _mm512_mask_or_epi32(upperTags, UpperHalf(three), upperTags, lead);
    out = EncodeDwords<Whole>(WidenLower(payload), lowerTags, LowerHalf(ascii), LowerHalf(valid), out);
    return EncodeDwords<Whole>(WidenUpper(payload), upperTags, UpperHalf(ascii), UpperHalf(valid), out);
}

/// 16 values as UTF-8 by the plain rule.
template<bool Whole>
[[gnu::always_inline]] inline char* EncodeValues(__m512i v, __mmask16 valid, char* out) noexcept
{
    v = _mm512_mask_mov_epi32(v, _mm512_cmpgt_epu32_mask(v, Dwords(0x1FFFFF)), Dwords(replacementCharacter));
    __m512i tags = Dwords(constants.tags2);
    tags = _mm512_mask_mov_epi32(tags, _mm512_cmpgt_epu32_mask(v, Dwords(0x7FF)), Dwords(constants.tags3));
    tags = _mm512_mask_mov_epi32(tags, _mm512_cmpgt_epu32_mask(v, Dwords(0xFFFF)), Dwords(constants.tags4));
    return EncodeDwords<Whole>(v, tags, _mm512_testn_epi32_mask(v, Dwords(0xFFFFFF80)), valid, out);
}

/// 16 words of a block with surrogates as code points. `next` holds, in each lane, the word behind the lane's.
template<bool Whole>
[[gnu::always_inline]] inline char32_t* CombinePairs(__m512i units, __m512i next, __mmask16 high, __mmask16 keep,
                                                     char32_t* out) noexcept
{
    __m512i const sum = _mm512_add_epi32(_mm512_slli_epi32(units, 10), next);
    __m512i const base = Dwords((0xD800U << 10) + 0xDC00U - 0x10000U);
    __m512i const points = _mm512_maskz_compress_epi32(keep, _mm512_mask_sub_epi32(units, high, sum, base));
    std::size_t const length = Count(keep);
    if (Whole)
        _mm512_storeu_si512(out, points);
    else
        _mm512_mask_storeu_epi32(out, FirstOf16(length), points);
    return out + length;
}

/// The units v, read from src[i], as code points; moves i behind them. `Whole` asks for all 32 lanes.
template<bool Whole>
[[gnu::always_inline]] inline char32_t* WidenUnits(__m512i v, __mmask32 valid, char16_t const* src, std::size_t n,
                                                   std::size_t& i, char32_t* out, std::size_t& substitutions) noexcept
{
    std::size_t const first = i;
    __mmask32 const surrogates = SurrogatesIn(v);
    i += Whole ? 32 : Count(valid);
    if (surrogates == 0) {
        if (Whole) {
            _mm512_storeu_si512(out, WidenLower(v));
            _mm512_storeu_si512(out + 16, WidenUpper(v));
        } else {
            _mm512_mask_storeu_epi32(out, LowerHalf(valid), WidenLower(v));
            _mm512_mask_storeu_epi32(out + 16, UpperHalf(valid), WidenUpper(v));
        }
        return out + (i - first);
    }
    Surrogates const s = SortSurrogates(v, surrogates, src, n, first);
    if (Whole && s.high == 0x55555555) { // nothing but pairs
        __m512i const bits = _mm512_and_si512(v, Dwords(constants.lowBits));
        __m512i const offsets = _mm512_madd_epi16(bits, Dwords(0x00010400)); // high * 0x400 + low
        _mm512_storeu_si512(out, _mm512_add_epi32(offsets, Dwords(0x10000)));
        return out + 16;
    }
    if (Whole && s.low == 0x55555555) [[unlikely]] {
        // All pairs, but one unit off. Going on behind the first half pair, which is already written, brings the blocks
        // to come into step; doing so for just any half pair would make each block wait for the one before.
        i = first + 1;
        return out;
    }
    v = Substitute(v, s.lone, substitutions);
    __mmask32 const keep = valid & ~s.low;
    __m512i const lower = WidenLower(v);
    __m512i const upper = WidenUpper(v);
    __m512i const behind = Dwords(n - first > 32 ? src[first + 32] : 0);
    out = CombinePairs<Whole>(lower, _mm512_alignr_epi32(upper, lower, 1), LowerHalf(s.high), LowerHalf(keep), out);
    return CombinePairs<Whole>(upper, _mm512_alignr_epi32(behind, upper, 1), UpperHalf(s.high), UpperHalf(keep), out);
}

/// 16 values as UTF-16: each as two words, of which the second is squeezed out where it is not needed.
template<bool Whole, bool Raw>
[[gnu::always_inline]] inline char16_t* NarrowValues(__m512i v, __mmask16 valid, char16_t* out,
                                                     std::size_t& substitutions) noexcept
{
    __mmask16 bad = _mm512_cmpgt_epu32_mask(v, Dwords(0x10FFFF));
    if (!Raw) {
        __m512i const top = _mm512_and_si512(v, Dwords(0xFFFFF800));
        bad = static_cast<__mmask16>(bad | _mm512_cmpeq_epi32_mask(top, Dwords(0xD800)));
    }
    substitutions += Count(bad);
    v = _mm512_mask_mov_epi32(v, bad, Dwords(replacementCharacter));
    __mmask16 const supplementary = _mm512_cmpgt_epu32_mask(v, Dwords(0xFFFF));
    // The high surrogate and the tag of the low one by one addition; (v << 16 & 3FF0000) | ... adds the low one's bits.
    __m512i const high = _mm512_add_epi32(_mm512_srli_epi32(v, 10), Dwords(0xDC00D7C0));
    __m512i const pair = _mm512_ternarylogic_epi32(_mm512_slli_epi32(v, 16), Dwords(0x03FF0000), high, 0xEA);
    __m512i const lanes = _mm512_mask_mov_epi32(v, supplementary, pair);
    __m512i const used = _mm512_or_si512(lanes, _mm512_maskz_mov_epi32(valid, Dwords(0xFFFF)));
    __mmask32 const keep = _mm512_test_epi16_mask(used, used);
    __m512i const units = _mm512_maskz_compress_epi16(keep, lanes);
    std::size_t const length = Count(keep);
    if (Whole)
        _mm512_storeu_si512(out, units);
    else
        _mm512_mask_storeu_epi16(out, FirstOf32(length), units);
    return out + length;
}

template<bool Raw>
std::size_t Utf32ToUtf16Any(char32_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    char16_t* out = dst;
    std::size_t i = 0;
    for (; n - i >= 32; i += 32) {
        __m512i const a = _mm512_loadu_si512(src + i);
        __m512i const b = _mm512_loadu_si512(src + i + 16);
        __m512i const units = NarrowToWords(a, b);
        if (_mm512_test_epi32_mask(_mm512_or_si512(a, b), Dwords(0xFFFF0000)) == 0 &&
            (Raw || SurrogatesIn(units) == 0)) {
            _mm512_storeu_si512(out, units);
            out += 32;
        } else {
            out = NarrowValues<true, Raw>(a, 0xFFFF, out, substitutions);
            out = NarrowValues<true, Raw>(b, 0xFFFF, out, substitutions);
        }
    }
    for (; i < n; i += 16) {
        __mmask16 const valid = FirstOf16(n - i);
        out = NarrowValues<false, Raw>(_mm512_maskz_loadu_epi32(valid, src + i), valid, out, substitutions);
        if (n - i <= 16)
            break;
    }
    return static_cast<std::size_t>(out - dst);
}

/// Marks the words of `units` that are high surrogates with a low one in the same lane of `next`.
inline __mmask32 PairsIn(__m512i units, __m512i next) noexcept
{
    __m512i const high = _mm512_xor_si512(units, Words(0xD800));
    __m512i const both = _mm512_ternarylogic_epi32(high, next, Words(0xDC00), 0xF6); // high | (next ^ DC00)
    return _mm512_testn_epi16_mask(both, Words(0xFC00));
}

/// The pairs that begin in the 64 units a and b, read from src[i]; there must be more behind them.
inline std::size_t CountPairs(__m512i a, __m512i b, char16_t const* src, std::size_t i) noexcept
{
    __m512i const base = Words(0xD800);
    __m512i const least = _mm512_min_epu16(_mm512_sub_epi16(a, base), _mm512_sub_epi16(b, base));
    if (_mm512_cmplt_epu16_mask(least, Words(0x400)) == 0) // no high surrogates
        return 0;
    return Count(PairsIn(a, _mm512_loadu_si512(src + i + 1))) + Count(PairsIn(b, _mm512_loadu_si512(src + i + 33)));
}

/// The UTF-8 length of the units at src[i] that `valid` selects, and of none behind src[n].
inline std::size_t LengthOfBlock(char16_t const* src, std::size_t n, std::size_t i, __mmask32 valid) noexcept
{
    __m512i const v = _mm512_maskz_loadu_epi16(valid, src + i);
    __m512i const next = _mm512_maskz_loadu_epi16(FirstOf32(n - i - 1) & valid, src + i + 1);
    std::size_t const more = Count(_mm512_test_epi16_mask(v, Words(0xFF80))) + //
                             Count(_mm512_test_epi16_mask(v, Words(0xF800)));
    return Count(valid) + more - 2 * Count(PairsIn(v, next));
}

/// Copies the units at src[i] that `valid` selects; those behind them are looked at for the sake of the last one.
inline void CopyBlock(char16_t const* src, std::size_t n, std::size_t i, __mmask32 valid, char16_t* dst,
                      std::size_t& substitutions) noexcept
{
    __m512i v = _mm512_maskz_loadu_epi16(FirstOf32(n - i), src + i);
    __mmask32 const surrogates = SurrogatesIn(v);
    if (surrogates != 0)
        v = Substitute(v, SortSurrogates(v, surrogates, src, n, i).lone & valid, substitutions);
    _mm512_mask_storeu_epi16(dst + i, valid, v);
}

} // namespace

std::size_t Utf16ToUtf8(char16_t const* src, std::size_t n, char* dst, std::size_t& substitutions) noexcept
{
    char* out = dst;
    std::size_t i = 0;
    for (; n - i >= 32 + wholeBlock; i += 64) {
        __m512i const a = _mm512_loadu_si512(src + i);
        __m512i const b = _mm512_loadu_si512(src + i + 32);
        if (_mm512_test_epi16_mask(_mm512_or_si512(a, b), Dwords(constants.notAscii)) == 0) {
            _mm512_storeu_si512(out, NarrowToBytes(a, b));
            out += 64;
        } else {
            for (std::size_t k = i; k < i + 64; k += 32)
                out = EncodeUnits<true>(_mm512_loadu_si512(src + k), ~0U, src, n, k, out, substitutions);
        }
    }
    while (i < n) {
        std::size_t const count = n - i < 32 ? n - i : 32;
        __mmask32 const valid = FirstOf32(count);
        __m512i const v = _mm512_maskz_loadu_epi16(valid, src + i);
        if (_mm512_test_epi16_mask(v, Dwords(constants.notAscii)) == 0) {
            _mm256_mask_storeu_epi8(out, valid, _mm512_cvtepi16_epi8(v));
            out += count;
        } else {
            out = EncodeUnits<false>(v, valid, src, n, i, out, substitutions);
        }
        i += count;
    }
    return static_cast<std::size_t>(out - dst);
}

std::size_t Utf8LengthOfUtf16(char16_t const* src, std::size_t n) noexcept
{
    // One byte a unit, one more from 0x80 on and one more from 0x800 on, less two for a pair (four bytes, not six).
    std::size_t length = 0;
    std::size_t i = n < longText ? 0 : UnitsToAlign(src);
    if (i > 0)
        length += LengthOfBlock(src, n, 0, FirstOf32(i));
    for (; n - i > 64; i += 64) {
        __m512i const a = _mm512_loadu_si512(src + i);
        __m512i const b = _mm512_loadu_si512(src + i + 32);
        // As bytes that tell the three lengths apart: 0, 1 to 15, and above (by saturation up to 0xFFFF).
        __m512i const classes = _mm512_packus_epi16(_mm512_srli_epi16(a, 7), _mm512_srli_epi16(b, 7));
        __mmask64 const large = _mm512_test_epi8_mask(classes, Words(0xF0F0));
        length += 64 + Count(_mm512_test_epi8_mask(classes, classes)) + Count(large);
        if (large != 0)
            length -= 2 * CountPairs(a, b, src, i);
    }
    for (; i < n; i += 32) {
        length += LengthOfBlock(src, n, i, FirstOf32(n - i));
        if (n - i <= 32)
            break;
    }
    return length;
}

std::size_t Utf16ToUtf32(char16_t const* src, std::size_t n, char32_t* dst, std::size_t& substitutions) noexcept
{
    char32_t* out = dst;
    std::size_t i = 0;
    if (n >= longText && SurrogatesIn(_mm512_loadu_si512(src)) == 0) {
        // Of these units all are written, but only those before the boundary are done.
        WidenUnits<true>(_mm512_loadu_si512(src), ~0U, src, n, i, dst, substitutions);
        i = UnitsToAlign(dst);
        out = dst + i;
    }
    while (n - i >= 32)
        out = WidenUnits<true>(_mm512_loadu_si512(src + i), ~0U, src, n, i, out, substitutions);
    if (i < n) {
        __mmask32 const valid = FirstOf32(n - i);
        out = WidenUnits<false>(_mm512_maskz_loadu_epi16(valid, src + i), valid, src, n, i, out, substitutions);
    }
    return static_cast<std::size_t>(out - dst);
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
    for (; n - i >= 32; i += 32) {
        __m512i const a = _mm512_loadu_si512(src + i);
        __m512i const b = _mm512_loadu_si512(src + i + 16);
        __m512i const both = _mm512_or_si512(a, b);
        if (_mm512_test_epi32_mask(both, Dwords(0xFFFFF800)) != 0) {
            out = EncodeValues<true>(a, 0xFFFF, out);
            out = EncodeValues<true>(b, 0xFFFF, out);
            continue;
        }
        __m512i const words = NarrowToWords(a, b);
        __mmask32 const ascii = _mm512_testn_epi16_mask(words, Dwords(constants.notAscii));
        if (ascii == ~0U) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm512_cvtepi16_epi8(words));
            out += 32;
        } else {
            out = EncodeWords<true>(words, Dwords(constants.wordTags2), ascii, ~0U, out);
        }
    }
    for (; i < n; i += 16) {
        __mmask16 const valid = FirstOf16(n - i);
        out = EncodeValues<false>(_mm512_maskz_loadu_epi32(valid, src + i), valid, out);
        if (n - i <= 16)
            break;
    }
    return static_cast<std::size_t>(out - dst);
}

void CopyWellFormed(char16_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    std::size_t i = n < longText ? 0 : UnitsToAlign(dst);
    if (i > 0)
        CopyBlock(src, n, 0, FirstOf32(i), dst, substitutions);
    for (; n - i >= 64; i += 64) {
        __m512i a = _mm512_loadu_si512(src + i);
        __m512i b = _mm512_loadu_si512(src + i + 32);
        __mmask32 const inA = SurrogatesIn(a);
        __mmask32 const inB = SurrogatesIn(b);
        if ((inA | inB) != 0) {
            a = Substitute(a, SortSurrogates(a, inA, src, n, i).lone, substitutions);
            b = Substitute(b, SortSurrogates(b, inB, src, n, i + 32).lone, substitutions);
        }
        _mm512_storeu_si512(dst + i, a);
        _mm512_storeu_si512(dst + i + 32, b);
    }
    for (; i < n; i += 32) {
        CopyBlock(src, n, i, FirstOf32(n - i), dst, substitutions);
        if (n - i <= 32)
            break;
    }
}

std::size_t CountCodePoints(char16_t const* src, std::size_t n) noexcept
{
    std::size_t pairs = 0;
    std::size_t i = n < longText ? 0 : UnitsToAlign(src);
    if (i > 0)
        pairs += Count(PairsIn(_mm512_maskz_loadu_epi16(FirstOf32(i), src), _mm512_loadu_si512(src + 1)));
    for (; n - i > 64; i += 64)
        pairs += CountPairs(_mm512_loadu_si512(src + i), _mm512_loadu_si512(src + i + 32), src, i);
    for (; i < n; i += 32) {
        __m512i const v = _mm512_maskz_loadu_epi16(FirstOf32(n - i), src + i);
        pairs += Count(PairsIn(v, _mm512_maskz_loadu_epi16(FirstOf32(n - i - 1), src + i + 1)));
        if (n - i <= 32)
            break;
    }
    return n - pairs;
}

std::size_t CountUnit(char16_t const* src, std::size_t n, char16_t unit) noexcept
{
    __m512i const units = Words(unit);
    std::size_t found = 0;
    std::size_t i = n < longText ? 0 : UnitsToAlign(src);
    if (i > 0)
        found += Count(_mm512_mask_cmpeq_epi16_mask(FirstOf32(i), _mm512_loadu_si512(src), units));
    for (; n - i >= 64; i += 64) {
        found += Count(_mm512_cmpeq_epi16_mask(_mm512_loadu_si512(src + i), units));
        found += Count(_mm512_cmpeq_epi16_mask(_mm512_loadu_si512(src + i + 32), units));
    }
    for (; i < n; i += 32) {
        __mmask32 const valid = FirstOf32(n - i);
        found += Count(_mm512_mask_cmpeq_epi16_mask(valid, _mm512_maskz_loadu_epi16(valid, src + i), units));
        if (n - i <= 32)
            break;
    }
    return found;
}

} // namespace qvxsys::text::avx512
