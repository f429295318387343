// Every pair of text-like types works in every operation, in both orders, and means the same.

#include <functional>
#include <initializer_list>
#include <map>
#include <string>
#include <tuple>
#include <type_traits>

#include <qvxsys/qvxsys.h>

#include "support/TextPrinters.h"

namespace {

// The same text in every type it can be passed as.
struct Texts
{
    explicit Texts(std::u16string text)
        : units(std::move(text)), string(units), wide(string.toStdWString()), utf8(string.toStdString())
    {}

    std::u16string units;
    TStringCore string;
    std::wstring wide;
    std::string utf8;

    /// In the types that compare with each other.
    template<class F>
    void ForEach(F f) const
    {
        f(string);
        f(TStringView(string));
        f(units.c_str());
        f(wide.c_str());
    }
    /// And in those of the standard library.
    template<class F>
    void ForEachType(F f) const
    {
        ForEach(f);
        f(utf8.c_str());
        f(utf8);
        f(std::string_view(utf8));
        f(wide);
        f(std::wstring_view(wide));
        f(units);
        f(std::u16string_view(units));
        f(std::u8string(utf8.begin(), utf8.end()));
        f(std::u8string(utf8.begin(), utf8.end()).c_str());
    }
};

template<class T>
constexpr bool kIsOwnType = std::is_same_v<T, TStringCore> || std::is_same_v<T, TStringView>;
template<class T>
constexpr bool kIsView = std::is_same_v<T, TStringView>;

template<class A, class B>
std::string OutcomeOf(A const& a, B const& b)
{
    return std::string(a == b ? "==" : "") + (a != b ? "!=" : "") + (a < b ? "<" : "") + (a <= b ? "<=" : "") +
           (a > b ? ">" : "") + (a >= b ? ">=" : "");
}

// Strings order by unit, views by length first: one outcome each, whatever the other side's type.
TEST(TextSymmetry, ComparisonsOfEveryPair)
{
    char16_t const* const samples[] = {
        u"", u"a", u"b", u"ab", u"abc", u"\u00E9", u"\U0001F600", u"\uFFFF", u"twenty units of text"};
    for (char16_t const* const left : samples) {
        for (char16_t const* const right : samples) {
            Texts const a{left};
            Texts const b{right};
            std::string const asStrings = OutcomeOf(a.string, b.string);
            std::string const asViews = OutcomeOf(TStringView(a.string), TStringView(b.string));
            a.ForEach([&](auto const& x) {
                b.ForEach([&](auto const& y) {
                    using X = std::decay_t<decltype(x)>;
                    using Y = std::decay_t<decltype(y)>;
                    if constexpr (kIsOwnType<X> || kIsOwnType<Y>) {
                        EXPECT_EQ(OutcomeOf(x, y), kIsView<X> || kIsView<Y> ? asViews : asStrings)
                            << a.utf8 << '|' << b.utf8;
                    }
                });
            });
            EXPECT_EQ(a.string == b.utf8.c_str(), a.units == b.units);
            // What has to be converted compares with views as well.
            TStringView const view = a.string;
            EXPECT_EQ(OutcomeOf(view, b.utf8), asViews);
            EXPECT_EQ(OutcomeOf(view, b.utf8.c_str()), asViews);
            EXPECT_EQ(OutcomeOf(view, std::wstring_view(b.wide)), asViews);
            EXPECT_EQ(b.wide == view, asViews.starts_with("=="));
            EXPECT_EQ(OutcomeOf(b.utf8, view), OutcomeOf(TStringView(b.string), view));
            EXPECT_EQ(b.utf8.c_str() < a.string, b.string < a.string);
        }
    }
}

template<class Text, class C>
void CheckCharacter(Text const& text, C c, TStringView sameAs)
{
    bool const equal = TStringView(text) == sameAs;
    EXPECT_EQ(text == c, equal);
    EXPECT_EQ(c == text, equal);
    EXPECT_EQ(text != c, !equal);
    bool const empty = TStringView(text).empty();
    bool const less = empty || TStringView(text)[0] < sameAs[0];
    EXPECT_EQ(text < c, less);
    EXPECT_EQ(c < text, kIsView<Text> ? !empty && sameAs[0] < TStringView(text)[0] : !less && !equal);
    EXPECT_EQ(text <= c, less || equal);
    EXPECT_EQ(c >= text, kIsView<Text> ? !(c < text) : less || equal);
    EXPECT_EQ(text > c, c < text);
    EXPECT_EQ(c <= text, text >= c);
    EXPECT_EQ(c > text, kIsView<Text> ? !(c < text) && !equal : less);
}

TEST(TextSymmetry, ComparisonsWithACharacterOfEveryType)
{
    for (char16_t const* const sample : {u"", u"a", u"b", u"ba", u"c", u"\u00E9", u"\U0001F600", u"\U0001F600x"}) {
        auto const check = [string = TStringCore(sample)](auto c, TStringView sameAs) {
            CheckCharacter(string, c, sameAs);
            CheckCharacter(string.view(), c, sameAs);
        };
        check('b', u"b");
        check('\xE9', u"\u00E9");
        check(u'b', u"b");
        check(L'b', u"b");
        check(U'\U0001F600', u"\U0001F600");
        if constexpr (!qvxsys::kWideIsUtf16) {
            check(static_cast<wchar_t>(0x1F600), u"\U0001F600");
        }
    }
}

// Construction, assignment, appending, inserting and concatenation.
template<class Argument>
void CheckBuilding(Argument const& argument, std::u16string const& means)
{
    std::u16string const base = u"base ";
    TStringCore const string(base);
    EXPECT_EQ((TStringCore(string) += argument).toStdUString(), base + means);
    EXPECT_EQ(TStringCore(string).append(argument).toStdUString(), base + means);
    EXPECT_EQ(TStringCore(string).prepend(argument).toStdUString(), means + base);
    EXPECT_EQ(TStringCore(string).insert(2, argument).toStdUString(), std::u16string(base).insert(2, means));
    EXPECT_EQ((string + argument).toStdUString(), base + means);
    EXPECT_EQ((TStringCore(string) + argument).toStdUString(), base + means);
    EXPECT_EQ((argument + string).toStdUString(), means + base);
    EXPECT_EQ((argument + TStringCore(string)).toStdUString(), means + base);
    TStringCore assigned = string;
    assigned = argument;
    EXPECT_EQ(assigned.toStdUString(), means);
    TStringCore pushed = string;
    pushed.push_back(argument);
    pushed.push_front(argument);
    EXPECT_EQ(pushed.toStdUString(), means + base + means);
    EXPECT_EQ(TStringCore(argument).toStdUString(), means);
}

// Where wchar_t is a UTF-16 unit, wide text goes in and out without a copy.
TEST(TextSymmetry, WideTextIsSharedWhereItIsUtf16)
{
    auto const check = []<class Text>(Text const& text) {
        if constexpr (qvxsys::kWideIsUtf16) {
            testing_support::LeakCheck const blocks;
            // Depends on the template's argument: looked at only where it compiles.
            using Wide = std::conditional_t<std::is_class_v<Text>, wchar_t, Text>;
            Wide const* const wide = text;
            TStringView const view(wide);
            EXPECT_EQ(static_cast<void const*>(wide), text.constData());
            EXPECT_EQ(view.data(), text.constData());
            EXPECT_EQ(view.size(), text.size());
            EXPECT_TRUE(text == wide && view == wide && text.compare(wide) == 0);
            EXPECT_EQ(TStringCore::compare(wide, wide) + TStringCore::compareN(wide, wide, 5), 0);
            EXPECT_EQ(TStringCore::findStr(wide, wide) + TStringCore::findStr(wide, 9, wide, 2), 0);
            EXPECT_EQ(TStringCore::leftIntegerLength(wide) + TStringCore::leftDoubleLength(wide, 3), 0);
            EXPECT_EQ(TStringCore::lengthInCodePoints(wide), text.length());
            EXPECT_TRUE(view.startsWith(wide) && view.contains(wide) && view.indexOf(wide) == 0);
            EXPECT_EQ(blocks.Allocations(), 0u);
        } else {
            GTEST_SKIP() << "wchar_t is a code point of 32 bits here";
        }
    };
    check(TStringCore(u'\u65E5', 100));
}

// Every reading member, on strings and views, with the argument in one type gives what it gives with the argument as a
// view; the needle occurs in the text, and in the other case.
template<class Text, class Argument>
void CheckReading(Text const& text, Argument const& argument, TStringView means)
{
    constexpr auto kCase = [] {
        if constexpr (kIsView<Text>) {
            return CaseCompare::Insensitive;
        } else {
            return TStringCore::CaseInsensitive;
        }
    }();
    auto const start = text.codepoint_cbegin();
    auto const found = [&](auto const& a) {
        return std::tuple(text.startsWith(a), text.endsWith(a, kCase), text.contains(a), text.contains(a, kCase),
                          text.count(a, kCase), text.indexOf(a, 1), text.indexOf(a, 0, kCase),
                          text.lastIndexOf(a, -2, kCase), text.lastIndexOf(a, -1, kCase), text.find(a),
                          text.find(a, start, kCase), text.findLast(a, kCase), text.findLast(a, start),
                          text.findOneOf(a, 1), text.findOneNotOf(a), text.findOneOf(a, start),
                          text.findOneNotOf(a, start), text.spanIncluding(a), text.spanExcluding(a));
    };
    auto const parts = [&](auto const& a) {
        Text left = text, right = text, both = text;
        return std::tuple(text.split(a), text.splitCopy(a), text.splitOnAny(a), text.splitCopyOnAny(a),
                          text.tokenize(a), text.section(a, 1), text.trimmed(a), TStringCore(left.trimLeft(a)),
                          TStringCore(right.trimRight(a)), TStringCore(both.trim(a)));
    };
    EXPECT_TRUE(found(argument) == found(means)) << means;
    EXPECT_EQ(text.indexOf(argument, kCase), text.indexOf(means, 0, kCase));
    EXPECT_EQ(text.lastIndexOf(argument, kCase), text.lastIndexOf(means, -1, kCase));
    EXPECT_EQ(parts(argument), parts(means));
}

// The same for the members that edit.
template<class Argument>
void CheckEditing(TStringCore const& text, Argument const& argument, TStringView means)
{
    constexpr auto kFolded = TStringCore::CaseInsensitive;
    auto const edited = [&](auto const& a) {
        auto const copy = [&] { return TStringCore(text); };
        return std::tuple(copy().removeAll(a, kFolded), copy().removeAnyOf(a), copy().replace(1, 2, a),
                          copy().replace(a, u"new"), copy().replace(U'e', a, kFolded), copy().replaceCount(a, a),
                          copy().replaceAnyOf(a, a), TStringCore::join(text.splitCopy(u' '), a),
                          TStringCore::join(text.split(u' '), a));
    };
    EXPECT_EQ(edited(argument), edited(means));
}

TEST(TextSymmetry, EveryOperationTakesEveryTypeOfText)
{
    TStringCore const text =
        u"E\u00E9\U0001F600 text with E\u00E9\U0001F600, e\u00E9\U0001F600 and \u00E9\U0001F600 E\u00E9";
    auto const check = [&](auto const& argument, TStringView means) {
        CheckReading(text, argument, means);
        CheckReading(text.view(), argument, means);
        CheckEditing(text, argument, means);
        CheckBuilding(argument, std::u16string(means));
    };
    for (char16_t const* const needle : {u"E\u00E9", u" ", u"\U0001F600", u"", u"more text than an object holds"}) {
        Texts(needle).ForEachType([&](auto const& argument) { check(argument, needle); });
    }
    check('\xE9', u"\u00E9");
    check(u'E', u"E");
    check(L'\u20AC', u"\u20AC");
    check(U'\U0001F600', u"\U0001F600");
    CheckReading(text, u"E", u"E"); // an array
    EXPECT_EQ(text.view().indexOf({u" text", 2}), text.indexOf(u" t"));
    EXPECT_EQ(TStringView(u"a\uF600").indexOf(U'\U0001F600'), -1);
}

// The twins that take a code point do what the others do with one.
TEST(TextSymmetry, CodePointTwins)
{
    TStringCore const text = u"\U0001F600a\U0001F600";
    constexpr char32_t c = 0x1F600;
    EXPECT_TRUE(text.startsWith32(c) && text.endsWith32(c) && text.contains32(c));
    EXPECT_EQ(text.count32(c) + text.view().indexOf32(c, 1), 2 + 3);
    EXPECT_EQ(TStringCore(text).removeAll32(c), u"a");
    EXPECT_EQ(TStringCore(text).replaceAnyOf32(u"a", c), TStringCore(c, 3));
    EXPECT_EQ(TStringCore(text).trimLeft32(c).trimRight32(c), TStringCore(text).trim32(c));
    TStringView view = text;
    EXPECT_EQ(view.trimLeft32(c).trimRight32(c), u"a");
}

// Strings convert to pointers; the standard library must compare texts all the same, not addresses.
TEST(TextSymmetry, StandardComparisonsAndNull)
{
    std::map<TStringCore, int, std::less<>> const map{{u"key", 1}};
    EXPECT_EQ(map.count(TStringCore(u"key")) + map.count(u"key"), 2u);
    EXPECT_TRUE(std::less<>()(TStringCore(u"bbb"), u"ccc") && std::greater<>()(u"ccc", TStringCore(u"bbb")));
    TStringCore s = u"x";
    s = {};
    EXPECT_TRUE(s.empty() && s == nullptr);
    s = nullptr;
    EXPECT_TRUE(s == nullptr && s != std::u16string(u"abc") && s.view() != std::u16string(u"abc"));
    TStringCore::Exception const exception(u"text");
    EXPECT_TRUE(u"text" == exception && exception == L"text");
}

// What takes both a wide pointer and a view takes a string as well, which is both on Windows.
TEST(TextSymmetry, StringsAmongWidePointersAndViews)
{
    using namespace QvxICU;
    ICUFactories const& factories = Module().getFactories();
    ICUErrorCode status = ICUErrorCode::ZeroError;
    TStringCore const text = u"yyyy";
    EXPECT_EQ(ICUString::createInstance(text)->toString(), text);
    EXPECT_EQ(factories.string.createInstance(text)->toString(), text);
    EXPECT_EQ(factories.simpleDateFormat.createInstance(text, ICULocale::getUS(), status)->toPattern(), text);
}

// A program can refer to each constant of an exported class: on Windows that one is the DLL's.
TEST(Constants, HaveAddresses)
{
    using namespace QvxICU;
    void const* volatile address = nullptr;
    for (void const* constant : std::initializer_list<void const*>{
             &TStringCore::kInlineLength, &TStringCore::kInlineCapacity, &TTextDecoder::kMaxChunk,
             &ICUFieldPosition::kDontCare, &ICURegexMatcher::kDefaultTimeLimit, &ICURegexMatcher::kDefaultStackLimit,
             &ICUDecimalFormat::kMaximumDecimalPlaces}) {
        address = constant;
        EXPECT_NE(address, nullptr);
    }
}

} // namespace
