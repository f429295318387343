#include <cstdlib>
#include <string>

#include <gtest/gtest.h>
#include <qvxsys/qvxsys.h>

#include "support/TemporaryFolder.h"

namespace {

// The next test runs this one in copies of this program.
TEST(ModulePath, EndsAsExpected)
{
    char const* const expected = std::getenv("QVX_EXPECTED_PROGRAM");
    EXPECT_TRUE(
        qvxsys::ToNative(TSystem::ExecutableFilename()).ends_with(expected != nullptr ? expected : "/path_test"))
        << TSystem::ExecutableFilename();
}

TEST(ModulePath, OfProgramsWithOddNamesThatAreGone)
{
    TemporaryFolder const folder;
    std::string const program = qvxsys::ToNative(TSystem::ExecutableFilename());
    std::string const name = (folder.Path() / "odd\xFF:x\\y (deleted)").native();
    std::string const copy = "cp '" + program + "' '" + name + "' && exec 3<'" + name + "' && QVX_EXPECTED_PROGRAM='" +
                             name + "' && export QVX_EXPECTED_PROGRAM && ";
    for (std::string const& start : {"'" + name + "'", "rm '" + name + "' && /proc/self/fd/3"}) {
        std::string const command = copy + start + " --gtest_filter=ModulePath.EndsAsExpected >/dev/null";
        EXPECT_EQ(std::system(command.c_str()), 0) << start;
    }
}

} // namespace
