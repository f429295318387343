#pragma once
// Owners of what the flat ICU functions open: made from the pointer, they close it when they end. They are as large as
// a pointer and can be moved, not copied.
//
//     ICUErrorCode status = ICUErrorCode::ZeroError;
//     ICULocalUCollatorPointer const collator(t_ucol_open("de", &status));
//     if (ICU_FAILURE(status)) { ... } // the pointer is null then, which an owner may hold
//     t_ucol_strcoll(collator.getAlias(), a, -1, b, -1);
//
// Handles that ICU keeps (normalisers by name, maps of properties, matches of a detector) need no owner.

#include <qvxsys/IcuFunctions.h>
#include <qvxsys/IcuPointer.h>

namespace QvxICU {

using ICULocalUBreakIteratorPointer = ICULocalPointer<ICUBreakIterator, t_ubrk_close>;
using ICULocalUCaseMapPointer = ICULocalPointer<UCaseMap, t_ucasemap_close>;
using ICULocalUCharsetDetectorPointer = ICULocalPointer<ICUCharsetDetector, t_ucsdet_close>;
using ICULocalUCollationElementsPointer = ICULocalPointer<ICUCollationElements, t_ucol_closeElements>;
using ICULocalUCollatorPointer = ICULocalPointer<ICU_Collator, t_ucol_close>;
using ICULocalUConverterPointer = ICULocalPointer<ICUConverter, t_ucnv_close>;
using ICULocalUConverterSelectorPointer = ICULocalPointer<ICUConverterSelector, t_ucnvsel_close>;
using ICULocalUEnumerationPointer = ICULocalPointer<ICUEnumeration, t_uenum_close>;
using ICULocalUFieldPositionIteratorPointer = ICULocalPointer<ICUFieldPositionIterator, t_ufieldpositer_close>;
using ICULocalUFormattablePointer = ICULocalPointer<ICUFormattable, t_ufmt_close>;
using ICULocalUNormalizer2Pointer = ICULocalPointer<ICUNormalizer2, t_unorm2_close>; ///< for t_unorm2_openFiltered
using ICULocalUNumberFormatPointer = ICULocalPointer<ICUNumberFormat, t_unum_close>;
using ICULocalURegularExpressionPointer = ICULocalPointer<ICURegularExpression, t_uregex_close>;
using ICULocalUSetPointer = ICULocalPointer<ICUSet, t_uset_close>;
using ICULocalUStringSearchPointer = ICULocalPointer<ICUStringSearch, t_usearch_close>;
using ICULocalUTextPointer = ICULocalPointer<ICUText, t_utext_close>;

} // namespace QvxICU
