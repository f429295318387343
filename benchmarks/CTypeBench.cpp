// Character classes and case folding, unit by unit over text, beside QChar and ICU.

#include <string>
#include <vector>

#include <qvxsys/TCType.h>

#ifdef QVXSYS_BENCH_ICU
#include <unicode/uchar.h>
#endif
#ifdef QVXSYS_BENCH_QT
#include <QChar>
#endif

#include "BenchSupport.h"
#include "BenchText.h"

namespace {

// Small enough for the nearest caches: the row is about the question, not about reading the text.
constexpr std::size_t kTextBytes = 1 << 14;

template<class Ask>
void Row(std::string const& row, char const* who, std::u16string const& text, Ask ask)
{
    bench::Row(row, who, [text, ask] {
        unsigned sum = 0;
        for (char16_t const c : text) {
            sum += static_cast<unsigned>(ask(c));
        }
        benchmark::DoNotOptimize(sum);
    });
}

void RowsFor(bench::Text const& text)
{
    auto const space = "c16 isSpace, " + text.kind;
    auto const alpha = "c16 isAlpha, " + text.kind;
    auto const fold = "c16 FoldCase, " + text.kind;
    Row(space, "own", text.utf16, [](char16_t c) { return TCType::isSpace(c); });
    Row(alpha, "own", text.utf16, [](char16_t c) { return TCType::isAlpha(c); });
    Row(fold, "own", text.utf16, [](char16_t c) { return TCType::FoldCase(c); });
#ifdef QVXSYS_BENCH_QT
    Row(space, "QChar", text.utf16, [](char16_t c) { return QChar::isSpace(c); });
    Row(alpha, "QChar", text.utf16, [](char16_t c) { return QChar::isLetter(c); });
    Row(fold, "QChar", text.utf16, [](char16_t c) { return QChar::toCaseFolded(c); });
#endif
#ifdef QVXSYS_BENCH_ICU
    Row(space, "ICU", text.utf16, [](char16_t c) { return u_isUWhiteSpace(c); });
    Row(alpha, "ICU", text.utf16, [](char16_t c) { return u_isUAlphabetic(c); });
    Row(fold, "ICU", text.utf16, [](char16_t c) { return u_foldCase(c, U_FOLD_CASE_DEFAULT); });
#endif
}

void RegisterRows()
{
    for (bench::Text const& text : bench::WellFormedTexts(kTextBytes)) {
        RowsFor(text);
    }
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
