#include <qvxsys/LocaleBreaks.h>

#include <limits>
#include <utility>

#include <unicode/brkiter.h>
#include <unicode/ubrk.h>
#include <unicode/unistr.h>

#include "IcuBridge.h"
#include "KeptBreaks.h"

namespace QvxICU44 {

using QvxICU::ICUBreakIteratorType;
using QvxICU::TextPiece;

/// A text and a break iterator on it, which all iterators of a range move.
class Breaks44Impl
{
public:
    Breaks44Impl(TStringView text, ICUBreakIteratorType type, icu::Locale const& locale, bool onlyWords)
        : m_text(text), m_isWords(type == ICUBreakIteratorType::Word), m_onlyWords(m_isWords && onlyWords),
          m_units(Alias(text)), m_breaks(OpenBreaks(type, locale, m_status))
    {
        if (m_breaks != nullptr) {
            m_breaks->setText(m_units);
        }
    }

    [[nodiscard]] int Length() const noexcept { return m_text.length(); }
    [[nodiscard]] UErrorCode Status() const noexcept { return m_status; }

    /// The first piece that is not left out from a boundary on; at the end of the text an empty one.
    void From(int start, TextPiece& piece) noexcept
    {
        do {
            int const end = Next(start);
            Set(piece, start, end);
            start = end;
        } while (m_onlyWords && !piece.isWord && !piece.text.empty());
    }
    /// The last piece that is not left out before a boundary. If there is none, the piece stays what it is.
    void Before(int end, TextPiece& piece) noexcept
    {
        TextPiece before;
        do {
            if (end <= 0) {
                return;
            }
            int const start = m_breaks != nullptr ? m_breaks->preceding(end) : 0;
            m_at = start;
            Set(before, start, Next(start)); // the rule of a boundary is known to who is there
            end = start;
        } while (m_onlyWords && !before.isWord);
        piece = before;
    }

private:
    /// The boundary behind another one, or the end.
    int Next(int start) noexcept
    {
        if (start >= Length() || m_breaks == nullptr) {
            return Length();
        }
        m_at = start == m_at ? m_breaks->next() : m_breaks->following(start);
        return m_at;
    }
    void Set(TextPiece& piece, int start, int end) const noexcept
    {
        piece.text = TStringView(m_text.data() + start, static_cast<std::size_t>(end - start));
        piece.start = start;
        piece.rule = m_breaks != nullptr && end > start ? m_breaks->getRuleStatus() : 0;
        piece.isWord = m_isWords && piece.rule >= UBRK_WORD_NONE_LIMIT;
    }

    TStringView m_text;
    bool m_isWords;
    bool m_onlyWords;
    UErrorCode m_status = U_ZERO_ERROR;
    int m_at = 0;               // where the break iterator is
    icu::UnicodeString m_units; // the break iterator refers to it
    std::unique_ptr<icu::BreakIterator> m_breaks;
};

namespace {

struct Graphemes
{
    int count = 0;
    int units = 0;
};

// The first graphemes of a text, at most `limit`.
Graphemes FirstGraphemes(TStringView text, int limit)
{
    UErrorCode status = U_ZERO_ERROR;
    auto const breaks = OpenBreaks(ICUBreakIteratorType::Character, icu::Locale::getRoot(), status);
    if (breaks == nullptr) {
        return text.empty() || limit < 1 ? Graphemes() : Graphemes{1, text.length()};
    }
    icu::UnicodeString const units = Alias(text);
    breaks->setText(units);
    Graphemes first;
    while (first.count < limit && first.units < text.length()) {
        first.units = breaks->next();
        ++first.count;
    }
    return first;
}

} // namespace
} // namespace QvxICU44

namespace QvxICU {

using QvxICU44::Breaks44Impl;

TextPieces::Iterator::Iterator(std::shared_ptr<Breaks44Impl> breaks, int start) noexcept : m_breaks(std::move(breaks))
{
    if (m_breaks != nullptr) {
        m_breaks->From(start, m_piece);
    }
}

void TextPieces::Iterator::Forward() noexcept
{
    m_breaks->From(m_piece.start + m_piece.text.length(), m_piece);
}

void TextPieces::Iterator::Back() noexcept
{
    m_breaks->Before(m_piece.start, m_piece);
}

TextPieces::TextPieces(TStringView text, ICUBreakIteratorType type, ICULocale const& locale, bool onlyWords)
    : m_breaks(std::make_shared<Breaks44Impl>(text, type, QvxICU44::Icu(locale), onlyWords))
{}

TextPieces::Iterator TextPieces::begin() const noexcept
{
    return Iterator(m_breaks, 0);
}

TextPieces::Iterator TextPieces::end() const noexcept
{
    return Iterator(m_breaks, m_breaks != nullptr ? m_breaks->Length() : 0);
}

ICUErrorCode TextPieces::status() const noexcept
{
    return m_breaks != nullptr ? static_cast<ICUErrorCode>(m_breaks->Status()) : ICUErrorCode::ZeroError;
}

int countGraphemes(TStringView text)
{
    return QvxICU44::FirstGraphemes(text, std::numeric_limits<int>::max()).count;
}

int unitsOfGraphemes(TStringView text, int count)
{
    return QvxICU44::FirstGraphemes(text, count).units;
}

} // namespace QvxICU
