// `qvx locale` beside ICU's own classes.

#include <memory>

#include <unicode/coll.h>
#include <unicode/datefmt.h>
#include <unicode/dtfmtsym.h>
#include <unicode/dtptngen.h>
#include <unicode/numfmt.h>
#include <unicode/rbnf.h>
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
    std::unique_ptr<icu::NumberFormat> const format(
        style == UNUM_SPELLOUT ? new icu::RuleBasedNumberFormat(icu::URBNF_SPELLOUT, locale, status)
                               : icu::NumberFormat::createInstance(locale, style, status));
    if (!currency.isEmpty()) {
        format->setCurrency(UnicodeString(currency).getTerminatedBuffer(), status);
    }
    UnicodeString text;
    format->format(number, text, status);
    EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    return Utf8(text);
}

// By the place in the tool's JSON.
std::map<std::string, json> IcuSays(Locale const& locale)
{
    UErrorCode status = U_ZERO_ERROR;
    UnicodeString own;
    UnicodeString english;
    Locale likely = locale;
    likely.addLikelySubtags(status);
    UChar code[4] = {};
    ucurr_forLocale(likely.getName(), code, 4, &status);
    std::map<std::string, json> said{
        {"/name", locale.getName()},
        {"/known", true},
        {"/locale/name", Utf8(locale.getDisplayName(locale, own))},
        {"/locale/english", Utf8(locale.getDisplayName(Locale::getEnglish(), english))},
        {"/locale/direction", locale.isRightToLeft() ? "right to left" : "left to right"},
        {"/numbers/integer", Number(locale, UNUM_DECIMAL, std::int64_t{9'876'543'210})},
        {"/numbers/negative", Number(locale, UNUM_DECIMAL, -1234)},
        {"/numbers/decimal", Number(locale, UNUM_DECIMAL, 1234567.891)},
        {"/numbers/percent", Number(locale, UNUM_PERCENT, 0.25)},
        {"/numbers/scientific", Number(locale, UNUM_SCIENTIFIC, 1234567.891)},
        {"/numbers/spelledOut", Number(locale, UNUM_SPELLOUT, 1234)},
        {"/currencies/code", Utf8(code)},
        {"/currencies/amount", Number(locale, UNUM_CURRENCY, 1234.5, code)},
        {"/currencies/accounting", Number(locale, UNUM_CURRENCY_ACCOUNTING, -1234.5, code)},
        {"/currencies/iso", Number(locale, UNUM_CURRENCY_ISO, 1234.5, code)},
        {"/currencies/words", Number(locale, UNUM_CURRENCY_PLURAL, 1234.5, code)},
        {"/currencies/JPY", Number(locale, UNUM_CURRENCY, 1234.5, "JPY")}};
    constexpr char const* kStyles[] = {"full", "long", "medium", "short"};
    for (int i = 0; i < 4; ++i) {
        auto const style = static_cast<DateFormat::EStyle>(DateFormat::kFull + i);
        said[std::string("/dates/") + kStyles[i]] = Date(DateFormat::createDateInstance(style, locale));
        said[std::string("/times/") + kStyles[i]] = Date(DateFormat::createTimeInstance(style, locale));
    }
    std::unique_ptr<icu::DateTimePatternGenerator> const generator(
        icu::DateTimePatternGenerator::createInstance(locale, status));
    for (std::string const skeleton : {"yMd", "yMMMM", "MMMEdjm"}) {
        UnicodeString const pattern = generator->getBestPattern(UnicodeString::fromUTF8(skeleton), status);
        said["/patterns/" + skeleton] = {{"pattern", Utf8(pattern)},
                                         {"text", Date(new icu::SimpleDateFormat(pattern, locale, status))}};
    }
    std::unique_ptr<icu::Calendar> const calendar(icu::Calendar::createInstance(locale, status));
    icu::DateFormatSymbols const symbols(locale, calendar->getType(), status);
    int count = 0;
    UnicodeString const* const months =
        symbols.getMonths(count, icu::DateFormatSymbols::STANDALONE, icu::DateFormatSymbols::WIDE);
    said["/calendar/type"] = calendar->getType();
    said["/calendar/months"] = List(months, count);
    UnicodeString const* const days =
        symbols.getWeekdays(count, icu::DateFormatSymbols::STANDALONE, icu::DateFormatSymbols::WIDE);
    json& weekend = said["/calendar/weekend"] = json::array();
    for (int i = 0; i < 7; ++i) {
        int const day = (calendar->getFirstDayOfWeek() - 1 + i) % 7 + 1;
        said["/calendar/week/" + std::to_string(i)] = Utf8(days[day]);
        if (calendar->getDayOfWeekType(static_cast<UCalendarDaysOfWeek>(day), status) != UCAL_WEEKDAY) {
            weekend.push_back(Utf8(days[day]));
        }
    }
    EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
    return said;
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
        for (auto const& [place, text] : IcuSays(locale)) {
            EXPECT_EQ(result[i].at(json::json_pointer(place)), text) << place;
        }
        ExpectWords(result[i], locale);
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
        EXPECT_EQ(LocaleAt({known}).status, 0) << known;
    }
    std::pair<std::vector<std::string>, std::string> const wrong[] = {
        {{"locale", "--time-zone", "Nowhere/City"}, "qvx: unknown time zone: Nowhere/City\n"},
        {{"locale", "--at", "yesterday"}, "yesterday"},
        {{"locale", "--at", "2024-13-04T00:00:00"}, "2024-13-04"},
        {{"locale", "--at", "2024-07-04T13:05:09 and more"}, "and more"},
        {{"locale", "--list", "sv"}, "--list"}};
    for (auto const& [arguments, shown] : wrong) {
        ChildResult const run = Qvx(arguments);
        EXPECT_EQ(run.status, 2) << run.out;
        EXPECT_NE(run.err.find(shown), std::string::npos) << run.err;
    }
}
