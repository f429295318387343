// ICU's strings, with UnicodeString as the oracle: the same operations on both, in random order over texts that are not
// always well-formed.

#include <algorithm>
#include <climits>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/ucnv.h>

#include "support/IcuOracle.h"

using QvxICU::ICULocale;
using QvxICU::ICUString;
using namespace testing_support;

namespace {

// Text and locales as either class takes them.
TStringView Given(ICUString const&, std::u16string const& text)
{
    return text;
}
icu::UnicodeString Given(icu::UnicodeString const&, std::u16string const& text)
{
    return Unicode(text);
}
std::unique_ptr<ICULocale> In(ICUString const&, char const* name)
{
    return ICULocale::createFromName(name);
}
std::unique_ptr<icu::Locale> In(icu::UnicodeString const&, char const* name)
{
    return std::make_unique<icu::Locale>(name);
}

constexpr int kChanges = 24;

struct Arguments
{
    std::u16string text;
    std::u16string other;
    int start;
    int length;
    int limit;
    char const* locale;
};

constexpr unsigned kTitleOptions[] = {0, 0x20, 0x40, 0x100, 0x200, 0x400, 0x140};
void TitleCase(ICUString& s, Arguments const& a)
{
    a.start < 0 ? s.toTitle() : s.toTitle(*In(s, a.locale), kTitleOptions[a.start % 7]);
}
void TitleCase(icu::UnicodeString& s, Arguments const& a)
{
    a.start < 0 ? s.toTitle(nullptr) : s.toTitle(nullptr, *In(s, a.locale), kTitleOptions[a.start % 7]);
}

/// One of the operations that change a string, on either class.
template<class String>
void Change(String& s, int operation, Arguments const& a)
{
    auto const text = Given(s, a.text);
    int const from = std::clamp(a.start, 0, s.length());
    int const to = std::clamp(a.limit, 0, s.length());
    std::function<void()> const operations[] = {[&] { s.append(text); },
                                                [&] { s.insert(a.start, text); },
                                                [&] { s.replace(a.start, a.length, text); },
                                                [&] { s.replaceBetween(from, to, text); },
                                                [&] { s.findAndReplace(text, Given(s, a.other)); },
                                                [&] { s.remove(); },
                                                [&] { s.remove(a.start, a.length); },
                                                [&] { s.removeBetween(from, to); },
                                                [&] { s.retainBetween(from, to); },
                                                [&] { s.padLeading(a.start + 4, u'.'); },
                                                [&] { s.padTrailing(a.start + 4, u'.'); },
                                                [&] { s.truncate(a.start); },
                                                [&] { s.trim(); },
                                                [&] { s.reverse(); },
                                                [&] { s.reverse(a.start, a.length); },
                                                [&] { s.toUpper(); },
                                                [&] { s.toUpper(*In(s, a.locale)); },
                                                [&] { s.toLower(); },
                                                [&] { s.toLower(*In(s, a.locale)); },
                                                [&] { s.foldCase(static_cast<unsigned>(a.start & 1)); },
                                                [&] { s.setCharAt(a.start, u'\u0130'); },
                                                [&] { TitleCase(s, a); },
                                                [&] { s.setToBogus(); },
                                                [&] { s.setTo(text); }};
    static_assert(std::size(operations) == kChanges);
    operations[operation]();
}

template<class... N>
std::vector<long> Numbers(N... numbers)
{
    return {static_cast<long>(numbers)...};
}

/// What a string tells, of either class.
template<class String>
std::vector<long> Answers(String const& s, Arguments const& a)
{
    auto const text = Given(s, a.text);
    auto const sign = [](int n) { return n < 0 ? -1L : n > 0 ? 1L : 0L; };
    return Numbers(s.length(), s.isEmpty(), s.isBogus(), s.hashCode(), sign(s.compare(text)),
                   sign(s.compareCodePointOrder(text)), sign(s.caseCompare(text, 0)), sign(s.caseCompare(text, 0x8001)),
                   s.startsWith(text), s.endsWith(text), s == text, s.indexOf(text), s.indexOf(text, a.start, a.length),
                   s.lastIndexOf(text), s.lastIndexOf(text, a.start, a.length), s.charAt(a.start), s.char32At(a.start),
                   s.getChar32Start(a.start), s.getChar32Limit(a.start), s.moveIndex32(a.start, a.limit),
                   s.countChar32(), s.countChar32(a.start, a.length), s.hasMoreChar32Than(a.start, a.length, a.limit));
}

class Operations : public testing::Test
{
protected:
    std::u16string Piece()
    {
        static constexpr char16_t kSoup[] =
            u"aa Stra\u00DFe \u0130I\u0131i\U0001F600\xD83D \xDE00\u0391\u03A3 \u03C2 \t\u2028\uFB03"
            u"e\u0301ij IJ\uFFFF\0\U00010000a aa";
        constexpr int kLength = static_cast<int>(std::size(kSoup)) - 1;
        return std::u16string(kSoup, kLength)
            .substr(static_cast<std::size_t>(Below(kLength)), static_cast<std::size_t>(Below(9)));
    }
    int Below(int n) { return std::uniform_int_distribution(0, n - 1)(m_random); }
    int Index(int length)
    {
        static constexpr int kOdd[] = {-1, INT_MIN, INT_MAX, -7};
        return Below(8) == 0 ? kOdd[Below(4)] : Below(length + 3);
    }
    Arguments Random(int length)
    {
        static constexpr char const* kLocales[] = {"", "tr", "nl", "el", "lt", "de"};
        Arguments a{Piece(), Piece(), 0, Index(length), std::max(Index(length), -INT_MAX), kLocales[Below(6)]};
        a.start = std::max(Index(length), -9) % 1000;
        return a;
    }

    std::mt19937 m_random{42};
};

TEST_F(Operations, InAnyOrderGiveWhatIcuGives)
{
    for (int round = 0; round < 400; ++round) {
        std::u16string const text = Piece();
        bool const alias = Below(2) == 0;
        auto const ours = alias ? ICUString::createAlias(text) : ICUString::createInstance(TStringView(text));
        EXPECT_EQ(ours->view().data() == text.data(), alias) << "an alias reads in place";
        icu::UnicodeString theirs = Unicode(text);
        auto const untouched = ours->clone();
        std::u16string const before = text;
        for (int step = 0; step < 12; ++step) {
            Arguments const a = Random(theirs.length());
            int const operation = Below(kChanges);
            Change(*ours, operation, a);
            Change(theirs, operation, a);
            ASSERT_EQ(ours->view(), Text(theirs).view()) << operation << " at " << a.start << ',' << a.length;
            ASSERT_EQ(ours->toString(), Text(theirs));
            ASSERT_EQ(Answers(*ours, a), Answers(theirs, a)) << operation << ' ' << Text(theirs);
            std::string bytes;
            ASSERT_EQ(ours->toUtf8(), theirs.toUTF8String(bytes));
            ASSERT_EQ(ours->substring(a.start, a.length)->toString(),
                      Text(icu::UnicodeString(theirs, a.start, a.length)));
            auto const copy = ICUString::createInstance();
            ASSERT_TRUE(copy->setTo(*ours) == *ours);
        }
        ASSERT_EQ(text, before) << "what an alias reads is never written";
        ASSERT_TRUE(*untouched == before);
    }
}

TEST(IcuString, EscapesAreIcus)
{
    for (std::u16string_view const text : {u"", u"\\u00e4\\U0001F600\\x41\\x{10FFFF}\\101\\cA\\a\\e\\q\\\\", u"\\",
                                           u"a\\uD8", u"\\x{110000}", u"\\uD83D\\uDE00"}) {
        auto const ours = ICUString::createAlias(text);
        icu::UnicodeString const theirs = Unicode(text);
        EXPECT_EQ(ours->unescape()->toString(), Text(theirs.unescape()));
        for (int const start : {-1, 0, 1, 2, 100}) {
            int at = start;
            std::int32_t theirAt = start;
            EXPECT_EQ(ours->unescapeAt(at), static_cast<char32_t>(theirs.unescapeAt(theirAt)));
            EXPECT_EQ(at, theirAt);
        }
    }
}

// A text argument that is part of the string itself is read before the string changes.
TEST(IcuString, TakesPartsOfItself)
{
    using Operation = std::function<void(ICUString&, TStringView)>;
    Operation const operations[] = {
        [](ICUString& s, TStringView part) { s.append(part); },
        [](ICUString& s, TStringView part) { s.insert(1, part); },
        [](ICUString& s, TStringView part) { s.replace(0, 3, part); },
        [](ICUString& s, TStringView part) { s.replaceBetween(2, 4, part); },
        [](ICUString& s, TStringView part) { s.setTo(part); },
        [](ICUString& s, TStringView part) { s.findAndReplace(part.left(1), part); },
        [](ICUString& s, TStringView part) { s.findAndReplace(part, TStringView()); },
    };
    for (std::u16string const& text : {std::u16string(u"abcdef"), std::u16string(100, u'x') + u"yz"}) {
        for (Operation const& operation : operations) {
            auto const inside = ICUString::createInstance(TStringView(text));
            auto const outside = inside->clone();
            operation(*inside, inside->view().mid(2, 4));
            operation(*outside, TStringView(text).mid(2, 4));
            EXPECT_EQ(inside->toString(), outside->toString());
        }
    }
}

// Indexes behind and before the text are its ends, also where ICU would count with what lies outside.
TEST(IcuString, IndexesArePinned)
{
    auto const made = [] { return ICUString::createInstance(u"abcdef"); };
    EXPECT_EQ(*made()->removeBetween(-3, 2).clone(), u"cdef");
    EXPECT_EQ(*made()->removeBetween(INT_MIN).clone(), u"");
    EXPECT_EQ(*made()->retainBetween(-3, 2).clone(), u"ab");
    EXPECT_EQ(*made()->retainBetween(4, INT_MAX).clone(), u"ef");
    EXPECT_EQ(*made()->replaceBetween(-3, 2, u"X").clone(), u"Xcdef");
    EXPECT_EQ(*made()->replaceBetween(5, INT_MIN, u"X").clone(), u"abcdeXf");
    EXPECT_EQ(made()->moveIndex32(3, INT_MIN), 0);
}

TEST(IcuString, TakesTextOfEveryKind)
{
    EXPECT_EQ(ICUString::createInstance()->length(), 0);
    EXPECT_EQ(ICUString::createInstance(static_cast<char const*>(nullptr))->length(), 0);
    EXPECT_EQ(ICUString::createInstance(static_cast<wchar_t const*>(nullptr))->length(), 0);
    EXPECT_EQ(ICUString::createAlias(TStringView())->length(), 0);
    EXPECT_EQ(*ICUString::createInstance("\xC3\xA4\xFF"), u"\u00E4\uFFFD");
    EXPECT_EQ(*ICUString::createInstance(L"\u00E4\U0001F600"), u"\u00E4\U0001F600");
    auto const text = ICUString::createInstance();
    text->append(u"u16 ")
        .append("utf8\u00E4 ")
        .append(L"wide ")
        .append(TStringCore(u"core "))
        .append(std::string("std "));
    text->append('\xE4').append(u'u').append(L'w').append(U'\U0001F600');
    EXPECT_EQ(*text, u"u16 utf8\u00E4 wide core std \u00E4uw\U0001F600");
    EXPECT_TRUE(text->endsWith(U'\U0001F600') && text->startsWith("u16") && text->equals(text->toString()));
    EXPECT_EQ(text->indexOf(L"wide"), 10);
    EXPECT_EQ(text->lastIndexOf("\u00E4"), 24);
    EXPECT_EQ(text->indexOf(u'\xDE00'), -1) << "half of a pair is not found";
    EXPECT_EQ(*text->setTo(L"abc").insert(1, '-').replace(0, 1, "XY").replaceBetween(3, 4, U'z').clone(), u"XY-zc");
    EXPECT_EQ(*text->findAndReplace("XY", L"\u00E9").clone(), L"\u00E9-zc");
    EXPECT_TRUE(text->caseCompare("\u00C9-ZC") == 0 && text->compare(L"a") > 0 && text->compareCodePointOrder('a') > 0);
    EXPECT_FALSE(*text == "\u00C9");
}

TEST(IcuString, CodePagesAreIcus)
{
    std::string const bytes = "A\xE4\x80\xFF\x81\x1B$B0l\x1B(B\xF0\x9F\x98\x80";
    std::u16string const text = u"A\u00E4\u20AC\u4E00\U0001F600\xD800z" + std::u16string(300, u'\u3042');
    for (char const* const name : {"windows-1252", "ISO-8859-1", "cp932", "GB18030", "UTF-7", "iso-2022-jp", "utf8",
                                   "UTF-16", "SCSU", "no such page", "", static_cast<char const*>(nullptr)}) {
        for (int const before : {0, 7}) {
            auto status = static_cast<ICUErrorCode>(before);
            auto code = static_cast<UErrorCode>(before);
            icu::LocalUConverterPointer const converter(ucnv_open(name, &code));
            auto const ours = ICUString::createFromCodepage(bytes.data(), static_cast<int>(bytes.size()), name, status);
            icu::UnicodeString const theirs(bytes.data(), static_cast<std::int32_t>(bytes.size()), converter.getAlias(),
                                            code);
            EXPECT_EQ(Number(status), code) << name;
            EXPECT_EQ(ours->toString(), Text(theirs));
            EXPECT_EQ(ours->isBogus(), theirs.isBogus());
            std::string expected(4000, '\0');
            if (U_SUCCESS(code)) {
                expected.resize(
                    static_cast<std::size_t>(Unicode(text).extract(expected.data(), 4000, converter.getAlias(), code)));
            } else {
                expected.clear();
            }
            EXPECT_EQ(ICUString::createAlias(text)->toCodepage(name, status), expected) << name;
            EXPECT_EQ(QvxICU::ICU_FAILURE(status), static_cast<bool>(U_FAILURE(code)));
        }
    }
    ICUErrorCode status = ICUErrorCode::ZeroError;
    EXPECT_TRUE(ICUString::createFromCodepage(nullptr, 5, "utf8", status)->isEmpty());
    EXPECT_EQ(*ICUString::createFromCodepage("ab\0c", -1, "utf8", status), u"ab");
}

TEST(IcuPositions, KeepWhatIsSet)
{
    auto const field = QvxICU::ICUFieldPosition::createInstance();
    auto const parse = QvxICU::ICUParsePosition::createInstance();
    EXPECT_EQ(field->getField(), +QvxICU::ICUFieldPosition::kDontCare);
    EXPECT_EQ(parse->getErrorIndex(), -1);
    std::function<void()> const changes[] = {[&] { field->setField(3); }, [&] { field->setBeginIndex(5); },
                                             [&] { field->setEndIndex(9); }, [&] { parse->setIndex(4); },
                                             [&] { parse->setErrorIndex(2); }};
    for (auto const& change : changes) {
        auto const fieldBefore = field->clone();
        auto const parseBefore = parse->clone();
        EXPECT_TRUE(*fieldBefore == *field && *parseBefore == *parse);
        change();
        EXPECT_NE(*fieldBefore == *field, *parseBefore == *parse) << "one is another, its copy is not";
    }
    EXPECT_TRUE(field->getField() == 3 && field->getBeginIndex() == 5 && field->getEndIndex() == 9);
    EXPECT_TRUE(parse->getIndex() == 4 && parse->getErrorIndex() == 2);
}

} // namespace
