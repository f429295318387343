// The positional formatter, at run time and from checked literals.

#include <climits>
#include <cstdio>
#include <random>
#include <vector>

#include "support/FailingNew.h"
#include "support/ReferenceFormat.h"
#include "support/TextPrinters.h"

namespace {

using Texts = std::vector<TStringCore>;

/// "0xCODE message" of the formatter's exception that f throws.
template<class F>
std::string FormatError(F f)
{
    try {
        f();
    } catch (TFormatStringCore::Exception const& e) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%08X", e.GetErrorCode());
        EXPECT_EQ(e.GetErrorName(), TStringCore(u"QuorvexException_AutoGen_") + code);
        EXPECT_EQ(e.GetErrorSource(), 4);
        EXPECT_TRUE(e.GetRedactedMessages().empty());
        return code + std::string(" ") + e.GetMessagesFront().toStdString();
    }
    return "";
}

// (What becomes of any format, and of any argument, is compared with the slow formatter below.)
TEST(TFormatString, FormatsOfEveryType)
{
    Texts many;
    for (int i = 1; i <= 99; ++i) {
        many.push_back(TStringCore::number(i));
    }
    TStringCore const format = u"a plain text that is longer than a string holds inside, 100%% \U0001F600 %99 %1%98";
    TStringCore const result = u"a plain text that is longer than a string holds inside, 100% \U0001F600 99 198";
    TFormatStringCore f(format);
    EXPECT_EQ(f.arg(many).result(), result);
    EXPECT_EQ(TStringCore(f), result);
    EXPECT_EQ(f.formatString(), format);
    EXPECT_EQ(TFormatStringCore(format.toStdWString().c_str()).arg(many).result(), result);
    EXPECT_EQ(TFormatStringCore(format.toStdString().c_str()).arg(many).result(), result);
    EXPECT_EQ(TFormatStringCore(TStringCore(u"a\0%1", 4)).arg(u"b").result().view(), TStringView(u"a\0b", 3));
}

TEST(TFormatString, Faults)
{
    struct
    {
        char16_t const* format;
        char const* error;
    } const cases[] = {
        {u"100%", "0xA33EDF83 Format string ends with an incomplete marker."},
        {u"%a", "0xF7AF5E37 Invalid numberless marker in format string."},
        {u"%01", "0xB3668D59 Leading zero in marker number in format string."},
        {u"%100", "0xCA249FEE Invalid marker number > 99 in format string."},
        {u"%\u0661\u0661", "0xCA249FEE Invalid marker number > 99 in format string."},
        {u"%99999999999999999999", "0xCA249FEE Invalid marker number > 99 in format string."},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(TStringCore(c.format).toStdString());
        EXPECT_EQ(FormatError([&] { TFormatStringCore f(c.format); }), c.error);
        TFormatStringCore f(u"%1");
        f.arg(u"kept");
        EXPECT_EQ(FormatError([&] { f = c.format; }), c.error);
        EXPECT_EQ(f.formatString(), c.format);
        f = u"<%1>";
        EXPECT_EQ(f.result(), u"<kept>");
    }
}

TEST(TFormatString, ArgumentsOfEveryKind)
{
    enum Plain { kThree = 3 };
    auto const one = [](auto... how) { return TFormatStringCore(u"[%1]").arg(how...).result(); };
    // Whole numbers.
    EXPECT_EQ(one(7, 3, 10, '0'), u"[007]");
    EXPECT_EQ(one(7, -3, 10, '.'), u"[7..]");
    EXPECT_EQ(one(-7, 4, 10, u'0'), u"[00-7]"); // padded as text: the sign is part of it
    EXPECT_EQ(one(255, 0, 16), u"[ff]");
    EXPECT_EQ(one(-1, 0, 16), u"[ffffffffffffffff]");
    EXPECT_EQ(one(static_cast<short>(-5)), u"[-5]");
    EXPECT_EQ(one(UINT_MAX), u"[4294967295]");
    EXPECT_EQ(one(LLONG_MIN), u"[-9223372036854775808]");
    EXPECT_EQ(one(ULLONG_MAX), u"[18446744073709551615]");
    EXPECT_EQ(one(true), u"[1]");
    EXPECT_EQ(one(kThree), u"[3]");
    EXPECT_EQ(testing_support::TextError([&] { one(1, 0, 37); }), "TStringCore::number: base out of range.");
    // Floating-point numbers.
    EXPECT_EQ(one(3.14159265), u"[3.14159]");
    EXPECT_EQ(one(0.1f), u"[0.1]");
    EXPECT_EQ(one(2.5, 8, 'f', 2), u"[    2.50]");
    EXPECT_EQ(one(2.5, -8, 'f', 2, u'*'), u"[2.50****]");
    EXPECT_EQ(one(2.5, 0, 'e'), u"[2.500000e+00]");
    // Characters: of each type, not numbers.
    EXPECT_EQ(one('\xE9'), u"[\u00E9]");
    EXPECT_EQ(one(L'\u00E9', 3), u"[  \u00E9]");
    EXPECT_EQ(one(u'x', -3, u'-'), u"[x--]");
    EXPECT_EQ(one(U'\U0001F600'), u"[\U0001F600]");
    // Texts.
    EXPECT_EQ(one(TStringCore(u"t"), 3), u"[  t]");
    EXPECT_EQ(one(u"long", 3), u"[long]");
    EXPECT_EQ(one(L"w\u00E9", -4, L'_'), u"[w\u00E9__]");
    EXPECT_EQ(one("u\xC3\xA9"), u"[u\u00E9]");
    EXPECT_EQ(one(TStringView(u"view", 2)), u"[vi]");
    EXPECT_EQ(one(TFormatStringCore(u"%%")), u"[%]");
    // Several.
    EXPECT_EQ(TFormatStringCore(u"%1%3").arg({u"a"}).arg({TStringCore(u"b"), u"c"}).result(), u"ac");
    EXPECT_EQ(TFormatStringCore(u"%1%2%3%4%5%6%7%8%9%10")
                  .arg(u"a", L"b", "c", TStringCore(u"d"), u"e", u"f", u"g", u"h", u"i", u"j")
                  .result(),
              u"abcdefghij");
    EXPECT_EQ(TFormatStringCore(u"%6%5%4%3%2%1").args(1, '2', 3ul, 4.0, 5LL, u"6").args().result(), u"654321");
}

// A character in second place is no field width.
template<class... A>
concept CanArg = requires(TFormatStringCore f, A const&... a)
{
    f.arg(a...);
};
static_assert(CanArg<TStringCore, int, char> && CanArg<int, int, int, char> && CanArg<double, int, char>);
static_assert(!CanArg<TStringCore, char> && !CanArg<char16_t const*, char16_t> && !CanArg<TStringCore, char, char>);
static_assert(!CanArg<int, char> && !CanArg<double, char> && !CanArg<char, char32_t> && !CanArg<int, wchar_t, int>);

TEST(TFormatString, NullIsEmptyText)
{
    TFormatStringCore f(nullptr);
    EXPECT_EQ(f.arg(nullptr).result(), u"");
    f = u"[%1]";
    EXPECT_EQ(f.result(), u"[]");
    f = nullptr;
    EXPECT_EQ(f.result(), u"");
}

TEST(TFormatString, IsAValue)
{
    TFormatStringCore a(u"%1%2%3%4%5%6");
    a.arg(Texts{u"1", u"2", u"3", u"4", u"5", u"a long sixth argument, in a block"});
    TStringCore const expected = a.result();
    TFormatStringCore copy(a);
    TFormatStringCore assigned(u"%1%1%1%1%1%1%1%1%1%1%1");
    assigned.arg(u"x");
    assigned = copy;
    TFormatStringCore const& same = assigned;
    assigned = same;
    copy.clearParms();
    EXPECT_EQ(copy.formatString(), u"%1%2%3%4%5%6");
    EXPECT_FALSE(FormatError([&] { static_cast<void>(copy.result()); }).empty());
    EXPECT_EQ(assigned.result(), expected);
    TFormatStringCore moved(std::move(assigned));
    EXPECT_EQ(moved.result(), expected);
    EXPECT_EQ(assigned.result(), u""); // NOLINT: the moved-from state is promised
    TFormatStringCore few(u"%1");
    few.arg(u"f");
    moved = std::move(few);
    EXPECT_EQ(moved.result(), u"f");
    EXPECT_EQ(few.arg(u"again").formatString(), u""); // NOLINT
    EXPECT_EQ(a.result(), expected);
    // An argument from the formatter itself, while its list grows.
    TFormatStringCore self(u"%1");
    self.arg(u"a");
    for (int i = 0; i < 10; ++i) {
        self.arg(self.result());
    }
    EXPECT_EQ(self.result(), u"a");
}

TEST(TFormatString, CopyAssignmentIsAllOrNothing)
{
    TFormatStringCore other(u"%1%2%3%4%5%6%7%8%9");
    other.arg(Texts(9, u"x"));
    TFormatStringCore f(u"[%1]");
    f.arg(u"kept");
    int failures = 0;
    for (bool done = false; !done; ++failures) {
        try {
            FailingNew const failing(failures);
            f = other;
            done = true;
        } catch (std::bad_alloc const&) {
        }
        EXPECT_EQ(f.result(), done ? u"xxxxxxxxx" : u"[kept]") << failures;
    }
    EXPECT_GT(failures, 2); // the markers and the arguments both need memory
}

TEST(TFormatString, LongFormats)
{
    TStringCore format, expected;
    for (int i = 0; i < 500; ++i) {
        format.append(u"%2, ").append(TStringCore(u'.', i % 20));
        expected.append(u"b, ").append(TStringCore(u'.', i % 20));
    }
    testing_support::LeakCheck const check;
    {
        TFormatStringCore f(format);
        f.arg(u"a", u"b");
        unsigned const before = check.Allocations();
        EXPECT_EQ(f.result(), expected);
        EXPECT_EQ(check.Allocations() - before, 1u);
    }
    EXPECT_TRUE(check.Balanced());
}

TEST(TFormatString, AgreesWithTheReference)
{
    std::mt19937 random(20110917);
    char16_t const alphabet[] = {u'%', u'%', u'%', u'0', u'1', u'2', u'3', u'9', u'a', u' ', 0x661, 0xFF11, 0xD83D, 0};
    for (int round = 0; round < 20000; ++round) {
        std::u16string format(random() % 12, u'.');
        for (char16_t& c : format) {
            c = alphabet[random() % std::size(alphabet)];
        }
        reference::CheckFormat(format, {u"one", u"", u"%1 in an argument"});
    }
    // A digit of another script counts by its unit: U+0661 is marker 0x631.
    EXPECT_EQ(reference::Format(u"%\u0661", {}).need, 1585);
    reference::CheckFormat(u"%\u0661", {});
}

TEST(Format, CheckedLiterals)
{
    using qvxsys::Format;
    TStringCore const name = u"name";
    EXPECT_EQ(Format(u"%1 of %2: %3", 3, 10L, name), u"3 of 10: name");
    EXPECT_EQ(Format(u""), u"");
    EXPECT_EQ(Format(u"%2%1", u'a', "b"), u"ba");
    EXPECT_EQ(Format(u"%1\u2026", 2.5), u"2.5\u2026");
    EXPECT_EQ(Format(L"%2 \U0001F600 %1", L"a", TStringView(u"b")), u"b \U0001F600 a");
    EXPECT_EQ(Format("\xC3\xA9%1", U'\U0001F600'), u"\u00E9\U0001F600");
    EXPECT_EQ(Format(u8"\u00E9%1%%", 1), u"\u00E91%");
    // A digit of another script in UTF-8 is found when the message is made.
    EXPECT_EQ(FormatError([] { static_cast<void>(Format(u8"%1\u0661", 1)); }),
              "0xCA249FEE Invalid marker number > 99 in format string.");
    EXPECT_EQ(Format(u"%1", name, u"not used"), u"name");
    EXPECT_EQ(Format(u"%1", std::u16string(u"standard")), u"standard");
}

// The table that literals are checked by is that of the installed ICU.
TEST(Format, DigitTable)
{
    for (std::uint32_t c = 0; c <= 0xFFFF; ++c) {
        ASSERT_EQ(qvxsys::detail::IsDigitUnit(c), TCType::isDigit(static_cast<char16_t>(c))) << c;
    }
}

} // namespace
