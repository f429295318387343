#pragma once
// What each thread keeps for the tasks that it runs (AsyncTask::TLS), and the handler that is told when a thread blocks
// on a future (IWaitHandler).
//
//     class KeepPoolBusy : public AsyncTask::IWaitHandler
//     {
//     public:
//         void BeforeBlocking(AsyncTask::SharedStateBase const&) noexcept override { g_pool.AddSpareThread(); }
//         void AfterBlocking(AsyncTask::SharedStateBase const&) noexcept override { g_pool.RetireSpareThread(); }
//     };
//
//     KeepPoolBusy handler;
//     AsyncTask::WaitHandlerScopeGuard const scope(&handler);
//     future.Wait();                                          // not told if it need not sleep
//
// Everything here belongs to the calling thread and is used by it alone. A thread begins with depth 0 and nothing else;
// what is left of a cancellation event when it ends is released.

#include <cstdint>
#include <memory>

#include <qvxsys/Platform.h>
#include <qvxsys/TEvent.h>

namespace AsyncTask {

class SharedStateBase;

/// Told by futures when their waits really block, on the thread that blocks.
class QVXSYS_API IWaitHandler
{
public:
    IWaitHandler() noexcept = default;
    IWaitHandler(IWaitHandler const&) noexcept = default;
    IWaitHandler& operator=(IWaitHandler const&) noexcept = default;
    virtual ~IWaitHandler();

    /// The thread is about to sleep until the state is ready or the time of the wait is over.
    virtual void BeforeBlocking(SharedStateBase const& state) noexcept = 0;
    /// The thread is awake again. Called exactly once after each BeforeBlocking.
    virtual void AfterBlocking(SharedStateBase const& state) noexcept = 0;
};

class Cancel;

/// The calling thread's record. A handle: not to be passed to other threads.
class QVXSYS_API TLS
{
public:
    /// The calling thread's.
    [[nodiscard]] static TLS Get() noexcept;

    /// How many tasks run on this thread, one inside the other.
    [[nodiscard]] unsigned long long GetDepth() const noexcept;
    /// Sets what GetDepth gives.
    void SetDepth(unsigned long long depth) noexcept;
    /// One more, for a task that begins within another.
    void IncrementDepth() noexcept;
    /// At depth 0, raises the logic assertion "depth > 0"; if its hook returns, the depth stays 0.
    void DecrementDepth();

    /// The current cancellation event as it is, without counting references: Cancel (Cancel.h) does that.
    [[nodiscard]] TCancelEvent* GetCancelEvent() const noexcept;
    /// Sets what GetCancelEvent gives; null for none. See Cancel.h, which does this for you.
    void SetCancelEvent(TCancelEvent const* event) noexcept;

    /// Called when a worker thread of the library ends.
    [[nodiscard]] auto GetThreadCleanupFunc() const noexcept -> void (*)();
    /// Sets the function; null for none.
    void SetThreadCleanupFunc(void (*function)()) noexcept;

    /// Not owned.
    [[nodiscard]] IWaitHandler* GetWaitHandler() const noexcept;
    /// Sets what GetWaitHandler gives; null for none.
    void SetWaitHandler(IWaitHandler const* handler) noexcept;

private:
    friend class Cancel;
    struct Record;

    /// Has the thread release, when it ends, the event that the record still owns then.
    void ReleaseAtThreadEnd() noexcept;

    explicit TLS(Record& record) noexcept : m_record(&record) {}

    Record* m_record;
};

/// Has another handler during a scope; null for none.
class QVXSYS_API WaitHandlerScopeGuard
{
public:
    /// Sets the thread's handler.
    explicit WaitHandlerScopeGuard(IWaitHandler* handler) noexcept;
    WaitHandlerScopeGuard(WaitHandlerScopeGuard const&) = delete;
    WaitHandlerScopeGuard& operator=(WaitHandlerScopeGuard const&) = delete;
    ~WaitHandlerScopeGuard();

private:
    IWaitHandler* m_previous;
};

/// Has another handler during a scope, and destroys it afterwards.
class QVXSYS_API OwningWaitHandlerScopeGuard
{
public:
    /// Sets the thread's handler.
    explicit OwningWaitHandlerScopeGuard(std::unique_ptr<IWaitHandler> handler) noexcept;
    OwningWaitHandlerScopeGuard(OwningWaitHandlerScopeGuard const&) = delete;
    OwningWaitHandlerScopeGuard& operator=(OwningWaitHandlerScopeGuard const&) = delete;
    ~OwningWaitHandlerScopeGuard();

private:
    std::unique_ptr<IWaitHandler> m_handler;
    IWaitHandler* m_previous;
};

} // namespace AsyncTask
