// A collator for which decimal digits are equal, built from the rules that the installed ICU takes.

#include <string>

#include <qvxsys/IcuHandles.h>

namespace QvxICU {
namespace {

void Append(std::u16string& text, char32_t c)
{
    if (c > 0xFFFF) {
        text += static_cast<char16_t>(0xD7C0 + (c >> 10));
        text += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    } else {
        text += static_cast<char16_t>(c);
    }
}

// "&0=*" and all other decimal digits, range by range.
std::u16string DigitsRule(ICUErrorCode& status)
{
    std::u16string rule = u"&0=*";
    ICULocalUSetPointer const digits(t_uset_openPattern(u"[:Nd:]", -1, &status));
    std::int32_t const count = ICU_SUCCESS(status) ? t_uset_getItemCount(digits.getAlias()) : 0;
    for (std::int32_t i = 0; i < count; ++i) {
        char32_t first = 0;
        char32_t last = 0;
        t_uset_getItem(digits.getAlias(), i, &first, &last, nullptr, 0, &status);
        Append(rule, first == U'0' ? U'1' : first);
        rule += u'-';
        Append(rule, last);
    }
    return rule;
}

// What is set by attributes, of the locale and its keywords, is not in the rules.
void CopyAttributes(ICU_Collator const* from, ICU_Collator* to, ICUErrorCode& status)
{
    for (auto const attribute :
         {ICUColAttribute::FrenchCollation, ICUColAttribute::AlternateHandling, ICUColAttribute::CaseFirst,
          ICUColAttribute::CaseLevel, ICUColAttribute::NormalizationMode, ICUColAttribute::Strength}) {
        t_ucol_setAttribute(to, attribute, t_ucol_getAttribute(from, attribute, &status), &status);
    }
    t_ucol_setMaxVariable(to, t_ucol_getMaxVariable(from), &status);
    std::int32_t codes[256];
    std::int32_t const count = t_ucol_getReorderCodes(from, codes, 256, &status);
    t_ucol_setReorderCodes(to, codes, count, &status);
}

} // namespace

ICU_Collator* t_openIgnoreDigitsCollator(char const* locale, ICUErrorCode* status)
{
    if (status == nullptr || ICU_FAILURE(*status)) {
        return nullptr;
    }
    ICULocalUCollatorPointer const base(t_ucol_open(locale, status));
    if (ICU_FAILURE(*status)) {
        return nullptr;
    }
    auto built = ICUErrorCode::ZeroError;
    std::int32_t length = 0;
    char16_t const* const rules = t_ucol_getRules(base.getAlias(), &length);
    std::u16string const all = std::u16string(rules, static_cast<std::size_t>(length)) + DigitsRule(built);
    ICULocalUCollatorPointer result(t_ucol_openRules(all.data(), static_cast<std::int32_t>(all.size()),
                                                     ICUColAttributeValue::Default, ICUColAttributeValue::Default,
                                                     nullptr, &built));
    if (ICU_SUCCESS(built)) {
        CopyAttributes(base.getAlias(), result.getAlias(), built);
    }
    if (ICU_FAILURE(built)) {
        *status = built;
        return nullptr;
    }
    return result.orphan();
}

} // namespace QvxICU
