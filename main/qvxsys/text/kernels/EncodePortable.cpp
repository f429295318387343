// The encoding kernels for any x86-64 processor.

#include "kernels/EncodeNarrow.h"
#include "kernels/Kernels.h"

namespace qvxsys::text::portable {

std::size_t Utf16ToUtf8(char16_t const* src, std::size_t n, char* dst, std::size_t& substitutions) noexcept
{
    return static_cast<std::size_t>(narrow::Utf16ToUtf8(src, n, 0, dst, substitutions) - dst);
}

std::size_t Utf8LengthOfUtf16(char16_t const* src, std::size_t n) noexcept
{
    return narrow::Utf8LengthOfUtf16(src, n, 0);
}

std::size_t Utf16ToUtf32(char16_t const* src, std::size_t n, char32_t* dst, std::size_t& substitutions) noexcept
{
    return static_cast<std::size_t>(narrow::Utf16ToUtf32(src, n, 0, dst, substitutions) - dst);
}

std::size_t Utf32ToUtf16(char32_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    return static_cast<std::size_t>(narrow::Utf32ToUtf16<false>(src, n, 0, dst, substitutions) - dst);
}

std::size_t Utf32ToUtf16Raw(char32_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    return static_cast<std::size_t>(narrow::Utf32ToUtf16<true>(src, n, 0, dst, substitutions) - dst);
}

std::size_t Utf32ToUtf8Raw(char32_t const* src, std::size_t n, char* dst) noexcept
{
    return static_cast<std::size_t>(narrow::Utf32ToUtf8Raw(src, n, 0, dst) - dst);
}

void CopyWellFormed(char16_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept
{
    narrow::CopyWellFormed(src, n, 0, dst, substitutions);
}

std::size_t CountCodePoints(char16_t const* src, std::size_t n) noexcept
{
    return n - narrow::CountPairs(src, n, 0);
}

std::size_t CountUnit(char16_t const* src, std::size_t n, char16_t unit) noexcept
{
    return narrow::CountUnit(src, n, 0, unit);
}

} // namespace qvxsys::text::portable
