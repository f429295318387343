#include "WaitCycles.h"

#include <algorithm>

#include <qvxsys/Future.h>
#include <qvxsys/TFormatStringCore.h>
#include <qvxsys/TLocks.h>

#include "ThrowSite.h"

namespace qvxsys::task {

using AsyncTask::detail::StatePtr;
using AsyncTask::detail::TaskState;

struct WaitingThread
{
    RunningTask const* top = nullptr;
    TaskState* awaited = nullptr; ///< kept alive by the scope's owner
};

namespace {

#if defined(NDEBUG)
constexpr bool kDetectAtStart = false;
#else
constexpr bool kDetectAtStart = true;
#endif

std::atomic<bool> g_detect = kDetectAtStart;
/// Guards all records of all threads, and TaskState::m_running.
constinit TRecursiveMutex g_mutex;
QVXSYS_TLS_INITIAL_EXEC constinit thread_local WaitingThread t_waiting;

/// Longer ways are not followed: a ring of so many tasks would need as many threads.
constexpr int kLongestWay = 100'000;

TStringCore NameOf(TaskState const& task)
{
    TStringCore const name = task.GetName();
    return name.empty() ? TStringCore(u"(unnamed)") : TStringCore(u"\"") + name + u"\"";
}

} // namespace

RunningTask::RunningTask(TaskState& task) noexcept : m_task(task)
{
    if (g_detect.load(std::memory_order_relaxed)) {
        TLockScope const lock(g_mutex);
        m_thread = &t_waiting;
        m_below = m_thread->top;
        m_thread->top = this;
        m_task.m_running = this;
    }
}

RunningTask::~RunningTask()
{
    if (m_thread != nullptr) {
        TLockScope const lock(g_mutex);
        m_task.m_running = nullptr;
        m_thread->top = m_below;
    }
}

WaitScope::WaitScope(StatePtr const& awaited)
{
    if (!g_detect.load(std::memory_order_relaxed)) {
        return;
    }
    TLockScope const lock(g_mutex);
    Names const ring = FindRing(t_waiting, awaited);
    if (!ring.empty()) {
        TStringCore text = u"AsyncTask: wait cycle: ";
        for (std::size_t i = 0; i < ring.size(); ++i) {
            text += i == 0 ? ring[i] : u" -> " + ring[i];
        }
        throw AsyncTask::WaitCycleException(text, qvxsys::error::ThrowSite(0x19EB46CB));
    }
    m_thread = &t_waiting;
    m_thread->awaited = awaited.get();
}

WaitScope::~WaitScope()
{
    if (m_thread != nullptr) {
        TLockScope const lock(g_mutex);
        m_thread->awaited = nullptr;
    }
}

/// Follows who waits for what, from `state` on, until that comes to a task on the stack of `self`. The tasks on the
/// ring, the first one again at the end; nothing if there is none.
WaitScope::Names WaitScope::FindRing(WaitingThread const& self, StatePtr state)
{
    Names way;
    TaskState const* at = state.get();
    for (int i = 0; at != nullptr && i < kLongestWay; ++i) {
        if (RunningTask const* const running = RunningTask::Of(*at)) {
            way.push_back(NameOf(*at));
            if (running->m_thread == &self) {
                Names ring = StackNames(self, running);
                ring.insert(ring.end(), way.begin(), way.end());
                return ring;
            }
            at = running->m_thread->awaited;
        } else {
            // Kept until the next: inputs are given up by their owners at any time.
            state = at->PendingInput();
            at = state.get();
        }
    }
    return {};
}

/// The tasks on the stack from `lowest` up.
WaitScope::Names WaitScope::StackNames(WaitingThread const& self, RunningTask const* lowest)
{
    Names names;
    for (RunningTask const* task = self.top; task != nullptr; task = task->m_below) {
        names.push_back(NameOf(task->m_task));
        if (task == lowest) {
            break;
        }
    }
    std::reverse(names.begin(), names.end());
    return names;
}

} // namespace qvxsys::task

namespace AsyncTask {

void SetWaitCycleDetection(bool on) noexcept
{
    qvxsys::task::g_detect = on;
}

bool GetWaitCycleDetection() noexcept
{
    return qvxsys::task::g_detect;
}

} // namespace AsyncTask
