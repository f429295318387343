#include <qvxsys/CodePointIterator.h>

#include <iterator>
#include <ranges>
#include <string>

#include <qvxsys/CodePointView.h>

#include "support/TextPrinters.h"

namespace {

using testing_support::RuntimeError;
using CoreIterator = TConstCodePointIterator<TStringCore>;
using ViewIterator = TConstCodePointIterator<TStringView>;

static_assert(std::bidirectional_iterator<CoreIterator> && std::bidirectional_iterator<ViewIterator>);
static_assert(std::bidirectional_iterator<TCodePointIterator<TStringCore>>);
static_assert(std::ranges::bidirectional_range<TCodePointRange<TStringCore>>);

constexpr char const* kPastEnd =
    "CodePointIterator<>::operator++: attempted to increment the iterator past the end of the string.";
constexpr char const* kPastBegin =
    "CodePointIterator<>::operator--: attempted to decrement iterator past the begining of the string.";
constexpr char const* kOutOfRange = "TStringCore::createFromIndex codeUnitIndex is out of range.";
constexpr char const* kInsidePair =
    "TStringCore::createFromIndex codeUnitIndex does not reference the begining of a code point.";

// The same tests over both containers.
template<class Container>
class CodePointIteratorTest : public testing::Test
{};
using Containers = testing::Types<TStringCore, TStringView>;
TYPED_TEST_SUITE(CodePointIteratorTest, Containers);

TYPED_TEST(CodePointIteratorTest, WalksBothWaysWithBothIndexes)
{
    TypeParam const text = u"a\U0001F600b";
    auto it = text.codepoint_cbegin();
    int const indexes[] = {0, 1, 3};
    char32_t const points[] = {U'a', U'\U0001F600', U'b'};
    for (int i = 0; i < 3; ++i, ++it) {
        EXPECT_EQ(*it, points[i]);
        EXPECT_EQ(it.codeUnitIndex(), indexes[i]);
        EXPECT_EQ(it.codePointIndex(), i);
    }
    EXPECT_EQ(it, text.codepoint_cend());
    EXPECT_EQ(it.codeUnitIndex(), -1);
    EXPECT_EQ(*it, 0u);
    EXPECT_EQ(RuntimeError([&] { ++it; }), kPastEnd);
    for (int i = 2; i >= 0; --i) {
        --it;
        EXPECT_EQ(it.codeUnitIndex(), indexes[i]);
    }
    EXPECT_EQ(it.codePointIndex(), 0); // known again at the start
    EXPECT_EQ(RuntimeError([&] { it--; }), kPastBegin);
    TypeParam const empty;
    EXPECT_EQ(empty.codepoint_cbegin(), empty.codepoint_cend());
    auto none = empty.codepoint_cend();
    EXPECT_EQ(RuntimeError([&] { --none; }), kPastBegin);
}

TYPED_TEST(CodePointIteratorTest, OddTextsAreWalkedToTheEnd)
{
    // Stepping takes two units for any surrogate, as far as the text goes.
    using Case = std::pair<std::u16string, std::u32string>;
    for (auto const& [units, points] : {Case{std::u16string(u"a\0b", 3), std::u32string(U"a\0b", 3)},
                                        {u"\xD83D", U"\uFFFD"},
                                        {u"\xDE00z", U"\uFFFD"},
                                        {u"\xDE00\xDE00z", U"\uFFFDz"},
                                        {u"a\xD83D", U"a\uFFFD"}}) {
        TypeParam const text{TStringView(units)};
        std::u32string walked;
        for (auto it = text.codepoint_cbegin(); it != text.codepoint_cend(); ++it) {
            walked += *it;
        }
        EXPECT_EQ(walked, points);
    }
    TypeParam const low = u"\xDE00\xDE00";
    EXPECT_EQ((--low.codepoint_cend()).codeUnitIndex(), 0);
}

TYPED_TEST(CodePointIteratorTest, FromIndex)
{
    TypeParam const text = u"a\U0001F600b";
    EXPECT_EQ(text.iteratorFrom(3).codePointIndex(), 2);
    EXPECT_EQ(text.iteratorFrom(4), text.codepoint_cend());
    EXPECT_EQ(text.iteratorFrom(-1), text.codepoint_cend());
    EXPECT_EQ(text.iteratorFrom(-3).codeUnitIndex(), 1);
    for (auto const& [index, error] : {std::pair{5, kOutOfRange}, {-5, kOutOfRange}, {2, kInsidePair}}) {
        EXPECT_EQ(RuntimeError([&, at = index] { static_cast<void>(text.iteratorFrom(at)); }), error);
    }
}

TYPED_TEST(CodePointIteratorTest, OrderAndDistance)
{
    TypeParam const text = u"a\U0001F600bc";
    auto const first = text.codepoint_cbegin();
    auto const third = text.iteratorFrom(3);
    auto const end = text.codepoint_cend();
    EXPECT_TRUE(first < third && third < end && end > first && end >= end && first <= third && third != end);
    EXPECT_EQ(first.distance(third), 2);
    EXPECT_EQ(third.distance(first), -2);
    EXPECT_EQ(first.distance(end), 4);
    using Iterator = TConstCodePointIterator<TypeParam>;
    Iterator const unknown(-1, 3, text); // the ordinal is counted when asked for
    EXPECT_EQ(unknown, third);
    EXPECT_EQ(unknown.distance(end), 2);
    EXPECT_EQ(std::next(unknown).codePointIndex(), -1);
}

TYPED_TEST(CodePointIteratorTest, SlicesAndSearches)
{
    constexpr bool kIsView = std::is_same_v<TypeParam, TStringView>;
    TypeParam const v = u"a\U0001F600b\U0001F600";
    auto const begin = v.codepoint_cbegin();
    auto const end = v.codepoint_cend();
    auto const pair = v.iteratorFrom(1);
    EXPECT_EQ(v.mid(pair, 1), u"\U0001F600");
    EXPECT_EQ(v.mid(pair, 2), u"\U0001F600b");
    EXPECT_EQ(v.mid(pair, 9), u"\U0001F600b\U0001F600");
    EXPECT_EQ(v.mid(pair, -1), kIsView ? u"" : u"\U0001F600b\U0001F600");
    EXPECT_EQ(v.mid(begin, pair), u"a");
    EXPECT_EQ(v.mid(pair, end), u"\U0001F600b\U0001F600");
    EXPECT_TRUE(v.mid(pair, begin).empty() && v.mid(end, pair).empty() && v.mid(end, 3).empty());
    EXPECT_EQ(v.find(u"\U0001F600"), pair);
    EXPECT_EQ(v.find(u"\U0001F600", std::next(pair)).codeUnitIndex(), 4);
    EXPECT_EQ(v.findLast(u"\U0001F600").codeUnitIndex(), 4);
    EXPECT_EQ(v.findLast(u"\U0001F600", pair), pair);
    EXPECT_EQ(v.find(u"x"), end);
    EXPECT_EQ(v.find(u"a", end), end);
    EXPECT_EQ(v.findOneOf(u"b", pair).codeUnitIndex(), 3);
    EXPECT_EQ(v.findOneNotOf(u"\U0001F600", pair).codeUnitIndex(), 3);
    EXPECT_EQ(pair.distance(v.findLast(u"\U0001F600")), 2);
    TStringCore const text = u"a text of its own, in another place";
    TypeParam const other(text);
    std::string const error = std::string(kIsView ? "TStringView" : "TStringCore") +
                              "::iteratorFrom iterators do not reference the same underlying string.";
    EXPECT_EQ(RuntimeError([&] { static_cast<void>(other.mid(pair, 1)); }), error);
    EXPECT_EQ(RuntimeError([&] { static_cast<void>(other.find(u"a", pair)); }), error);
}

TYPED_TEST(CodePointIteratorTest, ForeignIteratorsAreRefused)
{
    TStringCore const ownText(u'x', 20);
    TStringCore const otherText(u'x', 21);
    TypeParam const a(ownText);
    TypeParam const b(otherText);
    std::string const name = std::is_same_v<TypeParam, TStringView> ? "TStringView" : "TStringCore";
    std::string const prefix = "TConstCodePointIterator<class " + name + ">::operator ";
    std::string const suffix = " iterators do not reference the same underlying string.";
    auto x = a.codepoint_cbegin();
    auto const y = b.codepoint_cbegin();
    EXPECT_EQ(RuntimeError([&] { static_cast<void>(x == y); }), prefix + "==" + suffix);
    EXPECT_EQ(RuntimeError([&] { static_cast<void>(x != y); }), prefix + "!=" + suffix);
    EXPECT_EQ(RuntimeError([&] { static_cast<void>(x >= y); }), prefix + ">=" + suffix);
    EXPECT_EQ(RuntimeError([&] { x = y; }), prefix + "=" + suffix);
    EXPECT_EQ(RuntimeError([&] { static_cast<void>(x.distance(y)); }), prefix + "-" + suffix);
    EXPECT_EQ(RuntimeError([&] { static_cast<void>(a.iteratorFrom(y)); }), name + "::iteratorFrom" + suffix);
    TConstCodePointIterator<TypeParam> fresh;
    fresh = y; // walks no text yet
    EXPECT_EQ(fresh, y);
    TypeParam const same(a); // a copy of the text's address is the same text
    EXPECT_EQ(a.codepoint_cbegin(), same.codepoint_cbegin());
    EXPECT_EQ(a.iteratorFrom(same.iteratorFrom(3)).codeUnitIndex(), 3);
    TStringView const longer = ownText;
    TStringView const shorter = longer.left(3);
    EXPECT_EQ(shorter.iteratorFrom(longer.iteratorFrom(4)).codePointIndex(), -1);
}

TEST(CodePointIterator, HelpersOfTheString)
{
    TStringCore const text = u"a\U0001F600b\U0001F601";
    EXPECT_EQ(text.getInsertCodeUnitIndex(text.iteratorFrom(3)), 3);
    EXPECT_EQ(text.getInsertCodeUnitIndex(text.codepoint_cend()), 6);
    EXPECT_EQ(text.subStringSizeInCodeUnits(1, 2), 3);
    EXPECT_EQ(text.subStringSizeInCodeUnits(1, 99), 5);
    EXPECT_EQ(text.subStringSizeInCodeUnits(4, -1), 2);
    EXPECT_EQ(text.subStringSizeInCodeUnits(-1, 2), 0);
    auto const points = text.constCodePointView();
    EXPECT_EQ(std::u32string(points.begin(), points.end()), U"a\U0001F600b\U0001F601");
    std::u32string ofPart; // of a view that is gone
    for (char32_t const c : text.view().left(3).codePoints()) {
        ofPart += c;
    }
    EXPECT_EQ(ofPart, U"a\U0001F600");
}

TEST(CodePointIterator, WritingReplacesWholeCodePoints)
{
    TStringCore text = u"a\U0001F600b";
    TStringCore const before = text;
    for (auto c : text.codePointView()) {
        c = c == U'\U0001F600' ? U'!' : U'\U0001F601';
    }
    EXPECT_EQ(text, u"\U0001F601!\U0001F601");
    EXPECT_EQ(before, u"a\U0001F600b");
    auto const view = text.codePointView();
    *view.begin() = *std::prev(view.end());
    *std::next(view.begin()) = char32_t{0x110000};
    EXPECT_EQ(text, u"\U0001F601\uFFFD\U0001F601");
    CoreIterator const readOnly = view.begin();
    EXPECT_EQ(readOnly, text.codepoint_cbegin());

    auto it = std::prev(view.end());
    text.resize(1);
    EXPECT_EQ(*it, 0u);
    *it = U'x'; // behind the text: nothing happens
    EXPECT_EQ(text.length(), 1);
    EXPECT_EQ(RuntimeError([&] { ++it; }), "CodePointIterator<>::operator++: m_position[3] is out of range.");
    EXPECT_EQ(text.codepoint_cbegin().distance(it), 1); // counted as far as the text goes
    EXPECT_EQ(*TCodePointIterator<TStringCore>(), 0u);
    it = view.end();
    EXPECT_EQ(RuntimeError([&] { ++it; }), kPastEnd);
    TStringCore empty;
    EXPECT_EQ(RuntimeError([&] { --empty.codePointView().begin(); }), kPastBegin);
    TStringCore other;
    EXPECT_EQ(RuntimeError([&] { static_cast<void>(view.begin() == other.codePointView().begin()); }),
              "TConstCodePointIterator<class TStringCore>::operator == iterators do not reference the same underlying "
              "string.");
}

} // namespace
