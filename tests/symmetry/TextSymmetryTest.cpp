// Every pair of text-like types works in every operation, in both orders, and means the same.

#include <string>
#include <type_traits>

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

    template<class F>
    void ForEach(F f) const
    {
        f(string);
        f(TStringView(string));
        f(units.c_str());
        f(wide.c_str());
    }
};

template<class T>
constexpr bool kIsOwnType = std::is_same_v<T, TStringCore> || std::is_same_v<T, TStringView>;
template<class T>
constexpr bool kIsView = std::is_same_v<T, TStringView>;

template<class A, class B>
struct Outcome
{
    static std::string Of(A const& a, B const& b)
    {
        return std::string(a == b ? "==" : "") + (a != b ? "!=" : "") + (a < b ? "<" : "") + (a <= b ? "<=" : "") +
               (a > b ? ">" : "") + (a >= b ? ">=" : "");
    }
};

template<class A, class B>
std::string OutcomeOf(A const& a, B const& b)
{
    return Outcome<A, B>::Of(a, b);
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
}

TEST(TextSymmetry, ComparisonsWithACharacterOfEveryType)
{
    for (char16_t const* const sample : {u"", u"a", u"b", u"ba", u"c", u"\u00E9", u"\U0001F600", u"\U0001F600x"}) {
        TStringCore const string = sample;
        TStringView const view = string;
        CheckCharacter(string, 'b', u"b");
        CheckCharacter(view, 'b', u"b");
        CheckCharacter(string, '\xE9', u"\u00E9");
        CheckCharacter(view, '\xE9', u"\u00E9");
        CheckCharacter(string, u'b', u"b");
        CheckCharacter(view, u'b', u"b");
        CheckCharacter(string, L'b', u"b");
        CheckCharacter(view, L'b', u"b");
        CheckCharacter(string, U'\U0001F600', u"\U0001F600");
        CheckCharacter(view, U'\U0001F600', u"\U0001F600");
        if constexpr (!qvxsys::kWideIsUtf16) {
            CheckCharacter(string, static_cast<wchar_t>(0x1F600), u"\U0001F600");
            CheckCharacter(view, static_cast<wchar_t>(0x1F600), u"\U0001F600");
        }
    }
}

// Construction, assignment, appending, inserting and concatenation from every type.
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
    TStringCore assigned = string;
    assigned = argument;
    EXPECT_EQ(assigned.toStdUString(), means);
    TStringCore pushed = string;
    pushed.push_back(argument);
    pushed.push_front(argument);
    EXPECT_EQ(pushed.toStdUString(), means + base + means);
    EXPECT_EQ(TStringCore(argument).toStdUString(), means);
}

TEST(TextSymmetry, BuildingFromEveryType)
{
    for (char16_t const* const sample : {u"", u"text", u"\u00E9\U0001F600", u"more text than an object holds"}) {
        Texts const texts{sample};
        texts.ForEach([&](auto const& x) { CheckBuilding(x, texts.units); });
        CheckBuilding(texts.utf8.c_str(), texts.units);
    }
    CheckBuilding('\xE9', u"\u00E9");
    CheckBuilding(u'\u20AC', u"\u20AC");
    CheckBuilding(L'\u20AC', u"\u20AC");
    CheckBuilding(U'\U0001F600', u"\U0001F600");
}

} // namespace
