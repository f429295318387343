#include <qvxsys/TStringCore.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "support/IcuDecode.h"
#include "support/TextPrinters.h"

namespace {

using testing_support::TextError;

std::u16string IcuDecode(char const* name, std::string const& bytes)
{
    return icu_reference::Decode(name, bytes).text;
}

TEST(TStringConvert, LatinEncodingsAreIcus)
{
    std::string bytes(256, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    TStringCore const latin1 = TStringCore::fromLatin1(bytes.data(), 256);
    TStringCore const latin9 = TStringCore::fromLatin9(bytes.data(), 256);
    EXPECT_EQ(latin1.toStdUString(), IcuDecode("ISO-8859-1", bytes));
    EXPECT_EQ(latin9.toStdUString(), IcuDecode("ISO-8859-15", bytes));
    bool lossy = true;
    EXPECT_EQ(latin1.toLatin1(&lossy), bytes);
    EXPECT_FALSE(lossy);
    lossy = true;
    EXPECT_EQ(latin9.toLatin9(&lossy), bytes);
    EXPECT_FALSE(lossy);
    EXPECT_EQ(TStringCore(u"a\u20AC\U0001F600").toLatin1(&lossy), "a???");
    EXPECT_TRUE(lossy);
    EXPECT_EQ(TStringCore(u"\u20AC\u0100").toLatin9(&lossy), "\xA4?");
    EXPECT_TRUE(lossy);
    EXPECT_EQ(TStringCore().toLatin1(&lossy), "");
    EXPECT_FALSE(lossy);
    EXPECT_EQ(TStringCore(u"\u00A4").toLatin9(), "\xA4"); // shares its byte with the euro sign
    EXPECT_EQ(TStringCore::fromLatin9("\xA4"), u"\u20AC");
    EXPECT_EQ(TStringCore::fromLatin1("ab\xE9", -1), u"ab\u00E9");
    EXPECT_TRUE(TStringCore::fromLatin1(nullptr, 4).empty() && TStringCore::fromLatin9("abc", 0).empty());
}

TEST(TStringConvert, WideTextKeepsEveryValue)
{
    TStringCore const text(u"a\U0001F600\xD83D|\xDE00", 6);
    std::wstring const wide = text.toStdWString();
    EXPECT_EQ(wide.size(), qvxsys::kWideIsUtf16 ? 6u : 5u);
    EXPECT_EQ(TStringCore::fromStdWString(wide).view(), text.view());
    EXPECT_EQ(TStringCore::fromWChar(wide.c_str()).view(), text.view());
    wchar_t const odd[] = {L'a', static_cast<wchar_t>(qvxsys::kWideIsUtf16 ? 0xFFFD : 0x110000), L'\0'};
    EXPECT_EQ(TStringCore(odd), u"a\uFFFD");
    EXPECT_EQ(TStringCore(L"12345678901234").capacity(), 15); // needs no block
    EXPECT_EQ(TStringCore(L"1234567890123\U0001F600").capacity(), 17);
    EXPECT_EQ(TStringCore::length(L"a\U0001F600"), 3);
    EXPECT_EQ(TStringCore::lengthInBytes(L"a\U0001F600") + TStringCore::lengthInBytes(u"ab"), 6u + 4u);
    EXPECT_EQ(TStringCore::lengthInCodePoints(L"a\U0001F600"), 2);
    EXPECT_EQ(TStringCore::lengthInCodePoints(u"a\U0001F600"), 2);
    EXPECT_EQ(TStringCore::length(static_cast<wchar_t const*>(nullptr)), 0);
    std::vector<wchar_t> const buffer = text.toWCharVector();
    EXPECT_EQ(std::wstring(buffer.data()), wide);
    EXPECT_EQ(buffer.size(), wide.size() + 1);
    wchar_t array[8];
    EXPECT_EQ(static_cast<std::size_t>(text.toWCharArray(array, 8)), wide.size());
    EXPECT_EQ(TextError([&] { text.toWCharArray(array, 5); }),
              "Error insufficient destinationCapacity (5) was passed into TStringCore::toWCharArray.");
}

// Terminated texts of every length at every alignment, surrounded by zeros and non-zeros.
TEST(TStringConvert, LengthOfTerminatedText)
{
    for (char16_t const around : {u'\0', u'\x0100', u'\x00FF'}) {
        for (std::size_t at = 0; at < 10; ++at) {
            for (std::size_t n = 0; n < 40; ++n) {
                std::vector<char16_t> units(64, around);
                std::fill_n(units.begin() + static_cast<std::ptrdiff_t>(at), n, u'\x8000');
                units[at + n] = 0;
                ASSERT_EQ(TStringCore::length(units.data() + at), static_cast<int>(n));
                ASSERT_EQ(TStringView(units.data() + at).size(), n);
            }
        }
    }
    static_assert(TStringView(u"abc").size() == 3);
}

TEST(TStringConvert, Utf32)
{
    EXPECT_EQ(TStringCore::fromUtf32(U"a\U0001F600"), u"a\U0001F600");
    char32_t const odd[] = {0xD83D, 0x110000, 0, U'z'};
    EXPECT_EQ(TStringCore::fromUtf32(odd, 4).view(), TStringView(u"\xD83D\uFFFD\0z", 4));
    EXPECT_EQ(TStringCore::fromUtf32(odd, -1).length(), 2);
    EXPECT_TRUE(TStringCore::fromUtf32(nullptr, 3).empty() && TStringCore::fromUtf32(odd, 0).empty());
    EXPECT_EQ(TStringCore::fromUtf32(U"abcdefgh", 8).capacity(), 17); // room for two units each
}

TEST(TStringConvert, Utf8)
{
    EXPECT_EQ(TStringCore::fromUtf8("\x80\xBF\xC3(\xE2\x82"), u"\uFFFD\uFFFD\uFFFD(\uFFFD");
    EXPECT_TRUE(TStringCore::fromUtf8(nullptr, 9).empty() && TStringCore::fromUtf8("abc", 0).empty());
    EXPECT_EQ(TStringCore::fromUtf8("a\0b", 3).length(), 3);
    EXPECT_EQ(TStringCore::fromUtf8("\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC").capacity(), 17);
    TStringCore reused(u'x', 100);
    char16_t const* const block = reused.constData();
    reused.assign("caf\xC3\xA9 caf\xC3\xA9 caf\xC3\xA9");
    EXPECT_EQ(reused, u"caf\u00E9 caf\u00E9 caf\u00E9");
    EXPECT_EQ(reused.constData(), block);
}

// The local encoding is that of ICU's default converter; for a code page of Windows its 0x1A is what cannot be encoded.
TEST(TStringConvert, Local8BitInACodePage)
{
    if (std::string_view(ucnv_getDefaultName()) == "UTF-8") {
        GTEST_SKIP() << "the local encoding is UTF-8 here";
    }
    if (std::string_view(ucnv_getDefaultName()) != "ibm-5348_P100-1997") {
        GTEST_SKIP() << "the local encoding is not windows-1252 but " << ucnv_getDefaultName();
    }
    std::string bytes;
    for (int c = 0x20; c < 0x100; ++c) {
        bytes += static_cast<char>(c);
    }
    std::u16string const decoded = IcuDecode(nullptr, bytes);
    EXPECT_EQ(TStringCore::fromLocal8Bit(bytes.c_str()), decoded.c_str());
    bool lossy = true;
    EXPECT_EQ(TStringCore(decoded.c_str()).toLocal8Bit(&lossy), bytes);
    EXPECT_FALSE(lossy);
    EXPECT_EQ(TStringCore(u"a\U0001F600 b").toLocal8Bit(&lossy), "a\x1A b");
    EXPECT_TRUE(lossy);
}

TEST(TStringConvert, Local8Bit)
{
    if (std::string_view(ucnv_getDefaultName()) != "UTF-8") {
        GTEST_SKIP() << "the local encoding is not UTF-8 here but " << ucnv_getDefaultName();
    }
    bool lossy = true;
    std::string const utf8 = "Gr\xC3\xBC\xC3\x9F"
                             "e \xF0\x9F\x98\x80";
    EXPECT_EQ(TStringCore::fromLocal8Bit(utf8.c_str()), u"Gr\u00FC\u00DFe \U0001F600");
    EXPECT_EQ(TStringCore(u"Gr\u00FC\u00DFe \U0001F600").toLocal8Bit(&lossy), utf8);
    EXPECT_FALSE(lossy);
    EXPECT_EQ(TStringCore(u"a\xD83D").toLocal8Bit(&lossy), "a\xEF\xBF\xBD");
    EXPECT_TRUE(lossy);
    EXPECT_EQ(TStringCore::fromLocal8Bit("ab\x1A"), u"ab"); // from the very last byte only
    EXPECT_EQ(TStringCore::fromLocal8Bit("a\x1A"
                                         "b"),
              u"a\x1A"
              u"b");
    EXPECT_EQ(TStringCore::fromLocal8Bit("a\xFF"
                                         "b\xC3",
                                         4),
              u"a\uFFFDb\uFFFD");
    EXPECT_TRUE(TStringCore::fromLocal8Bit(nullptr, 5).empty() && TStringCore().toLocal8Bit(&lossy).empty());
    EXPECT_FALSE(lossy);
}

} // namespace
