// UTF-8 decoding with AVX2. See DecodeBlocks.h for the method: here a block is two registers, the masks are gathered
// from compared bytes, and units are kept eight positions at a time by a shuffle looked up with eight bits of the mask.

#include "DecodeBlocks.h"
#include "Kernels.h"

#include <immintrin.h>

namespace qvxsys::text {
namespace {

/// For every set of eight 16-bit units, the byte shuffle that moves the units of the set to the front.
struct CompressTable
{
    alignas(16) unsigned char shuffles[256][16];

    constexpr CompressTable() : shuffles{}
    {
        for (unsigned set = 0; set < 256; ++set) {
            unsigned to = 0;
            for (unsigned unit = 0; unit < 8; ++unit) {
                if ((set >> unit & 1) != 0) {
                    shuffles[set][to++] = static_cast<unsigned char>(2 * unit);
                    shuffles[set][to++] = static_cast<unsigned char>(2 * unit + 1);
                }
            }
            while (to < 16) {
                shuffles[set][to++] = 0x80;
            }
        }
    }
};

constexpr CompressTable kCompress;

inline __m256i Bytes(unsigned value) noexcept
{
    return _mm256_set1_epi8(static_cast<char>(value));
}

inline __m256i Load32(unsigned char const* s) noexcept
{
    return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(s));
}

inline __m128i Load16(unsigned char const* s) noexcept
{
    return _mm_loadu_si128(reinterpret_cast<__m128i const*>(s));
}

template<class Unit>
inline void Store16(Unit* dst, __m128i units) noexcept
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), units);
}

template<class Unit>
inline void Store32(Unit* dst, __m256i units) noexcept
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst), units);
}

inline __m256i Shifted(__m256i bytes, int left, unsigned keep) noexcept
{
    return _mm256_and_si256(_mm256_slli_epi16(bytes, left), Bytes(keep));
}

inline __m256i ShiftedDown(__m256i bytes, int right, unsigned keep) noexcept
{
    return _mm256_and_si256(_mm256_srli_epi16(bytes, right), Bytes(keep));
}

inline __m256i IsContinuation(__m256i bytes) noexcept
{
    return _mm256_cmpgt_epi8(Bytes(0xC0), bytes); // as signed values these are the lowest
}

inline __m256i IsAtLeast(__m256i bytes, unsigned value) noexcept
{
    return _mm256_cmpeq_epi8(_mm256_max_epu8(bytes, Bytes(value)), bytes);
}

/// FF at the bytes whose bit is set
inline __m256i Expand(unsigned bits) noexcept
{
    __m256i const spread =
        _mm256_shuffle_epi8(_mm256_set1_epi32(static_cast<int>(bits)),
                            _mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303));
    __m256i const bit = _mm256_set1_epi64x(static_cast<long long>(0x8040201008040201));
    return _mm256_cmpeq_epi8(_mm256_and_si256(spread, bit), bit);
}

struct Avx2
{
    static constexpr std::size_t kHistory = 3;
    static constexpr std::size_t kFew = 32;

    struct Block
    {
        __m256i first;
        __m256i second;
        unsigned char const* at;
    };

    /// Of the unit at each of 32 byte positions: bits 0-7, 8-15 and 16-20.
    struct Half
    {
        __m256i low;
        __m256i high;
        __m256i plane;
    };

    struct Units
    {
        Half first;
        Half second;
    };

    /// Where a block is put of which not all is there to be read, and a few bytes before it.
    struct Room
    {
        alignas(32) unsigned char bytes[32 + kBlock];
    };

    static Block Load(unsigned char const* s) noexcept { return {Load32(s), Load32(s + 32), s}; }

    static Block LoadPart(unsigned char const* s, std::size_t n, Room& room) noexcept
    {
        static_assert(kFew >= 32, "two overlapping pieces make up any part");
        unsigned char* const to = room.bytes + 32;
        __m256i const last = Load32(s + n - 32);
        Store32(room.bytes, Bytes(' '));
        Store32(to, Load32(s));
        Store32(to + 32, Bytes(' '));
        Store32(to + n - 32, last);
        return Load(to);
    }

    static Mask Gather(__m256i first, __m256i second) noexcept
    {
        return static_cast<unsigned>(_mm256_movemask_epi8(first)) |
               Mask{static_cast<unsigned>(_mm256_movemask_epi8(second))} << 32;
    }

    static Mask High(Block const& block) noexcept { return Gather(block.first, block.second); }

    static Mask AtLeast(Block const& block, unsigned value) noexcept
    {
        // Compared as signed numbers, which is right among the bytes above 7F.
        __m256i const below = Bytes(value - 1);
        return High(block) & Gather(_mm256_cmpgt_epi8(block.first, below), _mm256_cmpgt_epi8(block.second, below));
    }

    static Mask Equal(Block const& block, unsigned value) noexcept
    {
        __m256i const all = Bytes(value);
        return Gather(_mm256_cmpeq_epi8(block.first, all), _mm256_cmpeq_epi8(block.second, all));
    }

    static bool HasZero(Block const& block) noexcept
    {
        __m256i const lowest = _mm256_min_epu8(block.first, block.second);
        return _mm256_movemask_epi8(_mm256_cmpeq_epi8(lowest, _mm256_setzero_si256())) != 0;
    }

    static void Widen(Block const& block, char16_t* dst) noexcept
    {
        Store32(dst, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(block.first)));
        Store32(dst + 16, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(block.first, 1)));
        Store32(dst + 32, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(block.second)));
        Store32(dst + 48, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(block.second, 1)));
    }

    static void Widen(Block const& block, char32_t* dst) noexcept
    {
        for (std::size_t i = 0; i < kBlock; i += 8) {
            __m128i const eight = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(block.at + i));
            Store32(dst + i, _mm256_cvtepu8_epi32(eight));
        }
    }

    /// ASCII of 2 * sizeof(Word) bytes at most as two words that overlap.
    template<bool kWrite, class Word>
    static bool TryAsciiWords(unsigned char const* s, std::size_t n, char16_t* dst) noexcept
    {
        Word first;
        Word last;
        __builtin_memcpy(&first, s, sizeof(Word));
        __builtin_memcpy(&last, s + n - sizeof(Word), sizeof(Word));
        if (((first | last) & static_cast<Word>(0x8080808080808080)) != 0) {
            return false;
        }
        if constexpr (kWrite) {
            __m128i const units0 = _mm_cvtepu8_epi16(_mm_cvtsi64_si128(static_cast<long long>(first)));
            __m128i const units1 = _mm_cvtepu8_epi16(_mm_cvtsi64_si128(static_cast<long long>(last)));
            __builtin_memcpy(dst, &units0, 2 * sizeof(Word));
            __builtin_memcpy(dst + n - sizeof(Word), &units1, 2 * sizeof(Word));
        }
        return true;
    }

    /// Sixteen or more bytes are taken in steps of sixteen, the last of which goes back over the one before it. What is
    /// not ASCII is written all the same: the caller writes over it.
    template<bool kWrite>
    static bool TryAscii(unsigned char const* s, std::size_t n, char16_t* dst) noexcept
    {
        if (n >= 16) {
            __m128i all = _mm_setzero_si128();
            for (std::size_t i = 0;; i = i + 32 <= n ? i + 16 : n - 16) {
                __m128i const bytes = Load16(s + i);
                all = _mm_or_si128(all, bytes);
                if constexpr (kWrite) {
                    Store32(dst + i, _mm256_cvtepu8_epi16(bytes));
                }
                if (i + 16 == n) {
                    return _mm_movemask_epi8(all) == 0;
                }
            }
        }
        if (n >= 8) {
            return TryAsciiWords<kWrite, unsigned long long>(s, n, dst);
        }
        if (n >= 4) {
            return TryAsciiWords<kWrite, unsigned>(s, n, dst);
        }
        unsigned all = 0;
        for (std::size_t i = 0; i < n; ++i) {
            all |= s[i];
            if constexpr (kWrite) {
                dst[i] = s[i];
            }
        }
        return all < 0x80;
    }

    template<Form kForm>
    static bool Combine(Block const& block, Sequences const& at, Units& units) noexcept
    {
        __m256i bad = _mm256_setzero_si256();
        units.first = CombineHalf<kForm>(block.first, block.at, at.Wide(), bad);
        units.second = CombineHalf<kForm>(block.second, block.at + 32, at.Wide(), bad);
        return _mm256_movemask_epi8(bad) == 0;
    }

    /// Which sequence a byte belongs to is taken from the bytes before it rather than from the masks, which would have
    /// to be expanded. Where the two differ the text is malformed, and the unit is not used.
    template<Form kForm>
    static Half CombineHalf(__m256i v, unsigned char const* at, bool wide, __m256i& bad) noexcept
    {
        __m256i const continuation = IsContinuation(v);
        __m256i const v1 = _mm256_and_si256(continuation, Load32(at - 1));
        __m256i const from3 = _mm256_and_si256(continuation, IsContinuation(Load32(at - 1)));
        __m256i const v2 = _mm256_and_si256(from3, Load32(at - 2));
        Half half;
        half.low = _mm256_or_si256(_mm256_and_si256(v, Bytes(0x7F)), Shifted(v1, 6, 0xC0));
        half.high = _mm256_or_si256(ShiftedDown(v1, 2, 0x0F), Shifted(v2, 4, 0xF0));
        half.plane = _mm256_setzero_si256();
        __m256i unencodable = _mm256_and_si256(from3, Unencodable(half.high));
        if (wide) {
            __m256i const fourth = _mm256_and_si256(from3, IsContinuation(v2));
            __m256i const thirdOfFour = IsAtLeast(v2, 0xF0);
            unencodable = _mm256_andnot_si256(_mm256_or_si256(fourth, thirdOfFour), unencodable);
            if constexpr (kForm == Form::Utf32) {
                __m256i const upper = _mm256_or_si256(ShiftedDown(v2, 4, 0x03), Shifted(Load32(at - 3), 2, 0x3C));
                half.plane = _mm256_and_si256(fourth, upper);
                __m256i const beyond = IsAtLeast(_mm256_sub_epi8(upper, Bytes(1)), 16);
                bad = _mm256_or_si256(bad, _mm256_and_si256(fourth, beyond));
            } else {
                MakeSurrogates(v, v1, v2, thirdOfFour, fourth, half, bad);
            }
        }
        bad = _mm256_or_si256(bad, unencodable);
        return half;
    }

    /// Units of three bytes that are below U+0800 or surrogates.
    static __m256i Unencodable(__m256i high) noexcept
    {
        __m256i const row = _mm256_and_si256(high, Bytes(0xF8));
        return _mm256_or_si256(_mm256_cmpeq_epi8(row, _mm256_setzero_si256()), _mm256_cmpeq_epi8(row, Bytes(0xD8)));
    }

    static void MakeSurrogates(__m256i v, __m256i v1, __m256i v2, __m256i thirdOfFour, __m256i fourth, Half& half,
                               __m256i& bad) noexcept
    {
        // The high surrogate is D7C0 + the value's bits from 10 up; the low byte's part of the sum may carry.
        __m256i const bits10 = _mm256_or_si256(ShiftedDown(v, 4, 0x03), Shifted(v1, 2, 0xFC));
        __m256i const carry = IsAtLeast(bits10, 0x40);
        __m256i const top = _mm256_add_epi8(_mm256_and_si256(v2, Bytes(0x0F)), Bytes(0xD7));
        __m256i const high = _mm256_sub_epi8(top, carry); // carry is -1
        __m256i const lowSurrogate = _mm256_or_si256(_mm256_and_si256(half.high, Bytes(0x03)), Bytes(0xDC));
        half.low = _mm256_blendv_epi8(half.low, _mm256_sub_epi8(bits10, Bytes(0x40)), thirdOfFour);
        half.high = _mm256_blendv_epi8(half.high, lowSurrogate, fourth);
        half.high = _mm256_blendv_epi8(half.high, high, thirdOfFour);
        __m256i const beyond = IsAtLeast(_mm256_sub_epi8(high, Bytes(0xD8)), 4);
        bad = _mm256_or_si256(bad, _mm256_and_si256(thirdOfFour, beyond));
    }

    static void Substitute(Units& units, Mask at) noexcept
    {
        __m256i const first = Expand(static_cast<unsigned>(at));
        __m256i const second = Expand(static_cast<unsigned>(at >> 32));
        units.first.low = _mm256_blendv_epi8(units.first.low, Bytes(0xFD), first);
        units.first.high = _mm256_or_si256(units.first.high, first);
        units.second.low = _mm256_blendv_epi8(units.second.low, Bytes(0xFD), second);
        units.second.high = _mm256_or_si256(units.second.high, second);
    }

    /// Writes the first count < 8 units, and no more.
    static void StoreFew(__m128i units, std::size_t count, char16_t* dst) noexcept
    {
        if ((count & 4) != 0) {
            _mm_storel_epi64(reinterpret_cast<__m128i*>(dst), units);
            units = _mm_srli_si128(units, 8);
            dst += 4;
        }
        if ((count & 2) != 0) {
            int const two = _mm_cvtsi128_si32(units);
            __builtin_memcpy(dst, &two, 4);
            units = _mm_srli_si128(units, 4);
            dst += 2;
        }
        if ((count & 1) != 0) {
            *dst = static_cast<char16_t>(_mm_cvtsi128_si32(units));
        }
    }

    // Where units are written to. A place with an end is for the last units of the output.

    struct Place16
    {
        char16_t* to;

        void Put(__m128i units, __m128i, Mask keep) noexcept
        {
            Store16(to, _mm_shuffle_epi8(units, Load16(kCompress.shuffles[keep & 0xFF])));
            to += Count(keep & 0xFF);
        }
    };

    struct BoundedPlace16
    {
        char16_t* to;
        char16_t const* end;

        void Put(__m128i units, __m128i, Mask keep) noexcept
        {
            units = _mm_shuffle_epi8(units, Load16(kCompress.shuffles[keep & 0xFF]));
            std::size_t const count = Count(keep & 0xFF);
            if (end - to >= 8) {
                Store16(to, units);
            } else {
                StoreFew(units, count, to);
            }
            to += count;
        }
    };

    struct Place32
    {
        char32_t* to;

        void Put(__m128i units, __m128i planes, Mask keep) noexcept
        {
            __m128i const shuffle = Load16(kCompress.shuffles[keep & 0xFF]);
            units = _mm_shuffle_epi8(units, shuffle);
            planes = _mm_shuffle_epi8(planes, shuffle);
            Store16(to, _mm_unpacklo_epi16(units, planes));
            Store16(to + 4, _mm_unpackhi_epi16(units, planes));
            to += Count(keep & 0xFF);
        }
    };

    template<class Place>
    static void PutHalf(Half const& half, Mask keep, Place& place) noexcept
    {
        __m256i const zero = _mm256_setzero_si256();
        __m256i const units0 = _mm256_unpacklo_epi8(half.low, half.high); // the positions 0-7 and 16-23
        __m256i const units1 = _mm256_unpackhi_epi8(half.low, half.high); // 8-15 and 24-31
        __m256i const planes0 = _mm256_unpacklo_epi8(half.plane, zero);
        __m256i const planes1 = _mm256_unpackhi_epi8(half.plane, zero);
        place.Put(_mm256_castsi256_si128(units0), _mm256_castsi256_si128(planes0), keep);
        place.Put(_mm256_castsi256_si128(units1), _mm256_castsi256_si128(planes1), keep >> 8);
        place.Put(_mm256_extracti128_si256(units0, 1), _mm256_extracti128_si256(planes0, 1), keep >> 16);
        place.Put(_mm256_extracti128_si256(units1, 1), _mm256_extracti128_si256(planes1, 1), keep >> 24);
    }

    template<class Place>
    static void Put(Units const& units, Mask keep, Place place) noexcept
    {
        PutHalf(units.first, keep, place);
        PutHalf(units.second, keep >> 32, place);
    }

    static void Store(Units const& units, Mask keep, char16_t* dst) noexcept { Put(units, keep, Place16{dst}); }

    static void Store(Units const& units, Mask keep, char32_t* dst) noexcept { Put(units, keep, Place32{dst}); }

    static void StorePart(Units const& units, Mask keep, char16_t* dst, std::size_t room) noexcept
    {
        Put(units, keep, BoundedPlace16{dst, dst + room});
    }
};

// On the way out: upper halves of vectors that are left in use slow down all SSE code that follows. GCC 12 forgets to
// clear them on some paths.
std::size_t Leave(std::size_t result) noexcept
{
    _mm256_zeroupper();
    return result;
}

} // namespace

namespace avx2 {

std::size_t Utf8ToUtf16(char const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    return Leave(DecodeToUtf16<Form::Utf16, Avx2>(src, n, dst, substitutions));
}

std::size_t Utf16LengthOfUtf8(char const* src, std::size_t n) noexcept
{
    std::size_t substitutions = 0;
    return Leave(DecodeToUtf16<Form::Utf16Length, Avx2>(src, n, nullptr, substitutions));
}

std::size_t Utf8PrefixToUtf32(char const* src, std::size_t n, char32_t* dst, std::size_t& consumed) noexcept
{
    return Leave(DecodeToUtf32<Avx2>(src, n, dst, consumed));
}

} // namespace avx2
} // namespace qvxsys::text
