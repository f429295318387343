#pragma once
// Platform primitives under MonitoredProcess. None of them changes errno or the last error, allocates or throws.

#include <cstdint>
#include <optional>

namespace qvxsys::monitor {

/// What a process had used at one moment, and that moment; all in units of 100 ns.
struct CpuSample
{
    std::uint64_t kernel = 0;
    std::uint64_t user = 0;
    std::uint64_t wall = 0;
};

/// One process, whatever becomes of its id. (ProcessHandle_linux.cpp, ProcessHandle_win.cpp)
///
/// Linux: a pidfd says whether the process has ended, and as long as it has not its id cannot have gone to another
/// one. Where a pidfd is refused (no free descriptor, a system call filter) the time at which the process was started
/// takes its place: what is read under the id counts if that has not changed. (It is told in ticks of 10 ms; an id that
/// comes round within one would not be noticed.)
class ProcessHandle
{
public:
    /// The own process, by its id, needs no handle. Not good when there is no such process or when it may not be looked
    /// at; on Linux also when it has ended.
    explicit ProcessHandle(std::uint32_t pid) noexcept;
    ProcessHandle(ProcessHandle const&) = delete;
    ProcessHandle& operator=(ProcessHandle const&) = delete;
    ~ProcessHandle();

    [[nodiscard]] bool IsGood() const noexcept { return m_good; }
    /// Also for a zombie.
    [[nodiscard]] bool HasEnded() const noexcept;
    /// Nothing when the times cannot be read, after the end for one. Linux books all as user time, and its wall clock
    /// is not set.
    [[nodiscard]] std::optional<CpuSample> Sample() const noexcept;
    /// 0 when it cannot be read.
    [[nodiscard]] std::uint64_t PrivateBytes() const noexcept;

    /// Whether a process with this id runs at this moment, without keeping anything of it.
    [[nodiscard]] static bool Runs(std::uint32_t pid) noexcept;

private:
    std::uint32_t m_pid;
    /// A pidfd or a process handle; kNone when there is none to close.
    std::intptr_t m_handle = kNone;
    /// Linux without a pidfd: when the process was started, in ticks since boot.
    std::uint64_t m_started = 0;
    /// The clock of the process's processor time; 0 when it is to be read from /proc.
    int m_clock = 0;
    bool m_good = false;

    static constexpr std::intptr_t kNone = -1;
};

} // namespace qvxsys::monitor
