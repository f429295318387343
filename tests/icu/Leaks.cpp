// Opens one of everything through owners, with good and with bad arguments, and cleans ICU up: not one of ICU's
// allocations may be left. (Under AddressSanitizer the leak check looks at the rest of the program.)

#include <cstdlib>
#include <iostream>

#include <qvxsys/IcuHandles.h>

using namespace QvxICU;

namespace {

long g_live = 0;
long g_most = 0;

void* Allocate(void const*, std::size_t size)
{
    g_most = ++g_live > g_most ? g_live : g_most;
    return std::malloc(size);
}

void* Reallocate(void const*, void* memory, std::size_t size)
{
    g_live += memory == nullptr ? 1 : 0;
    return std::realloc(memory, size);
}

void Free(void const*, void* memory)
{
    g_live -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

void OpenEverything(char const* locale, char16_t const* text, char16_t const* rules)
{
    ICUErrorCode status[16] = {};
    ICULocalUBreakIteratorPointer const breaks(t_ubrk_openRules(rules, -1, text, -1, nullptr, &status[0]));
    ICULocalUBreakIteratorPointer const words(t_ubrk_open(ICUBreakIteratorType::Word, locale, text, -1, &status[0]));
    ICULocalUCaseMapPointer const cases(t_ucasemap_open(locale, 0, &status[1]));
    ICULocalUCharsetDetectorPointer const detector(t_ucsdet_open(&status[2]));
    t_ucsdet_setText(detector.getAlias(), "Gr\xFC\xDF Gott", 9, &status[2]);
    if (t_ucsdet_detect(detector.getAlias(), &status[2]) == nullptr && ICU_SUCCESS(status[2])) {
        std::cerr << "no match\n";
    }
    ICULocalUCollatorPointer const ruled(
        t_ucol_openRules(rules, -1, ICUColAttributeValue::Default, ICUColAttributeValue::Default, nullptr, &status[3]));
    ICULocalUCollatorPointer const collator(t_openIgnoreDigitsCollator(locale, &status[4]));
    ICULocalUCollationElementsPointer const elements(t_ucol_openElements(collator.getAlias(), text, -1, &status[4]));
    ICULocalUStringSearchPointer const search(
        t_usearch_openFromCollator(u"a", -1, text, -1, collator.getAlias(), nullptr, &status[5]));
    ICULocalUConverterPointer const converter(t_ucnv_open(locale, &status[6]));
    ICULocalUConverterPointer const shiftJis(t_ucnv_open("Shift_JIS", &status[7]));
    ICULocalUEnumerationPointer const names(t_ucnv_openAllNames(&status[7]));
    ICULocalUNumberFormatPointer const spelled(
        t_unum_open(ICUNumberFormatStyle::SpellOut, rules, -1, locale, nullptr, &status[8]));
    ICULocalUFormattablePointer const value(t_ufmt_open(&status[9]));
    ICULocalUFieldPositionIteratorPointer const fields(t_ufieldpositer_open(&status[9]));
    ICULocalURegularExpressionPointer const regex(t_uregex_open(rules, -1, 0, nullptr, &status[10]));
    t_uregex_setText(regex.getAlias(), text, -1, &status[10]);
    static_cast<void>(t_uregex_find(regex.getAlias(), 0, &status[10]));
    ICULocalUSetPointer set(t_uset_openPattern(rules, -1, &status[11]));
    ICULocalUSetPointer const greek(t_uset_openPattern(u"[:Greek:]", -1, &status[12]));
    ICULocalUNormalizer2Pointer const normalizer(
        t_unorm2_openFiltered(t_unorm2_getNFKCInstance(&status[12]), greek.getAlias(), &status[12]));
    ICULocalUTextPointer const utext(t_utext_openUTF8(nullptr, "text", -1, &status[13]));
    char const* const charsets[] = {"windows-1252", "no such charset"};
    ICULocalUConverterSelectorPointer const selector(
        t_ucnvsel_open(charsets, 2, nullptr, ICUConverterUnicodeSet::RoundtripSet, &status[14]));
}

} // namespace

int main()
{
    auto status = ICUErrorCode::ZeroError;
    t_u_setMemoryFunctions(nullptr, Allocate, Reallocate, Free, &status);
    for (char const* const locale : {"de", "th_TH", "zz_QQ", "no such @ locale"}) {
        for (char16_t const* const text : {u"text 12", u"", u"\xD800 \xDC00"}) {
            for (char16_t const* const rules : {u"[a-z]", u"&a<b", u"$a=[b];$a;", u"(", u"[", u"%x: a;"}) {
                OpenEverything(locale, text, rules);
            }
        }
    }
    t_u_cleanup();
    std::cout << g_most << " allocations at the most, " << g_live << " left\n";
    return ICU_SUCCESS(status) && g_most > 100 && g_live == 0 ? 0 : 1;
}
