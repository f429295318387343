#pragma once
// What each thread keeps for its tasks: the record behind AsyncTask::TLS, and what the library itself adds to it.

#include <cstdint>

#include <qvxsys/AsyncTaskTls.h>

/// The record behind the handle, in the order of its documentation.
struct AsyncTask::TLS::Record
{
    std::uint64_t depth = 0;
    void (*cleanup)() = nullptr;
    TCancelEvent* cancel = nullptr; ///< owns a reference
    IWaitHandler* waitHandler = nullptr;
    bool releasesAtEnd = false; ///< what `cancel` is when the thread ends
};

namespace qvxsys::task {

/// Whether this is a thread of a pool: what must run on the pool (Launch::PoolOnly) may run on it. Pool threads set it
/// when they begin.
void MarkPoolThread() noexcept;
[[nodiscard]] bool IsMarkedPoolThread() noexcept;

} // namespace qvxsys::task
