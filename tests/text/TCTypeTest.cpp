#include <qvxsys/TCType.h>

#include <gtest/gtest.h>
#include <unicode/uchar.h>

namespace {

// Every unit and a spread of supplementary code points against ICU; the second round reads the filled tables.
TEST(TCType, ClassesAreIcus)
{
    for (int round = 0; round < 2; ++round) {
        for (char32_t c = 0; c < 0x110000; c += c < 0x10000 ? 1 : 0x1F) {
            auto const icu = static_cast<UChar32>(c);
            ASSERT_EQ(TCType::isAlnum(c), u_hasBinaryProperty(icu, UCHAR_POSIX_ALNUM) != 0) << std::hex << icu;
            ASSERT_EQ(TCType::isAlpha(c), u_isUAlphabetic(icu) != 0) << std::hex << icu;
            ASSERT_EQ(TCType::isBlank(c), u_isblank(icu) != 0) << std::hex << icu;
            ASSERT_EQ(TCType::isCntrl(c), u_charType(icu) == U_CONTROL_CHAR) << std::hex << icu;
            ASSERT_EQ(TCType::isDigit(c), u_isdigit(icu) != 0) << std::hex << icu;
            ASSERT_EQ(TCType::isGraph(c), u_hasBinaryProperty(icu, UCHAR_POSIX_GRAPH) != 0) << std::hex << icu;
            ASSERT_EQ(TCType::isLower(c), u_isULowercase(icu) != 0) << std::hex << icu;
            ASSERT_EQ(TCType::isPrint(c), u_hasBinaryProperty(icu, UCHAR_POSIX_PRINT) != 0) << std::hex << icu;
            ASSERT_EQ(TCType::isPunct(c), u_ispunct(icu) != 0) << std::hex << icu;
            ASSERT_EQ(TCType::isSpace32(c), u_isUWhiteSpace(icu) != 0) << std::hex << icu;
            ASSERT_EQ(TCType::isUpper(c), u_isUUppercase(icu) != 0) << std::hex << icu;
            ASSERT_EQ(TCType::isXDigit(c), u_isxdigit(icu) != 0) << std::hex << icu;
        }
    }
}

TEST(TCType, MappingsAreIcusCutToAUnit)
{
    for (int round = 0; round < 2; ++round) {
        for (char32_t c = 0; c < 0x10000; ++c) {
            auto const icu = static_cast<UChar32>(c);
            auto const unit = static_cast<char16_t>(c);
            ASSERT_EQ(TCType::ToLower(unit), static_cast<char16_t>(u_tolower(icu))) << std::hex << icu;
            ASSERT_EQ(TCType::ToUpper(unit), static_cast<char16_t>(u_toupper(icu))) << std::hex << icu;
            ASSERT_EQ(TCType::FoldCase(unit), static_cast<char16_t>(u_foldCase(icu, U_FOLD_CASE_DEFAULT)))
                << std::hex << icu;
        }
    }
    EXPECT_EQ(TCType::ToUpper32(0x10428) + 0x28, TCType::ToLower32(0x10400));
    EXPECT_EQ(TCType::FoldCase(U'\U00010400'), U'\U00010428');
    EXPECT_EQ(TCType::FoldCase('\xC9'), 0xE9);
    EXPECT_EQ(TCType::ToLower(L'\u00C4'), L'\u00E4');
    if constexpr (!qvxsys::kWideIsUtf16) {
        EXPECT_EQ(TCType::ToUpper(static_cast<wchar_t>(0x10428)), static_cast<wchar_t>(0x10400));
    }
}

TEST(TCType, EveryCharacterTypeIsTaken)
{
    EXPECT_TRUE(TCType::isCntrl('\x7F') && TCType::isSpace(u'\u00A0') && TCType::isSpace('\xA0') &&
                TCType::isSpace(L'\u3000'));
    EXPECT_TRUE(TCType::isAlpha(U'\U00010400') && TCType::isAlpha('\xE9') && !TCType::isAlpha(u'\xD801'));
    EXPECT_TRUE(TCType::isCntrl(0x7F) && TCType::isSpace(0x00A0) && TCType::ToUpper(0xE4) == 0xC4);
    EXPECT_FALSE(TCType::isPrint(-1) || TCType::isPrint(static_cast<wchar_t>(-1)) ||
                 TCType::isAlpha(char32_t{0xFFFFFFFF}));
}

} // namespace
