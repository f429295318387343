#pragma once
// A terminate handler for one thread, whatever the platform's handlers are for.

namespace qvxsys::monitor {

/// From now on std::terminate on the calling thread calls `handler`; null changes nothing.
///
/// Handlers are the process's here: one is installed that calls `handler` on this thread, and what was installed before
/// on all others. It stays, since somebody may have saved it. A handler that the host installs later is in charge of
/// all threads, as it would expect.
void SetThreadTerminateHandler(void (*handler)()) noexcept;

} // namespace qvxsys::monitor
