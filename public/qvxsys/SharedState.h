#pragma once
// What a task's producer and its consumers share (AsyncTask::SharedStateBase), and the hooks through which a program
// watches and wraps all of its tasks. Futures and promises (Future.h) are built on it; use those, unless you write a
// kind of future of your own:
//
//     class Answer : public AsyncTask::SharedStateBase
//     {
//     public:
//         void Cancel() override { SignalCancelEventIfSet(); }
//         int value = 0;
//     };
//
//     auto const answer = std::make_shared<Answer>();
//     AsyncTask::_ApplyOnSharedStateCreatedHook(answer);
//     std::jthread producer([answer] {
//         answer->value = 42;
//         answer->MarkAsReady();
//     });
//     answer->Wait();
//     answer->CheckForException();                            // rethrows what the producer stored instead
//
// A state is 112 bytes with everything inside, its event and its locks too: made by std::make_shared, it is one
// allocation.
//
// Threads: all operations may be called from any thread. What the producer wrote before MarkAsReady is seen after a
// wait and where IsReady is true. The hooks are meant to be set at start; to replace one while tasks run is safe, and a
// call that has begun is finished by the old one.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>

#include <qvxsys/Platform.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/ReferenceCount.h>
#include <qvxsys/TEvent.h>
#include <qvxsys/TLocks.h>

namespace AsyncTask {

/// What becomes of a future that is cancelled while its work is running.
enum class WhenCanceled : std::uint32_t {
    AwaitWork = 0,  ///< it ends as the work ends, which is to notice by Cancel::ThrowIfCancelled and need not
    FailAtOnce = 1, ///< it fails with a CancelException at once; what the work comes to is dropped
};

/// A future was used that has no shared state: default-constructed, moved from, or its result taken already.
class QVXSYS_API InvalidFutureException : public QuorvexException
{
public:
    /// With the message "InvalidFuture".
    explicit InvalidFutureException(TError::ErrorInfo const& info);
    InvalidFutureException(InvalidFutureException const&) = default;
    InvalidFutureException& operator=(InvalidFutureException const&) = default;
    ~InvalidFutureException() override;
    [[nodiscard]] QuorvexException* Clone() const override;
    [[noreturn]] void Throw() const override;
};

class SharedStateBase;

/// A future without its type, for code that keeps futures of many types.
class QVXSYS_API IWrappedFuture
{
public:
    IWrappedFuture() noexcept = default;
    IWrappedFuture(IWrappedFuture const&) noexcept = default;
    IWrappedFuture& operator=(IWrappedFuture const&) noexcept = default;
    virtual ~IWrappedFuture();

    /// Whether there is a result.
    [[nodiscard]] virtual bool IsReady() const = 0;
    /// Waits for the result.
    virtual void Wait() const = 0;
    /// Waits for the result, so long at most; false if there is none by then.
    virtual bool WaitFor(std::chrono::milliseconds timeout) const = 0;
    /// Cancels the work behind it.
    virtual void Cancel() const = 0;
    /// Waits, then rethrows the exception with which the future has failed, if it has.
    virtual void Check() const = 0;
};

/// The untyped core of a future: ready or not, the first exception, whether the work has been taken, and the link to
/// the event that cancels it. Held by std::shared_ptr.
class QVXSYS_API SharedStateBase
{
public:
    SharedStateBase() noexcept = default;
    SharedStateBase(SharedStateBase const&) = delete;
    SharedStateBase& operator=(SharedStateBase const&) = delete;
    virtual ~SharedStateBase();

    /// What cancelling means for this task. Called by consumers and by cancellation callbacks, on any thread, perhaps
    /// more than once.
    virtual void Cancel() = 0;
    /// Whether there is a result.
    [[nodiscard]] virtual bool IsReady() const;

    /// Sets the state ready and runs its ready callbacks on this thread. What TEvent::Signal raises.
    void MarkAsReady() { m_ready.Signal(); }
    /// Waits for the result.
    void Wait() const noexcept { m_ready.Wait(); }
    /// False when the time is over. Timeouts as of events: negative ones end the process.
    bool WaitFor(std::chrono::milliseconds const& timeout) const noexcept { return m_ready.Wait(timeout); }
    /// The event that is set with the result; for the library's own use.
    [[nodiscard]] IEvent& GetRawReadyEvent() noexcept { return m_ready; }
    /// Callbacks of the ready event: one per key, called by MarkAsReady, not called if the state is ready already. They
    /// must not throw: what leaves them while a future is completed ends the process.
    void AddOnReadyCallback(void* key, std::function<void()> callback);
    /// Takes the callback with this key away.
    void RemoveOnReadyCallback(void* key);

    /// Keeps the exception unless there is one already: the first one wins.
    void SetException(std::exception_ptr exception) noexcept;
    /// Whether the result is an exception.
    [[nodiscard]] bool HasException() const noexcept { return m_hasException.load(std::memory_order_acquire); }
    /// Rethrows the exception if there is one, through the exception hook.
    void CheckForException() const
    {
        if (HasException()) [[unlikely]] {
            RethrowException();
        }
    }

    /// Whether it has been cancelled.
    [[nodiscard]] bool IsCancelled() const noexcept { return m_cancelled.load(std::memory_order_acquire); }
    /// Sets what GetWhenCanceled gives.
    void SetWhenCanceled(WhenCanceled policy) noexcept { m_whenCanceled.store(policy, std::memory_order_relaxed); }
    /// What happens when it is cancelled while the work runs.
    [[nodiscard]] WhenCanceled GetWhenCanceled() const noexcept
    {
        return m_whenCanceled.load(std::memory_order_relaxed);
    }
    /// Whether work that is cancelled before it has started starts all the same, with its cancellation event set.
    void SetIgnoreCancelBeforeStart(bool ignore) noexcept
    {
        m_ignoreCancelBeforeStart.store(ignore, std::memory_order_relaxed);
    }
    /// Whether the work starts although it has been cancelled before.
    [[nodiscard]] bool GetIgnoreCancelBeforeStart() const noexcept
    {
        return m_ignoreCancelBeforeStart.load(std::memory_order_relaxed);
    }
    /// Replaces the function that the cancellation event calls. To be set before SetCancelEvent, which registers a
    /// copy.
    void SetOnCancelFunction(std::unique_ptr<std::function<void()>> function) noexcept;
    /// Links the state to its cancellation event, for its whole life: a second call raises the logic assertion
    /// "!m_cancel" (and, if its hook returns, changes nothing). Has the event call the on-cancel function from now on;
    /// if the state has been cancelled before, signals the event now.
    void SetCancelEvent(RefCntPtr<TCancelEvent> event);
    /// Has the cancellation event forget the on-cancel function. Without an event, raises the assertion "m_ptr".
    void RemoveCancelOnSignalCallback();
    /// Signals the cancellation event of the work, if it has one.
    void SignalCancelEventIfSet();

    /// Marks work that the first who takes it is to run.
    void SetDeferred() noexcept { m_taken.store(0, std::memory_order_release); }
    /// Whether the work runs only when somebody waits.
    [[nodiscard]] bool IsDeferred() const noexcept { return m_taken.load(std::memory_order_acquire) == 0; }
    /// True for one caller after SetDeferred: the work is his.
    [[nodiscard]] bool TryTakingDeferredOwnership() noexcept
    {
        std::uint8_t untaken = 0;
        return m_taken.compare_exchange_strong(untaken, 1, std::memory_order_acq_rel, std::memory_order_acquire);
    }

protected:
    /// Raises the logic assertion "m_ready->IsSet()" unless the state is ready.
    void AssertIsReady() const
    {
        if (!m_ready.IsSet()) [[unlikely]] {
            NotReady();
        }
    }
    /// The exception as it is stored, without the hook; null when there is none.
    [[nodiscard]] std::exception_ptr GetRawException() const noexcept;
    /// Sets the cancelled flag; false when it was set. From here on SetCancelEvent signals the event.
    bool MarkAsCancelled() noexcept;
    /// Calls the on-cancel function unless there is an event that does.
    void CallOnCancelFunctionWithoutEvent();

private:
    void RethrowException() const;
    static void NotReady();

    mutable TRecursiveMutex m_exceptionMutex;
    std::exception_ptr m_exception QVXSYS_GUARDED_BY(m_exceptionMutex);
    RefCntPtr<TCancelEvent> m_cancel QVXSYS_GUARDED_BY(m_cancelMutex);
    mutable TRecursiveMutex m_cancelMutex;
    std::atomic<bool> m_cancelled = false;
    std::atomic<WhenCanceled> m_whenCanceled = WhenCanceled::AwaitWork;
    std::atomic<bool> m_ignoreCancelBeforeStart = false;
    std::unique_ptr<std::function<void()>> m_onCancel QVXSYS_GUARDED_BY(m_cancelMutex);
    std::atomic<std::uint8_t> m_taken = 1;
    std::atomic<bool> m_hasException = false;
    TEvent m_ready;
};

static_assert(sizeof(SharedStateBase) == 112);

/// @name Hooks
/// Each is for the whole process and replaces the one before; an empty function removes it. A hook runs on the thread
/// that comes by it. What a hook throws goes to the caller of the operation that applies it.
/// @{
// NOLINTBEGIN(bugprone-reserved-identifier): users know the names that begin with an underscore

/// Called with every exception that a consumer is about to be thrown; what it returns is thrown instead. Null leaves
/// the exception as it is.
QVXSYS_API void SetExceptionHook(std::function<std::exception_ptr(std::exception_ptr)> hook);
[[nodiscard]] QVXSYS_API std::exception_ptr _ApplyExceptionHook(std::exception_ptr exception);

/// Called with every item of work that the pool or a dedicated thread is about to run, and a flag that is handed
/// through; what it returns is run instead.
QVXSYS_API void SetExecutionHook(std::function<std::function<void()>(std::function<void()>, bool)> hook);
[[nodiscard]] QVXSYS_API std::function<void()> _ApplyExecutionHook(std::function<void()> work, bool flag);

/// Called with every shared state that is made, on the thread that makes it.
QVXSYS_API void SetOnSharedStateCreatedHook(std::function<void(std::weak_ptr<SharedStateBase>)> hook);
QVXSYS_API void _ApplyOnSharedStateCreatedHook(std::weak_ptr<SharedStateBase> state);
/// Whether there is one, for callers that make a weak pointer only then.
[[nodiscard]] QVXSYS_API bool _HasOnSharedStateCreatedHook() noexcept;
// NOLINTEND(bugprone-reserved-identifier)
/// @}

} // namespace AsyncTask
