// Date formats in the styles of locales over ICU.

#include <qvxsys/ICUDateFormat.h>

#include <memory>

#include "ICUDateFormat44Impl.h"

namespace QvxICU {

using QvxICU44::DateStyle;
using QvxICU44::ICUDateFormat44Impl;

ICUDateFormat::~ICUDateFormat() = default;

std::unique_ptr<ICUDateFormat> ICUDateFormat::createDateInstance(ICUEStyle style, ICULocale const& locale)
{
    auto format = std::make_unique<ICUDateFormat44Impl>();
    format->Adopt(
        std::unique_ptr<icu::DateFormat>(icu::DateFormat::createDateInstance(DateStyle(style), QvxICU44::Icu(locale))));
    return format;
}

std::unique_ptr<ICUDateFormat> ICUDateFormat::createTimeInstance(ICUEStyle style, ICULocale const& locale)
{
    auto format = std::make_unique<ICUDateFormat44Impl>();
    format->Adopt(
        std::unique_ptr<icu::DateFormat>(icu::DateFormat::createTimeInstance(DateStyle(style), QvxICU44::Icu(locale))));
    return format;
}

std::unique_ptr<ICUDateFormat> ICUDateFormat::createDateTimeInstance(ICUEStyle date, ICUEStyle time,
                                                                     ICULocale const& locale)
{
    auto format = std::make_unique<ICUDateFormat44Impl>();
    format->Adopt(std::unique_ptr<icu::DateFormat>(
        icu::DateFormat::createDateTimeInstance(DateStyle(date), DateStyle(time), QvxICU44::Icu(locale))));
    return format;
}

} // namespace QvxICU
