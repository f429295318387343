#include <qvxsys/KMP.h>

#include <algorithm>
#include <random>
#include <string>
#include <tuple>

#include <unicode/uchar.h>

#include "support/TextPrinters.h"

namespace {

using KMP::searchString;
using KMP::StringTable;

TEST(KMP, FindsPatterns)
{
    constexpr auto exact = CaseCompare::Sensitive;
    constexpr auto folded = CaseCompare::Insensitive;
    std::tuple<TStringView, TStringView, CaseCompare, int> const table[] = {
        {u"a strasse", u"STRASSE", folded, 2},
        {u"a stra\u00DFe", u"STRASSE", folded, -1},
        {u"abc", u"", exact, -1},
        {u"", u"", exact, -1},
        // A lone surrogate takes the unit behind it along, as everywhere in the iterators.
        {u"x\xD800z\uFFFDy", u"\uFFFD\uFFFDY", folded, 1},
    };
    for (auto const& [text, sought, cs, at] : table) {
        StringTable const pattern(sought, cs);
        EXPECT_EQ(searchString(text, pattern), at) << text;
        auto const it = searchString(text, text.codepoint_cbegin(), pattern);
        EXPECT_EQ(it.codeUnitIndex(), at);
        EXPECT_EQ(it == text.codepoint_cend(), at < 0);
    }
}

TEST(KMP, TablesAreTheDefinitions)
{
    StringTable const table(u"aB\U0001F600aBa", CaseCompare::Insensitive);
    StringTable const copy(table);
    int const prefix[] = {-1, 0, 0, 0, 1, 2, 1};
    int const index[] = {0, 1, 2, 4, 5, 6};
    ASSERT_EQ(copy.size(), std::size(index));
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(copy.prefix(i), prefix[i]) << i;
    }
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(copy.stringIndex(i), index[i]) << i;
        EXPECT_EQ(copy.getFoldedCodePoint(i), U"ab\U0001F600aba"[i]) << i;
    }
    EXPECT_EQ(copy.caseCompare(), CaseCompare::Insensitive);
    EXPECT_EQ(StringTable(u"x", CaseCompare::Sensitive).prefix(1), 0);
    EXPECT_EQ(StringTable(u"", CaseCompare::Sensitive).size(), 0u);
}

TEST(KMP, SearchGoesOnFromAnIteratorAndKnowsOrdinals)
{
    TStringView const text = u"\U0001F600ab\U0001F600aB";
    StringTable const table(u"AB", CaseCompare::Insensitive);
    auto it = searchString(text, text.codepoint_cbegin(), table);
    EXPECT_EQ(it, text.iteratorFrom(2));
    EXPECT_EQ(it.codePointIndex(), 1);
    it = searchString(text, ++it, table);
    EXPECT_EQ(it, text.iteratorFrom(6));
    EXPECT_EQ(it.codePointIndex(), 4);
    EXPECT_EQ(searchString(text, ++it, table), text.codepoint_cend());
    EXPECT_EQ(searchString(text, text.codepoint_cend(), table), text.codepoint_cend());
    // An iterator of a longer view with the same start may stand behind the text.
    TStringView const longer = u"abcdef";
    TStringView const shorter = longer.left(3);
    StringTable const last(u"f", CaseCompare::Sensitive);
    EXPECT_EQ(searchString(shorter, longer.iteratorFrom(5), last), shorter.codepoint_cend());
    EXPECT_EQ(searchString(shorter, longer.iteratorFrom(3), last), shorter.codepoint_cend());
    TStringView const other = u"ababab";
    EXPECT_EQ(testing_support::RuntimeError([&] { std::ignore = searchString(text, other.codepoint_cbegin(), table); }),
              "TConstCodePointIterator<class TStringView>::operator != iterators do not reference the same underlying "
              "string.");
}

// Random text, well-formed and not, against std::search over the code points that the iterators yield.
TEST(KMP, AgreesWithStdSearch)
{
    std::mt19937 random(7);
    auto const fold = [](char32_t c, bool folded) {
        return folded ? static_cast<char32_t>(u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT)) : c;
    };
    constexpr char16_t units[] = u"aAb\xD801\xDC00\xDC28\u212Ak";
    auto const make = [&](std::size_t length) {
        std::u16string text(length, u' ');
        std::generate(text.begin(), text.end(), [&] { return units[random() % 8]; });
        return text;
    };
    for (int round = 0; round < 20000; ++round) {
        std::u16string const text = make(random() % 40);
        std::u16string const pattern = make(1 + random() % 4);
        bool const folded = random() % 2 != 0;
        std::vector<int> places;
        std::u32string points;
        std::u32string sought;
        TStringView const view(text);
        for (auto it = view.codepoint_cbegin(); it != view.codepoint_cend(); ++it) {
            places.push_back(it.codeUnitIndex());
            points += fold(*it, folded);
        }
        for (char32_t const c : TStringView(pattern).codePoints()) {
            sought += fold(c, folded);
        }
        std::size_t const at = text.size() < pattern.size() ? points.npos : points.find(sought);
        StringTable const table(pattern, folded ? CaseCompare::Insensitive : CaseCompare::Sensitive);
        ASSERT_EQ(searchString(view, table), at == points.npos ? -1 : places[at]) << "round " << round;
    }
}

} // namespace
