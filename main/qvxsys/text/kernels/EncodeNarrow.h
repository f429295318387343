#pragma once
// The encoding loops on 128-bit vectors, with SSE2 alone: all of the portable kernels, and what the AVX2 kernels use
// for the last units of a text. Each goes on from the unit src[i] (or counts from there) to the end. Internal linkage
// for the reason given in EncodeScalar.h.

#include "kernels/EncodeScalar.h"

#include <cstring>
#include <emmintrin.h>

namespace qvxsys::text {
namespace {
namespace narrow {

inline __m128i Load(void const* p) noexcept
{
    return _mm_loadu_si128(static_cast<__m128i const*>(p));
}

inline void Store(void* p, __m128i v) noexcept
{
    _mm_storeu_si128(static_cast<__m128i*>(p), v);
}

inline __m128i Words(unsigned w) noexcept
{
    return _mm_set1_epi16(static_cast<short>(w));
}

inline __m128i Dwords(unsigned d) noexcept
{
    return _mm_set1_epi32(static_cast<int>(d));
}

inline bool AllZero(__m128i v) noexcept
{
    return _mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_setzero_si128())) == 0xFFFF;
}

/// All ones in each word of v whose bits under `mask` are `value`.
inline __m128i WordsWith(__m128i v, unsigned mask, unsigned value) noexcept
{
    return _mm_cmpeq_epi16(_mm_and_si128(v, Words(mask)), Words(value));
}

inline bool HasSurrogates(__m128i v) noexcept
{
    return _mm_movemask_epi8(WordsWith(v, 0xF800, 0xD800)) != 0;
}

/// The lower halves of eight values as words.
inline __m128i NarrowToWords(__m128i a, __m128i b) noexcept
{
    // Sign-extending the lower halves first makes the signed pack keep all 16 bits.
    return _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(a, 16), 16), _mm_srai_epi32(_mm_slli_epi32(b, 16), 16));
}

/// Sums of 16-bit counters kept as negative numbers, the way compare masks leave them when added.
inline std::size_t SumOfNegatives(__m128i counters) noexcept
{
    __m128i sums = _mm_madd_epi16(counters, Words(1));
    sums = _mm_add_epi32(sums, _mm_shuffle_epi32(sums, _MM_SHUFFLE(1, 0, 3, 2)));
    sums = _mm_add_epi32(sums, _mm_shuffle_epi32(sums, _MM_SHUFFLE(2, 3, 0, 1)));
    return static_cast<std::size_t>(-_mm_cvtsi128_si32(sums));
}

/// How many of `blocks` may be counted in 16-bit counters when one adds up to 2.
inline std::size_t Countable(std::size_t blocks) noexcept
{
    return blocks < 16000 ? blocks : 16000;
}

/// Eight units as UTF-8, surrogates as three bytes. Needs room for 25 bytes. Each unit is written with as many bytes as
/// the longest one may need, and the next one over those that were not used: no branch depends on a single unit.
inline char* EncodeEight(__m128i v, char* out) noexcept
{
    __m128i const isAscii = WordsWith(v, 0xFF80, 0);
    unsigned ascii = static_cast<unsigned>(_mm_movemask_epi8(isAscii)); // two bits a unit
    if (ascii == 0xFFFF) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(v, v));
        return out + 8;
    }
    __m128i const isSmall = WordsWith(v, 0xF800, 0);
    unsigned small = static_cast<unsigned>(_mm_movemask_epi8(isSmall));
    __m128i const last = _mm_or_si128(_mm_and_si128(v, Words(0x3F)), Words(0x80));
    __m128i const two = _mm_or_si128(_mm_or_si128(_mm_srli_epi16(v, 6), Words(0xC0)), _mm_slli_epi16(last, 8));
    __m128i const oneOrTwo = _mm_or_si128(_mm_and_si128(isAscii, v), _mm_andnot_si128(isAscii, two));
    if (small == 0xFFFF) {
        std::uint16_t words[8];
        Store(words, oneOrTwo);
        for (std::uint16_t const& word : words) {
            std::memcpy(out, &word, sizeof word);
            out += 2 - (ascii & 1);
            ascii >>= 2;
        }
        return out;
    }
    __m128i const middle = _mm_slli_epi16(_mm_and_si128(_mm_srli_epi16(v, 6), Words(0x3F)), 8);
    __m128i const three = _mm_or_si128(_mm_or_si128(_mm_srli_epi16(v, 12), middle), Words(0x80E0));
    __m128i const front = _mm_or_si128(_mm_and_si128(isSmall, oneOrTwo), _mm_andnot_si128(isSmall, three));
    std::uint32_t dwords[8];
    Store(dwords, _mm_unpacklo_epi16(front, last));
    Store(dwords + 4, _mm_unpackhi_epi16(front, last));
    if (small == 0) { // fixed steps, which do not wait for one another
        for (std::uint32_t const& dword : dwords) {
            std::memcpy(out, &dword, sizeof dword);
            out += 3;
        }
        return out;
    }
    for (std::uint32_t const& dword : dwords) {
        std::memcpy(out, &dword, sizeof dword);
        out += 3 - (ascii & 1) - (small & 1);
        ascii >>= 2;
        small >>= 2;
    }
    return out;
}

inline char* Utf16ToUtf8(char16_t const* src, std::size_t n, std::size_t i, char* out,
                         std::size_t& substitutions) noexcept
{
    while (n - i > 8) {
        __m128i const v = Load(src + i);
        if (n - i >= 16) {
            __m128i const w = Load(src + i + 8);
            if (AllZero(_mm_and_si128(_mm_or_si128(v, w), Words(0xFF80)))) {
                Store(out, _mm_packus_epi16(v, w));
                i += 16;
                out += 16;
                continue;
            }
        }
        std::size_t const stop = i + 8;
        if (HasSurrogates(v)) {
            while (i < stop)
                out = PutUtf8(out, NextCodePoint(src, n, i, substitutions));
        } else {
            out = EncodeEight(v, out);
            i = stop;
        }
    }
    while (n - i >= 4) {
        __m128i const v = _mm_loadl_epi64(reinterpret_cast<__m128i const*>(src + i));
        if (!AllZero(_mm_and_si128(v, Words(0xFF80))))
            break;
        int const bytes = _mm_cvtsi128_si32(_mm_packus_epi16(v, v));
        std::memcpy(out, &bytes, sizeof bytes);
        i += 4;
        out += 4;
    }
    while (i < n)
        out = PutUtf8(out, NextCodePoint(src, n, i, substitutions));
    return out;
}

inline std::size_t Utf8LengthOfUtf16(char16_t const* src, std::size_t n, std::size_t i) noexcept
{
    // Three bytes a unit, less one each for units below 0x800 and 0x80, less two for a pair (four bytes, not six).
    std::size_t length = 3 * (n - i);
    while (n - i > 8) {
        __m128i savings = _mm_setzero_si128();
        for (std::size_t const stop = i + Countable((n - i - 1) / 8) * 8; i < stop; i += 8) {
            __m128i const v = Load(src + i);
            __m128i const low = WordsWith(Load(src + i + 1), 0xFC00, 0xDC00);
            __m128i const pair = _mm_and_si128(WordsWith(v, 0xFC00, 0xD800), low);
            __m128i const below = _mm_add_epi16(WordsWith(v, 0xFF80, 0), WordsWith(v, 0xF800, 0));
            savings = _mm_add_epi16(savings, _mm_add_epi16(below, _mm_add_epi16(pair, pair)));
        }
        length -= SumOfNegatives(savings);
    }
    for (; i < n; ++i)
        length -= (src[i] < 0x800 ? 1U : 0U) + (src[i] < 0x80 ? 1U : 0U) + (IsPairAt(src, n, i) ? 2U : 0U);
    return length;
}

inline char32_t* Utf16ToUtf32(char16_t const* src, std::size_t n, std::size_t i, char32_t* out,
                              std::size_t& substitutions) noexcept
{
    while (n - i >= 8) {
        __m128i const v = Load(src + i);
        std::size_t const stop = i + 8;
        if (HasSurrogates(v)) {
            while (i < stop)
                *out++ = NextCodePoint(src, n, i, substitutions);
        } else {
            Store(out, _mm_unpacklo_epi16(v, _mm_setzero_si128()));
            Store(out + 4, _mm_unpackhi_epi16(v, _mm_setzero_si128()));
            i = stop;
            out += 8;
        }
    }
    while (i < n)
        *out++ = NextCodePoint(src, n, i, substitutions);
    return out;
}

template<bool Raw>
inline char16_t* Utf32ToUtf16(char32_t const* src, std::size_t n, std::size_t i, char16_t* out,
                              std::size_t& substitutions) noexcept
{
    while (i < n) {
        std::size_t const stop = n - i < 8 ? n : i + 8;
        if (n - i >= 8) {
            __m128i const a = Load(src + i);
            __m128i const b = Load(src + i + 4);
            __m128i const units = NarrowToWords(a, b);
            if (AllZero(_mm_and_si128(_mm_or_si128(a, b), Dwords(0xFFFF0000))) && (Raw || !HasSurrogates(units))) {
                Store(out, units);
                i = stop;
                out += 8;
            }
        }
        for (; i < stop; ++i)
            out = PutUtf16(out, EncodableInUtf16(src[i], Raw, substitutions));
    }
    return out;
}

inline char* Utf32ToUtf8Raw(char32_t const* src, std::size_t n, std::size_t i, char* out) noexcept
{
    while (n - i >= 8) {
        __m128i const a = Load(src + i);
        __m128i const b = Load(src + i + 4);
        std::size_t const stop = i + 8;
        if (AllZero(_mm_and_si128(_mm_or_si128(a, b), Dwords(0xFFFF0000)))) {
            out = EncodeEight(NarrowToWords(a, b), out);
            i = stop;
        }
        while (i < stop)
            out = PutUtf8(out, EncodableInUtf8(src[i++]));
    }
    while (i < n)
        out = PutUtf8(out, EncodableInUtf8(src[i++]));
    return out;
}

inline void CopyWellFormed(char16_t const* src, std::size_t n, std::size_t i, char16_t* dst,
                           std::size_t& substitutions) noexcept
{
    for (; n - i >= 8; i += 8) {
        __m128i v = Load(src + i);
        if (HasSurrogates(v) && (i == 0 || n - i == 8)) {
            for (std::size_t k = i; k < i + 8; ++k)
                dst[k] = WellFormedUnitAt(src, n, k, substitutions);
            continue;
        }
        if (HasSurrogates(v)) {
            // A high surrogate needs a low one behind it, a low one a high one before it.
            __m128i const high = WordsWith(v, 0xFC00, 0xD800);
            __m128i const low = WordsWith(v, 0xFC00, 0xDC00);
            __m128i const lone = _mm_or_si128(_mm_andnot_si128(WordsWith(Load(src + i + 1), 0xFC00, 0xDC00), high),
                                              _mm_andnot_si128(WordsWith(Load(src + i - 1), 0xFC00, 0xD800), low));
            v = _mm_or_si128(_mm_andnot_si128(lone, v), _mm_and_si128(lone, Words(replacementCharacter)));
            substitutions += SumOfNegatives(lone);
        }
        Store(dst + i, v);
    }
    for (; i < n; ++i)
        dst[i] = WellFormedUnitAt(src, n, i, substitutions);
}

/// The number of pairs whose first half is at or behind src[i].
inline std::size_t CountPairs(char16_t const* src, std::size_t n, std::size_t i) noexcept
{
    std::size_t pairs = 0;
    while (n - i > 8) {
        __m128i count = _mm_setzero_si128();
        for (std::size_t const stop = i + Countable((n - i - 1) / 8) * 8; i < stop; i += 8) {
            __m128i const low = WordsWith(Load(src + i + 1), 0xFC00, 0xDC00);
            count = _mm_add_epi16(count, _mm_and_si128(WordsWith(Load(src + i), 0xFC00, 0xD800), low));
        }
        pairs += SumOfNegatives(count);
    }
    for (; i < n; ++i)
        pairs += IsPairAt(src, n, i) ? 1 : 0;
    return pairs;
}

inline std::size_t CountUnit(char16_t const* src, std::size_t n, std::size_t i, char16_t unit) noexcept
{
    std::size_t found = 0;
    while (n - i >= 8) {
        __m128i count = _mm_setzero_si128();
        for (std::size_t const stop = i + Countable((n - i) / 8) * 8; i < stop; i += 8)
            count = _mm_add_epi16(count, _mm_cmpeq_epi16(Load(src + i), Words(unit)));
        found += SumOfNegatives(count);
    }
    for (; i < n; ++i)
        found += src[i] == unit ? 1 : 0;
    return found;
}

} // namespace narrow
} // namespace
} // namespace qvxsys::text
