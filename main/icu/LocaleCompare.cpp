#include <qvxsys/LocaleCompare.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include <unicode/coll.h>
#include <unicode/tblcoll.h>

#include "IcuBridge.h"

namespace QvxICU44 {

/// A collator that is not changed any more, so that threads may share it. Null if ICU has no data at all; then units
/// are compared.
class LocaleComparator44Impl
{
public:
    std::unique_ptr<icu::Collator> collator;
    UErrorCode status = U_ZERO_ERROR;

    void Set(UColAttribute attribute, QvxICU::ICUColAttributeValue value)
    {
        UErrorCode failure = U_ZERO_ERROR;
        collator->setAttribute(attribute, static_cast<UColAttributeValue>(value), failure);
        status = U_FAILURE(failure) && U_SUCCESS(status) ? failure : status;
    }

    void Configure(QvxICU::CompareOptions const& options)
    {
        using QvxICU::ICUColAttributeValue;
        if (collator == nullptr) {
            return;
        }
        if (options.strength != ICUColAttributeValue::Default) {
            Set(UCOL_STRENGTH, options.strength);
        }
        if (options.caseFirst != ICUColAttributeValue::Default) {
            Set(UCOL_CASE_FIRST, options.caseFirst);
        }
        if (options.numeric) {
            Set(UCOL_NUMERIC_COLLATION, ICUColAttributeValue::On);
        }
        if (options.ignorePunctuation) {
            Set(UCOL_ALTERNATE_HANDLING, ICUColAttributeValue::Shifted);
        }
    }
};

namespace {

std::unique_ptr<icu::Collator> OfLocale(icu::Locale const& locale, UErrorCode& status)
{
    std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(locale, status));
    return U_SUCCESS(status) ? std::move(collator) : nullptr;
}

std::unique_ptr<icu::Collator> OfRoot()
{
    UErrorCode ignored = U_ZERO_ERROR;
    return OfLocale(icu::Locale::getRoot(), ignored);
}

} // namespace
} // namespace QvxICU44

namespace QvxICU {

using QvxICU44::LocaleComparator44Impl;

LocaleComparator::LocaleComparator(ICULocale const& locale, CompareOptions const& options)
{
    auto made = std::make_shared<LocaleComparator44Impl>();
    made->collator = QvxICU44::OfLocale(QvxICU44::Icu(locale), made->status);
    if (made->collator == nullptr) {
        made->collator = QvxICU44::OfRoot();
    }
    made->Configure(options);
    m_implementation = std::move(made);
}

LocaleComparator::LocaleComparator(std::shared_ptr<LocaleComparator44Impl const> implementation) noexcept
    : m_implementation(std::move(implementation))
{}

LocaleComparator LocaleComparator::fromRules(TStringView rules, CompareOptions const& options)
{
    auto made = std::make_shared<LocaleComparator44Impl>();
    made->collator = std::make_unique<icu::RuleBasedCollator>(QvxICU44::Alias(rules), made->status);
    if (U_FAILURE(made->status)) {
        made->collator = QvxICU44::OfRoot();
    }
    made->Configure(options);
    return LocaleComparator(std::move(made));
}

LocaleComparator::LocaleComparator(LocaleComparator const& other) noexcept = default;
LocaleComparator& LocaleComparator::operator=(LocaleComparator const& other) noexcept = default;
LocaleComparator::~LocaleComparator() = default;

ICUErrorCode LocaleComparator::status() const noexcept
{
    return static_cast<ICUErrorCode>(m_implementation->status);
}

int LocaleComparator::compare(TStringView a, TStringView b) const noexcept
{
    icu::Collator const* const collator = m_implementation->collator.get();
    if (collator == nullptr) [[unlikely]] {
        return a.compare(b);
    }
    UErrorCode status = U_ZERO_ERROR;
    return collator->compare(a.data(), a.length(), b.data(), b.length(), status);
}

std::string LocaleComparator::sortKey(TStringView text) const
{
    if (m_implementation->collator == nullptr) {
        return {};
    }
    icu::Collator const& collator = *m_implementation->collator;
    constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
    std::string key(std::min(text.size() * 3 + 16, kMost), '\0');
    for (;;) {
        auto* const bytes = reinterpret_cast<std::uint8_t*>(key.data());
        auto const needed = static_cast<std::size_t>(
            collator.getSortKey(text.data(), text.length(), bytes, static_cast<std::int32_t>(key.size())));
        bool const fits = needed <= key.size();
        key.resize(needed);
        if (fits) {
            return key;
        }
    }
}

} // namespace QvxICU
