// ICU's normalisers, asked first how far a text is normal already: for most texts that is all.

#include <qvxsys/LocaleNormalize.h>

#include <algorithm>

#include <unicode/normlzr.h>
#include <unicode/unistr.h>
#include <unicode/unorm2.h>

#include "IcuBridge.h"
#include "WrittenText.h"

namespace QvxICU {
namespace {

using QvxICU44::Alias;

// One object per form for the whole process, never to be deleted; null if ICU has no data for it.
UNormalizer2 const* Normalizer(ICUNormalization form)
{
    UErrorCode status = U_ZERO_ERROR;
    switch (form) {
    case ICUNormalization::NFC:
        return unorm2_getNFCInstance(&status);
    case ICUNormalization::NFD:
        return unorm2_getNFDInstance(&status);
    case ICUNormalization::NFKC:
        return unorm2_getNFKCInstance(&status);
    case ICUNormalization::NFKD:
        return unorm2_getNFKDInstance(&status);
    case ICUNormalization::FCD:
        return unorm2_getInstance(nullptr, "nfc", UNORM2_FCD, &status);
    default:
        return nullptr;
    }
}

TStringCore Normalized(TStringCore const& text, UNormalizer2 const* normalizer)
{
    if (normalizer == nullptr) {
        return text;
    }
    char16_t const* const units = text.data();
    int const length = text.length();
    UErrorCode checked = U_ZERO_ERROR;
    int const same = unorm2_spanQuickCheckYes(normalizer, units, length, &checked);
    if (U_FAILURE(checked) || same == length) {
        return text;
    }
    auto const write = [&](char16_t* to, int capacity, UErrorCode& status) {
        std::copy_n(units, same, to);
        return unorm2_normalizeSecondAndAppend(normalizer, to, same, capacity, units + same, length - same, &status);
    };
    TStringCore result = QvxICU44::Written(length, text, write);
    // The quick check leaves some questions open, such as combining marks that have nothing to combine with.
    return result.length() == length && std::equal(units, units + length, result.view().data()) ? text : result;
}

} // namespace

TStringCore normalize(TStringCore const& text, ICUNormalization form)
{
    return Normalized(text, Normalizer(form));
}

TStringCore normalizeForSearch(TStringCore const& text)
{
    UErrorCode status = U_ZERO_ERROR;
    return Normalized(text, unorm2_getNFKCCasefoldInstance(&status));
}

bool isNormalized(TStringView text, ICUNormalization form)
{
    UErrorCode status = U_ZERO_ERROR;
    UNormalizer2 const* const normalizer = Normalizer(form);
    return normalizer == nullptr || text.empty() ||
           unorm2_isNormalized(normalizer, text.data(), text.length(), &status) == 1;
}

bool areEquivalent(TStringView a, TStringView b)
{
    UErrorCode status = U_ZERO_ERROR;
    return icu::Normalizer::compare(Alias(a), Alias(b), 0, status) == 0 && U_SUCCESS(status);
}

} // namespace QvxICU
