#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>
#include <qvxsys/ErrorOrigin.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/StackTrace.h>
#include <qvxsys/TScanStringCore.h>

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

struct Line
{
    std::string module;
    unsigned long long offset = 0;
    std::string buildId;
};

std::vector<Line> Lines(StackTrace const& trace)
{
    static std::regex const form("#(\\d+) 0x([0-9a-f]{16}) (?:\\?|(.*)\\+0x([0-9a-f]+) ([0-9a-f]+|-))");
    std::istringstream in(trace.ToText());
    std::vector<Line> lines;
    for (std::string text; std::getline(in, text);) {
        std::smatch match;
        EXPECT_TRUE(std::regex_match(text, match, form)) << text;
        EXPECT_EQ(std::stoull(match[1]), lines.size());
        EXPECT_EQ(std::stoull(match[2], nullptr, 16), reinterpret_cast<std::uintptr_t>(trace.Frames()[lines.size()]));
        lines.push_back({match[3], match[4].length() > 0 ? std::stoull(match[4], nullptr, 16) : 0, match[5]});
    }
    EXPECT_EQ(lines.size(), trace.Frames().size());
    return lines;
}

} // namespace

TEST(StackTrace, BeginsWithTheCallerAndSkips)
{
    StackTrace const all = Taken(0);
    StackTrace const rest = Taken(1);
    ASSERT_GT(all.Frames().size(), 3u);
    EXPECT_EQ(rest.Frames().size() + 1, all.Frames().size());
    EXPECT_TRUE(std::equal(all.Frames().begin() + 2, all.Frames().end(), rest.Frames().begin() + 1));
    EXPECT_NE(all.ModuleOf(0), nullptr);
    EXPECT_TRUE(Taken(1000).IsEmpty());
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
    StackTrace const trace = Taken(0);
    Line const line = Lines(trace).front();
    std::ostringstream offset;
    offset << "0x" << std::hex << line.offset - 1;
    ASSERT_TRUE(std::filesystem::exists(line.module)) << line.module;
    ChildResult const name = RunChild({ADDR2LINE, "-Cfie", line.module, offset.str()});
    EXPECT_NE(("\n" + name.out).find("\nTaken"), std::string::npos) << name.out << name.err;
    EXPECT_NE(RunChild({READELF, "-n", line.module}).out.find("Build ID: " + line.buildId), std::string::npos);
#endif
}

TEST(StackTrace, OfAddressesTakenByOthers)
{
    TError::SetOriginHook(TError::RecordTrace);
    try {
        TScanStringCore(u"x").skipInt();
        FAIL();
    } catch (QuorvexException const& e) {
        auto const* const origin = TError::GetOrigin(e.GetErrorInfo());
        ASSERT_NE(origin, nullptr);
        StackTrace const trace(std::span<void* const>(origin->frames, static_cast<std::size_t>(origin->frameCount)));
        EXPECT_EQ(trace.Frames().size(), static_cast<std::size_t>(origin->frameCount));
        EXPECT_NE(trace.ToText().find("stack_tests"), std::string::npos);
    }
    TError::SetOriginHook(nullptr);

    int onStack = 0;
    void* const nowhere[] = {&onStack, nullptr};
    for (Line const& line : Lines(StackTrace(nowhere))) {
        EXPECT_EQ(line.module, "");
    }
}
