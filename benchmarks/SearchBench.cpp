// Comparing and searching beside the classes people would use instead. Needles stand at the end of the text, or
// nowhere; a match earlier than that ends the program.

#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <qvxsys/TStringCore.h>

#ifdef QVXSYS_BENCH_ICU
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#endif
#ifdef QVXSYS_BENCH_QT
#include <QString>
#endif

#include "BenchSupport.h"

namespace {

constexpr std::size_t kLongText = 1 << 19; // units: 1 MB

enum class Case { Sensitive, Insensitive };

// What each library looks a text up with: Prepare keeps texts as the library's own objects, outside the measurement.
struct Own
{
    static constexpr char const* kName = "own";
    using Text = TStringCore;
    static Text Prepare(std::u16string_view s) { return Text(s.data(), static_cast<int>(s.size())); }
    static int Compare(Text const& a, Text const& b, Case c)
    {
        return a.compare(b, c == Case::Sensitive ? TStringCore::CaseSensitive : TStringCore::CaseInsensitive);
    }
    static long Find(Text const& text, Text const& needle, Case c)
    {
        auto const cs = c == Case::Sensitive ? CaseCompare::Sensitive : CaseCompare::Insensitive;
        return text.view().indexOf(needle.view(), 0, cs);
    }
};

struct Standard
{
    static constexpr char const* kName = "std::u16string";
    using Text = std::u16string;
    static Text Prepare(std::u16string_view s) { return Text(s); }
    static int Compare(Text const& a, Text const& b, Case) { return a.compare(b); }
    static long Find(Text const& text, Text const& needle, Case)
    {
        return static_cast<long>(std::u16string_view(text).find(needle));
    }
};

#ifdef QVXSYS_BENCH_QT
struct Qt
{
    static constexpr char const* kName = "QString";
    using Text = QString;
    static Text Prepare(std::u16string_view s) { return QStringView(s.data(), s.size()).toString(); }
    static ::Qt::CaseSensitivity Of(Case c)
    {
        return c == Case::Sensitive ? ::Qt::CaseSensitive : ::Qt::CaseInsensitive;
    }
    static int Compare(Text const& a, Text const& b, Case c) { return a.compare(b, Of(c)); }
    static long Find(Text const& text, Text const& needle, Case c)
    {
        return QStringView(text).indexOf(QStringView(needle), 0, Of(c));
    }
};
#endif

#ifdef QVXSYS_BENCH_ICU
// Insensitive search is folding the text and searching that; StringSearch is ten times as slow.
struct Icu
{
    static constexpr char const* kName = "UnicodeString";
    using Text = icu::UnicodeString;
    static Text Prepare(std::u16string_view s) { return Text(s.data(), static_cast<int>(s.size())); }
    static int Compare(Text const& a, Text const& b, Case c)
    {
        return c == Case::Sensitive ? a.compare(b) : a.caseCompare(b, U_FOLD_CASE_DEFAULT);
    }
    static long Find(Text const& text, Text const& needle, Case c)
    {
        if (c == Case::Sensitive) {
            return text.indexOf(needle);
        }
        return Text(text).foldCase().indexOf(Text(needle).foldCase());
    }
};
#endif

// ---- rows

template<class T>
void CompareRow(std::string const& row, std::u16string const& a, std::u16string const& b, Case c)
{
    auto const op = [a = T::Prepare(a), b = T::Prepare(b), c] {
        int const order = T::Compare(a, b, c);
        benchmark::DoNotOptimize(order);
    };
    if constexpr (std::is_same_v<T, Own>) {
        bench::OwnRows(row, op);
    } else {
        bench::Row(row, T::kName, op);
    }
}

template<class T>
void FindRow(std::string const& row, std::u16string const& text, std::u16string const& needle, Case c, long expected)
{
    auto const op = [text = T::Prepare(text), needle = T::Prepare(needle), c, expected] {
        if (long const at = T::Find(text, needle, c); at != expected) {
            std::fprintf(stderr, "found at %ld instead of %ld\n", at, expected);
            std::abort();
        }
    };
    if constexpr (std::is_same_v<T, Own>) {
        bench::OwnRows(row, op);
    } else {
        bench::Row(row, T::kName, op);
    }
}

std::u16string Repeated(std::u16string_view alphabet, std::size_t n)
{
    std::u16string s;
    for (std::size_t i = 0; i < n; ++i) {
        s += alphabet[i % alphabet.size()];
    }
    return s;
}

void CompareRows()
{
    std::u16string const lower = u"abcdefghijklmnopqrstuvwxyz";
    std::u16string const upper = u"ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::u16string cyrillic;
    std::u16string cyrillicUpper;
    for (unsigned i = 0; i < 32; ++i) {
        cyrillic += static_cast<char16_t>(0x430 + i);
        cyrillicUpper += static_cast<char16_t>(0x410 + i);
    }
    for (std::size_t const n : {8u, 64u, 4096u}) {
        std::string const length = std::to_string(n);
        auto const rows = [&]<class T>(T) {
            std::u16string other = Repeated(lower, n);
            other.back() = u'!';
            CompareRow<T>("a11 compare, " + length, Repeated(lower, n), other, Case::Sensitive);
            if constexpr (!std::is_same_v<T, Standard>) {
                CompareRow<T>("a12 compare folded, ASCII, " + length, Repeated(lower, n), Repeated(upper, n),
                              Case::Insensitive);
                CompareRow<T>("a13 compare folded, Cyrillic, " + length, Repeated(cyrillic, n),
                              Repeated(cyrillicUpper, n), Case::Insensitive);
                CompareRow<T>("a14 compare folded, Cyrillic, same text, " + length, Repeated(cyrillic, n),
                              Repeated(cyrillic, n), Case::Insensitive);
            }
        };
        rows(Own());
        rows(Standard());
#ifdef QVXSYS_BENCH_QT
        rows(Qt());
#endif
#ifdef QVXSYS_BENCH_ICU
        rows(Icu());
#endif
    }
}

// Words whose letters are about as frequent as in English (or, moved by `base`, in some other alphabet).
std::u16string Words(std::size_t n, char16_t base)
{
    static constexpr std::u16string_view letters = u"eeeeeeeeeeeetttttttttaaaaaaaaoooooooiiiiiiinnnnnnnssssss"
                                                   u"hhhhhhrrrrrrddddlllluuucccmmmwwffggyyppbvk           ";
    std::mt19937 random(5);
    std::u16string text;
    for (std::size_t i = 0; i < n; ++i) {
        char16_t const c = letters[random() % letters.size()];
        text += c == u' ' ? c : static_cast<char16_t>(c - u'a' + base);
    }
    return text;
}

// Text with the needle at its end.
template<class T>
void FindAtEndRow(std::string const& row, std::u16string text, std::u16string const& written,
                  std::u16string const& needle, Case c)
{
    text.replace(text.size() - written.size(), written.size(), written);
    FindRow<T>(row, text, needle, c, static_cast<long>(text.size() - needle.size()));
}

std::u16string Near(std::size_t before, std::size_t behind)
{
    return std::u16string(before, u'a') + u'b' + std::u16string(behind, u'a');
}

// Nothing but units that could begin, and end, a match of a(512).
std::u16string NearMatches(char16_t a, char16_t b)
{
    std::u16string text(kLongText, a);
    for (std::size_t i = 511; i < kLongText; i += 512) {
        text[i] = b;
    }
    return text;
}

template<class T>
void FindRows()
{
    std::u16string const text = Words(kLongText, u'a');
    std::u16string const needle8 = u"lighters";
    std::u16string const needle32 = u"the harbour lights of no mainland";
    FindAtEndRow<T>("c1 find 1 unit", text, u"!", u"!", Case::Sensitive);
    FindAtEndRow<T>("c2 find 8 units", text, needle8, needle8, Case::Sensitive);
    FindAtEndRow<T>("c2 find 32 units", text, needle32, needle32, Case::Sensitive);
    std::u16string const a(kLongText, u'a');
    FindRow<T>("c3 find a(31)b in a...", a, Near(31, 0), Case::Sensitive, -1);
    FindRow<T>("c3 find a(16)ba(15) in a...", a, Near(16, 15), Case::Sensitive, -1);
    FindRow<T>("c3 find a(512)ba(511) in a...", a, Near(512, 511), Case::Sensitive, -1);
    FindRow<T>("c3 find a(512) in a(511)b...", NearMatches(u'a', u'b'), std::u16string(512, u'a'), Case::Sensitive, -1);
    FindAtEndRow<T>("c4 find 6 units in 56", text.substr(0, 56), u"needle", u"needle", Case::Sensitive);
}

template<class T>
void FindFoldedRows()
{
    std::u16string const text = Words(kLongText, u'a');
    std::u16string const needle8 = u"LIGHTERS";
    std::u16string const needle32 = u"The Harbour Lights of No Mainland";
    FindAtEndRow<T>("c5 find folded, 8 units", text, u"lighters", needle8, Case::Insensitive);
    FindAtEndRow<T>("c5 find folded, 32 units", text, u"the harbour lights of no mainland", needle32,
                    Case::Insensitive);
    FindAtEndRow<T>("c6 find folded, 1 unit", text, u"Z", u"z", Case::Insensitive);
    std::u16string const lower = u"\u0433\u0430\u0432\u0430\u043D\u044C\u0430\u044F";
    std::u16string const upper = u"\u0413\u0410\u0412\u0410\u041D\u042C\u0410\u042F";
    FindAtEndRow<T>("c6 find folded, Cyrillic, 8 units", Words(kLongText, 0x430), lower, upper, Case::Insensitive);
    std::u16string const a(kLongText, u'A');
    FindRow<T>("c7 find folded, a(31)b in A...", a, Near(31, 0), Case::Insensitive, -1);
    if constexpr (!std::is_same_v<typename T::Text, class QString>) { // takes half a second
        FindRow<T>("c7 find folded, a(512)ba(511) in A...", a, Near(512, 511), Case::Insensitive, -1);
        FindRow<T>("c7 find folded, a(512) in A(511)B...", NearMatches(u'A', u'B'), std::u16string(512, u'a'),
                   Case::Insensitive, -1);
    }
    FindAtEndRow<T>("c8 find folded, 6 units in 56", text.substr(0, 56), u"needle", u"NEEDLE", Case::Insensitive);
}

#ifdef QVXSYS_BENCH_ICU
// What a library with ICU at hand would write for the worst case.
long FindByBorders(std::u16string_view text, std::u16string_view needle)
{
    auto const fold = [](char16_t c) { return u_foldCase(c, U_FOLD_CASE_DEFAULT); };
    std::vector<UChar32> folded;
    for (char16_t const c : needle) {
        folded.push_back(fold(c));
    }
    std::vector<std::size_t> border(needle.size());
    for (std::size_t i = 1, k = 0; i < needle.size(); ++i) {
        while (k != 0 && folded[i] != folded[k]) {
            k = border[k - 1];
        }
        border[i] = k += folded[i] == folded[k] ? 1u : 0u;
    }
    for (std::size_t i = 0, k = 0; i < text.size(); ++i) {
        UChar32 const c = fold(text[i]);
        while (k != 0 && c != folded[k]) {
            k = border[k - 1];
        }
        k += c == folded[k] ? 1u : 0u;
        if (k == needle.size()) {
            return static_cast<long>(i + 1 - k);
        }
    }
    return -1;
}

void BordersRow(std::string const& row, std::u16string const& text, std::u16string const& needle)
{
    bench::Row(row, "borders with u_foldCase", [text, needle] {
        long const at = FindByBorders(text, needle);
        benchmark::DoNotOptimize(at);
    });
}
#endif

void RegisterRows()
{
    CompareRows();
    FindRows<Own>();
    FindRows<Standard>();
    FindFoldedRows<Own>();
    bench::Row("c1 find 1 unit", "[memchr]", [text = std::string(2 * kLongText, 'a')] {
        void const* const at = std::memchr(text.data(), '!', text.size());
        benchmark::DoNotOptimize(at);
    });
#ifdef QVXSYS_BENCH_QT
    FindRows<Qt>();
    FindFoldedRows<Qt>();
#endif
#ifdef QVXSYS_BENCH_ICU
    FindRows<Icu>();
    FindFoldedRows<Icu>();
    std::u16string const a(kLongText, u'A');
    BordersRow("c7 find folded, a(31)b in A...", a, Near(31, 0));
    BordersRow("c7 find folded, a(512)ba(511) in A...", a, Near(512, 511));
    BordersRow("c7 find folded, a(512) in A(511)B...", NearMatches(u'A', u'B'), std::u16string(512, u'a'));
#endif
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
