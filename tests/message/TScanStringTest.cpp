// The scanner: what each operation takes, and where it stands afterwards, also when it throws.

#include <cstddef>
#include <limits>
#include <map>
#include <string>

#include "support/TextPrinters.h"

namespace {

using Scan = TScanStringCore;

// From strings, and from terminated text where it can be read as it is; not from what a string would have to be made
// of.
template<class T>
constexpr bool kScans = std::is_constructible_v<Scan, T>;
static_assert(kScans<TStringCore&> && kScans<TStringCore const&> && kScans<TStringCore> && kScans<char16_t const*>);
static_assert(kScans<TStringCore::Exception const&> && kScans<std::nullptr_t> && kScans<char16_t const (&)[2]>);
static_assert(!kScans<char const*> && !kScans<std::string> && !kScans<std::u16string> && !kScans<std::wstring>);
static_assert(!kScans<TStringView> && !kScans<TFormatStringCore> && !kScans<char16_t>);
static_assert(kScans<wchar_t const*> == qvxsys::kWideIsUtf16 && kScans<wchar_t const (&)[2]> == qvxsys::kWideIsUtf16);

/// What is left to read, by the scanner's own means.
TStringCore Rest(Scan scan)
{
    TStringCore rest;
    scan.readString(rest, -1).end();
    return rest;
}

struct Outcome
{
    unsigned code = 0; ///< 0: did not throw
    std::string message = {};
    TStringCore rest = {};
};

template<class F>
Outcome After(TStringCore const& text, F f)
{
    Scan scan(text);
    Outcome out;
    try {
        EXPECT_EQ(&f(scan), &scan);
    } catch (Scan::Exception const& e) {
        EXPECT_EQ(e.GetErrorSource(), 4);
        out.code = e.GetErrorCode();
        out.message = e.GetMessagesFront().toStdString();
    }
    out.rest = Rest(scan);
    return out;
}

std::map<unsigned, std::string> const kMessages = {
    {0, ""},
    {0xB44D5F02, "TScanStringCore::lengthNewLine: No new line found."},
    {0xE9FB330D, "TScanStringCore::lengthBool: Boolean value not found."},
    {0x3AD2C18B, "TScanStringCore::lengthInt: Integer value not found."},
    {0xE601166D, "TScanStringCore::lengthFloat: Float value not found."},
    {0x9DAC629F, "TScanStringCore::skip: String mismatch."},
    {0x57D65295, "TScanStringCore::end(): Expected null character."},
    {0x930719DA, "TScanStringCore::readDouble: Float value not found."},
    {0x85FD6267, "TScanStringCore::readFloat: Float value not found."},
};

using Step = Scan& (*)(Scan&);

struct StepCase
{
    char const* name;
    Step step;
    char16_t const* text;
    char16_t const* rest;
    unsigned code = 0;
};

TEST(TScanString, Steps)
{
    Step const space = [](Scan& s) -> Scan& { return s.skipWhitespace(); };
    Step const word = [](Scan& s) -> Scan& { return s.skipNonWhitespace(); };
    Step const of = [](Scan& s) -> Scan& { return s.skipAnyOf(u"abc"); };
    Step const notOf = [](Scan& s) -> Scan& { return s.skipAnyNotOf(u":;"); };
    Step const newline = [](Scan& s) -> Scan& { return s.skipNewline(); };
    Step const line = [](Scan& s) -> Scan& { return s.skipLine(); };
    Step const boolean = [](Scan& s) -> Scan& { return s.skipBool(); };
    Step const number = [](Scan& s) -> Scan& { return s.skipInt(); };
    Step const real = [](Scan& s) -> Scan& { return s.skipFloat(); };
    Step const ab = [](Scan& s) -> Scan& { return s.skip(u"ab"); };
    Step const end = [](Scan& s) -> Scan& { return s.end(); };
    StepCase const cases[] = {
        {"white space", space, u" \t\r\n\u00A0\u3000x ", u"x "},
        {"no white space", space, u"x", u"x"},
        {"word", word, u"x-\u00E9 y", u" y"},
        {"set", of, u"cabbage", u"ge"},
        {"all of a set", of, u"abc", u""},
        {"not of a set", notOf, u"key: v", u": v"},
        {"none of a set", notOf, u"key", u""},
        {"CR LF", newline, u"\r\n\n", u"\n"},
        {"LF CR", newline, u"\n\rx", u"x"},
        {"CR CR", newline, u"\r\r", u"\r"},
        {"CR at the end", newline, u"\r", u""},
        {"newline at the end", newline, u"", u""},
        {"no newline", newline, u"x", u"x", 0xB44D5F02},
        {"line", line, u"abc\r\ndef", u"def"},
        {"line, LF CR", line, u"abc\n\rdef", u"def"},
        {"line, lone CR", line, u"abc\rdef\nx", u"x"},
        {"empty line", line, u"\n\nx", u"\nx"},
        {"line at the end", line, u"", u""},
        {"bool", boolean, u"Yes, no", u", no"},
        {"bool, prefix", boolean, u"nothing", u"thing"},
        {"bool, digit", boolean, u"10", u"0"},
        {"bool, folded", boolean, u"FAL\u017FE", u""}, // the long s folds to s
        {"no bool", boolean, u"maybe", u"maybe", 0xE9FB330D},
        {"no bool, cut", boolean, u"tru", u"tru", 0xE9FB330D},
        {"no bool, control", boolean, u"\u0011", u"\u0011", 0xE9FB330D}, // with bit 0x20 it would be "1"
        {"no bool at the end", boolean, u"", u"", 0xE9FB330D},
        {"int", number, u"-12x", u"x"},
        {"int, digits only", number, u"12.5", u".5"},
        {"no int", number, u"x1", u"x1", 0x3AD2C18B},
        {"no int, sign", number, u"-", u"-", 0x3AD2C18B},
        {"no int at the end", number, u"", u"", 0x3AD2C18B},
        {"float", real, u"-1.5e3,", u","},
        {"float, no exponent", real, u"1e", u"e"},
        {"float, inf", real, u"infinity!", u"!"},
        {"no float", real, u".", u".", 0xE601166D},
        {"no float at the end", real, u"", u"", 0xE601166D},
        {"literal", ab, u"abc", u"c"},
        {"literal, case", ab, u"Abc", u"Abc", 0x9DAC629F},
        {"literal, cut", ab, u"a", u"a", 0x9DAC629F},
        {"literal at the end", ab, u"", u"", 0x9DAC629F},
        {"end", end, u"", u""},
        {"no end", end, u" ", u" ", 0x57D65295},
    };
    for (StepCase const& c : cases) {
        SCOPED_TRACE(c.name);
        Outcome const out = After(c.text, c.step);
        EXPECT_EQ(out.code, c.code);
        EXPECT_EQ(out.message, kMessages.at(c.code));
        EXPECT_EQ(out.rest, c.rest);
    }
}

TEST(TScanString, ReadsTexts)
{
    TStringCore const text = u"word abc:rest of it\r\nnext line";
    TStringCore a, b, c, d, e;
    Scan scan(text);
    scan.readNonWhitespace(a).skipWhitespace().readAnyOf(b, u"abc").readAnyNotOf(c, L"x ").skip(L' ').readString(d, 3);
    EXPECT_EQ(a, u"word");
    EXPECT_EQ(b, u"abc");
    EXPECT_EQ(c, u":rest");
    EXPECT_EQ(d, u"of ");
    scan.readLine(e);
    EXPECT_EQ(e, u"it\r");
    Scan const copy = scan;
    EXPECT_EQ(Rest(scan), u"next line");
    scan.readLine(e).readLine(a).readString(b, 100).readNonWhitespace(c).end();
    EXPECT_EQ(e, u"next line");
    EXPECT_TRUE(a.empty() && b.empty() && c.empty());
    EXPECT_EQ(Rest(copy), u"next line");
    scan.reset().skipString(5).skipString(0);
    EXPECT_EQ(Rest(scan).view().left(3), u"abc");
    scan.skipString(-1).end();
}

TEST(TScanString, ReadsBooleans)
{
    for (char16_t const* const text : {u"Yes", u"no", u"TRUE", u"False", u"1", u"0"}) {
        bool const expected = TStringView(u"YyTt1").contains(text[0]);
        bool value = !expected;
        Scan(text).readBool(value).end();
        EXPECT_EQ(value, expected);
    }
    bool untouched = true;
    EXPECT_THROW(Scan(u"maybe").readBool(untouched), Scan::Exception);
    EXPECT_TRUE(untouched);
}

template<class T>
std::string ReadInt(TStringCore const& text, int base = 10)
{
    T value = 99;
    Outcome const out = After(text, [&](Scan& s) -> Scan& { return s.readInt(value, base); });
    if (out.code != 0) {
        EXPECT_EQ(value, 99);
        return (out.code == 0x1D7A94C6 ? "range:" : "none:") + out.rest.toStdString();
    }
    return std::to_string(value) + ":" + out.rest.toStdString();
}

TEST(TScanString, ReadsIntegers)
{
    EXPECT_EQ(ReadInt<int>(u"2147483647 x"), "2147483647: x");
    EXPECT_EQ(ReadInt<int>(u"-2147483648"), "-2147483648:");
    EXPECT_EQ(ReadInt<int>(u"2147483648!"), "range:!");
    EXPECT_EQ(ReadInt<int>(u"-2147483649!"), "range:!");
    EXPECT_EQ(ReadInt<int>(u"x"), "none:x");
    EXPECT_EQ(ReadInt<short>(u"32768"), "range:");
    EXPECT_EQ(ReadInt<unsigned>(u"-1"), "range:");
    EXPECT_EQ(ReadInt<unsigned>(u"-0"), "0:");
    EXPECT_EQ(ReadInt<long long>(u"-9223372036854775808"), "-9223372036854775808:");
    EXPECT_EQ(ReadInt<long long>(u"9223372036854775808"), "range:");
    EXPECT_EQ(ReadInt<unsigned long long>(u"18446744073709551615"), "18446744073709551615:");
    EXPECT_EQ(ReadInt<unsigned long long>(u"18446744073709551616"), "range:");
    EXPECT_EQ(ReadInt<unsigned long long>(TStringCore(u'9', 100)), "range:");
    EXPECT_EQ(ReadInt<int>(u"fFg", 16), "255:g");
    EXPECT_EQ(ReadInt<int>(u"-0x10", 0), "-16:");
    EXPECT_EQ(ReadInt<int>(u"010", 0), "8:");
}

TEST(TScanString, ReadsFloats)
{
    double d = 0;
    float f = 0;
    Scan(u"1.5e308").readFloat(d).end();
    EXPECT_EQ(d, 1.5e308);
    Scan(u"0.1").readFloat(f).end();
    EXPECT_EQ(f, 0.1f);
    Scan(u"-INF").readFloat(d).end();
    EXPECT_EQ(d, -std::numeric_limits<double>::infinity());
    // Out of range: the position is behind the number, the value as it was.
    d = 7;
    f = 7;
    Outcome out = After(u"1e999,", [&](Scan& s) -> Scan& { return s.readFloat(d); });
    EXPECT_EQ(out.code, 0x930719DA);
    EXPECT_EQ(out.message, kMessages.at(out.code));
    EXPECT_EQ(out.rest, u",");
    out = After(u"1e39,", [&](Scan& s) -> Scan& { return s.readFloat(f); });
    EXPECT_EQ(out.code, 0x85FD6267);
    EXPECT_EQ(out.message, kMessages.at(out.code));
    EXPECT_EQ(out.rest, u",");
    EXPECT_TRUE(d == 7 && f == 7);
    EXPECT_EQ(After(u"x", [&](Scan& s) -> Scan& { return s.readFloat(d); }).code, 0xE601166D);
}

TEST(TScanString, EndsAtTheFirstZero)
{
    TStringCore const text(u"ab\0cd", 5);
    EXPECT_EQ(Rest(Scan(text)), u"ab");
    EXPECT_NO_THROW(Scan(text).skipString(5).end());
    EXPECT_EQ(After(text, [](Scan& s) -> Scan& { return s.skip(TStringView(u"ab\0", 3)); }).code, 0x9DAC629F);
    EXPECT_NO_THROW(Scan(text).skip(u"").skip(TStringView()));
    EXPECT_NO_THROW(Scan(text).skipAnyOf(TStringView(u"ab\0", 3)).end());
}

} // namespace
