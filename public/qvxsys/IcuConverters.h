#pragma once
// Flat ICU functions (see <qvxsys/IcuFunctions.h>): converters, their choice, charset detection. Opening, converting
// whole texts and detecting the one best charset are in <qvxsys/QvxICU.h>.
//
//     std::int32_t const length = QvxICU::t_ucnv_convert("UTF-8", "windows-1252", target, capacity, source, -1,
//     &status);
//
// A converter belongs to one thread at a time. The status of opening may be a warning (AmbiguousAliasWarning).

#include <cstddef>
#include <cstdint>

#include <qvxsys/ICUTypes.h>
#include <qvxsys/IcuConstants.h>
#include <qvxsys/IcuDeclare.h>
#include <qvxsys/QvxICU.h>

namespace QvxICU {

/// @name Converters
/// t_ucnv_getStarters fills 256 bytes with 1 or 0.
/// @{
QVX_ICU(int, ucnv_compareNames, (char const*, name1), (char const*, name2));
[[nodiscard]] QVX_ICU(ICUConverter*, ucnv_openU, (char16_t const*, name), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUConverter*, ucnv_openCCSID, (std::int32_t, codepage), (ICUConverterPlatform, platform),
                      (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUConverter*, ucnv_openPackage, (char const*, packageName), (char const*, converterName),
                      (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUConverter*, ucnv_clone, (ICUConverter const*, converter), (ICUErrorCode*, status));
QVX_ICU(void, ucnv_getSubstChars, (ICUConverter const*, converter), (char*, subChars), (std::int8_t*, len),
        (ICUErrorCode*, status));
QVX_ICU(void, ucnv_setSubstChars, (ICUConverter*, converter), (char const*, subChars), (std::int8_t, len),
        (ICUErrorCode*, status));
QVX_ICU(void, ucnv_setSubstString, (ICUConverter*, converter), (char16_t const*, s), (std::int32_t, length),
        (ICUErrorCode*, status));
QVX_ICU(void, ucnv_getInvalidChars, (ICUConverter const*, converter), (char*, errBytes), (std::int8_t*, len),
        (ICUErrorCode*, status));
QVX_ICU(void, ucnv_getInvalidUChars, (ICUConverter const*, converter), (char16_t*, errUChars), (std::int8_t*, len),
        (ICUErrorCode*, status));
QVX_ICU(void, ucnv_resetToUnicode, (ICUConverter*, converter));
QVX_ICU(void, ucnv_resetFromUnicode, (ICUConverter*, converter));
QVX_ICU(std::int8_t, ucnv_getMinCharSize, (ICUConverter const*, converter));
QVX_ICU(std::int32_t, ucnv_getDisplayName, (ICUConverter const*, converter), (char const*, displayLocale),
        (char16_t*, displayName), (std::int32_t, displayNameCapacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucnv_getCCSID, (ICUConverter const*, converter), (ICUErrorCode*, status));
QVX_ICU(ICUConverterPlatform, ucnv_getPlatform, (ICUConverter const*, converter), (ICUErrorCode*, status));
QVX_ICU(ICUConverterType, ucnv_getType, (ICUConverter const*, converter));
QVX_ICU(void, ucnv_getStarters, (ICUConverter const*, converter), (std::int8_t*, starters), (ICUErrorCode*, status));
QVX_ICU(void, ucnv_getUnicodeSet, (ICUConverter const*, converter), (ICUSet*, setFillIn),
        (ICUConverterUnicodeSet, whichSet), (ICUErrorCode*, status));
QVX_ICU(void, ucnv_getToUCallBack, (ICUConverter const*, converter), (ICUToUnicodeCallback*, action),
        (void const**, context));
QVX_ICU(void, ucnv_getFromUCallBack, (ICUConverter const*, converter), (ICUFromUnicodeCallback*, action),
        (void const**, context));
QVX_ICU(void, ucnv_fromUnicode, (ICUConverter*, converter), (char**, target), (char const*, targetLimit),
        (char16_t const**, source), (char16_t const*, sourceLimit), (std::int32_t*, offsets), (bool, flush),
        (ICUErrorCode*, status));
QVX_ICU(void, ucnv_convertEx, (ICUConverter*, targetCnv), (ICUConverter*, sourceCnv), (char**, target),
        (char const*, targetLimit), (char const**, source), (char const*, sourceLimit), (char16_t*, pivotStart),
        (char16_t**, pivotSource), (char16_t**, pivotTarget), (char16_t const*, pivotLimit), (bool, reset),
        (bool, flush), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucnv_convert, (char const*, toConverterName), (char const*, fromConverterName), (char*, target),
        (std::int32_t, targetCapacity), (char const*, source), (std::int32_t, sourceLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucnv_toAlgorithmic, (ICUConverterType, algorithmicType), (ICUConverter*, converter),
        (char*, target), (std::int32_t, targetCapacity), (char const*, source), (std::int32_t, sourceLength),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucnv_fromAlgorithmic, (ICUConverter*, converter), (ICUConverterType, algorithmicType),
        (char*, target), (std::int32_t, targetCapacity), (char const*, source), (std::int32_t, sourceLength),
        (ICUErrorCode*, status));
QVX_ICU_0(std::int32_t, ucnv_flushCache);
QVX_ICU_0(std::int32_t, ucnv_countAvailable);
QVX_ICU(char const*, ucnv_getAvailableName, (std::int32_t, n));
[[nodiscard]] QVX_ICU(ICUEnumeration*, ucnv_openAllNames, (ICUErrorCode*, status));
QVX_ICU(std::uint16_t, ucnv_countAliases, (char const*, alias), (ICUErrorCode*, status));
QVX_ICU(char const*, ucnv_getAlias, (char const*, alias), (std::uint16_t, n), (ICUErrorCode*, status));
QVX_ICU(void, ucnv_getAliases, (char const*, alias), (char const**, aliases), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUEnumeration*, ucnv_openStandardNames, (char const*, convName), (char const*, standard),
                      (ICUErrorCode*, status));
QVX_ICU_0(std::uint16_t, ucnv_countStandards);
QVX_ICU(char const*, ucnv_getStandard, (std::uint16_t, n), (ICUErrorCode*, status));
QVX_ICU(char const*, ucnv_getStandardName, (char const*, name), (char const*, standard), (ICUErrorCode*, status));
QVX_ICU(char const*, ucnv_getCanonicalName, (char const*, alias), (char const*, standard), (ICUErrorCode*, status));
QVX_ICU(void, ucnv_setDefaultName, (char const*, name));
QVX_ICU(void, ucnv_fixFileSeparator, (ICUConverter const*, converter), (char16_t*, source), (std::int32_t, sourceLen));
QVX_ICU(bool, ucnv_isAmbiguous, (ICUConverter const*, converter));
QVX_ICU(void, ucnv_setFallback, (ICUConverter*, converter), (bool, usesFallback));
QVX_ICU(bool, ucnv_usesFallback, (ICUConverter const*, converter));
QVX_ICU(char const*, ucnv_detectUnicodeSignature, (char const*, source), (std::int32_t, sourceLength),
        (std::int32_t*, signatureLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucnv_fromUCountPending, (ICUConverter const*, converter), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucnv_toUCountPending, (ICUConverter const*, converter), (ICUErrorCode*, status));
QVX_ICU(bool, ucnv_isFixedWidth, (ICUConverter*, converter), (ICUErrorCode*, status));
/// @}

/// @name For callbacks of converters
/// To be called only from an ICUToUnicodeCallback or an ICUFromUnicodeCallback. The ready-made callbacks take the
/// contexts that ICU documents (null, or "J", "C", "D" ... for the form of escapes).
/// @{
QVX_ICU(void, ucnv_cbFromUWriteBytes, (ICUFromUnicodeArgs*, args), (char const*, source), (std::int32_t, length),
        (std::int32_t, offsetIndex), (ICUErrorCode*, status));
QVX_ICU(void, ucnv_cbFromUWriteSub, (ICUFromUnicodeArgs*, args), (std::int32_t, offsetIndex), (ICUErrorCode*, status));
QVX_ICU(void, ucnv_cbFromUWriteUChars, (ICUFromUnicodeArgs*, args), (char16_t const**, source),
        (char16_t const*, sourceLimit), (std::int32_t, offsetIndex), (ICUErrorCode*, status));
QVX_ICU(void, ucnv_cbToUWriteUChars, (ICUToUnicodeArgs*, args), (char16_t const*, source), (std::int32_t, length),
        (std::int32_t, offsetIndex), (ICUErrorCode*, status));
QVX_ICU(void, ucnv_cbToUWriteSub, (ICUToUnicodeArgs*, args), (std::int32_t, offsetIndex), (ICUErrorCode*, status));
QVX_ICU(void, UCNV_FROM_U_CALLBACK_STOP, (void const*, context), (ICUFromUnicodeArgs*, fromUArgs),
        (char16_t const*, codeUnits), (std::int32_t, length), (char32_t, codePoint),
        (ICUConverterCallbackReason, reason), (ICUErrorCode*, status));
QVX_ICU(void, UCNV_TO_U_CALLBACK_STOP, (void const*, context), (ICUToUnicodeArgs*, toUArgs), (char const*, codeUnits),
        (std::int32_t, length), (ICUConverterCallbackReason, reason), (ICUErrorCode*, status));
QVX_ICU(void, UCNV_FROM_U_CALLBACK_SKIP, (void const*, context), (ICUFromUnicodeArgs*, fromUArgs),
        (char16_t const*, codeUnits), (std::int32_t, length), (char32_t, codePoint),
        (ICUConverterCallbackReason, reason), (ICUErrorCode*, status));
QVX_ICU(void, UCNV_FROM_U_CALLBACK_ESCAPE, (void const*, context), (ICUFromUnicodeArgs*, fromUArgs),
        (char16_t const*, codeUnits), (std::int32_t, length), (char32_t, codePoint),
        (ICUConverterCallbackReason, reason), (ICUErrorCode*, status));
QVX_ICU(void, UCNV_TO_U_CALLBACK_SKIP, (void const*, context), (ICUToUnicodeArgs*, toUArgs), (char const*, codeUnits),
        (std::int32_t, length), (ICUConverterCallbackReason, reason), (ICUErrorCode*, status));
QVX_ICU(void, UCNV_TO_U_CALLBACK_ESCAPE, (void const*, context), (ICUToUnicodeArgs*, toUArgs), (char const*, codeUnits),
        (std::int32_t, length), (ICUConverterCallbackReason, reason), (ICUErrorCode*, status));
/// @}

/// @name Converters that can write a text
/// @{
[[nodiscard]] QVX_ICU(ICUConverterSelector*, ucnvsel_open, (char const* const*, converterList),
                      (std::int32_t, converterListSize), (ICUSet const*, excludedCodePoints),
                      (ICUConverterUnicodeSet, whichSet), (ICUErrorCode*, status));
QVX_ICU(void, ucnvsel_close, (ICUConverterSelector*, selector));
[[nodiscard]] QVX_ICU(ICUConverterSelector*, ucnvsel_openFromSerialized, (void const*, buffer), (std::int32_t, length),
                      (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucnvsel_serialize, (ICUConverterSelector const*, selector), (void*, buffer),
        (std::int32_t, bufferCapacity), (ICUErrorCode*, status));
QVX_ICU(ICUEnumeration*, ucnvsel_selectForString, (ICUConverterSelector const*, selector), (char16_t const*, s),
        (std::int32_t, length), (ICUErrorCode*, status));
QVX_ICU(ICUEnumeration*, ucnvsel_selectForUTF8, (ICUConverterSelector const*, selector), (char const*, s),
        (std::int32_t, length), (ICUErrorCode*, status));
/// @}

/// @name Charset detection
/// A detector belongs to one thread at a time; its text must outlive the matches, which the detector owns.
/// @{
QVX_ICU(void, ucsdet_setDeclaredEncoding, (ICUCharsetDetector*, detector), (char const*, encoding),
        (std::int32_t, length), (ICUErrorCode*, status));
QVX_ICU(ICUCharsetMatch const**, ucsdet_detectAll, (ICUCharsetDetector*, detector), (std::int32_t*, matchesFound),
        (ICUErrorCode*, status));
QVX_ICU(char const*, ucsdet_getLanguage, (ICUCharsetMatch const*, match), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucsdet_getUChars, (ICUCharsetMatch const*, match), (char16_t*, buf), (std::int32_t, cap),
        (ICUErrorCode*, status));
QVX_ICU(ICUEnumeration*, ucsdet_getAllDetectableCharsets, (ICUCharsetDetector const*, detector),
        (ICUErrorCode*, status));
QVX_ICU(bool, ucsdet_isInputFilterEnabled, (ICUCharsetDetector const*, detector));
QVX_ICU(bool, ucsdet_enableInputFilter, (ICUCharsetDetector*, detector), (bool, filter));
/// @}

} // namespace QvxICU
