// Slicing, searching, editing, splitting and case mapping of strings, and of views where they have the same members.

#include <algorithm>
#include <climits>
#include <iterator>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include <unicode/uloc.h>

#include "support/EditModel.h"
#include "support/FailingNew.h"
#include "support/GuardedMemory.h"
#include "support/IcuConvert.h"
#include "support/TextPrinters.h"

namespace {

using testing_support::FailingReallocation;
using testing_support::TextError;
using S = TStringCore;
using Strings = std::vector<TStringCore>;
using Views = std::vector<TStringView>;

constexpr char const* kOverflow = "Allocation size less than zero; probable overflow";

S const kLong = u"a text that is longer than an object holds";

bool Share(S const& a, S const& b)
{
    return a.constData() == b.constData();
}

TEST(TStringEdit, AgreesWithANaiveModel)
{
    std::mt19937 random(20240608);
    testing_support::LeakCheck const leaks;
    for (int run = 0; run < 3000; ++run) {
        std::vector<std::uint8_t> program(200);
        std::generate(program.begin(), program.end(), [&] { return static_cast<std::uint8_t>(random()); });
        ASSERT_EQ(testing_support::EditModel(program.data(), program.size()).Run(), "") << run;
    }
    EXPECT_TRUE(leaks.Balanced());
}

TEST(TStringEdit, FindStr)
{
    struct Case
    {
        char16_t const* haystack;
        int length;
        char16_t const* needle;
        int needleLength, from, found;
        S::CaseSensitivity cs = S::CaseSensitive;
    };
    for (auto const& c :
         {Case{u"abc", 3, u"", 0, 1, 1}, Case{u"abc", 3, u"", 0, -1, 2}, Case{u"abc", 3, nullptr, 5, 0, 0},
          Case{u"abc", 3, u"\0c", 2, 1, 1}, // begins with 0: empty
          Case{u"abc", 3, u"bc", 1, 0, 1}, Case{u"abc", 3, u"bc", -1, 0, 1}, Case{u"abc", 3, u"BC", 2, 0, -1},
          Case{u"abc", 3, u"BC", 2, 0, 1, S::CaseInsensitive}, Case{u"abc", 3, u"", 0, 3, -1},
          Case{u"abc", 3, u"a", 1, -4, -1}, Case{u"", 0, u"", 0, 0, -1}, Case{u"abc", -1, u"a", 1, 0, -1},
          Case{nullptr, 3, u"a", 1, 0, -1}, Case{nullptr, 3, u"", 0, 1, 1}, Case{nullptr, 3, nullptr, 2, -1, 2},
          Case{nullptr, 3, u"", 0, 3, -1}, Case{u"a\0b", 3, u"b", 1, 0, 2}}) {
        EXPECT_EQ(S::findStr(c.haystack, c.length, c.needle, c.needleLength, c.from, c.cs), c.found);
    }
    EXPECT_EQ(S::findStr(u"abcABC", 6, u"ABC", 3, S::CaseInsensitive), 0);
    EXPECT_EQ(S::findStr(L"abcabc", L"ca", 1) + S::findStr(L"abcabc", 6, L"bc", 2, 2), 2 + 4);
    EXPECT_EQ(S::findStr(u"abcABC", u"ABC", S::CaseInsensitive) + S::findStr(L"abcABC", L"ABC", S::CaseInsensitive), 0);
    EXPECT_EQ(S::findStr(static_cast<wchar_t const*>(nullptr), 3, L"", 0, 1), 1);
    EXPECT_EQ(S::findStr(S(u"abc"), L"c") + S::findStr(L"abc", u"c", 1) + S::findStr(L"abc", nullptr, 1), 5);
    EXPECT_EQ(S(u"abcABC").findChar(u'A', S::CaseInsensitive) + S(u"abcABC").indexOf32(U'B', S::CaseInsensitive), 1);
    EXPECT_EQ(S(u"a\0b", 3).indexOf(u'\0') + S(u"abc").findChar(U'b'), 2); // 0 is a unit like any other
}

TEST(TStringEdit, CompareOfViewsIsAStrictOrder)
{
    Views const sorted{u"", TStringView(u"\0", 1), u"a", TStringView(u"a\0b", 3), TStringView(u"a\0c", 3), u"aa", u"b"};
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        for (std::size_t j = 0; j < sorted.size(); ++j) {
            EXPECT_EQ(sorted[i].compare(sorted[j]), i < j ? -1 : i > j ? 1 : 0) << i << ' ' << j;
        }
    }
    EXPECT_EQ(TStringView(u"ABC").compare(L"abd", CaseCompare::Insensitive), -1);
    EXPECT_EQ(S::compare(L"a", L"B", S::CaseInsensitive) + S::compareN(L"ab", L"abc", -1), -2);
    EXPECT_EQ(S(u"a").compare(std::u16string(u"a")), 0);
    // Null is empty text, and one of two texts may be wide.
    EXPECT_EQ(S(u"a").compare(nullptr) + S::compare(L"a", nullptr) + S::compareN(L"a", nullptr, 3), 3);
    EXPECT_EQ(S().compare(nullptr) + S::compare(u"a", L"x") + S::compare(S(u"a"), L"x"), -2);
    EXPECT_EQ(S::compareN(L"ax", u"ab", 1) + S::compareN(u"a", L"A", 2, S::CaseInsensitive), 0);
    EXPECT_EQ(S::compareN(u"ab", u"abc", -1) + S::compareN(nullptr, u"a", 5) + S::compareN(u"X", u"Y", 0), -2);
    EXPECT_EQ(S::compare(u"\u00C4\u0416", u"\u00E4\u0436", S::CaseInsensitive) + S::compare(u"a", u"A"), 1);
    // Only as many wide characters are looked at as are compared.
    GuardedMemory const memory(3 * sizeof(wchar_t));
    wchar_t* const open = std::copy_n(L"abc", 3, memory.Last<wchar_t>(3)) - 3;
    EXPECT_EQ(S::compareN(open, L"abc", 3) + S::compareN(L"abd", open, 3) + S::compareN(open, u"ab", 2), 1);
}

TEST(TStringEdit, SlicesShareTheBlock)
{
    EXPECT_TRUE(Share(kLong.mid(0, -1), kLong) && Share(kLong.left(99), kLong) && Share(kLong.mid(0, 99), kLong));
    EXPECT_TRUE(Share(kLong.leftCodePoints(99), kLong) && kLong.view().rightCodePoints(-1).empty());
}

TEST(TStringEdit, Justifying)
{
    S const s = u"abcd";
    EXPECT_EQ(s.leftJustified(6, '*') + s.rightJustified(6, L'*'), u"abcd****abcd");
    EXPECT_EQ(s.rightJustified32(6, 0x1F600), u"\U0001F600\U0001F600abcd");
    EXPECT_EQ(S(u"\U0001F600b").leftJustified32(3, U'.'), u"\U0001F600b.");
    EXPECT_EQ(S(u"\U0001F600b").leftJustified32(1, U'.', true), u"\U0001F600");
    EXPECT_TRUE(Share(kLong.leftJustified(3), kLong) && S(u"ab").repeated(-1).empty());
    EXPECT_EQ(TextError([&] { static_cast<void>(s.leftJustified32(INT_MAX, 0x1F600)); }), kOverflow);
    EXPECT_EQ(TextError([&] { static_cast<void>(kLong.repeated(INT_MAX)); }), kOverflow);
}

TEST(TStringEdit, Trimming)
{
    EXPECT_EQ(S(u"  a  ").trimLeft() + S(u"xax").trimRight32(U'x'), u"a  xa");
    // A pair is one member of a set, and neither of its units is.
    EXPECT_EQ(S(u"\U0001F600\U0001F601").trim(u"\U0001F600"), u"\U0001F601");
    EXPECT_EQ(S(u"\U0001F600a\U0001F600").trim32(0x1F600), u"a");
    // Nor in a set large enough for a table, which knows lone surrogates from those of pairs.
    S const large = u"\u3042\u3044\u3046\u3048\u304A\u304B\u304D\u304F\U0001F600\U0001F601\U0001F602\xD83D\u3051\u3053";
    EXPECT_EQ(S(u"\u304B\U0001F602\U0001F603\xDE00\xD83D").trim(large), u"\U0001F603\xDE00");
    EXPECT_EQ(S(u"a\u3053\U0001F601\U0001F605\xD83Dx\xDE01\u3055").removeAnyOf(large), u"a\U0001F605x\xDE01\u3055");
    S const blanks(u' ', 4096);
    EXPECT_EQ((blanks + u"a b\u2003" + blanks).trimmed(), u"a b");
    EXPECT_TRUE(S(blanks).trim().empty() && blanks.trimmed().empty());
    std::mt19937 random(20261121);
    for (int run = 0; run < 3000; ++run) {
        S text;
        for (auto n = random() % 40; n > 0; --n) {
            text += u"   \t\n\r\u001F\u0085\u00A0\u2003\u3000!x\xD83D\xDE00"[random() % (run % 2 == 0 ? 15 : 7)];
        }
        auto const blank = [](char16_t c) { return TCType::isSpace(c); };
        auto const begin = std::find_if_not(text.cbegin(), text.cend(), blank);
        auto const end =
            std::find_if_not(std::make_reverse_iterator(text.cend()), std::make_reverse_iterator(begin), blank);
        ASSERT_EQ(text.trimmed(), S(begin, static_cast<int>(end.base() - begin))) << run;
    }
    // What changes nothing copies nothing; a block stays one.
    S s = kLong;
    s.trim().trimRight(u"x").trimLeft(u'x').replace(u'\u00DF', u'y').removeAll(u"zz").removeAt(-1).truncate(99).chop(0);
    s.insert(3, u"")
        .dosToUnix()
        .unixToDos()
        .removeBOM()
        .truncateAtFirstNull()
        .replace(u'a', u'a')
        .replace(u"at", u"at");
    EXPECT_TRUE(Share(s, kLong) && Share(kLong.trimmed(), kLong));
    EXPECT_EQ(s.truncate(3).capacity(), kLong.capacity());
}

TEST(TStringEdit, Replacing)
{
    EXPECT_EQ(S(u"abc").replace(3, 5, u'd').replace(u"ab", L"b").replace("b", 'c'), u"ccd");
    EXPECT_EQ(S(u"x.y").replace(U'.', U'\U0001F600').replace32(0x1F600, U'-'), u"x-y");
    EXPECT_EQ(S(u"a,b;c").replaceAnyOf(u",;", u" - ").replaceAnyOf32(u"abc", 0x1F600).lengthInCodePoints(), 9);
    // Long enough for the counters of the vector loop to be emptied on the way.
    S many(u'a', 600000);
    EXPECT_EQ(many.replaceCount(u'a', u'b'), 600000);
    EXPECT_EQ(many, S(u'b', 600000));
    EXPECT_EQ(S(u"\xD83D\xD83D\xDE00z").reversed(), u"z\xD83D\xDE00\xD83D"); // pairs stay whole
    // Its own text as the argument.
    S s = u"abcabc";
    s.replace(s.view().left(1), s.view());
    EXPECT_EQ(s, u"abcabcbcabcabcbc");
    EXPECT_EQ(S(u"abc").fill(u'x') + S(u"abc").fill(U'\U0001F600', 1) + S().fill(u'x'), u"xxx\U0001F600");
}

TEST(TStringEdit, SplittingAndJoining)
{
    S const s = u"a,,b,";
    EXPECT_EQ(S(u"1x2X3").splitCopy(u"x", S::KeepEmptyParts, S::CaseInsensitive), (Strings{u"1", u"2", u"3"}));
    EXPECT_TRUE(s.split(u"").empty() && s.splitOnAny(u"").empty() && S().splitCopy(u',').size() == 1 &&
                S().splitCopy(u',', S::SkipEmptyParts).empty());
    EXPECT_EQ(S(u"a\0b\0", 4).splitCopy(u'\0'), (Strings{u"a", u"b", u""}));
    S const separators = S(u',', 4000) + u"a";
    Views const sparse = separators.split(u',', S::SkipEmptyParts);
    EXPECT_TRUE(sparse == Views{u"a"} && sparse.capacity() <= 2001);
    EXPECT_EQ(s.tokenize(u","), (Views{u"a", u"b"}));
    EXPECT_EQ(s.tokenize(u",b", S::KeepEmptyParts), (Views{u"a", u"", u"", u"", u""}));
    EXPECT_EQ(s.view().tokenize(u",", EmptyParts::Keep), s.split(u','));
    EXPECT_EQ(S::join({u"a", s, s.view()}, L"|") + S::join({s, S(u"b")}, u'-') + S::join({}, u"x"),
              u"a|a,,b,|a,,b,a,,b,-b");
    EXPECT_EQ(S(u"xy").insert(1, u8"\u00E9?", 2).prepend(u8"\u20AC!", 3).insert(1, L"zz", 1), u"\u20ACzx\u00E9y");
    EXPECT_EQ(S::join32(Strings{u"a", u"b"}, 0x1F600), u"a\U0001F600b");
    EXPECT_EQ(S::join32(Views{u"a", u"b"}, 0x1F600), u"a\U0001F600b");
}

// No position passes an int: of longer views the length is cut to one, and none is taken into a string.
TEST(TStringEdit, ViewsLongerThanAnInt)
{
    char16_t const* const units = u"abcdef";
    for (std::size_t const length : {(std::size_t{1} << 32) + 3, std::size_t{INT_MAX} + 1}) {
        TStringView const view(units, length);
        EXPECT_EQ(view.indexOf(u'f'), -1);
        EXPECT_EQ(view.findOneOf(u"ef"), -1);
        EXPECT_EQ(view.spanExcluding(u"ef"), std::max(view.length(), 0));
        EXPECT_EQ(view.count(u'b') + view.lastIndexOf(u'a'), view.length() == 3 ? 1 : -1);
        EXPECT_EQ(TextError([&] { S(u"x").insert(0, view); }), kOverflow);
        EXPECT_EQ(TextError([&] { S(u"x").append(std::u16string_view(units, length)); }),
                  "Appended string is too long");
    }
}

// What a user of QString expects; the separators in between are the text's own.
TEST(TStringEdit, Sections)
{
    using Case = std::tuple<char16_t const*, int, int, int, char16_t const*>;
    for (auto const& [text, first, last, flags, section] :
         {Case{u"a,b,,c", 0, 0, 0, u"a"}, Case{u"a,b,,c", 1, 2, 0, u"b,"}, Case{u"a,b,,c", -1, -1, 0, u"c"},
          Case{u"a,b,,c", -2, -1, 0, u",c"}, Case{u"a,b,,c", 2, -1, S::SectionSkipEmpty, u"c"},
          Case{u",,a,b,,c,", 0, 1, S::SectionSkipEmpty, u"a,b"}, Case{u",,a,b,,c,", 1, 2, S::SectionSkipEmpty, u"b,,c"},
          Case{u"a,b,c", 1, 1, S::SectionIncludeLeadingSep, u",b"},
          Case{u"a,b,c", 1, 1, S::SectionIncludeLeadingSep | S::SectionIncludeTrailingSep, u",b,"},
          Case{u"a,b,c", 0, 2, S::SectionIncludeLeadingSep | S::SectionIncludeTrailingSep, u"a,b,c"},
          Case{u"a,b", 1, 9, 0, u"b"}, Case{u"a,b", 2, 3, 0, u""}, Case{u"a,b", 1, 0, 0, u""},
          Case{u"a,b", -9, 0, 0, u"a"}, Case{u"a,b", 0, -3, 0, u""}, Case{u"", 0, -1, 0, u""},
          Case{u",,", 0, -1, S::SectionSkipEmpty, u""}, Case{u",,", -1, 0, S::SectionSkipEmpty, u""}}) {
        EXPECT_EQ(S(text).section(u',', first, last, flags), section) << first << ' ' << last << ' ' << flags;
        EXPECT_EQ(TStringView(text).section(u",", first, last, flags), TStringView(section));
    }
    EXPECT_EQ(S(u"1x2X3").section(u'X', 1, 2, S::SectionCaseInsensitiveSeps), u"2X3");
    EXPECT_EQ(S(u"/usr/local/bin").section(u"/", -1), u"bin");
    EXPECT_TRUE(S(u"abc").section(u"", -1, 0).empty() && S().section(u"", -1, 0).empty());
}

TEST(TStringEdit, ByteOrderMarksAndLineEndings)
{
    EXPECT_TRUE(!S(u"text").hasBOM() && S(u"text").prependBOM().hasBOM());
    EXPECT_EQ(S(u"a\r\nb\rc\n").dosToUnix(), u"a\nb\nc\n");
    EXPECT_EQ(S(u"a\nb\r\nc").unixToDos(), u"a\r\nb\r\nc");
    EXPECT_EQ(S(u"a\nb\r\n").toNativeLineEndings(), qvxsys::kLinesEndInCrLf ? u"a\r\nb\r\n" : u"a\nb\n");
}

// A failing allocation leaves text, length and sharing as they were.
TEST(TStringEdit, FailedEditsLeaveTheStringAlone)
{
    using Edit = void (*)(S&);
    for (Edit const edit :
         {Edit([](S& s) { s.replace(u"t", u"ten times as long"); }), Edit([](S& s) { s.replace(u't', u'x'); }),
          Edit([](S& s) { s.removeAll(u"t"); }), Edit([](S& s) { s.removeAt(2, 3); }),
          Edit([](S& s) { s.removeAt(0); }), Edit([](S& s) { s.truncate(3); }), Edit([](S& s) { s.trim(u'a'); }),
          Edit([](S& s) { s.reverse(); }), Edit([](S& s) { s.fill(u'x', 1000); }),
          Edit([](S& s) { s.replaceAnyOf(u"at", u"long"); }), Edit([](S& s) { s.prependBOM(); }),
          Edit([](S& s) { s.replace(1, 2, s.view()); })}) {
        S s = kLong;
        auto const failing = [&] {
            FailingReallocation const first(1);
            edit(s);
        };
        EXPECT_EQ(TextError(failing), "Out of memory");
        EXPECT_TRUE(Share(s, kLong));
        EXPECT_EQ(kLong.view(), u"a text that is longer than an object holds");
    }
}

// Edits that make no text longer work in place, with no memory besides; the others say what they lack.
TEST(TStringEdit, PlacesAreNotKeptWhereTextIsReplacedInPlace)
{
    using Edit = void (*)(S&);
    using Case = std::pair<Edit, char16_t const*>;
    for (auto const& [edit, result] :
         {Case{[](S& s) { s.removeAll(u"t"); }, u"a ex ha is longer han an objec holds"},
          Case{[](S& s) { s.removeAll(u"TH", S::CaseInsensitive); }, u"a text at is longer an an object holds"},
          Case{[](S& s) { s.replace(u"th", u"*"); }, u"a text *at is longer *an an object holds"},
          Case{[](S& s) { s.replaceAnyOf(u"aeiou", u"-"); }, u"- t-xt th-t -s l-ng-r th-n -n -bj-ct h-lds"},
          Case{[](S& s) { s.removeAnyOf(u"aeiou "); }, u"txtthtslngrthnnbjcthlds"}}) {
        S own = S(kLong.view());
        FailingNew const none(0);
        edit(own);
        EXPECT_EQ(own, result);
    }
    if constexpr (!qvxsys::kLinesEndInCrLf) { // a DLL has an operator new of its own
        S s = kLong;
        auto const replace = [&] {
            FailingNew const none(0);
            s.replace(u"th", u"longer");
        };
        EXPECT_EQ(TextError(replace), "Out of memory");
        EXPECT_TRUE(Share(s, kLong));
    }
}

TEST(TStringCase, IsIcusFullMapping)
{
    std::string const before = uloc_getDefault();
    std::u16string const pieces[] = {u"plain ascii text, Only ASCII",
                                     u"iI",
                                     u"Gr\u00FC\u00DFe",
                                     u"\u0130\u0131",
                                     u"\u041F\u0440\u0438\u0432\u0435\u0442",
                                     u"\u039F\u03A3",
                                     u"\U0001F600",
                                     u"\U00010428\U00010400",
                                     u"\xD801",
                                     u"\xDC00",
                                     u"\u0301\u0307",
                                     u"\u0587 \uFB03"};
    std::mt19937 random(20240609);
    for (char const* const locale : {"en_US", "tr", "az_AZ", "lt", "el_GR", "hy", "de"}) {
        UErrorCode status = U_ZERO_ERROR;
        uloc_setDefault(locale, &status);
        for (int run = 0; run < 300; ++run) {
            std::u16string text;
            for (auto n = random() % 6; n > 0; --n) {
                text += pieces[random() % std::size(pieces)];
            }
            while (run % 50 == 0 && !text.empty() && text.size() < 2048) { // long enough to ask for the locale at once
                text += text;
            }
            ASSERT_EQ(S(text).toUpper().toStdUString(), icu_reference::InCase(true, text))
                << locale << S(text).toStdString();
            ASSERT_EQ(TStringView(text).toLower().toStdUString(), icu_reference::InCase(false, text))
                << locale << S(text).toStdString();
        }
        for (int unit = 0; unit <= 0xFFFF; unit += *locale == 'e' ? 1 : 7) {
            // Twice: the first time a unit is asked for, and the next.
            auto const c = static_cast<char16_t>(unit);
            std::u16string const four{u'a', c, u'B', c};
            for (std::u16string const& text : {four, four + u"vectors" + c}) {
                ASSERT_EQ(S(text).toUpper().toStdUString(), icu_reference::InCase(true, text)) << unit;
                ASSERT_EQ(S(text).toLower().toStdUString(), icu_reference::InCase(false, text)) << unit;
            }
        }
    }
    UErrorCode status = U_ZERO_ERROR;
    uloc_setDefault(before.c_str(), &status);
}

} // namespace
