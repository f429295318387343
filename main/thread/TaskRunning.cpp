// How work is started and run.

#include <utility>

#include <qvxsys/Cancel.h>
#include <qvxsys/Promise.h>
#include <qvxsys/TThreadPool.h>
#include <qvxsys/TaskState.h>

#include "ThrowSite.h"
#include "WaitCycles.h"

namespace qvxsys::task {

using AsyncTask::detail::StatePtr;

/// What pool and threads are given to run a state. When the last copy goes without having been called, and nobody else
/// has taken the work, the state fails: its future must not wait for ever.
class WorkItem
{
public:
    explicit WorkItem(StatePtr state) noexcept : m_state(std::move(state)) { Count(); }
    WorkItem(WorkItem const& other) noexcept : m_state(other.m_state) { Count(); }
    WorkItem(WorkItem&& other) noexcept = default;
    WorkItem& operator=(WorkItem const&) = delete;
    ~WorkItem()
    {
        if (m_state != nullptr && m_state->m_items.fetch_sub(1, std::memory_order_acq_rel) == 1 &&
            m_state->TryTakingDeferredOwnership()) {
            m_state->FailUnrun(std::make_exception_ptr(AsyncTask::BrokenPromiseException(
                u"AsyncTask: the task was dropped before it ran.", error::ThrowSite(0x1F9CF608))));
        }
    }

    void operator()() const
    {
        if (m_state->TryTakingDeferredOwnership()) {
            RunTaken(*m_state);
        }
    }

private:
    void Count() noexcept
    {
        if (m_state != nullptr) {
            m_state->m_items.fetch_add(1, std::memory_order_relaxed);
        }
    }

    StatePtr m_state;
};

namespace {

/// What a thread has while a task runs on it.
class TaskScope
{
public:
    explicit TaskScope(AsyncTask::detail::TaskState& task) : m_event(MakeRefCnt<TCancelEvent>()), m_running(task)
    {
        task.SetCancelEvent(AsyncTask::Cancel::Get()); // throws if the task has been given another event
        AsyncTask::TLS::Get().IncrementDepth();
    }
    TaskScope(TaskScope const&) = delete;
    TaskScope& operator=(TaskScope const&) = delete;
    ~TaskScope()
    {
        // Work that has changed the depth and not changed it back is put right.
        AsyncTask::TLS::Get().SetDepth(m_depth);
    }

private:
    unsigned long long const m_depth = AsyncTask::TLS::Get().GetDepth();
    AsyncTask::Cancel::CancelEventSetter const m_event;
    RunningTask const m_running;
};

} // namespace

} // namespace qvxsys::task

namespace AsyncTask::detail {

using qvxsys::task::WorkItem;

void RunTaken(TaskState& state) noexcept
{
    bool claimed = false;
    try {
        if (state.IsCancelled() && !state.GetIgnoreCancelBeforeStart()) {
            throw AsyncTask::Cancel::MakeException(); // cancelled between being taken and here
        }
        qvxsys::task::TaskScope const scope(state);
        claimed = state.Work();
    } catch (...) {
        state.FailUnrun(std::current_exception());
    }
    // Outside the scope: what follows is not part of the task.
    if (claimed) {
        state.Complete();
    }
}

namespace {

void Schedule(WorkItem const& item, Launch launch)
{
    bool const dedicated = launch == Launch::Dedicated;
    if (dedicated || (!ScheduleOnThreadPool(WorkItem(item), launch) && launch == Launch::PoolOrDedicated)) {
        RunOnDedicatedThread(WorkItem(item));
    }
}

} // namespace

void Start(StatePtr const& state)
{
    Launch const launch = state->GetLaunch();
    if (launch == Launch::Deferred) {
        return;
    }
    if (launch == Launch::OnCaller) {
        if (state->TryTakingDeferredOwnership()) {
            RunTaken(*state);
        }
        return;
    }
    WorkItem const item(state);
    try {
        Schedule(item, launch);
    } catch (...) {
        if (state->TryTakingDeferredOwnership()) {
            state->FailUnrun(std::current_exception());
        }
        throw;
    }
}

} // namespace AsyncTask::detail
