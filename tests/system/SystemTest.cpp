// Up-time, ids, sleeping, the desktop main thread and error texts, beside what the C++ library and the operating system
// say of them (Oracle.h).

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdio>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TSystem.h>

#include "ClockArithmetic.h"
#include "Oracle.h"
#include "ProcessorFrequency.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
__extension__ using Wide = unsigned __int128;

// The library is loaded before the program's globals are made.
steady_clock::time_point const g_afterLoading = steady_clock::now();

std::string Prefix(unsigned long code)
{
    char text[64];
    std::snprintf(text, sizeof text, "last error : 0x%016llx ", static_cast<unsigned long long>(code));
    return text;
}

TEST(System, UpTimeCountsFromLoading)
{
    auto const before = steady_clock::now();
    unsigned int const first = TSystem::AppUpTime();
    auto const exact = TSystem::UpTime();
    unsigned int const second = TSystem::AppUpTime();
    auto const after = steady_clock::now();
    EXPECT_GE(milliseconds(first), std::chrono::floor<milliseconds>(before - g_afterLoading));
    EXPECT_LT(exact, after - g_afterLoading + std::chrono::seconds(30)) << "the program took that long to load";
    EXPECT_LE(milliseconds(first), exact);
    EXPECT_LE(exact, milliseconds(second) + milliseconds(1));

    TSystem::Sleep(20);
    auto const later = steady_clock::now();
    auto const grown = TSystem::UpTime() - exact;
    auto const latest = steady_clock::now();
    EXPECT_GE(grown, later - after);
    EXPECT_LE(grown, latest - before);
}

TEST(System, ClockArithmetic)
{
    using qvxsys::system::TicksTo;
    using qvxsys::system::WrappedMilliseconds;
    constexpr std::uint64_t kWrap = std::uint64_t{1} << 32;
    EXPECT_EQ(WrappedMilliseconds((kWrap - 1) * 10'000, 1e-4), 0xFFFFFFFFu);
    EXPECT_EQ(WrappedMilliseconds((kWrap + 5) * 10'000, 1e-4), 5u);
    EXPECT_EQ(WrappedMilliseconds(1'999'999, 1e-6), 1u);
    for (std::uint64_t const ticks : {0ull, 1ull, 2'999'999ull, 3'000'000ull, 1'000'000'000'000'000'000ull}) {
        auto const expected = Wide{ticks} * 1000 / 3'000'000'000u;
        EXPECT_TRUE(TicksTo(1000, ticks, 3'000'000'000) == expected) << ticks;
    }
    EXPECT_EQ(TicksTo(1000, 1000, 0), 0u);

    using qvxsys::system::FrequencyOf;
    constexpr qvxsys::system::ProcessorPowerRecord kRecords[] = {{0, 9, 1200, 9, 9, 9}, {2, 9, 4294, 9, 9, 9}, {}};
    EXPECT_EQ(FrequencyOf(kRecords, 0), 1'200'000'000u);
    EXPECT_EQ(FrequencyOf(kRecords, 2), 4'294'000'000u);
    EXPECT_EQ(FrequencyOf(kRecords, 1), 0u);
}

TEST(System, Ids)
{
    EXPECT_EQ(TSystem::ProcessID(), OwnProcessId());
    EXPECT_EQ(TSystem::ThreadID(), OwnThreadId());
    std::thread([own = TSystem::ThreadID()] {
        EXPECT_EQ(TSystem::ThreadID(), OwnThreadId());
        EXPECT_NE(TSystem::ThreadID(), own);
        EXPECT_EQ(TSystem::ProcessID(), OwnProcessId());
    }).join();
}

TEST(System, SleepIsNotEarly)
{
    for (unsigned int const ms : {0u, 1u, 2u, 15u, 17u}) {
        auto const start = steady_clock::now();
        TSystem::Sleep(ms);
        EXPECT_GE(steady_clock::now() - start, milliseconds(ms));
    }
}

TEST(System, DesktopMainThread)
{
    EXPECT_FALSE(TSystem::IsDesktopMainThread());
    auto const own = std::this_thread::get_id();
    EXPECT_FALSE(TSystem::SetDesktopMainThreadFunc([own] { return std::this_thread::get_id() == own; }));
    EXPECT_TRUE(TSystem::IsDesktopMainThread());
    std::thread([] { EXPECT_FALSE(TSystem::IsDesktopMainThread()); }).join();
    auto const previous = TSystem::SetDesktopMainThreadFunc({});
    ASSERT_TRUE(previous);
    EXPECT_TRUE(previous());
    EXPECT_FALSE(TSystem::IsDesktopMainThread());
}

TEST(System, ErrorTexts)
{
    int known = 0;
    for (unsigned code = 0; code < 3000; ++code) {
        std::string const text = GetLastErrorString(code);
        ASSERT_TRUE(text.starts_with(Prefix(code))) << text;
        std::string message = text.substr(Prefix(code).size());
        if (message.empty()) {
            continue;
        }
        ++known;
        EXPECT_EQ(message.ends_with("\r\n"), qvxsys::kLinesEndInCrLf) << message;
        if (message.find("%1") != std::string::npos) {
            continue; // the C++ library has no text where something would be inserted
        }
        message.erase(message.find_last_not_of("\r\n.") + 1);
        std::string const expected = std::system_category().message(static_cast<int>(code));
        EXPECT_TRUE(expected.starts_with(message)) << code << ' ' << message << '\n' << expected;
    }
    EXPECT_GT(known, 100);
    EXPECT_GT(GetLastErrorString(5).size(), Prefix(5).size());
    for (unsigned long const code : {0x7FFFFFFFul, 0x80000005ul - 5, 0xFFFFFFFFul, ULONG_MAX, ULONG_MAX / 2 + 6}) {
        EXPECT_EQ(GetLastErrorString(code), Prefix(code));
    }
}

TEST(System, LastErrorIsReadFirstAndKept)
{
    for (unsigned const code : {2u, 5u, 13u, 77'777u, 0u}) {
        SetPlatformError(code);
        std::string const text = GetLastErrorString();
        unsigned const left = GetPlatformError();
        EXPECT_EQ(left, code);
        EXPECT_EQ(text, GetLastErrorString(code));
        SetPlatformError(code);
        static_cast<void>(GetLastErrorString(99'999));
        EXPECT_EQ(GetPlatformError(), code);
    }
    ASSERT_EQ(std::fopen("/no such folder/no such file", "rb"), nullptr);
    std::string const text = GetLastErrorString();
    EXPECT_TRUE(text.starts_with(Prefix(2)) || text.starts_with(Prefix(3))) << text; // file or path not found
}

} // namespace
