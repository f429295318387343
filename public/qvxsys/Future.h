#pragma once
// Futures: results that are not there yet. AsyncTask::Run (Run.h) and promises (Promise.h) make them; all of it comes
// with <qvxsys/Tasks.h>.
//
//     AsyncTask::Future<TStringCore> text = AsyncTask::Run(AsyncTask::Launch::PoolQueued, Load, path);
//     AsyncTask::Future<int> lines = std::move(text).Then([](TStringCore const& t) { return t.count(u'\n'); });
//     int const n = lines.Get();                              // waits; throws what Load threw
//
// Future<T> has one owner, who takes the result out; SharedFuture<T> is copied freely and gives references to it. T may
// be void, a reference, or movable only. A future that is dropped does not wait, and its task runs on.
//
// Continuations (Then) get the value, the exception, or the ready future, as their parameter says:
//
//     future.Then([](int value) { ... });                     // called with the value; an exception passes by
//     future.Then([](std::exception_ptr e) { return 0; });    // called with the exception; a value passes by
//     future.Then([](AsyncTask::Future<int> ready) { ... });  // called with either
//     future.Then(AsyncTask::Launch::PoolQueued, [](int value) { ... });
//
// Without a launch, a continuation runs on the thread that completes the future, within SetValue or behind the task, or
// at once on the calling thread when the future is ready; one that runs while another does is run behind it, so chains
// of any length use no stack. It should be short. What a continuation that was run this way puts off is done before its
// thread blocks on a future. A continuation of a deferred task is deferred too: both run when somebody waits. A
// continuation that returns a future is continued by that future's result.
//
// Waiting. Who waits for a task that has not started runs it himself, or what it waits for, where its launch allows
// that (Launch.h), and nothing else. So tasks may wait for tasks on a pool of any size. The exception is PoolOnly,
// which threads outside of the pool cannot help with: when all threads of the pool wait for tasks on other threads, and
// those for PoolOnly tasks, nobody is left to run these. The thread's wait handler (AsyncTaskTls.h) is told when the
// thread really sleeps. Two tasks that wait for each other are told so by a WaitCycleException, where detection is on
// (SetWaitCycleDetection).
//
// Cancelling a future cancels what it was made from by Then, WhenAll and WhenAny as well, and what its task is waiting
// for by a Future (not by a SharedFuture, which others may want). A task that has not started never does, and its
// future fails at once with a CancelException; a running one has its cancellation event set, see Cancel.h, and
// WhenCanceled says when its future ends. Continuations that run because of it run on the thread that cancels, and
// where the signal of an event has cancelled, among the callbacks of that event: they must not wait for whom it
// cancels.
//
// Threads: one future object is used by one thread at a time; several SharedFutures of one result by several, and
// Cancel by any thread at any time. What the task wrote is seen by who gets its result.

#include <chrono>
#include <concepts>
#include <memory>
#include <type_traits>
#include <utility>

#include <qvxsys/FutureState.h>
#include <qvxsys/Launch.h>
#include <qvxsys/Platform.h>

namespace AsyncTask {

template<class T>
class Promise;

namespace detail {

template<class T>
inline constexpr bool kIsFuture = false;
template<class T>
inline constexpr bool kIsFuture<Future<T>> = true;
template<class T>
struct Inside
{
    using type = T;
};
template<class T>
struct Inside<Future<T>>
{
    using type = T;
};

/// What is common to both kinds.
template<class T, bool Owner>
class FutureBase
{
public:
    /// Whether it has a state. Everything else throws an InvalidFutureException ("InvalidFuture", code 0x8B9C0847,
    /// source 4) without one.
    [[nodiscard]] bool IsValid() const noexcept { return m_state != nullptr; }
    [[nodiscard]] bool IsReady() const { return State()->IsReady(); }
    /// Whether Cancel was called before it was ready.
    [[nodiscard]] bool IsCancelled() const { return State()->IsCancelled(); }
    /// Waits until it is ready. Does not throw what the task threw. Throws a WaitCycleException.
    void Wait() const
    {
        if (!IsReady()) {
            WaitHelping(m_state, Owner);
        }
    }
    /// Waits for some time; false when it is over. Runs nothing on this thread, so a deferred task is not ready
    /// afterwards unless another thread runs it. Timeouts as of events (TEvent.h).
    [[nodiscard]] bool WaitFor(std::chrono::milliseconds timeout) const { return WaitIdly(State(), Owner, timeout); }
    /// Asks for the result not to be made any more; does not wait. After it is ready, does nothing.
    void Cancel() const { State()->Cancel(); }
    void SetWhenCanceled(WhenCanceled policy) const { State()->SetWhenCanceled(policy); }
    /// What wait cycles call the task.
    void SetName(TStringCore name) const { State()->SetName(std::move(name)); }
    /// The state, for use with hooks and impersonation.
    [[nodiscard]] std::shared_ptr<SharedStateBase> GetState() const noexcept { return m_state; }
    [[nodiscard]] std::shared_ptr<ValueState<T>> const& PeekState() const { return State(); }

protected:
    FutureBase() noexcept = default;
    explicit FutureBase(std::shared_ptr<ValueState<T>> state) noexcept : m_state(std::move(state)) {}
    FutureBase(FutureBase const&) = default;
    FutureBase(FutureBase&&) noexcept = default;
    FutureBase& operator=(FutureBase const&) = default;
    FutureBase& operator=(FutureBase&&) noexcept = default;
    ~FutureBase() { Drop(); }

    [[nodiscard]] std::shared_ptr<ValueState<T>> const& State() const
    {
        if (m_state == nullptr) [[unlikely]] {
            ThrowInvalidFuture();
        }
        return m_state;
    }
    void Drop() noexcept
    {
        // Only deferred work can be at the end of a long chain that goes with this.
        if (m_state != nullptr && m_state->GetLaunch() == Launch::Deferred) [[unlikely]] {
            ReleaseChain(std::move(m_state));
        }
    }

    std::shared_ptr<ValueState<T>> m_state;
};

template<bool Shared, class T, class F>
auto MakeThen(std::shared_ptr<ValueState<T>> input, Launch launch, F&& function);

} // namespace detail

/// The one future of a result. Move-only.
template<class T>
class [[nodiscard]] Future : public detail::FutureBase<T, true>
{
public:
    using value_type = T;

    Future() noexcept = default;
    /// Takes over the state; the other has none then.
    Future(Future&&) noexcept = default;
    /// Lets go of its own state and takes over the other's.
    Future& operator=(Future&& other) noexcept
    {
        Future old(std::move(other));
        this->m_state.swap(old.m_state);
        return *this;
    }
    ~Future() = default;
    /// For the library's own use.
    explicit Future(std::shared_ptr<detail::ValueState<T>> state) noexcept
        : detail::FutureBase<T, true>(std::move(state))
    {}

    /// Waits, and takes the result out: the future is without a state then. Throws what the task threw, through the
    /// exception hook; a WaitCycleException leaves the future as it is.
    T Get()
    {
        this->Wait();
        std::shared_ptr<detail::ValueState<T>> const state = std::move(this->m_state);
        state->CheckForException();
        return state->Take();
    }
    /// Continues the result: see the top of this header. The future is without a state then.
    template<class F>
    auto Then(F&& function)
    {
        return Then(Launch::OnCaller, std::forward<F>(function));
    }
    template<class F>
    auto Then(Launch launch, F&& function)
    {
        static_cast<void>(this->State());
        return detail::MakeThen<false>(std::move(this->m_state), launch, std::forward<F>(function));
    }
    /// The same result for several. The future is without a state then.
    [[nodiscard]] SharedFuture<T> Share()
    {
        static_cast<void>(this->State());
        return SharedFuture<T>(std::move(this->m_state));
    }
    /// For the library's own use: the state, which the future has no more.
    [[nodiscard]] std::shared_ptr<detail::ValueState<T>> ReleaseState() noexcept { return std::move(this->m_state); }
};

/// One of several futures of a result. Copies share it, and the exception if it has failed: all are thrown one object,
/// so do not stack context on it (StackExceptionAndRethrow) on several threads at a time.
template<class T>
class [[nodiscard]] SharedFuture : public detail::FutureBase<T, false>
{
public:
    using value_type = T;

    SharedFuture() noexcept = default;
    /// For the library's own use.
    explicit SharedFuture(std::shared_ptr<detail::ValueState<T>> state) noexcept
        : detail::FutureBase<T, false>(std::move(state))
    {}
    /// Takes over the future's state; the future has none then.
    SharedFuture(Future<T>&& future) : SharedFuture(future.Share()) {}

    /// Waits. The reference is good as long as a SharedFuture of the result is there. Throws what the task threw,
    /// through the exception hook, each time.
    std::add_lvalue_reference_t<std::add_const_t<T>> Get() const
    {
        this->Wait();
        this->m_state->CheckForException();
        return this->m_state->Peek();
    }
    /// As Future::Then; the value is a constant reference, the ready future a SharedFuture. This one keeps its state.
    template<class F>
    auto Then(F&& function) const
    {
        return Then(Launch::OnCaller, std::forward<F>(function));
    }
    template<class F>
    auto Then(Launch launch, F&& function) const
    {
        return detail::MakeThen<true>(this->State(), launch, std::forward<F>(function));
    }
};

namespace detail {

struct Deduced
{};
template<class T, class... Arguments>
struct ReadyType
{
    using type = T;
};
template<class V>
struct ReadyType<Deduced, V>
{
    using type = std::decay_t<V>;
};
template<>
struct ReadyType<Deduced>
{
    using type = void;
};

} // namespace detail

/// A future that is ready, with a value made from the arguments: MakeReady(1), MakeReady<TStringCore>(u"x"),
/// MakeReady().
template<class T = detail::Deduced, class... Arguments>
[[nodiscard]] auto MakeReady(Arguments&&... arguments)
{
    using V = typename detail::ReadyType<T, Arguments...>::type;
    auto state = detail::MakeState<detail::ValueState<V>>();
    static_cast<void>(state->TryClaim());
    if constexpr (!std::is_void_v<V>) {
        state->Emplace(std::forward<Arguments>(arguments)...);
    }
    state->Complete();
    return Future<V>(std::move(state));
}

/// A future that has failed.
template<class T>
[[nodiscard]] Future<T> MakeFailed(std::exception_ptr exception)
{
    auto state = detail::MakeState<detail::ValueState<T>>();
    state->Fail(std::move(exception));
    return Future<T>(std::move(state));
}
template<class T, class E>
requires(!std::convertible_to<E, std::exception_ptr>) [[nodiscard]] Future<T> MakeFailed(E&& exception)
{
    return MakeFailed<T>(std::make_exception_ptr(std::forward<E>(exception)));
}

/// Throw WaitCycleException when tasks wait for each other in a ring. On at start in debug builds of the library. Costs
/// a lock and a walk along the ring-to-be each time a thread blocks on a future. Only waits that began while it was on
/// are seen.
QVXSYS_API void SetWaitCycleDetection(bool on) noexcept;
[[nodiscard]] QVXSYS_API bool GetWaitCycleDetection() noexcept;

/// Tasks wait for each other. The message names them in the order in which each waits for the next, as far as they have
/// names: "AsyncTask: wait cycle: \"load\" -> \"parse\" -> \"load\"". Code 0x19EB46CB, source 4.
class QVXSYS_API WaitCycleException : public QuorvexException
{
public:
    /// With a message.
    WaitCycleException(TStringCore const& message, TError::ErrorInfo const& info);
    WaitCycleException(WaitCycleException const&) = default;
    WaitCycleException& operator=(WaitCycleException const&) = default;
    ~WaitCycleException() override;
    [[nodiscard]] QuorvexException* Clone() const override;
    [[noreturn]] void Throw() const override;
};

/// A future without its type.
template<class T>
class WrappedFuture final : public IWrappedFuture
{
public:
    /// Wraps a future.
    explicit WrappedFuture(SharedFuture<T> future) noexcept : m_future(std::move(future)) {}

    /// Whether there is a result.
    [[nodiscard]] bool IsReady() const override { return m_future.IsReady(); }
    /// Waits for the result.
    void Wait() const override { m_future.Wait(); }
    /// Waits for the result, so long at most; false if there is none by then.
    bool WaitFor(std::chrono::milliseconds timeout) const override { return m_future.WaitFor(timeout); }
    /// Cancels the work behind it.
    void Cancel() const override { m_future.Cancel(); }
    void Check() const override { static_cast<void>(m_future.Get()); }

private:
    SharedFuture<T> m_future;
};

namespace detail {

/// The result of the result.
template<class T>
[[nodiscard]] Future<T> Flatten(std::shared_ptr<ValueState<Future<T>>> outer)
{
    if (outer->IsLazy()) {
        auto both = [](Future<Future<T>> future) -> T { return future.Get().Get(); };
        auto state = MakeState<ThenState<Future<T>, decltype(both), false>>(Launch::Deferred, std::move(outer), both);
        return Future<T>(std::move(state));
    }
    auto state = MakeState<FlatState<T>>(std::move(outer));
    FlatState<T>::Follow(state);
    return Future<T>(std::move(state));
}

template<bool Shared, class T, class F>
auto MakeThen(std::shared_ptr<ValueState<T>> input, Launch launch, F&& function)
{
    using State = ThenState<T, std::decay_t<F>, Shared>;
    using R = typename ResultOf<T, std::decay_t<F>, Shared>::type;
    bool const lazy = input->IsLazy();
    auto state = MakeState<State>(lazy ? Launch::Deferred : launch, std::move(input), std::forward<F>(function));
    if (!lazy && launch != Launch::Deferred) {
        State::Follow(state);
    }
    if constexpr (kIsFuture<R>) {
        return Flatten(std::shared_ptr<ValueState<R>>(std::move(state)));
    } else {
        return Future<R>(std::move(state));
    }
}

} // namespace detail

} // namespace AsyncTask
