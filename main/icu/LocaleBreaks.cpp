// Text boundaries. Opening a break iterator takes ICU up to twenty microseconds, copying one a fraction of one; so one
// of each kind that was asked for is kept, and ranges have copies.

#include <qvxsys/LocaleBreaks.h>

#include <array>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include <unicode/brkiter.h>
#include <unicode/ubrk.h>
#include <unicode/unistr.h>

#include "IcuBridge.h"
#include "IcuCleanup.h"

namespace QvxICU44 {
namespace {

using QvxICU::ICUBreakIteratorType;

std::unique_ptr<icu::BreakIterator> Open(ICUBreakIteratorType type, icu::Locale const& locale, UErrorCode& status)
{
    icu::BreakIterator* opened = nullptr;
    switch (type) {
    case ICUBreakIteratorType::Character:
        opened = icu::BreakIterator::createCharacterInstance(locale, status);
        break;
    case ICUBreakIteratorType::Word:
        opened = icu::BreakIterator::createWordInstance(locale, status);
        break;
    case ICUBreakIteratorType::Line:
        opened = icu::BreakIterator::createLineInstance(locale, status);
        break;
    case ICUBreakIteratorType::Sentence:
        opened = icu::BreakIterator::createSentenceInstance(locale, status);
        break;
    default:
        status = U_ILLEGAL_ARGUMENT_ERROR;
        break;
    }
    std::unique_ptr<icu::BreakIterator> result(opened);
    return U_SUCCESS(status) ? std::move(result) : nullptr;
}

/// The break iterators that were used last.
class Prototypes
{
public:
    static Prototypes& Get()
    {
        // Never destroyed: threads may need it to the end.
        static auto* const s_prototypes = new Prototypes;
        return *s_prototypes;
    }

    std::unique_ptr<icu::BreakIterator> Copy(ICUBreakIteratorType type, icu::Locale const& locale, UErrorCode& status)
    {
        std::scoped_lock const lock(m_mutex);
        for (Kept const& kept : m_kept) {
            if (kept.iterator != nullptr && kept.type == type && kept.locale == locale.getName()) {
                status = kept.status;
                return std::unique_ptr<icu::BreakIterator>(kept.iterator->clone());
            }
        }
        std::unique_ptr<icu::BreakIterator> opened = Open(type, locale, status);
        if (opened == nullptr) {
            return nullptr;
        }
        if (!m_registered) {
            m_registered = true;
            QvxICU::BeforeCleanup([] { Get().Clear(); });
        }
        Kept& place = m_kept[m_next++ % m_kept.size()];
        place = {type, locale.getName(), status, std::move(opened)};
        return std::unique_ptr<icu::BreakIterator>(place.iterator->clone());
    }

private:
    struct Kept
    {
        ICUBreakIteratorType type = ICUBreakIteratorType::Character;
        std::string locale;
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> iterator;
    };

    void Clear()
    {
        std::scoped_lock const lock(m_mutex);
        m_kept = std::array<Kept, 16>();
    }

    std::mutex m_mutex;
    std::array<Kept, 16> m_kept;
    std::size_t m_next = 0;
    bool m_registered = false;
};

} // namespace

/// A text and a break iterator on it.
class Breaks44Impl
{
public:
    Breaks44Impl(TStringView text, ICUBreakIteratorType type, icu::Locale const& locale, bool onlyWords)
        : m_text(text), m_isWords(type == ICUBreakIteratorType::Word), m_onlyWords(m_isWords && onlyWords),
          m_units(Alias(text)), m_iterator(Prototypes::Get().Copy(type, locale, m_status))
    {
        if (m_iterator == nullptr && U_SUCCESS(m_status)) {
            m_status = U_MEMORY_ALLOCATION_ERROR;
        }
        if (m_iterator != nullptr) {
            m_iterator->setText(m_units);
        }
    }

    [[nodiscard]] int Length() const noexcept { return m_units.length(); }
    [[nodiscard]] UErrorCode Status() const noexcept { return m_status; }

    /// The first piece that is not left out from a boundary on; at the end of the text an empty one.
    [[nodiscard]] QvxICU::TextPiece From(int start)
    {
        QvxICU::TextPiece piece = At(start);
        while (m_onlyWords && !piece.isWord && piece.start < Length()) {
            piece = At(piece.start + static_cast<int>(piece.text.length()));
        }
        return piece;
    }
    /// The last piece that is not left out before a boundary.
    [[nodiscard]] QvxICU::TextPiece Before(int start)
    {
        QvxICU::TextPiece piece;
        do {
            start = m_iterator != nullptr ? m_iterator->preceding(start) : 0;
            piece = At(start);
        } while (m_onlyWords && !piece.isWord && start > 0);
        return piece;
    }

private:
    /// The piece that starts at a boundary.
    [[nodiscard]] QvxICU::TextPiece At(int start)
    {
        if (start == Length()) {
            return {m_text.mid(start), start, false, 0};
        }
        int const end = m_iterator != nullptr ? m_iterator->following(start) : Length();
        int const rule = m_iterator != nullptr ? m_iterator->getRuleStatus() : 0;
        return {m_text.mid(start, end - start), start, m_isWords && rule >= UBRK_WORD_NONE_LIMIT, rule};
    }

    TStringView m_text;
    bool m_isWords;
    bool m_onlyWords;
    UErrorCode m_status = U_ZERO_ERROR;
    icu::UnicodeString m_units; // the break iterator refers to it
    std::unique_ptr<icu::BreakIterator> m_iterator;
};

} // namespace QvxICU44

namespace QvxICU {

using QvxICU44::Breaks44Impl;

TextPieces::Iterator::Iterator(std::shared_ptr<Breaks44Impl> breaks, int start)
    : m_breaks(std::move(breaks)), m_piece(m_breaks != nullptr ? m_breaks->From(start) : TextPiece())
{}

void TextPieces::Iterator::Forward()
{
    m_piece = m_breaks->From(m_piece.start + static_cast<int>(m_piece.text.length()));
}

void TextPieces::Iterator::Back()
{
    m_piece = m_breaks->Before(m_piece.start);
}

TextPieces::TextPieces(TStringView text, ICUBreakIteratorType type, ICULocale const& locale, bool onlyWords)
    : m_breaks(std::make_shared<Breaks44Impl>(text, type, QvxICU44::Icu(locale), onlyWords))
{}

TextPieces::Iterator TextPieces::begin() const
{
    return Iterator(m_breaks, 0);
}

TextPieces::Iterator TextPieces::end() const
{
    return Iterator(m_breaks, m_breaks != nullptr ? m_breaks->Length() : 0);
}

ICUErrorCode TextPieces::status() const noexcept
{
    return m_breaks != nullptr ? static_cast<ICUErrorCode>(m_breaks->Status()) : ICUErrorCode::ZeroError;
}

int countGraphemes(TStringView text)
{
    int count = 0;
    for ([[maybe_unused]] TextPiece const& piece : graphemes(text)) {
        ++count;
    }
    return count;
}

int unitsOfGraphemes(TStringView text, int count)
{
    int units = 0;
    for (TextPiece const& piece : graphemes(text)) {
        if (count-- < 1) {
            break;
        }
        units = piece.start + static_cast<int>(piece.text.length());
    }
    return units;
}

} // namespace QvxICU
