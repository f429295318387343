// The string class beside the string classes people would use instead: copying, making, appending, joining, comparing.

#include <string>
#include <vector>

#include <qvxsys/TStringCore.h>

#ifdef QVXSYS_BENCH_ICU
#include <unicode/unistr.h>
#endif
#ifdef QVXSYS_BENCH_QT
#include <QString>
#endif

#include "BenchSupport.h"

namespace {

struct Own
{
    using String = TStringCore;
    static constexpr char const* kName = "own";
    static String Make(char16_t const* s, int n) { return String(s, n); }
    static String FromUtf8(char const* s, int n) { return String(s, n); }
    static void Write(String& s) { s.data()[0] = u'!'; }
    static void AppendUnit(String& s, char16_t c) { s.append(c); }
    static void Append(String& s, char16_t const* p, int n) { s.append(p, n); }
};

struct Standard
{
    using String = std::u16string;
    static constexpr char const* kName = "std::u16string";
    static String Make(char16_t const* s, int n) { return String(s, static_cast<std::size_t>(n)); }
    static void Write(String& s) { s[0] = u'!'; }
    static void AppendUnit(String& s, char16_t c) { s.push_back(c); }
    static void Append(String& s, char16_t const* p, int n) { s.append(p, static_cast<std::size_t>(n)); }
};

#ifdef QVXSYS_BENCH_QT
struct Qt
{
    using String = QString;
    static constexpr char const* kName = "QString";
    static QChar const* Chars(char16_t const* s) { return reinterpret_cast<QChar const*>(s); }
    static String Make(char16_t const* s, int n) { return String(Chars(s), n); }
    static String FromUtf8(char const* s, int n) { return QString::fromUtf8(s, n); }
    static void Write(String& s) { s.data()[0] = u'!'; }
    static void AppendUnit(String& s, char16_t c) { s.append(QChar(c)); }
    static void Append(String& s, char16_t const* p, int n) { s.append(Chars(p), n); }
};
#endif

#ifdef QVXSYS_BENCH_ICU
struct Icu
{
    using String = icu::UnicodeString;
    static constexpr char const* kName = "UnicodeString";
    static String Make(char16_t const* s, int n) { return String(s, n); }
    static String FromUtf8(char const* s, int n) { return String::fromUTF8(icu::StringPiece(s, n)); }
    static void Write(String& s) { s.setCharAt(0, u'!'); }
    static void AppendUnit(String& s, char16_t c) { s.append(c); }
    static void Append(String& s, char16_t const* p, int n) { s.append(p, n); }
};
#endif

// What the strings are made from; filled before the first row is run.
std::u16string const g_units = [] {
    std::u16string s;
    for (int i = 0; i < 4096; ++i) {
        s += static_cast<char16_t>(u'a' + i % 26);
    }
    return s;
}();
std::string const g_bytes(g_units.begin(), g_units.end());

template<class T>
void CopyRows()
{
    using String = typename T::String;
    for (int const n : {7, 14, 100, 4096}) {
        auto const size = std::to_string(n);
        bench::Row((n < 15     ? "a1 copy "
                    : n == 100 ? "a2 copy "
                               : "a3 copy ") +
                       size,
                   T::kName, [source = T::Make(g_units.data(), n)] {
                       String copy(source);
                       benchmark::DoNotOptimize(copy);
                   });
    }
    bench::Row("a4 copy, then write, 100", T::kName, [source = T::Make(g_units.data(), 100)] {
        String copy(source);
        T::Write(copy);
        benchmark::DoNotOptimize(copy);
    });
}

template<class T>
void MakeRows()
{
    using String = typename T::String;
    for (int const n : {7, 14, 100}) {
        auto const size = std::to_string(n);
        bench::Row("a5 make from UTF-16, " + size, T::kName, [source = g_units.data(), n] {
            String made = T::Make(source, n);
            benchmark::DoNotOptimize(made);
        });
        if constexpr (requires { T::FromUtf8(nullptr, 0); }) {
            bench::Row("a6 make from UTF-8, " + size, T::kName, [source = g_bytes.data(), n] {
                String made = T::FromUtf8(source, n);
                benchmark::DoNotOptimize(made);
            });
        }
    }
}

template<class T>
void AppendRows()
{
    using String = typename T::String;
    bench::Row("a7 append 1 unit, 1000000 times", T::kName, [times = 1000000, unit = u'x'] {
        String text;
        for (int i = times; i > 0; --i) {
            T::AppendUnit(text, unit);
        }
        benchmark::DoNotOptimize(text);
    });
    bench::Row("a8 append 8 units, 100000 times", T::kName, [times = 100000, source = g_units.data(), n = 8] {
        String text;
        for (int i = times; i > 0; --i) {
            T::Append(text, source, n);
        }
        benchmark::DoNotOptimize(text);
    });
}

template<class T>
void JoinAndCompareRows()
{
    using String = typename T::String;
    for (int const n : {6, 50}) {
        auto const size = std::to_string(n);
        bench::Row("a9 concatenate " + size + " + " + size, T::kName,
                   [a = T::Make(g_units.data(), n), b = T::Make(g_units.data() + 1, n)] {
                       String sum = a + b;
                       benchmark::DoNotOptimize(sum);
                   });
    }
    for (int const n : {8, 64, 4096}) {
        // Made one by one: copies of one string may share a block, and comparing them is then no work.
        bench::Row("a10 equal, " + std::to_string(n), T::kName,
                   [a = T::Make(g_units.data(), n), b = T::Make(g_units.data(), n)] {
                       bool const equal = a == b;
                       benchmark::DoNotOptimize(equal);
                   });
    }
}

// The bounds: what storing the units alone costs, and comparing them.
void BoundRows()
{
    bench::Row("a7 append 1 unit, 1000000 times", "[std::vector]", [times = 1000000, unit = u'x'] {
        std::vector<char16_t> text;
        for (int i = times; i > 0; --i) {
            text.push_back(unit);
        }
        benchmark::DoNotOptimize(text);
    });
    for (std::size_t const n : {8u, 64u, 4096u}) {
        bench::Row("a10 equal, " + std::to_string(n), "[memcmp]", [a = g_units, b = g_units, n] {
            bool const equal = std::memcmp(a.data(), b.data(), n * sizeof(char16_t)) == 0;
            benchmark::DoNotOptimize(equal);
        });
    }
}

template<class T>
void RowsOf()
{
    CopyRows<T>();
    MakeRows<T>();
    AppendRows<T>();
    JoinAndCompareRows<T>();
}

void RegisterRows()
{
    RowsOf<Own>();
    RowsOf<Standard>();
#ifdef QVXSYS_BENCH_QT
    RowsOf<Qt>();
#endif
#ifdef QVXSYS_BENCH_ICU
    RowsOf<Icu>();
#endif
    BoundRows();
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
