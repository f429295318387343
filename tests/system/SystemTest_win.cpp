#include "Oracle.h"

#include <algorithm>

#include <gtest/gtest.h>

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
