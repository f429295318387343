#pragma once
// Flat ICU functions (see <qvxsys/IcuFunctions.h>): locales, currencies, number formats, enumerations of strings.
//
//     ICULocalUNumberFormatPointer const money(
//         QvxICU::t_unum_open(QvxICU::ICUNumberFormatStyle::Currency, nullptr, 0, "de_DE", nullptr, &status));
//     QvxICU::t_unum_formatDouble(money.getAlias(), 12.5, units, 32, nullptr, &status); // 12,50 and a euro sign
//
// An unknown locale is no error: the nearest one that is known is used, and the status is UsingFallbackWarning or
// UsingDefaultWarning. A format belongs to one thread at a time.

#include <cstddef>
#include <cstdint>

#include <qvxsys/ICUTypes.h>
#include <qvxsys/IcuConstants.h>
#include <qvxsys/IcuDeclare.h>

namespace QvxICU {

/// A part of a written number: which (ICUNumberFormatField), and the units it fills.
struct ICUFieldSpan
{
    /// Of the number format's fields (UNumberFormatFields).
    std::int32_t field = 0;
    /// In units.
    std::int32_t begin = 0;
    /// In units, behind the last.
    std::int32_t end = 0;
};

/// What t_ucurr_register returns.
using ICUCurrencyRegistryKey = void const*;

/// @name Locales
/// t_uloc_setDefault sets the locale of the whole process.
/// @{
QVX_ICU(void, uloc_setDefault, (char const*, localeID), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getLanguage, (char const*, localeID), (char*, language), (std::int32_t, languageCapacity),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getScript, (char const*, localeID), (char*, script), (std::int32_t, scriptCapacity),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getCountry, (char const*, localeID), (char*, country), (std::int32_t, countryCapacity),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getVariant, (char const*, localeID), (char*, variant), (std::int32_t, variantCapacity),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getName, (char const*, localeID), (char*, name), (std::int32_t, nameCapacity),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_canonicalize, (char const*, localeID), (char*, name), (std::int32_t, nameCapacity),
        (ICUErrorCode*, status));
QVX_ICU(char const*, uloc_getISO3Language, (char const*, localeID));
QVX_ICU(char const*, uloc_getISO3Country, (char const*, localeID));
QVX_ICU(std::uint32_t, uloc_getLCID, (char const*, localeID));
QVX_ICU(std::int32_t, uloc_getDisplayLanguage, (char const*, locale), (char const*, displayLocale),
        (char16_t*, language), (std::int32_t, languageCapacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getDisplayScript, (char const*, locale), (char const*, displayLocale), (char16_t*, script),
        (std::int32_t, scriptCapacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getDisplayCountry, (char const*, locale), (char const*, displayLocale), (char16_t*, country),
        (std::int32_t, countryCapacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getDisplayVariant, (char const*, locale), (char const*, displayLocale), (char16_t*, variant),
        (std::int32_t, variantCapacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getDisplayKeyword, (char const*, keyword), (char const*, displayLocale), (char16_t*, dest),
        (std::int32_t, destCapacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getDisplayKeywordValue, (char const*, locale), (char const*, keyword),
        (char const*, displayLocale), (char16_t*, dest), (std::int32_t, destCapacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getDisplayName, (char const*, localeID), (char const*, inLocaleID), (char16_t*, result),
        (std::int32_t, maxResultSize), (ICUErrorCode*, status));
QVX_ICU(char const*, uloc_getAvailable, (std::int32_t, n));
QVX_ICU_0(std::int32_t, uloc_countAvailable);
[[nodiscard]] QVX_ICU(ICUEnumeration*, uloc_openAvailableByType, (ICULocAvailableType, type), (ICUErrorCode*, status));
QVX_ICU_0(char const* const*, uloc_getISOLanguages);
QVX_ICU_0(char const* const*, uloc_getISOCountries);
QVX_ICU(std::int32_t, uloc_getParent, (char const*, localeID), (char*, parent), (std::int32_t, parentCapacity),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getBaseName, (char const*, localeID), (char*, name), (std::int32_t, nameCapacity),
        (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUEnumeration*, uloc_openKeywords, (char const*, localeID), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getKeywordValue, (char const*, localeID), (char const*, keywordName), (char*, buffer),
        (std::int32_t, bufferCapacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_setKeywordValue, (char const*, keywordName), (char const*, keywordValue), (char*, buffer),
        (std::int32_t, bufferCapacity), (ICUErrorCode*, status));
QVX_ICU(bool, uloc_isRightToLeft, (char const*, locale));
QVX_ICU(ICULayoutType, uloc_getCharacterOrientation, (char const*, localeId), (ICUErrorCode*, status));
QVX_ICU(ICULayoutType, uloc_getLineOrientation, (char const*, localeId), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_acceptLanguageFromHTTP, (char*, result), (std::int32_t, resultAvailable),
        (ICUAcceptResult*, outResult), (char const*, httpAcceptLanguage), (ICUEnumeration*, availableLocales),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_acceptLanguage, (char*, result), (std::int32_t, resultAvailable),
        (ICUAcceptResult*, outResult), (char const**, acceptList), (std::int32_t, acceptListCount),
        (ICUEnumeration*, availableLocales), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_getLocaleForLCID, (std::uint32_t, hostID), (char*, locale), (std::int32_t, localeCapacity),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_addLikelySubtags, (char const*, localeID), (char*, maximizedLocaleID),
        (std::int32_t, maximizedLocaleIDCapacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_minimizeSubtags, (char const*, localeID), (char*, minimizedLocaleID),
        (std::int32_t, minimizedLocaleIDCapacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_forLanguageTag, (char const*, langtag), (char*, localeID), (std::int32_t, localeIDCapacity),
        (std::int32_t*, parsedLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uloc_toLanguageTag, (char const*, localeID), (char*, langtag), (std::int32_t, langtagCapacity),
        (bool, strict), (ICUErrorCode*, status));
QVX_ICU(char const*, uloc_toUnicodeLocaleKey, (char const*, keyword));
QVX_ICU(char const*, uloc_toUnicodeLocaleType, (char const*, keyword), (char const*, value));
QVX_ICU(char const*, uloc_toLegacyKey, (char const*, keyword));
QVX_ICU(char const*, uloc_toLegacyType, (char const*, keyword), (char const*, value));
/// @}

/// @name Currencies
/// @{
QVX_ICU(std::int32_t, ucurr_forLocale, (char const*, locale), (char16_t*, buff), (std::int32_t, buffCapacity),
        (ICUErrorCode*, status));
QVX_ICU(void const*, ucurr_register, (char16_t const*, isoCode), (char const*, locale), (ICUErrorCode*, status));
QVX_ICU(bool, ucurr_unregister, (void const*, key), (ICUErrorCode*, status));
QVX_ICU(char16_t const*, ucurr_getName, (char16_t const*, currency), (char const*, locale),
        (ICUCurrNameStyle, nameStyle), (bool*, isChoiceFormat), (std::int32_t*, len), (ICUErrorCode*, status));
QVX_ICU(char16_t const*, ucurr_getPluralName, (char16_t const*, currency), (char const*, locale),
        (bool*, isChoiceFormat), (char const*, pluralCount), (std::int32_t*, len), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucurr_getDefaultFractionDigits, (char16_t const*, currency), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucurr_getDefaultFractionDigitsForUsage, (char16_t const*, currency),
        (ICUCurrencyUsage const, usage), (ICUErrorCode*, status));
QVX_ICU(double, ucurr_getRoundingIncrement, (char16_t const*, currency), (ICUErrorCode*, status));
QVX_ICU(double, ucurr_getRoundingIncrementForUsage, (char16_t const*, currency), (ICUCurrencyUsage const, usage),
        (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUEnumeration*, ucurr_openISOCurrencies, (std::uint32_t, currType), (ICUErrorCode*, status));
QVX_ICU(bool, ucurr_isAvailable, (char16_t const*, isoCode), (double, from), (double, to), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucurr_countCurrencies, (char const*, locale), (double, date), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucurr_forLocaleAndDate, (char const*, locale), (double, date), (std::int32_t, index),
        (char16_t*, buff), (std::int32_t, buffCapacity), (ICUErrorCode*, status));
QVX_ICU(ICUEnumeration*, ucurr_getKeywordValuesForLocale, (char const*, key), (char const*, locale),
        (bool, commonlyUsed), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucurr_getNumericCode, (char16_t const*, currency));
/// @}

/// @name Enumerations of strings
/// @{
QVX_ICU(void, uenum_close, (ICUEnumeration*, names));
QVX_ICU(std::int32_t, uenum_count, (ICUEnumeration*, names), (ICUErrorCode*, status));
QVX_ICU(char16_t const*, uenum_unext, (ICUEnumeration*, names), (std::int32_t*, resultLength), (ICUErrorCode*, status));
QVX_ICU(char const*, uenum_next, (ICUEnumeration*, names), (std::int32_t*, resultLength), (ICUErrorCode*, status));
QVX_ICU(void, uenum_reset, (ICUEnumeration*, names), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUEnumeration*, uenum_openUCharStringsEnumeration, (char16_t const* const*, strings),
                      (std::int32_t, count), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUEnumeration*, uenum_openCharStringsEnumeration, (char const* const*, strings),
                      (std::int32_t, count), (ICUErrorCode*, status));
/// @}

/// @name Number formats
/// Decimal number strings (t_unum_formatDecimal, t_unum_parseDecimal) are exact.
/// @{
[[nodiscard]] QVX_ICU(ICUNumberFormat*, unum_open, (ICUNumberFormatStyle, style), (char16_t const*, pattern),
                      (std::int32_t, patternLength), (char const*, locale), (ICUParseError*, parseError),
                      (ICUErrorCode*, status));
QVX_ICU(void, unum_close, (ICUNumberFormat*, format));
[[nodiscard]] QVX_ICU(ICUNumberFormat*, unum_clone, (ICUNumberFormat const*, format), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unum_format, (ICUNumberFormat const*, format), (std::int32_t, number), (char16_t*, result),
        (std::int32_t, resultLength), (ICUFieldSpan*, pos), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unum_formatInt64, (ICUNumberFormat const*, format), (std::int64_t, number), (char16_t*, result),
        (std::int32_t, resultLength), (ICUFieldSpan*, pos), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unum_formatDouble, (ICUNumberFormat const*, format), (double, number), (char16_t*, result),
        (std::int32_t, resultLength), (ICUFieldSpan*, pos), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unum_formatDoubleForFields, (ICUNumberFormat const*, format), (double, number),
        (char16_t*, result), (std::int32_t, resultLength), (ICUFieldPositionIterator*, fields),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unum_formatDecimal, (ICUNumberFormat const*, format), (char const*, number),
        (std::int32_t, length), (char16_t*, result), (std::int32_t, resultLength), (ICUFieldSpan*, pos),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unum_formatDoubleCurrency, (ICUNumberFormat const*, format), (double, number),
        (char16_t*, currency), (char16_t*, result), (std::int32_t, resultLength), (ICUFieldSpan*, pos),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unum_formatUFormattable, (ICUNumberFormat const*, format), (ICUFormattable const*, number),
        (char16_t*, result), (std::int32_t, resultLength), (ICUFieldSpan*, pos), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unum_parse, (ICUNumberFormat const*, format), (char16_t const*, text), (std::int32_t, textLength),
        (std::int32_t*, parsePos), (ICUErrorCode*, status));
QVX_ICU(std::int64_t, unum_parseInt64, (ICUNumberFormat const*, format), (char16_t const*, text),
        (std::int32_t, textLength), (std::int32_t*, parsePos), (ICUErrorCode*, status));
QVX_ICU(double, unum_parseDouble, (ICUNumberFormat const*, format), (char16_t const*, text), (std::int32_t, textLength),
        (std::int32_t*, parsePos), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unum_parseDecimal, (ICUNumberFormat const*, format), (char16_t const*, text),
        (std::int32_t, textLength), (std::int32_t*, parsePos), (char*, outBuf), (std::int32_t, outBufLength),
        (ICUErrorCode*, status));
QVX_ICU(double, unum_parseDoubleCurrency, (ICUNumberFormat const*, format), (char16_t const*, text),
        (std::int32_t, textLength), (std::int32_t*, parsePos), (char16_t*, currency), (ICUErrorCode*, status));
QVX_ICU(ICUFormattable*, unum_parseToUFormattable, (ICUNumberFormat const*, format), (ICUFormattable*, result),
        (char16_t const*, text), (std::int32_t, textLength), (std::int32_t*, parsePos), (ICUErrorCode*, status));
QVX_ICU(void, unum_applyPattern, (ICUNumberFormat*, format), (bool, localized), (char16_t const*, pattern),
        (std::int32_t, patternLength), (ICUParseError*, parseError), (ICUErrorCode*, status));
QVX_ICU(char const*, unum_getAvailable, (std::int32_t, localeIndex));
QVX_ICU_0(std::int32_t, unum_countAvailable);
QVX_ICU(std::int32_t, unum_getAttribute, (ICUNumberFormat const*, format), (ICUNumberFormatAttribute, attr));
QVX_ICU(void, unum_setAttribute, (ICUNumberFormat*, format), (ICUNumberFormatAttribute, attr),
        (std::int32_t, newValue));
QVX_ICU(double, unum_getDoubleAttribute, (ICUNumberFormat const*, format), (ICUNumberFormatAttribute, attr));
QVX_ICU(void, unum_setDoubleAttribute, (ICUNumberFormat*, format), (ICUNumberFormatAttribute, attr),
        (double, newValue));
QVX_ICU(std::int32_t, unum_getTextAttribute, (ICUNumberFormat const*, format), (ICUNumberFormatTextAttribute, tag),
        (char16_t*, result), (std::int32_t, resultLength), (ICUErrorCode*, status));
QVX_ICU(void, unum_setTextAttribute, (ICUNumberFormat*, format), (ICUNumberFormatTextAttribute, tag),
        (char16_t const*, newValue), (std::int32_t, newValueLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unum_toPattern, (ICUNumberFormat const*, format), (bool, isPatternLocalized), (char16_t*, result),
        (std::int32_t, resultLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unum_getSymbol, (ICUNumberFormat const*, format), (ICUNumberFormatSymbol, symbol),
        (char16_t*, buffer), (std::int32_t, size), (ICUErrorCode*, status));
QVX_ICU(void, unum_setSymbol, (ICUNumberFormat*, format), (ICUNumberFormatSymbol, symbol), (char16_t const*, value),
        (std::int32_t, length), (ICUErrorCode*, status));
QVX_ICU(char const*, unum_getLocaleByType, (ICUNumberFormat const*, format), (ICULocDataLocaleType, type),
        (ICUErrorCode*, status));
QVX_ICU(void, unum_setContext, (ICUNumberFormat*, format), (ICUDisplayContext, value), (ICUErrorCode*, status));
QVX_ICU(ICUDisplayContext, unum_getContext, (ICUNumberFormat const*, format), (ICUDisplayContextType, type),
        (ICUErrorCode*, status));
/// @}

/// @name Fields of written texts
/// @{
[[nodiscard]] QVX_ICU(ICUFieldPositionIterator*, ufieldpositer_open, (ICUErrorCode*, status));
QVX_ICU(void, ufieldpositer_close, (ICUFieldPositionIterator*, fields));
QVX_ICU(std::int32_t, ufieldpositer_next, (ICUFieldPositionIterator*, fields), (std::int32_t*, beginIndex),
        (std::int32_t*, endIndex));
/// @}

/// @name Values of any type
/// @{
[[nodiscard]] QVX_ICU(ICUFormattable*, ufmt_open, (ICUErrorCode*, status));
QVX_ICU(void, ufmt_close, (ICUFormattable*, format));
QVX_ICU(ICUFormattableType, ufmt_getType, (ICUFormattable const*, format), (ICUErrorCode*, status));
QVX_ICU(bool, ufmt_isNumeric, (ICUFormattable const*, format));
QVX_ICU(double, ufmt_getDate, (ICUFormattable const*, format), (ICUErrorCode*, status));
QVX_ICU(double, ufmt_getDouble, (ICUFormattable*, format), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ufmt_getLong, (ICUFormattable*, format), (ICUErrorCode*, status));
QVX_ICU(std::int64_t, ufmt_getInt64, (ICUFormattable*, format), (ICUErrorCode*, status));
QVX_ICU(void const*, ufmt_getObject, (ICUFormattable const*, format), (ICUErrorCode*, status));
QVX_ICU(char16_t const*, ufmt_getUChars, (ICUFormattable*, format), (std::int32_t*, len), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ufmt_getArrayLength, (ICUFormattable const*, format), (ICUErrorCode*, status));
QVX_ICU(ICUFormattable*, ufmt_getArrayItemByIndex, (ICUFormattable*, format), (std::int32_t, n),
        (ICUErrorCode*, status));
QVX_ICU(char const*, ufmt_getDecNumChars, (ICUFormattable*, format), (std::int32_t*, len), (ICUErrorCode*, status));
/// @}

} // namespace QvxICU
