#pragma once
// Character classes and single-character case mapping by the Unicode properties of the installed ICU.
//
//     bool const blank = TCType::isSpace(u'\u00A0');      // true: White_Space, unlike the C library's isspace
//     char16_t const small = TCType::ToLower(u'\u00C4');  // U+00E4
//
// Each takes a character: a char16_t unit (a surrogate is a code point of its own here, class Cs), a char32_t code
// point, a wchar_t (a unit where it has 16 bits, else a code point), a char (Latin-1) or an integer (a code point; what
// is none has no class). The classes are function objects: std::find_if(b, e, TCType::isSpace). The answers come from
// ICU and are kept in tables filled entry by entry at first use; from then on a question about a code point below
// U+10000 costs one load and a test. All functions are safe from any thread.

#include <atomic>
#include <concepts>
#include <cstdint>
#include <type_traits>

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

template<std::integral C>
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

/// A class as a function object, so that it can be handed to algorithms.
template<ClassBits Bits>
struct ClassTest
{
    template<std::integral C>
    [[nodiscard]] bool operator()(C c) const noexcept
    {
        return Is(CodePointOf(c), Bits);
    }
};

// A wide unit stays one; everything else is a char16_t.
template<class C>
using MappedUnit = std::conditional_t<std::same_as<C, wchar_t>, wchar_t, char16_t>;

template<class C>
MappedUnit<C> Mapped(std::atomic<char16_t> const* table, char16_t (*fill)(char16_t), C c) noexcept
{
    auto const unit = static_cast<char16_t>(CodePointOf(c));
    char16_t const known = table[unit].load(std::memory_order_relaxed);
    return static_cast<MappedUnit<C>>(known != 0 ? static_cast<char16_t>(known - 1) : fill(unit));
}

} // namespace detail

/// ICU's binary property POSIX alnum: letters and decimal digits.
inline constexpr detail::ClassTest<detail::kAlnum> isAlnum;
/// Property Alphabetic.
inline constexpr detail::ClassTest<detail::kAlpha> isAlpha;
/// Horizontal white space: TAB and the space separators (u_isblank).
inline constexpr detail::ClassTest<detail::kBlank> isBlank;
/// General category Cc.
inline constexpr detail::ClassTest<detail::kCntrl> isCntrl;
/// General category Nd.
inline constexpr detail::ClassTest<detail::kDigit> isDigit;
/// ICU's binary property POSIX graph: everything visible.
inline constexpr detail::ClassTest<detail::kGraph> isGraph;
/// Property Lowercase.
inline constexpr detail::ClassTest<detail::kLower> isLower;
/// ICU's binary property POSIX print: graph and blank, without controls.
inline constexpr detail::ClassTest<detail::kPrint> isPrint;
/// General categories P* (u_ispunct).
inline constexpr detail::ClassTest<detail::kPunct> isPunct;
/// Property White_Space.
inline constexpr detail::ClassTest<detail::kSpace> isSpace;
/// The same, by the name that says it takes whole code points.
inline constexpr detail::ClassTest<detail::kSpace> isSpace32;
/// Property Uppercase.
inline constexpr detail::ClassTest<detail::kUpper> isUpper;
/// Hexadecimal digits: any decimal digit, and A-F and a-f in their ASCII and fullwidth forms (u_isxdigit).
inline constexpr detail::ClassTest<detail::kXDigit> isXDigit;

/// The simple lower-case and upper-case mapping (u_tolower, u_toupper) of a whole code point.
[[nodiscard]] QVXSYS_API char32_t ToLower32(char32_t c) noexcept;
[[nodiscard]] QVXSYS_API char32_t ToUpper32(char32_t c) noexcept;

/// The same of a unit, cut back to 16 bits. A wide character of 32 bits is mapped as the code point it is.
template<std::integral C>
[[nodiscard]] auto ToLower(C c) noexcept
{
    if constexpr (std::same_as<C, wchar_t> && !qvxsys::kWideIsUtf16) {
        return static_cast<wchar_t>(ToLower32(static_cast<char32_t>(c)));
    } else {
        return detail::Mapped<C>(detail::g_lower, detail::FillLower, c);
    }
}
template<std::integral C>
[[nodiscard]] auto ToUpper(C c) noexcept
{
    if constexpr (std::same_as<C, wchar_t> && !qvxsys::kWideIsUtf16) {
        return static_cast<wchar_t>(ToUpper32(static_cast<char32_t>(c)));
    } else {
        return detail::Mapped<C>(detail::g_upper, detail::FillUpper, c);
    }
}

/// The folding under all case-insensitive comparison and search: "A".."Z" by setting bit 0x20, other units below 0x80
/// unchanged, the rest by ICU's simple case folding with the default option. It never changes a text's length.
[[nodiscard]] inline char16_t FoldCase(char16_t c) noexcept
{
    return detail::Mapped<char16_t>(detail::g_folded, detail::FillFolded, c);
}

} // namespace TCType
