// The examples of <qvxsys/ICUDecimalFormat.h> and <qvxsys/ICUDecimalFormatSymbols.h>.

#include <iostream>

#include <qvxsys/ICUDecimalFormat.h>
#include <qvxsys/std.h>

namespace {

int g_failures = 0;

void Expect(TStringCore const& actual, TStringCore const& expected)
{
    if (actual != expected) {
        std::cerr << actual << " instead of " << expected << '\n';
        ++g_failures;
    }
}

void BothWays()
{
    auto const german = QvxICU::ICULocale::createFromName("de_DE");
    auto const format = QvxICU::ICUDecimalFormat::createInstance(*german);
    format->setMaximumFractionDigits(2);
    Expect(format->format(1234567.891), u"1.234.567,89");
    QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
    double const number = format->parse(u"1.234,5", status);
    g_failures += number == 1234.5 && QvxICU::ICU_SUCCESS(status) ? 0 : 1;

    auto const money = QvxICU::ICUDecimalFormat::createCurrencyInstance(*german);
    money->setCurrency(u"JPY", status);
    Expect(money->format(1500), u"1.500\u00A0\u00A5");
}

void OwnSymbols()
{
    auto const locale = QvxICU::ICULocale::createFromName("en");
    auto const format = QvxICU::ICUDecimalFormat::createInstance(*locale);
    QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
    auto symbols = QvxICU::ICUDecimalFormatSymbols::createInstance(*locale, status);
    symbols->setSymbol(QvxICU::ICUNumberFormatSymbol::GroupingSeparator, u"'");
    format->setDecimalFormatSymbols(*symbols);
    Expect(format->format(1234567), u"1'234'567");
    Expect(format->formatDecimal("12345678901234567890.125", status), u"12'345'678'901'234'567'890.125");
}

void InWords()
{
    auto const locale = QvxICU::ICULocale::createFromName("en");
    auto const words = QvxICU::ICUDecimalFormat::createInstance(*locale, QvxICU::ICUNumberFormatStyle::SpellOut);
    Expect(words->format(42), u"forty-two");
    QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
    g_failures += words->parseInt64(u"seventeen", status) == 17 ? 0 : 1;
}

} // namespace

int main()
{
    BothWays();
    OwnSymbols();
    InWords();
    return g_failures == 0 ? 0 : 1;
}
