// The examples of the headers of locales, ICU's strings, positions and factories.

#include <iostream>

#include <qvxsys/qvxsys.h>

namespace {

using namespace QvxICU;

bool Locales()
{
    auto const locale = ICULocale::createFromName("de_CH");
    TStringCore const name = locale->getDisplayName(); // in the words of the default locale
    ICULocale const copy = *locale;                    // shares the locale with *locale

    ICUErrorCode status = ICUErrorCode::ZeroError;
    locale->setKeywordValue("collation", "phonebook", status); // *locale only, not the copy
    std::string const tag = locale->toLanguageTag(status);     // "de-CH-u-co-phonebk"
    return !name.isEmpty() && TStringCore(copy.getName()) == u"de_CH" && tag == "de-CH-u-co-phonebk" &&
           ICU_SUCCESS(status);
}

bool Strings()
{
    auto text = ICUString::createInstance(u"Stra\u00DFe");
    text->toUpper(*ICULocale::getRoot()).append(L" 7"); // without a locale: by the rules of the default one
    TStringCore const own = text->toString();           // u"STRASSE 7"

    auto const alias = ICUString::createAlias(own); // reads `own` in place
    int const at = alias->indexOf(u'7');
    bool const same = alias->caseCompare(L"stra\u00DFe 7") == 0; // folded, U+00DF is "ss"
    return own == u"STRASSE 7" && at == 8 && same && alias->view().data() == own.view().data();
}

bool Positions()
{
    auto const field = ICUFieldPosition::createInstance(); // which field of a formatted text, and where it is
    auto const position = ICUParsePosition::createInstance();
    position->setIndex(3); // where parsing begins, and then has ended
    bool const failed = position->getErrorIndex() >= 0;
    return !failed && field->getField() == ICUFieldPosition::kDontCare && position->getIndex() == 3;
}

bool Factories()
{
    ICUFactories const& icu = Module().getFactories();
    auto const locale = icu.locale.createFromName("fr_CA");
    auto const format = icu.decimalFormat.createInstance(*locale);
    std::string const version = Module().getVersion(); // "72.1": the ICU in use
    return format != nullptr && version == installedVersion();
}

} // namespace

int main()
{
    bool const ok = Locales() && Strings() && Positions() && Factories();
    std::cout << (ok ? "ok\n" : "failed\n");
    return ok ? 0 : 1;
}
