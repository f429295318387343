#include "IcuMappings.h"

#include <iterator>

#include <qvxsys/QuorvexException.h>

#include "ThrowSite.h"

namespace QvxICU44 {
namespace {

using qvxsys::error::ThrowSite;

constexpr UCalendarDateFields kDateFields[] = {UCAL_YEAR,     UCAL_MONTH,       UCAL_DATE,        UCAL_HOUR_OF_DAY,
                                               UCAL_MINUTE,   UCAL_SECOND,      UCAL_MILLISECOND, UCAL_WEEK_OF_YEAR,
                                               UCAL_YEAR_WOY, UCAL_DAY_OF_WEEK, UCAL_DAY_OF_YEAR};

// The other tables map a range of numbers to the same numbers.
static_assert(icu::DateFormat::kFull == 0 && icu::DateFormat::kShort == 3);
static_assert(UCAL_SUNDAY == 1 && UCAL_SATURDAY == 7);
static_assert(icu::DateFormatSymbols::FORMAT == 0 && icu::DateFormatSymbols::STANDALONE == 1);
static_assert(icu::DateFormatSymbols::ABBREVIATED == 0 && icu::DateFormatSymbols::SHORT == 3);
static_assert(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol == 0 &&
              icu::DecimalFormatSymbols::kOneDigitSymbol == 18);

} // namespace

icu::DateFormat::EStyle DateStyle(int style)
{
    if (style < 0 || style > 3) {
        throw QuorvexException(u"Unknown UEStyle", ThrowSite(0x80A9CA1D));
    }
    return static_cast<icu::DateFormat::EStyle>(style);
}

UCalendarDateFields DateField(int field)
{
    if (field < 0 || field >= static_cast<int>(std::size(kDateFields))) {
        throw QuorvexException(u"Unknown calendar date field.", ThrowSite(0xDECF1A87));
    }
    return kDateFields[field];
}

UCalendarDaysOfWeek DayOfWeek(int day)
{
    if (day < UCAL_SUNDAY || day > UCAL_SATURDAY) {
        throw QuorvexException(u"Unknown day of week.", ThrowSite(0xA4F1F77D));
    }
    return static_cast<UCalendarDaysOfWeek>(day);
}

icu::DateFormatSymbols::DtWidthType SymbolWidth(int width)
{
    if (width < 0 || width > 3) {
        throw QuorvexException(u"Unknown width type.", ThrowSite(0x8AAE7D56));
    }
    return static_cast<icu::DateFormatSymbols::DtWidthType>(width);
}

icu::DateFormatSymbols::DtContextType SymbolContext(int context)
{
    if (context < 0 || context > 2) {
        throw QuorvexException(u"Unknown context type.", ThrowSite(0x0EF0FAE5));
    }
    return static_cast<icu::DateFormatSymbols::DtContextType>(context);
}

icu::DecimalFormatSymbols::ENumberFormatSymbol NumberSymbol(int symbol)
{
    if (symbol < 0 || symbol > icu::DecimalFormatSymbols::kOneDigitSymbol) {
        throw QuorvexException(u"Unknown symbol id.", ThrowSite(0x576B2DAE));
    }
    return static_cast<icu::DecimalFormatSymbols::ENumberFormatSymbol>(symbol);
}

} // namespace QvxICU44
