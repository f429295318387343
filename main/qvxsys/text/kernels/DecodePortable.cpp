// UTF-8 decoding for any x86-64: ASCII sixteen bytes at a time, everything else part by part.

#include "DecodeScalar.h"
#include "Kernels.h"

#include <emmintrin.h>

namespace qvxsys::text {
namespace {

constexpr std::size_t kBlock = 16;

/// The number of leading ASCII bytes of a block, 16 if there is nothing else.
inline std::size_t LeadingAscii(__m128i block) noexcept
{
    auto const high = static_cast<unsigned>(_mm_movemask_epi8(block));
    return static_cast<std::size_t>(__builtin_ctz(high | 1u << kBlock));
}

inline __m128i LoadBlock(unsigned char const* s) noexcept
{
    return _mm_loadu_si128(reinterpret_cast<__m128i const*>(s));
}

template<class Unit>
inline void StoreVector(Unit* dst, __m128i units) noexcept
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), units);
}

/// Widens a whole block. The caller advances only by its leading ASCII part; there is room for all of it because the
/// output never has more units than the input has bytes.
inline void Widen(__m128i block, char16_t* dst) noexcept
{
    __m128i const zero = _mm_setzero_si128();
    StoreVector(dst, _mm_unpacklo_epi8(block, zero));
    StoreVector(dst + 8, _mm_unpackhi_epi8(block, zero));
}

inline void Widen(__m128i block, char32_t* dst) noexcept
{
    __m128i const zero = _mm_setzero_si128();
    __m128i const low = _mm_unpacklo_epi8(block, zero);
    __m128i const high = _mm_unpackhi_epi8(block, zero);
    StoreVector(dst, _mm_unpacklo_epi16(low, zero));
    StoreVector(dst + 4, _mm_unpackhi_epi16(low, zero));
    StoreVector(dst + 8, _mm_unpacklo_epi16(high, zero));
    StoreVector(dst + 12, _mm_unpackhi_epi16(high, zero));
}

inline unsigned char const* Bytes(char const* src) noexcept
{
    return reinterpret_cast<unsigned char const*>(src);
}

} // namespace

namespace portable {

// All three keep to one plan: widen the ASCII that begins a block of sixteen, then decode part by part to the block's
// end, so that text which alternates between ASCII and another script does not go back and forth at every byte.

std::size_t Utf8ToUtf16(char const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    unsigned char const* const s = Bytes(src);
    std::size_t out = 0;
    std::size_t malformed = 0;
    for (std::size_t i = 0; i < n;) {
        std::size_t end = n;
        if (n - i >= kBlock) {
            __m128i const block = LoadBlock(s + i);
            Widen(block, dst + out);
            std::size_t const ascii = LeadingAscii(block);
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
            std::size_t const ascii = LeadingAscii(LoadBlock(s + i));
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
        std::size_t end = n;
        if (n - i >= kBlock) {
            __m128i const block = LoadBlock(s + i);
            bool const hasZero = _mm_movemask_epi8(_mm_cmpeq_epi8(block, _mm_setzero_si128())) != 0;
            std::size_t const ascii = hasZero ? 0 : LeadingAscii(block);
            Widen(block, dst + out);
            end = i + kBlock;
            i += ascii;
            out += ascii;
        }
        while (i < end) {
            DecodedPart const part = DecodePart(s + i, n - i);
            if (part.malformed || part.value == 0) {
                consumed = i;
                return out;
            }
            dst[out++] = part.value;
            i += part.length;
        }
    }
    consumed = i;
    return out;
}

} // namespace portable
} // namespace qvxsys::text
