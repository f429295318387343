#include "SystemPlatform.h"

#include <cmath>
#include <memory>

#include <qvxsys/TStringCore.h>

#include "ClockArithmetic.h"
#include "ProcessorFrequency.h"

#include "WindowsApi.h"

namespace qvxsys::system::platform {
namespace {

std::uint64_t HundredNanoseconds(FILETIME const& time) noexcept
{
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

struct FreeLocal
{
    void operator()(wchar_t* text) const noexcept { ::LocalFree(text); }
};

} // namespace

std::uint64_t Counter() noexcept
{
    LARGE_INTEGER ticks;
    ::QueryPerformanceCounter(&ticks);
    return static_cast<std::uint64_t>(ticks.QuadPart);
}

std::uint64_t CounterFrequency() noexcept
{
    LARGE_INTEGER frequency;
    ::QueryPerformanceFrequency(&frequency);
    return static_cast<std::uint64_t>(frequency.QuadPart);
}

std::uint64_t ThreadCycleMilliseconds() noexcept
{
    qvxsys::platform::KeepLastError const keep;
    ULONG64 cycles = 0;
    if (::QueryThreadCycleTime(::GetCurrentThread(), &cycles) == 0) {
        return 0;
    }
    return TicksTo(1000, cycles, ProcessorFrequency());
}

ThreadTimes CurrentThreadTimes() noexcept
{
    qvxsys::platform::KeepLastError const keep;
    FILETIME created, ended, kernel, user;
    if (::GetThreadTimes(::GetCurrentThread(), &created, &ended, &kernel, &user) == 0) {
        return {};
    }
    return {HundredNanoseconds(user), HundredNanoseconds(kernel)};
}

std::uint32_t ProcessId() noexcept
{
    return ::GetCurrentProcessId();
}

void Sleep(std::uint32_t ms) noexcept
{
    if (ms == 0 || ms == INFINITE) {
        ::Sleep(ms);
        return;
    }
    // The system's sleep ends with a timer tick, which can be early by most of one.
    std::uint64_t const frequency = CounterFrequency();
    std::uint64_t const end = Counter() + (std::uint64_t{ms} * frequency + 999) / 1000;
    for (std::uint64_t now = Counter(); now < end; now = Counter()) {
        ::Sleep(static_cast<DWORD>(((end - now) * 1000 + frequency - 1) / frequency));
    }
}

unsigned long LastError() noexcept
{
    return ::GetLastError();
}

void SetLastError(unsigned long code) noexcept
{
    ::SetLastError(code);
}

std::string ErrorMessage(unsigned long code)
{
    wchar_t* text = nullptr;
    DWORD const length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
        MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::unique_ptr<wchar_t, FreeLocal> const owner(text);
    return length != 0 ? TStringCore(text).toStdString() : std::string();
}

double PowerOfTen(int exponent) noexcept
{
    // MinGW's pow for double is up to 32 units of the last place off, and 10^-2 is not 0.01 there.
    return static_cast<double>(std::pow(10.0L, exponent));
}

} // namespace qvxsys::system::platform
