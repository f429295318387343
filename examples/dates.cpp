// The examples of <qvxsys/ICUCalendar.h>, <qvxsys/ICUDateFormat.h>, <qvxsys/ICUSimpleDateFormat.h>,
// <qvxsys/ICUDateFormatSymbols.h> and <qvxsys/ICUDateTimePatternGenerator.h>.

#include <iostream>

#include <qvxsys/ICUCalendar.h>
#include <qvxsys/ICUDateFormat.h>
#include <qvxsys/ICUDateFormatSymbols.h>
#include <qvxsys/ICUDateTimePatternGenerator.h>
#include <qvxsys/ICUSimpleDateFormat.h>
#include <qvxsys/std.h>

namespace {

int g_failures = 0;

void Expect(TStringCore const& actual, TStringCore const& expected)
{
    if (actual != expected) {
        std::cerr << actual.toStdString() << " instead of " << expected.toStdString() << '\n';
        ++g_failures;
    }
}

void Expect(double actual, double expected)
{
    if (actual != expected) {
        std::cerr << actual << " instead of " << expected << '\n';
        ++g_failures;
    }
}

void EndOfMonth()
{
    QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
    auto const day = QvxICU::ICUCalendar::createInstance(*QvxICU::ICULocale::createFromName("de_CH"), status);
    day->setTimeZone(u"Europe/Zurich", status);
    day->clear();
    day->set(2024, QvxICU::ICUCalendar::January, 31);
    day->add(QvxICU::ICUCalendar::Month, 1, status);
    Expect(day->get(QvxICU::ICUCalendar::DayOfMonth, status), 29);
    Expect(day->getActualMaximum(QvxICU::ICUCalendar::DayOfMonth, status), 29);
    Expect(day->getTimeInMillis(status), 1709161200000.0);

    // How long is it until then: in years, months and days?
    day->setTimeInMillis(0, status);
    Expect(day->fieldDifference(1709161200000.0, QvxICU::ICUCalendar::Year, status), 54);
    Expect(day->fieldDifference(1709161200000.0, QvxICU::ICUCalendar::Month, status), 1);
    Expect(day->fieldDifference(1709161200000.0, QvxICU::ICUCalendar::DayOfMonth, status), 27);
    Expect(QvxICU::ICU_SUCCESS(status), true);
}

void InTheStyleOfALocale()
{
    QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
    using Format = QvxICU::ICUDateFormat;
    auto const french = Format::createDateInstance(Format::kLong, *QvxICU::ICULocale::createFromName("fr"));
    french->setTimeZone(u"UTC", status);
    TStringCore const text = french->format(0.0, status);
    Expect(text, u"1 janvier 1970");
    Expect(french->parse(text, status), 0.0);
}

void ByPatterns()
{
    QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
    auto const iso = QvxICU::ICUSimpleDateFormat::createInstance(u"yyyy-MM-dd'T'HH:mm:ss",
                                                                 *QvxICU::ICULocale::createFromName("en"), status);
    iso->setTimeZone(u"UTC", status);
    Expect(iso->format(951782400000.0, status), u"2000-02-29T00:00:00");

    auto const german = QvxICU::ICUDateTimePatternGenerator::createInstance("de", status);
    TStringCore const pattern = german->getBestPattern(u"yMMMMd", status);
    Expect(pattern, u"d. MMMM y");
    auto const format =
        QvxICU::ICUSimpleDateFormat::createInstance(pattern, *QvxICU::ICULocale::createFromName("de"), status);
    format->setTimeZone(u"UTC", status);
    Expect(format->format(0.0, status), u"1. Januar 1970");
}

void Names()
{
    QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
    using Symbols = QvxICU::ICUDateFormatSymbols;
    Expect(Symbols::getMonth(4, "fr"), u"mai");
    auto const polish = Symbols::createInstance(*QvxICU::ICULocale::createFromName("pl"), status);
    auto const months = polish->getMonths(Symbols::Format, Symbols::Wide);
    Expect(months.at(0), u"stycznia");
}

} // namespace

int main()
{
    EndOfMonth();
    InTheStyleOfALocale();
    ByPatterns();
    Names();
    return g_failures == 0 ? 0 : 1;
}
