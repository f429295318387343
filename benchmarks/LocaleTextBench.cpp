// Conveniences on text by locale beside ICU's classes, which the caller keeps open, and beside Qt.

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include <unicode/brkiter.h>
#include <unicode/coll.h>
#include <unicode/normalizer2.h>

#ifdef QVXSYS_BENCH_QT
#include <QCollator>
#include <QString>
#include <QTextBoundaryFinder>
#endif

#include <qvxsys/LocaleBreaks.h>
#include <qvxsys/LocaleCase.h>
#include <qvxsys/LocaleCompare.h>
#include <qvxsys/LocaleNormalize.h>

#include "BenchSupport.h"

void RegisterLocaleText();

namespace {

using namespace QvxICU;

UErrorCode g_status = U_ZERO_ERROR;

template<class T>
std::shared_ptr<T> Owned(T* made)
{
    if (made == nullptr || U_FAILURE(g_status)) {
        std::abort();
    }
    return std::shared_ptr<T>(made);
}

ICULocale const& German()
{
    static ICULocale const s_german = *ICULocale::createFromName("de");
    return s_german;
}

TStringCore Prose()
{
    return TStringCore(u"Die Stra\u00DFe f\u00FChrte, wie man sagt, \u00FCber 12 H\u00FCgel \u2013 und weiter. ")
        .repeated(20);
}

icu::UnicodeString Theirs(TStringCore const& text)
{
    return {text.data(), text.length()};
}

// Words as they come in lists: many share their beginnings, some their letters.
std::vector<TStringCore> Names()
{
    std::vector<TStringCore> names;
    for (unsigned i = 0, seed = 1; i != 10000; ++i) {
        TStringCore name = u"Stra\u00DFe";
        for (int letter = 0; letter != 6; ++letter) {
            seed = seed * 1664525 + 1013904223;
            name += u"aeinorst\u00E4\u00F6\u00FCAE -"[seed >> 28 & 14];
        }
        names.push_back(name.right(i % 4 == 0 ? 12 : 6));
    }
    return names;
}

#ifdef QVXSYS_BENCH_QT
QString Qts(TStringCore const& text)
{
    return QString::fromUtf16(text.data(), text.length());
}
#endif

void Pieces(std::string const& row, ICUBreakIteratorType type)
{
    bool const isWords = type == ICUBreakIteratorType::Word;
    bench::Row(row, "own", [text = Prose(), type, isWords] {
        for (TextPiece const& piece : TextPieces(text, type, German(), isWords)) {
            benchmark::DoNotOptimize(piece.text.length());
        }
    });
    auto const breaks = Owned(isWords ? icu::BreakIterator::createWordInstance(icu::Locale("de"), g_status)
                                      : icu::BreakIterator::createCharacterInstance(icu::Locale("de"), g_status));
    bench::Row(row, "ICU", [text = Theirs(Prose()), breaks, isWords] {
        breaks->setText(text);
        int start = 0;
        for (int end = breaks->next(); end != icu::BreakIterator::DONE; start = end, end = breaks->next()) {
            if (!isWords || breaks->getRuleStatus() != UBRK_WORD_NONE) {
                benchmark::DoNotOptimize(end - start);
            }
        }
    });
#ifdef QVXSYS_BENCH_QT
    bench::Row(row, "Qt", [text = Qts(Prose()), isWords] {
        QTextBoundaryFinder finder(isWords ? QTextBoundaryFinder::Word : QTextBoundaryFinder::Grapheme, text);
        qsizetype start = 0;
        for (qsizetype end = finder.toNextBoundary(); end != -1; start = end, end = finder.toNextBoundary()) {
            if (!isWords || (finder.boundaryReasons() & QTextBoundaryFinder::EndOfItem) != 0) {
                benchmark::DoNotOptimize(end - start);
            }
        }
    });
#endif
}

// Compares each element with the one 2 places on, so that some pairs differ early and some late.
template<class Text, class Compare>
void ComparePairs(std::string const& who, std::vector<Text> list, Compare compare)
{
    list.resize(100);
    bench::Row("l8 compare", who, [list, compare] {
        for (std::size_t i = 2; i != list.size(); ++i) {
            benchmark::DoNotOptimize(compare(list[i - 2], list[i]));
        }
    });
}

template<class Text, class Sort>
void SortNames(std::string const& who, std::vector<Text> const& list, Sort sort)
{
    bench::Row("l8 sort 10000", who, [list, sort] {
        auto sorted = list;
        sort(sorted);
        benchmark::DoNotOptimize(sorted.data());
    });
}

void Order()
{
    auto const names = Names();
    std::vector<icu::UnicodeString> theirs;
    std::ranges::transform(names, std::back_inserter(theirs), Theirs);
    auto const collator = Owned(icu::Collator::createInstance(icu::Locale("de"), g_status));
    LocaleComparator const comparator(German());
    auto const before = [collator](icu::UnicodeString const& a, icu::UnicodeString const& b) {
        return collator->compare(a, b, g_status);
    };
    ComparePairs("own", names, [=](TStringCore const& a, TStringCore const& b) { return comparator.compare(a, b); });
    ComparePairs("ICU", theirs, before);
    SortNames("own", names, [](auto& list) { sortByLocale(list, German()); });
    SortNames("ICU", theirs, [=](auto& list) {
        std::stable_sort(list.begin(), list.end(), [&](auto const& a, auto const& b) { return before(a, b) < 0; });
    });
#ifdef QVXSYS_BENCH_QT
    std::vector<QString> qts;
    std::ranges::transform(names, std::back_inserter(qts), Qts);
    auto const qt = std::make_shared<QCollator>(QLocale(QLocale::German));
    ComparePairs("Qt", qts, [=](QString const& a, QString const& b) { return qt->compare(a, b); });
    SortNames("Qt", qts, [=](auto& list) { std::stable_sort(list.begin(), list.end(), std::cref(*qt)); });
#endif
}

void Normalize(std::string const& row, TStringCore const& text)
{
    bench::Row(row, "own", [text] { benchmark::DoNotOptimize(normalizeNFC(text).length()); });
    auto const* const nfc = icu::Normalizer2::getNFCInstance(g_status);
    bench::Row(row, "ICU",
               [text = Theirs(text), nfc] { benchmark::DoNotOptimize(nfc->normalize(text, g_status).length()); });
#ifdef QVXSYS_BENCH_QT
    bench::Row(row, "Qt",
               [text = Qts(text)] { benchmark::DoNotOptimize(text.normalized(QString::NormalizationForm_C).size()); });
#endif
}

void Title()
{
    TStringCore const text = u"the stra\u00DFe leads over twelve hills, as they say, and further";
    bench::Row("l9 title", "own", [text] { benchmark::DoNotOptimize(toTitle(text, German()).length()); });
    bench::Row("l9 title", "ICU", [text = Theirs(text), locale = icu::Locale("de")] {
        auto title = text;
        benchmark::DoNotOptimize(title.toTitle(nullptr, locale).length());
    });
    auto const words = Owned(icu::BreakIterator::createWordInstance(icu::Locale("de"), g_status));
    bench::Row("l9 title", "[ICU, break iterator kept]", [text = Theirs(text), locale = icu::Locale("de"), words] {
        auto title = text;
        benchmark::DoNotOptimize(title.toTitle(words.get(), locale).length());
    });
}

} // namespace

void RegisterLocaleText()
{
    Pieces("l7 words", ICUBreakIteratorType::Word);
    Pieces("l7 graphemes", ICUBreakIteratorType::Character);
    Order();
    Normalize("l8 NFC already", Prose());
    Normalize("l8 NFC", normalizeNFD(Prose()));
    Title();
}
