#pragma once
// How wrappers call the ICU object that they own and that ICU may have failed to make.

#include <cmath>
#include <memory>
#include <type_traits>
#include <vector>

#include <unicode/locid.h>
#include <unicode/strenum.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <qvxsys/ICULocale.h>
#include <qvxsys/ICUTypes.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

#include "IcuBridge.h"

namespace QvxICU44 {

inline void Fail(QvxICU::ICUErrorCode& status, QvxICU::ICUErrorCode error) noexcept
{
    if (QvxICU::ICU_SUCCESS(status)) {
        status = error;
    }
}

/// call(object, code) with the caller's status; without an object InvalidStateError. A failed status calls nothing.
/// Returns what the call does, else its type's zero.
template<class Object, class Call>
auto Forward(Object* object, QvxICU::ICUErrorCode& status, Call const& call)
    -> std::invoke_result_t<Call, Object&, UErrorCode&>
{
    if (object == nullptr) {
        Fail(status, QvxICU::ICUErrorCode::InvalidStateError);
    }
    if (QvxICU::ICU_FAILURE(status)) {
        return std::invoke_result_t<Call, Object&, UErrorCode&>();
    }
    Status code(status);
    return call(*object, code);
}

/// The same for calls that have no status.
template<class Object, class Call>
auto Forward(Object* object, Call const& call) -> std::invoke_result_t<Call, Object&>
{
    return object == nullptr ? std::invoke_result_t<Call, Object&>() : call(*object);
}

/// What ICU made, unless it failed: an object whose making failed is no use.
template<class Object>
std::unique_ptr<Object> Made(Object* object, QvxICU::ICUErrorCode status) noexcept
{
    std::unique_ptr<Object> made(object);
    return QvxICU::ICU_SUCCESS(status) ? std::move(made) : nullptr;
}

/// ICU computes with moments that are no numbers as if they were.
[[nodiscard]] inline bool IsMoment(double millis, QvxICU::ICUErrorCode& status) noexcept
{
    if (std::isnan(millis)) {
        Fail(status, QvxICU::ICUErrorCode::IllegalArgumentError);
        return false;
    }
    return true;
}

/// The texts of a list of ICU's; none of a null list.
[[nodiscard]] std::vector<TStringCore> Own(icu::UnicodeString const* texts, int count);
[[nodiscard]] std::vector<TStringCore> Own(std::unique_ptr<icu::StringEnumeration> texts, UErrorCode& code);

[[nodiscard]] std::unique_ptr<QvxICU::ICULocale> Own(icu::Locale const& locale);

/// A time zone by its name; null and IllegalArgumentError if there is none.
[[nodiscard]] std::unique_ptr<icu::TimeZone> MakeTimeZone(TStringView name, QvxICU::ICUErrorCode& status);
[[nodiscard]] TStringCore NameOf(icu::TimeZone const& zone);

} // namespace QvxICU44
