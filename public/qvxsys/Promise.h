#pragma once
// The producer's side of a future (AsyncTask::Promise), for results that do not come from a function that is run: from
// a callback, a message, another thread.
//
//     AsyncTask::Promise<int> promise;
//     AsyncTask::Future<int> answer = promise.GetFuture();
//     std::jthread producer([promise = std::move(promise)]() mutable { promise.SetValue(42); });
//     answer.Get();                                           // 42
//
// Promise and future are one allocation together. To set a result costs some nanoseconds, and wakes whoever waits.
// Continuations of the future that have no launch of their own run within SetValue, SetException and the destructor:
// hold no lock that they need.
//
// A promise is used by one thread at a time; its future may be used by another.

#include <exception>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include <qvxsys/Future.h>
#include <qvxsys/FutureState.h>
#include <qvxsys/Platform.h>
#include <qvxsys/QuorvexException.h>

namespace AsyncTask {

/// What the future of a promise that was destroyed without a result fails with, "AsyncTask::Promise: destroyed without
/// a result.", code 0x0B15A750, and that of a task that was dropped without being run (because the pool or the manager
/// of dedicated threads was closed, or the execution hook did not call it), "AsyncTask: the task was dropped before it
/// ran.", code 0x1F9CF608. Source 4.
class QVXSYS_API BrokenPromiseException : public QuorvexException
{
public:
    /// With a message.
    BrokenPromiseException(TStringCore const& message, TError::ErrorInfo const& info);
    BrokenPromiseException(BrokenPromiseException const&) = default;
    BrokenPromiseException& operator=(BrokenPromiseException const&) = default;
    ~BrokenPromiseException() override;
    [[nodiscard]] QuorvexException* Clone() const override;
    [[noreturn]] void Throw() const override;
};

/// A promise was misused: "AsyncTask::Promise: the result has been set already.", code 0x6D400ED8; "AsyncTask::Promise:
/// the future has been taken already.", code 0xE206C910; "AsyncTask::Promise: no state.", code 0x3EA69197, after it was
/// moved from. Source 4.
class QVXSYS_API PromiseException : public QuorvexException
{
public:
    /// With a message.
    PromiseException(TStringCore const& message, TError::ErrorInfo const& info);
    PromiseException(PromiseException const&) = default;
    PromiseException& operator=(PromiseException const&) = default;
    ~PromiseException() override;
    [[nodiscard]] QuorvexException* Clone() const override;
    [[noreturn]] void Throw() const override;
};

namespace detail {

[[noreturn]] QVXSYS_API void ThrowAlreadySet();
[[noreturn]] QVXSYS_API void ThrowFutureTaken();
[[noreturn]] QVXSYS_API void ThrowNoPromise();
/// Fails a state that nobody will complete any more.
QVXSYS_API void BreakPromise(TaskState& state) noexcept;

} // namespace detail

/// Sets the result of one future. Move-only. T may be void, a reference, or movable only. A promise that is destroyed,
/// or assigned to, without a result makes its future fail with a BrokenPromiseException.
///
/// A future of a promise that is cancelled fails at once with a CancelException (WhenCanceled::FailAtOnce;
/// SetWhenCanceled changes it). What is set afterwards is dropped without an error: the producer need not know.
template<class T>
class Promise
{
public:
    Promise() : m_state(detail::MakeState<detail::ValueState<T>>())
    {
        m_state->SetWhenCanceled(WhenCanceled::FailAtOnce);
    }
    /// Takes over the state; the other has none then.
    Promise(Promise&& other) noexcept
        : m_state(std::move(other.m_state)), m_futureTaken(std::exchange(other.m_futureTaken, false))
    {}
    /// Lets go of its own state, which is broken if it has no result, and takes over the other's.
    Promise& operator=(Promise&& other) noexcept
    {
        Promise(std::move(other)).swap(*this);
        return *this;
    }
    ~Promise()
    {
        if (m_state != nullptr && !m_state->IsClaimed()) {
            detail::BreakPromise(*m_state);
        }
    }
    void swap(Promise& other) noexcept
    {
        m_state.swap(other.m_state);
        std::swap(m_futureTaken, other.m_futureTaken);
    }

    /// The future; once. A second call throws a PromiseException.
    [[nodiscard]] Future<T> GetFuture()
    {
        Check();
        if (std::exchange(m_futureTaken, true)) {
            detail::ThrowFutureTaken();
        }
        return Future<T>(m_state);
    }

    /// Constructs the result from the arguments and makes the future ready. Throws a PromiseException when there is a
    /// result already, and what the construction throws: there is no result then.
    template<class... Arguments>
    void SetValue(Arguments&&... arguments)
    {
        if (!TrySetValue(std::forward<Arguments>(arguments)...) && !m_state->IsCancelled()) {
            detail::ThrowAlreadySet();
        }
    }
    /// Stores an exception. Throws what SetValue throws.
    void SetException(std::exception_ptr exception)
    {
        if (!TrySetException(std::move(exception)) && !m_state->IsCancelled()) {
            detail::ThrowAlreadySet();
        }
    }
    /// Any other object is thrown as it is.
    template<class E>
    requires(!std::convertible_to<E, std::exception_ptr>) void SetException(E&& exception)
    {
        SetException(std::make_exception_ptr(std::forward<E>(exception)));
    }

    /// False when there is a result already, or the future has failed by being cancelled.
    template<class... Arguments>
    bool TrySetValue(Arguments&&... arguments)
    {
        Check();
        if (!m_state->TryClaim()) {
            return false;
        }
        if constexpr (!std::is_void_v<T>) {
            try {
                m_state->Emplace(std::forward<Arguments>(arguments)...);
            } catch (...) {
                m_state->Unclaim();
                throw;
            }
        } else {
            static_assert(sizeof...(Arguments) == 0, "a promise of void has no value");
        }
        m_state->Complete(); // a continuation may destroy this promise
        return true;
    }
    /// Stores an exception unless there is a result; whether it did.
    bool TrySetException(std::exception_ptr exception)
    {
        Check();
        return m_state->Fail(std::move(exception));
    }

    /// Whether the future has been cancelled.
    [[nodiscard]] bool IsCancelled() const
    {
        Check();
        return m_state->IsCancelled();
    }
    /// Has `function` called, on the thread that cancels, when the future is cancelled; not if it is already. What it
    /// throws comes out of Cancel, when everything has been cancelled.
    void SetOnCancelFunction(std::function<void()> function)
    {
        Check();
        m_state->SetOnCancelFunction(std::make_unique<std::function<void()>>(std::move(function)));
    }
    /// What happens to its futures when they are cancelled before there is a result.
    void SetWhenCanceled(WhenCanceled policy)
    {
        Check();
        m_state->SetWhenCanceled(policy);
    }
    /// Whether it has a state.
    [[nodiscard]] bool IsValid() const noexcept { return m_state != nullptr; }

private:
    void Check() const
    {
        if (m_state == nullptr) [[unlikely]] {
            detail::ThrowNoPromise();
        }
    }
    std::shared_ptr<detail::ValueState<T>> m_state;
    bool m_futureTaken = false;
};

template<class T>
void swap(Promise<T>& a, Promise<T>& b) noexcept
{
    a.swap(b);
}

} // namespace AsyncTask
