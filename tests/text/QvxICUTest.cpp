#include <qvxsys/QvxICU.h>

#include <string>

#include "support/TextPrinters.h"

namespace {

using namespace QvxICU;

// Arguments, results and statuses are passed through.
TEST(QvxICU, StringFunctionsForward)
{
    auto status = ICUErrorCode::ZeroError;
    char16_t units[16];
    EXPECT_EQ(t_u_strToUpper(units, 16, u"stra\u00DFe", -1, "de", &status), 7);
    EXPECT_EQ(t_u_strToLower(units, 16, u"\u0130I", -1, "tr", &status), 2);
    EXPECT_EQ(std::u16string(units), u"i\u0131");
    EXPECT_EQ(t_u_strFoldCase(units, 1, u"\u00DF", -1, 0, &status), 2);
    EXPECT_STREQ(t_u_errorName(status), "U_BUFFER_OVERFLOW_ERROR");
    EXPECT_TRUE(ICU_FAILURE(status) && ICU_SUCCESS(ICUErrorCode::StringNotTerminatedWarning));
    EXPECT_EQ(t_u_strFoldCase(units, 16, u"x", -1, 0, &status), 0); // a failed status stops everything

    status = ICUErrorCode::ZeroError;
    std::int32_t length = 0;
    char32_t points[8];
    EXPECT_EQ(t_u_strToUTF32(points, 8, &length, u"a\U0001F600", -1, &status), points);
    EXPECT_EQ(t_u_strFromUTF32(units, 16, &length, points, 2, &status), units);
    EXPECT_EQ(std::u16string(units), u"a\U0001F600");
    EXPECT_EQ(t_u_strToUTF32(points, 8, &length, u"\xD83D", 1, &status), nullptr);
    EXPECT_EQ(status, ICUErrorCode::InvalidCharFound);
    status = ICUErrorCode::ZeroError;
    std::int32_t substitutions = 0;
    EXPECT_EQ(t_u_strToUTF32WithSub(points, 8, &length, u"\xD83D", 1, 0xFFFD, &substitutions, &status), points);
    EXPECT_EQ(substitutions, 1);
    EXPECT_EQ(t_u_strncmp(u"ab", u"ac", 1) + t_u_strncasecmp(u"Ab", u"aC", 1, 0), 0);
    EXPECT_TRUE(t_u_strcmp(u"a", u"b") < 0 && t_u_strcasecmp(u"\u00C4", u"\u00E4", 0) == 0);
}

TEST(QvxICU, RuleForIgnoringDigitsFollowsTheVersion)
{
    EXPECT_EQ(getIcuVersion(), 4);
    TStringCore const& listed = t_getIgnoreDigitsRule();
    EXPECT_EQ(listed.length(), 55);
    EXPECT_EQ(listed, u"&'0'='1'='2'='3'='4'='5'='6'='7'='8'='9'<[variable top]");
    setIcuVersion(5);
    EXPECT_EQ(t_getIgnoreDigitsRule().view(), TStringView(u"&\0=*0-9", 7));
    setIcuVersion(4);
    EXPECT_EQ(&t_getIgnoreDigitsRule(), &listed);
}

} // namespace
