#pragma once
// What all threads have in common that the task layer starts.

#include <functional>

namespace qvxsys::task {

/// Which kind of thread it is, and the flag that the execution hook is given.
enum class WorkerKind : bool { Dedicated = false, Pool = true };

/// The life of a worker thread: names it, calls the start function, runs `body`, calls the exit function and then the
/// clean-up function that the thread's task-local record has, if any. Either function may be empty.
void RunWorker(WorkerKind kind, char const* name, std::function<void()> const& onStart,
               std::function<void()> const& onExit, std::function<void()> const& body);

/// Calls an item of work, as the execution hook wants it called. The hook may replace it; nothing is called when what
/// it returns is empty.
void RunItem(WorkerKind kind, std::function<void()>& item);

/// Keeps an object that other threads may still use reachable until the process has ended.
void KeepForEver(void const* object);

} // namespace qvxsys::task
