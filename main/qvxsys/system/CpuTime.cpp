#include <qvxsys/CpuTime.h>

#include <atomic>

#include "SystemPlatform.h"

namespace platform = qvxsys::system::platform;

namespace quorvex::cputime {
namespace {

std::atomic<ThreadTimeOption> g_option = ThreadTimeOption::Cycles;
std::atomic<bool> g_enabled = true;

void Sample(ThreadTimeOption option, std::uint64_t (&sample)[2]) noexcept
{
    if (option == ThreadTimeOption::Cycles) {
        sample[0] = platform::ThreadCycleMilliseconds();
        sample[1] = 0;
    } else {
        auto const times = platform::CurrentThreadTimes();
        sample[0] = times.user;
        sample[1] = times.kernel;
    }
}

} // namespace

void SetThreadTimeOption(ThreadTimeOption option) noexcept
{
    g_option.store(option, std::memory_order_relaxed);
}

ThreadTimeOption GetThreadTimeOption() noexcept
{
    return g_option.load(std::memory_order_relaxed);
}

bool SetCpuTrackingEnabled(bool enabled) noexcept
{
    return g_enabled.exchange(enabled, std::memory_order_relaxed);
}

bool GetCpuTrackingEnabled() noexcept
{
    return g_enabled.load(std::memory_order_relaxed);
}

ThreadTimeScope::ThreadTimeScope(ThreadTimeValue& accumulator) noexcept : m_accumulator(accumulator)
{
    Sample(GetThreadTimeOption(), m_start);
}

ThreadTimeScope::~ThreadTimeScope()
{
    ThreadTimeOption const option = GetThreadTimeOption();
    std::uint64_t end[2];
    Sample(option, end);
    std::uint64_t const first = end[0] - m_start[0];
    std::uint64_t const second = end[1] - m_start[1];
    if (option == ThreadTimeOption::Cycles) {
        m_accumulator += ThreadTimeValue(0, static_cast<std::uint32_t>(first));
    } else {
        constexpr std::uint64_t kUnitsPerMillisecond = 10'000;
        m_accumulator += ThreadTimeValue(static_cast<std::uint32_t>(second / kUnitsPerMillisecond),
                                         static_cast<std::uint32_t>(first / kUnitsPerMillisecond));
    }
}

} // namespace quorvex::cputime
