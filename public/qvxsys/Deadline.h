#pragma once
// Cancelling from outside: at a deadline (CancelAfter), or together with std::stop_token.
//
//     AsyncTask::Future<Page> page = AsyncTask::Run(AsyncTask::Launch::PoolQueued, Fetch, address);
//     AsyncTask::CancelAfter(page, std::chrono::seconds(5));
//     AsyncTask::CancelOnStop(page, stopToken);               // a std::jthread's, for instance
//     ...
//     AsyncTask::StopTokenScope const scope;                  // in a task: for functions that take a std::stop_token
//     WaitForData(scope.Token());
//
// Deadlines go by CallAfter (Timer.h): in tests, by the ManualClock. They are met on the timer's thread, one after the
// other, with whatever runs when a future is cancelled, so continuations without a launch should be short. A deadline
// is forgotten as soon as its future is ready.
//
// All functions may be called from any thread.

#include <chrono>
#include <stop_token>

#include <qvxsys/Future.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TEvent.h>

namespace AsyncTask {

namespace detail {

QVXSYS_API void CancelStateAfter(StatePtr const& state, std::chrono::milliseconds time);
QVXSYS_API void CancelStateOnStop(StatePtr const& state, std::stop_token const& token);

} // namespace detail

/// Cancels the future when the time is over, never earlier; at once if it is 0 or less. Of several deadlines the
/// earliest counts. Throws what CallAfter throws.
template<class T, bool Owner>
void CancelAfter(detail::FutureBase<T, Owner> const& future, std::chrono::milliseconds time)
{
    detail::CancelStateAfter(future.PeekState(), time);
}
/// Signals the event when the time is over; keeps a reference to it until then.
QVXSYS_API void CancelAfter(RefCntPtr<TCancelEvent> event, std::chrono::milliseconds time);

/// Cancels the future when a stop is requested, on the thread that requests it, or now if that has happened.
template<class T, bool Owner>
void CancelOnStop(detail::FutureBase<T, Owner> const& future, std::stop_token const& token)
{
    detail::CancelStateOnStop(future.PeekState(), token);
}

/// During its life, a stop is requested of its token when the event is signalled, or at once if it is set.
class QVXSYS_API StopTokenScope
{
public:
    /// Of the thread's current event (Cancel.h); without one, a stop is never requested.
    StopTokenScope();
    explicit StopTokenScope(RefCntPtr<TCancelEvent> event);
    StopTokenScope(StopTokenScope const&) = delete;
    StopTokenScope& operator=(StopTokenScope const&) = delete;
    ~StopTokenScope();

    /// Stays valid after the scope, but is not told any more.
    [[nodiscard]] std::stop_token Token() const noexcept { return m_source.get_token(); }

private:
    RefCntPtr<TCancelEvent> m_event;
    std::stop_source m_source;
};

} // namespace AsyncTask
