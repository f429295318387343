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

// What the library keeps, the wrappers, and handles of some kinds.
void OpenEverything(char const* locale, char16_t const* text, char16_t const* rules)
{
    static_cast<void>(QvxICU::words(text, *ICULocale::createFromName(locale)).begin()); // keeps a break iterator
    ICULocalUBreakIteratorPointer const breaks(t_ubrk_openRules(rules, -1, text, -1, nullptr, Any()));
    ICULocalUCollatorPointer const collator(t_openIgnoreDigitsCollator(locale, Any()));
    ICULocalUConverterPointer const converter(t_ucnv_open(locale, Any()));
    ICULocalUNumberFormatPointer const spelled(
        t_unum_open(ICUNumberFormatStyle::SpellOut, rules, -1, locale, nullptr, Any()));
    ICULocalURegularExpressionPointer const regex(t_uregex_open(rules, -1, 0, nullptr, Any()));
    ICULocalUSetPointer const set(t_uset_openPattern(rules, -1, Any()));

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
