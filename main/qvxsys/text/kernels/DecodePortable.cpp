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

/// Widens the ASCII that begins a block of sixteen, then decodes by parts to the block's end, so that text which
/// alternates between ASCII and another script does not go back and forth at every byte.
template<bool kWrite>
inline std::size_t DecodeToUtf16(char const* src, std::size_t n, char16_t* dst, std::size_t& malformed) noexcept
{
    auto const* const s = reinterpret_cast<unsigned char const*>(src);
    Progress progress;
    while (n - progress.in >= kBlock) {
        __m128i const block = LoadBlock(s + progress.in);
        if constexpr (kWrite) {
            Widen(block, dst + progress.out);
        }
        std::size_t const end = progress.in + kBlock;
        std::size_t const ascii = LeadingAscii(block);
        progress.in += ascii;
        progress.out += ascii;
        if (ascii == kBlock) {
            continue;
        }
        progress = DecodeByParts<kWrite>(s, n, dst, progress, end, malformed);
    }
    return DecodeByParts<kWrite>(s, n, dst, progress, n, malformed).out;
}

} // namespace

namespace portable {

std::size_t Utf8ToUtf16(char const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    return DecodeToUtf16<true>(src, n, dst, substitutions);
}

std::size_t Utf16LengthOfUtf8(char const* src, std::size_t n) noexcept
{
    std::size_t substitutions = 0;
    return DecodeToUtf16<false>(src, n, nullptr, substitutions);
}

std::size_t Utf8PrefixToUtf32(char const* src, std::size_t n, char32_t* dst, std::size_t& consumed) noexcept
{
    auto const* const s = reinterpret_cast<unsigned char const*>(src);
    Progress progress;
    while (n - progress.in >= kBlock) {
        __m128i const block = LoadBlock(s + progress.in);
        bool const hasZero = _mm_movemask_epi8(_mm_cmpeq_epi8(block, _mm_setzero_si128())) != 0;
        std::size_t const end = progress.in + kBlock;
        if (!hasZero) {
            Widen(block, dst + progress.out);
            std::size_t const ascii = LeadingAscii(block);
            progress.in += ascii;
            progress.out += ascii;
        }
        progress = DecodePrefixByParts(s, n, dst, progress, end);
        if (progress.in < end) {
            break;
        }
    }
    progress = DecodePrefixByParts(s, n, dst, progress, n);
    consumed = progress.in;
    return progress.out;
}

} // namespace portable
} // namespace qvxsys::text
