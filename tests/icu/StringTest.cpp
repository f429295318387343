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

struct Arguments
{
    std::u16string text;
    std::u16string other;
    int start;
    int length;
    int limit;
    char const* locale;
};

/// One of the operations that change a string, on either class.
template<class String>
void Change(String& s, int operation, Arguments const& a)
{
    auto const text = Given(s, a.text);
    int const from = std::clamp(a.start, 0, s.length());
    int const to = std::clamp(a.limit, 0, s.length());
    switch (operation) {
    case 0:
        s.append(text);
        break;
    case 1:
        s.insert(a.start, text);
        break;
    case 2:
        s.replace(a.start, a.length, text);
        break;
    case 3:
        s.replaceBetween(from, to, text);
        break;
    case 4:
        s.findAndReplace(text, Given(s, a.other));
        break;
    case 5:
        s.remove();
        break;
    case 6:
        s.remove(a.start, a.length);
        break;
    case 7:
        s.removeBetween(from, to);
        break;
    case 8:
        s.retainBetween(from, to);
        break;
    case 9:
        s.padLeading(a.start + 4, u'.');
        break;
    case 10:
        s.padTrailing(a.start + 4, u'.');
        break;
    case 11:
        s.truncate(a.start);
        break;
    case 12:
        s.trim();
        break;
    case 13:
        s.reverse();
        break;
    case 14:
        s.reverse(a.start, a.length);
        break;
    case 15:
        s.toUpper();
        break;
    case 16:
        s.toUpper(*In(s, a.locale));
        break;
    case 17:
        s.toLower();
        break;
    case 18:
        s.toLower(*In(s, a.locale));
        break;
    case 19:
        s.foldCase(static_cast<unsigned>(a.start & 1));
        break;
    case 20:
        s.setCharAt(a.start, u'\u0130');
        break;
    case 21:
        s.setToBogus();
        break;
    default:
        s.setTo(text);
        break;
    }
}
constexpr int kChanges = 23;

/// What a string tells, of either class.
template<class String>
std::vector<long> Answers(String const& s, Arguments const& a)
{
    auto const text = Given(s, a.text);
    auto const sign = [](int n) { return n < 0 ? -1L : n > 0 ? 1L : 0L; };
    return {s.length(),
            s.isEmpty(),
            s.isBogus(),
            s.hashCode(),
            sign(s.compare(text)),
            sign(s.compareCodePointOrder(text)),
            sign(s.caseCompare(text, 0)),
            sign(s.caseCompare(text, 0x8001)),
            s.startsWith(text),
            s.endsWith(text),
            s == text,
            s.indexOf(text),
            s.indexOf(text, a.start, a.length),
            s.lastIndexOf(text),
            s.lastIndexOf(text, a.start, a.length),
            s.charAt(a.start),
            static_cast<long>(s.char32At(a.start)),
            s.getChar32Start(a.start),
            s.getChar32Limit(a.start),
            s.moveIndex32(a.start, a.limit),
            s.countChar32(),
            s.countChar32(a.start, a.length),
            s.hasMoreChar32Than(a.start, a.length, a.limit)};
}

class Operations : public testing::Test
{
protected:
    std::u16string Piece()
    {
        static constexpr std::u16string_view kPieces[] = {u"",
                                                          u"a",
                                                          u"Straße",
                                                          u"\u0130I\u0131i",
                                                          u"\xD83D\xDE00",
                                                          u"\xD83D",
                                                          u"\xDE00",
                                                          u"ΑΣ ας",
                                                          u" \t\u2028 ",
                                                          u"\uFB03",
                                                          u"e\u0301",
                                                          u"ij IJssel",
                                                          u"\uFFFF",
                                                          std::u16string_view(u"\0x", 2),
                                                          u"\xD800\xDC00z",
                                                          u"aa"};
        std::u16string text;
        for (int i = Below(4); i > 0; --i) {
            text += kPieces[static_cast<std::size_t>(Below(static_cast<int>(std::size(kPieces))))];
        }
        return text;
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
        return {Piece(),
                Piece(),
                std::max(Index(length), -9) % 1000,
                Index(length),
                std::max(Index(length), -INT_MAX),
                kLocales[Below(6)]};
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

TEST_F(Operations, TitlesAndEscapesAreIcus)
{
    for (int round = 0; round < 300; ++round) {
        Arguments const a = Random(5);
        std::u16string const text = a.text + u" ijsland 'tis McX. iPhone " + a.other;
        for (unsigned const options : {0U, 0x20U, 0x40U, 0x100U, 0x200U, 0x400U, 0x140U}) {
            auto const ours = ICUString::createAlias(text);
            icu::UnicodeString theirs = Unicode(text);
            ours->toTitle(*ICULocale::createFromName(a.locale), options);
            ASSERT_EQ(ours->toString(), Text(theirs.toTitle(nullptr, icu::Locale(a.locale), options)));
        }
        ASSERT_EQ(ICUString::createAlias(text)->toTitle().toString(), Text(Unicode(text).toTitle(nullptr)));
    }
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
    EXPECT_EQ(field->getField(), QvxICU::ICUFieldPosition::kDontCare);
    field->setField(3);
    field->setBeginIndex(5);
    field->setEndIndex(9);
    auto const fieldCopy = field->clone();
    EXPECT_TRUE(*fieldCopy == *field && fieldCopy->getBeginIndex() == 5 && fieldCopy->getEndIndex() == 9);
    fieldCopy->setField(4);
    EXPECT_TRUE(field->getField() == 3 && !(*fieldCopy == *field));
    EXPECT_EQ(QvxICU::ICUFieldPosition::createInstance(7)->getField(), 7);

    auto const parse = QvxICU::ICUParsePosition::createInstance(4);
    EXPECT_TRUE(parse->getIndex() == 4 && parse->getErrorIndex() == -1);
    auto const parseCopy = parse->clone();
    EXPECT_TRUE(*parseCopy == *parse);
    parseCopy->setErrorIndex(2);
    EXPECT_TRUE(parse->getErrorIndex() == -1 && !(*parseCopy == *parse));
    parse->setIndex(0);
    EXPECT_TRUE(*parse == *QvxICU::ICUParsePosition::createInstance());
}

} // namespace
