#pragma once
// Which task runs on which thread and what that thread waits for, kept while detection is on, so that a thread that is
// about to block can see whether what it waits for waits for it.

#include <qvxsys/TaskState.h>

namespace qvxsys::task {

/// What a thread waits for, and the topmost of the tasks on its stack.
struct WaitingThread;

/// A task runs on this thread during the scope.
class RunningTask
{
public:
    explicit RunningTask(AsyncTask::detail::TaskState& task) noexcept;
    RunningTask(RunningTask const&) = delete;
    RunningTask& operator=(RunningTask const&) = delete;
    ~RunningTask();

private:
    friend class WaitScope;

    static RunningTask const* Of(AsyncTask::detail::TaskState const& task) noexcept { return task.m_running; }

    AsyncTask::detail::TaskState& m_task;
    WaitingThread* m_thread = nullptr; ///< null when detection was off
    RunningTask const* m_below = nullptr;
};

/// The thread waits for the state during the scope. Throws a WaitCycleException instead if that would close a ring.
class WaitScope
{
public:
    explicit WaitScope(AsyncTask::detail::StatePtr const& awaited);
    WaitScope(WaitScope const&) = delete;
    WaitScope& operator=(WaitScope const&) = delete;
    ~WaitScope();

private:
    using Names = std::vector<TStringCore>;
    static Names FindRing(WaitingThread const& self, AsyncTask::detail::StatePtr state);
    static Names StackNames(WaitingThread const& self, RunningTask const* lowest);

    WaitingThread* m_thread = nullptr;
};

} // namespace qvxsys::task
