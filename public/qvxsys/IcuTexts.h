#pragma once
// Flat ICU functions (see <qvxsys/IcuFunctions.h>): break iterators, texts of any storage, character iterators, regular
// expressions, normalisation.
//
//     ICULocalURegularExpressionPointer const words(QvxICU::t_uregex_openC("\\w+", 0, nullptr, &status));
//     QvxICU::t_uregex_setText(words.getAlias(), text, length, &status);
//     while (QvxICU::t_uregex_findNext(words.getAlias(), &status)) { ... }
//
// Positions are units, of a UTF-8 text bytes. Texts are not copied and must outlive their use. Every object belongs to
// one thread at a time, but for normalisers, which ICU owns and which are never closed. Regular expressions have no
// limit of time, and one of eight million bytes of stack, unless t_uregex_setTimeLimit and t_uregex_setStackLimit set
// others: do so for patterns from outside.

#include <cstddef>
#include <cstdint>

#include <qvxsys/ICUTypes.h>
#include <qvxsys/IcuConstants.h>
#include <qvxsys/IcuDeclare.h>

namespace QvxICU {

/// No more boundaries (ICU's UBRK_DONE).
inline constexpr std::int32_t ICUBreakDone = -1;

/// Reads a text of any storage unit by unit: filled by the t_uiter_set... functions or by the application, with ICU's
/// layout and rules. Only the iterator's own functions may change its members.
struct ICUCharacterIterator
{
    /// ICU's.
    void const* context = nullptr;
    /// Units of the text.
    std::int32_t length = 0;
    /// Where iteration begins.
    std::int32_t start = 0;
    /// Where it stands.
    std::int32_t index = 0;
    /// Where iteration ends.
    std::int32_t limit = 0;
    /// ICU's.
    std::int32_t reservedField = 0;
    /// The index of an origin, or where it stands.
    std::int32_t (*getIndex)(ICUCharacterIterator*, ICUIteratorOrigin origin) = nullptr;
    /// Moves by so many units from an origin.
    std::int32_t (*move)(ICUCharacterIterator*, std::int32_t delta, ICUIteratorOrigin origin) = nullptr;
    /// Whether next has something to give.
    bool (*hasNext)(ICUCharacterIterator*) = nullptr;
    /// Whether previous has something to give.
    bool (*hasPrevious)(ICUCharacterIterator*) = nullptr;
    char32_t (*current)(ICUCharacterIterator*) = nullptr; ///< a unit, or ICUNoCodePoint
    /// The unit there, and goes behind it; -1 at the end.
    char32_t (*next)(ICUCharacterIterator*) = nullptr;
    /// The unit before, and goes there; -1 at the start.
    char32_t (*previous)(ICUCharacterIterator*) = nullptr;
    /// ICU's.
    std::int32_t (*reserved)(ICUCharacterIterator*, std::int32_t) = nullptr;
    /// The place, to be given to setState.
    std::uint32_t (*getState)(ICUCharacterIterator const*) = nullptr;
    /// Goes back to a place.
    void (*setState)(ICUCharacterIterator*, std::uint32_t state, ICUErrorCode* status) = nullptr;
};

/// Called while an expression matches, after `steps` steps; false stops the match with RegexStoppedByCaller.
using ICURegexMatchCallback = bool(void const* context, std::int32_t steps);
/// Called while an expression is looked for, before each place; false stops the search with RegexStoppedByCaller.
using ICURegexFindProgressCallback = bool(void const* context, std::int64_t matchIndex);

/// @name Break iterators
/// @{
[[nodiscard]] QVX_ICU(ICUBreakIterator*, ubrk_open, (ICUBreakIteratorType, type), (char const*, locale),
                      (char16_t const*, text), (std::int32_t, textLength), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUBreakIterator*, ubrk_openRules, (char16_t const*, rules), (std::int32_t, rulesLength),
                      (char16_t const*, text), (std::int32_t, textLength), (ICUParseError*, parseError),
                      (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUBreakIterator*, ubrk_openBinaryRules, (std::uint8_t const*, binaryRules),
                      (std::int32_t, rulesLength), (char16_t const*, text), (std::int32_t, textLength),
                      (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUBreakIterator*, ubrk_clone, (ICUBreakIterator const*, iterator), (ICUErrorCode*, status));
QVX_ICU(void, ubrk_close, (ICUBreakIterator*, iterator));
QVX_ICU(void, ubrk_setText, (ICUBreakIterator*, iterator), (char16_t const*, text), (std::int32_t, textLength),
        (ICUErrorCode*, status));
QVX_ICU(void, ubrk_setUText, (ICUBreakIterator*, iterator), (ICUText*, text), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ubrk_current, (ICUBreakIterator const*, iterator));
QVX_ICU(std::int32_t, ubrk_next, (ICUBreakIterator*, iterator));
QVX_ICU(std::int32_t, ubrk_previous, (ICUBreakIterator*, iterator));
QVX_ICU(std::int32_t, ubrk_first, (ICUBreakIterator*, iterator));
QVX_ICU(std::int32_t, ubrk_last, (ICUBreakIterator*, iterator));
QVX_ICU(std::int32_t, ubrk_preceding, (ICUBreakIterator*, iterator), (std::int32_t, offset));
QVX_ICU(std::int32_t, ubrk_following, (ICUBreakIterator*, iterator), (std::int32_t, offset));
QVX_ICU(char const*, ubrk_getAvailable, (std::int32_t, index));
QVX_ICU_0(std::int32_t, ubrk_countAvailable);
QVX_ICU(bool, ubrk_isBoundary, (ICUBreakIterator*, iterator), (std::int32_t, offset));
QVX_ICU(std::int32_t, ubrk_getRuleStatus, (ICUBreakIterator*, iterator));
QVX_ICU(std::int32_t, ubrk_getRuleStatusVec, (ICUBreakIterator*, iterator), (std::int32_t*, fillInVec),
        (std::int32_t, capacity), (ICUErrorCode*, status));
QVX_ICU(char const*, ubrk_getLocaleByType, (ICUBreakIterator const*, iterator), (ICULocDataLocaleType, type),
        (ICUErrorCode*, status));
QVX_ICU(void, ubrk_refreshUText, (ICUBreakIterator*, iterator), (ICUText*, text), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ubrk_getBinaryRules, (ICUBreakIterator*, iterator), (std::uint8_t*, binaryRules),
        (std::int32_t, rulesCapacity), (ICUErrorCode*, status));
/// @}

/// @name Character iterators
/// @{
QVX_ICU(char32_t, uiter_current32, (ICUCharacterIterator*, iter));
QVX_ICU(char32_t, uiter_next32, (ICUCharacterIterator*, iter));
QVX_ICU(char32_t, uiter_previous32, (ICUCharacterIterator*, iter));
QVX_ICU(std::uint32_t, uiter_getState, (ICUCharacterIterator const*, iter));
QVX_ICU(void, uiter_setState, (ICUCharacterIterator*, iter), (std::uint32_t, state), (ICUErrorCode*, status));
QVX_ICU(void, uiter_setString, (ICUCharacterIterator*, iter), (char16_t const*, s), (std::int32_t, length));
QVX_ICU(void, uiter_setUTF16BE, (ICUCharacterIterator*, iter), (char const*, s), (std::int32_t, length));
QVX_ICU(void, uiter_setUTF8, (ICUCharacterIterator*, iter), (char const*, s), (std::int32_t, length));
/// @}

/// @name Texts of any storage
/// Where a function takes an ICUText to fill, null makes it allocate one, which t_utext_close frees.
/// @{
QVX_ICU(ICUText*, utext_close, (ICUText*, text));
[[nodiscard]] QVX_ICU(ICUText*, utext_openUTF8, (ICUText*, text), (char const*, s), (std::int64_t, length),
                      (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUText*, utext_openUChars, (ICUText*, text), (char16_t const*, s), (std::int64_t, length),
                      (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUText*, utext_clone, (ICUText*, dest), (ICUText const*, src), (bool, deep), (bool, readOnly),
                      (ICUErrorCode*, status));
QVX_ICU(bool, utext_equals, (ICUText const*, a), (ICUText const*, b));
QVX_ICU(std::int64_t, utext_nativeLength, (ICUText*, text));
QVX_ICU(bool, utext_isLengthExpensive, (ICUText const*, text));
QVX_ICU(char32_t, utext_char32At, (ICUText*, text), (std::int64_t, nativeIndex));
QVX_ICU(char32_t, utext_current32, (ICUText*, text));
QVX_ICU(char32_t, utext_next32, (ICUText*, text));
QVX_ICU(char32_t, utext_previous32, (ICUText*, text));
QVX_ICU(char32_t, utext_next32From, (ICUText*, text), (std::int64_t, nativeIndex));
QVX_ICU(char32_t, utext_previous32From, (ICUText*, text), (std::int64_t, nativeIndex));
QVX_ICU(std::int64_t, utext_getNativeIndex, (ICUText const*, text));
QVX_ICU(void, utext_setNativeIndex, (ICUText*, text), (std::int64_t, nativeIndex));
QVX_ICU(bool, utext_moveIndex32, (ICUText*, text), (std::int32_t, delta));
QVX_ICU(std::int64_t, utext_getPreviousNativeIndex, (ICUText*, text));
QVX_ICU(std::int32_t, utext_extract, (ICUText*, text), (std::int64_t, nativeStart), (std::int64_t, nativeLimit),
        (char16_t*, dest), (std::int32_t, destCapacity), (ICUErrorCode*, status));
QVX_ICU(bool, utext_isWritable, (ICUText const*, text));
QVX_ICU(bool, utext_hasMetaData, (ICUText const*, text));
QVX_ICU(std::int32_t, utext_replace, (ICUText*, text), (std::int64_t, nativeStart), (std::int64_t, nativeLimit),
        (char16_t const*, replacementText), (std::int32_t, replacementLength), (ICUErrorCode*, status));
QVX_ICU(void, utext_copy, (ICUText*, text), (std::int64_t, nativeStart), (std::int64_t, nativeLimit),
        (std::int64_t, destIndex), (bool, move), (ICUErrorCode*, status));
QVX_ICU(void, utext_freeze, (ICUText*, text));
/// @}

/// @name Regular expressions
/// @{
[[nodiscard]] QVX_ICU(ICURegularExpression*, uregex_open, (char16_t const*, pattern), (std::int32_t, patternLength),
                      (std::uint32_t, flags), (ICUParseError*, pe), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICURegularExpression*, uregex_openUText, (ICUText*, pattern), (std::uint32_t, flags),
                      (ICUParseError*, pe), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICURegularExpression*, uregex_openC, (char const*, pattern), (std::uint32_t, flags),
                      (ICUParseError*, pe), (ICUErrorCode*, status));
QVX_ICU(void, uregex_close, (ICURegularExpression*, expression));
[[nodiscard]] QVX_ICU(ICURegularExpression*, uregex_clone, (ICURegularExpression const*, expression),
                      (ICUErrorCode*, status));
QVX_ICU(char16_t const*, uregex_pattern, (ICURegularExpression const*, expression), (std::int32_t*, patLength),
        (ICUErrorCode*, status));
QVX_ICU(ICUText*, uregex_patternUText, (ICURegularExpression const*, expression), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_flags, (ICURegularExpression const*, expression), (ICUErrorCode*, status));
QVX_ICU(void, uregex_setText, (ICURegularExpression*, expression), (char16_t const*, text), (std::int32_t, textLength),
        (ICUErrorCode*, status));
QVX_ICU(void, uregex_setUText, (ICURegularExpression*, expression), (ICUText*, text), (ICUErrorCode*, status));
QVX_ICU(char16_t const*, uregex_getText, (ICURegularExpression*, expression), (std::int32_t*, textLength),
        (ICUErrorCode*, status));
QVX_ICU(ICUText*, uregex_getUText, (ICURegularExpression*, expression), (ICUText*, dest), (ICUErrorCode*, status));
QVX_ICU(void, uregex_refreshUText, (ICURegularExpression*, expression), (ICUText*, text), (ICUErrorCode*, status));
QVX_ICU(bool, uregex_matches, (ICURegularExpression*, expression), (std::int32_t, startIndex), (ICUErrorCode*, status));
QVX_ICU(bool, uregex_matches64, (ICURegularExpression*, expression), (std::int64_t, startIndex),
        (ICUErrorCode*, status));
QVX_ICU(bool, uregex_lookingAt, (ICURegularExpression*, expression), (std::int32_t, startIndex),
        (ICUErrorCode*, status));
QVX_ICU(bool, uregex_lookingAt64, (ICURegularExpression*, expression), (std::int64_t, startIndex),
        (ICUErrorCode*, status));
QVX_ICU(bool, uregex_find, (ICURegularExpression*, expression), (std::int32_t, startIndex), (ICUErrorCode*, status));
QVX_ICU(bool, uregex_find64, (ICURegularExpression*, expression), (std::int64_t, startIndex), (ICUErrorCode*, status));
QVX_ICU(bool, uregex_findNext, (ICURegularExpression*, expression), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_groupCount, (ICURegularExpression*, expression), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_groupNumberFromName, (ICURegularExpression*, expression), (char16_t const*, groupName),
        (std::int32_t, nameLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_groupNumberFromCName, (ICURegularExpression*, expression), (char const*, groupName),
        (std::int32_t, nameLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_group, (ICURegularExpression*, expression), (std::int32_t, groupNum), (char16_t*, dest),
        (std::int32_t, destCapacity), (ICUErrorCode*, status));
QVX_ICU(ICUText*, uregex_groupUText, (ICURegularExpression*, expression), (std::int32_t, groupNum), (ICUText*, dest),
        (std::int64_t*, groupLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_start, (ICURegularExpression*, expression), (std::int32_t, groupNum),
        (ICUErrorCode*, status));
QVX_ICU(std::int64_t, uregex_start64, (ICURegularExpression*, expression), (std::int32_t, groupNum),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_end, (ICURegularExpression*, expression), (std::int32_t, groupNum),
        (ICUErrorCode*, status));
QVX_ICU(std::int64_t, uregex_end64, (ICURegularExpression*, expression), (std::int32_t, groupNum),
        (ICUErrorCode*, status));
QVX_ICU(void, uregex_reset, (ICURegularExpression*, expression), (std::int32_t, index), (ICUErrorCode*, status));
QVX_ICU(void, uregex_reset64, (ICURegularExpression*, expression), (std::int64_t, index), (ICUErrorCode*, status));
QVX_ICU(void, uregex_setRegion, (ICURegularExpression*, expression), (std::int32_t, regionStart),
        (std::int32_t, regionLimit), (ICUErrorCode*, status));
QVX_ICU(void, uregex_setRegion64, (ICURegularExpression*, expression), (std::int64_t, regionStart),
        (std::int64_t, regionLimit), (ICUErrorCode*, status));
QVX_ICU(void, uregex_setRegionAndStart, (ICURegularExpression*, expression), (std::int64_t, regionStart),
        (std::int64_t, regionLimit), (std::int64_t, startIndex), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_regionStart, (ICURegularExpression const*, expression), (ICUErrorCode*, status));
QVX_ICU(std::int64_t, uregex_regionStart64, (ICURegularExpression const*, expression), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_regionEnd, (ICURegularExpression const*, expression), (ICUErrorCode*, status));
QVX_ICU(std::int64_t, uregex_regionEnd64, (ICURegularExpression const*, expression), (ICUErrorCode*, status));
QVX_ICU(bool, uregex_hasTransparentBounds, (ICURegularExpression const*, expression), (ICUErrorCode*, status));
QVX_ICU(void, uregex_useTransparentBounds, (ICURegularExpression*, expression), (bool, b), (ICUErrorCode*, status));
QVX_ICU(bool, uregex_hasAnchoringBounds, (ICURegularExpression const*, expression), (ICUErrorCode*, status));
QVX_ICU(void, uregex_useAnchoringBounds, (ICURegularExpression*, expression), (bool, b), (ICUErrorCode*, status));
QVX_ICU(bool, uregex_hitEnd, (ICURegularExpression const*, expression), (ICUErrorCode*, status));
QVX_ICU(bool, uregex_requireEnd, (ICURegularExpression const*, expression), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_replaceAll, (ICURegularExpression*, expression), (char16_t const*, replacementText),
        (std::int32_t, replacementLength), (char16_t*, destBuf), (std::int32_t, destCapacity), (ICUErrorCode*, status));
QVX_ICU(ICUText*, uregex_replaceAllUText, (ICURegularExpression*, expression), (ICUText*, replacement),
        (ICUText*, dest), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_replaceFirst, (ICURegularExpression*, expression), (char16_t const*, replacementText),
        (std::int32_t, replacementLength), (char16_t*, destBuf), (std::int32_t, destCapacity), (ICUErrorCode*, status));
QVX_ICU(ICUText*, uregex_replaceFirstUText, (ICURegularExpression*, expression), (ICUText*, replacement),
        (ICUText*, dest), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_appendReplacement, (ICURegularExpression*, expression), (char16_t const*, replacementText),
        (std::int32_t, replacementLength), (char16_t**, destBuf), (std::int32_t*, destCapacity),
        (ICUErrorCode*, status));
QVX_ICU(void, uregex_appendReplacementUText, (ICURegularExpression*, expression), (ICUText*, replacementText),
        (ICUText*, dest), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_appendTail, (ICURegularExpression*, expression), (char16_t**, destBuf),
        (std::int32_t*, destCapacity), (ICUErrorCode*, status));
QVX_ICU(ICUText*, uregex_appendTailUText, (ICURegularExpression*, expression), (ICUText*, dest),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_split, (ICURegularExpression*, expression), (char16_t*, destBuf),
        (std::int32_t, destCapacity), (std::int32_t*, requiredCapacity), (char16_t**, destFields),
        (std::int32_t, destFieldsCapacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_splitUText, (ICURegularExpression*, expression), (ICUText**, destFields),
        (std::int32_t, destFieldsCapacity), (ICUErrorCode*, status));
QVX_ICU(void, uregex_setTimeLimit, (ICURegularExpression*, expression), (std::int32_t, limit), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_getTimeLimit, (ICURegularExpression const*, expression), (ICUErrorCode*, status));
QVX_ICU(void, uregex_setStackLimit, (ICURegularExpression*, expression), (std::int32_t, limit),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, uregex_getStackLimit, (ICURegularExpression const*, expression), (ICUErrorCode*, status));
QVX_ICU(void, uregex_setMatchCallback, (ICURegularExpression*, expression), (ICURegexMatchCallback*, callback),
        (void const*, context), (ICUErrorCode*, status));
QVX_ICU(void, uregex_getMatchCallback, (ICURegularExpression const*, expression), (ICURegexMatchCallback**, callback),
        (void const**, context), (ICUErrorCode*, status));
QVX_ICU(void, uregex_setFindProgressCallback, (ICURegularExpression*, expression),
        (ICURegexFindProgressCallback*, callback), (void const*, context), (ICUErrorCode*, status));
QVX_ICU(void, uregex_getFindProgressCallback, (ICURegularExpression const*, expression),
        (ICURegexFindProgressCallback**, callback), (void const**, context), (ICUErrorCode*, status));
/// @}

/// @name Normalisation
/// @{
QVX_ICU(ICUNormalizer2 const*, unorm2_getNFCInstance, (ICUErrorCode*, status));
QVX_ICU(ICUNormalizer2 const*, unorm2_getNFDInstance, (ICUErrorCode*, status));
QVX_ICU(ICUNormalizer2 const*, unorm2_getNFKCInstance, (ICUErrorCode*, status));
QVX_ICU(ICUNormalizer2 const*, unorm2_getNFKDInstance, (ICUErrorCode*, status));
QVX_ICU(ICUNormalizer2 const*, unorm2_getNFKCCasefoldInstance, (ICUErrorCode*, status));
QVX_ICU(ICUNormalizer2 const*, unorm2_getInstance, (char const*, packageName), (char const*, name),
        (ICUNormalization2Mode, mode), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUNormalizer2*, unorm2_openFiltered, (ICUNormalizer2 const*, normalizer),
                      (ICUSet const*, filterSet), (ICUErrorCode*, status));
QVX_ICU(void, unorm2_close, (ICUNormalizer2*, normalizer));
QVX_ICU(std::int32_t, unorm2_normalize, (ICUNormalizer2 const*, normalizer), (char16_t const*, src),
        (std::int32_t, length), (char16_t*, dest), (std::int32_t, capacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unorm2_normalizeSecondAndAppend, (ICUNormalizer2 const*, normalizer), (char16_t*, first),
        (std::int32_t, firstLength), (std::int32_t, firstCapacity), (char16_t const*, second),
        (std::int32_t, secondLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unorm2_append, (ICUNormalizer2 const*, normalizer), (char16_t*, first),
        (std::int32_t, firstLength), (std::int32_t, firstCapacity), (char16_t const*, second),
        (std::int32_t, secondLength), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unorm2_getDecomposition, (ICUNormalizer2 const*, normalizer), (char32_t, c),
        (char16_t*, decomposition), (std::int32_t, capacity), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unorm2_getRawDecomposition, (ICUNormalizer2 const*, normalizer), (char32_t, c),
        (char16_t*, decomposition), (std::int32_t, capacity), (ICUErrorCode*, status));
QVX_ICU(char32_t, unorm2_composePair, (ICUNormalizer2 const*, normalizer), (char32_t, a), (char32_t, b));
QVX_ICU(std::uint8_t, unorm2_getCombiningClass, (ICUNormalizer2 const*, normalizer), (char32_t, c));
QVX_ICU(bool, unorm2_isNormalized, (ICUNormalizer2 const*, normalizer), (char16_t const*, s), (std::int32_t, length),
        (ICUErrorCode*, status));
QVX_ICU(ICUNormalizationCheckResult, unorm2_quickCheck, (ICUNormalizer2 const*, normalizer), (char16_t const*, s),
        (std::int32_t, length), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, unorm2_spanQuickCheckYes, (ICUNormalizer2 const*, normalizer), (char16_t const*, s),
        (std::int32_t, length), (ICUErrorCode*, status));
QVX_ICU(bool, unorm2_hasBoundaryBefore, (ICUNormalizer2 const*, normalizer), (char32_t, c));
QVX_ICU(bool, unorm2_hasBoundaryAfter, (ICUNormalizer2 const*, normalizer), (char32_t, c));
QVX_ICU(bool, unorm2_isInert, (ICUNormalizer2 const*, normalizer), (char32_t, c));
QVX_ICU(std::int32_t, unorm_compare, (char16_t const*, s1), (std::int32_t, length1), (char16_t const*, s2),
        (std::int32_t, length2), (std::uint32_t, options), (ICUErrorCode*, status));
/// @}

} // namespace QvxICU
