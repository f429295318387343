// Number formats: the same calls on the wrapper and on ICU's class give the same texts, numbers, positions and
// statuses.

#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/curramt.h>
#include <unicode/decimfmt.h>
#include <unicode/rbnf.h>

#include "support/IcuOracle.h"

using namespace QvxICU;
using namespace testing_support;

namespace {

using Format = ICUDecimalFormat;
using Oracle = icu::DecimalFormat;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kDoubles[] = {
    0.0,        -0.0, 1.5,  0.125, 1.005,   -1234567.891, 4.9e-324, 2.2250738585072e-308, 1e308, -1e308, kInfinity,
    -kInfinity, kNaN, 1e15, 0.1,   99999.5, 123e20,       5e-7};
constexpr std::int64_t kIntegers[] = {0, 1, -1, 1000, 12345678, 100000, INT64_MIN, INT64_MAX};
constexpr char const* kDecimals[] = {
    "0", "-0.00", "123456789012345678901234567890.125", "1e400", "-1e-400", "12x", "", " 1", "NaN", "Infinity"};
constexpr TStringView kTexts = u"1,234.5|1.234,5|-17|(3)|1,23,4|9223372036854775808|1e3|\u221E|NaN||abc| 12|12 abc|5%|"
                               u"\u0661\u0662|\xD800 1|US$3.50|3,50 \u20AC|1234567890123456789012.25";

// What ICU has without a status, or with another type.
template<class F>
void Round(F& f, int mode, double increment)
{
    if constexpr (std::is_same_v<F, Oracle>) {
        UErrorCode code = U_ZERO_ERROR;
        f.setAttribute(UNUM_ROUNDING_MODE, mode, code), f.setRoundingIncrement(increment);
    } else {
        ICUErrorCode status{};
        f.setRoundingMode(static_cast<ICURoundingMode>(mode), status), f.setRoundingIncrement(increment, status);
    }
}
template<class F>
int RoundingMode(F const& f)
{
    if constexpr (std::is_same_v<F, Oracle>) {
        UErrorCode code = U_ZERO_ERROR;
        return f.getAttribute(UNUM_ROUNDING_MODE, code); // the class's own enumeration lacks some of the modes
    } else {
        return static_cast<int>(f.getRoundingMode());
    }
}
template<class F>
int Currency(F& f, char16_t const* code)
{
    std::conditional_t<std::is_same_v<F, Oracle>, UErrorCode, ICUErrorCode> status{};
    f.setCurrency(code, status);
    return Number(status);
}

template<class F>
std::vector<std::function<void(F&)>> Settings()
{
    std::vector<std::function<void(F&)>> settings = {
        [](F& f) { f.setMinimumIntegerDigits(5); },
        [](F& f) { f.setMaximumIntegerDigits(3); },
        [](F& f) { f.setMaximumFractionDigits(1); },
        [](F& f) { f.setMinimumFractionDigits(4); },
        [](F& f) { f.setGroupingSize(3), f.setSecondaryGroupingSize(2), f.setMinimumGroupingDigits(2); },
        [](F& f) { f.setGroupingUsed(false), f.setDecimalSeparatorAlwaysShown(true); },
        [](F& f) { f.setMultiplier(-25), f.setMultiplierScale(3); },
        [](F& f) { f.setPositivePrefix(u"+ "), f.setNegativePrefix(u"minus "); },
        [](F& f) { f.setPositiveSuffix(u" up"), f.setNegativeSuffix(u" \xDC00"); },
        [](F& f) { f.setFormatWidth(12), f.setPadCharacter(u"*"); },
        [](F& f) { f.setFormatWidth(30), f.setPadCharacter(u""), f.setPadPosition(As{3}); },
        [](F& f) { f.setLenient(true); },
        [](F& f) { f.setParseIntegerOnly(true), f.setParseNoExponent(true); },
        [](F& f) { f.setDecimalPatternMatchRequired(true), f.setParseCaseSensitive(true); },
        [](F& f) { f.setSignAlwaysShown(true); },
        [](F& f) { f.setFormatFailIfMoreThanMaxDigits(true), f.setMaximumIntegerDigits(2); },
        [](F& f) { Round(f, 4, 0.25); },
        [](F& f) { f.setSignificantDigitsUsed(true), f.setMaximumSignificantDigits(3); },
        [](F& f) { f.setMinimumSignificantDigits(5); },
        [](F& f) { f.setScientificNotation(true), f.setMinimumExponentDigits(3), f.setExponentSignAlwaysShown(true); },
        [](F& f) { Currency(f, u"JPY"); }};
    for (int mode = 0; mode <= 10; ++mode) {
        settings.push_back([mode](F& f) { Round(f, mode, 0), f.setMaximumFractionDigits(0); });
    }
    return settings;
}

template<class... T>
std::vector<double> List(T... values)
{
    return {static_cast<double>(values)...};
}

/// All that is a number or a switch.
template<class F>
std::vector<double> Numbers(F const& f)
{
    return List(f.getMinimumIntegerDigits(), f.getMaximumIntegerDigits(), f.getMinimumFractionDigits(),
                f.getMaximumFractionDigits(), f.getMinimumSignificantDigits(), f.getMaximumSignificantDigits(),
                f.getGroupingSize(), f.getSecondaryGroupingSize(), f.getMinimumGroupingDigits(), f.getMultiplier(),
                f.getMultiplierScale(), f.getMinimumExponentDigits(), f.getFormatWidth(), RoundingMode(f),
                f.getRoundingIncrement(), f.getPadPosition(), f.areSignificantDigitsUsed(), f.isGroupingUsed(),
                f.isDecimalSeparatorAlwaysShown(), f.isScientificNotation(), f.isExponentSignAlwaysShown(),
                f.isLenient(), f.isParseIntegerOnly(), f.isParseNoExponent(), f.isDecimalPatternMatchRequired(),
                f.isParseCaseSensitive(), f.isSignAlwaysShown(), f.isFormatFailIfMoreThanMaxDigits());
}

/// A wrapper and ICU's own format, made alike.
struct Pair
{
    explicit Pair(char const* locale, UNumberFormatStyle style = UNUM_DECIMAL)
        : ours(Format::createInstance(*ICULocale::createFromName(locale), static_cast<ICUNumberFormatStyle>(style)))
    {
        UErrorCode status = U_ZERO_ERROR;
        icus.reset(icu::NumberFormat::createInstance(icu::Locale(locale), style, status));
        EXPECT_EQ(Number(ours->getCreationStatus()), status) << locale;
    }
    [[nodiscard]] Oracle& Decimal() const { return dynamic_cast<Oracle&>(*icus); }

    std::unique_ptr<Format> ours;
    std::unique_ptr<icu::NumberFormat> icus;
};

template<class N, class I>
void ExpectSameText(Pair const& pair, N const& ours, I const& icus)
{
    icu::UnicodeString expected;
    UErrorCode code = U_ZERO_ERROR;
    ICUErrorCode status{};
    if (dynamic_cast<Oracle*>(pair.icus.get()) != nullptr) {
        pair.icus->format(icus, expected, nullptr, code);
    } else if constexpr (std::is_arithmetic_v<I>) { // beyond 64 bits ICU's formats that spell out err, or end
        bool const isHuge = std::isfinite(static_cast<double>(icus)) && std::abs(static_cast<double>(icus)) >= 0x1p63;
        auto const locale = std::string(pair.icus->getLocale(ULOC_VALID_LOCALE, code).getName()) + "@numbers=latn";
        std::unique_ptr<icu::NumberFormat> const digits(icu::NumberFormat::createInstance(locale.c_str(), code));
        isHuge&& icus != static_cast<I>(INT64_MAX) ? digits->format(icus, expected) : pair.icus->format(icus, expected);
    } else {
        return;
    }
    if constexpr (std::is_arithmetic_v<N>) {
        EXPECT_EQ(pair.ours->format(ours, status), Text(expected)) << ours;
        EXPECT_EQ(pair.ours->format(ours), Text(expected)) << ours;
    } else {
        EXPECT_EQ(pair.ours->formatDecimal(ours, status), Text(expected)) << ours;
    }
    EXPECT_EQ(Failure(status), Failure(code)) << ours;
}

void ExpectSameFormatting(Pair const& pair)
{
    for (double const number : kDoubles) {
        ExpectSameText(pair, number, number);
    }
    for (std::int64_t const number : kIntegers) {
        ExpectSameText(pair, number, number);
    }
    for (char const* const number : kDecimals) {
        ExpectSameText(pair, number, icu::StringPiece(number));
    }
}

/// So that what is no number equals itself.
std::uint64_t Bits(double number)
{
    return std::isnan(number) ? ~std::uint64_t{0} : std::bit_cast<std::uint64_t>(number + 0.0);
}

void ExpectSameParsing(Pair const& pair, TStringView text, int from)
{
    SCOPED_TRACE(testing::Message() << TStringCore(text) << " from " << from);
    UErrorCode ignored = U_ZERO_ERROR;
    ICUErrorCode status{};
    if (from == 0) {
        auto const parsed = [&](auto const& as) {
            return [&pair, text, as](UErrorCode& code) {
                icu::Formattable number;
                pair.icus->parse(Unicode(text), number, code);
                return as(number, code);
            };
        };
        ExpectSame(
            parsed([](auto& n, auto& code) { return Bits(n.getDouble(code)); }),
            [&](auto& s) { return Bits(pair.ours->parse(text, s)); }, "as a double");
        ExpectSame(
            parsed([](auto& n, auto& code) { return n.getInt64(code); }),
            [&](auto& s) { return pair.ours->parseInt64(text, s); }, "as an integer");
        ExpectSame(
            parsed([](auto& n, auto& code) {
                auto const digits = n.getDecimalNumber(code);
                return icu::UnicodeString(digits.data(), digits.size(), US_INV);
            }),
            [&](auto& s) { return pair.ours->parseDecimal(text, s); }, "as a decimal");
    }
    icu::ParsePosition expected(from);
    icu::Formattable other;
    pair.icus->parse(Unicode(text), other, expected);
    status = ICUErrorCode::ZeroError;
    auto const position = ICUParsePosition::createInstance(from);
    auto const value = pair.ours->parseInt64(text, *position, status);
    EXPECT_EQ(value, other.getInt64(ignored));
    EXPECT_EQ(position->getIndex(), expected.getIndex());
    EXPECT_EQ(position->getErrorIndex(), expected.getErrorIndex());

    icu::ParsePosition amountPosition(from);
    std::unique_ptr<icu::CurrencyAmount> const amount(pair.icus->parseCurrency(Unicode(text), amountPosition));
    position->setIndex(from);
    status = ICUErrorCode::ZeroError;
    TStringCore currency = u"?";
    double const ours = pair.ours->parseCurrency(text, *position, currency, status);
    EXPECT_EQ(currency, amount ? TStringCore(amount->getISOCurrency()) : u"");
    EXPECT_EQ(position->getIndex(), amountPosition.getIndex());
    if (amount) {
        EXPECT_EQ(ours, amount->getNumber().getDouble(ignored));
    }
}

void ExpectSameParsing(Pair const& pair)
{
    for (TStringView const text : kTexts.split(u'|')) {
        for (int const from : {0, 1, text.length(), text.length() + 1, -1}) {
            ExpectSameParsing(pair, text, from);
        }
    }
}

TEST(DecimalFormat, WritesAsIcuInAllLocales)
{
    int count = 0;
    icu::Locale const* const locales = icu::NumberFormat::getAvailableLocales(count);
    for (int i = 0; i < count; ++i) {
        SCOPED_TRACE(locales[i].getName());
        for (auto const style : {UNUM_DECIMAL, UNUM_CURRENCY}) {
            Pair const pair(locales[i].getName(), style);
            ExpectSameFormatting(pair);
            if (i % 16 == 0) {
                ExpectSameParsing(pair);
            }
        }
    }
    ASSERT_GT(count, 100);
}

TEST(DecimalFormat, MakesEveryStyle)
{
    for (char const* const locale :
         {"en", "hi_IN", "ar_EG", "de_CH@currency=XAU", "no_such", "en@numbers=roman", "zh@numbers=hans"}) {
        for (int style = 0; style <= UNUM_FORMAT_STYLE_COUNT; ++style) {
            auto const icuStyle = static_cast<UNumberFormatStyle>(style);
            bool const madeHere = style == UNUM_SPELLOUT || style == UNUM_ORDINAL || style == UNUM_DURATION ||
                                  style == UNUM_DECIMAL_COMPACT_SHORT || style == UNUM_DECIMAL_COMPACT_LONG;
            SCOPED_TRACE(testing::Message() << locale << " style " << style);
            if (!madeHere) {
                Pair const pair(locale, icuStyle);
                if (pair.icus) {
                    ExpectSameFormatting(pair);
                    ExpectSameParsing(pair);
                }
            }
        }
    }
    auto const english = ICULocale::createFromName("en");
    auto const written = [&](ICUNumberFormatStyle style) {
        return Format::createInstance(*english, style)->format(1234567);
    };
    EXPECT_EQ(written(ICUNumberFormatStyle::SpellOut),
              u"one million two hundred thirty-four thousand five hundred sixty-seven");
    EXPECT_EQ(written(ICUNumberFormatStyle::Ordinal), u"1,234,567th");
    EXPECT_EQ(written(ICUNumberFormatStyle::Duration), u"342:56:07");
    EXPECT_EQ(written(ICUNumberFormatStyle::DecimalCompactShort), u"1.2M");
    EXPECT_EQ(written(ICUNumberFormatStyle::DecimalCompactLong), u"1.2 million");
    EXPECT_EQ(Format::createInstance(*english, ICUNumberFormatStyle::SpellOut)->format(-1e17),
              u"minus one hundred quadrillion");
    ICUErrorCode status{};
    auto const appended = ICUString::createInstance(u">");
    Format::createInstance(*english, ICUNumberFormatStyle::SpellOut)
        ->format(21, *appended, *ICUFieldPosition::createInstance(0), status);
    EXPECT_TRUE(appended->toString() == u">twenty-one" && ICU_SUCCESS(status)) << appended->toString();
    for (auto const style : {ICUNumberFormatStyle::Decimal, ICUNumberFormatStyle::SpellOut}) {
        EXPECT_EQ(Format::createInstance(*english, style)->format(UINT64_MAX), u"18,446,744,073,709,551,615");
    }
}

void ExpectSameState(Pair const& pair)
{
    Oracle const& icus = pair.Decimal();
    EXPECT_EQ(Numbers(*pair.ours), Numbers(icus));
    icu::UnicodeString s;
    EXPECT_EQ(pair.ours->toPattern(), Text(icus.toPattern(s)));
    EXPECT_EQ(pair.ours->toLocalizedPattern(), Text(icus.toLocalizedPattern(s)));
    EXPECT_EQ(pair.ours->getPositivePrefix(), Text(icus.getPositivePrefix(s)));
    EXPECT_EQ(pair.ours->getNegativePrefix(), Text(icus.getNegativePrefix(s)));
    EXPECT_EQ(pair.ours->getPositiveSuffix(), Text(icus.getPositiveSuffix(s)));
    EXPECT_EQ(pair.ours->getNegativeSuffix(), Text(icus.getNegativeSuffix(s)));
    EXPECT_EQ(pair.ours->getPadCharacterString(), Text(icus.getPadCharacterString()));
    EXPECT_EQ(pair.ours->getCurrency(), TStringCore(icus.getCurrency()));
}

TEST(DecimalFormat, SettingsDoAsInIcu)
{
    for (char const* const locale : {"en_US", "de_CH", "hi_IN", "ar_EG"}) {
        for (auto const style : {UNUM_DECIMAL, UNUM_CURRENCY, UNUM_PERCENT}) {
            Pair const all(locale, style);
            for (std::size_t setting = 0; setting < Settings<Format>().size(); ++setting) {
                SCOPED_TRACE(testing::Message() << locale << " style " << style << " setting " << setting);
                Pair const alone(locale, style);
                for (Pair const* const pair : {&alone, &all}) {
                    Settings<Format>()[setting](*pair->ours);
                    Settings<Oracle>()[setting](pair->Decimal());
                    ExpectSameState(*pair);
                    ExpectSameFormatting(*pair);
                }
                ExpectSameParsing(alone);
                auto const clone = alone.ours->clone();
                EXPECT_TRUE(*clone == *alone.ours);
                clone->setMultiplier(77);
                EXPECT_FALSE(*clone == *alone.ours);
            }
        }
    }
}

TEST(DecimalFormat, PatternsGoodAndBad)
{
    TStringCore const patterns = u"#,##0.00|0.###E0|#,##,##0.0;(#)|@@#|*x#####|\u00A4\u00A4 0.00|0.05|'#'#%||0.0.0|#0#|"
                                 u"%\u2030|'open|0E|@0|*|\xD800#|#.##0,00|****|0;;|##0.0####E+0000|0,0,0E0";
    for (char const* const locale : {"en", "de"}) {
        for (TStringCore const pattern : patterns.split(u'|')) {
            SCOPED_TRACE(testing::Message() << locale << ' ' << pattern);
            for (bool const localized : {false, true}) {
                Pair const pair(locale);
                UErrorCode code = U_ZERO_ERROR;
                ICUErrorCode status{};
                UParseError where{};
                ICUParseError error;
                localized ? pair.Decimal().applyLocalizedPattern(Unicode(pattern), where, code)
                          : pair.Decimal().applyPattern(Unicode(pattern), where, code);
                localized ? pair.ours->applyLocalizedPattern(pattern, error, status)
                          : pair.ours->applyPattern(pattern, error, status);
                EXPECT_EQ(Failure(status), Failure(code));
                EXPECT_EQ(error.offset, where.offset);
                EXPECT_EQ(TStringCore(error.postContext), TStringCore(where.postContext));
                ExpectSameState(pair);
                ExpectSameFormatting(pair);
            }
            auto const locale_ = ICULocale::createFromName(locale);
            ICUErrorCode status{};
            auto const symbols = ICUDecimalFormatSymbols::createInstance(*locale_, status);
            ASSERT_TRUE(ICU_SUCCESS(status));
            status = ICUErrorCode::ZeroError;
            auto const made = Format::createInstance(pattern, *symbols, status);
            UErrorCode code = U_ZERO_ERROR;
            icu::DecimalFormatSymbols const icus(icu::Locale(locale), code);
            code = U_ZERO_ERROR;
            Oracle const oracle(Unicode(pattern), icus, code);
            EXPECT_EQ(Failure(status), Failure(code));
            icu::UnicodeString expected;
            EXPECT_EQ(made->format(-1234.5), U_SUCCESS(code) ? Text(oracle.format(-1234.5, expected)) : u"");
        }
    }
}

TEST(DecimalFormat, CurrenciesAndFields)
{
    for (char const* const locale : {"en_US", "ja_JP", "de_DE", "ar_EG"}) {
        for (char16_t const* const code :
             {u"USD", u"JPY", u"EUR", u"KWD", u"XXX", u"eur", u"ZZZ", u"", u"EU", u"\u20AC\u20AC\u20AC"}) {
            Pair const pair(locale, UNUM_CURRENCY);
            SCOPED_TRACE(testing::Message() << locale << ' ' << TStringCore(code));
            EXPECT_EQ(Currency(*pair.ours, code), Currency(pair.Decimal(), code));
            ExpectSameState(pair);
            TStringCore const written = pair.ours->format(-1234.5);
            ExpectSameParsing(pair, written, 0);
            for (int field = -1; field < 14; ++field) {
                auto const position = ICUFieldPosition::createInstance(field);
                icu::FieldPosition expected(field);
                auto const same = [&](icu::Formattable const& number, UErrorCode status, auto const& write) {
                    icu::UnicodeString text = u"a ";
                    auto const ours = ICUString::createInstance(u"a ");
                    pair.icus->format(number, text, expected, status);
                    ICUErrorCode oursStatus{};
                    write(*ours, oursStatus);
                    EXPECT_EQ(ours->toString(), Text(text));
                    EXPECT_EQ(Failure(oursStatus), Failure(status));
                    EXPECT_EQ(position->getBeginIndex(), expected.getBeginIndex());
                    EXPECT_EQ(position->getEndIndex(), expected.getEndIndex());
                };
                for (auto const& decimal : {"-1234567.5", "1e30", "bad"}) {
                    UErrorCode status = U_ZERO_ERROR;
                    icu::Formattable const number(icu::StringPiece(decimal), status);
                    same(number, status,
                         [&](auto& to, auto& s) { pair.ours->formatDecimal(decimal, to, *position, s); });
                }
                same(icu::Formattable(-0.5), U_ZERO_ERROR,
                     [&](auto& to, auto& s) { pair.ours->format(-0.5, to, *position, s); });
                same(icu::Formattable(std::int64_t{-7000}), U_ZERO_ERROR,
                     [&](auto& to, auto& s) { pair.ours->format(-7000, to, *position, s); });
            }
        }
    }
}

TEST(DecimalFormat, NumbersBeyondAllBoundsAreCutOrRefused)
{
    auto const make = [] { return Format::createInstance(*ICULocale::createFromName("en")); };
    for (int const number : {INT_MIN, -1, 1000, 100000, INT_MAX}) {
        for (auto const set :
             {&Format::setMinimumIntegerDigits, &Format::setMaximumIntegerDigits, &Format::setMinimumFractionDigits,
              &Format::setMaximumFractionDigits, &Format::setMinimumSignificantDigits,
              &Format::setMaximumSignificantDigits, &Format::setGroupingSize, &Format::setSecondaryGroupingSize,
              &Format::setMinimumGroupingDigits, &Format::setMultiplier, &Format::setMultiplierScale,
              &Format::setFormatWidth, &Format::setMinimumExponentDigits}) {
            auto const format = make();
            ((*format).*set)(number);
            EXPECT_LT(format->format(1234.5).length(), 3000);
            EXPECT_LT(format->toPattern().length(), 3000);
        }
    }
    auto const format = make();
    ICUErrorCode status{};
    for (char const* const huge :
         {"1e100001", "1e-100001", "1e999999999", "1e99999999999999999999", "-1E+2147483648"}) {
        ExpectRefused(ICUErrorCode::NumberArgOutOfBounds,
                      {[&](auto& s) { return !format->formatDecimal(huge, s).isEmpty(); }});
    }
    ExpectRefused(ICUErrorCode::IllegalArgumentError,
                  {[&](auto& s) { return format->setRoundingIncrement(-0.5, s), false; },
                   [&](auto& s) { return format->setRoundingIncrement(kInfinity, s), false; },
                   [&](auto& s) { return format->setRoundingIncrement(kNaN, s), false; },
                   [&](auto& s) { return format->setRoundingMode(static_cast<ICURoundingMode>(-1), s), false; },
                   [&](auto& s) { return format->setRoundingMode(static_cast<ICURoundingMode>(11), s), false; },
                   [&](auto& s) { return format->applyPattern(TStringCore(u"0").repeated(70'000), s), false; },
                   [&](auto& s) { return format->applyLocalizedPattern(TStringCore(u"0").repeated(70'000), s), false; },
                   [&](auto& s) { return format->setCurrency(u"EURO", s), false; }}); // which ICU takes for EUR
    EXPECT_TRUE(*format == *make());
    TStringCore const longest = u"777;" + TStringCore(u"7").repeated(1'000'000);
    auto const position = ICUParsePosition::createInstance(4);
    ExpectRefused(ICUErrorCode::NumberArgOutOfBounds,
                  {[&](auto& s) { return format->parse(longest, *position, s) != 0 || position->getIndex() != 4; },
                   [&](auto& s) { return format->parseInt64(longest.mid(4), s) != 0; }});
    EXPECT_EQ(format->parse(longest, status = ICUErrorCode::ZeroError), 777);
    EXPECT_EQ(status, ICUErrorCode::ZeroError);
}

TEST(DecimalFormat, FailedFormatsSayWhyAndDoNothing)
{
    auto const english = ICULocale::createFromName("en");
    for (int const style : {0, 9, 17, -1}) {
        auto const made = Format::createInstance(*english, static_cast<ICUNumberFormatStyle>(style));
        auto const failed = made->clone();
        auto const why = style == 0 || style == 9 ? ICUErrorCode::UnsupportedError : ICUErrorCode::IllegalArgumentError;
        EXPECT_EQ(failed->getCreationStatus(), why);
        EXPECT_TRUE(*failed == *made);
        EXPECT_FALSE(*failed == *Format::createInstance(*english));
        for (auto const& set : Settings<Format>()) {
            set(*failed);
        }
        ExpectRefused(why, {[&](auto& s) { return !failed->format(1.5, s).isEmpty(); },
                            [&](auto& s) { return failed->parseInt64(L"12", s) != 0; }});
        auto status = ICUErrorCode::ParseError; // a failure is kept
        failed->applyPattern(u"0", status);
        EXPECT_EQ(status, ICUErrorCode::ParseError);
        EXPECT_EQ(failed->format(1), u"");
        EXPECT_EQ(failed->getDecimalFormatSymbols(), nullptr);
        EXPECT_EQ(failed->toPattern() + failed->getCurrency() + failed->getNegativePrefix(), u"");
    }
    // What spells numbers out has nothing to set.
    auto const roman = Format::createInstance(*ICULocale::createFromName("en@numbers=roman"));
    ICUErrorCode status{};
    EXPECT_EQ(roman->format(1999), u"MCMXCIX");
    EXPECT_EQ(roman->parse(L"MCMXCIX", status), 1999);
    EXPECT_EQ(status, ICUErrorCode::ZeroError);
    ExpectRefused(ICUErrorCode::UnsupportedError, {[&](auto& s) { return roman->applyPattern(u"0", s), false; }});
}

TEST(DecimalFormatSymbols, AreIcus)
{
    int count = 0;
    icu::Locale const* const locales = icu::Locale::getAvailableLocales(count);
    for (int i = 0; i < count; ++i) {
        SCOPED_TRACE(locales[i].getName());
        UErrorCode code = U_ZERO_ERROR;
        icu::DecimalFormatSymbols const icus(locales[i], code);
        ICUErrorCode status{};
        auto const ours =
            ICUDecimalFormatSymbols::createInstance(*ICULocale::createFromName(locales[i].getName()), status);
        EXPECT_EQ(Failure(status), Failure(code));
        for (int symbol = 0; symbol <= 18; ++symbol) {
            EXPECT_EQ(ours->getSymbol(static_cast<ICUNumberFormatSymbol>(symbol)),
                      Text(icus.getConstSymbol(static_cast<icu::DecimalFormatSymbols::ENumberFormatSymbol>(symbol))));
        }
        for (int digit = 0; digit <= 9; ++digit) {
            EXPECT_EQ(ours->getDigit(digit), Text(icus.getConstDigitSymbol(digit)));
        }
        for (int type = 0; type < 3; ++type) {
            code = U_ZERO_ERROR;
            auto const& pattern = icus.getPatternForCurrencySpacing(static_cast<UCurrencySpacing>(type), true, code);
            EXPECT_EQ(ours->getPatternForCurrencySpacing(static_cast<ICUCurrencySpacing>(type), true, status),
                      Text(pattern));
        }
        EXPECT_STREQ(ours->getLocale()->getName(), locales[i].getName());
    }
}

TEST(DecimalFormatSymbols, ChangeFormats)
{
    ICUErrorCode status{};
    auto const format = Format::createInstance(*ICULocale::createFromName("en"));
    auto symbols = format->getDecimalFormatSymbols();
    auto const before = symbols->clone();
    symbols->setSymbol(ICUNumberFormatSymbol::ZeroDigit, u"\u0966");
    symbols->setSymbol(ICUNumberFormatSymbol::GroupingSeparator, L"'");
    EXPECT_EQ(symbols->getDigit(9), u"\u096F");
    EXPECT_FALSE(*symbols == *before);
    EXPECT_EQ(format->format(1200), u"1,200");
    format->adoptDecimalFormatSymbols(std::move(symbols));
    format->adoptDecimalFormatSymbols(nullptr);
    EXPECT_EQ(format->format(1200), u"\u0967'\u0968\u0966\u0966");
    format->setDecimalFormatSymbols(*before);
    EXPECT_EQ(format->format(1200), u"1,200");
    EXPECT_EQ(before->getDigit(10) + before->getDigit(-1), u"");
    for (int const type : {-1, 3}) {
        status = ICUErrorCode::ZeroError;
        before->setPatternForCurrencySpacing(static_cast<ICUCurrencySpacing>(type), true, u"x", status);
        EXPECT_EQ(status, ICUErrorCode::IllegalArgumentError);
    }
    auto const made = ICUDecimalFormatSymbols::createInstance(*before->getLocale(), status);
    EXPECT_TRUE(*made == *before && status == ICUErrorCode::IllegalArgumentError);
    made->setPatternForCurrencySpacing(ICUCurrencySpacing(0), true, u"[x]", status = ICUErrorCode::ZeroError);
    EXPECT_EQ(made->getPatternForCurrencySpacing(ICUCurrencySpacing(0), true, status), u"[x]");
    EXPECT_STREQ(made->getLocale(ICULocDataLocaleType::Valid, status)->getName(), "en");
}

} // namespace
