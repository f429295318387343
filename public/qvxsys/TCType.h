#pragma once
// Character classes and single-character case mapping by the Unicode properties of the installed ICU.
//
//     bool const blank = TCType::isSpace(u'\u00A0');      // true: White_Space, unlike the C library's isspace
//     char16_t const small = TCType::ToLower(u'\u00C4');  // U+00E4
//
// Each function takes a character: a char16_t unit (a surrogate is a code point of its own here, class Cs), a char32_t
// code point, a wchar_t (a unit where it has 16 bits, else a code point) or a char (Latin-1). The answers come from ICU
// and are kept in tables filled entry by entry at first use; from then on a question about a code point below U+10000
// costs one load and a test. All functions are safe from any thread.

#include <atomic>
#include <concepts>
#include <cstdint>

#include <qvxsys/Platform.h>

namespace TCType {

/// The types a single character comes in.
template<class C>
concept Character =
    std::same_as<C, char> || std::same_as<C, wchar_t> || std::same_as<C, char16_t> || std::same_as<C, char32_t>;

namespace detail {

enum ClassBits : std::uint16_t {
    kAlnum = 1 << 0,
    kAlpha = 1 << 1,
    kBlank = 1 << 2,
    kCntrl = 1 << 3,
    kDigit = 1 << 4,
    kGraph = 1 << 5,
    kLower = 1 << 6,
    kPrint = 1 << 7,
    kPunct = 1 << 8,
    kSpace = 1 << 9,
    kUpper = 1 << 10,
    kXDigit = 1 << 11,
    kKnown = 1 << 15, // the entry is filled
};

// The classes of U+0000..U+FFFF, 0 where nobody asked yet; and the simple case mappings of the units plus one, 0
// likewise (so that U+FFFF alone is asked for every time).
QVXSYS_API extern std::atomic<std::uint16_t> const* const g_classes;
QVXSYS_API extern std::atomic<char16_t> const* const g_folded;
QVXSYS_API extern std::atomic<char16_t> const* const g_lower;
QVXSYS_API extern std::atomic<char16_t> const* const g_upper;

// Ask ICU; the first four fill the table entry too.
QVXSYS_API std::uint16_t FillClasses(char16_t c) noexcept;
QVXSYS_API char16_t FillFolded(char16_t c) noexcept;
QVXSYS_API char16_t FillLower(char16_t c) noexcept;
QVXSYS_API char16_t FillUpper(char16_t c) noexcept;
QVXSYS_API std::uint16_t ClassesOf(char32_t c) noexcept;

template<Character C>
constexpr char32_t CodePointOf(C c) noexcept
{
    if constexpr (std::same_as<C, char>) {
        return static_cast<unsigned char>(c);
    } else {
        return static_cast<char32_t>(c);
    }
}

inline bool Is(char32_t c, ClassBits bits) noexcept
{
    if (c >= 0x10000) {
        return (ClassesOf(c) & bits) != 0;
    }
    std::uint16_t known = g_classes[c].load(std::memory_order_relaxed);
    if (known == 0) [[unlikely]] {
        known = FillClasses(static_cast<char16_t>(c));
    }
    return (known & bits) != 0;
}

inline char16_t Mapped(std::atomic<char16_t> const* table, char16_t (*fill)(char16_t), char16_t c) noexcept
{
    char16_t const known = table[c].load(std::memory_order_relaxed);
    return known != 0 ? static_cast<char16_t>(known - 1) : fill(c);
}

} // namespace detail

/// ICU's binary property POSIX alnum: letters and decimal digits.
template<Character C>
[[nodiscard]] bool isAlnum(C c) noexcept
{
    return detail::Is(detail::CodePointOf(c), detail::kAlnum);
}
/// Property Alphabetic.
template<Character C>
[[nodiscard]] bool isAlpha(C c) noexcept
{
    return detail::Is(detail::CodePointOf(c), detail::kAlpha);
}
/// Horizontal white space: TAB and the space separators (u_isblank).
template<Character C>
[[nodiscard]] bool isBlank(C c) noexcept
{
    return detail::Is(detail::CodePointOf(c), detail::kBlank);
}
/// General category Cc.
template<Character C>
[[nodiscard]] bool isCntrl(C c) noexcept
{
    return detail::Is(detail::CodePointOf(c), detail::kCntrl);
}
/// General category Nd.
template<Character C>
[[nodiscard]] bool isDigit(C c) noexcept
{
    return detail::Is(detail::CodePointOf(c), detail::kDigit);
}
/// ICU's binary property POSIX graph: everything visible.
template<Character C>
[[nodiscard]] bool isGraph(C c) noexcept
{
    return detail::Is(detail::CodePointOf(c), detail::kGraph);
}
/// Property Lowercase.
template<Character C>
[[nodiscard]] bool isLower(C c) noexcept
{
    return detail::Is(detail::CodePointOf(c), detail::kLower);
}
/// ICU's binary property POSIX print: graph and blank, without controls.
template<Character C>
[[nodiscard]] bool isPrint(C c) noexcept
{
    return detail::Is(detail::CodePointOf(c), detail::kPrint);
}
/// General categories P* (u_ispunct).
template<Character C>
[[nodiscard]] bool isPunct(C c) noexcept
{
    return detail::Is(detail::CodePointOf(c), detail::kPunct);
}
/// Property White_Space.
template<Character C>
[[nodiscard]] bool isSpace(C c) noexcept
{
    return detail::Is(detail::CodePointOf(c), detail::kSpace);
}
/// isSpace of a whole code point.
[[nodiscard]] inline bool isSpace32(char32_t c) noexcept
{
    return isSpace(c);
}
/// Property Uppercase.
template<Character C>
[[nodiscard]] bool isUpper(C c) noexcept
{
    return detail::Is(detail::CodePointOf(c), detail::kUpper);
}
/// Hexadecimal digits: any decimal digit, and A-F and a-f in their ASCII and fullwidth forms (u_isxdigit).
template<Character C>
[[nodiscard]] bool isXDigit(C c) noexcept
{
    return detail::Is(detail::CodePointOf(c), detail::kXDigit);
}

/// The unit's simple lower-case mapping (u_tolower), cut back to 16 bits.
[[nodiscard]] inline char16_t ToLower(char16_t c) noexcept
{
    return detail::Mapped(detail::g_lower, detail::FillLower, c);
}
/// The unit's simple upper-case mapping (u_toupper), cut back to 16 bits.
[[nodiscard]] inline char16_t ToUpper(char16_t c) noexcept
{
    return detail::Mapped(detail::g_upper, detail::FillUpper, c);
}

/// The same for whole code points.
[[nodiscard]] QVXSYS_API char32_t ToLower32(char32_t c) noexcept;
[[nodiscard]] QVXSYS_API char32_t ToUpper32(char32_t c) noexcept;

/// The same for wide characters: the unit where wchar_t has 16 bits, else the code point.
[[nodiscard]] inline wchar_t ToLower(wchar_t c) noexcept
{
    return qvxsys::kWideIsUtf16 ? static_cast<wchar_t>(ToLower(static_cast<char16_t>(c)))
                                : static_cast<wchar_t>(ToLower32(static_cast<char32_t>(c)));
}
[[nodiscard]] inline wchar_t ToUpper(wchar_t c) noexcept
{
    return qvxsys::kWideIsUtf16 ? static_cast<wchar_t>(ToUpper(static_cast<char16_t>(c)))
                                : static_cast<wchar_t>(ToUpper32(static_cast<char32_t>(c)));
}

/// The folding under all case-insensitive comparison and search: "A".."Z" by setting bit 0x20, other units below 0x80
/// unchanged, the rest by ICU's simple case folding with the default option. It never changes a text's length.
[[nodiscard]] inline char16_t FoldCase(char16_t c) noexcept
{
    return detail::Mapped(detail::g_folded, detail::FillFolded, c);
}

} // namespace TCType
