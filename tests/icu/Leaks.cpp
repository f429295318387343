// Opens one of everything through owners, with good and with bad arguments, and cleans ICU up: not one of ICU's
// allocations may be left. (Under AddressSanitizer the leak check looks at the rest of the program.)

#include <cstdlib>
#include <iostream>

#include <qvxsys/qvxsys.h>

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

// For calls that may fail or not.
ICUErrorCode* Any()
{
    static ICUErrorCode status;
    return &(status = ICUErrorCode::ZeroError);
}

void OpenEverything(char const* locale, char16_t const* text, char16_t const* rules)
{
    ICULocalUBreakIteratorPointer const breaks(t_ubrk_openRules(rules, -1, text, -1, nullptr, Any()));
    ICULocalUBreakIteratorPointer const words(t_ubrk_open(ICUBreakIteratorType::Word, locale, text, -1, Any()));
    static_cast<void>(QvxICU::words(text, *ICULocale::createFromName(locale)).begin()); // keeps a break iterator
    ICULocalUCaseMapPointer const cases(t_ucasemap_open(locale, 0, Any()));
    ICULocalUCharsetDetectorPointer const detector(t_ucsdet_open(Any()));
    t_ucsdet_setText(detector.getAlias(), "Gr\xFC\xDF Gott", 9, Any());
    static_cast<void>(t_ucsdet_detect(detector.getAlias(), Any()));
    ICULocalUCollatorPointer const ruled(
        t_ucol_openRules(rules, -1, ICUColAttributeValue::Default, ICUColAttributeValue::Default, nullptr, Any()));
    ICULocalUCollatorPointer const collator(t_openIgnoreDigitsCollator(locale, Any()));
    ICULocalUCollationElementsPointer const elements(t_ucol_openElements(collator.getAlias(), text, -1, Any()));
    ICULocalUStringSearchPointer const search(
        t_usearch_openFromCollator(u"a", -1, text, -1, collator.getAlias(), nullptr, Any()));
    ICULocalUConverterPointer const converter(t_ucnv_open(locale, Any()));
    ICULocalUConverterPointer const shiftJis(t_ucnv_open("Shift_JIS", Any()));
    ICULocalUEnumerationPointer const names(t_ucnv_openAllNames(Any()));
    ICULocalUNumberFormatPointer const spelled(
        t_unum_open(ICUNumberFormatStyle::SpellOut, rules, -1, locale, nullptr, Any()));
    ICULocalUFormattablePointer const value(t_ufmt_open(Any()));
    ICULocalUFieldPositionIteratorPointer const fields(t_ufieldpositer_open(Any()));
    ICULocalURegularExpressionPointer const regex(t_uregex_open(rules, -1, 0, nullptr, Any()));
    t_uregex_setText(regex.getAlias(), text, -1, Any());
    static_cast<void>(t_uregex_find(regex.getAlias(), 0, Any()));
    ICULocalUSetPointer set(t_uset_openPattern(rules, -1, Any()));
    ICULocalUSetPointer const greek(t_uset_openPattern(u"[:Greek:]", -1, Any()));
    ICULocalUNormalizer2Pointer const normalizer(
        t_unorm2_openFiltered(t_unorm2_getNFKCInstance(Any()), greek.getAlias(), Any()));
    ICULocalUTextPointer const utext(t_utext_openUTF8(nullptr, "text", -1, Any()));
    char const* const charsets[] = {"windows-1252", "no such charset"};
    ICULocalUConverterSelectorPointer const selector(
        t_ucnvsel_open(charsets, 2, nullptr, ICUConverterUnicodeSet::RoundtripSet, Any()));

    auto const place = ICULocale::createFromName(locale);
    auto const format = ICUSimpleDateFormat::createInstance(text, *place, *Any());
    auto const clone = format->clone();
    clone->setCalendar(*ICUCalendar::createInstance(*place, *Any()), *Any());
    clone->setNumberFormat(*format->getNumberFormat(*Any()), *Any());
    static_cast<void>(clone->parse(clone->format(0.0, *Any()), *Any()));
    static_cast<void>(format->getDateFormatSymbols(*Any())->clone());
    static_cast<void>(ICUDateTimePatternGenerator::createInstance(locale, *Any())->clone());
    static_cast<void>(ICUString::createInstance(text)->toTitle(*place).clone());
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
    bool const freed = ICU_SUCCESS(status) && g_most > 100 && g_live == 0;
    static_cast<void>(ICUDateTimePatternGenerator::createInstance("de", status)); // which would crash
    return freed && status == ICUErrorCode::InvalidStateError ? 0 : 1;
}
