// Watched processes: the arithmetic, the own process, and the manager of children.

#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <qvxsys/qvxsys.h>

#include "ChildProcessManager.h"
#include "MonitoredProcess.h"
#include "support/LogicAsserts.h"

namespace {

using namespace qvxsys::monitor;

TEST(CpuPercent, Arithmetic)
{
    constexpr std::uint64_t kSecond = 10'000'000;
    constexpr std::uint64_t kBig = ~std::uint64_t{0};
    constexpr struct
    {
        CpuSample now; // since {0, 0, 0}
        std::uint64_t processors;
        unsigned percent;
    } kCases[] = {
        {{kSecond, kSecond, 0}, 1, 0},                 // no time has passed
        {{0, kSecond, kSecond}, 0, 0},                 // no processors
        {{2 * kSecond, 2 * kSecond, kSecond}, 4, 100}, // four processors fully used
        {{0, 2 * kSecond, kSecond}, 1, 100},           // 200: capped
        {{0, 3 * kSecond, kSecond}, 1, 44},            // 300: its low 8 bits
        {{0, 299, 100}, 3, 99},                        // 299 / 3
        {{0, 1999, 1000}, 100, 1},                     // 199 / 100: truncated twice
        {{0, kSecond, kBig}, 1, 0},                    // the wall clock was set back
    };
    for (auto const& row : kCases) {
        EXPECT_EQ(CpuPercent({}, row.now, row.processors), row.percent) << row.now.user << ' ' << row.now.wall;
    }
    EXPECT_EQ(CpuPercent({kBig, 0, kBig}, {kSecond - 1, 0, kSecond - 1}, 2), 50u); // counters that wrap
}

TEST(MonitoredProcess, FullFrequency)
{
    EXPECT_TRUE(AtFullFrequency({}, 0)); // nothing known
    EXPECT_TRUE(AtFullFrequency({4, 0, 7}, 7));
    EXPECT_TRUE(AtFullFrequency({4, 0, 6}, 7));
    EXPECT_FALSE(AtFullFrequency({4, 0, 8}, 7));
    EXPECT_FALSE(AtFullFrequency({4, 1, 7}, 7));
    static_cast<void>(MonitoredProcess::IsCpuAtMaxFrequency());
    EXPECT_EQ(MonitoredProcess::IsCpuAtMaxFrequency(), TSystem::Throttling().capped == 0);
}

TEST(MonitoredProcess, Own)
{
    MonitoredProcess process;
    EXPECT_EQ(process.GetProcessId(), TSystem::ProcessID());
    EXPECT_TRUE(process.IsRunning());
    EXPECT_TRUE(MonitoredProcess::IsRunning(TSystem::ProcessID()));

    MonitoredProcess moved(std::move(process));
    process = std::move(moved);
    EXPECT_EQ(process.GetProcessId(), TSystem::ProcessID());
}

TEST(MonitoredProcess, NotRunning)
{
    for (unsigned int const pid : {0u, 0x7FFFFFFEu, 0xFFFFFFFFu}) {
        EXPECT_FALSE(MonitoredProcess::IsRunning(pid)) << pid;
        try {
            MonitoredProcess const process(pid);
            ADD_FAILURE() << pid;
        } catch (QuorvexException const& e) {
            EXPECT_EQ(e.CollateMessagesForLog(), u"Process pid=" + TStringCore::number(pid) + u" is not running\n");
            EXPECT_EQ(e.GetErrorName(), u"QuorvexException_AutoGen_0xC1062A71");
        }
    }
}

TEST(ChildProcessManager, LogLinesAndChecks)
{
    std::vector<TStringCore> log;
    ChildProcessManager children([&](TStringCore const& line) { log.push_back(line); });
    EXPECT_EQ(children.GetCpuUsage(), 0);
    EXPECT_EQ(children.GetMemoryUsage(), 0u);
    unsigned int const pid = TSystem::ProcessID(); // serves as a child
    TStringCore const number = TStringCore::number(pid);
    constexpr char const* kFile = "qvxsys/main/monitor/ChildProcessManager";
    children.Add(pid);
    EXPECT_EQ(AssertRaisedBy([&] { children.Add(pid); }),
              (RaisedAssert{kFile, 28, "m_processes.emplace(pid, pid).second"}));
    // Both 0 under Wine, which does not tell.
    EXPECT_NEAR(static_cast<double>(children.GetMemoryUsage()),
                static_cast<double>(MonitoredProcess().GetMemoryUsage()), 4 << 20);
    children.Remove(pid);
    RaisedAssert const unknown{kFile, 35, "m_processes.erase(pid) > 0"};
    EXPECT_EQ(AssertRaisedBy([&] { children.Remove(pid); }), unknown);
    EXPECT_THROW(children.Add(0), QuorvexException);
    EXPECT_EQ(AssertRaisedBy([&] { children.Remove(0); }), unknown); // nothing was left behind
    EXPECT_EQ(children.GetMemoryUsage(), 0u);
    std::vector<TStringCore> const expected = {
        u"Resource Manager: Adding child process: " + number,   u"Resource Manager: Adding child process: " + number,
        u"Resource Manager: Removing child process: " + number, u"Resource Manager: Removing child process: " + number,
        u"Resource Manager: Adding child process: 0",           u"Resource Manager: Removing child process: 0"};
    EXPECT_EQ(log, expected);
}

} // namespace
