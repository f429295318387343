#pragma once
// Writing the dump of a process from its beginning to its end.

#include <atomic>
#include <cstdint>

#include "DumpContents_linux.h"

namespace qvxsys::dump {

/// Dumps a process that is not the caller's. To be called on a thread with all signals blocked, that ends soon after
/// (see TracedProcess). Allocates from the kernel only, takes no locks, may change errno.
DumpResult DumpProcess(DumpRequest const& request) noexcept;

/// What a process shares with the helper that dumps it.
struct HelperPage
{
    std::atomic<std::uint32_t> permitted;
    DumpResult result;
};

/// Memory for one; null if the kernel has none.
HelperPage* NewHelperPage() noexcept;
void DeleteHelperPage(HelperPage* page) noexcept;

/// Dumps the calling process. A process cannot trace itself, so it forks a helper, by the bare system call: no handlers
/// of pthread_atfork run, and nothing in the helper depends on what state the heap and the locks were in. The helper
/// has no exit signal and is waited for by its id alone, so the program's own children and its SIGCHLD are not
/// disturbed. May be called from a signal handler. `patience` is how long to wait for another dump of this process to
/// end.
DumpResult DumpOwnProcess(DumpRequest const& request, HelperPage& page, std::uint64_t patience) noexcept;

} // namespace qvxsys::dump
