#include <qvxsys/TSystem.h>

#include <cstdint>
#include <utility>

#include <qvxsys/TStringCore.h>

#include "ClockArithmetic.h"
#include "SystemPlatform.h"
#include "tmemory_platform.h"

namespace platform = qvxsys::system::platform;

namespace {

// The library's only global with a constructor: up-time counts from loading.
std::uint64_t const g_upTimeBaseline = platform::Counter();

std::uint64_t TicksSinceLoad() noexcept
{
    return platform::Counter() - g_upTimeBaseline;
}

// Never destroyed: threads may still ask while the process ends.
std::function<bool()>& DesktopMainThreadFunc()
{
    static auto& func = *new std::function<bool()>();
    return func;
}

class KeepLastError
{
public:
    explicit KeepLastError(unsigned long code) noexcept : m_code(code) {}
    ~KeepLastError() { platform::SetLastError(m_code); }
    KeepLastError(KeepLastError const&) = delete;
    KeepLastError& operator=(KeepLastError const&) = delete;

private:
    unsigned long m_code;
};

std::string ErrorString(unsigned long code)
{
    std::string text = "last error : 0x";
    for (int shift = 60; shift >= 0; shift -= 4) {
        text += "0123456789abcdef"[std::uint64_t{code} >> shift & 15];
    }
    return (text += ' ') += platform::ErrorMessage(code);
}

} // namespace

unsigned int TSystem::AppUpTime() noexcept
{
    static double const millisecondsPerTick = 1000.0 / static_cast<double>(platform::CounterFrequency());
    return qvxsys::system::WrappedMilliseconds(TicksSinceLoad(), millisecondsPerTick);
}

std::chrono::nanoseconds TSystem::UpTime() noexcept
{
    static std::uint64_t const frequency = platform::CounterFrequency();
    return std::chrono::nanoseconds(qvxsys::system::TicksTo(1'000'000'000, TicksSinceLoad(), frequency));
}

unsigned int TSystem::ProcessID() noexcept
{
    return platform::ProcessId();
}

unsigned long long TSystem::ThreadID() noexcept
{
    return quorvex::memory::platform::ThreadId();
}

void TSystem::Sleep(unsigned int ms) noexcept
{
    platform::Sleep(ms);
}

std::function<bool()> TSystem::SetDesktopMainThreadFunc(std::function<bool()> func)
{
    return std::exchange(DesktopMainThreadFunc(), std::move(func));
}

bool TSystem::IsDesktopMainThread()
{
    auto const& func = DesktopMainThreadFunc();
    return func && func();
}

TStringCore TSystem::unmangleClassName(char const* name)
{
    return TStringCore::fromUtf8(name);
}

std::string GetLastErrorString(unsigned long code)
{
    KeepLastError const keep(platform::LastError());
    return ErrorString(code);
}

std::string GetLastErrorString()
{
    unsigned long const code = platform::LastError();
    KeepLastError const keep(code);
    return ErrorString(code);
}
