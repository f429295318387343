// Wrappers of locales and of ICU's strings beside ICU's own classes: what an operation costs through them.

#include <string>

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUString.h>

#include "BenchSupport.h"

namespace {

using QvxICU::ICULocale;
using QvxICU::ICUString;

/// Text of words with a few letters beyond ASCII, as sentences have them.
std::u16string Sentences(std::size_t length)
{
    std::u16string text;
    while (text.size() < length) {
        text += u"Die Stra\u00DFe f\u00FChrt \u00FCber die Br\u00FCcke. ";
    }
    text.resize(length);
    return text;
}

void StringRows(std::size_t length)
{
    std::string const size = std::to_string(length);
    std::u16string const text = Sentences(length);
    bench::Row("l2 alias and map case, " + size, "own", [text, locale = ICULocale::getGerman()] {
        auto const mapped = ICUString::createAlias(text);
        mapped->toUpper(locale);
        benchmark::DoNotOptimize(mapped->view().data());
    });
    bench::Row("l2 alias and map case, " + size, "ICU", [text, locale = icu::Locale::getGerman()] {
        icu::UnicodeString mapped(false, text.data(), static_cast<std::int32_t>(text.size()));
        mapped.toUpper(locale);
        benchmark::DoNotOptimize(mapped.getBuffer());
    });
    bench::Row("l2 alias and find, " + size, "own", [text, word = text.substr(length - 7)] {
        auto const searched = ICUString::createAlias(text);
        benchmark::DoNotOptimize(searched->indexOf(word));
    });
    bench::Row("l2 alias and find, " + size, "ICU", [text, word = text.substr(length - 7)] {
        icu::UnicodeString const searched(false, text.data(), static_cast<std::int32_t>(text.size()));
        benchmark::DoNotOptimize(searched.indexOf(word.data(), static_cast<std::int32_t>(word.size()), 0));
    });
}

void LocaleRows()
{
    bench::Row("l2 getDisplayName", "own",
               [locale = *ICULocale::createFromName("sr_Latn_RS"), in = ICULocale::getGerman()] {
                   benchmark::DoNotOptimize(locale.getDisplayName(in));
               });
    bench::Row("l2 getDisplayName", "ICU", [locale = icu::Locale("sr_Latn_RS"), in = icu::Locale::getGerman()] {
        icu::UnicodeString name;
        benchmark::DoNotOptimize(locale.getDisplayName(in, name));
    });
    bench::Row("l2 make a locale", "own",
               [] { benchmark::DoNotOptimize(ICULocale::createFromName("de_CH@currency=EUR")); });
    bench::Row("l2 make a locale", "ICU",
               [] { benchmark::DoNotOptimize(icu::Locale::createFromName("de_CH@currency=EUR")); });
    bench::Row("l2 copy a locale", "own", [locale = *ICULocale::createFromName("de_CH@currency=EUR")] {
        benchmark::DoNotOptimize(ICULocale(locale));
    });
    bench::Row("l2 copy a locale", "ICU",
               [locale = icu::Locale("de_CH@currency=EUR")] { benchmark::DoNotOptimize(icu::Locale(locale)); });
}

void RegisterRows()
{
    StringRows(40);
    StringRows(1000);
    LocaleRows();
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
