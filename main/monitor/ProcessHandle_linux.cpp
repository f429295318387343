#include "ProcessHandle.h"

#include <cerrno>
#include <charconv>
#include <climits>
#include <csignal>
#include <ctime>
#include <iterator>

#include <poll.h>
#include <sys/syscall.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include "ClockArithmetic.h"
#include "KernelFile.h"
#include "ProcessText.h"
#include "SystemPlatform.h"

namespace qvxsys::monitor {
namespace {

using system::KeepErrno;
using system::KernelFile;

constexpr std::uint64_t kUnitsPerSecond = 10'000'000;

/// "/proc/PID/NAME".
class ProcessPath
{
public:
    ProcessPath(std::uint32_t pid, std::string_view name) noexcept
    {
        constexpr std::string_view kFolder = "/proc/";
        char* at = m_text + kFolder.copy(m_text, kFolder.size());
        at = std::to_chars(at, std::end(m_text), pid).ptr;
        *at++ = '/';
        at[name.copy(at, static_cast<std::size_t>(std::end(m_text) - at - 1))] = 0;
    }
    operator char const*() const noexcept { return m_text; }

private:
    char m_text[32];
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

std::uint64_t BytesInMemory(std::uint32_t pid) noexcept
{
    char buffer[256];
    std::optional<std::uint64_t> const pages =
        ParsePrivatePages(system::ReadBeginning(ProcessPath(pid, "statm"), buffer));
    return system::SaturatedProduct(pages.value_or(0), static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)));
}

std::uint64_t BytesInMemoryAndSwap(std::uint32_t pid) noexcept
{
    KernelFile file(ProcessPath(pid, "status"));
    system::LineReader lines(file.Reader());
    PrivateMemory memory;
    while (std::optional<std::string_view> const line = lines.Next()) {
        memory.Take(*line);
    }
    return memory.bytes;
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

// RssAnon and VmSwap. The kernel takes half the time for statm, whose "resident" without its "shared" is the same as
// RssAnon, as for status; that one is needed only when something on the machine is swapped out.
std::uint64_t ProcessHandle::PrivateBytes() const noexcept
{
    KeepErrno const keep;
    std::uint64_t const bytes = SwapIsInUse() ? BytesInMemoryAndSwap(m_pid) : BytesInMemory(m_pid);
    return HasEnded() ? 0 : bytes;
}

bool ProcessHandle::Runs(std::uint32_t pid) noexcept
{
    KeepErrno const keep;
    if (pid == 0 || pid > INT_MAX) {
        return false;
    }
    if (int const pidfd = OpenPidfd(pid); pidfd >= 0) {
        bool const runs = !monitor::HasEnded(pidfd);
        ::close(pidfd);
        return runs;
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
