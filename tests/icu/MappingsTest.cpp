// The enumerations that are checked on their way to ICU, through the functions that take them: what is outside a table
// throws its text and code. (What the values inside do is compared with ICU where the functions are tested.)

#include <climits>
#include <functional>

#include <gtest/gtest.h>
#include <qvxsys/qvxsys.h>

using namespace QvxICU;

namespace {

struct Mapping
{
    int first;
    int last;
    unsigned code;
    char16_t const* name;
    char16_t const* message;
    std::function<void(int)> call;
};

#define STYLE 0, 3, 0x80A9CA1D, u"QuorvexException_AutoGen_0x80A9CA1D", u"Unknown UEStyle"
#define FIELD 0, 10, 0xDECF1A87, u"QuorvexException_AutoGen_0xDECF1A87", u"Unknown calendar date field."
#define DAY 1, 7, 0xA4F1F77D, u"QuorvexException_AutoGen_0xA4F1F77D", u"Unknown day of week."
#define WIDTH 0, 3, 0x8AAE7D56, u"QuorvexException_AutoGen_0x8AAE7D56", u"Unknown width type."
#define CONTEXT 0, 2, 0x0EF0FAE5, u"QuorvexException_AutoGen_0x0EF0FAE5", u"Unknown context type."
#define SYMBOL 0, 18, 0x576B2DAE, u"QuorvexException_AutoGen_0x576B2DAE", u"Unknown symbol id."

TEST(Mappings, WhatIsOutsideATableThrows)
{
    ICUErrorCode status{};
    ICULocale const& us = ICULocale::getUS();
    auto const calendar = ICUCalendar::createInstance(us, status);
    auto const names = ICUDateFormatSymbols::createInstance(us, status);
    auto const numbers = ICUDecimalFormatSymbols::createInstance(us, status);
    auto const wide = ICUDateFormatSymbols::Wide;
    auto const style = [](int v) { return static_cast<ICUDateFormat::ICUEStyle>(v); };
    auto const field = [](int v) { return static_cast<ICUCalendar::ICUEDateFields>(v); };
    auto const day = [](int v) { return static_cast<ICUCalendar::ICUEDaysOfWeek>(v); };
    auto const width = [](int v) { return static_cast<ICUDateFormatSymbols::ICUEWidth>(v); };
    auto const context = [](int v) { return static_cast<ICUDateFormatSymbols::ICUEContext>(v); };
    auto const symbol = [](int v) { return static_cast<ICUNumberFormatSymbol>(v); };
    Mapping const mappings[] = {
        {STYLE, [&](int v) { (void)ICUDateFormat::createDateInstance(style(v), us); }},
        {STYLE, [&](int v) { (void)ICUDateFormat::createTimeInstance(style(v), us); }},
        {STYLE, [&](int v) { (void)ICUDateFormat::createDateTimeInstance(style(v), style(0), us); }},
        {STYLE, [&](int v) { (void)ICUDateFormat::createDateTimeInstance(style(0), style(v), us); }},
        {FIELD, [&](int v) { (void)calendar->get(field(v), status); }},
        {FIELD, [&](int v) { calendar->set(field(v), 1); }},
        {FIELD, [&](int v) { calendar->add(field(v), 1, status); }},
        {DAY, [&](int v) { calendar->setFirstDayOfWeek(day(v)); }},
        {DAY, [&](int v) { (void)calendar->getDayOfWeekType(day(v), status); }},
        {DAY, [&](int v) { (void)ICUDateFormatSymbols::getWeekday(v, "fr"); }},
        {WIDTH, [&](int v) { (void)names->getMonths(ICUDateFormatSymbols::Format, width(v)); }},
        {WIDTH, [&](int v) { names->setEras({}, width(v)); }},
        {CONTEXT, [&](int v) { (void)names->getWeekdays(context(v), wide); }},
        {CONTEXT, [&](int v) { (void)ICUDateFormatSymbols::getMonth(0, "fr", context(v), wide); }},
        {SYMBOL, [&](int v) { (void)numbers->getSymbol(symbol(v)); }},
        {SYMBOL, [&](int v) { numbers->setSymbol(symbol(v), u"x"); }},
    };
    for (Mapping const& m : mappings) {
        auto const row = &m - mappings;
        for (int value = m.first; value <= m.last; ++value) {
            EXPECT_NO_THROW(m.call(value)) << row << ' ' << value;
        }
        for (int const value : {INT_MIN, m.first - 1, m.last + 1, m.last + 2, 256 + m.first, INT_MAX}) {
            try {
                m.call(value);
                ADD_FAILURE() << row << ": " << value << " is taken";
            } catch (QuorvexException const& e) {
                EXPECT_EQ(e.GetErrorCode(), m.code) << row;
                EXPECT_EQ(e.GetErrorName(), m.name) << row;
                EXPECT_EQ(e.GetMessagesFront(), m.message) << row;
            }
        }
    }
}

} // namespace
