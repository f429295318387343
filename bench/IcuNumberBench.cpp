// The layer over ICU beside ICU's own classes, called directly: what the layer costs. Results are texts of ours on one
// side and ICU's on the other.

#ifdef QVXSYS_BENCH_ICU

#include <cstdint>
#include <memory>
#include <string>

#include <qvxsys/ICUDecimalFormat.h>
#include <qvxsys/ICURegexPattern.h>
#include <qvxsys/ICUTransliterator.h>
#include <unicode/decimfmt.h>
#include <unicode/regex.h>
#include <unicode/translit.h>

#include "BenchSupport.h"

namespace {

using namespace QvxICU;

/// About 20 kB of lines with names and values.
TStringCore SampleText()
{
    TStringCore text;
    for (int i = 0; i < 700; ++i) {
        text.append(u"width=").append(TStringCore::number(i * 7919 % 10007)).append(u"; some words between\n");
    }
    return text;
}

icu::UnicodeString Unicode(TStringCore const& text)
{
    return icu::UnicodeString(text.constData(), text.length());
}

void Numbers()
{
    auto const locale = ICULocale::createFromName("de_DE");
    std::shared_ptr<ICUDecimalFormat> const own = ICUDecimalFormat::createInstance(*locale);
    UErrorCode code = U_ZERO_ERROR;
    std::shared_ptr<icu::NumberFormat> const icus(icu::NumberFormat::createInstance(icu::Locale("de_DE"), code));
    for (double const number : {42.0, 1234567.891, 6.02214076e23}) {
        auto const row = "l4 format " + std::to_string(number).substr(0, 7);
        bench::Row(row, "own", [own, number] {
            ICUErrorCode status = ICUErrorCode::ZeroError;
            benchmark::DoNotOptimize(own->format(number, status));
        });
        bench::Row(row, "ICU", [icus, number] {
            UErrorCode status = U_ZERO_ERROR;
            icu::UnicodeString text;
            benchmark::DoNotOptimize(icus->format(number, text, nullptr, status));
        });
    }
    bench::Row("l4 format integer", "own", [own, n = std::int64_t{123456}] {
        ICUErrorCode status = ICUErrorCode::ZeroError;
        benchmark::DoNotOptimize(own->format(n, status));
    });
    bench::Row("l4 format integer", "ICU", [icus, n = std::int64_t{123456}] {
        UErrorCode status = U_ZERO_ERROR;
        icu::UnicodeString text;
        benchmark::DoNotOptimize(icus->format(n, text, nullptr, status));
    });
    TStringCore const text = u"1.234.567,891";
    bench::Row("l4 parse", "own", [own, text] {
        ICUErrorCode status = ICUErrorCode::ZeroError;
        benchmark::DoNotOptimize(own->parse(text, status));
    });
    bench::Row("l4 parse", "ICU", [icus, text = Unicode(text)] {
        UErrorCode status = U_ZERO_ERROR;
        icu::Formattable number;
        icus->parse(text, number, status);
        benchmark::DoNotOptimize(number.getDouble(status));
    });
}

void Regexes()
{
    ICUErrorCode status = ICUErrorCode::ZeroError;
    UErrorCode code = U_ZERO_ERROR;
    TStringCore const expression = u"(\\w+)=(\\d+)";
    std::shared_ptr<ICURegexPattern> const own = ICURegexPattern::createInstance(expression, 0, status);
    std::shared_ptr<icu::RegexPattern> const icus(icu::RegexPattern::compile(Unicode(expression), 0, code));
    TStringCore const shortText = u"height=1234";
    bench::Row("l5 match", "own", [m = std::shared_ptr(own->matcher(shortText, status)), shortText] {
        ICUErrorCode s = ICUErrorCode::ZeroError;
        m->reset(shortText.view());
        benchmark::DoNotOptimize(m->matches(s));
        benchmark::DoNotOptimize(m->group(2, s));
    });
    auto const input = std::make_shared<icu::UnicodeString>(Unicode(shortText));
    bench::Row("l5 match", "ICU", [m = std::shared_ptr<icu::RegexMatcher>(icus->matcher(*input, code)), input, icus] {
        UErrorCode s = U_ZERO_ERROR;
        m->reset(*input);
        benchmark::DoNotOptimize(m->matches(s));
        benchmark::DoNotOptimize(m->group(2, s));
    });
    TStringCore const text = SampleText();
    auto const unicode = std::make_shared<icu::UnicodeString>(Unicode(text));
    std::shared_ptr<ICURegexMatcher> const ownMatcher = own->matcher(text, status);
    std::shared_ptr<icu::RegexMatcher> const icusMatcher(icus->matcher(*unicode, code));
    bench::Row("l5 find all", "own", [ownMatcher] {
        ICUErrorCode s = ICUErrorCode::ZeroError;
        ownMatcher->reset();
        while (ownMatcher->find(s)) {
            benchmark::DoNotOptimize(ownMatcher->end(s));
        }
    });
    bench::Row("l5 find all", "ICU", [icusMatcher, icus, unicode] {
        UErrorCode s = U_ZERO_ERROR;
        icusMatcher->reset();
        while (icusMatcher->find(s)) {
            benchmark::DoNotOptimize(icusMatcher->end(s));
        }
    });
    bench::Row("l5 replace all", "own", [ownMatcher, with = TStringCore(u"$2: $1")] {
        ICUErrorCode s = ICUErrorCode::ZeroError;
        benchmark::DoNotOptimize(ownMatcher->replaceAll(with, s));
    });
    bench::Row("l5 replace all", "ICU", [icusMatcher, icus, unicode, with = icu::UnicodeString(u"$2: $1")] {
        UErrorCode s = U_ZERO_ERROR;
        benchmark::DoNotOptimize(icusMatcher->replaceAll(with, s));
    });
    bench::Row("l5 compile and match", "own", [expression, shortText] {
        ICUErrorCode s = ICUErrorCode::ZeroError;
        auto const pattern = ICURegexPattern::createInstance(expression, 0, s);
        benchmark::DoNotOptimize(pattern->matcher(shortText.view(), s)->matches(s));
    });
    bench::Row("l5 compile and match", "ICU", [expression = Unicode(expression), input] {
        UErrorCode s = U_ZERO_ERROR;
        std::unique_ptr<icu::RegexPattern> const pattern(icu::RegexPattern::compile(expression, 0, s));
        std::unique_ptr<icu::RegexMatcher> const matcher(pattern->matcher(*input, s));
        benchmark::DoNotOptimize(matcher->matches(s));
    });
}

void Transliterators()
{
    struct Case
    {
        char const* name;
        char16_t const* id;
        char16_t const* text;
    };
    for (Case const& c : {Case{"Cyrillic", u"Russian-Latin/BGN",
                               u"\u041C\u043E\u0441\u043A\u0432\u0430 \u0438 \u041A\u0438\u0435\u0432"},
                          Case{"accents", u"Latin-ASCII", u"\u00E9t\u00E9 caf\u00E9 stra\u00DFe \u00F1"},
                          Case{"upper", u"Any-Upper", u"some words of plain text, not long"}}) {
        ICUErrorCode status = ICUErrorCode::ZeroError;
        UErrorCode code = U_ZERO_ERROR;
        std::shared_ptr<ICUTransliterator> const own =
            ICUTransliterator::createInstance(c.id, ICUTransDirection::Forward, status);
        std::shared_ptr<icu::Transliterator> const icus(
            icu::Transliterator::createInstance(c.id, UTRANS_FORWARD, code));
        auto const row = std::string("l6 transliterate ") + c.name;
        bench::Row(row, "own",
                   [own, text = TStringCore(c.text)] { benchmark::DoNotOptimize(own->transliterate(text)); });
        bench::Row(row, "ICU", [icus, text = icu::UnicodeString(c.text)] {
            icu::UnicodeString work(text.getBuffer(), text.length());
            icus->transliterate(work);
            benchmark::DoNotOptimize(work);
        });
    }
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, [] {
        Numbers();
        Regexes();
        Transliterators();
    });
}

#else

int main()
{}

#endif
