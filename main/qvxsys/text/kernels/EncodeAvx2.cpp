// The encoding kernels for processors with AVX2.

#include "kernels/EncodeScalar.h"
#include "kernels/Kernels.h"

#include <immintrin.h>

namespace qvxsys::text::avx2 {
namespace {

/// Converts ASCII from src on, in blocks of 16; returns the number of units.
std::size_t AsciiRun(char16_t const* src, std::size_t n, char* dst) noexcept
{
    std::size_t i = 0;
    for (; n - i >= 16; i += 16) {
        __m256i const v = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(src + i));
        if (!_mm256_testz_si256(v, _mm256_set1_epi16(static_cast<short>(0xFF80))))
            break;
        __m128i const bytes = _mm_packus_epi16(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), bytes);
    }
    return i;
}

std::size_t Utf32ToUtf16Any(char32_t const* src, std::size_t n, char16_t* dst, bool raw,
                            std::size_t& substitutions) noexcept
{
    char16_t* out = dst;
    for (std::size_t i = 0; i < n; ++i)
        out = PutUtf16(out, EncodableInUtf16(src[i], raw, substitutions));
    return static_cast<std::size_t>(out - dst);
}

} // namespace

std::size_t Utf16ToUtf8(char16_t const* src, std::size_t n, char* dst, std::size_t& substitutions) noexcept
{
    char* out = dst;
    for (std::size_t i = 0; i < n;) {
        std::size_t const run = AsciiRun(src + i, n - i, out);
        i += run;
        out += run;
        for (std::size_t const stop = n - i < 16 ? n : i + 16; i < stop;)
            out = PutUtf8(out, NextCodePoint(src, n, i, substitutions));
    }
    return static_cast<std::size_t>(out - dst);
}

std::size_t Utf8LengthOfUtf16(char16_t const* src, std::size_t n) noexcept
{
    std::size_t length = 0;
    for (std::size_t i = 0; i < n; ++i)
        length += Utf8LengthOfUnitAt(src, n, i);
    return length;
}

std::size_t Utf16ToUtf32(char16_t const* src, std::size_t n, char32_t* dst, std::size_t& substitutions) noexcept
{
    char32_t* out = dst;
    for (std::size_t i = 0; i < n;)
        *out++ = NextCodePoint(src, n, i, substitutions);
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
    for (std::size_t i = 0; i < n; ++i)
        out = PutUtf8(out, EncodableInUtf8(src[i]));
    return static_cast<std::size_t>(out - dst);
}

void CopyWellFormed(char16_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    for (std::size_t i = 0; i < n; ++i)
        dst[i] = WellFormedUnitAt(src, n, i, substitutions);
}

std::size_t CountCodePoints(char16_t const* src, std::size_t n) noexcept
{
    std::size_t pairs = 0;
    for (std::size_t i = 0; i < n; ++i)
        pairs += IsPairAt(src, n, i) ? 1 : 0;
    return n - pairs;
}

std::size_t CountUnit(char16_t const* src, std::size_t n, char16_t unit) noexcept
{
    std::size_t found = 0;
    for (std::size_t i = 0; i < n; ++i)
        found += src[i] == unit ? 1 : 0;
    return found;
}

} // namespace qvxsys::text::avx2
