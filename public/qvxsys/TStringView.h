#pragma once
// TStringView: a non-owning view of UTF-16 text, a pointer and a length, for passing and slicing text without copying.
//
//     TStringView const line = u"key = value";
//     TStringView const key = line.left(3);                       // "key"
//     TStringView const value = line.mid(6);                      // "value"
//     for (char32_t const c : value.codePoints()) { ... }
//
// Searching, splitting, sections, trimmed and changed copies it shares with TStringCore: see TTextReading.h.
//
// A view is valid only while the text it points to is unchanged; it is not terminated. Do not keep one in an object
// that outlives the text: keep a TStringCore (which shares its block) instead. Views are plain values, as thread-safe
// as the text they point to. Lengths and indexes are code units; slicing never throws.
//
// Two views are equal when all their units are, embedded 0 units included. Their ordering operators look at the length
// first and each decide on their own ("ab" < "b" and "ab" > "b" both hold), so they are no strict order: do not use
// them for sorting or as map keys.

#include <concepts>
#include <cstddef>
#include <iterator>
#include <ranges>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <qvxsys/Platform.h>
#include <qvxsys/TTextReading.h>
#include <qvxsys/TextArguments.h>

template<class Container>
class TCodePointRange;

/// How views compare text: Sensitive compares units exactly, any other value folds case unit by unit
/// (TCType::FoldCase).
enum class CaseCompare : int { Insensitive = 0, Sensitive = 1 };

/// What splitting does with empty parts.
enum class EmptyParts : int { Keep = 0, Skip = 1 };

namespace qvxsys::detail {

[[nodiscard]] QVXSYS_API bool ViewsEqual(TStringView a, TStringView b) noexcept;
/// compareN of the common length, case-sensitive.
[[nodiscard]] QVXSYS_API int CompareCommon(TStringView a, TStringView b) noexcept;

} // namespace qvxsys::detail

/// A pointer and a length; see the top of the file.
class QVXSYS_API TStringView : public TTextReading<TStringView, TStringCore, TStringView, CaseCompare, EmptyParts>
{
public:
    using value_type = char16_t;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using const_reference = char16_t const&;
    using const_iterator = char16_t const*;
    using iterator = const_iterator;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;
    using reverse_iterator = const_reverse_iterator;
    /// Walks over code points.
    using code_point_iterator = TConstCodePointIterator<TStringView>;

    /// The null view: (null, 0).
    constexpr TStringView() noexcept = default;
    constexpr TStringView(char16_t const* data, std::size_t length) noexcept : m_data(data), m_length(length) {}
    /// A terminated text up to its 0 unit; null gives the null view.
    constexpr TStringView(char16_t const* text) noexcept
        : m_data(text), m_length(text == nullptr                ? 0
                                 : std::is_constant_evaluated() ? std::char_traits<char16_t>::length(text)
                                                                : qvxsys::detail::TerminatedLength(text))
    {}
    constexpr TStringView(std::u16string_view text) noexcept : m_data(text.data()), m_length(text.size()) {}
    TStringView(std::u16string const& text QVXSYS_LIFETIME_BOUND) noexcept : m_data(text.data()), m_length(text.size())
    {}
    /// Wide text can be viewed only where it is UTF-16; elsewhere make a TStringCore of it.
    template<std::same_as<wchar_t> W>
    requires qvxsys::kWideIsUtf16 TStringView(W const* data, std::size_t length)
    noexcept : m_data(reinterpret_cast<char16_t const*>(data)), m_length(length) {}

    template<qvxsys::detail::WidePointer W>
    requires qvxsys::kWideIsUtf16 TStringView(W const& text)
    noexcept : TStringView(reinterpret_cast<char16_t const*>(+text)) {}

    /// The same text.
    constexpr operator std::u16string_view() const noexcept { return {m_data, m_length}; }

    /// @name Size
    /// @{
    /// The length in code units.
    [[nodiscard]] constexpr int length() const noexcept { return static_cast<int>(m_length); }
    [[nodiscard]] constexpr int sizeAsInt() const noexcept { return length(); }
    [[nodiscard]] constexpr std::size_t size() const noexcept { return m_length; }
    [[nodiscard]] constexpr bool empty() const noexcept { return m_length == 0; }
    [[nodiscard]] constexpr bool isEmpty() const noexcept { return m_length == 0; }
    /// The code points: a pair counts once, a lone surrogate once. 0 for a null view. Linear, some GB/s.
    [[nodiscard]] int lengthInCodePoints() const noexcept;
    /// Becomes the null view.
    constexpr void clear() noexcept { *this = TStringView(); }
    /// @}

    /// @name Units
    /// @{
    [[nodiscard]] constexpr char16_t const* data() const noexcept { return m_data; }
    [[nodiscard]] constexpr const_iterator begin() const noexcept { return m_data; }
    [[nodiscard]] constexpr const_iterator end() const noexcept { return m_data + m_length; }
    [[nodiscard]] constexpr const_iterator cbegin() const noexcept { return begin(); }
    [[nodiscard]] constexpr const_iterator cend() const noexcept { return end(); }
    [[nodiscard]] constexpr const_reverse_iterator rbegin() const noexcept { return const_reverse_iterator(end()); }
    [[nodiscard]] constexpr const_reverse_iterator rend() const noexcept { return const_reverse_iterator(begin()); }
    [[nodiscard]] constexpr const_reverse_iterator crbegin() const noexcept { return rbegin(); }
    [[nodiscard]] constexpr const_reverse_iterator crend() const noexcept { return rend(); }

    /// The unit at i, unchecked.
    [[nodiscard]] constexpr char16_t operator[](std::size_t i) const noexcept { return m_data[i]; }
    /// The unit at 0 <= i < length; else throws TStringCore::Exception "TStringView::at(int): argument out of range."
    [[nodiscard]] char16_t at(int i) const;
    /// The first and the last code point; U+FFFD for a lone surrogate, 0 for an empty view.
    [[nodiscard]] char32_t front() const noexcept;
    [[nodiscard]] char32_t back() const noexcept;
    /// @}

    /// @name Slices
    /// @{
    /// The first min(length, n) units; for n below 1 an empty view at the same data.
    [[nodiscard]] TStringView left(int n) const noexcept;
    /// The last min(length, n) units; for n below 1 an empty view at the end of the data.
    [[nodiscard]] TStringView right(int n) const noexcept;
    /// For 0 <= pos <= length the view from pos to the end; else the null view.
    [[nodiscard]] TStringView mid(int pos) const noexcept;
    /// For 0 <= pos <= length the view of min(length - pos, n) units from pos, where n below 1 counts as 0; else the
    /// null view.
    [[nodiscard]] TStringView mid(int pos, int n) const noexcept;
    /// From first up to last; empty when last stands before first.
    /// Throws std::runtime_error when an iterator walks another text (see CodePointIterator.h).
    [[nodiscard]] TStringView mid(code_point_iterator const& first, code_point_iterator const& last) const;
    /// n code points from first, fewer where the text ends; n below 1 gives an empty view.
    [[nodiscard]] TStringView mid(code_point_iterator const& first, int n) const;
    /// Keeps the first n units; n below 1 leaves none.
    TStringView& truncate(int n) noexcept;
    /// @}

    /// @name Code points
    /// The iterators refer to this view object, which must outlive them.
    /// @{
    [[nodiscard]] code_point_iterator codepoint_cbegin() const QVXSYS_LIFETIME_BOUND;
    [[nodiscard]] code_point_iterator codepoint_cend() const QVXSYS_LIFETIME_BOUND;
    /// The code points as a range. It holds the view itself, so it may be taken from a temporary view.
    [[nodiscard]] TCodePointRange<TStringView> codePoints() const noexcept;
    /// The iterator at a code-unit index: the length or -1 gives the end, other negative ones count from the end.
    /// Throws std::runtime_error for an index out of range or inside a pair (texts in CodePointIterator.h).
    [[nodiscard]] code_point_iterator iteratorFrom(int codeUnitIndex) const QVXSYS_LIFETIME_BOUND;
    /// The same position on this object; throws std::runtime_error when `other` walks another text.
    [[nodiscard]] code_point_iterator iteratorFrom(code_point_iterator const& other) const QVXSYS_LIFETIME_BOUND;
    /// @}

    /// @name Comparing
    /// @{
    /// -1, 0 or 1: by code unit, 0 units too; of two texts one of which begins with the other the shorter one is the
    /// smaller. A strict order, unlike the operators.
    template<qvxsys::detail::TextArgument A = TStringView>
    [[nodiscard]] int compare(A const& text, CaseCompare cs = CaseCompare::Sensitive) const
    {
        return Compare(qvxsys::detail::ToView(text), cs);
    }
    /// @}

    /// @name Trimming
    /// Drops white space (TCType::isSpace32), or code points of a set (a text or a character), from the ends of this
    /// view. `trimmed` gives a trimmed view instead.
    /// @{
    TStringView& trimLeft() noexcept { return *this = qvxsys::detail::Trimmed(*this, true, false); }
    TStringView& trimRight() noexcept { return *this = qvxsys::detail::Trimmed(*this, false, true); }
    TStringView& trim() noexcept { return *this = qvxsys::detail::Trimmed(*this, true, true); }
    template<qvxsys::detail::TextArgument A = TStringView>
    TStringView& trimLeft(A const& set)
    {
        return *this = qvxsys::detail::Trimmed(*this, qvxsys::detail::ToView(set), true, false);
    }
    template<qvxsys::detail::TextArgument A = TStringView>
    TStringView& trimRight(A const& set)
    {
        return *this = qvxsys::detail::Trimmed(*this, qvxsys::detail::ToView(set), false, true);
    }
    template<qvxsys::detail::TextArgument A = TStringView>
    TStringView& trim(A const& set)
    {
        return *this = qvxsys::detail::Trimmed(*this, qvxsys::detail::ToView(set), true, true);
    }
    TStringView& trimLeft32(char32_t c) { return trimLeft(c); }
    TStringView& trimRight32(char32_t c) { return trimRight(c); }
    TStringView& trim32(char32_t c) { return trim(c); }
    /// @}

    /// @name Numbers
    /// Documented at the members of TStringCore of these names.
    /// @{
    short toShort(bool* ok = nullptr, int base = 10) const;
    unsigned short toUShort(bool* ok = nullptr, int base = 10) const;
    int toInt(bool* ok = nullptr, int base = 10) const;
    unsigned int toUInt(bool* ok = nullptr, int base = 10) const;
    long toLong(bool* ok = nullptr, int base = 10) const;
    unsigned long toULong(bool* ok = nullptr, int base = 10) const;
    long long toLongLong(bool* ok = nullptr, int base = 10) const;
    unsigned long long toULongLong(bool* ok = nullptr, int base = 10) const;
    double toDouble(bool* ok = nullptr) const;
    float toFloat(bool* ok = nullptr) const;
    [[nodiscard]] int leftIntegerLength(int base = 10) const;
    [[nodiscard]] int leftDoubleLength() const noexcept;
    /// Of n units, or up to the 0 unit; null is empty text.
    [[nodiscard]] static int leftIntegerLength(char16_t const* s, int n = -1, int base = 10);
    [[nodiscard]] static int leftDoubleLength(char16_t const* s, int n = -1) noexcept;
    template<qvxsys::detail::WidePointer W>
    [[nodiscard]] static int leftIntegerLength(W const& s, int n = -1, int base = 10)
    {
        auto const& text = qvxsys::detail::ToView(qvxsys::detail::CountedWide(s, n));
        return TStringView(text).leftIntegerLength(base);
    }
    template<qvxsys::detail::WidePointer W>
    [[nodiscard]] static int leftDoubleLength(W const& s, int n = -1)
    {
        auto const& text = qvxsys::detail::ToView(qvxsys::detail::CountedWide(s, n));
        return TStringView(text).leftDoubleLength();
    }
    /// @}

private:
    [[nodiscard]] int Compare(TStringView other, CaseCompare cs) const noexcept;

    char16_t const* m_data = nullptr;
    std::size_t m_length = 0;
};
static_assert(sizeof(TStringView) == 16);

namespace qvxsys::detail {

constexpr TStringView UnitsOf::View() const noexcept
{
    return {units, static_cast<std::size_t>(count)};
}

constexpr UnitsOf::operator TStringView() const noexcept
{
    return View();
}

constexpr TStringView ToView(TStringView view) noexcept
{
    return view;
}

/// f(view of a, view of b); converted wide text lives until f returns.
template<class A, class B, class F>
bool WithViews(A const& a, B const& b, F f)
{
    auto const& left = ToView(a);
    auto const& right = ToView(b);
    return f(TStringView(left), TStringView(right));
}

} // namespace qvxsys::detail

/// @name Comparison of views
/// With a view, a string, a terminated text or a standard string of any encoding on the other side; where that has to
/// be converted, the comparison allocates.
/// @{
template<class A, class B>
requires qvxsys::detail::ViewPair<A, B>
[[nodiscard]] bool operator==(A const& a, B const& b)
{
    return qvxsys::detail::WithViews(a, b,
                                     [](TStringView l, TStringView r) { return qvxsys::detail::ViewsEqual(l, r); });
}
/// The shorter view is the smaller one; else the units decide.
template<class A, class B>
requires qvxsys::detail::ViewPair<A, B>
[[nodiscard]] bool operator<(A const& a, B const& b)
{
    return qvxsys::detail::WithViews(a, b, [](TStringView l, TStringView r) {
        return l.size() < r.size() || qvxsys::detail::CompareCommon(l, r) < 0;
    });
}
/// False when the left view is longer; else the units decide.
template<class A, class B>
requires qvxsys::detail::ViewPair<A, B>
[[nodiscard]] bool operator<=(A const& a, B const& b)
{
    return qvxsys::detail::WithViews(a, b, [](TStringView l, TStringView r) {
        return l.size() <= r.size() && qvxsys::detail::CompareCommon(l, r) <= 0;
    });
}
/// True when the left view is longer; else the units decide.
template<class A, class B>
requires qvxsys::detail::ViewPair<A, B>
[[nodiscard]] bool operator>(A const& a, B const& b)
{
    return qvxsys::detail::WithViews(a, b, [](TStringView l, TStringView r) {
        return l.size() > r.size() || qvxsys::detail::CompareCommon(l, r) > 0;
    });
}
/// False when the left view is shorter; else the units decide.
template<class A, class B>
requires qvxsys::detail::ViewPair<A, B>
[[nodiscard]] bool operator>=(A const& a, B const& b)
{
    return qvxsys::detail::WithViews(a, b, [](TStringView l, TStringView r) {
        return l.size() >= r.size() && qvxsys::detail::CompareCommon(l, r) >= 0;
    });
}
/// @}

/// @name Comparison of a view with one character
/// A view equals a character when it consists of exactly its units. Ordering looks at the view's first unit only (at
/// its first two for a character of two units); the empty view comes before every character.
/// @{
template<TCType::Character C>
[[nodiscard]] constexpr bool operator==(TStringView v, C c) noexcept
{
    return qvxsys::detail::UnitsOf(c).Is(v.data(), v.size());
}
template<TCType::Character C>
[[nodiscard]] constexpr bool operator<(TStringView v, C c) noexcept
{
    return qvxsys::detail::UnitsOf(c).CompareStart(v.data(), v.size()) < 0;
}
template<TCType::Character C>
[[nodiscard]] constexpr bool operator<(C c, TStringView v) noexcept
{
    return qvxsys::detail::UnitsOf(c).CompareStart(v.data(), v.size()) > 0;
}
template<TCType::Character C>
[[nodiscard]] constexpr bool operator>(TStringView v, C c) noexcept
{
    return c < v;
}
template<TCType::Character C>
[[nodiscard]] constexpr bool operator>(C c, TStringView v) noexcept
{
    return !(c < v) && !(v == c);
}
template<TCType::Character C>
[[nodiscard]] constexpr bool operator<=(TStringView v, C c) noexcept
{
    return v < c || v == c;
}
template<TCType::Character C>
[[nodiscard]] constexpr bool operator<=(C c, TStringView v) noexcept
{
    return !(v < c);
}
template<TCType::Character C>
[[nodiscard]] constexpr bool operator>=(TStringView v, C c) noexcept
{
    return c <= v;
}
template<TCType::Character C>
[[nodiscard]] constexpr bool operator>=(C c, TStringView v) noexcept
{
    return !(c < v);
}
/// @}

// Views are ranges in the standard's sense; their iterators do not depend on the view object.
template<>
inline constexpr bool std::ranges::enable_view<TStringView> = true;
template<>
inline constexpr bool std::ranges::enable_borrowed_range<TStringView> = true;

#include <qvxsys/CodePointIterator.h>
#include <qvxsys/TStringCore.h>
