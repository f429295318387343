#pragma once
// The one-code-point steps shared by the encoding kernels. They have internal linkage on purpose: each kernel file gets
// its own copy, compiled for its own instruction set, so the linker can never give one processor another's code.

#include <cstddef>
#include <cstdint>

namespace qvxsys::text {
namespace {

inline constexpr char32_t replacementCharacter = 0xFFFD;

inline bool IsSurrogate(char32_t c) noexcept
{
    return (c & 0xFFFFF800U) == 0xD800;
}

inline bool IsHighSurrogate(char32_t c) noexcept
{
    return (c & 0xFFFFFC00U) == 0xD800;
}

inline bool IsLowSurrogate(char32_t c) noexcept
{
    return (c & 0xFFFFFC00U) == 0xDC00;
}

/// Whether src[i] is the first half of a surrogate pair.
inline bool IsPairAt(char16_t const* src, std::size_t n, std::size_t i) noexcept
{
    return IsHighSurrogate(src[i]) && n - i > 1 && IsLowSurrogate(src[i + 1]);
}

/// Whether src[i] is a surrogate without its other half. A high surrogate before a low one always belongs to it, so
/// looking at the two neighbours is enough.
inline bool IsLoneSurrogateAt(char16_t const* src, std::size_t n, std::size_t i) noexcept
{
    if (!IsSurrogate(src[i]))
        return false;
    return IsHighSurrogate(src[i]) ? !IsPairAt(src, n, i) : i == 0 || !IsHighSurrogate(src[i - 1]);
}

/// The code point at src[i], which must begin there; moves i behind it.
inline char32_t NextCodePoint(char16_t const* src, std::size_t n, std::size_t& i, std::size_t& substitutions) noexcept
{
    char32_t const c = src[i++];
    if (!IsSurrogate(c))
        return c;
    if (IsHighSurrogate(c) && i < n && IsLowSurrogate(src[i]))
        return (c << 10) + src[i++] - ((0xD800U << 10) + 0xDC00U - 0x10000U);
    ++substitutions;
    return replacementCharacter;
}

inline char16_t WellFormedUnitAt(char16_t const* src, std::size_t n, std::size_t i, std::size_t& substitutions) noexcept
{
    if (!IsLoneSurrogateAt(src, n, i))
        return src[i];
    ++substitutions;
    return static_cast<char16_t>(replacementCharacter);
}

/// Writes a value of up to 0x1FFFFF by the plain 1 to 4 byte rule; returns the position behind it.
inline char* PutUtf8(char* dst, char32_t c) noexcept
{
    auto const lead = [&](char32_t tag, unsigned shift) { *dst++ = static_cast<char>(tag | (c >> shift)); };
    auto const trail = [&](unsigned shift) { *dst++ = static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
    if (c < 0x80) {
        lead(0, 0);
    } else if (c < 0x800) {
        lead(0xC0, 6);
        trail(0);
    } else if (c < 0x10000) {
        lead(0xE0, 12);
        trail(6);
        trail(0);
    } else {
        lead(0xF0, 18);
        trail(12);
        trail(6);
        trail(0);
    }
    return dst;
}

/// Writes a value of up to 0x10FFFF; returns the position behind it.
inline char16_t* PutUtf16(char16_t* dst, char32_t c) noexcept
{
    if (c < 0x10000) {
        *dst++ = static_cast<char16_t>(c);
    } else {
        *dst++ = static_cast<char16_t>((c >> 10) + (0xD800U - (0x10000U >> 10)));
        *dst++ = static_cast<char16_t>((c & 0x3FF) | 0xDC00U);
    }
    return dst;
}

/// c if UTF-16 can hold it, else U+FFFD. Surrogate values pass only if `raw`.
inline char32_t EncodableInUtf16(char32_t c, bool raw, std::size_t& substitutions) noexcept
{
    if (c <= 0x10FFFF && (raw || !IsSurrogate(c)))
        return c;
    ++substitutions;
    return replacementCharacter;
}

/// c if four bytes of UTF-8 can hold it, else U+FFFD.
inline char32_t EncodableInUtf8(char32_t c) noexcept
{
    return c <= 0x1FFFFF ? c : replacementCharacter;
}

} // namespace
} // namespace qvxsys::text
