#include "Oracle.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <thread>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <qvxsys/CpuTime.h>
#include <qvxsys/TSystem.h>

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
    unsigned int const parent = TSystem::ProcessID();
    pid_t const child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        bool const own = TSystem::ProcessID() == OwnProcessId() && TSystem::ThreadID() == OwnThreadId();
        _exit(own && TSystem::ProcessID() != parent ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

std::atomic<int> g_signals = 0;

TEST(System, SignalsDoNotShortenSleep)
{
    struct sigaction action
    {};
    action.sa_handler = [](int) { ++g_signals; };
    struct sigaction before
    {};
    ASSERT_EQ(sigaction(SIGUSR1, &action, &before), 0);
    pthread_t const sleeper = pthread_self();
    std::atomic<bool> done = false;
    std::thread disturber([&] {
        while (!done) {
            pthread_kill(sleeper, SIGUSR1);
            std::this_thread::yield();
        }
    });
    while (g_signals == 0) {
    }
    errno = EBUSY;
    auto const start = std::chrono::steady_clock::now();
    int const first = g_signals;
    TSystem::Sleep(30);
    auto const slept = std::chrono::steady_clock::now() - start;
    int const error = errno;
    int const interruptions = g_signals - first;
    done = true;
    disturber.join();
    sigaction(SIGUSR1, &before, nullptr);
    EXPECT_GE(slept, std::chrono::milliseconds(30));
    EXPECT_GT(interruptions, 0);
    EXPECT_EQ(error, EBUSY);
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
