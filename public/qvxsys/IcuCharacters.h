#pragma once
// Flat ICU functions (see <qvxsys/IcuFunctions.h>): properties and names of code points, strings of UTF-16 units, case
// maps, the library itself. Those that the library's own text classes need are in <qvxsys/QvxICU.h>.
//
//     char name[64];
//     QvxICU::t_u_charName(U'\u00E9', QvxICU::ICUCharNameChoice::UnicodeCharName, name, sizeof name, &status);
//
// Lengths are units; -1, where ICU takes it, means terminated. All are safe from any thread unless told otherwise.

#include <cstddef>
#include <cstdint>

#include <qvxsys/ICUTypes.h>
#include <qvxsys/IcuConstants.h>
#include <qvxsys/IcuDeclare.h>
#include <qvxsys/IcuProperties.h>

namespace QvxICU {

/// Called for ranges of code points of one general category; false ends the enumeration.
using ICUCharTypeRange = bool(void const* context, char32_t start, char32_t limit, ICUCharCategory type);
/// Called for code points with their names; false ends the enumeration.
using ICUCharNameVisitor = bool(void* context, char32_t code, ICUCharNameChoice choice, char const* name,
                                std::int32_t length);
/// The unit at an offset of a text with escapes.
using ICUUnescapeAt = char16_t (*)(std::int32_t offset, void* context);
using ICUMemoryAlloc = void*(void const* context, std::size_t size);
using ICUMemoryRealloc = void*(void const* context, void* memory, std::size_t size);
using ICUMemoryFree = void(void const* context, void* memory);

/// @name Properties and names of code points
/// @{
QVX_ICU(bool, u_stringHasBinaryProperty, (char16_t const*, s), (std::int32_t, length), (ICUProperty, which));
QVX_ICU(ICUSet const*, u_getBinaryPropertySet, (ICUProperty, property), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, u_getIntPropertyValue, (char32_t, c), (ICUProperty, which));
QVX_ICU(std::int32_t, u_getIntPropertyMinValue, (ICUProperty, which));
QVX_ICU(std::int32_t, u_getIntPropertyMaxValue, (ICUProperty, which));
QVX_ICU(ICUCodePointMap const*, u_getIntPropertyMap, (ICUProperty, property), (ICUErrorCode*, status));
QVX_ICU(double, u_getNumericValue, (char32_t, c));
QVX_ICU(bool, u_islower, (char32_t, c));
QVX_ICU(bool, u_isupper, (char32_t, c));
QVX_ICU(bool, u_istitle, (char32_t, c));
QVX_ICU(bool, u_isalpha, (char32_t, c));
QVX_ICU(bool, u_isalnum, (char32_t, c));
QVX_ICU(bool, u_isgraph, (char32_t, c));
QVX_ICU(bool, u_isdefined, (char32_t, c));
QVX_ICU(bool, u_isspace, (char32_t, c));
QVX_ICU(bool, u_isJavaSpaceChar, (char32_t, c));
QVX_ICU(bool, u_iscntrl, (char32_t, c));
QVX_ICU(bool, u_isISOControl, (char32_t, c));
QVX_ICU(bool, u_isprint, (char32_t, c));
QVX_ICU(bool, u_isbase, (char32_t, c));
QVX_ICU(ICUCharDirection, u_charDirection, (char32_t, c));
QVX_ICU(bool, u_isMirrored, (char32_t, c));
QVX_ICU(char32_t, u_charMirror, (char32_t, c));
QVX_ICU(char32_t, u_getBidiPairedBracket, (char32_t, c));
QVX_ICU(void, u_enumCharTypes, (ICUCharTypeRange*, enumRange), (void const*, context));
QVX_ICU(std::uint8_t, u_getCombiningClass, (char32_t, c));
QVX_ICU(std::int32_t, u_charDigitValue, (char32_t, c));
QVX_ICU(ICUBlockCode, ublock_getCode, (char32_t, c));
QVX_ICU(std::int32_t, u_charName, (char32_t, code), (ICUCharNameChoice, nameChoice), (char*, buffer),
        (std::int32_t, bufferLength), (ICUErrorCode*, status));
QVX_ICU(char32_t, u_charFromName, (ICUCharNameChoice, nameChoice), (char const*, name), (ICUErrorCode*, status));
QVX_ICU(void, u_enumCharNames, (char32_t, start), (char32_t, limit), (ICUCharNameVisitor*, fn), (void*, context),
        (ICUCharNameChoice, nameChoice), (ICUErrorCode*, status));
QVX_ICU(char const*, u_getPropertyName, (ICUProperty, property), (ICUPropertyNameChoice, nameChoice));
QVX_ICU(ICUProperty, u_getPropertyEnum, (char const*, alias));
QVX_ICU(char const*, u_getPropertyValueName, (ICUProperty, property), (std::int32_t, value),
        (ICUPropertyNameChoice, nameChoice));
QVX_ICU(std::int32_t, u_getPropertyValueEnum, (ICUProperty, property), (char const*, alias));
QVX_ICU(bool, u_isIDStart, (char32_t, c));
QVX_ICU(bool, u_isIDPart, (char32_t, c));
QVX_ICU(bool, u_isIDIgnorable, (char32_t, c));
QVX_ICU(bool, u_isJavaIDStart, (char32_t, c));
QVX_ICU(bool, u_isJavaIDPart, (char32_t, c));
QVX_ICU(char32_t, u_totitle, (char32_t, c));
QVX_ICU(std::int32_t, u_digit, (char32_t, ch), (std::int8_t, radix));
QVX_ICU(char32_t, u_forDigit, (std::int32_t, digit), (std::int8_t, radix));
QVX_ICU(void, u_charAge, (char32_t, c), (std::uint8_t*, versionArray));
QVX_ICU(void, u_getUnicodeVersion, (std::uint8_t*, versionArray));
QVX_ICU(std::int32_t, u_getFC_NFKC_Closure, (char32_t, c), (char16_t*, dest), (std::int32_t, destCapacity),
        (ICUErrorCode*, status));
/// @}

/// @name Strings
/// The functions without a length take terminated strings, those with `capacity` follow ICU's way with buffers: the
/// length of the whole result is returned, BufferOverflowError says that it did not fit. t_u_austrcpy and its sisters
/// use the default converter, which only one thread may be setting.
/// @{
QVX_ICU(std::int32_t, u_strlen, (char16_t const*, s));
QVX_ICU(std::int32_t, u_countChar32, (char16_t const*, s), (std::int32_t, length));
QVX_ICU(bool, u_strHasMoreChar32Than, (char16_t const*, s), (std::int32_t, length), (std::int32_t, number));
QVX_ICU(char16_t*, u_strcat, (char16_t*, dst), (char16_t const*, src));
QVX_ICU(char16_t*, u_strncat, (char16_t*, dst), (char16_t const*, src), (std::int32_t, n));
QVX_ICU(char16_t*, u_strstr, (char16_t const*, s), (char16_t const*, substring));
QVX_ICU(char16_t*, u_strFindFirst, (char16_t const*, s), (std::int32_t, length), (char16_t const*, substring),
        (std::int32_t, subLength));
QVX_ICU(char16_t*, u_strchr, (char16_t const*, s), (char16_t, c));
QVX_ICU(char16_t*, u_strchr32, (char16_t const*, s), (char32_t, c));
QVX_ICU(char16_t*, u_strrstr, (char16_t const*, s), (char16_t const*, substring));
QVX_ICU(char16_t*, u_strFindLast, (char16_t const*, s), (std::int32_t, length), (char16_t const*, substring),
        (std::int32_t, subLength));
QVX_ICU(char16_t*, u_strrchr, (char16_t const*, s), (char16_t, c));
QVX_ICU(char16_t*, u_strrchr32, (char16_t const*, s), (char32_t, c));
QVX_ICU(char16_t*, u_strpbrk, (char16_t const*, string), (char16_t const*, matchSet));
QVX_ICU(std::int32_t, u_strcspn, (char16_t const*, string), (char16_t const*, matchSet));
QVX_ICU(std::int32_t, u_strspn, (char16_t const*, string), (char16_t const*, matchSet));
QVX_ICU(char16_t*, u_strtok_r, (char16_t*, src), (char16_t const*, delim), (char16_t**, saveState));
QVX_ICU(std::int32_t, u_strcmpCodePointOrder, (char16_t const*, s1), (char16_t const*, s2));
QVX_ICU(std::int32_t, u_strCompare, (char16_t const*, s1), (std::int32_t, length1), (char16_t const*, s2),
        (std::int32_t, length2), (bool, codePointOrder));
QVX_ICU(std::int32_t, u_strCompareIter, (ICUCharacterIterator*, iter1), (ICUCharacterIterator*, iter2),
        (bool, codePointOrder));
QVX_ICU(std::int32_t, u_strCaseCompare, (char16_t const*, s1), (std::int32_t, length1), (char16_t const*, s2),
        (std::int32_t, length2), (std::uint32_t, options), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, u_strncmpCodePointOrder, (char16_t const*, s1), (char16_t const*, s2), (std::int32_t, n));
QVX_ICU(std::int32_t, u_memcasecmp, (char16_t const*, s1), (char16_t const*, s2), (std::int32_t, length),
        (std::uint32_t, options));
QVX_ICU(char16_t*, u_strcpy, (char16_t*, dst), (char16_t const*, src));
QVX_ICU(char16_t*, u_strncpy, (char16_t*, dst), (char16_t const*, src), (std::int32_t, n));
QVX_ICU(char16_t*, u_uastrcpy, (char16_t*, dst), (char const*, src));
QVX_ICU(char16_t*, u_uastrncpy, (char16_t*, dst), (char const*, src), (std::int32_t, n));
QVX_ICU(char*, u_austrcpy, (char*, dst), (char16_t const*, src));
QVX_ICU(char*, u_austrncpy, (char*, dst), (char16_t const*, src), (std::int32_t, n));
QVX_ICU(char16_t*, u_memcpy, (char16_t*, dest), (char16_t const*, src), (std::int32_t, count));
QVX_ICU(char16_t*, u_memmove, (char16_t*, dest), (char16_t const*, src), (std::int32_t, count));
QVX_ICU(char16_t*, u_memset, (char16_t*, dest), (char16_t, c), (std::int32_t, count));
QVX_ICU(std::int32_t, u_memcmp, (char16_t const*, buf1), (char16_t const*, buf2), (std::int32_t, count));
QVX_ICU(std::int32_t, u_memcmpCodePointOrder, (char16_t const*, s1), (char16_t const*, s2), (std::int32_t, count));
QVX_ICU(char16_t*, u_memchr, (char16_t const*, s), (char16_t, c), (std::int32_t, count));
QVX_ICU(char16_t*, u_memchr32, (char16_t const*, s), (char32_t, c), (std::int32_t, count));
QVX_ICU(char16_t*, u_memrchr, (char16_t const*, s), (char16_t, c), (std::int32_t, count));
QVX_ICU(char16_t*, u_memrchr32, (char16_t const*, s), (char32_t, c), (std::int32_t, count));
QVX_ICU(std::int32_t, u_unescape, (char const*, src), (char16_t*, dest), (std::int32_t, destCapacity));
QVX_ICU(char32_t, u_unescapeAt, (ICUUnescapeAt, charAt), (std::int32_t*, offset), (std::int32_t, length),
        (void*, context));
QVX_ICU(wchar_t*, u_strToWCS, (wchar_t*, dest), (std::int32_t, destCapacity), (std::int32_t*, destLength),
        (char16_t const*, src), (std::int32_t, srcLength), (ICUErrorCode*, status));
QVX_ICU(char16_t*, u_strFromWCS, (char16_t*, dest), (std::int32_t, destCapacity), (std::int32_t*, destLength),
        (wchar_t const*, src), (std::int32_t, srcLength), (ICUErrorCode*, status));
QVX_ICU(char16_t*, u_strFromUTF8Lenient, (char16_t*, dest), (std::int32_t, destCapacity), (std::int32_t*, destLength),
        (char const*, src), (std::int32_t, srcLength), (ICUErrorCode*, status));
QVX_ICU(char*, u_strToJavaModifiedUTF8, (char*, dest), (std::int32_t, destCapacity), (std::int32_t*, destLength),
        (char16_t const*, src), (std::int32_t, srcLength), (ICUErrorCode*, status));
QVX_ICU(char16_t*, u_strFromJavaModifiedUTF8WithSub, (char16_t*, dest), (std::int32_t, destCapacity),
        (std::int32_t*, destLength), (char const*, src), (std::int32_t, srcLength), (char32_t, subchar),
        (std::int32_t*, numSubstitutions), (ICUErrorCode*, status));
/// @}

/// @name Case maps for UTF-8 text and for title case
/// A map may be used by several threads as long as none sets anything, which t_ucasemap_toTitle and
/// t_ucasemap_utf8ToTitle may do.
/// @{
[[nodiscard]] QVX_ICU(UCaseMap*, ucasemap_open, (char const*, locale), (std::uint32_t, options),
                      (ICUErrorCode*, status));
QVX_ICU(void, ucasemap_close, (UCaseMap*, map));
QVX_ICU(char const*, ucasemap_getLocale, (UCaseMap const*, map));
QVX_ICU(std::uint32_t, ucasemap_getOptions, (UCaseMap const*, map));
QVX_ICU(void, ucasemap_setLocale, (UCaseMap*, map), (char const*, locale), (ICUErrorCode*, status));
QVX_ICU(void, ucasemap_setOptions, (UCaseMap*, map), (std::uint32_t, options), (ICUErrorCode*, status));
QVX_ICU(ICUBreakIterator const*, ucasemap_getBreakIterator, (UCaseMap const*, map));
QVX_ICU(void, ucasemap_setBreakIterator, (UCaseMap*, map), (ICUBreakIterator*, iterToAdopt), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucasemap_toTitle, (UCaseMap*, map), (char16_t*, dest), (std::int32_t, destCapacity),
        (char16_t const*, src), (std::int32_t, srcLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucasemap_utf8ToLower, (UCaseMap const*, map), (char*, dest), (std::int32_t, destCapacity),
        (char const*, src), (std::int32_t, srcLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucasemap_utf8ToUpper, (UCaseMap const*, map), (char*, dest), (std::int32_t, destCapacity),
        (char const*, src), (std::int32_t, srcLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucasemap_utf8ToTitle, (UCaseMap*, map), (char*, dest), (std::int32_t, destCapacity),
        (char const*, src), (std::int32_t, srcLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucasemap_utf8FoldCase, (UCaseMap const*, map), (char*, dest), (std::int32_t, destCapacity),
        (char const*, src), (std::int32_t, srcLength), (ICUErrorCode*, status));
/// @}

/// @name The library itself
/// t_u_setMemoryFunctions must come before any other call into ICU. Versions are four bytes.
/// @{
QVX_ICU(void, u_init, (ICUErrorCode*, status));
QVX_ICU(void, u_setMemoryFunctions, (void const*, context), (ICUMemoryAlloc*, a), (ICUMemoryRealloc*, r),
        (ICUMemoryFree*, f), (ICUErrorCode*, status));
QVX_ICU(void, u_versionFromString, (std::uint8_t*, versionArray), (char const*, versionString));
QVX_ICU(void, u_versionFromUString, (std::uint8_t*, versionArray), (char16_t const*, versionString));
QVX_ICU(void, u_versionToString, (std::uint8_t const*, versionArray), (char*, versionString));
QVX_ICU(void, u_getVersion, (std::uint8_t*, versionArray));
/// @}

} // namespace QvxICU
