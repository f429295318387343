#pragma once
// ICU's flat functions, all of them, without ICU's headers: one function for each stable one of the families below,
// named t_ plus ICU's name, with the library's own enumerations and opaque handles in place of ICU's.
//
//     using namespace QvxICU;
//     ICUErrorCode status = ICUErrorCode::ZeroError;
//     ICULocalUBreakIteratorPointer const words(t_ubrk_open(ICUBreakIteratorType::Word, "en", text, length, &status));
//     if (ICU_SUCCESS(status)) { // warnings are successes
//         for (std::int32_t at = t_ubrk_first(words.getAlias()); at != ICUBreakDone;
//              at = t_ubrk_next(words.getAlias())) { ... }
//     }
//
// Arguments, results, statuses and thread-safety are those of the function of that name of the ICU in use; what ICU
// returns as a boolean is bool. Failures are reported through ICUErrorCode, never thrown; as in ICU, a function that is
// given a failed status does nothing. What one function opens another closes: <qvxsys/IcuHandles.h> has owners. A call
// costs what ICU's costs and a jump, or a few instructions where a status is carried. Callbacks must not throw.
//
// The functions that the text classes stand on are in <qvxsys/QvxICU.h>, which this header includes. Left out are
// functions that ICU calls deprecated, internal or drafts, and those that take objects of ICU's C++ classes.

#include <qvxsys/IcuCharacters.h>
#include <qvxsys/IcuCollation.h>
#include <qvxsys/IcuConverters.h>
#include <qvxsys/IcuLocales.h>
#include <qvxsys/IcuSets.h>
#include <qvxsys/IcuTexts.h>
#include <qvxsys/QvxICU.h>
