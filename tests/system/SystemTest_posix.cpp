#include "Oracle.h"

#include <cerrno>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <qvxsys/CpuTime.h>
#include <qvxsys/TSystem.h>

#include "support/InChild_posix.h"
#include "support/Interruptions_posix.h"

double ThreadCpuMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

bool CountsCycles()
{
    return true;
}

double ThreadTimesTolerance()
{
    return 12; // some kernels sample at ticks
}

std::uint32_t OwnProcessId()
{
    return static_cast<std::uint32_t>(std::stoul(std::filesystem::read_symlink("/proc/self").string()));
}

std::uint32_t OwnThreadId()
{
    return static_cast<std::uint32_t>(
        std::stoul(std::filesystem::read_symlink("/proc/thread-self").filename().string()));
}

void SetPlatformError(unsigned code)
{
    errno = static_cast<int>(code);
}

unsigned GetPlatformError()
{
    return static_cast<unsigned>(errno);
}

namespace {

TEST(System, IdsAfterFork)
{
    EXPECT_EQ(InChild([parent = TSystem::ProcessID()] {
                  bool const own = TSystem::ProcessID() == OwnProcessId() && TSystem::ThreadID() == OwnThreadId();
                  return own && TSystem::ProcessID() != parent;
              }),
              1);
}

TEST(System, SignalsDoNotShortenSleep)
{
    Interruptions const signals;
    auto const sleep = [] {
        YieldUntil([first = Interruptions::Count()] { return Interruptions::Count() > first; });
        errno = EBUSY;
        auto const start = std::chrono::steady_clock::now();
        int const before = Interruptions::Count();
        TSystem::Sleep(30);
        int const error = errno;
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));
        EXPECT_GT(Interruptions::Count(), before);
        EXPECT_EQ(error, EBUSY);
    };
    Interruptions::Run(sleep, [] {});
}

// What a thread has the kernel do is booked as kernel time by one measure, as the kernel itself has it, and as user
// time by the other.
TEST(CpuTime, KernelTime)
{
    using namespace quorvex::cputime;
    auto const kernelTime = [] {
        rusage usage;
        getrusage(RUSAGE_THREAD, &usage);
        return usage.ru_stime.tv_sec * 1'000'000 + usage.ru_stime.tv_usec;
    };
    for (ThreadTimeOption const option : {ThreadTimeOption::Cycles, ThreadTimeOption::ThreadTimes}) {
        SetThreadTimeOption(option);
        ThreadTimeValue value;
        auto const before = kernelTime();
        long least = 0;
        {
            ThreadTimeScope const scope(value);
            for (auto const start = kernelTime(); least < 30'000; least = kernelTime() - start) {
                static_cast<void>(access("/proc/self/status", R_OK));
            }
        }
        long const most = kernelTime() - before;
        bool const isBooked = option == ThreadTimeOption::ThreadTimes;
        EXPECT_GE(value.kernelMs, isBooked ? least / 1000 : 0);
        EXPECT_LE(value.kernelMs, isBooked ? most / 1000 : 0);
    }
    SetThreadTimeOption(ThreadTimeOption::Cycles);
}

} // namespace
