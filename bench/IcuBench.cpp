// The flat layer over ICU beside ICU's own functions: what a forwarded call costs.

#include <cstdlib>
#include <iterator>

#include <unicode/ubrk.h>
#include <unicode/ucol.h>
#include <unicode/unorm2.h>
#include <unicode/unum.h>
#include <unicode/uregex.h>
#include <unicode/ustring.h>

#include <qvxsys/IcuHandles.h>

#include "BenchSupport.h"

namespace {

using namespace QvxICU;

char16_t const* const kWords[] = {u"Stra\u00DFe", u"strasse", u"Stra\u00DFen", u"cote", u"c\u00F4t\u00E9", u"Zebra"};
char16_t const kText[] = u"The price of 12 eggs is 3.50, of 144 it is 39.90 today.";
constexpr int kLength = static_cast<int>(std::size(kText)) - 1;

// Objects live until the program ends, as those of the rows do.
template<class Handle>
Handle* Opened(Handle* handle)
{
    if (handle == nullptr) {
        std::abort();
    }
    return handle;
}

void Collation()
{
    auto status = ICUErrorCode::ZeroError;
    UErrorCode code = U_ZERO_ERROR;
    bench::Row("l1 ucol_strcoll", "own", [c = Opened(t_ucol_open("de", &status))] {
        for (char16_t const* const word : kWords) {
            benchmark::DoNotOptimize(t_ucol_strcoll(c, word, -1, kWords[0], -1));
        }
    });
    bench::Row("l1 ucol_strcoll", "ICU", [c = Opened(ucol_open("de", &code))] {
        for (char16_t const* const word : kWords) {
            benchmark::DoNotOptimize(ucol_strcoll(c, word, -1, kWords[0], -1));
        }
    });
    bench::Row("l1 ucol_getSortKey", "own", [c = Opened(t_ucol_open("de", &status))] {
        std::uint8_t key[64];
        benchmark::DoNotOptimize(t_ucol_getSortKey(c, kWords[4], -1, key, 64));
    });
    bench::Row("l1 ucol_getSortKey", "ICU", [c = Opened(ucol_open("de", &code))] {
        std::uint8_t key[64];
        benchmark::DoNotOptimize(ucol_getSortKey(c, kWords[4], -1, key, 64));
    });
}

void Searching()
{
    auto status = ICUErrorCode::ZeroError;
    UErrorCode code = U_ZERO_ERROR;
    auto* const own = Opened(t_uregex_openC("[0-9]+", 0, nullptr, &status));
    t_uregex_setText(own, kText, kLength, &status);
    bench::Row("l1 uregex_find", "own", [own] {
        auto found = ICUErrorCode::ZeroError;
        for (std::int32_t at = 0; t_uregex_find(own, at, &found); at = t_uregex_end(own, 0, &found)) {
        }
    });
    auto* const theirs = Opened(uregex_openC("[0-9]+", 0, nullptr, &code));
    uregex_setText(theirs, kText, kLength, &code);
    bench::Row("l1 uregex_find", "ICU", [theirs] {
        UErrorCode found = U_ZERO_ERROR;
        for (std::int32_t at = 0; uregex_find(theirs, at, &found) != 0; at = uregex_end(theirs, 0, &found)) {
        }
    });
    bench::Row("l1 ubrk_next, words", "own",
               [b = Opened(t_ubrk_open(ICUBreakIteratorType::Word, "en", kText, kLength, &status))] {
                   t_ubrk_first(b);
                   while (t_ubrk_next(b) != ICUBreakDone) {
                   }
               });
    bench::Row("l1 ubrk_next, words", "ICU", [b = Opened(ubrk_open(UBRK_WORD, "en", kText, kLength, &code))] {
        ubrk_first(b);
        while (ubrk_next(b) != UBRK_DONE) {
        }
    });
}

void Writing()
{
    auto status = ICUErrorCode::ZeroError;
    UErrorCode code = U_ZERO_ERROR;
    bench::Row("l1 unum_formatDouble", "own",
               [f = Opened(t_unum_open(ICUNumberFormatStyle::Decimal, nullptr, 0, "de", nullptr, &status))] {
                   char16_t units[32];
                   auto written = ICUErrorCode::ZeroError;
                   benchmark::DoNotOptimize(t_unum_formatDouble(f, 1234.5, units, 32, nullptr, &written));
               });
    bench::Row("l1 unum_formatDouble", "ICU", [f = Opened(unum_open(UNUM_DECIMAL, nullptr, 0, "de", nullptr, &code))] {
        char16_t units[32];
        UErrorCode written = U_ZERO_ERROR;
        benchmark::DoNotOptimize(unum_formatDouble(f, 1234.5, units, 32, nullptr, &written));
    });
    bench::Row("l1 unorm2_normalize, NFC", "own", [n = Opened(t_unorm2_getNFCInstance(&status))] {
        char16_t units[64];
        auto written = ICUErrorCode::ZeroError;
        benchmark::DoNotOptimize(t_unorm2_normalize(n, kText, kLength, units, 64, &written));
    });
    bench::Row("l1 unorm2_normalize, NFC", "ICU", [n = Opened(unorm2_getNFCInstance(&code))] {
        char16_t units[64];
        UErrorCode written = U_ZERO_ERROR;
        benchmark::DoNotOptimize(unorm2_normalize(n, kText, kLength, units, 64, &written));
    });
    bench::Row("l1 u_countChar32", "own", [] { benchmark::DoNotOptimize(t_u_countChar32(kText, kLength)); });
    bench::Row("l1 u_countChar32", "ICU", [] { benchmark::DoNotOptimize(u_countChar32(kText, kLength)); });
}

void RegisterRows()
{
    Collation();
    Searching();
    Writing();
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
