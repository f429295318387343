#pragma once
// The types that text and characters come in, as concepts, and what a character is in UTF-16. Shared by the text
// classes.

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

#include <qvxsys/CharacterUtils.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TCType.h>

class TStringCore;
class TStringView;

namespace qvxsys::detail {

/// The one or two units of a character. A char is Latin-1; a wchar_t is a unit or, where it has 32 bits, a code point;
/// a code point above U+10FFFF is U+FFFD. A surrogate value is one unit.
struct UnitsOf
{
    char16_t units[2] = {};
    int count;

    template<TCType::Character C>
    constexpr explicit UnitsOf(C character) noexcept
    {
        char32_t const c = TCType::detail::CodePointOf(character);
        if (c < 0x10000) {
            units[0] = static_cast<char16_t>(c);
            count = 1;
        } else if (c <= 0x10FFFF) {
            units[0] = CharacterUtils::HighSurrogate(c);
            units[1] = CharacterUtils::LowSurrogate(c);
            count = 2;
        } else {
            units[0] = static_cast<char16_t>(CharacterUtils::kReplacement);
            count = 1;
        }
    }

    [[nodiscard]] constexpr bool Is(char16_t const* text, std::size_t length) const noexcept
    {
        return length == static_cast<std::size_t>(count) && text[0] == units[0] && (count == 1 || text[1] == units[1]);
    }

    /// The sign of the text's first `count` units compared with these; a text that ends earlier is less.
    [[nodiscard]] constexpr int CompareStart(char16_t const* text, std::size_t length) const noexcept
    {
        for (int i = 0; i < count; ++i) {
            if (static_cast<std::size_t>(i) == length) {
                return -1;
            }
            if (text[i] != units[i]) {
                return text[i] < units[i] ? -1 : 1;
            }
        }
        return 0;
    }

    [[nodiscard]] constexpr TStringView View() const noexcept QVXSYS_LIFETIME_BOUND;
    constexpr operator TStringView() const noexcept QVXSYS_LIFETIME_BOUND;
};

// A character as a view; the units live as long as the result of this call.
template<TCType::Character C>
constexpr UnitsOf ToView(C character) noexcept
{
    return UnitsOf(character);
}

template<class T>
using Pointee = std::remove_const_t<std::remove_pointer_t<std::decay_t<T>>>;

template<class T, class Unit>
concept PointerTo = std::is_pointer_v<std::decay_t<T>> && std::same_as<Pointee<T>, Unit>;

template<class T>
concept WidePointer = PointerTo<T, wchar_t>;

template<class T>
concept WideContainer = std::same_as<T, std::wstring> || std::same_as<T, std::wstring_view>;

/// Wide text: a terminated pointer or a standard container.
template<class T>
concept WideTextLike = WidePointer<T> || WideContainer<T>;

template<class T>
concept Utf8Container = std::same_as<T, std::string> || std::same_as<T, std::string_view> ||
    std::same_as<T, std::u8string> || std::same_as<T, std::u8string_view>;

/// UTF-8: a terminated pointer or a standard container.
template<class T>
concept Utf8Like = PointerTo<T, char> || PointerTo<T, char8_t> || Utf8Container<T>;

template<class T>
concept StandardText = std::same_as<T, std::u16string> || std::same_as<T, std::u16string_view>;

/// The standard library's own strings and views, of any encoding.
template<class T>
concept StandardString = StandardText<T> || WideContainer<T> || Utf8Container<T>;

/// What text is passed as: a string, a view, text in UTF-16, wide or UTF-8, or a character.
template<class T>
concept TextArgument =
    std::convertible_to<T const&, TStringView> || WideTextLike<T> || Utf8Like<T> || TCType::Character<T>;

/// Text of any kind, but no character.
template<class T>
concept TextOperand = TextArgument<T> && !TCType::Character<T>;

template<class T>
concept ViewOperand = std::same_as<T, TStringView> || std::convertible_to<T const&, TStringView> || WidePointer<T>;

/// What a view is compared with: besides what becomes one, wide containers and UTF-8. One constraint, not a
/// disjunction: ordering candidates by so many alternatives takes Clang more memory than there is.
template<class T>
inline constexpr bool kComparedWithView = ViewOperand<T> || WideContainer<T> || Utf8Like<T>;
template<class T>
concept ComparedWithView = kComparedWithView<T>;

/// A view compared with text, or a string with standard text.
template<class A, class B>
concept ViewPair = (std::same_as<A, TStringView> && ComparedWithView<B>) ||
                   (std::same_as<B, TStringView> && ComparedWithView<A>) ||
                   (std::same_as<A, TStringCore> && StandardText<B>) ||
                   (std::same_as<B, TStringCore> && StandardText<A>);

/// An integer type that is not one of the two index types, nor a character.
template<class I>
concept OtherIndex = std::integral<I> && !std::same_as<I, int> && !std::same_as<I, std::size_t> &&
                     !std::same_as<I, bool> && !TCType::Character<I>;

/// Terminated text as a pointer: UTF-16 or wide.
template<class T>
concept StringPointer = PointerTo<T, char16_t> || PointerTo<T, wchar_t>;

/// Raw text for the static functions: UTF-16 or wide text, a string (which is terminated), or a null pointer.
template<class T>
concept RawText = StringPointer<T> || std::same_as<T, std::nullptr_t> || std::derived_from<T, TStringCore>;

/// Raw texts of which one at least is wide.
template<class A, class B>
concept WideRawPair = RawText<A> && RawText<B> &&(WidePointer<A> || WidePointer<B>);

/// What integers come in: the integer types of up to 64 bits and enumerations that convert to them.
template<class T>
concept WholeNumber = (std::integral<T> || (std::is_enum_v<T> && std::convertible_to<T, long long>)) &&
                      sizeof(T) <= sizeof(long long);

template<class S, class T>
concept Appendable = requires(S& s, T const& t)
{
    s.append(t);
};

/// A standard string or view as a view of char, char16_t or wchar_t.
template<StandardString T>
constexpr auto UnitsOfStandard(T const& text) noexcept
{
    using Unit = typename T::value_type;
    if constexpr (std::same_as<Unit, char8_t>) {
        return std::string_view(reinterpret_cast<char const*>(text.data()), text.size());
    } else {
        return std::basic_string_view<Unit>(text);
    }
}

/// n units of wide text, for a negative n those before the terminator; null is empty text.
template<WidePointer W>
std::wstring_view CountedWide(W const& text, int n)
{
    wchar_t const* const s = text;
    if (s == nullptr) {
        return {};
    }
    return n < 0 ? std::wstring_view(s) : std::wstring_view(s, static_cast<std::size_t>(n));
}

/// The length as an int; throws TStringCore::Exception "Appended string is too long" when it is above 0x7FFFFFFF.
QVXSYS_API int CheckedLength(std::size_t length);

/// The units before the terminator; `text` is not null.
[[nodiscard]] QVXSYS_API std::size_t TerminatedLength(char16_t const* text) noexcept;

// What a text argument is passed on as: something that converts to a view and may hold the converted text, so keep it
// while the view is in use.
class WideText;
class WideUnits;
class Utf8Text;
template<WideTextLike W>
WideText ToView(W const& text);
template<Utf8Like U>
Utf8Text ToView(U const& text);
constexpr TStringView ToView(TStringView view) noexcept;

/// Raw text as UTF-16: what its units are, and the length in them that stands for the length given.
struct RawUnits
{
    char16_t const* units;
    int length;

    [[nodiscard]] char16_t const* Units() const noexcept { return units; }
    [[nodiscard]] int Length() const noexcept { return length; }
};
inline RawUnits ToRaw(char16_t const* text, int length = -1) noexcept
{
    return {text, length};
}
template<WidePointer W>
WideUnits ToRaw(W const& text, int length = -1);
/// At most n units of terminated text; all of it for a negative n.
inline RawUnits ToRawStart(char16_t const* text, int) noexcept
{
    return {text, -1};
}
template<WidePointer W>
WideUnits ToRawStart(W const& text, int n);

} // namespace qvxsys::detail
