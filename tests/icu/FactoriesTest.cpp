// The factories make what the static functions make, failures included.

#include <functional>
#include <new>
#include <typeinfo>

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/uversion.h>

#include "support/FailingNew.h"
#include "support/IcuOracle.h"

using namespace QvxICU;
using namespace testing_support;

namespace {

template<class Pointer>
void ExpectSameKind(Pointer const& ours, Pointer const& theirs)
{
    ASSERT_TRUE(ours && theirs);
    auto const& a = *ours;
    auto const& b = *theirs;
    EXPECT_EQ(typeid(a), typeid(b));
}

// What a call makes with the factory and with the static function: of one kind, with one status, and `Told` the same.
#define EXPECT_MADE_ALIKE(factory, Wrapper, call, told)                                                                \
    do {                                                                                                               \
        ICUErrorCode status{};                                                                                         \
        auto const ours = factory.call;                                                                                \
        ICUErrorCode const ourStatus = status;                                                                         \
        status = {};                                                                                                   \
        auto const theirs = Wrapper::call;                                                                             \
        EXPECT_EQ(ourStatus, status) << #call;                                                                         \
        ExpectSameKind(ours, theirs);                                                                                  \
        EXPECT_EQ(ours->told, theirs->told) << #call;                                                                  \
    } while (false)

TEST(Factories, MakeWhatTheStaticFunctionsMake)
{
    ICUFactories const& icu = Module().getFactories();
    ICULocale const& locale = ICULocale::getCanadaFrench();
    ICUParseError error;
    ICUErrorCode ignored{};
    auto const symbols = ICUDateFormatSymbols::createInstance(locale, ignored);
    auto const format = ICUSimpleDateFormat::createInstance(u"y", locale, ignored);
    auto const numbers = ICUDecimalFormatSymbols::createInstance(locale, ignored);
    using Style = ICUDateFormat::ICUEStyle;
    auto const style = static_cast<Style>(1);

    EXPECT_MADE_ALIKE(icu.calendar, ICUCalendar, createInstance(locale, status), getFirstDayOfWeek(status));
    EXPECT_MADE_ALIKE(icu.gregorianCalendar, ICUGregorianCalendar, createInstance(locale, status), isLeapYear(2000));
    EXPECT_MADE_ALIKE(icu.dateFormat, ICUDateFormat, createDateInstance(style, locale), isLenient());
    EXPECT_MADE_ALIKE(icu.dateFormat, ICUDateFormat, createDateTimeInstance(style, static_cast<Style>(3), locale),
                      format(1e12, status));
    EXPECT_MADE_ALIKE(icu.simpleDateFormat, ICUSimpleDateFormat, createInstance(u"d.M", locale, status), toPattern());
    EXPECT_MADE_ALIKE(icu.simpleDateFormat, ICUSimpleDateFormat, createInstance(u"d", *symbols, status), toPattern());
    EXPECT_MADE_ALIKE(icu.simpleDateFormat, ICUSimpleDateFormat, createInstance(*format), toPattern());
    EXPECT_MADE_ALIKE(icu.dateFormatSymbols, ICUDateFormatSymbols, createInstance(locale, status), getAmPmStrings());
    EXPECT_MADE_ALIKE(icu.dateFormatSymbols, ICUDateFormatSymbols, createInstance(locale, "hebrew", status),
                      getMonths(ICUDateFormatSymbols::Format, ICUDateFormatSymbols::Wide));
    EXPECT_EQ(icu.dateFormatSymbols.getMonth(2, "de"), u"M\u00E4rz");
    EXPECT_EQ(icu.dateFormatSymbols.getQuarter(2, "de"), u"3. Quartal");
    EXPECT_EQ(icu.dateFormatSymbols.getWeekday(2, "de"), u"Montag");
    EXPECT_MADE_ALIKE(icu.dateTimePatternGenerator, ICUDateTimePatternGenerator, createInstance("de", status),
                      getBestPattern(u"yMMMd", status));
    EXPECT_MADE_ALIKE(icu.decimalFormat, ICUDecimalFormat, createInstance(locale), toPattern());
    EXPECT_MADE_ALIKE(icu.decimalFormat, ICUDecimalFormat, createInstance(locale, ICUNumberFormatStyle::Percent),
                      toPattern());
    EXPECT_MADE_ALIKE(icu.decimalFormat, ICUDecimalFormat, createCurrencyInstance(locale), toPattern());
    EXPECT_MADE_ALIKE(icu.decimalFormat, ICUDecimalFormat, createInstance(u"0.0", *numbers, status), toPattern());
    EXPECT_MADE_ALIKE(icu.decimalFormatSymbols, ICUDecimalFormatSymbols, createInstance(locale, status), getDigit(3));
    EXPECT_MADE_ALIKE(icu.fieldPosition, ICUFieldPosition, createInstance(3), getField());
    EXPECT_MADE_ALIKE(icu.parsePosition, ICUParsePosition, createInstance(3), getIndex());
    EXPECT_MADE_ALIKE(icu.string, ICUString, createInstance("\xC3\xA4"), toString());
    EXPECT_MADE_ALIKE(icu.string, ICUString, createAlias(u"\u00E4"), view().data());
    EXPECT_MADE_ALIKE(icu.string, ICUString, createFromCodepage("\x80", 1, "cp1252", status), toString());
    auto const pattern = ICUString::createInstance(u"a(b)");
    EXPECT_MADE_ALIKE(icu.regexPattern, ICURegexPattern, createInstance(u"x", 2, status), flags());
    EXPECT_MADE_ALIKE(icu.regexPattern, ICURegexPattern, createInstance(*pattern, 2, error, status), pattern());
    EXPECT_MADE_ALIKE(icu.regexPattern, ICURegexPattern, createInstance(*pattern, 2, status), pattern());
    auto const forward = ICUTransDirection::Forward;
    EXPECT_MADE_ALIKE(icu.transliterator, ICUTransliterator, createInstance(L"Latin-Greek", forward, status), getID());
    EXPECT_MADE_ALIKE(icu.transliterator, ICUTransliterator,
                      createInstanceFromRules(u"own", u"a > b;", forward, error, status), transliterate(u"banana"));

    EXPECT_MADE_ALIKE(icu.locale, ICULocale, createInstance("de", "CH", "", ""), hashCode());
    EXPECT_MADE_ALIKE(icu.locale, ICULocale, createCanonical("sh_YU"), hashCode());
    EXPECT_MADE_ALIKE(icu.locale, ICULocale, getDefault(), hashCode());
    EXPECT_MADE_ALIKE(icu.locale, ICULocale, getRoot(), hashCode());
    EXPECT_EQ(&icu.locale.getCanada(), &ICULocale::getCanada()) << "one for the process";

    // Failures: the status says what, and there is a wrapper all the same.
    EXPECT_MADE_ALIKE(icu.regexPattern, ICURegexPattern, createInstance(u"(", 0, status), flags());
    EXPECT_MADE_ALIKE(icu.transliterator, ICUTransliterator, createInstance(u"None-Such", forward, status), getID());
    EXPECT_MADE_ALIKE(icu.string, ICUString, createFromCodepage("x", 1, "none such", status), isBogus());
    EXPECT_MADE_ALIKE(icu.locale, ICULocale, forLanguageTag("not a tag", status), isBogus());
    ICUErrorCode failed = ICUErrorCode::MemoryAllocationError;
    EXPECT_NE(icu.calendar.createInstance(locale, failed), nullptr);
    EXPECT_NE(icu.dateTimePatternGenerator.createInstance("de", failed), nullptr);
    EXPECT_NE(icu.dateFormatSymbols.createInstance(locale, failed), nullptr);
    EXPECT_EQ(failed, ICUErrorCode::MemoryAllocationError);
}

// ICU's own services end the process when they are given such a locale.
TEST(Factories, BogusLocalesAreTheRoot)
{
    std::string const name(1000, 'x');
    ICUFactories const& icu = Module().getFactories();
    auto const bogus = icu.locale.createFromName(name.c_str());
    auto const root = ICULocale::getRoot();
    ICUErrorCode status{};
    auto const style = ICUDateFormat::kFull;
    ASSERT_TRUE(bogus->isBogus());
    EXPECT_STREQ(bogus->getBaseName(), "");
    EXPECT_TRUE(*icu.dateFormat.createDateTimeInstance(style, style, *bogus) ==
                *icu.dateFormat.createDateTimeInstance(style, style, *root));
    EXPECT_EQ(icu.simpleDateFormat.createInstance(u"MMM B", *bogus, status)->format(0.0, status),
              icu.simpleDateFormat.createInstance(u"MMM B", *root, status)->format(0.0, status));
    EXPECT_TRUE(*icu.dateTimePatternGenerator.createInstance(name.c_str(), status) ==
                *icu.dateTimePatternGenerator.createInstance("", status));
    EXPECT_EQ(icu.dateFormatSymbols.getMonth(0, name.c_str()), icu.dateFormatSymbols.getMonth(0, ""));
    EXPECT_EQ(Failure(status), 0);
}

// Whichever allocation fails, what was made until then is freed (AddressSanitizer's leak check tells) and the exception
// leaves; nothing is different afterwards.
TEST(Factories, WithoutMemoryNothingIsLeft)
{
    ICUFactories const& icu = Module().getFactories();
    ICULocale const& locale = ICULocale::getGermany();
    ICUParseError error;
    std::function<void(ICUErrorCode&)> const calls[] = {
        [&](auto& s) { return icu.calendar.createInstance(locale, s); },
        [&](auto&) { return icu.dateFormat.createDateInstance(As{1}, locale); },
        [&](auto& s) { return icu.simpleDateFormat.createInstance("d.M", locale, s); },
        [&](auto& s) { return icu.dateFormatSymbols.createInstance(locale, s); },
        [&](auto& s) { return icu.dateTimePatternGenerator.createInstance("de", s); },
        [&](auto&) { return icu.decimalFormat.createInstance(locale); },
        [&](auto& s) { return icu.decimalFormatSymbols.createInstance(locale, s); },
        [&](auto&) { return icu.locale.createFromName("de_CH@currency=EUR"); },
        [&](auto& s) { ICULocale(locale).setKeywordValue("currency", "EUR", s); },
        [&](auto& s) { return icu.regexPattern.createInstance(u"a(b)", 0, s); },
        [&](auto&) { return icu.string.createInstance(u"text")->clone()->substring(1); },
        [&](auto& s) {
            return icu.transliterator.createInstanceFromRules(u"own", u"a > b;", ICUTransDirection::Forward, error, s);
        },
    };
    for (auto const& call : calls) {
        bool ended = false;
        for (int nth = 0; !ended; ++nth) {
            ICUErrorCode status{};
            try {
                FailingNew const failing(nth);
                call(status);
                ended = FailingNew::s_left >= 0; // no allocation was left to fail
            } catch (std::bad_alloc const&) {
            }
        }
    }
}

TEST(Factories, TheModuleTellsOfTheIcuInUse)
{
    char version[U_MAX_VERSION_STRING_LENGTH];
    UVersionInfo numbers;
    u_getVersion(numbers);
    u_versionToString(numbers, version);
    AbstractWrapperModuleInfo const& info = Module();
    EXPECT_EQ(info.getName(), "ICU");
    EXPECT_EQ(info.getVersion(), version);
    u_getUnicodeVersion(numbers);
    u_versionToString(numbers, version);
    EXPECT_EQ(Module().getUnicodeVersion(), version);
    EXPECT_EQ(&Module(), &Module());
}

} // namespace
