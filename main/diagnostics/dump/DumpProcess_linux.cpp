#include "DumpProcess_linux.h"

#include <cerrno>
#include <new>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>

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

[[noreturn]] void RunHelper(DumpRequest const& request, HelperPage& page) noexcept
{
    while (page.permitted.load(std::memory_order_acquire) == 0) {
        if (kernel::Call(SYS_getppid) != request.process) {
            kernel::Exit(1);
        }
        kernel::Call(SYS_sched_yield);
    }
    page.result = DumpProcess(request);
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
    result.error = process.StopAll(request.patience);
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

HelperPage* NewHelperPage() noexcept
{
    void* const where = ::mmap(nullptr, sizeof(HelperPage), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return where == MAP_FAILED ? nullptr : new (where) HelperPage{};
}

void DeleteHelperPage(HelperPage* page) noexcept
{
    ::munmap(page, sizeof(HelperPage));
}

DumpResult DumpOwnProcess(DumpRequest const& request, HelperPage& page, std::uint64_t patience) noexcept
{
    DumpResult result{};
    if (!TakeTurn(request.process, patience)) {
        result.error = EBUSY;
        return result;
    }
    page.permitted.store(0, std::memory_order_relaxed);
    page.result = {};
    page.result.error = ECANCELED; // unless the helper says otherwise: somebody ended it
    std::uint64_t const signals = kernel::BlockSignals();
    // A process that has changed its user may not be traced by that user's processes, and its helper is one.
    bool const guarded = kernel::Call(SYS_prctl, PR_GET_DUMPABLE) != 1;
    if (guarded) {
        kernel::Call(SYS_prctl, PR_SET_DUMPABLE, 1);
    }
    long const helper = kernel::Call(SYS_clone, 0);
    if (helper == 0) {
        RunHelper(request, page);
    }
    if (kernel::Failed(helper)) {
        result.error = static_cast<int>(-helper);
    } else {
        // Where Yama lets parents trace their children only, the helper is made an exception. It fails elsewhere.
        kernel::Call(SYS_prctl, PR_SET_PTRACER, helper);
        page.permitted.store(1, std::memory_order_release);
        int status = 0;
        while (kernel::Wait(static_cast<int>(helper), &status, __WALL) == -EINTR) {
        }
        kernel::Call(SYS_prctl, PR_SET_PTRACER, 0);
        result = page.result;
    }
    if (guarded) {
        kernel::Call(SYS_prctl, PR_SET_DUMPABLE, 0);
    }
    kernel::RestoreSignals(signals);
    g_dumping.store(0, std::memory_order_release);
    return result;
}

} // namespace qvxsys::dump
