#pragma once
// Futures in coroutines: a function that returns a Future<T> may be a coroutine, and co_await takes futures.
//
//     AsyncTask::Future<int> CountLines(TStringCore path)
//     {
//         co_await AsyncTask::SwitchTo(AsyncTask::Launch::PoolQueued);          // on the pool from here on
//         TStringCore const text = co_await LoadAsync(path);
//         AsyncTask::Cancel::ThrowIfCancelled();
//         co_return text.count(u'\n');
//     }
//
// The body begins on the caller's thread, at once. After a co_await that was not ready it goes on on the thread that
// completes what it waited for, as continuations without a launch do. What leaves the body by an exception is thrown by
// Get. Locals and parameters are destroyed before the future is ready. When an awaitable of your own destroys a
// suspended coroutine, its future fails with a BrokenPromiseException, as that of a Promise does.
//
// A coroutine has a cancellation event, which is the thread's current one whenever the body runs after a co_await of a
// future (other awaitables leave whatever the thread has). Cancel of its future signals that event and cancels the
// Future (not SharedFuture) that it is waiting for. A co_await of a deferred future runs it there and then.
//
// co_await of a Future takes its result, as Get does; of a SharedFuture it gives a reference.

#include <coroutine>
#include <exception>
#include <memory>
#include <type_traits>
#include <utility>

#include <qvxsys/Cancel.h>
#include <qvxsys/Future.h>
#include <qvxsys/FutureState.h>
#include <qvxsys/Platform.h>
#include <qvxsys/Promise.h>
#include <qvxsys/Run.h>

namespace AsyncTask {

namespace detail {

/// What is waited for while a coroutine is suspended.
class QVXSYS_API AwaitedInput
{
public:
    void Set(StatePtr input, bool owned) noexcept;
    void Clear() noexcept;
    [[nodiscard]] StatePtr Pending() const noexcept { return m_input.Pending(); }
    void AddOwned(std::vector<StatePtr>& inputs) const;
    [[nodiscard]] ChangingInput const& Changing() const noexcept { return m_input; }

private:
    ChangingInput m_input;
    std::atomic<bool> m_owned = false;
};

template<class T>
class CoroutineState final : public ValueState<T>
{
public:
    AwaitedInput awaited;

    [[nodiscard]] StatePtr PendingInput() const override { return awaited.Pending(); }
    [[nodiscard]] ChangingInput const* GetChangingInput() const noexcept override { return &awaited.Changing(); }
    void AddOwnInputs(std::vector<StatePtr>& inputs) const override { awaited.AddOwned(inputs); }
};

/// The part of a coroutine's promise that awaiters know.
class QVXSYS_API CoroutineCore
{
public:
    CoroutineCore(CoroutineCore const&) = delete;
    CoroutineCore& operator=(CoroutineCore const&) = delete;

    /// Runs the body up to where it suspends next, or to its end; the coroutine may be gone then.
    void Resume(std::coroutine_handle<> body) const noexcept;
    void Await(StatePtr const& input, bool owned) const;
    void Awaited() const noexcept { m_awaited->Clear(); }

protected:
    CoroutineCore() : m_event(MakeRefCnt<TCancelEvent>()) {}
    ~CoroutineCore();
    void SetState(TaskState& state, AwaitedInput& awaited);

private:
    RefCntPtr<TCancelEvent> m_event;
    TaskState* m_task = nullptr;
    AwaitedInput* m_awaited = nullptr;
};

/// Runs the first part of a body, by resuming it where it is suspended before its beginning.
struct BeginBody
{
    [[nodiscard]] bool await_ready() const noexcept { return false; }
    template<class P>
    void await_suspend(std::coroutine_handle<P> body) const noexcept
    {
        body.promise().Resume(body);
    }
    void await_resume() const noexcept {}
};

/// Destroys the coroutine, then completes its future.
struct EndBody
{
    [[nodiscard]] bool await_ready() const noexcept { return false; }
    template<class P>
    void await_suspend(std::coroutine_handle<P> body) const noexcept
    {
        auto const state = std::move(body.promise().state);
        bool const claimed = body.promise().claimed;
        body.destroy();
        if (claimed) {
            state->Complete();
        }
    }
    void await_resume() const noexcept {}
};

template<class T>
class CoroutineBase : public CoroutineCore
{
public:
    std::shared_ptr<CoroutineState<T>> state = MakeState<CoroutineState<T>>();
    bool claimed = false;

    CoroutineBase() { SetState(*state, state->awaited); }
    CoroutineBase(CoroutineBase const&) = delete;
    CoroutineBase& operator=(CoroutineBase const&) = delete;
    ~CoroutineBase()
    {
        if (state != nullptr) { // by who has its handle, an awaitable that is not the library's
            BreakPromise(*state);
        }
    }
    Future<T> get_return_object() { return Future<T>(state); }
    [[nodiscard]] BeginBody initial_suspend() const noexcept { return {}; }
    [[nodiscard]] EndBody final_suspend() const noexcept { return {}; }
    void unhandled_exception() noexcept
    {
        if (claimed) { // from the destructor of a local, behind co_return
            state->SetException(std::current_exception());
        } else {
            claimed = state->StoreError(std::current_exception());
        }
    }
};

template<class T>
class CoroutinePromise : public CoroutineBase<T>
{
public:
    template<class V = T>
    void return_value(V&& value)
    {
        this->claimed = this->state->StoreResult([&]() -> T { return static_cast<T>(std::forward<V>(value)); });
    }
};

template<>
class CoroutinePromise<void> : public CoroutineBase<void>
{
public:
    void return_void() noexcept
    {
        claimed = state->StoreResult([] {});
    }
};

/// Resumes a coroutine, one of ours or any other.
class QVXSYS_API Resumer : public Follower
{
public:
    void OnReady() noexcept override;
    [[nodiscard]] bool IsQuick() const noexcept override;

protected:
    Resumer() noexcept = default;
    ~Resumer() override;
    template<class P>
    void Suspend(std::coroutine_handle<P> body, StatePtr const& input, bool owned)
    {
        m_body = body;
        if constexpr (std::is_base_of_v<CoroutineCore, P>) {
            m_coroutine = &body.promise();
            m_coroutine->Await(input, owned);
        }
    }
    void Resumed() noexcept
    {
        if (m_coroutine != nullptr) {
            m_coroutine->Awaited();
        }
    }

private:
    std::coroutine_handle<> m_body;
    CoroutineCore const* m_coroutine = nullptr;
};

template<class T, bool Owner>
class FutureAwaiter final : public Resumer
{
public:
    explicit FutureAwaiter(std::shared_ptr<ValueState<T>> state) noexcept : m_state(std::move(state)) {}

    [[nodiscard]] bool await_ready() const
    {
        if (m_state->IsLazy()) {
            WaitHelping(m_state, Owner);
        }
        return m_state->IsReady();
    }
    template<class P>
    bool await_suspend(std::coroutine_handle<P> body)
    {
        Suspend(body, m_state, Owner);
        return m_state->AddFollower(*this); // from here on the coroutine may be running, or gone
    }
    decltype(auto) await_resume()
    {
        Resumed();
        m_state->CheckForException();
        if constexpr (Owner) {
            return m_state->Take();
        } else {
            return m_state->Peek();
        }
    }

private:
    std::shared_ptr<ValueState<T>> m_state;
};

class QVXSYS_API SwitchAwaiter final : public Resumer
{
public:
    explicit SwitchAwaiter(Launch launch) noexcept : m_launch(launch) {}
    ~SwitchAwaiter() override;

    [[nodiscard]] bool await_ready() const noexcept
    {
        return m_launch == Launch::Deferred || m_launch == Launch::OnCaller;
    }
    template<class P>
    void await_suspend(std::coroutine_handle<P> body)
    {
        StatePtr const work = MakeWork(m_launch, [] {});
        m_work = work;
        Suspend(body, work, true);
        Begin(work);
    }
    void await_resume();

private:
    void Begin(StatePtr const& work) noexcept;

    Launch m_launch;
    StatePtr m_work;
};

} // namespace detail

/// co_await SwitchTo(launch): the coroutine goes on where the launch says, as a task would that Run starts. Throws what
/// the future of that task would.
[[nodiscard]] inline detail::SwitchAwaiter SwitchTo(Launch launch) noexcept
{
    return detail::SwitchAwaiter(launch);
}

/// Takes the result: the future is without a state afterwards.
template<class T>
[[nodiscard]] detail::FutureAwaiter<T, true> operator co_await(Future<T>&& future)
{
    static_cast<void>(future.PeekState());
    return detail::FutureAwaiter<T, true>(future.ReleaseState());
}
template<class T>
[[nodiscard]] detail::FutureAwaiter<T, true> operator co_await(Future<T>& future)
{
    return operator co_await(std::move(future));
}
template<class T>
[[nodiscard]] detail::FutureAwaiter<T, false> operator co_await(SharedFuture<T> const& future)
{
    return detail::FutureAwaiter<T, false>(future.PeekState());
}

} // namespace AsyncTask

/// Makes functions that give a Future coroutines.
template<class T, class... Arguments>
struct std::coroutine_traits<AsyncTask::Future<T>, Arguments...>
{
    using promise_type = AsyncTask::detail::CoroutinePromise<T>;
};
