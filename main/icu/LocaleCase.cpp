#include <qvxsys/LocaleCase.h>

#include <cstdint>

#include <unicode/brkiter.h>
#include <unicode/stringoptions.h>
#include <unicode/unistr.h>

#include "IcuBridge.h"

namespace QvxICU {

using QvxICU44::Alias;
using QvxICU44::Icu;

TStringCore toLower(TStringView text, ICULocale const& locale)
{
    return qvxsys::detail::ToLower(text, locale.getName());
}

TStringCore toUpper(TStringView text, ICULocale const& locale)
{
    return qvxsys::detail::ToUpper(text, locale.getName());
}

TStringCore toLowerRoot(TStringView text)
{
    return qvxsys::detail::ToLower(text, "");
}

TStringCore toUpperRoot(TStringView text)
{
    return qvxsys::detail::ToUpper(text, "");
}

TStringCore toTitle(TStringView text, ICULocale const& locale, TitleCase options)
{
    icu::UnicodeString title = Alias(text);
    std::uint32_t const flags = (options.sentences ? U_TITLECASE_SENTENCES : 0U) |
                                (options.keepRest ? static_cast<std::uint32_t>(U_TITLECASE_NO_LOWERCASE) : 0U);
    title.toTitle(nullptr, Icu(locale), flags);
    return QvxICU44::Own(title);
}

TStringCore toTitle(TStringView text, TitleCase options)
{
    return toTitle(text, ICULocale(), options);
}

TStringCore foldCase(TStringView text)
{
    icu::UnicodeString folded = Alias(text);
    folded.foldCase();
    return QvxICU44::Own(folded);
}

TStringCore withPlainSpaces(TStringCore const& text)
{
    constexpr TStringView kSpaces = u"\u00A0\u2009\u202F";
    if (text.view().findOneOf(kSpaces) < 0) {
        return text;
    }
    TStringCore result = text;
    result.replaceAnyOf(kSpaces, u' ');
    return result;
}

} // namespace QvxICU
