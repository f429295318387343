#include "MonitoredProcess.h"

#include <algorithm>
#include <atomic>

#include <qvxsys/LogicException.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TSystem.h>

#include "ThrowSite.h"

namespace qvxsys::monitor {
namespace {

constexpr char const* kFile = "qvxsys/main/monitor/MonitoredProcess_win";
constexpr int kCountLine = 93;

unsigned int GetNumberOfCpus() noexcept
{
    static unsigned int const count = TSystem::Processors().usable;
    return count;
}

} // namespace

struct MonitoredProcess::Impl
{
    explicit Impl(unsigned int id) : pid(id), handle(id)
    {
        if (GetNumberOfCpus() == 0) {
            ThrowLogicException(kFile, kCountLine, "GetNumberOfCpus() > 0");
        }
        std::optional<CpuSample> const first = handle.IsGood() ? handle.Sample() : std::nullopt;
        if (!first) {
            throw QuorvexException(u"Process pid=" + TStringCore::number(pid) + u" is not running",
                                   error::ThrowSite(0xC1062A71));
        }
        last = *first;
    }

    unsigned int const pid;
    ProcessHandle const handle;
    CpuSample last;
};

MonitoredProcess::MonitoredProcess() : MonitoredProcess(TSystem::ProcessID())
{}

MonitoredProcess::MonitoredProcess(unsigned int pid) : m_impl(std::make_unique<Impl>(pid))
{}

MonitoredProcess::MonitoredProcess(MonitoredProcess&& other) noexcept = default;
MonitoredProcess& MonitoredProcess::operator=(MonitoredProcess&& other) noexcept = default;
MonitoredProcess::~MonitoredProcess() = default;

unsigned int MonitoredProcess::GetProcessId() const noexcept
{
    return m_impl->pid;
}

std::uint8_t MonitoredProcess::GetCpuUsage() const noexcept
{
    std::optional<CpuSample> const now = m_impl->handle.Sample();
    if (!now) {
        return 0;
    }
    std::uint8_t const usage = CpuPercent(m_impl->last, *now, GetNumberOfCpus());
    m_impl->last = *now;
    return usage;
}

std::uint64_t MonitoredProcess::GetMemoryUsage() const noexcept
{
    return m_impl->handle.PrivateBytes();
}

bool MonitoredProcess::IsRunning() const noexcept
{
    return !m_impl->handle.HasEnded();
}

bool MonitoredProcess::IsRunning(unsigned int pid) noexcept
{
    return ProcessHandle::Runs(pid);
}

bool MonitoredProcess::IsCpuAtMaxFrequency() noexcept
{
    static std::atomic<unsigned long long> s_lastEvents = TSystem::Throttling().events;
    TSystem::ThrottlingInfo const throttling = TSystem::Throttling();
    return AtFullFrequency(throttling, s_lastEvents.exchange(throttling.events, std::memory_order_relaxed));
}

bool AtFullFrequency(TSystem::ThrottlingInfo const& now, unsigned long long eventsBefore) noexcept
{
    // Fewer events than before: a processor has been taken out.
    return now.capped == 0 && now.events <= eventsBefore;
}

std::uint8_t CpuPercent(CpuSample const& before, CpuSample const& now, std::uint64_t processors) noexcept
{
    std::uint64_t const kernel = now.kernel - before.kernel;
    std::uint64_t const user = now.user - before.user;
    std::uint64_t const wall = now.wall - before.wall;
    if (wall == 0 || processors == 0) {
        return 0;
    }
    return std::min(static_cast<std::uint8_t>((user + kernel) * 100 / wall / processors), std::uint8_t{100});
}

} // namespace qvxsys::monitor
