#pragma once
// The operators of TStringCore: comparison and concatenation.
//
//     if (name == u"Jos\u00E9" || name < L"K" || name == U'\U0001F600') { ... }
//     TStringCore const line = name + u": " + L"text" + '\n';
//
// The other operand is a string, terminated UTF-16 or wide text (null is empty text), or one character; for + also a
// view or UTF-8. With a view or standard text on the other side the operators of views apply (TStringView.h).
// Operators between strings stop at the first 0 unit.

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstring>

#include <qvxsys/TextArguments.h>

namespace qvxsys::detail {

/// The operators as a base without data; S is TStringCore, V is TStringView.
template<class S, class V>
class StringOperators
{
public:
    /// Equal lengths and equal units up to the first 0 unit, so strings of one length that agree up to an embedded 0
    /// are equal.
    friend bool operator==(S const& a, S const& b) noexcept
    {
        int const length = a.length();
        if (length != b.length()) {
            return false;
        }
        char16_t const* const left = a.constData();
        char16_t const* const right = b.constData();
        return left == right || std::memcmp(left, right, static_cast<std::size_t>(length) * sizeof(char16_t)) == 0 ||
               StringOperators::AgreeUpToZero(left, right);
    }
    /// Against a terminated text: units up to the first difference or the common terminator; null is empty text.
    template<StringPointer P>
    friend bool operator==(S const& a, P b)
    {
        return a.compare(b) == 0;
    }
    template<StringPointer P>
    friend bool operator==(P a, S const& b)
    {
        return b.compare(a) == 0;
    }
    friend bool operator==(S const& a, std::nullptr_t) noexcept { return a.constData()[0] == 0; }
    /// Exactly the character's one or two units.
    template<TCType::Character C>
    friend bool operator==(S const& a, C c) noexcept
    {
        return UnitsOf(c).Is(a.constData(), a.size());
    }
    /// By code unit up to the first difference or the common terminator, so what follows an embedded 0 does not count.
    friend std::weak_ordering operator<=>(S const& a, S const& b) noexcept { return a.compare(b) <=> 0; }
    // Spelled out beside <=>: a string converts to a pointer, and std::less<> and its kin compare such types as
    // pointers unless they find the operator by its name.
    friend bool operator<(S const& a, S const& b) noexcept { return a.compare(b) < 0; }
    friend bool operator<=(S const& a, S const& b) noexcept { return a.compare(b) <= 0; }
    friend bool operator>(S const& a, S const& b) noexcept { return a.compare(b) > 0; }
    friend bool operator>=(S const& a, S const& b) noexcept { return a.compare(b) >= 0; }
    template<StringPointer P>
    friend std::weak_ordering operator<=>(S const& a, P b)
    {
        return a.compare(b) <=> 0;
    }
    /// By the first unit only (by two for a character of two units), the empty string first; a longer string that
    /// begins with the character is greater.
    template<TCType::Character C>
    friend std::weak_ordering operator<=>(S const& a, C c) noexcept
    {
        if (a == c) {
            return std::weak_ordering::equivalent;
        }
        bool const less = UnitsOf(c).CompareStart(a.constData(), a.size()) < 0;
        return less ? std::weak_ordering::less : std::weak_ordering::greater;
    }

    /// @name Concatenation
    /// A copy of the left operand with the right one appended. A left operand that is a temporary is appended to in
    /// place.
    /// @{
    friend S operator+(S const& a, S const& b) { return StringOperators::Sum(a, b.view()); }
    friend S operator+(S const& a, V b) { return StringOperators::Sum(a, b); }
    friend S operator+(V a, S const& b) { return StringOperators::Sum(S(a), b.view()); }
    friend S operator+(S const& a, char16_t const* b) { return StringOperators::Sum(a, V(b)); }
    friend S operator+(char16_t const* a, S const& b) { return StringOperators::Sum(S(a), b.view()); }
    friend S operator+(S const& a, wchar_t const* b) { return S(a).append(b); }
    friend S operator+(wchar_t const* a, S const& b) { return S(a).append(b); }
    friend S operator+(S const& a, char const* utf8) { return S(a).append(utf8); }
    friend S operator+(char const* utf8, S const& b) { return S(utf8).append(b); }
    template<TCType::Character C>
    friend S operator+(S const& a, C c)
    {
        UnitsOf const units(c);
        return StringOperators::Sum(a, V(units));
    }
    template<TCType::Character C>
    friend S operator+(C c, S const& b)
    {
        return S(c, 1).append(b);
    }
    template<StandardString T>
    friend S operator+(S const& a, T const& b)
    {
        return S(a).append(b);
    }
    template<StandardString T>
    friend S operator+(T const& a, S const& b)
    {
        return S(a).append(b);
    }
    template<std::same_as<S> Temporary, class T>
    requires Appendable<S, T>
    friend S operator+(Temporary&& a, T const& b)
    {
        a.append(b);
        return static_cast<S&&>(a);
    }
    // As a string converts to a pointer, these would step along the text.
    template<std::integral I>
    requires(!TCType::Character<I>) friend S operator+(S const& a, I n) = delete;
    template<std::integral I>
    requires(!TCType::Character<I>) friend S operator+(I n, S const& a) = delete;
    template<class T>
    friend void operator-(S const& a, T const& b) = delete;
    /// @}

private:
    // Only members of a befriended class reach the string's own functions, not the friends above.
    static S Sum(S const& a, V b) { return S::Concatenated(a, b); }
    static bool AgreeUpToZero(char16_t const* a, char16_t const* b) noexcept { return S::AgreeUpToZero(a, b); }
};

} // namespace qvxsys::detail
