#include "ProcessHandle.h"

#include <cerrno>
#include <charconv>
#include <climits>
#include <csignal>
#include <ctime>
#include <iterator>

#include <dirent.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include "ClockArithmetic.h"
#include "Descriptor_posix.h"
#include "KeepErrno.h"
#include "KernelFile.h"
#include "ProcessText.h"
#include "SystemPlatform.h"

namespace qvxsys::monitor {
namespace {

using platform::KeepErrno;
using system::KernelFile;

constexpr std::uint64_t kUnitsPerSecond = 10'000'000;

/// "/proc/PID/NAME", or for one of its threads "/proc/PID/task/TID/NAME".
class ProcessPath
{
public:
    explicit ProcessPath(std::uint32_t pid, std::string_view name, std::uint32_t thread = 0) noexcept
    {
        Append("/proc/");
        Append(pid);
        if (thread != 0) {
            Append("/task/");
            Append(thread);
        }
        Append("/");
        Append(name);
        *m_end = 0;
    }
    ProcessPath(ProcessPath const&) = delete;
    ProcessPath& operator=(ProcessPath const&) = delete;
    operator char const*() const noexcept { return m_text; }

private:
    void Append(std::string_view text) noexcept
    {
        m_end += text.copy(m_end, static_cast<std::size_t>(std::end(m_text) - m_end - 1));
    }
    void Append(std::uint32_t number) noexcept { m_end = std::to_chars(m_end, std::end(m_text) - 1, number).ptr; }

    char m_text[48];
    char* m_end = m_text;
};

std::optional<ProcessStat> ReadStat(std::uint32_t pid) noexcept
{
    char buffer[1024];
    return ParseStat(system::ReadBeginning(ProcessPath(pid, "stat"), buffer));
}

int OpenPidfd(std::uint32_t pid) noexcept
{
    return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
}

// The errors that speak of the process. EINVAL is what a process gives that is just going, or a thread's id.
bool IsGone(int error) noexcept
{
    return error == ESRCH || error == EINVAL;
}

bool HasEnded(int pidfd) noexcept
{
    pollfd wait{pidfd, POLLIN, 0};
    return ::poll(&wait, 1, 0) > 0;
}

std::optional<std::uint64_t> ClockTime(clockid_t clock) noexcept
{
    timespec time{};
    if (::clock_gettime(clock, &time) != 0) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(time.tv_sec) * kUnitsPerSecond + static_cast<std::uint64_t>(time.tv_nsec) / 100;
}

bool SwapIsInUse() noexcept
{
    struct sysinfo info
    {};
    return ::sysinfo(&info) != 0 || info.freeswap != info.totalswap;
}

std::uint64_t BytesInMemory(ProcessPath const& statm) noexcept
{
    char buffer[256];
    std::optional<std::uint64_t> const pages = ParsePrivatePages(system::ReadBeginning(statm, buffer));
    return system::SaturatedProduct(pages.value_or(0), static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)));
}

std::uint64_t BytesInMemoryAndSwap(ProcessPath const& status) noexcept
{
    KernelFile file(status);
    system::LineReader lines(file.Reader());
    PrivateMemory memory;
    while (std::optional<std::string_view> const line = lines.Next()) {
        memory.Take(*line);
    }
    return memory.bytes;
}

// RssAnon and VmSwap. The kernel takes half the time for statm, whose "resident" without its "shared" is the same as
// RssAnon, as for status; that one is needed only when something on the machine is swapped out.
std::uint64_t BytesOf(std::uint32_t pid, std::uint32_t thread = 0) noexcept
{
    return SwapIsInUse() ? BytesInMemoryAndSwap(ProcessPath(pid, "status", thread))
                         : BytesInMemory(ProcessPath(pid, "statm", thread));
}

/// A thread of the process besides its first one; 0 when there is none. Those that have ended are not in the list.
std::uint32_t OtherThread(std::uint32_t pid) noexcept
{
    KernelFile folder(ProcessPath(pid, "task"));
    alignas(dirent64) char buffer[512];
    std::size_t const size = folder.ReadEntries(buffer);
    for (std::size_t at = 0; at < size;) {
        auto const* const entry = reinterpret_cast<dirent64 const*>(buffer + at);
        std::uint64_t const thread = system::ParseNumber(entry->d_name).value_or(0);
        if (thread != 0 && thread != pid && thread <= INT_MAX) {
            return static_cast<std::uint32_t>(thread);
        }
        at += entry->d_reclen;
    }
    return 0;
}

} // namespace

ProcessHandle::ProcessHandle(std::uint32_t pid) noexcept : m_pid(pid)
{
    KeepErrno const keep;
    if (pid == system::platform::ProcessId()) {
        m_clock = CLOCK_PROCESS_CPUTIME_ID;
        m_good = true;
        return;
    }
    m_handle = pid != 0 && pid <= INT_MAX ? OpenPidfd(pid) : kNone;
    if (m_handle == kNone) {
        std::optional<ProcessStat> const stat =
            pid == 0 || pid > INT_MAX || IsGone(errno) ? std::nullopt : ReadStat(pid);
        if (!stat) {
            return;
        }
        m_started = stat->started;
    }
    if (::clock_getcpuclockid(static_cast<pid_t>(pid), &m_clock) != 0) {
        m_clock = 0;
    }
    m_good = !HasEnded();
}

ProcessHandle::~ProcessHandle()
{
    if (m_handle != kNone) {
        ::close(static_cast<int>(m_handle));
    }
}

bool ProcessHandle::HasEnded() const noexcept
{
    KeepErrno const keep;
    if (m_clock == CLOCK_PROCESS_CPUTIME_ID) {
        return false;
    }
    if (m_handle != kNone) {
        return monitor::HasEnded(static_cast<int>(m_handle));
    }
    std::optional<ProcessStat> const stat = ReadStat(m_pid);
    return !stat || stat->ended || stat->started != m_started;
}

// What was read under the id is the process's own if the process has not ended by then: its id is taken until it has
// been waited for. That is why the question comes last, here and below.
std::optional<CpuSample> ProcessHandle::Sample() const noexcept
{
    KeepErrno const keep;
    std::optional<std::uint64_t> used;
    if (m_clock != 0) {
        used = ClockTime(m_clock);
    } else if (std::optional<ProcessStat> const stat = ReadStat(m_pid)) {
        used = system::TicksTo(kUnitsPerSecond, stat->ticks, static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK)));
    }
    std::uint64_t const wall =
        system::TicksTo(kUnitsPerSecond, system::platform::Counter(), system::platform::CounterFrequency());
    if (!used || HasEnded()) {
        return std::nullopt;
    }
    return CpuSample{0, *used, wall};
}

// A thread that has ended is told to have no memory, also when it is the first one, whose figures are otherwise those
// of the process.
std::uint64_t ProcessHandle::PrivateBytes() const noexcept
{
    KeepErrno const keep;
    std::uint64_t bytes = BytesOf(m_pid);
    if (std::uint32_t const thread = bytes == 0 ? OtherThread(m_pid) : 0) {
        bytes = BytesOf(m_pid, thread);
    }
    return HasEnded() ? 0 : bytes;
}

bool ProcessHandle::Runs(std::uint32_t pid) noexcept
{
    KeepErrno const keep;
    if (pid == 0 || pid > INT_MAX) {
        return false;
    }
    if (platform::Descriptor const pidfd(OpenPidfd(pid)); pidfd.IsOpen()) {
        return !monitor::HasEnded(pidfd.Get());
    }
    if (IsGone(errno)) {
        return false;
    }
    if (std::optional<ProcessStat> const stat = ReadStat(pid)) {
        return !stat->ended;
    }
    // Without a free descriptor there is this.
    return ::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM;
}

} // namespace qvxsys::monitor
