#pragma once
// What makes strings and views at home in the standard library: hashing, ordering, streams, formatting, literals.
//
//     using namespace qvxsys::literals;
//     std::unordered_map<TStringCore, int, std::hash<TStringCore>, std::equal_to<>> ages;
//     ages[u"J\u00FCrgen"_qs] = 41;
//     bool const known = ages.contains(u"J\u00FCrgen");            // no string is made for the question
//     std::set<TStringCore, qvxsys::FoldedLess> names{"ada"_qs, "ADA"_qs};         // one element
//     std::cout << std::setw(12) << std::left << ages.begin()->first << '|';       // padded by code points, UTF-8
//
// All function objects here are transparent: they take text of any kind (strings, views, terminated text in UTF-16,
// wide and UTF-8, the standard library's strings and views of these; not characters), in any mixture, and all of them
// are safe from any thread. UTF-8, and wide text where wchar_t has 32 bits, is converted for the call.
//
// Hashes. Strings are equal up to an embedded 0, views only when all units are. std::hash looks at the units before the
// first 0 only, so that whatever compares equal by ==, mixed types included, has one hash.
//
// Orders. The comparison operators of views, which look at lengths first, are no strict order; OrdinalLess and
// FoldedLess are, over all operand types: by unit, embedded 0 units and what follows them included, a text before those
// that it begins. FoldedLess, FoldedEqual and FoldedHash go by the folded units (TCType::FoldCase).
//
// {fmt}: include <qvxsys/fmt.h>, or {fmt} before this header.

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string_view>
#include <version>

#include <qvxsys/Platform.h>
#include <qvxsys/StringUtils.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

#if defined(__cpp_lib_format)
#include <format>
#endif

namespace qvxsys::detail {

/// Of the units before the first 0 unit.
[[nodiscard]] QVXSYS_API std::size_t Hash(TStringView text) noexcept;
/// Of all units, folded.
[[nodiscard]] QVXSYS_API std::size_t HashFolded(TStringView text) noexcept;
/// All units, up to the first difference; -1, 0 or 1.
[[nodiscard]] QVXSYS_API int Order(TStringView a, TStringView b) noexcept;
[[nodiscard]] QVXSYS_API int OrderFolded(TStringView a, TStringView b) noexcept;
/// UTF-8 with the stream's width, fill and adjustment, which count code points.
QVXSYS_API void Write(std::ostream& out, TStringView text);
/// In quotes, with everything that does not print as \u{HEX}, and the number of units behind it.
QVXSYS_API void WriteForTests(std::ostream& out, TStringView text);

struct TransparentHash
{
    using is_transparent = void;
    template<TextOperand T>
    [[nodiscard]] std::size_t operator()(T const& text) const
    {
        auto const& view = ToView(text);
        return Hash(TStringView(view));
    }
};

} // namespace qvxsys::detail

template<>
struct std::hash<TStringView> : qvxsys::detail::TransparentHash
{};
template<>
struct std::hash<TStringCore> : qvxsys::detail::TransparentHash
{};

namespace qvxsys {

/// By code unit.
struct OrdinalLess
{
    using is_transparent = void;
    template<detail::TextOperand A, detail::TextOperand B>
    [[nodiscard]] bool operator()(A const& a, B const& b) const
    {
        return detail::WithViews(a, b, [](TStringView l, TStringView r) { return detail::Order(l, r) < 0; });
    }
};

/// By folded code unit.
struct FoldedLess
{
    using is_transparent = void;
    template<detail::TextOperand A, detail::TextOperand B>
    [[nodiscard]] bool operator()(A const& a, B const& b) const
    {
        return detail::WithViews(a, b, [](TStringView l, TStringView r) { return detail::OrderFolded(l, r) < 0; });
    }
};

/// For unordered containers, together with FoldedHash.
struct FoldedEqual
{
    using is_transparent = void;
    template<detail::TextOperand A, detail::TextOperand B>
    [[nodiscard]] bool operator()(A const& a, B const& b) const
    {
        return detail::WithViews(
            a, b, [](TStringView l, TStringView r) { return l.size() == r.size() && detail::OrderFolded(l, r) == 0; });
    }
};
/// Hashes texts that FoldedEqual holds for equal alike.
struct FoldedHash
{
    using is_transparent = void;
    template<detail::TextOperand T>
    [[nodiscard]] std::size_t operator()(T const& text) const
    {
        auto const& view = detail::ToView(text);
        return detail::HashFolded(TStringView(view));
    }
};

/// `using namespace qvxsys::literals;`
inline namespace literals {

/// A string of the literal's text, embedded 0 units included: u"..."_qs, "..."_qs (UTF-8), u8"..."_qs, L"..."_qs.
[[nodiscard]] inline TStringCore operator""_qs(char16_t const* text, std::size_t length)
{
    return TStringCore(text, static_cast<int>(length));
}
[[nodiscard]] inline TStringCore operator""_qs(wchar_t const* text, std::size_t length)
{
    return TStringCore(text, static_cast<int>(length));
}
[[nodiscard]] inline TStringCore operator""_qs(char const* utf8, std::size_t length)
{
    return TStringCore(utf8, static_cast<int>(length));
}
[[nodiscard]] inline TStringCore operator""_qs(char8_t const* utf8, std::size_t length)
{
    return TStringCore(reinterpret_cast<char const*>(utf8), static_cast<int>(length));
}
/// A view of the literal: u"..."_qv.
[[nodiscard]] constexpr TStringView operator""_qv(char16_t const* text, std::size_t length) noexcept
{
    return {text, length};
}

} // namespace literals
} // namespace qvxsys

/// UTF-8 (lone surrogates as EF BF BD). width() counts code points, fill() and left are honoured; width becomes 0.
inline std::ostream& operator<<(std::ostream& out, TStringView text)
{
    qvxsys::detail::Write(out, text);
    return out;
}
inline std::ostream& operator<<(std::ostream& out, TStringCore const& text)
{
    return out << text.view();
}

/// What GoogleTest shows of a text.
inline void PrintTo(TStringView text, std::ostream* out)
{
    qvxsys::detail::WriteForTests(*out, text);
}
inline void PrintTo(TStringCore const& text, std::ostream* out)
{
    PrintTo(text.view(), out);
}

#if defined(__cpp_lib_format)
/// With the format specifications of strings; UTF-8 in narrow formats.
template<>
struct std::formatter<TStringView, char> : std::formatter<std::string_view, char>
{
    template<class Context>
    auto format(TStringView text, Context& context) const
    {
        return std::formatter<std::string_view, char>::format(StringUtils::toStdString(text), context);
    }
};
template<>
struct std::formatter<TStringView, wchar_t> : std::formatter<std::wstring_view, wchar_t>
{
    template<class Context>
    auto format(TStringView text, Context& context) const
    {
        return std::formatter<std::wstring_view, wchar_t>::format(StringUtils::toStdWString(text), context);
    }
};
template<class Char>
struct std::formatter<TStringCore, Char> : std::formatter<TStringView, Char>
{};
#endif

#if defined(FMT_VERSION)
#include <qvxsys/fmt.h>
#endif
