// `qvx locale` beside ICU's own classes.

#include <memory>

#include <unicode/coll.h>
#include <unicode/datefmt.h>
#include <unicode/dtfmtsym.h>
#include <unicode/dtptngen.h>
#include <unicode/numfmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/ucurr.h>

#include "ScanFixture.h"

namespace {

using namespace scan_test;
using icu::DateFormat;
using icu::Locale;
using icu::UnicodeString;

constexpr UDate kMoment = 1'720'091'109'000; // 2024-07-04T11:05:09Z
constexpr char const* kNames[] = {"ar",
                                  "ja",
                                  "hi",
                                  "de_CH",
                                  "tr",
                                  "fr_CA",
                                  "he",
                                  "th_TH",
                                  "sv",
                                  "en_US",
                                  "sr-Latn-RS",
                                  "fa_IR",
                                  "he@calendar=hebrew"};

std::string Utf8(UnicodeString const& text)
{
    std::string result;
    return text.toUTF8String(result);
}

json List(UnicodeString const* texts, int count)
{
    json list = json::array();
    for (int i = 0; i < count; ++i) {
        list.push_back(Utf8(texts[i]));
    }
    return list;
}

std::string Date(DateFormat* made)
{
    std::unique_ptr<DateFormat> const format(made);
    format->adoptTimeZone(icu::TimeZone::createTimeZone("Europe/Paris"));
    UnicodeString text;
    return Utf8(format->format(kMoment, text));
}

std::string Number(Locale const& locale, UNumberFormatStyle style, icu::Formattable const& number,
                   UnicodeString const& currency = {})
{
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::NumberFormat> const format(icu::NumberFormat::createInstance(locale, style, status));
    if (!currency.isEmpty()) {
        format->setCurrency(UnicodeString(currency).getTerminatedBuffer(), status);
    }
    UnicodeString text;
    format->format(number, text, status);
    EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    return Utf8(text);
}

void ExpectDates(json const& found, Locale const& locale)
{
    constexpr std::pair<char const*, DateFormat::EStyle> kStyles[] = {{"full", DateFormat::kFull},
                                                                      {"long", DateFormat::kLong},
                                                                      {"medium", DateFormat::kMedium},
                                                                      {"short", DateFormat::kShort}};
    for (auto const& [key, style] : kStyles) {
        EXPECT_EQ(found["dates"][key], Date(DateFormat::createDateInstance(style, locale))) << key;
        EXPECT_EQ(found["times"][key], Date(DateFormat::createTimeInstance(style, locale))) << key;
    }
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::DateTimePatternGenerator> const generator(
        icu::DateTimePatternGenerator::createInstance(locale, status));
    EXPECT_GE(found["patterns"].size(), 3u);
    for (auto const& [skeleton, shown] : found["patterns"].items()) {
        UnicodeString const pattern = generator->getBestPattern(UnicodeString::fromUTF8(skeleton), status);
        EXPECT_EQ(shown["pattern"], Utf8(pattern)) << skeleton;
        EXPECT_EQ(shown["text"], Date(new icu::SimpleDateFormat(pattern, locale, status))) << skeleton;
    }
}

void ExpectCalendar(json const& found, Locale const& locale)
{
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> const calendar(icu::Calendar::createInstance(locale, status));
    icu::DateFormatSymbols const symbols(locale, calendar->getType(), status);
    using enum icu::DateFormatSymbols::DtContextType;
    using enum icu::DateFormatSymbols::DtWidthType;
    int count = 0;
    UnicodeString const* const months = symbols.getMonths(count, STANDALONE, WIDE);
    EXPECT_EQ(found["type"], calendar->getType());
    EXPECT_EQ(found["months"], List(months, count));
    UnicodeString const* const days = symbols.getWeekdays(count, STANDALONE, WIDE);
    json week = json::array();
    json weekend = json::array();
    for (int i = 0; i < 7; ++i) {
        int const day = (calendar->getFirstDayOfWeek() - 1 + i) % 7 + 1;
        week.push_back(Utf8(days[day]));
        if (calendar->getDayOfWeekType(static_cast<UCalendarDaysOfWeek>(day), status) != UCAL_WEEKDAY) {
            weekend.push_back(week.back());
        }
    }
    EXPECT_EQ(found["week"], week);
    EXPECT_EQ(found["weekend"], weekend);
}

void ExpectNumbers(json const& found, Locale const& locale)
{
    json const& numbers = found["numbers"];
    EXPECT_EQ(numbers["integer"], Number(locale, UNUM_DECIMAL, std::int64_t{9'876'543'210}));
    EXPECT_EQ(numbers["negative"], Number(locale, UNUM_DECIMAL, -1234));
    EXPECT_EQ(numbers["decimal"], Number(locale, UNUM_DECIMAL, 1234567.891));
    EXPECT_EQ(numbers["percent"], Number(locale, UNUM_PERCENT, 0.25));
    EXPECT_EQ(numbers["scientific"], Number(locale, UNUM_SCIENTIFIC, 1234567.891));
    EXPECT_EQ(numbers["spelledOut"], Number(locale, UNUM_SPELLOUT, 1234));

    json const& currencies = found["currencies"];
    UErrorCode status = U_ZERO_ERROR;
    Locale likely = locale;
    likely.addLikelySubtags(status);
    UChar code[4] = {};
    ucurr_forLocale(likely.getName(), code, 4, &status);
    EXPECT_EQ(currencies["code"], Utf8(code));
    EXPECT_EQ(currencies["amount"], Number(locale, UNUM_CURRENCY, 1234.5, code));
    EXPECT_EQ(currencies["accounting"], Number(locale, UNUM_CURRENCY_ACCOUNTING, -1234.5, code));
    EXPECT_EQ(currencies["iso"], Number(locale, UNUM_CURRENCY_ISO, 1234.5, code));
    EXPECT_EQ(currencies["words"], Number(locale, UNUM_CURRENCY_PLURAL, 1234.5, code));
    EXPECT_EQ(currencies["JPY"], Number(locale, UNUM_CURRENCY, 1234.5, "JPY"));
}

void ExpectWords(json const& found, Locale const& locale)
{
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> const collator(icu::Collator::createInstance(locale, status));
    for (std::string const key : {"words", "months"}) {
        std::vector<UnicodeString> texts;
        for (json const& text : found["order"][key + "ByUnits"]) {
            texts.push_back(UnicodeString::fromUTF8(text.get<std::string>()));
        }
        EXPECT_GE(texts.size(), 12u);
        EXPECT_TRUE(std::ranges::is_sorted(texts, [](auto& a, auto& b) { return a.compare(b) < 0; }));
        std::ranges::stable_sort(texts, [&](auto& a, auto& b) { return collator->compare(a, b, status) < 0; });
        EXPECT_EQ(found["order"][key], List(texts.data(), static_cast<int>(texts.size()))) << key;
    }
    json const& cases = found["case"];
    UnicodeString const sample = UnicodeString::fromUTF8(cases["sample"].get<std::string>());
    EXPECT_EQ(cases["upper"], Utf8(UnicodeString(sample).toUpper(locale)));
    EXPECT_EQ(cases["lower"], Utf8(UnicodeString(sample).toLower(locale)));
    EXPECT_EQ(cases["title"], Utf8(UnicodeString(sample).toTitle(nullptr, locale)));
}

std::vector<std::string> Lines(std::string const& text)
{
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

ChildResult LocaleAt(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), {"locale", "--at", "2024-07-04T13:05:09", "--time-zone", "Europe/Paris"});
    return Qvx(arguments);
}

} // namespace

TEST(LocaleCommand, ShowsWhatIcuSays)
{
    std::vector<std::string> arguments{"--json"};
    arguments.insert(arguments.end(), std::begin(kNames), std::end(kNames));
    ChildResult const run = LocaleAt(arguments);
    EXPECT_EQ(run.status, 0) << run.err;
    json const result = json::parse(run.out);
    ASSERT_EQ(result.size(), std::size(kNames));
    for (std::size_t i = 0; i < std::size(kNames); ++i) {
        SCOPED_TRACE(kNames[i]);
        Locale const locale(kNames[i]);
        json const& found = result[i];
        EXPECT_EQ(found["name"], locale.getName());
        EXPECT_EQ(found["known"], true);
        UnicodeString name;
        EXPECT_EQ(found["locale"]["name"], Utf8(locale.getDisplayName(locale, name)));
        EXPECT_EQ(found["locale"]["english"], Utf8(locale.getDisplayName(Locale::getEnglish(), name)));
        EXPECT_EQ(found["locale"]["direction"], locale.isRightToLeft() ? "right to left" : "left to right");
        ExpectDates(found, locale);
        ExpectCalendar(found["calendar"], locale);
        ExpectNumbers(found, locale);
        ExpectWords(found, locale);
    }
}

// A page has the texts of the JSON, and in each group they begin in one column.
TEST(LocaleCommand, Pages)
{
    for (char const* const name : {"sv", "ja", "ar"}) {
        ChildResult const page = LocaleAt({name});
        EXPECT_EQ(page.status, 0) << page.err;
        json const found = json::parse(LocaleAt({"--json", name}).out)[0];
        EXPECT_NE(page.out.find(found["dates"]["full"]), std::string::npos);
        std::size_t column = 0;
        std::size_t at = 0;
        for (std::string const& line : Lines(page.out)) {
            if (!line.starts_with("  ")) {
                column = 0;
                continue;
            }
            at = line.find_first_not_of(' ', line.find("  ", line.find_first_not_of(' ')));
            EXPECT_EQ(at, column == 0 ? at : column) << line;
            column = at;
        }
        EXPECT_NE(column, 0u);
    }
}

TEST(LocaleCommand, Lists)
{
    std::int32_t count = 0;
    Locale::getAvailableLocales(count);
    std::vector<std::string> const lines = Lines(Qvx({"locale", "--list"}).out);
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(count) + 1);
    EXPECT_TRUE(std::ranges::any_of(lines, [](std::string const& line) {
        return line.starts_with("sv_SE ") && line.find("Swedish (Sweden) ") != std::string::npos &&
               line.ends_with(" svenska (Sverige)");
    }));
    json const list = json::parse(Qvx({"locale", "--list", "--json"}).out);
    EXPECT_EQ(list.size(), static_cast<std::size_t>(count));
}

TEST(LocaleCommand, WhatIsNotKnown)
{
    std::string const users = json::parse(LocaleAt({"--json"}).out)[0]["name"];
    EXPECT_EQ(users, Locale::getDefault().getName());
    for (std::string const name : {"xx_YY", "?", "nosuchlanguage", "x\x1By"}) {
        ChildResult const run = LocaleAt({name, "sv"});
        EXPECT_EQ(run.status, 1);
        EXPECT_TRUE(run.err.starts_with("qvx: unknown locale: " + name.substr(0, 1))) << run.err;
        EXPECT_EQ(run.err.find('\x1B'), std::string::npos);
        EXPECT_NE(run.out.find("Numbers"), std::string::npos);
        EXPECT_NE(run.out.find("svenska"), std::string::npos);
        json const result = json::parse(LocaleAt({"--json", name}).out);
        EXPECT_EQ(result[0]["known"], false);
    }
    for (char const* const known : {"iw_IL", "zh-Hant-TW", "sr_RS", "de_XX", "no", "en_US_POSIX", "root"}) {
        ChildResult const run = LocaleAt({known});
        EXPECT_EQ(run.status, 0) << run.err;
    }
    struct
    {
        std::vector<std::string> arguments;
        std::string shown;
    } const wrong[] = {{{"--time-zone", "Nowhere/City"}, "qvx: unknown time zone: Nowhere/City\n"},
                       {{"--at", "yesterday"}, "yesterday"},
                       {{"--at", "2024-13-04T00:00:00"}, "2024-13-04"},
                       {{"--at", "2024-07-04T13:05:09 and more"}, "and more"},
                       {{"--list", "sv"}, "--list"}};
    for (auto const& [arguments, shown] : wrong) {
        std::vector<std::string> all{"locale"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        ChildResult const run = Qvx(all);
        EXPECT_EQ(run.status, 2) << run.out;
        EXPECT_NE(run.err.find(shown), std::string::npos) << run.err;
    }
}
