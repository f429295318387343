#pragma once
// `qvx locale`: how a language and its country write dates, numbers and money, sort words and change case.

#include <vector>

#include <qvxsys/ICULocale.h>
#include <qvxsys/TStringCore.h>

#include "Facts.h"

namespace qvx {

struct LocaleOptions
{
    double moment = 0; ///< milliseconds since 1970-01-01T00:00Z
    TStringCore timeZone;
};

/// The moment of a local time, "2024-07-04T13:05:09"; the zone must be known. False for what is none.
[[nodiscard]] bool ReadMoment(TStringCore const& text, TStringCore const& timeZone, double& moment);
[[nodiscard]] bool IsKnownTimeZone(TStringCore const& name);

/// The locale whose data are used for this one: itself, a parent, or, if there are none of its language, the default
/// locale or the root.
[[nodiscard]] std::unique_ptr<QvxICU::ICULocale> DataLocale(QvxICU::ICULocale const& locale);
/// Whether there are data of its language.
[[nodiscard]] bool IsKnown(QvxICU::ICULocale const& locale);

/// Everything that is shown of a locale. What ICU has no text for has the name of ICU's error, and null as its value.
[[nodiscard]] std::vector<FactGroup> LocaleFacts(QvxICU::ICULocale const& locale, LocaleOptions const& options);

} // namespace qvx
