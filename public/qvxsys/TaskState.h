#pragma once
// What futures consist of below their types: how a state is completed, who follows it, how it is waited for and
// cancelled. Not for direct use: see Future.h.
//
// Life of a state. Work that has not started is marked as untaken (SharedStateBase::SetDeferred); whoever takes it runs
// it: the pool, the thread that completes what it follows, a waiter, or nobody, when Cancel takes it. Exactly one then
// claims the completion, stores a value or an exception, and completes the state, which makes it ready and tells its
// followers.
//
// Who keeps whom. A state keeps the states that it needs (its inputs) until it has run; a state that has followers
// keeps them until it is complete. Together that is a ring, which every end of a producer breaks: promises and items of
// work that are dropped complete their states with an exception. Deferred work has no producer, so what follows it does
// not register with it and is deferred itself.
//
// Depth. Neither completing, cancelling, waiting for nor destroying a chain of states uses stack for its length.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include <qvxsys/Launch.h>
#include <qvxsys/Platform.h>
#include <qvxsys/SharedState.h>
#include <qvxsys/TStringCore.h>

namespace qvxsys::task {
class RunningTask;
class WorkItem;
} // namespace qvxsys::task

namespace AsyncTask::detail {

class TaskState;
class ChangingInput;
using StatePtr = std::shared_ptr<TaskState>;

/// Told once when a state is complete.
class QVXSYS_API Follower
{
public:
    Follower() noexcept = default;
    Follower(Follower const&) = delete;
    Follower& operator=(Follower const&) = delete;

    /// On the thread that has completed the state. What runs user code is told later than what does not (quick), and
    /// not from within other user code that it is not a part of. A follower that does not keep the state is also told
    /// when that is destroyed without having been completed, as deferred work is that nobody waits for.
    virtual void OnReady() noexcept = 0;
    [[nodiscard]] virtual bool IsQuick() const noexcept = 0;

protected:
    virtual ~Follower();

private:
    friend class FollowerList;
    friend class TaskState;
    Follower* m_next = nullptr;
};

class QVXSYS_API TaskState : public SharedStateBase
{
public:
    explicit TaskState(Launch launch = Launch::OnCaller) noexcept : m_launch(launch) {}
    ~TaskState() override;

    /// Marks the state as cancelled, cancels its inputs and signals its event. Work that has not started never will
    /// (unless it is to ignore that); its future, and any that fails at once, fails with a CancelException. What
    /// on-cancel functions and callbacks of events throw comes out of it when all that is done: the first of it.
    void Cancel() final;

    /// True for one caller, who stores the result and calls Complete.
    [[nodiscard]] bool TryClaim() noexcept { return !m_claimed.exchange(true, std::memory_order_acq_rel); }
    /// Gives the claim back: nothing was stored.
    void Unclaim() noexcept;
    [[nodiscard]] bool IsClaimed() const noexcept { return m_claimed.load(std::memory_order_acquire); }
    /// Makes the state ready and tells the followers.
    void Complete() noexcept
    {
        Follower* const followers = m_followers.exchange(Closed(), std::memory_order_acq_rel);
        MarkAsReady();
        // Behind this, the state may be gone: who has waited for it may have destroyed the promise.
        if (followers != nullptr) {
            Tell(followers);
        }
    }
    /// Claims, stores and completes; false if another was first.
    bool Fail(std::exception_ptr exception) noexcept;
    [[nodiscard]] std::exception_ptr RawException() const noexcept { return GetRawException(); }

    /// False when the state is complete; the follower is not told then.
    [[nodiscard]] bool AddFollower(Follower& follower) noexcept;

    [[nodiscard]] Launch GetLaunch() const noexcept { return m_launch; }
    /// Nobody runs it unless somebody waits for it.
    [[nodiscard]] bool IsLazy() const noexcept { return m_launch == Launch::Deferred && IsDeferred(); }
    /// Whether a waiter on this thread may run it.
    [[nodiscard]] bool MayRunHere() const noexcept;
    void SetName(TStringCore name);
    [[nodiscard]] TStringCore GetName() const;

    /// An input that is not ready, to be waited for (and helped with) before this state can be; null when there is
    /// none.
    [[nodiscard]] virtual StatePtr PendingInput() const;
    /// Where a state that may come to have another input keeps it: who waits must look again then. Null for all others.
    [[nodiscard]] virtual ChangingInput const* GetChangingInput() const noexcept;
    /// Whether the work may run as far as its inputs go. False with PendingInput null means that what is missing cannot
    /// be helped with now.
    [[nodiscard]] virtual bool HasInputs() const;
    /// Adds the states whose becoming ready, or getting other inputs, may change the answers of PendingInput and
    /// HasInputs without having been on the way to there.
    virtual void AddWatched(std::vector<StatePtr>& states) const;
    /// Adds the inputs that are this state's alone, to be cancelled with it.
    virtual void AddOwnInputs(std::vector<StatePtr>& inputs) const;
    /// Gives the one input up, for a destruction that is not recursive.
    [[nodiscard]] virtual StatePtr TakeInput() noexcept;

protected:
    /// Runs the work and stores its result under a claim; false if another was first to claim.
    virtual bool Work() noexcept;
    /// Destroys the work, which the caller has taken and will not run, before the future is ready.
    virtual void DropWork() noexcept;

private:
    friend class qvxsys::task::RunningTask;
    friend class qvxsys::task::WorkItem;
    friend void RunTaken(TaskState& state) noexcept;
    friend void Start(StatePtr const& state);

    static Follower* Closed() noexcept { return reinterpret_cast<Follower*>(std::uintptr_t(1)); }
    static void Tell(Follower* followers) noexcept;
    void CancelOne(std::vector<StatePtr>& inputs, std::exception_ptr& failure, std::exception_ptr& thrown);
    /// For who has taken the work and will not run it.
    void FailUnrun(std::exception_ptr exception) noexcept;

    std::atomic<Follower*> m_followers = nullptr;
    std::unique_ptr<TStringCore> m_name;                  ///< guarded by the lock of all names
    qvxsys::task::RunningTask const* m_running = nullptr; ///< guarded by the lock of the wait cycle detection
    std::atomic<std::uint32_t> m_items = 0;               ///< items of work that are to run this state
    std::atomic<bool> m_claimed = false;
    Launch const m_launch;
};

/// Runs work that the caller has taken, and completes the state. The caller keeps the state alive.
QVXSYS_API void RunTaken(TaskState& state) noexcept;
/// Has untaken work run as its Launch says. Throws what pool and threads throw; the state has failed then.
QVXSYS_API void Start(StatePtr const& state);

/// Waits until the state is ready, running it, or what it waits for, on this thread where that has not started. With
/// `owner`, a cancellation of the calling thread's event meanwhile cancels the state. Throws a WaitCycleException.
QVXSYS_API void WaitHelping(StatePtr const& state, bool owner);
/// Waits for some time, running nothing.
QVXSYS_API bool WaitIdly(StatePtr const& state, bool owner, std::chrono::milliseconds timeout);

/// Waits for deferred work on this thread; what goes wrong with that becomes the result.
QVXSYS_API void RunLazy(StatePtr const& state) noexcept;

/// Drops what may be the last reference to a chain of states, one by one.
QVXSYS_API void ReleaseChain(StatePtr&& state) noexcept;

QVXSYS_API void ReportCreated(StatePtr const& state);
[[noreturn]] QVXSYS_API void ThrowInvalidFuture();

template<class State, class... Arguments>
[[nodiscard]] std::shared_ptr<State> MakeState(Arguments&&... arguments)
{
    auto state = std::make_shared<State>(std::forward<Arguments>(arguments)...);
    if (_HasOnSharedStateCreatedHook()) [[unlikely]] {
        ReportCreated(state);
    }
    return state;
}

/// The one input of a state, which waiters, cancellers and the runner look at.
class QVXSYS_API InputSlot
{
public:
    InputSlot() noexcept = default;
    InputSlot(InputSlot const&) = delete;
    InputSlot& operator=(InputSlot const&) = delete;
    ~InputSlot() { ReleaseChain(Take()); }

    void Set(StatePtr input) noexcept;
    [[nodiscard]] StatePtr Get() const noexcept;
    [[nodiscard]] StatePtr Take() noexcept;
    [[nodiscard]] StatePtr Pending() const noexcept;

private:
    mutable TRecursiveMutex m_mutex;
    StatePtr m_input;
};

/// An input that is followed by others. Events of waiters are signalled when it changes.
class QVXSYS_API ChangingInput
{
public:
    void Set(StatePtr input) noexcept;
    [[nodiscard]] StatePtr Get() const noexcept { return m_slot.Get(); }
    [[nodiscard]] StatePtr Take() noexcept { return m_slot.Take(); }
    [[nodiscard]] StatePtr Pending() const noexcept { return m_slot.Pending(); }
    void AddWatcher(TEvent const& event) const;
    void RemoveWatcher(TEvent const& event) const noexcept;

private:
    InputSlot m_slot;
    mutable TRecursiveMutex m_watcherMutex;
    mutable std::vector<TEvent const*> m_watchers QVXSYS_GUARDED_BY(m_watcherMutex);
};

} // namespace AsyncTask::detail
