#include <qvxsys/LocaleCase.h>

#include <cstdint>

#include <unicode/brkiter.h>
#include <unicode/casemap.h>
#include <unicode/stringoptions.h>
#include <unicode/ustring.h>

#include "IcuBridge.h"
#include "KeptBreaks.h"
#include "StringLimits.h"
#include "WrittenText.h"

namespace QvxICU {

using QvxICU44::Icu;
using qvxsys::text::CheckedUnits;

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
    int const length = CheckedUnits(text.size());
    UErrorCode opened = U_ZERO_ERROR;
    auto const type = options.sentences ? ICUBreakIteratorType::Sentence : ICUBreakIteratorType::Word;
    // Left to itself, ICU opens one for each call.
    auto const breaks = QvxICU44::OpenBreaks(type, Icu(locale), opened);
    if (breaks == nullptr) {
        return TStringCore(text);
    }
    std::uint32_t const flags = options.keepRest ? U_TITLECASE_NO_LOWERCASE : 0;
    return QvxICU44::Written(length, text, [&](char16_t* to, int capacity, UErrorCode& status) {
        return icu::CaseMap::toTitle(locale.getName(), flags, breaks.get(), text.data(), length, to, capacity, nullptr,
                                     status);
    });
}

TStringCore toTitle(TStringView text, TitleCase options)
{
    return toTitle(text, ICULocale(), options);
}

TStringCore foldCase(TStringView text)
{
    int const length = CheckedUnits(text.size());
    return QvxICU44::Written(length, text, [&](char16_t* to, int capacity, UErrorCode& status) {
        return u_strFoldCase(to, capacity, text.data(), length, U_FOLD_CASE_DEFAULT, &status);
    });
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
