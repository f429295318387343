// Scopes of CPU time, beside what the operating system tells of the thread. Windows counts in steps, and Wine no
// cycles.

#include <atomic>
#include <cmath>
#include <thread>
#include <type_traits>

#include <gtest/gtest.h>
#include <qvxsys/CpuTime.h>
#include <qvxsys/TSystem.h>

#include "Oracle.h"
#include "support/Threads.h"

using namespace quorvex::cputime;

namespace {

static_assert(std::is_copy_constructible_v<ThreadTimeScope>);

/// Keeps the calling thread busy in user mode.
void Burn(double milliseconds)
{
    double volatile x = 1;
    for (double const start = ThreadCpuMilliseconds(); ThreadCpuMilliseconds() - start < milliseconds;) {
        for (int i = 0; i < 20'000; ++i) {
            x = std::sqrt(x + i);
        }
    }
}

class CpuTime : public ::testing::TestWithParam<ThreadTimeOption>
{
protected:
    void SetUp() override { SetThreadTimeOption(GetParam()); }
    void TearDown() override { SetThreadTimeOption(ThreadTimeOption::Cycles); }

    static bool ByCycles() { return GetParam() == ThreadTimeOption::Cycles; }
    static void Expect(ThreadTimeValue value, double milliseconds)
    {
        if (ByCycles()) {
            EXPECT_EQ(value.kernelMs, 0u);
            if (!CountsCycles()) {
                EXPECT_EQ(value.userMs, 0u);
                return;
            }
        }
        EXPECT_NEAR(value.kernelMs + value.userMs, milliseconds, ByCycles() ? 2 : ThreadTimesTolerance());
    }
};

INSTANTIATE_TEST_SUITE_P(Options, CpuTime,
                         ::testing::Values(ThreadTimeOption::Cycles, ThreadTimeOption::ThreadTimes,
                                           static_cast<ThreadTimeOption>(-7)),
                         [](auto const& test) { return std::to_string(test.index); });

TEST_P(CpuTime, BusyScopesAddUp)
{
    EXPECT_EQ(GetThreadTimeOption(), GetParam());
    ThreadTimeValue value(1000, 2000);
    double const start = ThreadCpuMilliseconds();
    {
        ThreadTimeScope const scope(value);
        Burn(100);
    }
    double const taken = ThreadCpuMilliseconds() - start;
    value += ThreadTimeValue(0u - 1000, 0u - 2000); // wraps
    Expect(value, taken);
    if (!ByCycles()) {
        EXPECT_GE(value.userMs, value.kernelMs);
    }
    ThreadTimeValue const once = value;
    {
        ThreadTimeScope const scope(value);
        ThreadTimeScope const copy(scope);
        Burn(60);
    }
    Expect(ThreadTimeValue(value.kernelMs - once.kernelMs, value.userMs - once.userMs), 120);
}

TEST_P(CpuTime, OnlyTheOwnThreadWhileItRuns)
{
    ThreadTimeValue value;
    {
        ThreadTimeScope const scope(value);
        TSystem::Sleep(30);
        std::thread(Burn, 80).join();
    }
    EXPECT_LE(value.kernelMs + value.userMs, 20u);
}

// The first calls of a process may come from many threads at once.
TEST_P(CpuTime, ConcurrentScopes)
{
    std::atomic<int> waiting = 4;
    InParallel(4, [&](int) {
        for (--waiting; waiting != 0;) {
        }
        ThreadTimeValue value;
        double const start = ThreadCpuMilliseconds();
        {
            ThreadTimeScope const scope(value);
            static_cast<void>(TSystem::AppUpTime());
            static_cast<void>(TSystem::UpTime());
            Burn(20);
        }
        Expect(value, ThreadCpuMilliseconds() - start);
    });
}

TEST(CpuTracking, Flag)
{
    EXPECT_TRUE(GetCpuTrackingEnabled());
    EXPECT_TRUE(SetCpuTrackingEnabled(false));
    EXPECT_FALSE(GetCpuTrackingEnabled());
    EXPECT_FALSE(SetCpuTrackingEnabled(true));
    EXPECT_TRUE(GetCpuTrackingEnabled());
    EXPECT_EQ(ThreadTimeValue(), ThreadTimeValue(0, 0));
}

} // namespace
