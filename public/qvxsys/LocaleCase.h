#pragma once
// Case by the rules of a given locale, or of none: beside toLower and toUpper of the strings, which follow ICU's
// default locale and so differ from machine to machine.
//
//     TStringCore const key = QvxICU::toLowerRoot(u"TITLE");                       // "title", wherever it runs
//     TStringCore const shown = QvxICU::toLower(u"TITLE", *QvxICU::ICULocale::createFromName("tr"));  // "t\u0131tle"
//     TStringCore const name = QvxICU::toTitle(u"o'neill and sons");               // "O'neill And Sons"
//
// All map whole texts (Unicode Standard, chapter 3.13): lengths may change, and lone surrogates stay. Thread-safe.

#include <qvxsys/ICULocale.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace QvxICU {

/// @name Case mapping
/// Throws what making a string throws when the result is too long for one. Linear; as fast as the members of the
/// strings for every locale but those with mappings of their own (az, el, hy, lt, tr).
/// @{
[[nodiscard]] QVXSYS_API TStringCore toLower(TStringView text, ICULocale const& locale);
[[nodiscard]] QVXSYS_API TStringCore toUpper(TStringView text, ICULocale const& locale);
/// The same everywhere: by no language's own rules.
[[nodiscard]] QVXSYS_API TStringCore toLowerRoot(TStringView text);
[[nodiscard]] QVXSYS_API TStringCore toUpperRoot(TStringView text);
/// @}

/// How toTitle finds what begins with a capital, and what it leaves alone.
struct TitleCase
{
    bool sentences = false; ///< the first letter of each sentence instead of each word
    bool keepRest = false;  ///< letters behind the first stay as they are: "iPhone" becomes "IPhone"
};

/// Each word (or sentence) with a capital first and small letters behind, by the rules of the locale: digraphs have
/// title forms, and Dutch "ijsland" becomes "IJsland".
[[nodiscard]] QVXSYS_API TStringCore toTitle(TStringView text, ICULocale const& locale, TitleCase options = {});
/// By the rules of the default locale.
[[nodiscard]] QVXSYS_API TStringCore toTitle(TStringView text, TitleCase options = {});

/// Full case folding, for comparison and not for display: "stra\u00DFe" becomes "strasse". Texts that differ in case
/// only have the same folding; it may be longer than the text.
[[nodiscard]] QVXSYS_API TStringCore foldCase(TStringView text);

/// Formatted times and dates as older data had them: U+202F (narrow no-break space, before "AM" since CLDR 42), U+00A0
/// and U+2009 (thin space) become plain spaces. For texts that are compared or parsed by what knows only those; on
/// screen the originals keep what belongs together in one line.
[[nodiscard]] QVXSYS_API TStringCore withPlainSpaces(TStringCore const& text);

} // namespace QvxICU
