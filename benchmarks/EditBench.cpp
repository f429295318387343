// Splitting, joining, replacing, trimming and case mapping beside Qt, ICU, Abseil and the standard library.

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <qvxsys/TStringCore.h>

#ifdef QVXSYS_BENCH_ABSL
#include <absl/strings/str_split.h>
#include <absl/strings/string_view.h>
#endif
#ifdef QVXSYS_BENCH_ICU
#include <unicode/unistr.h>
#include <unicode/ustring.h>
#endif
#ifdef QVXSYS_BENCH_QT
#include <QString>
#include <QStringList>
#endif

#include "BenchSupport.h"
#include "BenchText.h"

namespace {

constexpr std::size_t kUnits = 512 * 1024; // 1 MB of UTF-16

// Fields of 1 to 12 units between commas.
std::u16string Csv()
{
    std::u16string text;
    for (unsigned field = 0; text.size() < kUnits; ++field) {
        text.append(1 + field * 7 % 12, static_cast<char16_t>(u'a' + field % 26));
        text += u',';
    }
    return text;
}

// Text in which "marker: " stands about every 100 units.
std::u16string Marked()
{
    std::u16string text;
    for (unsigned i = 0; text.size() < kUnits; ++i) {
        text.append(60 + i * 13 % 60, static_cast<char16_t>(u'a' + i % 12));
        text += u"marker: ";
    }
    return text;
}

#ifdef QVXSYS_BENCH_QT
QString ToQt(std::u16string const& text)
{
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}
#endif

void SplitRows()
{
    std::u16string const csv = Csv();
    std::string const row = "c9 split 1 MB, views";
    bench::Row(row, "own", [text = TStringCore(csv)] {
        auto parts = text.split(u',');
        benchmark::DoNotOptimize(parts.data());
    });
    bench::Row(row, "u16string_view", [csv] {
        std::vector<std::u16string_view> parts;
        std::u16string_view rest = csv;
        for (std::size_t at = rest.find(u','); at != rest.npos; at = rest.find(u',')) {
            parts.push_back(rest.substr(0, at));
            rest.remove_prefix(at + 1);
        }
        parts.push_back(rest);
        benchmark::DoNotOptimize(parts.data());
    });
    std::string const copies = "c9 split 1 MB, strings";
    bench::Row(copies, "own", [text = TStringCore(csv)] {
        auto parts = text.splitCopy(u',');
        benchmark::DoNotOptimize(parts.data());
    });
#ifdef QVXSYS_BENCH_ABSL
    std::string const bytes(csv.begin(), csv.end());
    bench::Row(row, "absl (8-bit)", [bytes] {
        std::vector<absl::string_view> parts = absl::StrSplit(bytes, ',');
        benchmark::DoNotOptimize(parts.data());
    });
    bench::Row(copies, "absl (8-bit)", [bytes] {
        std::vector<std::string> parts = absl::StrSplit(bytes, ',');
        benchmark::DoNotOptimize(parts.data());
    });
#endif
#ifdef QVXSYS_BENCH_QT
    bench::Row(copies, "QString", [text = ToQt(csv)] {
        QStringList parts = text.split(u',');
        benchmark::DoNotOptimize(parts.data());
    });
#endif
}

void JoinRows()
{
    std::string const row = "c10 join 65000 fields";
    TStringCore const csv(Csv());
    auto const parts = csv.splitCopy(u',');
    bench::Row(row, "own", [parts] {
        TStringCore joined = TStringCore::join(parts, u", ");
        benchmark::DoNotOptimize(joined);
    });
    std::vector<std::u16string> standard;
    for (TStringCore const& part : parts) {
        standard.push_back(part.toStdUString());
    }
    bench::Row(row, "std::u16string", [standard] {
        std::u16string joined;
        for (std::u16string const& part : standard) {
            joined += joined.empty() ? u"" : u", ";
            joined += part;
        }
        benchmark::DoNotOptimize(joined.data());
    });
#ifdef QVXSYS_BENCH_QT
    QStringList list;
    for (std::u16string const& part : standard) {
        list.push_back(ToQt(part));
    }
    bench::Row(row, "QStringList", [list] {
        QString joined = list.join(QStringLiteral(", "));
        benchmark::DoNotOptimize(joined);
    });
#endif
}

void ReplaceTextRows()
{
    std::u16string const text = Marked();
    std::string const row = "c11 replace text, 8 to 9 units, 1 MB";
    bench::Row(row, "own", [source = TStringCore(text)] {
        TStringCore copy = source;
        copy.replace(u"marker: ", u"Marking: ");
        benchmark::DoNotOptimize(copy);
    });
    bench::Row(row, "std::u16string", [source = text] {
        std::u16string_view const before = u"marker: ";
        std::u16string result;
        std::size_t begin = 0;
        for (std::size_t at = source.find(before); at != source.npos; at = source.find(before, begin)) {
            result.append(source, begin, at - begin).append(u"Marking: ");
            begin = at + before.size();
        }
        result.append(source, begin);
        benchmark::DoNotOptimize(result.data());
    });
#ifdef QVXSYS_BENCH_QT
    bench::Row(row, "QString", [source = ToQt(text)] {
        QString copy = source;
        copy.replace(QStringLiteral("marker: "), QStringLiteral("Marking: "));
        benchmark::DoNotOptimize(copy);
    });
#endif
#ifdef QVXSYS_BENCH_ICU
    bench::Row(row, "UnicodeString", [source = icu::UnicodeString(text.data(), static_cast<int>(text.size()))] {
        icu::UnicodeString copy = source;
        copy.findAndReplace(u"marker: ", u"Marking: ");
        benchmark::DoNotOptimize(copy);
    });
#endif
}

void ReplaceUnitRows()
{
    // Back and forth, so that every round has the same work.
    std::u16string const text = Csv();
    for (bool const absent : {false, true}) {
        std::string const row = absent ? "c12 replace a unit that is absent, 1 MB" : "c12 replace a unit, 1 MB";
        char16_t const first = absent ? u'#' : u',';
        bench::Row(row, "own", [copy = TStringCore(text), first]() mutable {
            copy.replace(first, u';');
            copy.replace(u';', first);
            benchmark::DoNotOptimize(copy);
        });
        bench::Row(row, "std::replace", [copy = text, first]() mutable {
            std::replace(copy.begin(), copy.end(), first, u';');
            std::replace(copy.begin(), copy.end(), u';', first);
            benchmark::DoNotOptimize(copy.data());
        });
#ifdef QVXSYS_BENCH_QT
        bench::Row(row, "QString", [copy = ToQt(text), first]() mutable {
            copy.replace(QChar(first), QChar(u';'));
            copy.replace(QChar(u';'), QChar(first));
            benchmark::DoNotOptimize(copy);
        });
#endif
    }
}

std::u16string_view TrimmedView(std::u16string_view text)
{
    constexpr std::u16string_view kBlanks = u" \t\n\v\f\r\u0085\u00A0\u2028\u2029\u3000";
    std::size_t const begin = text.find_first_not_of(kBlanks);
    return begin == text.npos ? std::u16string_view() : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

void TrimRows()
{
    std::u16string const blanks(4096, u' ');
    for (auto const& [what, text] :
         {std::pair<char const*, std::u16string>{"24 units to 15", u"  \t some words here \r\n  "},
          {"24 units to 12", u"   \t  some words  \r\n   "},
          {"nothing to trim", u"some words, nothing else"},
          {"2 x 4096 blanks", blanks + u"x" + blanks}}) {
        std::string const row = std::string("c13 trim, ") + what;
        bench::Row(row, "own", [source = TStringCore(text)] {
            TStringCore trimmed = source.trimmed();
            benchmark::DoNotOptimize(trimmed);
        });
        bench::Row(row + ", as a view", "own", [source = TStringCore(text)] {
            TStringView trimmed = source.view().trimmed();
            benchmark::DoNotOptimize(trimmed);
        });
        bench::Row(row + ", as a view", "u16string_view", [source = text] {
            std::u16string_view trimmed = TrimmedView(source);
            benchmark::DoNotOptimize(trimmed);
        });
#ifdef QVXSYS_BENCH_QT
        bench::Row(row, "QString", [source = ToQt(text)] {
            QString trimmed = source.trimmed();
            benchmark::DoNotOptimize(trimmed);
        });
#endif
    }
}

void CaseRows(std::string const& row, std::u16string const& text)
{
    bench::Row(row + ", upper", "own", [source = TStringCore(text)] {
        TStringCore mapped = source.toUpper();
        benchmark::DoNotOptimize(mapped);
    });
    bench::Row(row + ", lower", "own", [source = TStringCore(text)] {
        TStringCore mapped = source.toLower();
        benchmark::DoNotOptimize(mapped);
    });
#ifdef QVXSYS_BENCH_ICU
    auto const icu = [&row, &text](char const* which, auto map) {
        std::vector<char16_t> buffer(2 * text.size());
        bench::Row(row + which, "ICU", [source = text, buffer, map]() mutable {
            UErrorCode status = U_ZERO_ERROR;
            map(buffer.data(), static_cast<int>(buffer.size()), source.data(), static_cast<int>(source.size()), nullptr,
                &status);
            benchmark::DoNotOptimize(buffer.data());
            benchmark::ClobberMemory();
        });
    };
    icu(", upper", u_strToUpper);
    icu(", lower", u_strToLower);
#endif
#ifdef QVXSYS_BENCH_QT
    bench::Row(row + ", upper", "QString", [source = ToQt(text)] {
        QString mapped = source.toUpper();
        benchmark::DoNotOptimize(mapped);
    });
    bench::Row(row + ", lower", "QString", [source = ToQt(text)] {
        QString mapped = source.toLower();
        benchmark::DoNotOptimize(mapped);
    });
#endif
}

void RegisterRows()
{
    SplitRows();
    JoinRows();
    ReplaceTextRows();
    ReplaceUnitRows();
    TrimRows();
    for (bench::Text const& text : bench::WellFormedTexts(kUnits)) {
        CaseRows("c14 case of " + text.kind, text.utf16);
    }
    CaseRows("c15 case of 12 units", u"Some String!");
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
