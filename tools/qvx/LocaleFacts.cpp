#include "LocaleFacts.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <qvxsys/Format.h>
#include <qvxsys/ICUCalendar.h>
#include <qvxsys/ICUDateFormat.h>
#include <qvxsys/ICUDateFormatSymbols.h>
#include <qvxsys/ICUDateTimePatternGenerator.h>
#include <qvxsys/ICUDecimalFormat.h>
#include <qvxsys/ICUDecimalFormatSymbols.h>
#include <qvxsys/ICUPosition.h>
#include <qvxsys/ICUSimpleDateFormat.h>
#include <qvxsys/ICUString.h>
#include <qvxsys/IcuHandles.h>

#include "DisplayText.h"
#include "TextTable.h"

using namespace QvxICU;

namespace qvx {
namespace {

using Json = nlohmann::ordered_json;
using Texts = std::vector<TStringCore>;
using Symbols = ICUDateFormatSymbols;

TStringCore FromUtf8(std::string const& text)
{
    return TStringCore::fromStdString(text);
}

Fact TextFact(std::string key, TStringCore const& label, TStringCore const& text,
              ICUErrorCode status = ICUErrorCode::ZeroError)
{
    if (ICU_FAILURE(status)) {
        return {std::move(key), nullptr, label, FromUtf8(t_u_errorName(status)), {}};
    }
    return {std::move(key), text.toStdString(), label, Printable(text), {}};
}

Fact ListFact(std::string key, TStringCore const& label, Texts const& texts, TStringCore const& separator = u", ")
{
    Json values = Json::array();
    for (TStringCore const& text : texts) {
        values.push_back(text.toStdString());
    }
    return {std::move(key), values, label, Printable(TStringCore::join(texts, separator)), {}};
}

// With the script and the country that are meant where nothing is said.
ICULocale Likely(ICULocale const& locale)
{
    ICULocale likely(locale);
    auto status = ICUErrorCode::ZeroError;
    likely.addLikelySubtags(status);
    return ICU_SUCCESS(status) ? likely : locale;
}

FactGroup Names(ICULocale const& locale)
{
    ICULocale const& english = ICULocale::getEnglish();
    ICULocale const likely = Likely(locale);
    auto status = ICUErrorCode::ZeroError;
    std::string const tag = locale.toLanguageTag(status);
    char const* const direction = locale.isRightToLeft() ? "right to left" : "left to right";
    return {"locale",
            FromUtf8(locale.getName()),
            {TextFact("name", u"own name", locale.getDisplayName(locale)),
             TextFact("english", u"English name", locale.getDisplayName(english)),
             TextFact("tag", u"tag", FromUtf8(tag), status),
             TextFact("language", u"language", likely.getDisplayLanguage(english)),
             TextFact("script", u"script", likely.getDisplayScript(english)),
             TextFact("country", u"country", likely.getDisplayCountry(english)),
             TextFact("direction", u"written", FromUtf8(direction)),
             TextFact("data", u"data of", FromUtf8(DataLocale(locale)->getName()))}};
}

// ---- dates

struct Style
{
    char const* key;
    char16_t const* label;
    ICUDateFormat::ICUEStyle style;
};
constexpr Style kStyles[] = {{"full", u"full", ICUDateFormat::kFull},
                             {"long", u"long", ICUDateFormat::kLong},
                             {"medium", u"medium", ICUDateFormat::kMedium},
                             {"short", u"short", ICUDateFormat::kShort}};

Fact Formatted(std::string key, TStringCore const& label, ICUDateFormat& format, LocaleOptions const& options)
{
    auto status = ICUErrorCode::ZeroError;
    format.setTimeZone(options.timeZone, status);
    TStringCore const text = format.format(options.moment, status);
    return TextFact(std::move(key), label, text, status);
}

FactGroup InStyles(FactGroup group, decltype(ICUDateFormat::createDateInstance)& create, ICULocale const& locale,
                   LocaleOptions const& options)
{
    for (auto const& [key, label, style] : kStyles) {
        group.facts.push_back(Formatted(key, label, *create(style, locale), options));
    }
    return group;
}

// What a locale makes of the fields that a program wants to show.
FactGroup Patterns(ICULocale const& locale, LocaleOptions const& options)
{
    constexpr char const* kSkeletons[] = {"yMd", "MMMd", "yMMMM", "MMMEdjm", "jms"};
    FactGroup group{"patterns", u"Patterns", {}};
    std::vector<TableRow> rows;
    auto status = ICUErrorCode::ZeroError;
    auto const generator = ICUDateTimePatternGenerator::createInstance(locale.getName(), status);
    for (char const* const skeleton : kSkeletons) {
        TStringCore const pattern = generator->getBestPattern(FromUtf8(skeleton), status);
        auto const format = ICUSimpleDateFormat::createInstance(pattern.view(), locale, status);
        Fact& fact = group.facts.emplace_back(Formatted(skeleton, FromUtf8(skeleton), *format, options));
        fact.value = {{"pattern", pattern.toStdString()}, {"text", fact.value}};
        rows.push_back({Printable(pattern), fact.text});
    }
    Texts const lines = AlignedLines(rows, "l");
    for (std::size_t i = 0; i < lines.size(); ++i) {
        group.facts[i].text = lines[i];
    }
    return group;
}

FactGroup Calendar(ICULocale const& locale)
{
    auto status = ICUErrorCode::ZeroError;
    auto const calendar = ICUCalendar::createInstance(locale, status);
    auto const symbols = Symbols::createInstance(locale, calendar->getType(), status);
    Texts const days = symbols->getWeekdays(Symbols::Standalone, Symbols::Wide);
    auto const first = calendar->getFirstDayOfWeek(status);
    Texts week;
    Texts weekend;
    for (int i = 0; i < 7 && days.size() > 7; ++i) {
        auto const day = static_cast<ICUCalendar::ICUEDaysOfWeek>((first - 1 + i) % 7 + 1);
        week.push_back(days[static_cast<std::size_t>(day)]);
        if (calendar->getDayOfWeekType(day, status) != ICUCalendar::Weekday) {
            weekend.push_back(week.back());
        }
    }
    return {"calendar",
            u"Calendar",
            {TextFact("type", u"type", FromUtf8(calendar->getType())), ListFact("week", u"week", week),
             ListFact("weekend", u"weekend", weekend),
             ListFact("months", u"months", symbols->getMonths(Symbols::Standalone, Symbols::Wide)),
             ListFact("shortMonths", u"short", symbols->getMonths(Symbols::Standalone, Symbols::Abbreviated)),
             ListFact("amPm", u"halves of a day", symbols->getAmPmStrings())}};
}

// ---- numbers

template<class Number>
Fact Formatted(std::string key, TStringCore const& label, ICUDecimalFormat const& format, Number number)
{
    auto status = ICUErrorCode::ZeroError;
    TStringCore const text = format.format(number, status);
    return TextFact(std::move(key), label, text, status);
}

FactGroup Numbers(ICULocale const& locale)
{
    auto const make = [&](ICUNumberFormatStyle style) { return ICUDecimalFormat::createInstance(locale, style); };
    auto const plain = ICUDecimalFormat::createInstance(locale);
    return {"numbers",
            u"Numbers",
            {Formatted("integer", u"integer", *plain, 9876543210), Formatted("negative", u"negative", *plain, -1234),
             Formatted("decimal", u"decimal", *plain, 1234567.891),
             Formatted("percent", u"percent", *make(ICUNumberFormatStyle::Percent), 0.25),
             Formatted("scientific", u"scientific", *make(ICUNumberFormatStyle::Scientific), 1234567.891),
             Formatted("compact", u"compact", *make(ICUNumberFormatStyle::DecimalCompactLong), 1234567),
             Formatted("spelledOut", u"spelled out", *make(ICUNumberFormatStyle::SpellOut), 1234),
             Formatted("ordinal", u"ordinal", *make(ICUNumberFormatStyle::Ordinal), 2)}};
}

FactGroup Currencies(ICULocale const& locale)
{
    constexpr double kAmount = 1234.5;
    TStringCore const own = ICUDecimalFormat::createCurrencyInstance(Likely(locale))->getCurrency();
    FactGroup group{"currencies", u"Currencies", {TextFact("code", u"code", own)}};
    auto const add = [&](char const* key, TStringCore const& label, TStringCore const& code, ICUNumberFormatStyle style,
                         double amount) {
        auto const format = ICUDecimalFormat::createInstance(locale, style);
        auto status = format->getCreationStatus();
        if (ICU_SUCCESS(status)) {
            format->setCurrency(code, status);
        }
        TStringCore const text = format->format(amount, status);
        group.facts.push_back(TextFact(key, label, text, status));
    };
    using enum ICUNumberFormatStyle;
    add("amount", u"amount", own, Currency, kAmount);
    add("negative", u"negative", own, Currency, -kAmount);
    add("accounting", u"in accounts", own, CurrencyAccounting, -kAmount);
    add("iso", u"with the code", own, CurrencyIso, kAmount);
    add("words", u"with the name", own, CurrencyPlural, kAmount);
    for (char const* const foreign : {"EUR", "USD", "JPY"}) {
        add(foreign, FromUtf8(foreign), FromUtf8(foreign), Currency, kAmount);
    }
    return group;
}

// ---- words

Texts SortedBy(ICU_Collator const* collator, Texts texts)
{
    std::ranges::stable_sort(texts, [collator](TStringCore const& a, TStringCore const& b) {
        return t_ucol_strcoll(collator, a.constData(), -1, b.constData(), -1) == ICUCollationResult::Less;
    });
    return texts;
}

Texts SortedByUnits(Texts texts)
{
    std::ranges::sort(texts);
    return texts;
}

FactGroup Order(ICULocale const& locale)
{
    Texts const words = {u"Zebra", u"zebra",   u"Z\u00FCrich", u"\u00E4gg",  u"\u00C4hre", u"\u00E5ka", u"\u00F6st",
                         u"ost",   u"cote",    u"cot\u00E9",   u"c\u00F4te", u"chata",     u"cena",     u"\u010Das",
                         u"Ir",    u"\u0131l", u"\u00F1u",     u"nu",        u"10",        u"9"};
    auto status = ICUErrorCode::ZeroError;
    ICULocalUCollatorPointer const collator(t_ucol_open(locale.getName(), &status));
    auto symbolStatus = ICUErrorCode::ZeroError;
    Texts const months = Symbols::createInstance(locale, symbolStatus)->getMonths(Symbols::Standalone, Symbols::Wide);
    FactGroup group{"order", u"Order", {}};
    auto const add = [&](std::string const& key, TStringCore const& label, Texts const& texts) {
        Texts const sorted = ICU_SUCCESS(status) ? SortedBy(collator.getAlias(), texts) : Texts();
        group.facts.push_back(ListFact(key, label, sorted, u" "));
        group.facts.push_back(ListFact(key + "ByUnits", u"  by code units", SortedByUnits(texts), u" "));
    };
    add("words", u"words", words);
    add("months", u"months", months);
    return group;
}

FactGroup Case(ICULocale const& locale)
{
    TStringCore const sample = u"Istanbul ijssel stra\u00DFe \u039F\u0394\u039F\u03A3 \u01C6";
    auto const string = [&] { return ICUString::createInstance(sample.view()); };
    return {"case",
            u"Case",
            {TextFact("sample", u"sample", sample), TextFact("upper", u"upper", string()->toUpper(locale).toString()),
             TextFact("lower", u"lower", string()->toLower(locale).toString()),
             TextFact("title", u"title", string()->toTitle(locale).toString())}};
}

} // namespace

bool IsKnownTimeZone(TStringCore const& name)
{
    auto status = ICUErrorCode::ZeroError;
    ICUCalendar::createInstance(*ICULocale::getRoot(), status)->setTimeZone(name, status);
    return ICU_SUCCESS(status);
}

bool ReadMoment(TStringCore const& text, TStringCore const& timeZone, double& moment)
{
    auto status = ICUErrorCode::ZeroError;
    auto const format =
        ICUSimpleDateFormat::createInstance(TStringView(u"uuuu-MM-dd'T'HH:mm:ss"), *ICULocale::getRoot(), status);
    format->setTimeZone(timeZone, status);
    format->setLenient(false);
    auto const position = ICUParsePosition::createInstance();
    moment = format->parse(text, *position);
    return ICU_SUCCESS(status) && position->getIndex() == text.length() && !text.empty();
}

std::unique_ptr<ICULocale> DataLocale(ICULocale const& locale)
{
    auto status = ICUErrorCode::ZeroError;
    auto const symbols = ICUDecimalFormatSymbols::createInstance(locale, status);
    status = ICUErrorCode::ZeroError; // a warning of what this function is for
    auto data = symbols->getLocale(ICULocDataLocaleType::Valid, status);
    return data != nullptr ? std::move(data) : ICULocale::getRoot();
}

bool IsKnown(ICULocale const& locale)
{
    std::string_view const language = locale.getLanguage();
    auto const canonical = ICULocale::createCanonical(locale.getName());
    auto const dataLocale = DataLocale(locale);
    std::string_view const data = dataLocale->getLanguage();
    return !locale.isBogus() && (language == "root" || data == language || data == canonical->getLanguage());
}

std::vector<FactGroup> LocaleFacts(ICULocale const& locale, LocaleOptions const& options)
{
    return {Names(locale),
            InStyles({"dates", u"Dates", {}}, ICUDateFormat::createDateInstance, locale, options),
            InStyles({"times", u"Times", {}}, ICUDateFormat::createTimeInstance, locale, options),
            Patterns(locale, options),
            Calendar(locale),
            Numbers(locale),
            Currencies(locale),
            Order(locale),
            Case(locale)};
}

} // namespace qvx
