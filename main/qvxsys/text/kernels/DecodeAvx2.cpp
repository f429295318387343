// UTF-8 decoding with AVX2: ASCII by blocks, everything else part by part.

#include "DecodeScalar.h"
#include "Kernels.h"

#include <immintrin.h>

namespace qvxsys::text {
namespace {

constexpr std::size_t kBlock = 32;

inline std::size_t LeadingAscii(unsigned char const* s, __m256i& block) noexcept
{
    block = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(s));
    auto const high = static_cast<unsigned>(_mm256_movemask_epi8(block));
    return high == 0 ? kBlock : static_cast<std::size_t>(__builtin_ctz(high));
}

inline void Widen(__m256i block, char16_t* dst) noexcept
{
    auto* const to = reinterpret_cast<__m256i*>(dst);
    _mm256_storeu_si256(to, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(block)));
    _mm256_storeu_si256(to + 1, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(block, 1)));
}

inline unsigned char const* Bytes(char const* src) noexcept
{
    return reinterpret_cast<unsigned char const*>(src);
}

} // namespace

namespace avx2 {

std::size_t Utf8ToUtf16(char const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    unsigned char const* const s = Bytes(src);
    std::size_t out = 0;
    std::size_t malformed = 0;
    for (std::size_t i = 0; i < n;) {
        std::size_t end = n;
        if (n - i >= kBlock) {
            __m256i block;
            std::size_t const ascii = LeadingAscii(s + i, block);
            Widen(block, dst + out);
            end = i + kBlock;
            i += ascii;
            out += ascii;
        }
        while (i < end) {
            DecodedPart const part = DecodePart(s + i, n - i);
            out += PutUtf16(part.value, dst + out);
            malformed += part.malformed;
            i += part.length;
        }
    }
    substitutions += malformed;
    return out;
}

std::size_t Utf16LengthOfUtf8(char const* src, std::size_t n) noexcept
{
    unsigned char const* const s = Bytes(src);
    std::size_t out = 0;
    for (std::size_t i = 0; i < n;) {
        std::size_t end = n;
        if (n - i >= kBlock) {
            __m256i block;
            std::size_t const ascii = LeadingAscii(s + i, block);
            end = i + kBlock;
            i += ascii;
            out += ascii;
        }
        while (i < end) {
            DecodedPart const part = DecodePart(s + i, n - i);
            out += part.value < 0x10000 ? 1u : 2u;
            i += part.length;
        }
    }
    return out;
}

std::size_t Utf8PrefixToUtf32(char const* src, std::size_t n, char32_t* dst, std::size_t& consumed) noexcept
{
    unsigned char const* const s = Bytes(src);
    std::size_t out = 0;
    std::size_t i = 0;
    while (i < n) {
        DecodedPart const part = DecodePart(s + i, n - i);
        if (part.malformed || part.value == 0) {
            break;
        }
        dst[out++] = part.value;
        i += part.length;
    }
    consumed = i;
    return out;
}

} // namespace avx2
} // namespace qvxsys::text
