#pragma once
// How the flat layer's functions are defined: included before a header of table lines (IcuDeclare.h), it turns each
// line into the definition of a function that calls ICU's. The door to ICU's C interface for the sources of the layer.
//
// Arguments are converted one by one by what kPaired says of the two types; a line whose types are not those of ICU's
// function does not compile. Nothing is read or written through a pointer to another type than it points to, but for
// arrays of code points (char32_t for ICU's int32_t) and the structures that IcuTypesCheck.cpp compares: a status and
// other single values that ICU writes are carried in a variable of ICU's type and back.

#include <cstdint>
#include <type_traits>

#include <unicode/ubrk.h>
#include <unicode/ucasemap.h>
#include <unicode/uchar.h>
#include <unicode/uclean.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>
#include <unicode/ucnvsel.h>
#include <unicode/ucol.h>
#include <unicode/ucoleitr.h>
#include <unicode/ucpmap.h>
#include <unicode/ucsdet.h>
#include <unicode/ucurr.h>
#include <unicode/uenum.h>
#include <unicode/ufieldpositer.h>
#include <unicode/uformattable.h>
#include <unicode/uiter.h>
#include <unicode/uloc.h>
#include <unicode/unorm2.h>
#include <unicode/unum.h>
#include <unicode/uregex.h>
#include <unicode/usearch.h>
#include <unicode/uset.h>
#include <unicode/ustring.h>
#include <unicode/utext.h>
#include <unicode/uversion.h>

#include <qvxsys/ICUTypes.h>
#include <qvxsys/IcuConstants.h>
#include <qvxsys/IcuDeclare.h>
#include <qvxsys/IcuProperties.h>

#if U_ICU_VERSION_MAJOR_NUM < 71
// What later versions call these.
inline UConverter* ucnv_clone(UConverter const* converter, UErrorCode* status)
{
    return ucnv_safeClone(converter, nullptr, nullptr, status);
}
inline UCollator* ucol_clone(UCollator const* collator, UErrorCode* status)
{
    return ucol_safeClone(collator, nullptr, nullptr, status);
}
#endif

namespace QvxICU {

struct ICUCharacterIterator;
struct ICUFieldSpan;
struct ICUSerializedSet;

namespace forwarding {

/// Whether a value of the own type stands for one of ICU's. (ICU has no types of its own for number formats and
/// formattable values: both are void*.)
template<class Own, class Theirs>
inline constexpr bool kPaired = std::is_same_v<Own, Theirs>;
template<class Own, class Theirs>
inline constexpr bool kPaired<Own const, Theirs const> = kPaired<Own, Theirs>;
template<class Own, class Theirs>
inline constexpr bool kPaired<Own*, Theirs*> = kPaired<Own, Theirs>;
template<class Own, class... OwnArguments, class Theirs, class... TheirArguments>
inline constexpr bool kPaired<Own(OwnArguments...), Theirs(TheirArguments...)> =
    sizeof...(OwnArguments) == sizeof...(TheirArguments) && kPaired<Own, Theirs> &&
    (kPaired<OwnArguments, TheirArguments> && ...);

#define QVX_ICU_PAIR(OWN, THEIRS)                                                                                      \
    template<>                                                                                                         \
    inline constexpr bool kPaired<OWN, THEIRS> = true

QVX_ICU_PAIR(bool, UBool);
QVX_ICU_PAIR(char32_t, UChar32);
QVX_ICU_PAIR(ICU_Collator, UCollator);
QVX_ICU_PAIR(ICUBreakIterator, UBreakIterator);
QVX_ICU_PAIR(ICUCharacterIterator, UCharIterator);
QVX_ICU_PAIR(ICUCharsetDetector, UCharsetDetector);
QVX_ICU_PAIR(ICUCharsetMatch, UCharsetMatch);
QVX_ICU_PAIR(ICUCodePointMap, UCPMap);
QVX_ICU_PAIR(ICUCollationElements, UCollationElements);
QVX_ICU_PAIR(ICUConverter, UConverter);
QVX_ICU_PAIR(ICUConverterSelector, UConverterSelector);
QVX_ICU_PAIR(ICUEnumeration, UEnumeration);
QVX_ICU_PAIR(ICUFieldPositionIterator, UFieldPositionIterator);
QVX_ICU_PAIR(ICUFieldSpan, UFieldPosition);
QVX_ICU_PAIR(ICUFormattable, UFormattable);
QVX_ICU_PAIR(ICUFromUnicodeArgs, UConverterFromUnicodeArgs);
QVX_ICU_PAIR(ICUNormalizer2, UNormalizer2);
QVX_ICU_PAIR(ICUNumberFormat, UNumberFormat);
QVX_ICU_PAIR(ICUParseError, UParseError);
QVX_ICU_PAIR(ICURegularExpression, URegularExpression);
QVX_ICU_PAIR(ICUSerializedSet, USerializedSet);
QVX_ICU_PAIR(ICUSet, USet);
QVX_ICU_PAIR(ICUStringSearch, UStringSearch);
QVX_ICU_PAIR(ICUText, UText);
QVX_ICU_PAIR(ICUToUnicodeArgs, UConverterToUnicodeArgs);
QVX_ICU_PAIR(UCaseMap, ::UCaseMap);

QVX_ICU_PAIR(ICUAcceptResult, UAcceptResult);
QVX_ICU_PAIR(ICUBlockCode, UBlockCode);
QVX_ICU_PAIR(ICUBreakIteratorType, UBreakIteratorType);
QVX_ICU_PAIR(ICUCharCategory, UCharCategory);
QVX_ICU_PAIR(ICUCharDirection, UCharDirection);
QVX_ICU_PAIR(ICUCharNameChoice, UCharNameChoice);
QVX_ICU_PAIR(ICUCodePointMapRange, UCPMapRangeOption);
QVX_ICU_PAIR(ICUColAttribute, UColAttribute);
QVX_ICU_PAIR(ICUColAttributeValue, UColAttributeValue);
QVX_ICU_PAIR(ICUColBoundMode, UColBoundMode);
QVX_ICU_PAIR(ICUCollationResult, UCollationResult);
QVX_ICU_PAIR(ICUColReorderCode, UColReorderCode);
QVX_ICU_PAIR(ICUColRuleOption, UColRuleOption);
QVX_ICU_PAIR(ICUConverterCallbackReason, UConverterCallbackReason);
QVX_ICU_PAIR(ICUConverterPlatform, UConverterPlatform);
QVX_ICU_PAIR(ICUConverterType, UConverterType);
QVX_ICU_PAIR(ICUConverterUnicodeSet, UConverterUnicodeSet);
QVX_ICU_PAIR(ICUCurrencyUsage, UCurrencyUsage);
QVX_ICU_PAIR(ICUCurrNameStyle, UCurrNameStyle);
QVX_ICU_PAIR(ICUDisplayContext, UDisplayContext);
QVX_ICU_PAIR(ICUDisplayContextType, UDisplayContextType);
QVX_ICU_PAIR(ICUErrorCode, UErrorCode);
QVX_ICU_PAIR(ICUFormattableType, UFormattableType);
QVX_ICU_PAIR(ICULayoutType, ULayoutType);
QVX_ICU_PAIR(ICULocAvailableType, ULocAvailableType);
QVX_ICU_PAIR(ICULocDataLocaleType, ULocDataLocaleType);
QVX_ICU_PAIR(ICUNormalization2Mode, UNormalization2Mode);
QVX_ICU_PAIR(ICUNormalizationCheckResult, UNormalizationCheckResult);
QVX_ICU_PAIR(ICUNumberFormatAttribute, UNumberFormatAttribute);
QVX_ICU_PAIR(ICUNumberFormatStyle, UNumberFormatStyle);
QVX_ICU_PAIR(ICUNumberFormatSymbol, UNumberFormatSymbol);
QVX_ICU_PAIR(ICUNumberFormatTextAttribute, UNumberFormatTextAttribute);
QVX_ICU_PAIR(ICUProperty, UProperty);
QVX_ICU_PAIR(ICUPropertyNameChoice, UPropertyNameChoice);
QVX_ICU_PAIR(ICUSearchAttribute, USearchAttribute);
QVX_ICU_PAIR(ICUSearchAttributeValue, USearchAttributeValue);
QVX_ICU_PAIR(ICUSetSpanCondition, USetSpanCondition);
// General categories and the like are returned as small integers.
QVX_ICU_PAIR(ICUCharCategory, std::int8_t);
#undef QVX_ICU_PAIR

template<class To, class From>
To Converted(From value) noexcept
{
    if constexpr (std::is_same_v<To, From>) {
        return value;
    } else if constexpr (std::is_function_v<std::remove_pointer_t<To>>) {
        return reinterpret_cast<To>(reinterpret_cast<void (*)()>(value));
    } else if constexpr (std::is_pointer_v<To>) {
        return reinterpret_cast<To>(value);
    } else {
        return static_cast<To>(value);
    }
}

/// One argument on its way to ICU.
template<class Own, class Theirs>
class Argument
{
public:
    explicit Argument(Own own) noexcept : m_theirs(Converted<Theirs>(own)) {}
    operator Theirs() const noexcept { return m_theirs; }

private:
    Theirs m_theirs;
};

/// Whether what is pointed to is one value of another type that ICU reads and writes: a status, a boolean, a callback.
template<class Own, class Theirs>
concept CarriedValue = !std::is_const_v<Own> && !std::is_same_v<Own, Theirs> &&
                       (std::is_enum_v<Own> || std::is_same_v<Own, bool> ||
                        (std::is_pointer_v<Own> && std::is_function_v<std::remove_pointer_t<Own>>));

/// Such a value is carried there and back; a null pointer stays one.
template<class Own, class Theirs>
requires CarriedValue<Own, Theirs>
class Argument<Own*, Theirs*>
{
public:
    explicit Argument(Own* own) noexcept : m_own(own), m_theirs(own != nullptr ? Converted<Theirs>(*own) : Theirs{}) {}
    Argument(Argument const&) = delete;
    Argument& operator=(Argument const&) = delete;
    ~Argument()
    {
        if (m_own != nullptr) {
            *m_own = Converted<Own>(m_theirs);
        }
    }
    operator Theirs*() noexcept { return m_own != nullptr ? &m_theirs : nullptr; }

private:
    Own* m_own;
    Theirs m_theirs;
};

/// Calls ICU's function; R is the own type of its result. ICU's booleans are compared with 1.
template<class R, class Result, class... Theirs, class... Own>
[[gnu::always_inline]] inline R Call(Result (*function)(Theirs...), Own... own) noexcept
{
    static_assert(kPaired<R, Result>, "the result is not of the type of ICU's function");
    static_assert(sizeof...(Own) == sizeof...(Theirs), "ICU's function has another number of parameters");
    static_assert((kPaired<Own, Theirs> && ...), "a parameter is not of the type of ICU's function");
    // ICU throws nothing, and callbacks must not: said here, a call whose arguments need no carrying is a jump.
    auto* const quiet = reinterpret_cast<Result (*)(Theirs...) noexcept>(function);
    if constexpr (std::is_void_v<R>) {
        quiet(Argument<Own, Theirs>(own)...);
    } else if constexpr (std::is_same_v<R, bool>) {
        return quiet(Argument<Own, Theirs>(own)...) == 1;
    } else {
        return Converted<R>(quiet(Argument<Own, Theirs>(own)...));
    }
}

} // namespace forwarding
} // namespace QvxICU

#undef QVX_ICU
#undef QVX_ICU_0
#define QVX_ICU(RESULT, NAME, ...)                                                                                     \
    QVXSYS_API RESULT t_##NAME(QVX_ICU_EACH(QVX_ICU_PARAMETER, __VA_ARGS__)) noexcept                                  \
    {                                                                                                                  \
        return forwarding::Call<RESULT>(&::NAME, QVX_ICU_EACH(QVX_ICU_ARGUMENT, __VA_ARGS__));                         \
    }                                                                                                                  \
    static_assert(true)
#define QVX_ICU_0(RESULT, NAME)                                                                                        \
    QVXSYS_API RESULT t_##NAME() noexcept                                                                              \
    {                                                                                                                  \
        return forwarding::Call<RESULT>(&::NAME);                                                                      \
    }                                                                                                                  \
    static_assert(true)
