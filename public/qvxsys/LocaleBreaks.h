#pragma once
// Where texts may be cut: between the characters that users see, words, sentences, and where lines may end (Unicode
// Standard Annexes #29 and #14, with ICU's dictionaries for Thai, Chinese and their like).
//
//     for (TStringView const character : QvxICU::graphemes(text)) { ... }        // a flag is one, as is "e\u0301"
//     for (QvxICU::TextPiece const& piece : QvxICU::pieces(text, QvxICU::ICUBreakIteratorType::Word)) { ... }
//     auto const words = QvxICU::words(u"Don't panic: 3.14!");                    // "Don't", "panic", "3.14"
//     TStringCore const title = text.left(QvxICU::unitsOfGraphemes(text, 20));
//
// The text is read in place and must outlive the range; all lengths are in units. Lone surrogates are pieces of their
// own. Ranges are cheap to make (some hundred nanoseconds once a locale is known: break iterators are kept, sixteen for
// the process). A range and its iterators are for one thread at a time; ranges of different threads have nothing in
// common.

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
    TStringView text;
    /// Where it starts, in units.
    int start = 0;
    /// Whether it has a letter, a digit or an ideograph, of a range of words; otherwise what ICU says of the boundary
    /// at its end is kept in `rule`.
    bool isWord = false;
    /// ICU's rule status of the boundary at the end (UWordBreak, ULineBreakTag, USentenceBreakTag).
    int rule = 0;

    /// The text alone.
    operator TStringView() const noexcept { return text; }
};

/// The pieces of a text, in order; joined (unless some are left out) they are the text. A bidirectional view.
class QVXSYS_API TextPieces
{
public:
    class Iterator
    {
    public:
        using value_type = TextPiece;
        using difference_type = std::ptrdiff_t;
        using iterator_concept = std::bidirectional_iterator_tag;
        using iterator_category = std::input_iterator_tag;

        Iterator() = default;
        [[nodiscard]] TextPiece const& operator*() const noexcept { return m_piece; }
        [[nodiscard]] TextPiece const* operator->() const noexcept { return &m_piece; }
        Iterator& operator++()
        {
            Forward();
            return *this;
        }
        Iterator operator++(int)
        {
            Iterator const before = *this;
            Forward();
            return before;
        }
        Iterator& operator--()
        {
            Back();
            return *this;
        }
        Iterator operator--(int)
        {
            Iterator const before = *this;
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
        QVXSYS_API Iterator(std::shared_ptr<QvxICU44::Breaks44Impl> breaks, int start);
        QVXSYS_API void Forward();
        QVXSYS_API void Back();

        std::shared_ptr<QvxICU44::Breaks44Impl> m_breaks;
        TextPiece m_piece;
    };

    /// No text, no pieces.
    TextPieces() = default;
    /// A locale that is not known has the rules of its nearest known parent. When there is no break iterator to be had,
    /// the whole text is one piece, and status() says why. With `onlyWords` pieces that are no words are left out.
    TextPieces(TStringView text, ICUBreakIteratorType type, ICULocale const& locale, bool onlyWords = false);

    [[nodiscard]] Iterator begin() const;
    [[nodiscard]] Iterator end() const;
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

/// How many characters users see. Linear.
[[nodiscard]] QVXSYS_API int countGraphemes(TStringView text);
/// The units of the first `count` characters that users see: all when there are not as many, 0 for a count below 1. To
/// cut a text there leaves no half characters.
[[nodiscard]] QVXSYS_API int unitsOfGraphemes(TStringView text, int count);

} // namespace QvxICU

template<>
inline constexpr bool std::ranges::enable_view<QvxICU::TextPieces> = true;
