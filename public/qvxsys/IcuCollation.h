#pragma once
// Flat ICU functions (see <qvxsys/IcuFunctions.h>): collators, their elements, text search by collation.
//
//     ICULocalUCollatorPointer const swedish(QvxICU::t_ucol_open("sv", &status));
//     bool const after = QvxICU::t_ucol_greater(swedish.getAlias(), u"\u00E4", -1, u"z", -1);
//
// A collator may be used by several threads as long as none sets anything. HiraganaQuaternaryMode has no effect in
// today's ICU (docs/icu.md).

#include <cstddef>
#include <cstdint>

#include <qvxsys/ICUTypes.h>
#include <qvxsys/IcuConstants.h>
#include <qvxsys/IcuDeclare.h>

namespace QvxICU {

/// Beyond the last element, and before the first (ICU's UCOL_NULLORDER).
inline constexpr std::int32_t ICUNullOrder = -1;
/// Where a search found nothing (ICU's USEARCH_DONE).
inline constexpr std::int32_t ICUSearchDone = -1;

/// @name Collators
/// @{
[[nodiscard]] QVX_ICU(ICU_Collator*, ucol_open, (char const*, loc), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICU_Collator*, ucol_openRules, (char16_t const*, rules), (std::int32_t, rulesLength),
                      (ICUColAttributeValue, normalizationMode), (ICUColAttributeValue, strength),
                      (ICUParseError*, parseError), (ICUErrorCode*, status));
QVX_ICU(void, ucol_getContractionsAndExpansions, (ICU_Collator const*, collator), (ICUSet*, contractions),
        (ICUSet*, expansions), (bool, addPrefixes), (ICUErrorCode*, status));
QVX_ICU(void, ucol_close, (ICU_Collator*, collator));
QVX_ICU(ICUCollationResult, ucol_strcoll, (ICU_Collator const*, collator), (char16_t const*, source),
        (std::int32_t, sourceLength), (char16_t const*, target), (std::int32_t, targetLength));
QVX_ICU(ICUCollationResult, ucol_strcollUTF8, (ICU_Collator const*, collator), (char const*, source),
        (std::int32_t, sourceLength), (char const*, target), (std::int32_t, targetLength), (ICUErrorCode*, status));
QVX_ICU(bool, ucol_greater, (ICU_Collator const*, collator), (char16_t const*, source), (std::int32_t, sourceLength),
        (char16_t const*, target), (std::int32_t, targetLength));
QVX_ICU(bool, ucol_greaterOrEqual, (ICU_Collator const*, collator), (char16_t const*, source),
        (std::int32_t, sourceLength), (char16_t const*, target), (std::int32_t, targetLength));
QVX_ICU(bool, ucol_equal, (ICU_Collator const*, collator), (char16_t const*, source), (std::int32_t, sourceLength),
        (char16_t const*, target), (std::int32_t, targetLength));
QVX_ICU(ICUCollationResult, ucol_strcollIter, (ICU_Collator const*, collator), (ICUCharacterIterator*, sIter),
        (ICUCharacterIterator*, tIter), (ICUErrorCode*, status));
QVX_ICU(ICUColAttributeValue, ucol_getStrength, (ICU_Collator const*, collator));
QVX_ICU(void, ucol_setStrength, (ICU_Collator*, collator), (ICUColAttributeValue, strength));
QVX_ICU(std::int32_t, ucol_getReorderCodes, (ICU_Collator const*, collator), (std::int32_t*, dest),
        (std::int32_t, destCapacity), (ICUErrorCode*, status));
QVX_ICU(void, ucol_setReorderCodes, (ICU_Collator*, collator), (std::int32_t const*, reorderCodes),
        (std::int32_t, reorderCodesLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucol_getEquivalentReorderCodes, (std::int32_t, reorderCode), (std::int32_t*, dest),
        (std::int32_t, destCapacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucol_getDisplayName, (char const*, objLoc), (char const*, dispLoc), (char16_t*, result),
        (std::int32_t, resultLength), (ICUErrorCode*, status));
QVX_ICU(char const*, ucol_getAvailable, (std::int32_t, localeIndex));
QVX_ICU_0(std::int32_t, ucol_countAvailable);
[[nodiscard]] QVX_ICU(ICUEnumeration*, ucol_openAvailableLocales, (ICUErrorCode*, status));
QVX_ICU(ICUEnumeration*, ucol_getKeywords, (ICUErrorCode*, status));
QVX_ICU(ICUEnumeration*, ucol_getKeywordValues, (char const*, keyword), (ICUErrorCode*, status));
QVX_ICU(ICUEnumeration*, ucol_getKeywordValuesForLocale, (char const*, key), (char const*, locale),
        (bool, commonlyUsed), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucol_getFunctionalEquivalent, (char*, result), (std::int32_t, resultCapacity),
        (char const*, keyword), (char const*, locale), (bool*, isAvailable), (ICUErrorCode*, status));
QVX_ICU(char16_t const*, ucol_getRules, (ICU_Collator const*, collator), (std::int32_t*, length));
QVX_ICU(std::int32_t, ucol_getSortKey, (ICU_Collator const*, collator), (char16_t const*, source),
        (std::int32_t, sourceLength), (std::uint8_t*, result), (std::int32_t, resultLength));
QVX_ICU(std::int32_t, ucol_nextSortKeyPart, (ICU_Collator const*, collator), (ICUCharacterIterator*, iter),
        (std::uint32_t*, state), (std::uint8_t*, dest), (std::int32_t, count), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucol_getBound, (std::uint8_t const*, source), (std::int32_t, sourceLength),
        (ICUColBoundMode, boundType), (std::uint32_t, noOfLevels), (std::uint8_t*, result),
        (std::int32_t, resultLength), (ICUErrorCode*, status));
QVX_ICU(void, ucol_getVersion, (ICU_Collator const*, collator), (std::uint8_t*, info));
QVX_ICU(void, ucol_getUCAVersion, (ICU_Collator const*, collator), (std::uint8_t*, info));
QVX_ICU(std::int32_t, ucol_mergeSortkeys, (std::uint8_t const*, src1), (std::int32_t, src1Length),
        (std::uint8_t const*, src2), (std::int32_t, src2Length), (std::uint8_t*, dest), (std::int32_t, destCapacity));
QVX_ICU(void, ucol_setAttribute, (ICU_Collator*, collator), (ICUColAttribute, attr), (ICUColAttributeValue, value),
        (ICUErrorCode*, status));
QVX_ICU(ICUColAttributeValue, ucol_getAttribute, (ICU_Collator const*, collator), (ICUColAttribute, attr),
        (ICUErrorCode*, status));
QVX_ICU(void, ucol_setMaxVariable, (ICU_Collator*, collator), (ICUColReorderCode, group), (ICUErrorCode*, status));
QVX_ICU(ICUColReorderCode, ucol_getMaxVariable, (ICU_Collator const*, collator));
QVX_ICU(std::uint32_t, ucol_getVariableTop, (ICU_Collator const*, collator), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICU_Collator*, ucol_clone, (ICU_Collator const*, collator), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucol_getRulesEx, (ICU_Collator const*, collator), (ICUColRuleOption, delta), (char16_t*, buffer),
        (std::int32_t, bufferLen));
QVX_ICU(char const*, ucol_getLocaleByType, (ICU_Collator const*, collator), (ICULocDataLocaleType, type),
        (ICUErrorCode*, status));
QVX_ICU(ICUSet*, ucol_getTailoredSet, (ICU_Collator const*, collator), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucol_cloneBinary, (ICU_Collator const*, collator), (std::uint8_t*, buffer),
        (std::int32_t, capacity), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICU_Collator*, ucol_openBinary, (std::uint8_t const*, bin), (std::int32_t, length),
                      (ICU_Collator const*, base), (ICUErrorCode*, status));
/// @}

/// Opens a collator that sorts as `locale` does (keywords included, null is the default locale), but for decimal
/// digits: all code points of general category Nd of the installed ICU, ASCII's ten and those of other scripts, compare
/// equal at every strength but identical. It is what t_getIgnoreDigitsRule was meant for, whose text today's ICU does
/// not take as a rule. Signs that are no decimal digits, such as superscripts, keep their places. Numeric collation of
/// the locale is off. The status is that of opening the locale's own collator, or a failure with a null result: that of
/// the rules. To be closed with t_ucol_close. Costs a build of the tailoring: milliseconds for most locales, some
/// tenths of a second for those with ideographs (zh, ja, ko). Open it once.
[[nodiscard]] QVXSYS_API ICU_Collator* t_openIgnoreDigitsCollator(char const* locale, ICUErrorCode* status);

/// @name Collation elements
/// @{
[[nodiscard]] QVX_ICU(ICUCollationElements*, ucol_openElements, (ICU_Collator const*, collator),
                      (char16_t const*, text), (std::int32_t, textLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucol_keyHashCode, (std::uint8_t const*, key), (std::int32_t, length));
QVX_ICU(void, ucol_closeElements, (ICUCollationElements*, elements));
QVX_ICU(void, ucol_reset, (ICUCollationElements*, elements));
QVX_ICU(std::int32_t, ucol_next, (ICUCollationElements*, elements), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucol_previous, (ICUCollationElements*, elements), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucol_getMaxExpansion, (ICUCollationElements const*, elements), (std::int32_t, order));
QVX_ICU(void, ucol_setText, (ICUCollationElements*, elements), (char16_t const*, text), (std::int32_t, textLength),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucol_getOffset, (ICUCollationElements const*, elements));
QVX_ICU(void, ucol_setOffset, (ICUCollationElements*, elements), (std::int32_t, offset), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucol_primaryOrder, (std::int32_t, order));
QVX_ICU(std::int32_t, ucol_secondaryOrder, (std::int32_t, order));
QVX_ICU(std::int32_t, ucol_tertiaryOrder, (std::int32_t, order));
/// @}

/// @name Text search
/// Positions are units; ICUSearchDone when there is no match. The text is not copied.
/// @{
[[nodiscard]] QVX_ICU(ICUStringSearch*, usearch_open, (char16_t const*, pattern), (std::int32_t, patternLength),
                      (char16_t const*, text), (std::int32_t, textLength), (char const*, locale),
                      (ICUBreakIterator*, breakIterator), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUStringSearch*, usearch_openFromCollator, (char16_t const*, pattern),
                      (std::int32_t, patternLength), (char16_t const*, text), (std::int32_t, textLength),
                      (ICU_Collator const*, collator), (ICUBreakIterator*, breakIterator), (ICUErrorCode*, status));
QVX_ICU(void, usearch_close, (ICUStringSearch*, search));
QVX_ICU(void, usearch_setOffset, (ICUStringSearch*, search), (std::int32_t, position), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, usearch_getOffset, (ICUStringSearch const*, search));
QVX_ICU(void, usearch_setAttribute, (ICUStringSearch*, search), (ICUSearchAttribute, attribute),
        (ICUSearchAttributeValue, value), (ICUErrorCode*, status));
QVX_ICU(ICUSearchAttributeValue, usearch_getAttribute, (ICUStringSearch const*, search),
        (ICUSearchAttribute, attribute));
QVX_ICU(std::int32_t, usearch_getMatchedStart, (ICUStringSearch const*, search));
QVX_ICU(std::int32_t, usearch_getMatchedLength, (ICUStringSearch const*, search));
QVX_ICU(std::int32_t, usearch_getMatchedText, (ICUStringSearch const*, search), (char16_t*, result),
        (std::int32_t, resultCapacity), (ICUErrorCode*, status));
QVX_ICU(void, usearch_setBreakIterator, (ICUStringSearch*, search), (ICUBreakIterator*, breakIterator),
        (ICUErrorCode*, status));
QVX_ICU(ICUBreakIterator const*, usearch_getBreakIterator, (ICUStringSearch const*, search));
QVX_ICU(void, usearch_setText, (ICUStringSearch*, search), (char16_t const*, text), (std::int32_t, textLength),
        (ICUErrorCode*, status));
QVX_ICU(char16_t const*, usearch_getText, (ICUStringSearch const*, search), (std::int32_t*, length));
QVX_ICU(ICU_Collator*, usearch_getCollator, (ICUStringSearch const*, search));
QVX_ICU(void, usearch_setCollator, (ICUStringSearch*, search), (ICU_Collator const*, collator),
        (ICUErrorCode*, status));
QVX_ICU(void, usearch_setPattern, (ICUStringSearch*, search), (char16_t const*, pattern), (std::int32_t, patternLength),
        (ICUErrorCode*, status));
QVX_ICU(char16_t const*, usearch_getPattern, (ICUStringSearch const*, search), (std::int32_t*, length));
QVX_ICU(std::int32_t, usearch_first, (ICUStringSearch*, search), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, usearch_following, (ICUStringSearch*, search), (std::int32_t, position), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, usearch_last, (ICUStringSearch*, search), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, usearch_preceding, (ICUStringSearch*, search), (std::int32_t, position), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, usearch_next, (ICUStringSearch*, search), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, usearch_previous, (ICUStringSearch*, search), (ICUErrorCode*, status));
QVX_ICU(void, usearch_reset, (ICUStringSearch*, search));
/// @}

} // namespace QvxICU
