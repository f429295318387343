// Order, normal forms, boundaries and case by locale, beside ICU's own classes on random texts.

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <ranges>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/brkiter.h>
#include <unicode/coll.h>
#include <unicode/normalizer2.h>
#include <unicode/tblcoll.h>

#include <qvxsys/std.h>

#include "support/IcuOracle.h"
#include "support/Threads.h"

using namespace QvxICU;
using namespace testing_support;

namespace {

static_assert(std::ranges::bidirectional_range<TextPieces> && std::ranges::common_range<TextPieces> &&
              std::ranges::view<TextPieces> && std::ranges::borrowed_range<TextPieces>);
static_assert(std::strict_weak_order<LocaleComparator const&, TStringView, TStringCore>);

constexpr int kRounds = 400 / kStressDivisor;
char const* const kNames[] = {
    "",   "en_US", "de@collation=phonebook", "sv", "tr", "lt", "el", "nl", "hy", "az", "th_TH", "ja", "zh", "xx_YY",
    "he", "fi",    "en@ss=standard"};

// Texts of pieces that rules of all kinds look at, some of them halves of pairs.
class Texts
{
public:
    TStringCore Next(unsigned most = 24)
    {
        static constexpr TStringView kPieces =
            u"a|i|I|\u0130|ij|\u01C6|\u03A3|\u00DF|\uFB01|e|\u0301|\u0323|\u0308|\u212B|\u1100|\u1161|\u11A8|\uAC00|"
            u" |-|.|? |\u00A0|'|7|10|,|\r\n|\u0E01\u0E32|\u6F22|\u304B|\u3099|\u05D0|\"|\u200D|\uFE0F|\U0001F469|"
            u"\U0001F1E9|\u0600|\U00010428|Mr. |\u0915|\u094D|\uFFFF|\u0345|\u1FB3|\u0565\u0582|\u00A9|\xD83D|\xDC69";
        static std::vector<TStringView> const s_pieces = kPieces.split(u'|');
        TStringCore text;
        for (unsigned left = Random() % (most + 1); left != 0; --left) {
            unsigned const chosen = Random() % 60;
            if (chosen < s_pieces.size()) {
                text += s_pieces[chosen];
            } else {
                text += static_cast<char16_t>(Random());
            }
        }
        return text;
    }

private:
    unsigned Random() { return static_cast<unsigned>(m_random()); }

    std::mt19937 m_random{4711};
};

ICULocale Named(char const* name)
{
    return *ICULocale::createFromName(name);
}

int Sign(int order)
{
    return (order > 0) - (order < 0);
}

std::vector<TextPiece> Expected(icu::BreakIterator& breaks, TStringView text, bool isWords)
{
    icu::UnicodeString const units = Unicode(text);
    breaks.setText(units);
    std::vector<TextPiece> pieces;
    int start = 0;
    for (int end = breaks.next(); end != icu::BreakIterator::DONE; start = end, end = breaks.next()) {
        int const rule = breaks.getRuleStatus();
        pieces.push_back({text.mid(start, end - start), start, isWords && rule >= UBRK_WORD_NONE_LIMIT, rule});
    }
    return pieces;
}

bool Same(TextPiece const& a, TextPiece const& b)
{
    return a.text.data() == b.text.data() && a.text.size() == b.text.size() && a.start == b.start &&
           a.isWord == b.isWord && a.rule == b.rule;
}

void CheckPieces(TextPieces const& range, std::vector<TextPiece> const& expected, std::string const& what)
{
    EXPECT_TRUE(std::ranges::equal(range, expected, Same)) << what;
    EXPECT_TRUE(std::equal(std::reverse_iterator(range.end()), std::reverse_iterator(range.begin()), expected.rbegin(),
                           expected.rend(), Same))
        << what;
    // Copies of iterators do not move one another.
    auto ahead = range.begin();
    for (std::size_t i = 0; i + 1 < expected.size(); ++i) {
        auto const behind = ahead++;
        EXPECT_TRUE(behind->start == expected[i].start && Same(*std::prev(ahead), expected[i])) << what;
        auto const further = std::next(ahead);
        EXPECT_TRUE(further == std::next(behind, 2) && Same(*std::next(behind), expected[i + 1])) << what;
    }
}

TEST(LocaleBreaks, PiecesAreThoseOfIcu)
{
    Texts texts;
    using Create = icu::BreakIterator* (*)(icu::Locale const&, UErrorCode&);
    Create const create[] = {&icu::BreakIterator::createCharacterInstance, &icu::BreakIterator::createWordInstance,
                             &icu::BreakIterator::createLineInstance, &icu::BreakIterator::createSentenceInstance};
    for (char const* const name : kNames) {
        ICULocale const locale = Named(name);
        for (int type = 0; type != 4; ++type) {
            UErrorCode status = U_ZERO_ERROR;
            std::unique_ptr<icu::BreakIterator> const breaks(create[type](icu::Locale(name), status));
            for (int i = 0; i != kRounds / 20 + 1; ++i) {
                TStringCore const text = texts.Next();
                auto const expected = Expected(*breaks, text, type == 1);
                std::string const what = std::string(name) + ' ' + std::to_string(type) + ' ' + text.toStdString();
                TextPieces const range = pieces(text, static_cast<ICUBreakIteratorType>(type), locale);
                EXPECT_EQ(static_cast<int>(range.status()), static_cast<int>(status)) << what;
                CheckPieces(range, expected, what);
                if (type == 0) {
                    EXPECT_EQ(countGraphemes(text), static_cast<int>(expected.size()));
                    int const half = static_cast<int>(expected.size() / 2);
                    EXPECT_EQ(unitsOfGraphemes(text, half),
                              half != 0 ? expected[static_cast<std::size_t>(half)].start : 0);
                    EXPECT_EQ(unitsOfGraphemes(text, 1000), text.length());
                } else if (type == 1) {
                    std::vector<TextPiece> onlyWords;
                    std::ranges::copy_if(expected, std::back_inserter(onlyWords), &TextPiece::isWord);
                    CheckPieces(words(text, locale), onlyWords, what);
                }
            }
        }
    }
}

// Every unit beside many others, where ranges may do without a break iterator.
TEST(LocaleBreaks, GraphemesOfAllUnits)
{
    std::mt19937 random(11);
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> const breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    for (unsigned const units : {0x300U, 0x10000U}) {
        TStringCore text;
        for (int i = 0; i != 300000 / kStressDivisor; ++i) {
            text += static_cast<char16_t>(random() % units);
        }
        EXPECT_TRUE(std::ranges::equal(graphemes(text), Expected(*breaks, text, false), Same)) << units;
    }
}

TEST(LocaleBreaks, NothingToBreak)
{
    TextPieces const none;
    EXPECT_TRUE(none.begin() == none.end() && ICU_SUCCESS(none.status()) && std::ranges::empty(words({})));
    EXPECT_TRUE(std::ranges::empty(words(u" - \xDC00")) && countGraphemes({}) == 0 && unitsOfGraphemes(u"ab", -1) == 0);
    // What opens no break iterator is one piece, forward and back.
    TextPieces const whole = pieces(u"a b", ICUBreakIteratorType::Title, ICULocale());
    EXPECT_TRUE(ICU_FAILURE(whole.status()) && std::ranges::distance(whole) == 1);
    EXPECT_TRUE(whole.begin()->text == u"a b" && std::prev(whole.end())->text == u"a b");
    // Iterators stay good when the range is gone, and sixteen kept break iterators make room for others.
    TStringCore const text = u"one two";
    std::vector<TextPieces::Iterator> first;
    for (int i = 0; i != 40; ++i) {
        first.push_back(words(text, Named(("en_" + std::to_string(100 + i)).c_str())).begin());
    }
    for (TextPieces::Iterator& at : first) {
        EXPECT_TRUE(at->text == u"one" && (++at)->text == u"two" && (--at)->text == u"one");
    }
}

TEST(LocaleNormalize, EqualsIcu)
{
    UErrorCode status = U_ZERO_ERROR;
    auto const theirs = [&](char const* name, UNormalization2Mode mode, TStringView text) {
        return Text(icu::Normalizer2::getInstance(nullptr, name, mode, status)->normalize(Unicode(text), status));
    };
    struct
    {
        ICUNormalization form;
        char const* name;
        UNormalization2Mode mode;
    } const kForms[] = {{ICUNormalization::NFC, "nfc", UNORM2_COMPOSE},
                        {ICUNormalization::NFD, "nfc", UNORM2_DECOMPOSE},
                        {ICUNormalization::NFKC, "nfkc", UNORM2_COMPOSE},
                        {ICUNormalization::NFKD, "nfkc", UNORM2_DECOMPOSE},
                        {ICUNormalization::FCD, "nfc", UNORM2_FCD}};
    Texts texts;
    for (int i = 0; i != 5 * kRounds; ++i) {
        TStringCore const text = texts.Next(i % 2 == 0 ? 6 : 60);
        TStringCore const other = texts.Next(3);
        for (auto const& [which, name, mode] : kForms) {
            TStringCore const normal = normalize(text, which);
            EXPECT_EQ(normal, theirs(name, mode, text)) << name << ' ' << mode << ' ' << text;
            EXPECT_EQ(isNormalized(text, which), normal == text) << text;
            EXPECT_TRUE(isNormalized(normal, which));
            // What is normal already is the same string: beyond fourteen units its data are shared.
            EXPECT_TRUE(normal.length() <= 14 || normalize(normal, which).constData() == normal.constData()) << text;
        }
        EXPECT_EQ(normalizeForSearch(text), theirs("nfkc_cf", UNORM2_COMPOSE, text));
        EXPECT_TRUE(areEquivalent(text, normalizeNFD(text)) && areEquivalent(normalizeNFC(text), text));
        EXPECT_EQ(areEquivalent(text, other), normalizeNFC(text) == normalizeNFC(other));
        EXPECT_EQ(foldCase(text), Text(Unicode(text).foldCase()));
    }
    EXPECT_TRUE(normalizeNFKD({}).empty() && isNormalized({}, ICUNormalization::NFC) && areEquivalent({}, {}));
    EXPECT_EQ(normalize(u"\uFB01", ICUNormalization::None), u"\uFB01");
    ASSERT_TRUE(U_SUCCESS(status));
}

TEST(LocaleCompare, EqualsIcuAndIsAnOrder)
{
    using Value = ICUColAttributeValue;
    CompareOptions const kOptions[] = {{},
                                       {.strength = Value::Primary},
                                       {.strength = Value::Secondary, .numeric = true},
                                       {.caseFirst = Value::UpperFirst, .ignorePunctuation = true},
                                       {.strength = Value::Identical, .caseFirst = Value::LowerFirst}};
    Texts texts;
    for (char const* const name : kNames) {
        for (CompareOptions const& options : kOptions) {
            UErrorCode status = U_ZERO_ERROR;
            std::unique_ptr<icu::Collator> const collator(icu::Collator::createInstance(icu::Locale(name), status));
            LocaleComparator const comparator(Named(name), options);
            EXPECT_EQ(static_cast<int>(comparator.status()), static_cast<int>(status)) << name;
            auto const set = [&](UColAttribute attribute, Value value) {
                collator->setAttribute(attribute, static_cast<UColAttributeValue>(value), status);
            };
            set(UCOL_STRENGTH, options.strength);
            set(UCOL_CASE_FIRST, options.caseFirst);
            set(UCOL_NUMERIC_COLLATION, options.numeric ? Value::On : Value::Default);
            set(UCOL_ALTERNATE_HANDLING, options.ignorePunctuation ? Value::Shifted : Value::Default);
            std::vector<TStringCore> list = {TStringCore(), TStringCore(TStringView())};
            std::generate_n(std::back_inserter(list), 12, [&] { return texts.Next(5); });
            for (TStringCore const& a : list) {
                for (TStringCore const& b : list) {
                    int const order = comparator.compare(a, b);
                    EXPECT_EQ(Sign(order), Sign(collator->compare(Unicode(a), Unicode(b), status))) << name << a << b;
                    EXPECT_EQ(Sign(order), Sign(comparator.sortKey(a).compare(comparator.sortKey(b)))) << a << b;
                    EXPECT_EQ(Sign(order), -Sign(comparator.compare(b, a)));
                    for (TStringCore const& c : list) {
                        EXPECT_TRUE(order > 0 || comparator.compare(b, c) > 0 || comparator.compare(a, c) <= 0);
                    }
                }
            }
            auto sorted = list;
            std::ranges::stable_sort(sorted, [&](TStringCore const& a, TStringCore const& b) {
                return collator->compare(Unicode(a), Unicode(b), status) == UCOL_LESS;
            });
            sortByLocale(list, comparator);
            EXPECT_EQ(list, sorted) << name;
            std::set<TStringCore, LocaleComparator> const distinct(list.begin(), list.end(), comparator);
            EXPECT_TRUE(std::ranges::all_of(list, [&](TStringView text) { return distinct.contains(text); }));
        }
    }
}

TEST(LocaleCompare, ByRulesAndWithoutALocale)
{
    LocaleComparator const rules = LocaleComparator::fromRules(u"&z < a", {.numeric = true});
    EXPECT_TRUE(ICU_SUCCESS(rules.status()) && rules(u"z", u"a") && rules(u"9", u"10"));
    LocaleComparator const root(Named(""));
    LocaleComparator copy = root;
    copy = rules;
    EXPECT_TRUE(copy(u"z", u"a") && root(u"a", u"z"));
    LocaleComparator const broken[] = {LocaleComparator::fromRules(u"&&&"), LocaleComparator(Named("not a locale")),
                                       LocaleComparator(Named(""), {.strength = ICUColAttributeValue::UpperFirst})};
    for (LocaleComparator const& comparator : broken) {
        EXPECT_TRUE(comparator(u"a", u"B") && comparator.sortKey(u"a") == root.sortKey(u"a"));
    }
    EXPECT_TRUE(ICU_FAILURE(broken[0].status()) && ICU_FAILURE(broken[2].status()));
    EXPECT_TRUE(root.areEqual({}, u"") && root({}, u"a") && root.sortKey({}) == root.sortKey(u""));
    std::pair<int, TStringCore> people[] = {{1, u"\u00D6berg"}, {2, u"Zorn"}, {3, u"Aalto"}, {4, u"Zorn"}};
    sortByLocale(people, Named("sv"), &std::pair<int, TStringCore>::second);
    EXPECT_TRUE(people[0].first == 3 && people[1].first == 2 && people[2].first == 4 && people[3].first == 1);
}

// Default locale of the process while it lives.
struct DefaultLocale
{
    explicit DefaultLocale(char const* name) { icu::Locale::setDefault(icu::Locale(name), status); }
    ~DefaultLocale() { icu::Locale::setDefault(before, status); }

    UErrorCode status = U_ZERO_ERROR;
    icu::Locale before;
};

TEST(LocaleCase, EqualsIcu)
{
    Texts texts;
    for (char const* const name : kNames) {
        ICULocale const locale = Named(name);
        icu::Locale const theirs(name);
        for (int i = 0; i != kRounds / 4; ++i) {
            TStringCore const text = texts.Next();
            EXPECT_EQ(toLower(text, locale), Text(Unicode(text).toLower(theirs))) << name << ' ' << text;
            EXPECT_EQ(toUpper(text, locale), Text(Unicode(text).toUpper(theirs))) << name << ' ' << text;
            EXPECT_EQ(toTitle(text, locale), Text(Unicode(text).toTitle(nullptr, theirs))) << name << ' ' << text;
            EXPECT_EQ(toTitle(text, locale, {.sentences = true, .keepRest = true}),
                      Text(Unicode(text).toTitle(nullptr, theirs, U_TITLECASE_SENTENCES | U_TITLECASE_NO_LOWERCASE)))
                << name << ' ' << text;
            DefaultLocale const inTurkey("tr");
            EXPECT_EQ(toLowerRoot(text), Text(Unicode(text).toLower(icu::Locale::getRoot()))) << text;
            EXPECT_EQ(toUpperRoot(text), Text(Unicode(text).toUpper(icu::Locale::getRoot()))) << text;
            EXPECT_EQ(toTitle(text), toTitle(text, Named("tr")));
        }
    }
    DefaultLocale const inTurkey("tr");
    EXPECT_EQ(toLowerRoot(u"TITLE"), u"title");
    EXPECT_EQ(TStringCore(u"TITLE").toLower(), u"t\u0131tle");
    EXPECT_TRUE(toTitle(TStringView(), ICULocale()).empty() && foldCase({}).empty() &&
                toUpper({}, ICULocale()).empty());
}

TEST(LocaleCase, PlainSpaces)
{
    std::u16string text;
    for (char16_t c = 1; c != 0; ++c) {
        text += c;
    }
    std::u16string expected = text;
    for (std::size_t const space : {0xA0U, 0x2009U, 0x202FU}) { // what ICU has between numbers and words
        expected[space - 1] = u' ';
    }
    EXPECT_EQ(withPlainSpaces(text), TStringCore(expected));
    EXPECT_EQ(withPlainSpaces(u"a b"), u"a b");
}

TEST(LocaleText, ThreadsShareAndCleanupStartsAnew)
{
    for (int round = 0; round != 2; ++round) {
        TStringCore const text = u"Zwei Worte, o\u0308fter geschrieben. Stra\u00DFe 12!";
        {
            LocaleComparator const comparator(Named("de"));
            InParallel(4, [&](int thread) {
                LocaleComparator const own = comparator;
                for (int i = 0; i != kRounds / 4; ++i) {
                    ICULocale const locale = Named(kNames[static_cast<unsigned>(thread + i) % std::size(kNames)]);
                    EXPECT_EQ(std::ranges::distance(words(text, locale)), 6);
                    EXPECT_EQ(normalizeNFC(text).length(), text.length() - 1);
                    EXPECT_TRUE(own(u"Stra\u00DFe", text) && comparator.sortKey(text) == own.sortKey(text));
                    EXPECT_EQ(toTitle(text, Named("de")).right(9), u"tra\u00DFe 12!");
                }
            });
        }
        t_u_cleanup();
    }
}

} // namespace
