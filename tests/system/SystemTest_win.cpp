#include "Oracle.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>
#include <qvxsys/TSystem.h>

#include "ProcessorFrequency.h"

#include "WindowsApi.h"

double ThreadCpuMilliseconds()
{
    FILETIME created, ended, kernel, user;
    GetThreadTimes(GetCurrentThread(), &created, &ended, &kernel, &user);
    auto const value = [](FILETIME const& time) {
        return static_cast<double>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime) / 1e4;
    };
    return value(kernel) + value(user);
}

bool CountsCycles()
{
    ULONG64 cycles = 0;
    return QueryThreadCycleTime(GetCurrentThread(), &cycles) != 0; // not under Wine
}

double ThreadTimesTolerance()
{
    return 32; // steps of up to 16 ms at both ends
}

std::uint32_t OwnProcessId()
{
    return GetProcessId(GetCurrentProcess());
}

std::uint32_t OwnThreadId()
{
    return GetThreadId(GetCurrentThread());
}

void SetPlatformError(unsigned code)
{
    SetLastError(code);
}

unsigned GetPlatformError()
{
    return GetLastError();
}

namespace {

TEST(Figures, AsWindowsHasThem)
{
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    ASSERT_NE(GlobalMemoryStatusEx(&status), 0);
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    TSystem::MemoryInfo const memory = TSystem::Memory();
    EXPECT_EQ(memory.totalPhysical, status.ullTotalPhys);
    EXPECT_EQ(memory.totalCombined, status.ullTotalPhys);
    EXPECT_NEAR(memory.load, status.dwMemoryLoad, 5);
    EXPECT_EQ(memory.pageSize, info.dwPageSize);
    EXPECT_EQ(TSystem::Processors().host, info.dwNumberOfProcessors);
    UINT const page = GetACP();
    std::string const expected = page >= 1250 && page <= 1258 ? "windows-" + std::to_string(page) : "UTF-8";
    EXPECT_EQ(TSystem::Local8BitEncoding(), expected) << page;
}

} // namespace
