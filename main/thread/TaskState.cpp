#include <qvxsys/TaskState.h>

#include <utility>

#include <qvxsys/Cancel.h>

#include "FollowerList.h"
#include "ThreadRecord.h"

namespace AsyncTask::detail {

namespace {

/// Names are few and read when something has gone wrong.
constinit TRecursiveMutex g_nameMutex;

} // namespace

Follower::~Follower() = default;

TaskState::~TaskState()
{
    Follower* const followers = m_followers.load(std::memory_order_acquire);
    if (followers != nullptr && followers != Closed()) {
        Tell(followers);
    }
}

void TaskState::Unclaim() noexcept
{
    // An exchange: either the canceller whom the claim has turned away is seen here, or he sees that it is given back.
    m_claimed.exchange(false, std::memory_order_acq_rel);
    if (IsCancelled() && GetWhenCanceled() == WhenCanceled::FailAtOnce) {
        Fail(std::make_exception_ptr(Cancel::MakeException())); // which the claim has kept from failing
    }
}

bool TaskState::Fail(std::exception_ptr exception) noexcept
{
    if (!TryClaim()) {
        return false;
    }
    SetException(std::move(exception));
    Complete();
    return true;
}

bool TaskState::AddFollower(Follower& follower) noexcept
{
    Follower* first = m_followers.load(std::memory_order_acquire);
    do {
        if (first == Closed()) {
            Wait(); // it is being made ready right now, if it is not yet
            return false;
        }
        follower.m_next = first;
    } while (!m_followers.compare_exchange_weak(first, &follower, std::memory_order_acq_rel));
    return true;
}

void TaskState::Tell(Follower* followers) noexcept
{
    FollowerList list;
    while (followers != nullptr) { // the last is the one that came first
        list.PushFront(*std::exchange(followers, followers->m_next));
    }
    qvxsys::task::TellFollowers(list);
}

void TaskState::Cancel()
{
    std::vector<StatePtr> inputs;
    std::exception_ptr failure, thrown;
    CancelOne(inputs, failure, thrown);
    while (!inputs.empty()) {
        StatePtr const input = std::move(inputs.back());
        inputs.pop_back();
        input->CancelOne(inputs, failure, thrown);
    }
    if (thrown != nullptr) {
        std::rethrow_exception(thrown);
    }
}

/// `failure` is made by the first of a chain that fails with it. The functions that are called may throw: a state that
/// has been marked must be ended all the same, since nobody will try again.
void TaskState::CancelOne(std::vector<StatePtr>& inputs, std::exception_ptr& failure, std::exception_ptr& thrown)
{
    if (IsReady() || !MarkAsCancelled()) {
        return;
    }
    bool const unstarted = !GetIgnoreCancelBeforeStart() && TryTakingDeferredOwnership();
    AddOwnInputs(inputs);
    try {
        SignalCancelEventIfSet();
        CallOnCancelFunctionWithoutEvent();
    } catch (...) {
        thrown = thrown != nullptr ? thrown : std::current_exception();
    }
    bool const atOnce = GetWhenCanceled() == WhenCanceled::FailAtOnce;
    if ((unstarted || atOnce) && failure == nullptr) {
        failure = std::make_exception_ptr(AsyncTask::Cancel::MakeException());
    }
    if (unstarted) {
        FailUnrun(failure);
    } else if (atOnce) {
        Fail(failure);
    }
}

void TaskState::FailUnrun(std::exception_ptr exception) noexcept
{
    DropWork();
    Fail(std::move(exception));
}

bool TaskState::MayRunHere() const noexcept
{
    switch (m_launch) {
    case Launch::Deferred:
    case Launch::OnCaller:
    case Launch::PoolQueued:
        return true;
    case Launch::PoolOnly:
        return qvxsys::task::IsMarkedPoolThread();
    default:
        return false;
    }
}

void TaskState::SetName(TStringCore name)
{
    auto fresh = std::make_unique<TStringCore>(std::move(name));
    TLockScope const lock(g_nameMutex);
    m_name.swap(fresh);
}

TStringCore TaskState::GetName() const
{
    TLockScope const lock(g_nameMutex);
    return m_name != nullptr ? *m_name : TStringCore();
}

StatePtr TaskState::PendingInput() const
{
    return nullptr;
}

ChangingInput const* TaskState::GetChangingInput() const noexcept
{
    return nullptr;
}

bool TaskState::HasInputs() const
{
    return true;
}

void TaskState::AddWatched(std::vector<StatePtr>&) const
{}

void TaskState::AddOwnInputs(std::vector<StatePtr>&) const
{}

StatePtr TaskState::TakeInput() noexcept
{
    return nullptr;
}

bool TaskState::Work() noexcept
{
    return false;
}

void TaskState::DropWork() noexcept
{}

void ReleaseChain(StatePtr&& state) noexcept
{
    StatePtr last = std::move(state);
    while (last != nullptr && last.use_count() == 1) {
        last = last->TakeInput();
    }
}

void ReportCreated(StatePtr const& state)
{
    _ApplyOnSharedStateCreatedHook(state);
}

void InputSlot::Set(StatePtr input) noexcept
{
    TLockScope const lock(m_mutex);
    m_input.swap(input);
}

StatePtr InputSlot::Get() const noexcept
{
    TLockScope const lock(m_mutex);
    return m_input;
}

StatePtr InputSlot::Take() noexcept
{
    TLockScope const lock(m_mutex);
    return std::move(m_input);
}

StatePtr InputSlot::Pending() const noexcept
{
    TLockScope const lock(m_mutex);
    return m_input != nullptr && !m_input->IsReady() ? m_input : nullptr;
}

void ChangingInput::Set(StatePtr input) noexcept
{
    m_slot.Set(std::move(input));
    TLockScope const lock(m_watcherMutex);
    for (TEvent const* const event : m_watchers) {
        event->Signal();
    }
}

void ChangingInput::AddWatcher(TEvent const& event) const
{
    TLockScope const lock(m_watcherMutex);
    m_watchers.push_back(&event);
}

void ChangingInput::RemoveWatcher(TEvent const& event) const noexcept
{
    TLockScope const lock(m_watcherMutex);
    std::erase(m_watchers, &event);
}

} // namespace AsyncTask::detail
