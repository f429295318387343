#pragma once
// Stopping the threads of a process, looking at them, and letting them go on.
//
// The process must not be the caller's own. All calls must come from one thread, since the kernel binds the traced to
// it, and that thread must end soon after: however it does, the kernel then lets go of all, also of those that would
// not stop in time and therefore could not be let go. Errors are errno values, 0 is success.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <sys/user.h>

#include "Arena_linux.h"
#include "ElfImage.h"

namespace qvxsys::dump {

struct TracedThread
{
    int id;
    int signal;   ///< that was on its way when the thread was stopped, given back to it
    bool stopped; ///< and its registers are known; else it did not stop in time (a thread in an uninterruptible call)
    bool gone;
    user_regs_struct registers;
    user_fpregs_struct floats;
};

class TracedProcess final : public MemoryReader
{
public:
    TracedProcess(Arena& arena, int process) noexcept : m_threads(arena), m_process(process) {}
    TracedProcess(TracedProcess const&) = delete;
    TracedProcess& operator=(TracedProcess const&) = delete;
    ~TracedProcess();

    /// Stops all threads, those too that appear meanwhile. With `patience` (in nanoseconds) it waits that long for
    /// another tracer to leave. ESRCH: no such process, or it has ended; EPERM: the kernel refuses, or it is traced;
    /// ENOTSUP: a 32-bit program; ETIMEDOUT: no thread would stop.
    int StopAll(std::uint64_t patience) noexcept;
    /// Whether it was killed meanwhile, the one thing that stopped threads do not stand still for. Only after StopAll()
    /// has succeeded. What is read from then on may be nothing, which is to be told from memory that cannot be read.
    [[nodiscard]] bool HasEnded() const noexcept;
    /// Lets all go on. ESRCH when none was left to do so: the process ended meanwhile, and what was read is not to be
    /// trusted.
    int Resume() noexcept;

    /// The threads in the kernel's order, without those that are gone.
    [[nodiscard]] ArenaArray<TracedThread> const& Threads() const noexcept { return m_threads; }
    /// The id under which /proc has the process's memory: that of a thread which has stopped, and lives as long as the
    /// process, since that of a process whose first thread has ended shows none. Only after StopAll() has succeeded.
    [[nodiscard]] unsigned int LivingId() const noexcept { return static_cast<unsigned int>(m_living); }
    /// How long the threads have been stopped, from the first to the last, until they went on or until now.
    [[nodiscard]] std::uint64_t StoppedFor() const noexcept;

    bool Read(std::uint64_t address, void* to, std::size_t size) noexcept override;
    /// Reads what can be read; unreadable pages become zeros. How many pages those are.
    std::size_t ReadPatched(std::uint64_t address, std::byte* to, std::size_t size) noexcept;

private:
    TracedThread* Find(int id) noexcept;
    int SeizeNew(int folder, std::size_t* added) noexcept;
    int Seize(int id) noexcept;
    bool HasStopped(TracedThread& thread) noexcept;
    void AwaitStops(std::size_t first) noexcept;
    bool ReadRegisters(TracedThread& thread) noexcept;
    int OpenMemory() noexcept;
    [[nodiscard]] char StateOf(int thread) const noexcept;

    ArenaArray<TracedThread> m_threads;
    std::size_t m_cursor = 0; // where Find() begins: the kernel lists threads in the same order each time
    int m_process;
    int m_living = 0;
    int m_memory = -1;
    bool m_foreign = false;
    std::uint64_t m_stopped = 0;
    std::uint64_t m_resumed = 0;
};

} // namespace qvxsys::dump
