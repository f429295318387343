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

#include <utility>

#include <qvxsys/IcuFunctions.h>

namespace QvxICU {

/// Owns one Handle, or none, and ends it with Close. The named forms below are meant to be used. Not thread-safe, as
/// what it owns is not.
template<class Handle, auto Close>
class ICULocalPointer
{
public:
    explicit ICULocalPointer(Handle* handle = nullptr) noexcept : m_handle(handle) {}
    ICULocalPointer(ICULocalPointer&& other) noexcept : m_handle(other.orphan()) {}
    ICULocalPointer& operator=(ICULocalPointer&& other) noexcept
    {
        adoptInstead(other.orphan());
        return *this;
    }
    ~ICULocalPointer() { adoptInstead(nullptr); }

    /// What it owns, still owned; null if nothing.
    [[nodiscard]] Handle* getAlias() const noexcept { return m_handle; }
    [[nodiscard]] explicit operator bool() const noexcept { return m_handle != nullptr; }

    /// Gives what it owns to the caller, who closes it.
    [[nodiscard]] Handle* orphan() noexcept { return std::exchange(m_handle, nullptr); }

    /// Closes what it owns and owns `handle` instead.
    void adoptInstead(Handle* handle) noexcept
    {
        if (Handle* const old = std::exchange(m_handle, handle); old != nullptr && old != handle) {
            static_cast<void>(Close(old));
        }
    }

private:
    Handle* m_handle;
};

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
