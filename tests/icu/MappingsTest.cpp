// The enumerations that are checked on their way to ICU, through the functions that take them: every value in the table
// does what ICU does with its own, every other throws what the table says.

#include <climits>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/dcfmtsym.h>
#include <unicode/dtfmtsym.h>

#include "support/IcuOracle.h"

using namespace QvxICU;
using namespace testing_support;

namespace {

constexpr double kMoment = 1.2e12;

struct Mapping
{
    char const* name;
    int first;
    int last;
    unsigned code;
    char16_t const* message;
    std::function<TStringCore(int)> ours;
    std::function<TStringCore(int)> theirs;
};

template<class E>
E As(int value)
{
    return static_cast<E>(value);
}

TStringCore Formatted(std::unique_ptr<ICUDateFormat> const& format)
{
    auto const text = ICUString::createInstance();
    return Text(static_cast<icu::DateFormat const*>(format->Native())
                    ->format(kMoment, *static_cast<icu::UnicodeString*>(text->Native())));
}
TStringCore Formatted(icu::DateFormat* created)
{
    std::unique_ptr<icu::DateFormat> const format(created);
    icu::UnicodeString text;
    return Text(format->format(kMoment, text));
}

std::unique_ptr<ICUCalendar> OurCalendar()
{
    ICUErrorCode status{};
    auto calendar = ICUCalendar::createInstance(ICULocale::getFrance(), status);
    calendar->setTimeInMillis(kMoment, status);
    return calendar;
}
std::unique_ptr<icu::Calendar> TheirCalendar()
{
    UErrorCode status{};
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(icu::Locale::getFrance(), status));
    calendar->setTime(kMoment, status);
    return calendar;
}
UCalendarDateFields TheirField(int field)
{
    static constexpr int kFields[] = {1, 2, 5, 11, 12, 13, 14, 3, 17, 7, 6};
    return As<UCalendarDateFields>(kFields[field]);
}

TStringCore OurMonths(int context, int width)
{
    ICUErrorCode status{};
    auto const symbols = ICUDateFormatSymbols::createInstance(ICULocale::getGermany(), status);
    TStringCore all;
    for (TStringCore const& month : symbols->getMonths(As<ICUDateFormatSymbols::ICUEContext>(context),
                                                       As<ICUDateFormatSymbols::ICUEWidth>(width))) {
        all.append(month).append(',');
    }
    return all;
}
TStringCore TheirMonths(int context, int width)
{
    UErrorCode status{};
    icu::DateFormatSymbols const symbols(icu::Locale::getGermany(), status);
    std::int32_t count = 0;
    auto const* const months = symbols.getMonths(count, As<icu::DateFormatSymbols::DtContextType>(context),
                                                 As<icu::DateFormatSymbols::DtWidthType>(width));
    TStringCore all;
    for (int i = 0; months != nullptr && i < count; ++i) {
        all.append(Text(months[i])).append(',');
    }
    return all;
}

// How the styles come in is the same for all rows.
constexpr auto kStyle = As<ICUDateFormat::ICUEStyle>;
constexpr auto kTheirStyle = As<icu::DateFormat::EStyle>;

Mapping const kMappings[] = {
    {"date", 0, 3, 0x80A9CA1D, u"Unknown UEStyle",
     [](int v) { return Formatted(ICUDateFormat::createDateInstance(kStyle(v), ICULocale::getGermany())); },
     [](int v) { return Formatted(icu::DateFormat::createDateInstance(kTheirStyle(v), icu::Locale::getGermany())); }},
    {"time", 0, 3, 0x80A9CA1D, u"Unknown UEStyle",
     [](int v) { return Formatted(ICUDateFormat::createTimeInstance(kStyle(v), ICULocale::getUS())); },
     [](int v) { return Formatted(icu::DateFormat::createTimeInstance(kTheirStyle(v), icu::Locale::getUS())); }},
    {"date with a time", 0, 3, 0x80A9CA1D, u"Unknown UEStyle",
     [](int v) { return Formatted(ICUDateFormat::createDateTimeInstance(kStyle(v), kStyle(1), ICULocale::getUS())); },
     [](int v) {
         return Formatted(
             icu::DateFormat::createDateTimeInstance(kTheirStyle(v), icu::DateFormat::kLong, icu::Locale::getUS()));
     }},
    {"time with a date", 0, 3, 0x80A9CA1D, u"Unknown UEStyle",
     [](int v) { return Formatted(ICUDateFormat::createDateTimeInstance(kStyle(2), kStyle(v), ICULocale::getUS())); },
     [](int v) {
         return Formatted(
             icu::DateFormat::createDateTimeInstance(icu::DateFormat::kMedium, kTheirStyle(v), icu::Locale::getUS()));
     }},
    {"field to get", 0, 10, 0xDECF1A87, u"Unknown calendar date field.",
     [](int v) {
         ICUErrorCode status{};
         return TStringCore::number(OurCalendar()->get(As<ICUCalendar::ICUEDateFields>(v), status));
     },
     [](int v) {
         UErrorCode status{};
         return TStringCore::number(TheirCalendar()->get(TheirField(v), status));
     }},
    {"field to set", 0, 10, 0xDECF1A87, u"Unknown calendar date field.",
     [](int v) {
         ICUErrorCode status{};
         auto const calendar = OurCalendar();
         calendar->set(As<ICUCalendar::ICUEDateFields>(v), 3);
         return TStringCore::number(calendar->getTimeInMillis(status));
     },
     [](int v) {
         UErrorCode status{};
         auto const calendar = TheirCalendar();
         calendar->set(TheirField(v), 3);
         return TStringCore::number(calendar->getTime(status));
     }},
    {"first day of the week", 1, 7, 0xA4F1F77D, u"Unknown day of week.",
     [](int v) {
         ICUErrorCode status{};
         auto const calendar = OurCalendar();
         calendar->setFirstDayOfWeek(As<ICUCalendar::ICUEDaysOfWeek>(v));
         return TStringCore::number(static_cast<int>(calendar->getFirstDayOfWeek(status)));
     },
     [](int v) {
         UErrorCode status{};
         auto const calendar = TheirCalendar();
         calendar->setFirstDayOfWeek(As<UCalendarDaysOfWeek>(v));
         return TStringCore::number(static_cast<int>(calendar->getFirstDayOfWeek(status)));
     }},
    {"weekday", 1, 7, 0xA4F1F77D, u"Unknown day of week.",
     [](int v) { return ICUDateFormatSymbols::getWeekday(v, "fr"); },
     [](int v) {
         UErrorCode status{};
         icu::DateFormatSymbols const symbols(icu::Locale::getFrench(), status);
         std::int32_t count = 0;
         return Text(symbols.getWeekdays(count, icu::DateFormatSymbols::STANDALONE, icu::DateFormatSymbols::WIDE)[v]);
     }},
    {"width", 0, 3, 0x8AAE7D56, u"Unknown width type.", [](int v) { return OurMonths(0, v); },
     [](int v) { return TheirMonths(0, v); }},
    {"context", 0, 2, 0x0EF0FAE5, u"Unknown context type.", [](int v) { return OurMonths(v, 1); },
     [](int v) { return TheirMonths(v, 1); }},
    {"symbol of numbers", 0, 18, 0x576B2DAE, u"Unknown symbol id.",
     [](int v) {
         ICUErrorCode status{};
         auto const symbols = ICUDecimalFormatSymbols::createInstance(*ICULocale::createFromName("ar_EG"), status);
         return symbols->getSymbol(As<ICUNumberFormatSymbol>(v));
     },
     [](int v) {
         UErrorCode status{};
         icu::DecimalFormatSymbols const symbols(icu::Locale("ar_EG"), status);
         return Text(symbols.getSymbol(As<icu::DecimalFormatSymbols::ENumberFormatSymbol>(v)));
     }},
};

TEST(Mappings, ValuesInTheTableAreIcusAndOthersThrow)
{
    for (Mapping const& m : kMappings) {
        for (int value = m.first; value <= m.last; ++value) {
            EXPECT_EQ(m.ours(value), m.theirs(value)) << m.name << ' ' << value;
        }
        char name[] = "QuorvexException_AutoGen_0x00000000";
        std::snprintf(name, sizeof name, "QuorvexException_AutoGen_0x%08X", m.code);
        for (int const value : {INT_MIN, m.first - 2, m.first - 1, m.last + 1, m.last + 2, 256 + m.first, INT_MAX}) {
            try {
                static_cast<void>(m.ours(value));
                ADD_FAILURE() << m.name << ' ' << value << " is taken";
            } catch (QuorvexException const& e) {
                EXPECT_EQ(e.GetErrorCode(), m.code) << m.name;
                EXPECT_EQ(e.GetErrorName(), name);
                EXPECT_EQ(e.GetMessagesFront(), m.message) << m.name;
            }
        }
    }
}

} // namespace
