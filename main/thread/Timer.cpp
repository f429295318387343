#include <qvxsys/Timer.h>

#include <algorithm>
#include <optional>
#include <thread>
#include <utility>

#include <qvxsys/TEvent.h>
#include <qvxsys/TLocks.h>

#include "LogicAssert.h"
#include "ThreadPlatform.h"
#include "TimerQueue.h"

namespace AsyncTask {

struct ManualClock::State
{
    qvxsys::task::TimerQueue calls;
    qvxsys::task::TimerQueue::Time now{0};
};

} // namespace AsyncTask

namespace {

using Time = qvxsys::task::TimerQueue::Time;

Time RealTime()
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

/// Never destroyed: its thread runs until the process has ended.
struct Timers
{
    TRecursiveMutex mutex;
    qvxsys::task::TimerQueue calls QVXSYS_GUARDED_BY(mutex);
    /// The queue and the time of a manual clock, if there is one.
    qvxsys::task::TimerQueue* manualCalls QVXSYS_GUARDED_BY(mutex) = nullptr;
    Time const* manualNow QVXSYS_GUARDED_BY(mutex) = nullptr;
    AsyncTask::TimerId lastId QVXSYS_GUARDED_BY(mutex) = 0;
    bool started QVXSYS_GUARDED_BY(mutex) = false;
    TAutoResetEvent changed;

    static Timers& Get()
    {
        static Timers& timers = *new Timers;
        return timers;
    }
    void Run() noexcept;
};

/// On the thread of its own.
void Timers::Run() noexcept
{
    qvxsys::task::platform::NameThisThread("qvx-timer");
    for (;;) {
        std::function<void()> call;
        std::chrono::milliseconds wait = std::chrono::milliseconds::max();
        {
            TLockScope const lock(mutex);
            Time const now = RealTime();
            call = calls.TakeDue(now);
            if (auto const earliest = calls.Earliest(); !call && earliest) {
                wait = std::chrono::ceil<std::chrono::milliseconds>(*earliest - now);
            }
        }
        if (call) {
            call();
        } else {
            changed.Wait(wait);
        }
    }
}

} // namespace

namespace AsyncTask {

TimerId CallAfter(std::chrono::milliseconds delay, std::function<void()> function)
{
    constexpr std::chrono::milliseconds kNever(0xFFFFFFFF);
    QVX_LOGIC_ASSERT(function);
    if (!function) {
        return 0;
    }
    Timers& timers = Timers::Get();
    TLockScope const lock(timers.mutex);
    bool const manual = timers.manualCalls != nullptr;
    Time const now = manual ? *timers.manualNow : RealTime();
    Time const due = delay >= kNever ? Time::max() : now + std::max(delay, std::chrono::milliseconds(0));
    if (!manual && !timers.started) {
        std::thread([&timers] { timers.Run(); }).detach();
        timers.started = true;
    }
    TimerId const id = ++timers.lastId;
    auto& calls = manual ? *timers.manualCalls : timers.calls;
    bool const isNext = due < calls.Earliest().value_or(Time::max());
    calls.Add(due, id, std::move(function));
    if (!manual && isNext) {
        timers.changed.Signal();
    }
    return id;
}

bool CancelCall(TimerId id)
{
    Timers& timers = Timers::Get();
    std::function<void()> forgotten; // destroyed without the lock
    TLockScope const lock(timers.mutex);
    forgotten = timers.calls.Remove(id);
    if (!forgotten && timers.manualCalls != nullptr) {
        forgotten = timers.manualCalls->Remove(id);
    }
    return forgotten != nullptr;
}

ManualClock::ManualClock() : m_state(std::make_unique<State>())
{
    Timers& timers = Timers::Get();
    TLockScope const lock(timers.mutex);
    timers.manualCalls = &m_state->calls;
    timers.manualNow = &m_state->now;
}

ManualClock::~ManualClock()
{
    Timers& timers = Timers::Get();
    TLockScope const lock(timers.mutex);
    timers.manualCalls = nullptr;
    timers.manualNow = nullptr;
}

void ManualClock::Advance(std::chrono::milliseconds by)
{
    Timers& timers = Timers::Get();
    std::optional<Time> end;
    for (;;) {
        std::function<void()> call;
        {
            TLockScope const lock(timers.mutex);
            end = end ? *end : m_state->now + by;
            Time const next = m_state->calls.Earliest().value_or(Time::max());
            call = m_state->calls.TakeDue(*end);
            m_state->now = call ? std::max(m_state->now, next) : *end;
            if (!call) {
                return;
            }
        }
        call();
    }
}

std::chrono::milliseconds ManualClock::Now() const
{
    Timers& timers = Timers::Get();
    TLockScope const lock(timers.mutex);
    return std::chrono::floor<std::chrono::milliseconds>(m_state->now);
}

std::size_t ManualClock::Pending() const
{
    Timers& timers = Timers::Get();
    TLockScope const lock(timers.mutex);
    return m_state->calls.Size();
}

} // namespace AsyncTask
