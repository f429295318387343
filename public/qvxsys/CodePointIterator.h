#pragma once
// Iterators over the code points of a TStringCore or a TStringView. They remember the code-unit index and the ordinal
// of the code point they stand at.
//
//     TStringCore text = u"a\U0001F600b";
//     for (char32_t const c : text.constCodePointView()) { ... }          // U+0061, U+1F600, U+0062
//     for (auto c : text.codePointView()) {                                // writable: c is a reference
//         if (c == 0x1F600) { c = U'!'; }                                  // the text becomes shorter
//     }
//
// An iterator refers to the container object and must not outlive it. Stepping follows CharacterUtils: it moves over
// two units for any surrogate (a lone one too, as far as the text goes) and one for anything else, 0 units included;
// what it reads is the code point there, U+FFFD for a lone surrogate. Iterators are plain values, as thread-safe as the
// text.
//
// Errors are std::runtime_error with these texts:
//   "CodePointIterator<>::operator++: attempted to increment the iterator past the end of the string."
//   "CodePointIterator<>::operator--: attempted to decrement iterator past the begining of the string."
//   "CodePointIterator<>::operator++: m_position[N] is out of range." (writable iterator whose text became shorter)
//   "TConstCodePointIterator<class C>::operator OP iterators do not reference the same underlying string."
//   "C::iteratorFrom iterators do not reference the same underlying string."
//   "TStringCore::createFromIndex codeUnitIndex is out of range."
//   "TStringCore::createFromIndex codeUnitIndex does not reference the begining of a code point."

#include <concepts>
#include <cstddef>
#include <iterator>
#include <ranges>
#include <type_traits>

#include <qvxsys/CharacterUtils.h>
#include <qvxsys/Platform.h>

class TStringCore;
class TStringView;

namespace qvxsys::detail {

/// Where a step from `index` in [0, length) leads; -1 for the end.
[[nodiscard]] constexpr int NextCodePoint(char16_t const* text, int length, int index) noexcept
{
    int const next = index + (CharacterUtils::IsSurrogate(text[index]) ? 2 : 1);
    return next < length ? next : -1;
}

/// The start of the code point before `index` in [1, length]; 0 when only low surrogates precede.
[[nodiscard]] constexpr int PreviousCodePoint(char16_t const* text, int index) noexcept
{
    --index;
    while (index > 0 && CharacterUtils::IsLowSurrogate(text[index])) {
        --index;
    }
    return index;
}

/// GetCodePoint that reads nothing at or behind `length`.
[[nodiscard]] constexpr char32_t CodePointAt(char16_t const* text, int length, int index) noexcept
{
    char16_t const c = text[index];
    if (!CharacterUtils::IsSurrogate(c)) {
        return c;
    }
    bool const pair =
        CharacterUtils::IsHighSurrogate(c) && index + 1 < length && CharacterUtils::IsLowSurrogate(text[index + 1]);
    return pair ? CharacterUtils::CombineSurrogates(c, text[index + 1]) : CharacterUtils::kReplacement;
}

/// The ordinal of the code point at `index` in [0, length]: the steps that lead there from 0.
[[nodiscard]] QVXSYS_API int OrdinalOf(char16_t const* text, int length, int index) noexcept;

[[noreturn]] QVXSYS_API void ThrowIncrementedPastEnd();
[[noreturn]] QVXSYS_API void ThrowDecrementedPastBegin();
[[noreturn]] QVXSYS_API void ThrowPositionOutOfRange(int position);
/// `of`: the container's class, `operation`: the operator's symbol.
[[noreturn]] QVXSYS_API void ThrowForeignIterator(char const* of, char const* operation);
[[noreturn]] QVXSYS_API void ThrowForeignIteratorFrom(char const* of);
/// Checks an index for createFromIndex; returns the code-unit index, or -1 for the end.
QVXSYS_API int CheckedCodeUnitIndex(char16_t const* text, int length, int index);

template<class Container>
struct ContainerName;
template<>
struct ContainerName<TStringView>
{
    static constexpr char const* value = "TStringView";
};
template<>
struct ContainerName<TStringCore>
{
    static constexpr char const* value = "TStringCore";
};

} // namespace qvxsys::detail

/// A read-only bidirectional iterator over the code points of a TStringView or TStringCore.
///
/// The end is one position of its own (both indexes -1), equal to every other end over the same text and after every
/// other position. Comparing, assigning or measuring throws unless both iterators walk the same text; a
/// default-constructed iterator walks none and may be assigned to.
template<class Container>
class TConstCodePointIterator
{
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using iterator_concept = std::bidirectional_iterator_tag;
    using value_type = char32_t;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = char32_t;

    constexpr TConstCodePointIterator() noexcept = default;
    /// Copies.
    constexpr TConstCodePointIterator(TConstCodePointIterator const&) noexcept = default;

    /// From both indexes, unchecked: the code-unit index must be -1 or begin a code point; the ordinal -1 is "not
    /// known".
    constexpr TConstCodePointIterator(int codePointIndex, int codeUnitIndex, Container const& container) noexcept
        : m_codePointIndex(codePointIndex), m_codeUnitIndex(codeUnitIndex), m_container(&container)
    {}

    /// The iterator at a code-unit index; the length or -1 gives the end, another negative index counts from the end.
    /// Counts the ordinal from the start: linear.
    [[nodiscard]] static TConstCodePointIterator createFromIndex(Container const& container, int codeUnitIndex)
    {
        int const index = qvxsys::detail::CheckedCodeUnitIndex(container.data(), container.length(), codeUnitIndex);
        int const ordinal = index < 0 ? -1 : qvxsys::detail::OrdinalOf(container.data(), container.length(), index);
        return {ordinal, index, container};
    }

    /// Copies the position; of iterators into the same text.
    TConstCodePointIterator& operator=(TConstCodePointIterator const& other)
    {
        if (m_container != nullptr) {
            Check(other, "=");
        }
        m_codePointIndex = other.m_codePointIndex;
        m_codeUnitIndex = other.m_codeUnitIndex;
        m_container = other.m_container;
        return *this;
    }
    ~TConstCodePointIterator() = default;

    /// The index of the code point's first unit, -1 at the end.
    [[nodiscard]] constexpr int codeUnitIndex() const noexcept { return m_codeUnitIndex; }
    /// The code point's ordinal, -1 when not known (and at the end).
    [[nodiscard]] constexpr int codePointIndex() const noexcept { return m_codePointIndex; }

    /// The code point here; U+FFFD for a lone surrogate, 0 at the end or where the text has become shorter.
    [[nodiscard]] char32_t operator*() const noexcept
    {
        return IsInside() ? qvxsys::detail::CodePointAt(m_container->data(), m_container->length(), m_codeUnitIndex)
                          : 0;
    }

    TConstCodePointIterator& operator++()
    {
        if (m_codeUnitIndex < 0) {
            qvxsys::detail::ThrowIncrementedPastEnd();
        }
        m_codeUnitIndex =
            IsInside() ? qvxsys::detail::NextCodePoint(m_container->data(), m_container->length(), m_codeUnitIndex)
                       : -1;
        m_codePointIndex = m_codeUnitIndex < 0 ? -1 : m_codePointIndex + (m_codePointIndex >= 0 ? 1 : 0);
        return *this;
    }
    TConstCodePointIterator operator++(int)
    {
        TConstCodePointIterator const before(*this);
        ++*this;
        return before;
    }

    TConstCodePointIterator& operator--()
    {
        int const length = m_container != nullptr ? m_container->length() : 0;
        bool const fromEnd = m_codeUnitIndex < 0 || m_codeUnitIndex > length;
        int const index = fromEnd ? length : m_codeUnitIndex;
        if (index < 1) {
            qvxsys::detail::ThrowDecrementedPastBegin();
        }
        m_codeUnitIndex = qvxsys::detail::PreviousCodePoint(m_container->data(), index);
        m_codePointIndex = m_codeUnitIndex == 0 ? 0 : fromEnd || m_codePointIndex < 0 ? -1 : m_codePointIndex - 1;
        return *this;
    }
    TConstCodePointIterator operator--(int)
    {
        TConstCodePointIterator const before(*this);
        --*this;
        return before;
    }

    /// The code points from here to `other`, negative when that stands before this one. An unknown ordinal is counted
    /// from the start of the text: linear.
    [[nodiscard]] int distance(TConstCodePointIterator const& other) const
    {
        Check(other, "-");
        return other.Ordinal() - Ordinal();
    }

    [[nodiscard]] bool operator==(TConstCodePointIterator const& other) const
    {
        Check(other, "==");
        return m_codeUnitIndex == other.m_codeUnitIndex;
    }
    [[nodiscard]] bool operator!=(TConstCodePointIterator const& other) const
    {
        Check(other, "!=");
        return m_codeUnitIndex != other.m_codeUnitIndex;
    }
    [[nodiscard]] bool operator<(TConstCodePointIterator const& other) const
    {
        Check(other, "<");
        return Rank() < other.Rank();
    }
    [[nodiscard]] bool operator<=(TConstCodePointIterator const& other) const
    {
        Check(other, "<=");
        return Rank() <= other.Rank();
    }
    [[nodiscard]] bool operator>(TConstCodePointIterator const& other) const
    {
        Check(other, ">");
        return Rank() > other.Rank();
    }
    [[nodiscard]] bool operator>=(TConstCodePointIterator const& other) const
    {
        Check(other, ">=");
        return Rank() >= other.Rank();
    }

    /// The start of the text walked; null for a default-constructed iterator.
    [[nodiscard]] char16_t const* text() const noexcept
    {
        return m_container != nullptr ? m_container->data() : nullptr;
    }

private:
    [[nodiscard]] bool IsInside() const noexcept
    {
        return m_codeUnitIndex >= 0 && m_codeUnitIndex < m_container->length();
    }
    /// -1, the end, ranks above everything.
    [[nodiscard]] unsigned Rank() const noexcept { return static_cast<unsigned>(m_codeUnitIndex); }

    [[nodiscard]] int Ordinal() const noexcept
    {
        if (m_codePointIndex >= 0 || m_container == nullptr) {
            return m_codePointIndex;
        }
        int const length = m_container->length();
        return qvxsys::detail::OrdinalOf(m_container->data(), length, m_codeUnitIndex < 0 ? length : m_codeUnitIndex);
    }

    void Check(TConstCodePointIterator const& other, char const* operation) const
    {
        if (m_container != other.m_container && text() != other.text()) {
            qvxsys::detail::ThrowForeignIterator(qvxsys::detail::ContainerName<Container>::value, operation);
        }
    }

    int m_codePointIndex = -1;
    int m_codeUnitIndex = -1;
    Container const* m_container = nullptr;
};

/// The code points of a text as a range. Over a view it holds the view (so it can be made from a temporary one), over a
/// string it refers to the string. A view in the standard's sense: `text.constCodePointView() | std::views::reverse`.
template<class Container>
class TCodePointRange : public std::ranges::view_base
{
public:
    using iterator = TConstCodePointIterator<Container>;
    using const_iterator = iterator;

    /// All code points of a text, which must outlive the range.
    constexpr explicit TCodePointRange(Container const& container) noexcept : m_container(Hold(container)) {}

    [[nodiscard]] iterator begin() const { return Get().codepoint_cbegin(); }
    [[nodiscard]] iterator end() const { return Get().codepoint_cend(); }
    [[nodiscard]] bool empty() const noexcept { return Get().empty(); }

private:
    static constexpr bool kByValue = std::same_as<Container, TStringView>;
    using Held = std::conditional_t<kByValue, TStringView, Container const*>;

    static constexpr Held Hold(Container const& container) noexcept
    {
        if constexpr (kByValue) {
            return container;
        } else {
            return &container;
        }
    }
    [[nodiscard]] Container const& Get() const noexcept
    {
        if constexpr (kByValue) {
            return m_container;
        } else {
            return *m_container;
        }
    }

    Held m_container;
};

// The iterators point at the string, not at the range.
template<>
inline constexpr bool std::ranges::enable_borrowed_range<TCodePointRange<TStringCore>> = true;

// The containers, which need the templates above.
#include <qvxsys/TStringView.h>

static_assert(sizeof(TConstCodePointIterator<TStringView>) == 16 && sizeof(TConstCodePointIterator<TStringCore>) == 16);
