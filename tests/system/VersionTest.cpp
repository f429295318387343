#include <qvxsys/Version.h>

#include <gtest/gtest.h>

using qvxsys::kVersion;
using qvxsys::Version;

static_assert(Version{1, 9, 9} < Version{2, 0, 0} && Version{1, 2, 9} < Version{1, 10, 0} &&
              Version{1, 2, 3} < Version{1, 2, 4} && Version{1, 2, 3} == Version{1, 2, 3});
static_assert(QVXSYS_VERSION == kVersion.major * 10000 + kVersion.minor * 100 + kVersion.patch);

// The build's version, which packages and file names bear, is read out of the header.
TEST(Version, IsTheSameEverywhere)
{
    EXPECT_EQ(qvxsys::LoadedVersion(), kVersion);
    EXPECT_STREQ(qvxsys::LoadedVersionText(), QVXSYS_VERSION_STRING);
    EXPECT_STREQ(QVXSYS_VERSION_STRING, QVXSYS_PROJECT_VERSION);
}
