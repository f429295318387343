#pragma once
// Normal forms (Unicode Standard Annex #15): one spelling for texts that look the same.
//
//     TStringCore const name = QvxICU::normalizeNFC(u"Zu\u0308rich");      // u"Z\u00FCrich"
//     bool const same = QvxICU::areEquivalent(u"Zu\u0308rich", u"Z\u00FCrich");
//
// NFC composes, NFD decomposes; the K forms also give up differences of form (ligatures, widths, superscripts), for
// searching. Lone surrogates stay as they are. A text that has the form already, as nearly all texts have NFC, is
// returned as the same string, sharing its units. Thread-safe, linear.

#include <qvxsys/ICUTypes.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace QvxICU {

/// FCD is a form that can be compared without being normalised, and more than one text can have it; None returns the
/// text. Throws std::bad_alloc, and what making a string throws when the result is too long for one.
[[nodiscard]] QVXSYS_API TStringCore normalize(TStringCore const& text, ICUNormalization form);
/// Whether normalize would return the text as it is.
[[nodiscard]] QVXSYS_API bool isNormalized(TStringView text, ICUNormalization form);

/// @name By the form's name
/// @{
[[nodiscard]] inline TStringCore normalizeNFC(TStringCore const& text)
{
    return normalize(text, ICUNormalization::NFC);
}
[[nodiscard]] inline TStringCore normalizeNFD(TStringCore const& text)
{
    return normalize(text, ICUNormalization::NFD);
}
[[nodiscard]] inline TStringCore normalizeNFKC(TStringCore const& text)
{
    return normalize(text, ICUNormalization::NFKC);
}
[[nodiscard]] inline TStringCore normalizeNFKD(TStringCore const& text)
{
    return normalize(text, ICUNormalization::NFKD);
}
/// @}

/// NFKC with case folded and what is ignorable removed (NFKC_Casefold): for identifiers and for finding text again.
[[nodiscard]] QVXSYS_API TStringCore normalizeForSearch(TStringCore const& text);

/// Whether two texts are canonically equivalent, that is, have the same NFC.
[[nodiscard]] QVXSYS_API bool areEquivalent(TStringView a, TStringView b);

} // namespace QvxICU
