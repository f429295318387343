#pragma once
// Writing the dump of a process from its beginning to its end.

#include <cstdint>

#include "DumpContents_linux.h"

namespace qvxsys::dump {

/// Dumps a process that is not the caller's. To be called on a thread with all signals blocked, that ends soon after
/// (see TracedProcess). Allocates from the kernel only, takes no locks, may change errno.
DumpResult DumpProcess(DumpRequest const& request) noexcept;

/// Dumps a process, the calling one, too, by a helper: a process cannot trace itself, and who traces another has
/// SIGCHLD and wait() tell of its stops. The helper is forked by the bare system call: no handlers of pthread_atfork
/// run, and nothing in it depends on what state the heap and the locks were in. It has no exit signal and is waited for
/// by its id alone, so the program's own children and its SIGCHLD are not disturbed. It ends with the calling thread.
/// May be called from a signal handler; may change errno. `patience` is how long to wait for another dump of the own
/// process to end. EBUSY: it did not; ECANCELED: the helper was ended, by somebody or because it got stuck.
DumpResult DumpByHelper(DumpRequest const& request, std::uint64_t patience) noexcept;

} // namespace qvxsys::dump
