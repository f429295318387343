#pragma once
// Calling something later (CallAfter), and a clock for tests that only moves when it is told to (ManualClock).
//
//     AsyncTask::TimerId const warn = AsyncTask::CallAfter(std::chrono::seconds(5), [] { Log("still waiting"); });
//     Load();
//     AsyncTask::CancelCall(warn);
//
//     AsyncTask::ManualClock clock;                              // in a test
//     service.StartWithDeadline(std::chrono::seconds(30));
//     clock.Advance(std::chrono::seconds(30));
//     EXPECT_TRUE(service.HasGivenUp());
//
// One thread of the library's, started by the first CallAfter, makes all calls, in the order of their times. So what is
// called must be short: signal an event, add work to a pool. What it throws ends the process. Calls that are still to
// be made when the process ends are not made.
//
// After a fork the child has no such thread, and calls are not made there.
//
// Threads: all may be called from any thread, and by what is called. Cost: O(log n) in the number of calls to come, and
// the waking of the thread when the new call is the next.

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

#include <qvxsys/Platform.h>

namespace AsyncTask {

/// A call to come. Never 0, and never used again.
using TimerId = unsigned long long;

/// Has `function` called once, `delay` from now or a little later, never earlier; at once, but on the other thread, if
/// `delay` is not positive. Delays of 0xFFFFFFFF milliseconds (49 days) and more never end. By the clock of
/// TSystem::UpTime. An empty function raises the logic assertion "function"; if its hook returns, the result is 0.
/// Throws std::system_error when the thread cannot be started.
QVXSYS_API TimerId CallAfter(std::chrono::milliseconds delay, std::function<void()> function);
/// Forgets a call. False when it has been made, is being made, or was forgotten before.
QVXSYS_API bool CancelCall(TimerId id);

/// While it lives, time stands still for CallAfter, and Advance moves it. Calls that were asked for before go on by the
/// real clock. It has no effect on waits with a timeout. One at a time.
class QVXSYS_API ManualClock
{
public:
    ManualClock();
    /// Forgets the calls that are still to come.
    ~ManualClock();
    ManualClock(ManualClock const&) = delete;
    ManualClock& operator=(ManualClock const&) = delete;

    /// Moves time forward, making the calls that become due on this thread, each at its own time, in order; those that
    /// they ask for in turn too. What they throw comes out here, with the time being that of the call. They may advance
    /// the clock themselves: time never goes back. A negative `by` is 0, one beyond the clock's 292 years leads to
    /// their end; calls that never come do not come then either.
    void Advance(std::chrono::milliseconds by);
    /// Time since it was made.
    [[nodiscard]] std::chrono::milliseconds Now() const;
    /// How many calls are still to come.
    [[nodiscard]] std::size_t Pending() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace AsyncTask
