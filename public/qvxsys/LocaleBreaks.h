#pragma once
// Where texts may be cut: between the characters that users see, words, sentences, and where lines may end (Unicode
// Standard Annexes #29 and #14, with ICU's dictionaries for Thai, Chinese and their like).
//
//     for (TStringView const character : QvxICU::graphemes(text)) { ... }        // a flag is one, as is "e\u0301"
//     for (QvxICU::TextPiece const& piece : QvxICU::pieces(text, QvxICU::ICUBreakIteratorType::Word)) { ... }
//     auto const words = QvxICU::words(u"Don't panic: 3.14!");                    // "Don't", "panic", "3.14"
//     TStringCore const title = text.left(QvxICU::unitsOfGraphemes(text, 20));
//
// The text is read in place and must outlive the range and its iterators; all lengths are in units. A lone surrogate is
// a character like any other that has no meaning: a grapheme of its own, no word. Ranges are cheap to make (about half
// a microsecond once a locale is known: break iterators are kept, sixteen for the process) and to copy. A range, its
// copies and their iterators share one break iterator, so they are for one thread at a time; ranges that were made
// apart have nothing in common.

#include <cstddef>
#include <iterator>
#include <memory>
#include <ranges>

#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringView.h>

namespace QvxICU44 {
class Breaks44Impl;
}

namespace QvxICU {

/// A stretch of a text between two boundaries.
struct TextPiece
{
    /// The stretch.
    TStringView text;
    /// Where it starts, in units.
    int start = 0;
    /// In a range of words: whether it has a letter, a digit or an ideograph.
    bool isWord = false;
    /// ICU's rule status of the boundary at the end (UWordBreak, ULineBreakTag, USentenceBreakTag).
    int rule = 0;

    /// The text alone.
    operator TStringView() const noexcept { return text; }
};

/// The pieces of a text, in order; joined (unless some are left out) they are the text. A view, and a borrowed range:
/// iterators may be used when the range is gone. Going through it costs what it costs with ICU's break iterator.
class QVXSYS_API TextPieces
{
public:
    /// A bidirectional iterator that returns pieces by value. To step over an end is undefined, as always.
    class Iterator
    {
    public:
        /// Holds the piece that `->` leads to.
        class Pointer
        {
        public:
            /// Points at a copy.
            explicit Pointer(TextPiece const& piece) noexcept : m_piece(piece) {}
            [[nodiscard]] TextPiece const* operator->() const noexcept { return &m_piece; }

        private:
            TextPiece m_piece;
        };
        using value_type = TextPiece;
        using difference_type = std::ptrdiff_t;
        using pointer = Pointer;
        using reference = TextPiece;
        using iterator_concept = std::bidirectional_iterator_tag;
        using iterator_category = std::bidirectional_iterator_tag; // so that std::prev goes back

        Iterator() = default;
        [[nodiscard]] TextPiece operator*() const noexcept { return m_piece; }
        [[nodiscard]] Pointer operator->() const noexcept { return Pointer(m_piece); }
        Iterator& operator++() noexcept
        {
            Forward();
            return *this;
        }
        Iterator operator++(int) noexcept
        {
            Iterator before = *this;
            Forward();
            return before;
        }
        Iterator& operator--() noexcept
        {
            Back();
            return *this;
        }
        Iterator operator--(int) noexcept
        {
            Iterator before = *this;
            Back();
            return before;
        }
        /// By position; of iterators into the same text.
        [[nodiscard]] friend bool operator==(Iterator const& a, Iterator const& b) noexcept
        {
            return a.m_piece.start == b.m_piece.start;
        }

    private:
        friend class TextPieces;
        QVXSYS_API Iterator(std::shared_ptr<QvxICU44::Breaks44Impl> breaks, int start) noexcept;
        QVXSYS_API void Forward() noexcept;
        QVXSYS_API void Back() noexcept;

        std::shared_ptr<QvxICU44::Breaks44Impl> m_breaks;
        TextPiece m_piece;
    };

    /// No text, no pieces.
    TextPieces() = default;
    /// A locale that is not known has the rules of its nearest known parent. When there is no break iterator to be had
    /// (types other than Character, Word, Line and Sentence), the whole text is one piece, and status() says why. With
    /// `onlyWords` a range of words leaves out pieces that are none.
    TextPieces(TStringView text, ICUBreakIteratorType type, ICULocale const& locale, bool onlyWords = false);

    /// Linear in what is left out before the first word.
    [[nodiscard]] Iterator begin() const noexcept;
    [[nodiscard]] Iterator end() const noexcept;
    /// How opening went: UsingFallbackWarning and UsingDefaultWarning when a parent of the locale was taken.
    [[nodiscard]] ICUErrorCode status() const noexcept;

private:
    std::shared_ptr<QvxICU44::Breaks44Impl> m_breaks;
};

/// All pieces of one kind.
[[nodiscard]] inline TextPieces pieces(TStringView text, ICUBreakIteratorType type,
                                       ICULocale const& locale = ICULocale())
{
    return TextPieces(text, type, locale);
}
/// User-perceived characters (extended grapheme clusters).
[[nodiscard]] inline TextPieces graphemes(TStringView text, ICULocale const& locale = ICULocale())
{
    return TextPieces(text, ICUBreakIteratorType::Character, locale);
}
/// Sentences, each with the spaces behind it.
[[nodiscard]] inline TextPieces sentences(TStringView text, ICULocale const& locale = ICULocale())
{
    return TextPieces(text, ICUBreakIteratorType::Sentence, locale);
}
/// Words alone, without what stands between them.
[[nodiscard]] inline TextPieces words(TStringView text, ICULocale const& locale = ICULocale())
{
    return TextPieces(text, ICUBreakIteratorType::Word, locale, true);
}

/// How many characters users see. Linear. (No locale has rules of its own for these.)
[[nodiscard]] QVXSYS_API int countGraphemes(TStringView text);
/// The units of the first `count` characters that users see: all when there are not as many, 0 for a count below 1. To
/// cut a text there leaves no half characters.
[[nodiscard]] QVXSYS_API int unitsOfGraphemes(TStringView text, int count);

} // namespace QvxICU

template<>
inline constexpr bool std::ranges::enable_view<QvxICU::TextPieces> = true;
template<>
inline constexpr bool std::ranges::enable_borrowed_range<QvxICU::TextPieces> = true;
