#include "DumpProcess_linux.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <new>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "DumpFile_linux.h"
#include "DumpStreams_linux.h"

namespace qvxsys::dump {
namespace {

// The process whose dump is being written: a child that was forked meanwhile finds its parent's id here, and is not
// held up by it.
std::atomic<int> g_dumping{0};

bool TakeTurn(int process, std::uint64_t patience) noexcept
{
    std::uint64_t const begin = kernel::Nanoseconds();
    for (;;) {
        int before = g_dumping.load(std::memory_order_relaxed);
        if (before != process && g_dumping.compare_exchange_strong(before, process, std::memory_order_acquire)) {
            return true;
        }
        if (kernel::Nanoseconds() - begin > patience) {
            return false;
        }
        kernel::Sleep(1'000'000);
    }
}

/// What the caller shares with its helper.
struct HelperPage
{
    std::atomic<std::uint32_t> permitted;
    DumpResult result;
};

/// Ends a helper that gets stuck while it stops threads. A thread that calls exec waits for its siblings to be reaped,
/// which those that are traced are by the tracer only, and all the while holds a lock that PTRACE_SEIZE of the next
/// thread takes: neither would ever go on. The kernel has no way out but the tracer's end.
class Watchdog
{
public:
    explicit Watchdog(bool armed) noexcept
    {
        constexpr std::int64_t kSeconds = 5;
        sigevent event{};
        event.sigev_notify = SIGEV_SIGNAL;
        event.sigev_signo = SIGKILL;
        itimerspec const time{{0, 0}, {kSeconds, 0}};
        m_armed = armed &&
                  !kernel::Failed(
                      kernel::Call(SYS_timer_create, CLOCK_MONOTONIC, kernel::Word(&event), kernel::Word(&m_timer))) &&
                  !kernel::Failed(kernel::Call(SYS_timer_settime, m_timer, 0, kernel::Word(&time), 0));
    }
    ~Watchdog()
    {
        if (m_armed) {
            kernel::Call(SYS_timer_delete, m_timer);
        }
    }
    Watchdog(Watchdog const&) = delete;
    Watchdog& operator=(Watchdog const&) = delete;

private:
    int m_timer = 0; // as the kernel counts them, not a timer_t
    bool m_armed;
};

[[noreturn]] void RunHelper(DumpRequest const& request, int parent, HelperPage& page) noexcept
{
    constexpr int kSpareFiles = 16;
    kernel::Call(SYS_prctl, PR_SET_PDEATHSIG, SIGKILL);
    do {
        if (kernel::Call(SYS_getppid) != parent) {
            kernel::Exit(1);
        }
        kernel::Call(SYS_sched_yield);
    } while (page.permitted.load(std::memory_order_acquire) == 0);
    DumpResult result = DumpProcess(request);
    if (result.error == EMFILE) { // the table of files is a copy, so those that are in the way can go
        for (int file = STDERR_FILENO + 1; file <= STDERR_FILENO + kSpareFiles; ++file) {
            kernel::Close(file);
        }
        result = DumpProcess(request);
    }
    page.result = result;
    kernel::Exit(0);
}

} // namespace

DumpResult DumpProcess(DumpRequest const& request) noexcept
{
    DumpResult result{};
    DumpFile file;
    result.error = file.Open(request.path);
    if (result.error != 0) {
        return result;
    }
    Arena arena;
    TracedProcess process(arena, request.process);
    DumpContents contents(arena, process, request);
    {
        Watchdog const watchdog(request.helper);
        result.error = process.StopAll(request.patience);
    }
    result.error = result.error != 0 ? result.error : contents.Collect();
    bool const streams = contents.ranges.Size() != 0; // then memory is read while the file is written
    if (result.error == 0 && !streams) {
        result.error = process.Resume();
    }
    if (result.error == 0) {
        DumpStreams dump(arena, request, contents);
        dump.Make();
        result.unreadablePages = contents.unreadablePages;
        result.error = dump.Write(file, process, result.unreadablePages);
    }
    int const resumed = process.Resume();
    result.error = result.error != 0 ? result.error : resumed;
    result.error = result.error != 0 ? result.error : file.Commit();
    result.stoppedFor = process.StoppedFor();
    result.size = file.Size();
    result.threads = static_cast<std::uint32_t>(contents.threads.Size());
    return result;
}

DumpResult DumpByHelper(DumpRequest const& request, std::uint64_t patience) noexcept
{
    DumpResult result{};
    int const caller = kernel::CurrentProcess();
    bool const own = request.process == caller;
    void* const where = ::mmap(nullptr, sizeof(HelperPage), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (where == MAP_FAILED) {
        result.error = ENOMEM;
        return result;
    }
    if (own && !TakeTurn(caller, patience)) {
        ::munmap(where, sizeof(HelperPage));
        result.error = EBUSY;
        return result;
    }
    HelperPage& page = *new (where) HelperPage{};
    page.result.error = ECANCELED; // unless the helper says otherwise
    std::uint64_t const signals = kernel::BlockSignals();
    // A process that has changed its user may not be traced by that user's processes, and its helper is one.
    bool const guarded = own && kernel::Call(SYS_prctl, PR_GET_DUMPABLE) != 1;
    if (guarded) {
        kernel::Call(SYS_prctl, PR_SET_DUMPABLE, 1);
    }
    long const helper = kernel::Call(SYS_clone, 0);
    if (helper == 0) {
        RunHelper(request, caller, page);
    }
    if (kernel::Failed(helper)) {
        result.error = static_cast<int>(-helper);
    } else {
        if (own) { // where Yama lets parents trace their children only, the helper is made an exception
            kernel::Call(SYS_prctl, PR_SET_PTRACER, helper);
        }
        page.permitted.store(1, std::memory_order_release);
        int status = 0;
        while (kernel::Wait(static_cast<int>(helper), &status, __WALL) == -EINTR) {
        }
        if (own) {
            kernel::Call(SYS_prctl, PR_SET_PTRACER, 0);
        }
        result = page.result;
    }
    if (guarded) {
        kernel::Call(SYS_prctl, PR_SET_DUMPABLE, 0);
    }
    kernel::RestoreSignals(signals);
    if (own) {
        g_dumping.store(0, std::memory_order_release);
    }
    ::munmap(where, sizeof(HelperPage));
    return result;
}

} // namespace qvxsys::dump
