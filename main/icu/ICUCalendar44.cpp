// Calendars over ICU.

#include <qvxsys/ICUCalendar.h>

#include <memory>

#include "ICUCalendar44Impl.h"

using QvxICU44::ICUCalendar44Impl;
using QvxICU44::ICUGregorianCalendar44Impl;
using QvxICU44::Made;
using QvxICU44::Status;

namespace QvxICU {

ICUCalendar::~ICUCalendar() = default;
ICUGregorianCalendar::~ICUGregorianCalendar() = default;

std::unique_ptr<ICUCalendar> ICUCalendar::createInstance(ICUErrorCode& status)
{
    auto calendar = std::make_unique<ICUCalendar44Impl>();
    auto* const made = icu::Calendar::createInstance(Status(status));
    calendar->Adopt(Made(made, status));
    return calendar;
}

std::unique_ptr<ICUCalendar> ICUCalendar::createInstance(ICULocale const& locale, ICUErrorCode& status)
{
    auto calendar = std::make_unique<ICUCalendar44Impl>();
    auto* const made = icu::Calendar::createInstance(QvxICU44::Icu(locale), Status(status));
    calendar->Adopt(Made(made, status));
    return calendar;
}

double ICUCalendar::getNow() noexcept
{
    return icu::Calendar::getNow();
}

std::vector<TStringCore> ICUCalendar::getTypesForLocale(ICULocale const& locale, bool onlyCommonlyUsed,
                                                        ICUErrorCode& status)
{
    Status code(status);
    return QvxICU44::Own(std::unique_ptr<icu::StringEnumeration>(icu::Calendar::getKeywordValuesForLocale(
                             "calendar", QvxICU44::Icu(locale), onlyCommonlyUsed, code)),
                         code);
}

std::vector<TStringCore> ICUCalendar::getTimeZones(ICUErrorCode& status)
{
    if (ICU_FAILURE(status)) {
        return {};
    }
    Status code(status);
    return QvxICU44::Own(std::unique_ptr<icu::StringEnumeration>(icu::TimeZone::createEnumeration(code)), code);
}

TStringCore ICUCalendar::getDefaultTimeZone()
{
    std::unique_ptr<icu::TimeZone> const zone(icu::TimeZone::createDefault());
    return zone == nullptr ? TStringCore() : QvxICU44::NameOf(*zone);
}

void ICUCalendar::setDefaultTimeZone(TStringView name, ICUErrorCode& status)
{
    if (auto zone = QvxICU44::MakeTimeZone(name, status)) {
        icu::TimeZone::adoptDefault(zone.release());
    }
}

std::unique_ptr<ICUGregorianCalendar> ICUGregorianCalendar::createInstance(ICULocale const& locale,
                                                                           ICUErrorCode& status)
{
    auto calendar = std::make_unique<ICUGregorianCalendar44Impl>();
    if (ICU_SUCCESS(status)) {
        auto* const made = new icu::GregorianCalendar(QvxICU44::Icu(locale), Status(status));
        calendar->Adopt(Made(made, status));
    }
    return calendar;
}

void const* ICUGregorianCalendar::getStaticClassID() noexcept
{
    return icu::GregorianCalendar::getStaticClassID();
}

} // namespace QvxICU
