#include <qvxsys/TStringView.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <type_traits>

#include "support/TextPrinters.h"

namespace {

using testing_support::TextError;
constexpr CaseCompare kFolded = CaseCompare::Insensitive;

static_assert(std::is_trivially_copyable_v<TStringView> && sizeof(TStringView) == 16);

bool IsNullView(TStringView v)
{
    return v.data() == nullptr && v.empty();
}

// Within the text as the standard library cuts; outside of it there is nothing, and behind the end no view either.
TEST(TStringView, Slices)
{
    TStringView const v = u"abc";
    for (int pos = -2; pos <= 5; ++pos) {
        auto const at = static_cast<std::size_t>(std::clamp(pos, 0, 3));
        EXPECT_EQ(v.left(pos).data(), v.data()) << pos;
        EXPECT_EQ(v.left(pos), TStringView(u"abc", at)) << pos;
        EXPECT_EQ(v.right(pos).end(), v.end()) << pos;
        EXPECT_EQ(v.right(pos).size(), at) << pos;
        for (int n = -1; n <= 4; ++n) {
            bool const inside = pos >= 0 && pos <= 3;
            EXPECT_EQ(v.mid(pos, n).data(), inside ? v.data() + pos : nullptr) << pos << ' ' << n;
            EXPECT_EQ(v.mid(pos, n).size(), inside ? std::min(static_cast<std::size_t>(std::max(n, 0)), 3 - at) : 0)
                << pos << ' ' << n;
        }
        EXPECT_EQ(v.mid(pos).data(), v.mid(pos, 9).data()) << pos;
        EXPECT_EQ(v.mid(pos), v.mid(pos, 9)) << pos;
    }
    // Lengths that no int holds are no trouble for slices.
    TStringView const huge(v.data(), (std::size_t{1} << 32) + 3);
    EXPECT_EQ(huge.left(3), u"abc");
    EXPECT_EQ(huge.mid(1, 2), u"bc");
    EXPECT_EQ(huge.mid(1).size(), huge.size() - 1);
    EXPECT_EQ(huge.right(2).data(), huge.end() - 2);
    TStringView cut = v;
    EXPECT_EQ(cut.truncate(1), u"a");
    cut.clear();
    EXPECT_TRUE(IsNullView(cut) && IsNullView(TStringView()) && IsNullView(TStringView().left(3)));
    EXPECT_EQ(std::u16string(v.rbegin(), v.rend()), u"cba");
}

TEST(TStringView, Units)
{
    TStringView const v(u"abc", 3);
    EXPECT_EQ(v.at(2), u'c');
    EXPECT_EQ(TextError([&] { static_cast<void>(v.at(3)); }), "TStringView::at(int): argument out of range.");
    EXPECT_EQ(TextError([&] { static_cast<void>(v.at(-1)); }), "TStringView::at(int): argument out of range.");
    TStringView const pairs = u"\U0001F600x\U0001F601";
    EXPECT_EQ(pairs.front(), 0x1F600u);
    EXPECT_EQ(pairs.back(), 0x1F601u);
    EXPECT_EQ(pairs.left(4).back(), 0xFFFDu); // half of a pair; the other half is not looked at
    EXPECT_EQ(pairs.left(1).front(), 0xFFFDu);
    EXPECT_EQ(TStringView().front() + TStringView().back(), 0u);
    EXPECT_EQ(TStringView(u"a\0\U0001F600", 4).lengthInCodePoints() + TStringView().lengthInCodePoints(), 3);
}

// Each operator decides on its own, first by length.
TEST(TStringView, OrderingIsLengthFirstAndEachOperatorItsOwn)
{
    using Case = std::tuple<TStringView, TStringView, bool, bool, bool, bool>;
    EXPECT_TRUE(TStringView() == TStringView(u"") && TStringView(u"a\0b", 3) != TStringView(u"a\0c", 3));
    for (auto const& [a, b, less, lessEqual, greater, greaterEqual] : {Case{u"b", u"aa", true, false, true, false},
                                                                       {u"ab", u"b", true, false, true, false},
                                                                       {u"ab", u"ab", false, true, false, true},
                                                                       {u"ab", u"ac", true, true, false, false},
                                                                       {u"", u"a", true, true, false, false}}) {
        EXPECT_EQ(a < b, less) << testing::PrintToString(a) << testing::PrintToString(b);
        EXPECT_EQ(a <= b, lessEqual) << testing::PrintToString(a) << testing::PrintToString(b);
        EXPECT_EQ(a > b, greater) << testing::PrintToString(a) << testing::PrintToString(b);
        EXPECT_EQ(a >= b, greaterEqual) << testing::PrintToString(a) << testing::PrintToString(b);
    }
}

TEST(TStringView, WhatDiffersFromStringsAndWhatTheModelOfEditsLeavesOut)
{
    TStringView const v = u"Gr\u00FC\u00DFe \U0001F600";
    EXPECT_TRUE(TStringCore(v).startsWith(u"") && TStringCore().startsWith(u"") && !TStringCore(v).endsWith(u""));
    EXPECT_FALSE(v.startsWith(u"gr") || v.startsWith(u"") || v.endsWith(u"") || TStringView().endsWith(TStringView()));
    EXPECT_TRUE(v.startsWith(u"gR\u00DC", kFolded) && v.endsWith(L" \U0001F600") && v.startsWith(U'g', kFolded));
    EXPECT_TRUE(v.endsWith(U'\U0001F600') && !v.endsWith(U'\U0001F601') && !TStringView(u"b").endsWith(u"ab"));
    EXPECT_EQ(TStringView(u"\U0001F600a\U0001F600").count32(0x1F600) + v.count(u'g', kFolded), 3);
    using Parts = std::vector<TStringView>;
    EXPECT_EQ(TStringView().split(u','), Parts{TStringView()});
    EXPECT_EQ(TStringView().split(u',', EmptyParts::Skip), Parts{});
    EXPECT_EQ(TStringView(u"1x2X3").split(u"x", EmptyParts::Keep, kFolded), (Parts{u"1", u"2", u"3"}));
    EXPECT_EQ(TStringView(u" a  b ").tokenize(u" "), (Parts{u"a", u"b"}));
    TStringView const spaced = u"\u3000\t a b\u00A0\u2028";
    EXPECT_EQ(TStringView(spaced).trimLeft(), u"a b\u00A0\u2028");
    EXPECT_EQ(TStringView(spaced).trimRight(), u"\u3000\t a b");
    EXPECT_EQ(TStringView(spaced).trim(), u"a b");
    EXPECT_EQ(TStringView(u"\U0001F600x\U0001F600\U0001F601").trimmed(u"\U0001F601\U0001F600"), u"x");
}

TEST(TStringView, StandardTextIsViewedInPlace)
{
    std::u16string const standard = u"abc";
    TStringView const v = standard;
    EXPECT_EQ(v.data(), standard.data());
    EXPECT_EQ(std::u16string_view(v), standard);
    EXPECT_EQ(TStringCore::viewsToStrings({v, v.left(1)}), (std::vector<TStringCore>{u"abc", u"a"}));
}

} // namespace
