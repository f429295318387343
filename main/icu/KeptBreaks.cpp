#include "KeptBreaks.h"

#include <array>
#include <mutex>
#include <string>
#include <utility>

#include "IcuCleanup.h"

namespace QvxICU44 {
namespace {

using QvxICU::ICUBreakIteratorType;

std::unique_ptr<icu::BreakIterator> Create(ICUBreakIteratorType type, icu::Locale const& locale, UErrorCode& status)
{
    icu::BreakIterator* created = nullptr;
    switch (type) {
    case ICUBreakIteratorType::Character:
        created = icu::BreakIterator::createCharacterInstance(locale, status);
        break;
    case ICUBreakIteratorType::Word:
        created = icu::BreakIterator::createWordInstance(locale, status);
        break;
    case ICUBreakIteratorType::Line:
        created = icu::BreakIterator::createLineInstance(locale, status);
        break;
    case ICUBreakIteratorType::Sentence:
        created = icu::BreakIterator::createSentenceInstance(locale, status);
        break;
    default:
        status = U_ILLEGAL_ARGUMENT_ERROR;
        break;
    }
    std::unique_ptr<icu::BreakIterator> result(created);
    return U_SUCCESS(status) ? std::move(result) : nullptr;
}

class KeptBreaks
{
public:
    // Threads may copy an original at once: it never gets a text and is not moved.
    struct Kept
    {
        ICUBreakIteratorType type = ICUBreakIteratorType::Character;
        std::string locale;
        UErrorCode status = U_ZERO_ERROR;
        std::shared_ptr<icu::BreakIterator const> original;
    };

    static KeptBreaks& Get()
    {
        // Never destroyed: threads may need it to the end.
        static auto* const s_kept = new KeptBreaks;
        return *s_kept;
    }

    std::shared_ptr<icu::BreakIterator const> Find(ICUBreakIteratorType type, icu::Locale const& locale,
                                                   UErrorCode& status)
    {
        std::scoped_lock const lock(m_mutex);
        for (Kept const& kept : m_kept) {
            if (kept.original != nullptr && kept.type == type && kept.locale == locale.getName()) {
                status = kept.status;
                return kept.original;
            }
        }
        return nullptr;
    }

    void Keep(Kept kept)
    {
        std::scoped_lock const lock(m_mutex);
        if (!m_isReleasedAtCleanup) {
            m_isReleasedAtCleanup = true;
            QvxICU::BeforeCleanup([] { Get().Release(); });
        }
        m_kept[m_next++ % m_kept.size()] = std::move(kept);
    }

private:
    void Release()
    {
        std::scoped_lock const lock(m_mutex);
        m_kept = {};
    }

    std::mutex m_mutex;
    std::array<Kept, 16> m_kept;
    std::size_t m_next = 0; // the oldest place
    bool m_isReleasedAtCleanup = false;
};

} // namespace

std::unique_ptr<icu::BreakIterator> OpenBreaks(ICUBreakIteratorType type, icu::Locale const& locale, UErrorCode& status)
{
    std::shared_ptr<icu::BreakIterator const> original = KeptBreaks::Get().Find(type, locale, status);
    if (original == nullptr) {
        original = Create(type, locale, status);
        if (original == nullptr) {
            return nullptr;
        }
        KeptBreaks::Get().Keep({type, locale.getName(), status, original});
    }
    std::unique_ptr<icu::BreakIterator> copy(original->clone());
    if (copy == nullptr) {
        status = U_MEMORY_ALLOCATION_ERROR;
    }
    return copy;
}

} // namespace QvxICU44
