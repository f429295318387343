// UTF-8 decoding with AVX-512 VBMI2. See DecodeBlocks.h for the method: here a block is one register, the masks are
// mask registers, and units are kept by compressing their low and their high bytes.

#include "DecodeBlocks.h"
#include "Kernels.h"

// GCC 12's own headers write "undefined" registers as variables initialized with themselves and then warn about it
// (its bug 105593).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

namespace qvxsys::text {
namespace {

inline __m512i Bytes(unsigned value) noexcept
{
    return _mm512_set1_epi8(static_cast<char>(value));
}

/// bits from a where `select` is set, else from b
inline __m512i Select(__m512i select, __m512i a, __m512i b) noexcept
{
    return _mm512_ternarylogic_epi32(select, a, b, 0xCA);
}

struct Avx512
{
    static constexpr std::size_t kHistory = 0;
    static constexpr std::size_t kFew = 16;

    struct Block
    {
        __m512i bytes;
        unsigned char const* at;
    };

    /// Of the unit at each byte position: bits 0-7, 8-15 and 16-20.
    struct Units
    {
        __m512i low;
        __m512i high;
        __m512i plane;
    };

    struct Room
    {};

    static Block Load(unsigned char const* s) noexcept { return {_mm512_loadu_si512(s), s}; }

    static Block LoadPart(unsigned char const* s, std::size_t n, Room&) noexcept
    {
        return {_mm512_mask_loadu_epi8(Bytes(' '), LowBits(n), s), s};
    }

    static Mask High(Block const& block) noexcept { return _mm512_movepi8_mask(block.bytes); }

    static Mask AtLeast(Block const& block, unsigned value) noexcept
    {
        return _mm512_cmpge_epu8_mask(block.bytes, Bytes(value));
    }

    static Mask Equal(Block const& block, unsigned value) noexcept
    {
        return _mm512_cmpeq_epi8_mask(block.bytes, Bytes(value));
    }

    static bool HasZero(Block const& block) noexcept { return _mm512_testn_epi8_mask(block.bytes, block.bytes) != 0; }

    static void Widen(Block const& block, char16_t* dst) noexcept
    {
        _mm512_storeu_si512(dst, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(block.bytes)));
        _mm512_storeu_si512(dst + 32, _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(block.bytes, 1)));
    }

    static void Widen(Block const& block, char32_t* dst) noexcept
    {
        _mm512_storeu_si512(dst, _mm512_cvtepu8_epi32(_mm512_castsi512_si128(block.bytes)));
        _mm512_storeu_si512(dst + 16, _mm512_cvtepu8_epi32(_mm512_extracti32x4_epi32(block.bytes, 1)));
        _mm512_storeu_si512(dst + 32, _mm512_cvtepu8_epi32(_mm512_extracti32x4_epi32(block.bytes, 2)));
        _mm512_storeu_si512(dst + 48, _mm512_cvtepu8_epi32(_mm512_extracti32x4_epi32(block.bytes, 3)));
    }

    template<bool kWrite>
    static bool TryAscii(unsigned char const* s, std::size_t n, char16_t* dst) noexcept
    {
        if (n <= 32) {
            auto const mask = static_cast<__mmask32>(LowBits(n));
            __m256i const bytes = _mm256_maskz_loadu_epi8(mask, s);
            if (_mm256_movepi8_mask(bytes) != 0) {
                return false;
            }
            if constexpr (kWrite) {
                _mm512_mask_storeu_epi16(dst, mask, _mm512_cvtepu8_epi16(bytes));
            }
            return true;
        }
        Room room;
        Block const block = LoadPart(s, n, room);
        if (High(block) != 0) {
            return false;
        }
        if constexpr (kWrite) {
            _mm512_storeu_si512(dst, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(block.bytes)));
            _mm512_mask_storeu_epi16(dst + 32, static_cast<__mmask32>(LowBits(n - 32)),
                                     _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(block.bytes, 1)));
        }
        return true;
    }

    template<Form kForm>
    static bool Combine(Block const& block, Sequences const& at, Units& units) noexcept
    {
        __m512i const v = block.bytes;
        __m512i const v1 = _mm512_maskz_loadu_epi8(at.Continuations(), block.at - 1);
        __m512i const v2 =
            _mm512_maskz_loadu_epi8(kForm == Form::Utf32 ? at.third | at.fourth : at.third, block.at - 2);
        units.low = _mm512_ternarylogic_epi32(_mm512_and_si512(v, Bytes(0x7F)), _mm512_slli_epi16(v1, 6), Bytes(0xC0),
                                              0xF8); // a | (b & c)
        units.high = Select(Bytes(0xF0), _mm512_slli_epi16(v2, 4), _mm512_srli_epi16(v1, 2));
        units.plane = _mm512_setzero_si512();
        // Values of three bytes below U+0800, and surrogates.
        Mask const three = at.third & ~at.thirdOfFour;
        Mask bad = _mm512_mask_cmplt_epu8_mask(three, units.high, Bytes(0x08)) |
                   _mm512_mask_cmplt_epu8_mask(three, _mm512_xor_si512(units.high, Bytes(0xD8)), Bytes(0x08));
        if (at.Wide()) {
            bad |= kForm == Form::Utf32 ? MakePlanes(v2, block, at, units) : MakeSurrogates(v, v1, v2, at, units);
        }
        return bad == 0;
    }

    /// Adds the planes; returns the positions of values that are below U+10000 or above U+10FFFF.
    static Mask MakePlanes(__m512i v2, Block const& block, Sequences const& at, Units& units) noexcept
    {
        __m512i const v3 = _mm512_maskz_loadu_epi8(at.fourth, block.at - 3);
        __m512i const upper = _mm512_and_si512(_mm512_slli_epi16(v3, 2), Bytes(0x3C));
        units.plane = _mm512_maskz_mov_epi8(at.fourth, Select(Bytes(0x03), _mm512_srli_epi16(v2, 4), upper));
        return _mm512_mask_cmpge_epu8_mask(at.fourth, _mm512_sub_epi8(units.plane, Bytes(1)), Bytes(16));
    }

    /// Puts the surrogates in; returns the positions of high ones that are none, because the value is out of range.
    static Mask MakeSurrogates(__m512i v, __m512i v1, __m512i v2, Sequences const& at, Units& units) noexcept
    {
        // The high surrogate is D7C0 + the value's bits from 10 up; the low byte's part of the sum may carry.
        __m512i const bits10 = Select(Bytes(0x03), _mm512_srli_epi16(v, 4), _mm512_slli_epi16(v1, 2));
        Mask const noCarry = _mm512_mask_cmplt_epu8_mask(at.thirdOfFour, bits10, Bytes(0x40));
        units.low = _mm512_mask_sub_epi8(units.low, at.thirdOfFour, bits10, Bytes(0x40));
        __m512i high = _mm512_add_epi8(_mm512_and_si512(v2, Bytes(0x0F)), Bytes(0xD8));
        high = _mm512_mask_sub_epi8(high, noCarry, high, Bytes(1));
        __m512i const lowSurrogate =
            _mm512_ternarylogic_epi32(units.high, Bytes(0x03), Bytes(0xDC), 0xEA); // (a & b) | c
        units.high = _mm512_mask_mov_epi8(units.high, at.fourth, lowSurrogate);
        units.high = _mm512_mask_mov_epi8(units.high, at.thirdOfFour, high);
        return _mm512_mask_cmpge_epu8_mask(at.thirdOfFour, _mm512_sub_epi8(high, Bytes(0xD8)), Bytes(4));
    }

    static void Substitute(Units& units, Mask at) noexcept
    {
        units.low = _mm512_mask_mov_epi8(units.low, at, Bytes(0xFD));
        units.high = _mm512_mask_mov_epi8(units.high, at, Bytes(0xFF));
    }

    /// Interleaving works on the four quarters of a register each for itself: this order makes the result come out in
    /// sequence, the units 0-31 in the lower parts of the quarters and 32-63 in the upper ones.
    static __m512i Spread(__m512i bytes) noexcept
    {
        return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7), bytes);
    }

    static void Store(Units const& units, Mask keep, char16_t* dst) noexcept
    {
        __m512i const low = Spread(_mm512_maskz_compress_epi8(keep, units.low));
        __m512i const high = Spread(_mm512_maskz_compress_epi8(keep, units.high));
        _mm512_storeu_si512(dst, _mm512_unpacklo_epi8(low, high));
        _mm512_storeu_si512(dst + 32, _mm512_unpackhi_epi8(low, high));
    }

    static void StorePart(Units const& units, Mask keep, char16_t* dst, std::size_t) noexcept
    {
        __m512i const low = Spread(_mm512_maskz_compress_epi8(keep, units.low));
        __m512i const high = Spread(_mm512_maskz_compress_epi8(keep, units.high));
        Mask const written = LowBits(Count(keep));
        _mm512_mask_storeu_epi16(dst, static_cast<__mmask32>(written), _mm512_unpacklo_epi8(low, high));
        _mm512_mask_storeu_epi16(dst + 32, static_cast<__mmask32>(written >> 32), _mm512_unpackhi_epi8(low, high));
    }

    /// The same idea with a second interleaving: the four-byte groups of the units 16k to 16k+15 go to place k of each
    /// quarter.
    static void Store(Units const& units, Mask keep, char32_t* dst) noexcept
    {
        __m512i const order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
        __m512i const low = _mm512_permutexvar_epi32(order, _mm512_maskz_compress_epi8(keep, units.low));
        __m512i const high = _mm512_permutexvar_epi32(order, _mm512_maskz_compress_epi8(keep, units.high));
        __m512i const plane = _mm512_permutexvar_epi32(order, _mm512_maskz_compress_epi8(keep, units.plane));
        __m512i const zero = _mm512_setzero_si512();
        __m512i const units0 = _mm512_unpacklo_epi8(low, high);
        __m512i const units1 = _mm512_unpackhi_epi8(low, high);
        __m512i const planes0 = _mm512_unpacklo_epi8(plane, zero);
        __m512i const planes1 = _mm512_unpackhi_epi8(plane, zero);
        _mm512_storeu_si512(dst, _mm512_unpacklo_epi16(units0, planes0));
        _mm512_storeu_si512(dst + 16, _mm512_unpackhi_epi16(units0, planes0));
        _mm512_storeu_si512(dst + 32, _mm512_unpacklo_epi16(units1, planes1));
        _mm512_storeu_si512(dst + 48, _mm512_unpackhi_epi16(units1, planes1));
    }
};

} // namespace

namespace avx512 {

std::size_t Utf8ToUtf16(char const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    return DecodeToUtf16<Form::Utf16, Avx512>(src, n, dst, substitutions);
}

std::size_t Utf16LengthOfUtf8(char const* src, std::size_t n) noexcept
{
    std::size_t substitutions = 0;
    return DecodeToUtf16<Form::Utf16Length, Avx512>(src, n, nullptr, substitutions);
}

std::size_t Utf8PrefixToUtf32(char const* src, std::size_t n, char32_t* dst, std::size_t& consumed) noexcept
{
    return DecodeToUtf32<Avx512>(src, n, dst, consumed);
}

} // namespace avx512
} // namespace qvxsys::text
