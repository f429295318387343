// The encoding kernels for any x86-64 processor: SSE2 for runs of the common cases, one code point at a time else.

#include "kernels/EncodeScalar.h"
#include "kernels/Kernels.h"

#include <cstring>
#include <emmintrin.h>

namespace qvxsys::text::portable {
namespace {

__m128i Load(void const* p) noexcept
{
    return _mm_loadu_si128(static_cast<__m128i const*>(p));
}

void Store(void* p, __m128i v) noexcept
{
    _mm_storeu_si128(static_cast<__m128i*>(p), v);
}

__m128i Words(unsigned w) noexcept
{
    return _mm_set1_epi16(static_cast<short>(w));
}

__m128i Dwords(unsigned d) noexcept
{
    return _mm_set1_epi32(static_cast<int>(d));
}

bool AllZero(__m128i v) noexcept
{
    return _mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_setzero_si128())) == 0xFFFF;
}

/// All ones in each lane of v whose bits under `mask` are `value`.
__m128i WordsWith(__m128i v, unsigned mask, unsigned value) noexcept
{
    return _mm_cmpeq_epi16(_mm_and_si128(v, Words(mask)), Words(value));
}

bool HasSurrogates(__m128i v) noexcept
{
    return _mm_movemask_epi8(WordsWith(v, 0xF800, 0xD800)) != 0;
}

/// Sums of 16-bit counters kept as negative numbers, the way compare-and-subtract leaves them when added.
std::size_t SumOfNegatives(__m128i counters) noexcept
{
    alignas(16) std::int32_t sums[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(sums), _mm_madd_epi16(counters, Words(1)));
    return static_cast<std::size_t>(-(std::int64_t{sums[0]} + sums[1] + sums[2] + sums[3]));
}

/// Blocks of eight units that 16-bit counters bear when one block adds up to 2.
constexpr std::size_t blocksPerSum = 16000;

/// Converts ASCII from src[i] on, up to 15 units before the end; returns the number of units.
std::size_t AsciiRun(char16_t const* src, std::size_t n, char* dst) noexcept
{
    std::size_t i = 0;
    for (; n - i >= 16; i += 16) {
        __m128i const a = Load(src + i);
        __m128i const b = Load(src + i + 8);
        __m128i const outside = _mm_and_si128(_mm_or_si128(a, b), Words(0xFF80));
        if (!AllZero(outside))
            break;
        Store(dst + i, _mm_packus_epi16(a, b));
    }
    return i;
}

std::size_t Utf32ToUtf16Any(char32_t const* src, std::size_t n, char16_t* dst, bool raw,
                            std::size_t& substitutions) noexcept
{
    char16_t* out = dst;
    __m128i const rawLanes = Dwords(raw ? 0xFFFFFFFF : 0);
    for (std::size_t i = 0; i < n;) {
        std::size_t stop = n;
        if (n - i >= 8) {
            __m128i const a = Load(src + i);
            __m128i const b = Load(src + i + 4);
            // Sign-extending the lower halves first makes the signed pack keep all 16 bits.
            __m128i const units =
                _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(a, 16), 16), _mm_srai_epi32(_mm_slli_epi32(b, 16), 16));
            __m128i const above = _mm_and_si128(_mm_or_si128(a, b), Dwords(0xFFFF0000));
            __m128i const surrogates = _mm_andnot_si128(rawLanes, WordsWith(units, 0xF800, 0xD800));
            if (AllZero(_mm_or_si128(above, surrogates))) {
                Store(out, units);
                i += 8;
                out += 8;
                continue;
            }
            stop = i + 8;
        }
        for (; i < stop; ++i)
            out = PutUtf16(out, EncodableInUtf16(src[i], raw, substitutions));
    }
    return static_cast<std::size_t>(out - dst);
}

} // namespace

std::size_t Utf16ToUtf8(char16_t const* src, std::size_t n, char* dst, std::size_t& substitutions) noexcept
{
    char* out = dst;
    std::size_t i = 0;
    while (i < n) {
        std::size_t const run = AsciiRun(src + i, n - i, out);
        i += run;
        out += run;
        // Leave the slow loop only when four ASCII units follow: a lone space is not worth the vector attempt.
        while (i < n) {
            out = PutUtf8(out, NextCodePoint(src, n, i, substitutions));
            std::uint64_t next = 0;
            if (n - i < 16 || src[i] >= 0x80)
                continue;
            std::memcpy(&next, src + i, sizeof next);
            if ((next & 0xFF80FF80FF80FF80U) == 0)
                break;
        }
    }
    return static_cast<std::size_t>(out - dst);
}

std::size_t Utf8LengthOfUtf16(char16_t const* src, std::size_t n) noexcept
{
    std::size_t length = 0;
    std::size_t i = 0;
    // Three bytes a unit, less one each for units below 0x800 and 0x80, less two for a pair (four bytes, not six).
    while (n - i >= 9) {
        std::size_t blocks = (n - i - 1) / 8;
        blocks = blocks < blocksPerSum ? blocks : blocksPerSum;
        __m128i savings = _mm_setzero_si128();
        for (std::size_t const stop = i + blocks * 8; i < stop; i += 8) {
            __m128i const v = Load(src + i);
            __m128i const pair =
                _mm_and_si128(WordsWith(v, 0xFC00, 0xD800), WordsWith(Load(src + i + 1), 0xFC00, 0xDC00));
            __m128i const below = _mm_add_epi16(WordsWith(v, 0xFF80, 0), WordsWith(v, 0xF800, 0));
            savings = _mm_add_epi16(savings, _mm_add_epi16(below, _mm_add_epi16(pair, pair)));
        }
        length += blocks * 24 - SumOfNegatives(savings);
    }
    // A pair's saving was taken at its first half: the second half counts as 3 then.
    if (i < n && i > 0 && IsPairAt(src, n, i - 1)) {
        length += 3;
        ++i;
    }
    for (; i < n; ++i)
        length += Utf8LengthOfUnitAt(src, n, i);
    return length;
}

std::size_t Utf16ToUtf32(char16_t const* src, std::size_t n, char32_t* dst, std::size_t& substitutions) noexcept
{
    char32_t* out = dst;
    for (std::size_t i = 0; i < n;) {
        std::size_t stop = n;
        if (n - i >= 8) {
            __m128i const v = Load(src + i);
            if (!HasSurrogates(v)) {
                Store(out, _mm_unpacklo_epi16(v, _mm_setzero_si128()));
                Store(out + 4, _mm_unpackhi_epi16(v, _mm_setzero_si128()));
                i += 8;
                out += 8;
                continue;
            }
            stop = i + 8;
        }
        while (i < stop)
            *out++ = NextCodePoint(src, n, i, substitutions);
    }
    return static_cast<std::size_t>(out - dst);
}

std::size_t Utf32ToUtf16(char32_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    return Utf32ToUtf16Any(src, n, dst, false, substitutions);
}

std::size_t Utf32ToUtf16Raw(char32_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    return Utf32ToUtf16Any(src, n, dst, true, substitutions);
}

std::size_t Utf32ToUtf8Raw(char32_t const* src, std::size_t n, char* dst) noexcept
{
    char* out = dst;
    for (std::size_t i = 0; i < n;) {
        std::size_t stop = n;
        if (n - i >= 16) {
            __m128i const a = Load(src + i);
            __m128i const b = Load(src + i + 4);
            __m128i const c = Load(src + i + 8);
            __m128i const d = Load(src + i + 12);
            __m128i const all = _mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d));
            if (AllZero(_mm_and_si128(all, Dwords(0xFFFFFF80)))) {
                Store(out, _mm_packus_epi16(_mm_packs_epi32(a, b), _mm_packs_epi32(c, d)));
                i += 16;
                out += 16;
                continue;
            }
            stop = i + 16;
        }
        for (; i < stop; ++i)
            out = PutUtf8(out, EncodableInUtf8(src[i]));
    }
    return static_cast<std::size_t>(out - dst);
}

void CopyWellFormed(char16_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    std::size_t i = 0;
    for (; n - i >= 8; i += 8) {
        __m128i const v = Load(src + i);
        Store(dst + i, v);
        if (!HasSurrogates(v))
            continue;
        for (std::size_t k = i; k < i + 8; ++k)
            dst[k] = WellFormedUnitAt(src, n, k, substitutions);
    }
    for (; i < n; ++i)
        dst[i] = WellFormedUnitAt(src, n, i, substitutions);
}

std::size_t CountCodePoints(char16_t const* src, std::size_t n) noexcept
{
    std::size_t pairs = 0;
    std::size_t i = 0;
    while (n - i >= 9) {
        std::size_t blocks = (n - i - 1) / 8;
        blocks = blocks < blocksPerSum ? blocks : blocksPerSum;
        __m128i count = _mm_setzero_si128();
        for (std::size_t const stop = i + blocks * 8; i < stop; i += 8) {
            __m128i const low = WordsWith(Load(src + i + 1), 0xFC00, 0xDC00);
            count = _mm_add_epi16(count, _mm_and_si128(WordsWith(Load(src + i), 0xFC00, 0xD800), low));
        }
        pairs += SumOfNegatives(count);
    }
    for (; i < n; ++i)
        pairs += IsPairAt(src, n, i) ? 1 : 0;
    return n - pairs;
}

std::size_t CountUnit(char16_t const* src, std::size_t n, char16_t unit) noexcept
{
    std::size_t found = 0;
    std::size_t i = 0;
    while (n - i >= 8) {
        std::size_t const blocks = (n - i) / 8 < blocksPerSum ? (n - i) / 8 : blocksPerSum;
        __m128i count = _mm_setzero_si128();
        for (std::size_t const stop = i + blocks * 8; i < stop; i += 8)
            count = _mm_add_epi16(count, WordsWith(Load(src + i), 0xFFFF, unit));
        found += SumOfNegatives(count);
    }
    for (; i < n; ++i)
        found += src[i] == unit ? 1 : 0;
    return found;
}

} // namespace qvxsys::text::portable
