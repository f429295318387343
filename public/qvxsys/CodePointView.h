#pragma once
// The code points of a TStringCore as a range that can be written through.
//
//     TStringCore text = u"a\U0001F600b";
//     for (auto c : text.codePointView()) {
//         if (c == 0x1F600) {
//             c = U'!';                                   // two units become one
//         }
//     }
//
// Reading detaches nothing; assigning a code point detaches the string and may change its length by one unit. Iterators
// stay valid then, as they hold a position and the end is a position of its own. A position that lies behind the text
// after it was shortened by other means reads as 0, and stepping on from there throws std::runtime_error
// "CodePointIterator<>::operator++: m_position[N] is out of range.". Other errors: see CodePointIterator.h.

#include <iterator>
#include <ranges>
#include <utility>

#include <qvxsys/TStringCore.h>

/// What a writable iterator refers to: the code point at a position.
class QVXSYS_API TCodePointReference
{
public:
    /// The code point at a position of a string.
    TCodePointReference(TStringCore* string, int position) noexcept : m_string(string), m_position(position) {}
    TCodePointReference(TCodePointReference const&) noexcept = default;
    ~TCodePointReference() = default;

    /// U+FFFD for a lone surrogate, 0 behind the text.
    operator char32_t() const noexcept { return Get(); }
    /// Replaces the code point (of a lone surrogate: that unit); a value above U+10FFFF becomes U+FFFD. Does nothing
    /// behind the text.
    TCodePointReference const& operator=(char32_t c) const;
    TCodePointReference const& operator=(TCodePointReference const& other) const { return *this = other.Get(); }
    TCodePointReference& operator=(TCodePointReference const& other)
    {
        std::as_const(*this) = other.Get();
        return *this;
    }

private:
    [[nodiscard]] char32_t Get() const noexcept;

    TStringCore* m_string;
    int m_position;
};

/// A bidirectional iterator whose code points can be assigned to. It refers to the string, which must outlive it.
template<>
class TCodePointIterator<TStringCore>
{
public:
    using iterator_category = std::bidirectional_iterator_tag; // by movement; what it refers to is a proxy
    using value_type = char32_t;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = TCodePointReference;

    TCodePointIterator() noexcept = default;
    /// At a code-unit position, -1 for the end, unchecked.
    TCodePointIterator(TStringCore& string, int position) noexcept : m_string(&string), m_position(position) {}

    /// Where it stands, in units.
    [[nodiscard]] int codeUnitIndex() const noexcept { return m_position; }
    /// The read-only iterator at this position; its ordinal is not known.
    operator TConstCodePointIterator<TStringCore>() const noexcept
    {
        return m_string != nullptr ? TConstCodePointIterator<TStringCore>(-1, m_position, *m_string)
                                   : TConstCodePointIterator<TStringCore>();
    }

    [[nodiscard]] TCodePointReference operator*() const noexcept { return {m_string, m_position}; }

    TCodePointIterator& operator++()
    {
        if (m_position < 0) {
            qvxsys::detail::ThrowIncrementedPastEnd();
        }
        TStringCore const& text = *m_string;
        if (m_position >= text.length()) {
            qvxsys::detail::ThrowPositionOutOfRange(m_position);
        }
        m_position = qvxsys::detail::NextCodePoint(text.data(), text.length(), m_position);
        return *this;
    }
    TCodePointIterator operator++(int)
    {
        TCodePointIterator const before = *this;
        ++*this;
        return before;
    }
    TCodePointIterator& operator--()
    {
        int const length = m_string != nullptr ? m_string->length() : 0;
        int const index = m_position < 0 || m_position > length ? length : m_position;
        if (index < 1) {
            qvxsys::detail::ThrowDecrementedPastBegin();
        }
        m_position = qvxsys::detail::PreviousCodePoint(m_string->constData(), index);
        return *this;
    }
    TCodePointIterator operator--(int)
    {
        TCodePointIterator const before = *this;
        --*this;
        return before;
    }

    /// Throws unless both walk the same string object.
    [[nodiscard]] bool operator==(TCodePointIterator const& other) const
    {
        if (m_string != other.m_string) {
            qvxsys::detail::ThrowForeignIterator("TStringCore", "==");
        }
        return m_position == other.m_position;
    }

private:
    TStringCore* m_string = nullptr;
    int m_position = -1;
};

/// A view in the standard's sense; it refers to the string.
class TCodePointView : public std::ranges::view_base
{
public:
    using iterator = TCodePointIterator<TStringCore>;

    /// The code points of a string, which must outlive the view.
    explicit TCodePointView(TStringCore& string) noexcept : m_string(&string) {}

    [[nodiscard]] iterator begin() const noexcept { return {*m_string, m_string->empty() ? -1 : 0}; }
    [[nodiscard]] iterator end() const noexcept { return {*m_string, -1}; }

private:
    TStringCore* m_string;
};

template<>
inline constexpr bool std::ranges::enable_borrowed_range<TCodePointView> = true;
