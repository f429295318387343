#pragma once
// How a task is started (AsyncTask::Launch).

#include <cstdint>

namespace AsyncTask {

/// Where and when a task runs. Values 4 and 5 are queued on the thread pool without limit; the others never wait in its
/// queue.
enum class Launch : std::uint32_t {
    Deferred = 0,        ///< by the first who waits for it, on that thread; never, if nobody does
    OnCaller = 1,        ///< at once, on the calling thread, before the call returns
    PoolOrDedicated = 2, ///< on the pool if a thread is idle, else on a thread of its own
    Dedicated = 3,       ///< on a thread of its own
    PoolQueued = 4,      ///< on the pool when a thread is free; who waits for it before it has started runs it himself
    PoolOnly = 5,        ///< on the pool when a thread is free, and on pool threads only: no other waiter runs it
};

} // namespace AsyncTask
