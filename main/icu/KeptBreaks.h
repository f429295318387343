#pragma once
// Opening a break iterator takes ICU up to twenty microseconds, copying one a fraction of one. So those that were
// opened are kept, sixteen for the process, and handed out as copies.

#include <memory>

#include <unicode/brkiter.h>
#include <unicode/locid.h>

#include <qvxsys/ICUTypes.h>

namespace QvxICU44 {

/// A break iterator of the caller's own, without a text. Null with a failure in `status` if ICU has none; else `status`
/// is what ICU said when the kind was first opened: a warning when a parent of the locale was taken. Thread-safe.
[[nodiscard]] std::unique_ptr<icu::BreakIterator> OpenBreaks(QvxICU::ICUBreakIteratorType type,
                                                             icu::Locale const& locale, UErrorCode& status);

} // namespace QvxICU44
