#pragma once
// The iterators over the elements of a TPathCore, and the error of their misuse.
//
//     TPathCore const file = u"C:/docs/notes.txt";
//     for (TStringView const name : file.Elements()) { ... }        // "C:", "/", "docs", "notes.txt"
//     auto it = file.end();
//     TStringCore const last = *--it;                               // "notes.txt"
//
// Elements() is the usual way: views, no empty elements, nothing that throws. Iterators of the path give every element
// as a string and check what they are asked for.

#include <iterator>
#include <ranges>

#include <qvxsys/PathText.h>
#include <qvxsys/Platform.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/TPathCore.h>

/// Misuse of an iterator, source 2.
class QVXSYS_API TPathCore::Exception : public QuorvexException
{
public:
    /// With the lines of the current call stack as further messages, when asked for and walking is switched on.
    Exception(TStringCore const& message, TError::ErrorInfo const& info, bool withCallStack);
    Exception(Exception const&) = default;
    Exception& operator=(Exception const&) = default;
    ~Exception() override;
    [[nodiscard]] QuorvexException* Clone() const override;
    [[noreturn]] void Throw() const override;
};

/// Walks the elements of one path, which it refers to and must not outlive; see Elements() for the usual way.
///
/// It remembers positions, not text: an element is cut from the path when it is asked for. After a change of the path,
/// stepping and reading throw where the text around the positions tells that no such element is there any more. Two
/// iterators are equal when their paths compare equal and they stand at the same position. Errors are
/// TPathCore::Exception with these codes:
///   0x4E3E0D3F "Invalid TPathCore::iterator asignment of from one TPathCore to different TPathCore."
///              assigning when both walk a path and not the same object
///   0xA22179A7 "Invalid position in TPathCore::iterator::nextElement."
///              ++ of an iterator whose element begins outside the text, or that walks no path
///   0x9E82DC54 "TPathCore::iterator::locateElementEnd element starting position is out of range, or not valid for
///              current path." reading an element that begins outside the text, the end's too, or amid a code point
///   0x38CA4808 "TPathCore::iterator::locateNextElement element end position is out of range, or not valid for this
///              path." ++ where the element no longer ends where it did
///   0x24209A38 "TPathCore::iterator trying to increment beyond end."
///   0x6C884971 "TPathCore::iterator trying to decrement beyond beginning."
///   0x2BC6B9CE "TPathCore::iterator out of sync in prev."
///              -- where no element begins, since ++ from the element before would not lead there
class QVXSYS_API TPathCore::iterator
{
public:
    using iterator_concept = std::bidirectional_iterator_tag;
    using iterator_category = std::input_iterator_tag; // its elements are values
    using value_type = TStringCore;
    using difference_type = std::ptrdiff_t;
    using reference = TStringCore;

    /// An element for the length of an expression.
    class pointer
    {
    public:
        [[nodiscard]] TStringCore const* operator->() const noexcept { return &m_text; }

    private:
        friend class iterator;
        explicit pointer(TStringCore&& text) noexcept : m_text(static_cast<TStringCore&&>(text)) {}
        TStringCore m_text;
    };

    /// Walks no path, and may be assigned to.
    iterator() noexcept = default;
    iterator(iterator const&) noexcept = default;
    iterator& operator=(iterator const& other);
    ~iterator() = default;

    [[nodiscard]] TStringCore operator*() const
    {
        // The usual case is checked here: the element is what it was.
        TStringView const text = Text();
        if (!IsElement(text)) [[unlikely]] {
            return ElementNow();
        }
        return TStringCore(text.data() + m_start, m_end - m_start);
    }
    [[nodiscard]] pointer operator->() const { return pointer(**this); }
    iterator& operator++()
    {
        using namespace qvxsys::detail::path;
        TStringView const text = Text();
        Root const root = RootOf(text);
        if (!IsElement(text) || m_start < root.Length()) [[unlikely]] {
            return Increment();
        }
        MoveTo(text, root, NextElement(text, root, m_start, m_end));
        return *this;
    }
    iterator operator++(int)
    {
        iterator const before(*this);
        ++*this;
        return before;
    }
    /// The exact way back; constant time but for the element itself.
    iterator& operator--();
    iterator operator--(int)
    {
        iterator const before(*this);
        --*this;
        return before;
    }
    /// Compares both paths' texts when they are not one object.
    [[nodiscard]] bool operator==(iterator const& other) const noexcept
    {
        return m_start == other.m_start &&
               (m_path == other.m_path || (m_path != nullptr && other.m_path != nullptr && *m_path == *other.m_path));
    }

private:
    friend class TPathCore;
    iterator(TPathCore const& path, int start, int end) noexcept : m_path(&path), m_start(start), m_end(end) {}

    QVXSYS_API_CONSTANT static constexpr int kEnd = -1;

    [[nodiscard]] TStringView Text() const noexcept
    {
        return m_path != nullptr ? m_path->m_text.view() : TStringView();
    }
    /// Whether the remembered extent lies in the text and ends as one behind the root path does.
    [[nodiscard]] bool IsElement(TStringView text) const noexcept
    {
        using qvxsys::detail::path::At;
        return m_start >= 0 && m_start < text.length() &&
               (m_end == text.length() || (m_end < text.length() && At(text, m_end) == u'/'));
    }
    void MoveTo(TStringView text, qvxsys::detail::path::Root root, int start) noexcept
    {
        bool const isEnd = start >= text.length();
        m_start = isEnd ? kEnd : start;
        m_end = isEnd ? kEnd : qvxsys::detail::path::ElementEnd(text, root, start);
    }
    [[nodiscard]] TStringCore ElementNow() const;
    iterator& Increment();

    TPathCore const* m_path = nullptr;
    int m_start = kEnd;
    int m_end = kEnd;
};

/// What TPathCore::Elements() returns: a bidirectional range of TStringView. A view in the standard's sense.
class TPathCore::ElementRange : public std::ranges::view_base
{
public:
    /// Walks over the elements.
    class iterator
    {
    public:
        using iterator_concept = std::bidirectional_iterator_tag;
        using iterator_category = std::input_iterator_tag;
        using value_type = TStringView;
        using difference_type = std::ptrdiff_t;
        using reference = TStringView;
        using pointer = void;

        iterator() noexcept = default;
        [[nodiscard]] TStringView operator*() const noexcept
        {
            return {m_text.data() + m_element.start, static_cast<std::size_t>(m_element.end - m_element.start)};
        }
        iterator& operator++() noexcept
        {
            qvxsys::detail::path::MoveToNext(m_text, m_element);
            return *this;
        }
        iterator operator++(int) noexcept
        {
            iterator const before(*this);
            ++*this;
            return before;
        }
        iterator& operator--() noexcept
        {
            using namespace qvxsys::detail::path;
            Root const root = RootOf(m_text);
            m_element.start = PreviousName(m_text, root, m_element.start);
            m_element.end = ElementEnd(m_text, root, m_element.start);
            m_element.borders = 0;
            return *this;
        }
        iterator operator--(int) noexcept
        {
            iterator const before(*this);
            --*this;
            return before;
        }
        [[nodiscard]] bool operator==(iterator const& other) const noexcept
        {
            return m_element.start == other.m_element.start;
        }

    private:
        friend class ElementRange;
        iterator(TStringView text, int at) noexcept : m_text(text), m_element{0, at, at} {}

        TStringView m_text;
        qvxsys::detail::path::Element m_element;
    };
    using const_iterator = iterator;

    [[nodiscard]] iterator begin() const noexcept { return ++iterator(m_text, 0); }
    [[nodiscard]] iterator end() const noexcept { return {m_text, m_text.length()}; }
    [[nodiscard]] bool empty() const noexcept { return m_text.empty(); }

private:
    friend class TPathCore;
    explicit ElementRange(TStringView text) noexcept : m_text(text) {}

    TStringView m_text;
};
// The iterators view the path's text, not the range.
template<>
inline constexpr bool std::ranges::enable_borrowed_range<TPathCore::ElementRange> = true;

inline TPathCore::iterator TPathCore::begin() const noexcept
{
    iterator it(*this, 0, 0);
    it.MoveTo(m_text, RootPart(), 0);
    return it;
}

inline TPathCore::iterator TPathCore::end() const noexcept
{
    return {*this, iterator::kEnd, iterator::kEnd};
}

inline TPathCore::ElementRange TPathCore::Elements() const& noexcept
{
    return ElementRange(m_text);
}
