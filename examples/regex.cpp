// The examples of <qvxsys/ICURegexPattern.h>, <qvxsys/ICURegexMatcher.h> and <qvxsys/ICUTransliterator.h>.

#include <iostream>
#include <map>

#include <qvxsys/ICURegexPattern.h>
#include <qvxsys/ICUTransliterator.h>
#include <qvxsys/std.h>

namespace {

using QvxICU::ICUErrorCode;

int g_failures = 0;

void Expect(TStringCore const& actual, TStringCore const& expected)
{
    if (actual != expected) {
        std::cerr << actual << " instead of " << expected << '\n';
        ++g_failures;
    }
}

void FindAndReplace()
{
    ICUErrorCode status = ICUErrorCode::ZeroError;
    auto const pattern = QvxICU::ICURegexPattern::createInstance(u"(?<key>\\w+)=(\\d*)", 0, status);
    auto const matcher = pattern->matcher(u"width=20 height=30", status);
    std::map<TStringCore, TStringCore> values;
    while (matcher->find(status)) {
        values[matcher->group(u"key", status)] = matcher->group(2, status);
    }
    Expect(values[u"width"], u"20");
    Expect(values[u"height"], u"30");
    Expect(matcher->replaceAll(u"$2=${key}", status), u"20=width 30=height");
    g_failures += QvxICU::ICU_SUCCESS(status) ? 0 : 1;
}

void Limits()
{
    ICUErrorCode status = ICUErrorCode::ZeroError;
    auto const pattern = QvxICU::ICURegexPattern::createInstance(u"(a+)+b", 0, status);
    auto const matcher = pattern->matcher(TStringCore(u"a").repeated(1000) + u"c", status);
    matcher->setTimeLimit(10, status); // 100,000 steps
    bool const found = matcher->find(status);
    g_failures += !found && status == ICUErrorCode::RegexTimeOut ? 0 : 1;
}

void OtherScripts()
{
    ICUErrorCode status = ICUErrorCode::ZeroError;
    auto const toLatin = QvxICU::ICUTransliterator::createInstance(u"Any-Latin; Latin-ASCII",
                                                                   QvxICU::ICUTransDirection::Forward, status);
    Expect(toLatin->transliterate(u"\u041C\u043E\u0441\u043A\u0432\u0430"), u"Moskva");
    QvxICU::ICUParseError error;
    auto const quotes = QvxICU::ICUTransliterator::createInstanceFromRules(
        u"My-Quotes", u"'<<' > \u00AB; '>>' > \u00BB;", QvxICU::ICUTransDirection::Forward, error, status);
    Expect(quotes->transliterate(u"<<yes>>"), u"\u00AByes\u00BB");
}

} // namespace

int main()
{
    FindAndReplace();
    Limits();
    OtherScripts();
    return g_failures == 0 ? 0 : 1;
}
