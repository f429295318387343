// What threads may do with the wrappers at once; run under ThreadSanitizer as well.

#include <string>

#include <gtest/gtest.h>
#include <qvxsys/qvxsys.h>

#include "support/Threads.h"

using QvxICU::ICUErrorCode;
using QvxICU::ICULocale;
using QvxICU::ICUSimpleDateFormat;

namespace {

// All threads begin with the first use of the constants, read the shared locale, and change copies of their own.
TEST(IcuThreads, CopiesOfOneLocaleAreIndependent)
{
    auto const shared = ICULocale::createFromName("sr_Latn_RS@currency=EUR");
    InParallel(4, [&](int id) {
        std::string const value = "CU" + std::to_string(id);
        for (int i = 0; i < 1000 / kStressDivisor; ++i) {
            ICUErrorCode status = ICUErrorCode::ZeroError;
            ICULocale copy = i % 2 == 0 ? *shared : ICULocale::getCanadaFrench();
            ICULocale const second = copy;
            copy.setKeywordValue("currency", value.c_str(), status);
            ASSERT_EQ(copy.getKeywordValue("currency", status), value);
            ASSERT_EQ(second, i % 2 == 0 ? *shared : ICULocale::getCanadaFrench());
            ASSERT_FALSE(shared->getDisplayName(second).isEmpty());
        }
    });
    EXPECT_STREQ(shared->getName(), "sr_Latn_RS@currency=EUR");
}

// Each thread clones, reads and changes its clone, while others read what is shared.
TEST(IcuThreads, ClonesOfOneDateFormatAreIndependent)
{
    ICUErrorCode status = ICUErrorCode::ZeroError;
    auto const shared = ICUSimpleDateFormat::createInstance(u"d MMMM y H:mm zzzz", ICULocale::getUS(), status);
    TStringCore const text = shared->format(0.0, status);
    InParallel(4, [&](int id) {
        TStringView const zone = id % 2 == 0 ? u"Asia/Tokyo" : u"Europe/Zurich";
        for (int round = 0; round < 200 / kStressDivisor; ++round) {
            ICUErrorCode mine = ICUErrorCode::ZeroError;
            auto const clone = shared->clone();
            EXPECT_EQ(clone->format(0.0, mine), text);
            clone->setTimeZone(zone, mine);
            EXPECT_EQ(clone->getTimeZone(), zone);
            EXPECT_EQ(shared->parse(text, mine), 0.0);
        }
    });
}

} // namespace
