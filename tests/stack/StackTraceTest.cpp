#include <algorithm>
#include <filesystem>
#include <limits>
#include <regex>
#include <sstream>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>
#include <qvxsys/StackTrace.h>

#include "support/ChildProcess.h"

using quorvex::StackTrace;

static_assert(std::is_trivially_copyable_v<StackTrace>);

namespace {

int volatile g_sink;

[[gnu::noinline]] StackTrace Taken(int skip)
{
    StackTrace const trace = StackTrace::Current(skip);
    g_sink = 1;
    return trace;
}

constexpr char kForm[] = "#\\d+ 0x[0-9a-f]{16} (.*)\\+0x([0-9a-f]+) ([0-9a-f]+)";

} // namespace

TEST(StackTrace, BeginsWithTheCallerAndSkips)
{
    StackTrace const all = Taken(0);
    StackTrace const rest = Taken(1);
    ASSERT_GT(all.Frames().size(), 3u);
    EXPECT_EQ(rest.Frames().size() + 1, all.Frames().size());
    EXPECT_TRUE(std::equal(all.Frames().begin() + 2, all.Frames().end(), rest.Frames().begin() + 1));
    EXPECT_NE(all.ModuleOf(0), nullptr);
    EXPECT_TRUE(Taken(std::numeric_limits<int>::max()).IsEmpty());
    EXPECT_EQ(Taken(-1).Frames().size(), all.Frames().size());
    EXPECT_EQ(Taken(1000).ToText(), "");

    auto const few = quorvex::BasicStackTrace<2>::Current();
    EXPECT_TRUE(few.IsFull());
    EXPECT_FALSE(all.IsFull());
}

TEST(StackTrace, TextNamesTheFunctionElsewhere)
{
#if !defined(READELF)
    GTEST_SKIP() << "no tools for this system's programs";
#else
    std::string const text = Taken(0).ToText();
    std::string const line = text.substr(0, text.find('\n'));
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(line, parts, std::regex(kForm))) << line;
    std::ostringstream called;
    called << "0x" << std::hex << std::stoull(parts[2], nullptr, 16) - 1;
    ASSERT_TRUE(std::filesystem::exists(parts[1].str())) << line;
    ChildResult const name = RunChild({ADDR2LINE, "-Cfie", parts[1], called.str()});
    EXPECT_NE(name.out.find("Taken"), std::string::npos) << name.out << name.err;
    EXPECT_NE(RunChild({READELF, "-n", parts[1]}).out.find("Build ID: " + parts[3].str()), std::string::npos);
#endif
}

TEST(StackTrace, OfAddressesTakenByOthers)
{
    int onStack = 0;
    void* const nowhere[] = {&onStack, nullptr};
    std::regex const form("#0 0x[0-9a-f]{16} \\?\n#1 0x0{16} \\?\n");
    EXPECT_TRUE(std::regex_match(StackTrace(nowhere).ToText(), form));
}
