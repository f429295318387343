// Dates through the wrappers beside ICU's own classes: what going through a wrapper costs.

#include <memory>

#include <qvxsys/ICUCalendar.h>
#include <qvxsys/ICUSimpleDateFormat.h>
#include <unicode/calendar.h>
#include <unicode/smpdtfmt.h>

#include "BenchSupport.h"

namespace {

using QvxICU::ICUErrorCode;

constexpr char16_t kPattern[] = u"EEEE, d. MMMM y HH:mm:ss";
constexpr double kMoment = 1709161200000.0;

void Rows()
{
    auto status = std::make_shared<ICUErrorCode>(ICUErrorCode::ZeroError);
    auto code = std::make_shared<UErrorCode>(U_ZERO_ERROR);
    auto const locale = QvxICU::ICULocale::createFromName("de_CH");
    std::shared_ptr<QvxICU::ICUSimpleDateFormat> const ours =
        QvxICU::ICUSimpleDateFormat::createInstance(kPattern, *locale, *status);
    auto const icu = std::make_shared<icu::SimpleDateFormat>(kPattern, icu::Locale("de_CH"), *code);
    auto const text = ours->format(kMoment, *status);
    icu::UnicodeString const icuText(text.constData(), text.length());

    bench::Row("l3 format a date", "own", [=] { benchmark::DoNotOptimize(ours->format(kMoment, *status)); });
    bench::Row("l3 format a date", "ICU", [=] {
        icu::UnicodeString written;
        benchmark::DoNotOptimize(icu->format(kMoment, written, nullptr, *code).getBuffer());
    });
    bench::Row("l3 parse a date", "own", [=] { benchmark::DoNotOptimize(ours->parse(text, *status)); });
    bench::Row("l3 parse a date", "ICU", [=] { benchmark::DoNotOptimize(icu->parse(icuText, *code)); });

    std::shared_ptr<QvxICU::ICUCalendar> const calendar = QvxICU::ICUCalendar::createInstance(*locale, *status);
    std::shared_ptr<icu::Calendar> const icuCalendar(icu::Calendar::createInstance(icu::Locale("de_CH"), *code));
    bench::Row("l3 add to a calendar", "own", [=] {
        calendar->setTimeInMillis(kMoment, *status);
        calendar->add(QvxICU::ICUCalendar::Month, 1, *status);
        benchmark::DoNotOptimize(calendar->getTimeInMillis(*status));
    });
    bench::Row("l3 add to a calendar", "ICU", [=] {
        icuCalendar->setTime(kMoment, *code);
        icuCalendar->add(UCAL_MONTH, 1, *code);
        benchmark::DoNotOptimize(icuCalendar->getTime(*code));
    });
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, Rows);
}
