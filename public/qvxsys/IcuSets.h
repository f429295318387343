#pragma once
// Flat ICU functions (see <qvxsys/IcuFunctions.h>): sets of code points and strings, maps over all code points.
//
//     ICULocalUSetPointer const letters(QvxICU::t_uset_openPattern(u"[[:Greek:]&[:L:]]", -1, &status));
//     bool const greek = QvxICU::t_uset_contains(letters.getAlias(), U'\u03B1');
//
// A set may be read by several threads while none changes it; a frozen one cannot be changed.

#include <cstddef>
#include <cstdint>

#include <qvxsys/ICUTypes.h>
#include <qvxsys/IcuConstants.h>
#include <qvxsys/IcuDeclare.h>
#include <qvxsys/IcuProperties.h>

namespace QvxICU {

/// A set in its serialised form, filled by t_uset_getSerializedSet; points into what it was made from.
struct ICUSerializedSet
{
    /// ICU's.
    std::uint16_t const* array = nullptr;
    /// ICU's.
    std::int32_t bmpLength = 0;
    /// ICU's.
    std::int32_t length = 0;
    /// ICU's.
    std::uint16_t staticArray[8] = {};
};

/// The value that a map's range is to have for a value of the map.
using ICUCodePointMapFilter = std::uint32_t(void const* context, std::uint32_t value);

/// @name Sets
/// @{
[[nodiscard]] QVX_ICU_0(ICUSet*, uset_openEmpty);
[[nodiscard]] QVX_ICU(ICUSet*, uset_open, (char32_t, start), (char32_t, end));
[[nodiscard]] QVX_ICU(ICUSet*, uset_openPattern, (char16_t const*, pattern), (std::int32_t, patternLength),
                      (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUSet*, uset_openPatternOptions, (char16_t const*, pattern), (std::int32_t, patternLength),
                      (std::uint32_t, options), (ICUErrorCode*, status));
QVX_ICU(void, uset_close, (ICUSet*, set));
[[nodiscard]] QVX_ICU(ICUSet*, uset_clone, (ICUSet const*, set));
QVX_ICU(bool, uset_isFrozen, (ICUSet const*, set));
QVX_ICU(void, uset_freeze, (ICUSet*, set));
QVX_ICU(ICUSet*, uset_cloneAsThawed, (ICUSet const*, set));
QVX_ICU(void, uset_set, (ICUSet*, set), (char32_t, start), (char32_t, end));
QVX_ICU(std::int32_t, uset_applyPattern, (ICUSet*, set), (char16_t const*, pattern), (std::int32_t, patternLength),
        (std::uint32_t, options), (ICUErrorCode*, status));
QVX_ICU(void, uset_applyIntPropertyValue, (ICUSet*, set), (ICUProperty, prop), (std::int32_t, value),
        (ICUErrorCode*, status));
QVX_ICU(void, uset_applyPropertyAlias, (ICUSet*, set), (char16_t const*, prop), (std::int32_t, propLength),
        (char16_t const*, value), (std::int32_t, valueLength), (ICUErrorCode*, status));
QVX_ICU(bool, uset_resemblesPattern, (char16_t const*, pattern), (std::int32_t, patternLength), (std::int32_t, pos));
QVX_ICU(std::int32_t, uset_toPattern, (ICUSet const*, set), (char16_t*, result), (std::int32_t, resultCapacity),
        (bool, escapeUnprintable), (ICUErrorCode*, status));
QVX_ICU(void, uset_add, (ICUSet*, set), (char32_t, c));
QVX_ICU(void, uset_addAll, (ICUSet*, set), (ICUSet const*, additionalSet));
QVX_ICU(void, uset_addRange, (ICUSet*, set), (char32_t, start), (char32_t, end));
QVX_ICU(void, uset_addString, (ICUSet*, set), (char16_t const*, str), (std::int32_t, strLen));
QVX_ICU(void, uset_addAllCodePoints, (ICUSet*, set), (char16_t const*, str), (std::int32_t, strLen));
QVX_ICU(void, uset_remove, (ICUSet*, set), (char32_t, c));
QVX_ICU(void, uset_removeRange, (ICUSet*, set), (char32_t, start), (char32_t, end));
QVX_ICU(void, uset_removeString, (ICUSet*, set), (char16_t const*, str), (std::int32_t, strLen));
QVX_ICU(void, uset_removeAllCodePoints, (ICUSet*, set), (char16_t const*, str), (std::int32_t, length));
QVX_ICU(void, uset_removeAll, (ICUSet*, set), (ICUSet const*, removeSet));
QVX_ICU(void, uset_retain, (ICUSet*, set), (char32_t, start), (char32_t, end));
QVX_ICU(void, uset_retainString, (ICUSet*, set), (char16_t const*, str), (std::int32_t, length));
QVX_ICU(void, uset_retainAllCodePoints, (ICUSet*, set), (char16_t const*, str), (std::int32_t, length));
QVX_ICU(void, uset_retainAll, (ICUSet*, set), (ICUSet const*, retain));
QVX_ICU(void, uset_compact, (ICUSet*, set));
QVX_ICU(void, uset_complement, (ICUSet*, set));
QVX_ICU(void, uset_complementRange, (ICUSet*, set), (char32_t, start), (char32_t, end));
QVX_ICU(void, uset_complementString, (ICUSet*, set), (char16_t const*, str), (std::int32_t, length));
QVX_ICU(void, uset_complementAllCodePoints, (ICUSet*, set), (char16_t const*, str), (std::int32_t, length));
QVX_ICU(void, uset_complementAll, (ICUSet*, set), (ICUSet const*, complement));
QVX_ICU(void, uset_clear, (ICUSet*, set));
QVX_ICU(void, uset_closeOver, (ICUSet*, set), (std::int32_t, attributes));
QVX_ICU(void, uset_removeAllStrings, (ICUSet*, set));
QVX_ICU(bool, uset_isEmpty, (ICUSet const*, set));
QVX_ICU(bool, uset_hasStrings, (ICUSet const*, set));
QVX_ICU(bool, uset_contains, (ICUSet const*, set), (char32_t, c));
QVX_ICU(bool, uset_containsRange, (ICUSet const*, set), (char32_t, start), (char32_t, end));
QVX_ICU(bool, uset_containsString, (ICUSet const*, set), (char16_t const*, str), (std::int32_t, strLen));
QVX_ICU(std::int32_t, uset_indexOf, (ICUSet const*, set), (char32_t, c));
QVX_ICU(char32_t, uset_charAt, (ICUSet const*, set), (std::int32_t, charIndex));
QVX_ICU(std::int32_t, uset_size, (ICUSet const*, set));
QVX_ICU(std::int32_t, uset_getRangeCount, (ICUSet const*, set));
QVX_ICU(std::int32_t, uset_getItemCount, (ICUSet const*, set));
QVX_ICU(std::int32_t, uset_getItem, (ICUSet const*, set), (std::int32_t, itemIndex), (char32_t*, start),
        (char32_t*, end), (char16_t*, str), (std::int32_t, strCapacity), (ICUErrorCode*, status));
QVX_ICU(bool, uset_containsAll, (ICUSet const*, set1), (ICUSet const*, set2));
QVX_ICU(bool, uset_containsAllCodePoints, (ICUSet const*, set), (char16_t const*, str), (std::int32_t, strLen));
QVX_ICU(bool, uset_containsNone, (ICUSet const*, set1), (ICUSet const*, set2));
QVX_ICU(bool, uset_containsSome, (ICUSet const*, set1), (ICUSet const*, set2));
QVX_ICU(std::int32_t, uset_span, (ICUSet const*, set), (char16_t const*, s), (std::int32_t, length),
        (ICUSetSpanCondition, spanCondition));
QVX_ICU(std::int32_t, uset_spanBack, (ICUSet const*, set), (char16_t const*, s), (std::int32_t, length),
        (ICUSetSpanCondition, spanCondition));
QVX_ICU(std::int32_t, uset_spanUTF8, (ICUSet const*, set), (char const*, s), (std::int32_t, length),
        (ICUSetSpanCondition, spanCondition));
QVX_ICU(std::int32_t, uset_spanBackUTF8, (ICUSet const*, set), (char const*, s), (std::int32_t, length),
        (ICUSetSpanCondition, spanCondition));
QVX_ICU(bool, uset_equals, (ICUSet const*, set1), (ICUSet const*, set2));
QVX_ICU(std::int32_t, uset_serialize, (ICUSet const*, set), (std::uint16_t*, dest), (std::int32_t, destCapacity),
        (ICUErrorCode*, status));
QVX_ICU(bool, uset_getSerializedSet, (ICUSerializedSet*, fillSet), (std::uint16_t const*, src),
        (std::int32_t, srcLength));
QVX_ICU(void, uset_setSerializedToOne, (ICUSerializedSet*, fillSet), (char32_t, c));
QVX_ICU(bool, uset_serializedContains, (ICUSerializedSet const*, set), (char32_t, c));
QVX_ICU(std::int32_t, uset_getSerializedRangeCount, (ICUSerializedSet const*, set));
QVX_ICU(bool, uset_getSerializedRange, (ICUSerializedSet const*, set), (std::int32_t, rangeIndex), (char32_t*, start),
        (char32_t*, end));
/// @}

/// @name Maps over all code points
/// Maps are ICU's own (t_u_getIntPropertyMap) and never closed.
/// @{
QVX_ICU(std::uint32_t, ucpmap_get, (ICUCodePointMap const*, map), (char32_t, c));
QVX_ICU(char32_t, ucpmap_getRange, (ICUCodePointMap const*, map), (char32_t, start), (ICUCodePointMapRange, option),
        (std::uint32_t, surrogateValue), (ICUCodePointMapFilter*, filter), (void const*, context),
        (std::uint32_t*, value));
/// @}

} // namespace QvxICU
