#include <qvxsys/LocaleBreaks.h>

#include <atomic>
#include <cstdint>
#include <limits>
#include <utility>

#include <unicode/brkiter.h>
#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include "IcuBridge.h"
#include "KeptBreaks.h"

namespace QvxICU44 {

using QvxICU::ICUBreakIteratorType;
using QvxICU::TextPiece;

namespace {

// What a unit is to IsPlain; 0 is not known yet.
constexpr std::uint8_t kPlain = 1;
constexpr std::uint8_t kOther = 2;
constinit std::atomic<std::uint8_t> s_units[0x10000] = {};

std::uint8_t Ask(char16_t c) noexcept
{
    bool const isPlain = !U16_IS_SURROGATE(c) && u_getIntPropertyValue(c, UCHAR_GRAPHEME_CLUSTER_BREAK) == U_GCB_OTHER;
    std::uint8_t const answer = isPlain ? kPlain : kOther;
    // Threads that ask at once store the same, and nothing else is published by it.
    s_units[c].store(answer, std::memory_order_relaxed);
    return answer;
}

// Whether a unit joins with nothing but what asks for it: between two of these is always a boundary of graphemes (all
// rules of Unicode Standard Annex #29 but the last name another class of the break property on one side). So most
// letters of most scripts need no break iterator.
bool IsPlain(char16_t c) noexcept
{
    std::uint8_t const known = s_units[c].load(std::memory_order_relaxed);
    return (known != 0 ? known : Ask(c)) == kPlain;
}

} // namespace

/// A text and a break iterator on it, which all iterators of a range move.
class Breaks44Impl
{
public:
    Breaks44Impl(TStringView text, ICUBreakIteratorType type, icu::Locale const& locale, bool onlyWords)
        : m_text(text), m_isGraphemes(type == ICUBreakIteratorType::Character),
          m_isWords(type == ICUBreakIteratorType::Word), m_leastRule(m_isWords && onlyWords ? UBRK_WORD_NONE_LIMIT : 0),
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
        int const length = Length();
        if (m_isGraphemes || m_breaks == nullptr || start >= length) {
            return FromUnit(start, piece);
        }
        int end = start == m_at ? m_breaks->next() : m_breaks->following(start);
        int rule = m_breaks->getRuleStatus();
        while (rule < m_leastRule) {
            start = end;
            if (start >= length) {
                rule = 0;
                break;
            }
            end = m_breaks->next();
            rule = m_breaks->getRuleStatus();
        }
        m_at = end;
        Set(piece, start, end, rule);
    }
    /// The last piece that is not left out before a boundary. If there is none, the piece stays what it is.
    void Before(int end, TextPiece& piece) noexcept
    {
        while (end > 0) {
            int start = 0;
            int rule = 0;
            if (m_breaks != nullptr) {
                start = m_breaks->preceding(end);
                m_at = m_breaks->next(); // the rule of a boundary is known to who is there
                rule = m_breaks->getRuleStatus();
            }
            if (m_breaks == nullptr || rule >= m_leastRule) {
                return Set(piece, start, end, rule);
            }
            end = start;
        }
    }

private:
    /// The piece that starts at a unit when there may be no need of a break iterator, or there is none.
    [[gnu::noinline]] void FromUnit(int start, TextPiece& piece) noexcept
    {
        int end = Length();
        if (m_breaks != nullptr && start < end) {
            int const next = start + 1;
            if (IsPlain(m_text.data()[start]) && (next == end || IsPlain(m_text.data()[next]))) {
                end = next;
            } else {
                end = m_at = start == m_at ? m_breaks->next() : m_breaks->following(start);
            }
        }
        Set(piece, start, end, 0); // graphemes have no rules to tell apart
    }
    void Set(TextPiece& piece, int start, int end, int rule) const noexcept
    {
        piece.text = TStringView(m_text.data() + start, static_cast<std::size_t>(end - start));
        piece.start = start;
        piece.rule = rule;
        piece.isWord = m_isWords && rule >= UBRK_WORD_NONE_LIMIT;
    }

    TStringView m_text;
    bool m_isGraphemes;
    bool m_isWords;
    int m_leastRule; // of pieces that are not left out
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
    Breaks44Impl breaks(text, ICUBreakIteratorType::Character, icu::Locale::getRoot(), false);
    TextPiece piece;
    Graphemes first;
    while (first.count < limit && first.units < text.length()) {
        breaks.From(first.units, piece);
        first.units += piece.text.length();
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
