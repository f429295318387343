#pragma once
// One process as the resource monitor watches it: its processor time since the last look, its private memory, whether
// it still runs.
//
//     MonitoredProcess const child(pid);             // throws unless pid is a running process
//     ...                                            // a check interval later
//     unsigned int const percent = child.GetCpuUsage();
//     unsigned long long const bytes = child.GetMemoryUsage();
//
// The object stands for the process that had the id when it was made, not for the id: after that process has ended its
// figures are 0 for ever, also when the system has given the id to another one. It holds one handle of the system (on
// Linux a pidfd, closed on exec) for another process and none for its own.
//
// An object is for one thread at a time. The static members may be called from any thread.

#include <cstdint>
#include <memory>

#include <qvxsys/TSystem.h>

#include "ProcessHandle.h"

namespace qvxsys::monitor {

class MonitoredProcess
{
public:
    /// The own process. Throws as the other constructor does.
    MonitoredProcess();
    /// The process with this id. Throws QuorvexException 0xC1062A71, "Process pid=" + pid + " is not running", when
    /// there is none, when it has ended (a zombie has), or when its times may not be read.
    explicit MonitoredProcess(unsigned int pid);
    /// Leaves the source good for destruction and assignment only.
    MonitoredProcess(MonitoredProcess&& other) noexcept;
    MonitoredProcess& operator=(MonitoredProcess&& other) noexcept;
    ~MonitoredProcess();

    [[nodiscard]] unsigned int GetProcessId() const noexcept;
    /// Percent of the whole machine's processor time that the process has taken since the previous call (or the
    /// construction), 0 to 100; see CpuPercent(). 0, and the next call measures from the same start, when the times
    /// cannot be read, as after the end of the process.
    [[nodiscard]] std::uint8_t GetCpuUsage() const noexcept;
    /// Private bytes: those of the process alone, in memory or swapped out. 0 when they cannot be read.
    [[nodiscard]] std::uint64_t GetMemoryUsage() const noexcept;
    [[nodiscard]] bool IsRunning() const noexcept;

    /// Whether a process with this id runs; false also when it may not be looked at. On Linux everybody may look.
    [[nodiscard]] static bool IsRunning(unsigned int pid) noexcept;
    /// False while at least one processor is held below its full frequency (TSystem::Throttling) or when one was slowed
    /// down for its heat since the last call, by whomever. True when the system tells nothing.
    [[nodiscard]] static bool IsCpuAtMaxFrequency() noexcept;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

/// Percent of `processors` that the time between two samples comes to: (user + kernel) x 100 / wall / processors, in
/// unsigned 64-bit integers, each division truncating; 0 when no time has passed. Only the low 8 bits count, and those
/// up to 100: 300 % gives 44.
[[nodiscard]] std::uint8_t CpuPercent(CpuSample const& before, CpuSample const& now, std::uint64_t processors) noexcept;

/// Whether no processor is held back now, nor was one slowed down for its heat since there were `eventsBefore`.
[[nodiscard]] bool AtFullFrequency(TSystem::ThrottlingInfo const& now, unsigned long long eventsBefore) noexcept;

} // namespace qvxsys::monitor
