#include <qvxsys/LocaleNormalize.h>

#include <unicode/normalizer2.h>
#include <unicode/normlzr.h>
#include <unicode/unistr.h>

#include "IcuBridge.h"

namespace QvxICU {
namespace {

using QvxICU44::Alias;

// One object per form for the whole process, never to be deleted; null if ICU has no data for it.
icu::Normalizer2 const* Normalizer(ICUNormalization form)
{
    UErrorCode status = U_ZERO_ERROR;
    switch (form) {
    case ICUNormalization::NFC:
        return icu::Normalizer2::getNFCInstance(status);
    case ICUNormalization::NFD:
        return icu::Normalizer2::getNFDInstance(status);
    case ICUNormalization::NFKC:
        return icu::Normalizer2::getNFKCInstance(status);
    case ICUNormalization::NFKD:
        return icu::Normalizer2::getNFKDInstance(status);
    case ICUNormalization::FCD:
        return icu::Normalizer2::getInstance(nullptr, "nfc", UNORM2_FCD, status);
    default:
        return nullptr;
    }
}

TStringCore Normalized(TStringCore const& text, icu::Normalizer2 const* normalizer)
{
    if (normalizer == nullptr) {
        return text;
    }
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString const units = Alias(text);
    std::int32_t const same = normalizer->spanQuickCheckYes(units, status);
    if (U_FAILURE(status) || same == units.length()) {
        return text;
    }
    icu::UnicodeString result = units.tempSubString(0, same);
    normalizer->normalizeSecondAndAppend(result, units.tempSubString(same), status);
    return U_SUCCESS(status) ? QvxICU44::Own(result) : text;
}

} // namespace

TStringCore normalize(TStringCore const& text, ICUNormalization form)
{
    return Normalized(text, Normalizer(form));
}

TStringCore normalizeForSearch(TStringCore const& text)
{
    UErrorCode status = U_ZERO_ERROR;
    return Normalized(text, icu::Normalizer2::getNFKCCasefoldInstance(status));
}

bool isNormalized(TStringView text, ICUNormalization form)
{
    UErrorCode status = U_ZERO_ERROR;
    icu::Normalizer2 const* const normalizer = Normalizer(form);
    return normalizer == nullptr || normalizer->isNormalized(Alias(text), status);
}

bool areEquivalent(TStringView a, TStringView b)
{
    UErrorCode status = U_ZERO_ERROR;
    return icu::Normalizer::compare(Alias(a), Alias(b), 0, status) == 0;
}

} // namespace QvxICU
