// Transliterators over ICU.

#include <qvxsys/ICUTransliterator.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include <unicode/strenum.h>
#include <unicode/translit.h>
#include <unicode/uniset.h>

#include "IcuObject.h"

namespace QvxICU44 {

using QvxICU::ICUTransPosition;

namespace {

/// Carries a position to ICU and back.
class Position
{
public:
    explicit Position(ICUTransPosition& position) noexcept
        : m_position(position), m_native{position.contextStart, position.contextLimit, position.start, position.limit}
    {}
    Position(Position const&) = delete;
    Position& operator=(Position const&) = delete;
    ~Position() { m_position = {m_native.contextStart, m_native.contextLimit, m_native.start, m_native.limit}; }

    operator UTransPosition&() noexcept { return m_native; }

private:
    ICUTransPosition& m_position;
    UTransPosition m_native;
};

[[nodiscard]] TStringCore PatternOf(icu::UnicodeSet const& set)
{
    icu::UnicodeString pattern;
    return Own(set.toPattern(pattern, false));
}

} // namespace

class ICUTransliterator44Impl final : public QvxICU::ICUTransliterator
{
private:
    /// call(transliterator, code), see Forward; one that is missing reports how its making went.
    template<class Call>
    auto With(QvxICU::ICUErrorCode& status, Call const& call) const
    {
        if (m_transliterator == nullptr) {
            Fail(status, m_created);
        }
        return Forward(m_transliterator.get(), status, call);
    }

public:
    using ErrorCode = QvxICU::ICUErrorCode;

    ICUTransliterator44Impl(std::unique_ptr<icu::Transliterator> transliterator, ErrorCode created)
        : m_transliterator(std::move(transliterator)), m_created(created)
    {
        if (m_transliterator == nullptr) {
            Fail(m_created, ErrorCode::InvalidStateError);
        }
    }

    [[nodiscard]] std::unique_ptr<ICUTransliterator> clone() const override
    {
        return std::make_unique<ICUTransliterator44Impl>(
            std::unique_ptr<icu::Transliterator>(m_transliterator == nullptr ? nullptr : m_transliterator->clone()),
            m_created);
    }
    [[nodiscard]] ErrorCode getCreationStatus() const noexcept override { return m_created; }

    [[nodiscard]] TStringCore transliterate(TStringView text) const override
    {
        if (m_transliterator == nullptr) {
            return text;
        }
        icu::UnicodeString work(text.data(), Length(text));
        m_transliterator->transliterate(work);
        return Own(work);
    }
    void transliterate(QvxICU::ICUString& text) const override
    {
        Forward(m_transliterator.get(), [&text](auto& t) { t.transliterate(Icu(text)); });
    }
    int transliterate(QvxICU::ICUString& text, int start, int limit) const override
    {
        return m_transliterator == nullptr ? -1 : m_transliterator->transliterate(Icu(text), start, limit);
    }
    void transliterate(QvxICU::ICUString& text, ICUTransPosition& position, ErrorCode& status) const override
    {
        With(status, [&](auto& t, auto& code) { t.transliterate(Icu(text), Position(position), code); });
    }
    void transliterate(QvxICU::ICUString& text, ICUTransPosition& position, TStringView insertion,
                       ErrorCode& status) const override
    {
        With(status,
             [&](auto& t, auto& code) { t.transliterate(Icu(text), Position(position), Alias(insertion), code); });
    }
    void transliterate(QvxICU::ICUString& text, ICUTransPosition& position, char32_t insertion,
                       ErrorCode& status) const override
    {
        With(status, [&](auto& t, auto& code) {
            t.transliterate(Icu(text), Position(position), static_cast<UChar32>(insertion), code);
        });
    }
    void finishTransliteration(QvxICU::ICUString& text, ICUTransPosition& position) const override
    {
        Forward(m_transliterator.get(), [&](auto& t) { t.finishTransliteration(Icu(text), Position(position)); });
    }
    [[nodiscard]] int getMaximumContextLength() const override
    {
        return Forward(m_transliterator.get(), [](auto& t) { return t.getMaximumContextLength(); });
    }

    [[nodiscard]] TStringCore getID() const override
    {
        return Forward(m_transliterator.get(), [](auto& t) { return Own(t.getID()); });
    }
    [[nodiscard]] TStringCore getDisplayName() const override
    {
        return Forward(m_transliterator.get(), [](auto& t) {
            icu::UnicodeString name;
            return Own(icu::Transliterator::getDisplayName(t.getID(), name));
        });
    }
    [[nodiscard]] TStringCore getDisplayName(QvxICU::ICULocale const& locale) const override
    {
        return Forward(m_transliterator.get(), [&locale](auto& t) {
            icu::UnicodeString name;
            return Own(icu::Transliterator::getDisplayName(t.getID(), Icu(locale), name));
        });
    }
    [[nodiscard]] std::unique_ptr<ICUTransliterator> createInverse(ErrorCode& status) const override
    {
        auto* const inverse = With(status, [](auto& t, auto& code) { return t.createInverse(code); });
        return std::make_unique<ICUTransliterator44Impl>(Made(inverse, status), status);
    }
    [[nodiscard]] TStringCore toRules(bool escapeUnprintable) const override
    {
        return Forward(m_transliterator.get(), [escapeUnprintable](auto& t) {
            icu::UnicodeString rules;
            return Own(t.toRules(rules, escapeUnprintable));
        });
    }

    [[nodiscard]] TStringCore getFilter() const override
    {
        return Forward(m_transliterator.get(), [](auto& t) {
            icu::UnicodeString pattern;
            icu::UnicodeFilter const* const filter = t.getFilter();
            return filter == nullptr ? TStringCore() : Own(filter->toPattern(pattern, false));
        });
    }
    void setFilter(TStringCore const& pattern, ErrorCode& status) override
    {
        With(status, [&pattern](auto& t, auto& code) {
            std::unique_ptr<icu::UnicodeSet> filter;
            if (!pattern.isEmpty()) {
                filter = std::make_unique<icu::UnicodeSet>(Alias(pattern), code);
            }
            if (U_SUCCESS(code)) {
                t.adoptFilter(filter.release());
            }
        });
    }
    [[nodiscard]] TStringCore getSourceSet() const override
    {
        return Forward(m_transliterator.get(), [](auto& t) {
            icu::UnicodeSet set;
            return PatternOf(t.getSourceSet(set));
        });
    }
    [[nodiscard]] TStringCore getTargetSet() const override
    {
        return Forward(m_transliterator.get(), [](auto& t) {
            icu::UnicodeSet set;
            return PatternOf(t.getTargetSet(set));
        });
    }

    [[nodiscard]] void* Native() noexcept override { return m_transliterator.get(); }

private:
    std::unique_ptr<icu::Transliterator> m_transliterator;
    ErrorCode m_created;
};

} // namespace QvxICU44

namespace QvxICU {

using QvxICU44::Alias;
using QvxICU44::ICUTransliterator44Impl;

ICUTransliterator::~ICUTransliterator() = default;

namespace {

/// create(code) with the caller's status. ICU knows two directions and asks no further.
template<class Create>
std::unique_ptr<ICUTransliterator> Make(ICUTransDirection direction, ICUErrorCode& status, Create const& create)
{
    if (direction != ICUTransDirection::Forward && direction != ICUTransDirection::Reverse) {
        QvxICU44::Fail(status, ICUErrorCode::IllegalArgumentError);
    }
    std::unique_ptr<icu::Transliterator> made;
    if (ICU_SUCCESS(status)) {
        QvxICU44::Status code(status);
        made.reset(create(static_cast<UTransDirection>(direction), code));
    }
    return std::make_unique<ICUTransliterator44Impl>(QvxICU44::Made(made.release(), status), status);
}

} // namespace

std::unique_ptr<ICUTransliterator> ICUTransliterator::createInstance(TStringCore const& id, ICUTransDirection direction,
                                                                     ICUErrorCode& status)
{
    return Make(direction, status, [&id](UTransDirection native, UErrorCode& code) {
        return icu::Transliterator::createInstance(Alias(id), native, code);
    });
}

std::unique_ptr<ICUTransliterator>
ICUTransliterator::createInstanceFromRules(TStringCore const& id, TStringCore const& rules, ICUTransDirection direction,
                                           ICUParseError& error, ICUErrorCode& status)
{
    // The parser of ICU calls itself for each that is inside of another, and has names for some two thousand only.
    constexpr int kMostParentheses = 5'000;
    if (std::count(rules.view().begin(), rules.view().end(), u'(') > kMostParentheses) {
        QvxICU44::Fail(status, ICUErrorCode::MalformedRule);
    }
    return Make(direction, status, [&](UTransDirection native, UErrorCode& code) {
        UParseError where{};
        auto* const made = icu::Transliterator::createFromRules(Alias(id), Alias(rules), native, where, code);
        QvxICU44::Own(where, error);
        return made;
    });
}

std::vector<TStringCore> ICUTransliterator::getAvailableIDs(ICUErrorCode& status)
{
    QvxICU44::Status code(status);
    return QvxICU44::Own(std::unique_ptr<icu::StringEnumeration>(icu::Transliterator::getAvailableIDs(code)), code);
}

TStringCore ICUTransliterator::getDisplayName(TStringCore const& id, ICULocale const& locale)
{
    icu::UnicodeString name;
    return QvxICU44::Own(icu::Transliterator::getDisplayName(Alias(id), QvxICU44::Icu(locale), name));
}

} // namespace QvxICU
