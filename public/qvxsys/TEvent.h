#pragma once
// Events that threads wait for, one interface (IEvent) and four kinds: set until it is reset (TEvent), until one waiter
// has taken it (TAutoResetEvent), after so many signals (TCountdownEvent), and trees of events where signalling one
// signals all below it (TCancelEvent). And waiting for several at once, of any kinds.
//
//     TEvent done;
//     std::jthread worker([&done] { Work(); done.Signal(); });
//     if (!done.Wait(std::chrono::milliseconds(500))) {
//         ShowProgress();
//         done.Wait();
//     }
//
//     RefCntPtr<TCancelEvent> const all = MakeRefCnt<TCancelEvent>();
//     RefCntPtr<TCancelEvent> const one = MakeRefCnt<TCancelEvent>();
//     all->Add(one);
//     all->Signal();                                          // one->IsSet()
//
// Cost: an event is 24 bytes (countdown 56, cancellation 112) and no system object, so a million of them are
// memory only. To look at one is a load, to set and to reset it one atomic instruction each, without a call. A thread
// that must wait spins for a few microseconds at most (see TLocks.h) and then sleeps.
//
// Lifetime: an event may be destroyed as soon as a wait on it has returned, or IsSet was true, even while the Signal
// that ended the wait is still on its way out on another thread: the destructor waits for callbacks that are still
// running. An event must not be destroyed by one of its own callbacks, which would wait for itself: that ends the
// process.
//
// Threads: all operations may be called from any thread. What was written before a Signal is seen after the wait that
// it ended, and in the callbacks.
//
// Timeouts are milliseconds; 0 does not wait, 0xFFFFFFFF and more wait without limit. A wait never ends before its time
// and does not notice when the system's time is set. A negative timeout is a programming error and ends the process:
// the logic assertion "timeout.count() >= 0" (LogicException, or its hook) escapes from a function that is noexcept.
// When a hook returns, it counts as 0.

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <vector>

#include <qvxsys/Platform.h>
#include <qvxsys/ReferenceCount.h>
#include <qvxsys/SyncWords.h>
#include <qvxsys/TLocks.h>

/// What every event can do. Events of your own can be waited for together with the library's.
class QVXSYS_API IEvent
{
public:
    IEvent() noexcept = default;
    IEvent(IEvent const&) noexcept = default;
    IEvent& operator=(IEvent const&) noexcept = default;
    virtual ~IEvent();

    /// Sets the event, then runs every registered callback on this thread, also when the event was set already.
    virtual void Signal() const = 0;
    /// Whether the event is set. Takes the signal of an auto-reset event, as a wait does.
    [[nodiscard]] virtual bool IsSet() const = 0;
    /// Waits until the event is set. False when the time is over, or the system refuses to let the thread sleep.
    virtual bool Wait(std::chrono::milliseconds timeout) const noexcept = 0;
    /// Waits without limit. True, unless the system refuses to let the thread sleep.
    virtual bool Wait() const = 0;
    /// Clears the event. Threads that a Signal has released stay released. A step in memory, which cannot fail.
    virtual void Reset() const = 0;
    /// Has `callback` called by every later Signal, on the signalling thread, in the order of registration. Replaces
    /// the callback that `key` has. Callbacks must be short, and must not block: further callbacks of this event, and
    /// whoever adds or removes one, wait meanwhile. From within a callback, callbacks of the same event may be added,
    /// removed and replaced: those added or replaced are called from the next Signal on. An exception from a callback
    /// leaves Signal and spares the callbacks behind it, with the event set; an empty callback throws
    /// std::bad_function_call when it is called.
    virtual void AddOnSignalCallback(void* key, std::function<void()> callback) const = 0;
    /// Forgets the callback of `key`, if there is one. It is not running any more, except on the calling thread.
    virtual void RemoveOnSignalCallback(void* key) const = 0;
};

namespace qvxsys::sync {
class ExactWait;
}

namespace qvxsys::detail {

class EventCallbacks;

/// What all kinds of events are made of: the word, and callbacks once there are any.
template<bool AutoReset>
class TEventBase
{
public:
    TEventBase() noexcept = default;
    TEventBase(TEventBase const&) = delete;
    TEventBase& operator=(TEventBase const&) = delete;
    ~TEventBase()
    {
        if (EventWord::Signallers(m_word.Load()) != 0 || m_callbacks.load(std::memory_order_relaxed) != nullptr) {
            Destroy();
        }
    }

    void Signal()
    {
        if (!m_word.SetQuietly<AutoReset>()) [[unlikely]] {
            SignalSlowly();
        }
    }
    [[nodiscard]] bool IsSet() noexcept { return AutoReset ? m_word.TryTake() : m_word.IsSet(); }
    /// As IsSet, without taking the signal.
    [[nodiscard]] bool Peek() const noexcept { return m_word.IsSet(); }
    [[nodiscard]] bool Wait(std::chrono::milliseconds timeout) noexcept
    {
        return (timeout.count() >= 0 && IsSet()) || (timeout.count() != 0 && WaitSlowly(timeout.count()));
    }
    [[nodiscard]] bool Wait() noexcept { return IsSet() || WaitSlowly(kForEver); }
    void Reset() noexcept { m_word.Clear(); }
    /// Sets without running callbacks.
    QVXSYS_API void SignalWithoutCallbacks();
    QVXSYS_API void AddOnSignalCallback(void* key, std::function<void()>&& callback);
    QVXSYS_API void RemoveOnSignalCallback(void* key);

private:
    static constexpr long long kForEver = 0xFFFFFFFF;

    QVXSYS_API void SignalSlowly();
    QVXSYS_API bool WaitSlowly(long long milliseconds) noexcept;
    QVXSYS_API void Destroy() noexcept;

    EventWord m_word;
    std::atomic<EventCallbacks*> m_callbacks = nullptr;
};

} // namespace qvxsys::detail

/// Set until it is reset: a manual-reset event. Lets every waiter through. 24 bytes.
class QVXSYS_API TEvent final : public IEvent
{
public:
    /// Set or not.
    explicit TEvent(bool initiallySet = false)
    {
        if (initiallySet) {
            m_base.Signal();
        }
    }
    TEvent(TEvent const&) = delete;
    TEvent& operator=(TEvent const&) = delete;
    ~TEvent() override;

    /// When the system refuses to wake the waiters, raises a logic assertion (LogicException, or its hook) with the
    /// text "SetEvent() failed with error: " and what GetLastErrorString() says; the event is set then, no callback has
    /// run.
    void Signal() const override { m_base.Signal(); }
    [[nodiscard]] bool IsSet() const noexcept override { return m_base.IsSet(); }
    bool Wait(std::chrono::milliseconds timeout) const noexcept override { return m_base.Wait(timeout); }
    bool Wait() const noexcept override { return m_base.Wait(); }
    void Reset() const noexcept override { m_base.Reset(); }
    void AddOnSignalCallback(void* key, std::function<void()> callback) const override;
    void RemoveOnSignalCallback(void* key) const override;

private:
    mutable qvxsys::detail::TEventBase<false> m_base;
};

/// Set until one waiter takes it: each signal lets one wait (or IsSet) through. Signals while it is set are one signal;
/// a signal while threads sleep on it releases one of them. 24 bytes.
class QVXSYS_API TAutoResetEvent final : public IEvent
{
public:
    TAutoResetEvent() noexcept = default;
    TAutoResetEvent(TAutoResetEvent const&) = delete;
    TAutoResetEvent& operator=(TAutoResetEvent const&) = delete;
    ~TAutoResetEvent() override;

    /// Raises what TEvent::Signal raises.
    void Signal() const override { m_base.Signal(); }
    /// Asking takes the signal: the next one who asks is told no.
    [[nodiscard]] bool IsSet() const noexcept override { return m_base.IsSet(); }
    bool Wait(std::chrono::milliseconds timeout) const noexcept override { return m_base.Wait(timeout); }
    bool Wait() const noexcept override { return m_base.Wait(); }
    void Reset() const noexcept override { m_base.Reset(); }
    void AddOnSignalCallback(void* key, std::function<void()> callback) const override;
    void RemoveOnSignalCallback(void* key) const override;
    /// Whether a wait would succeed at once; takes nothing.
    [[nodiscard]] bool Peek() const noexcept { return m_base.Peek(); }

private:
    friend class qvxsys::sync::ExactWait;
    mutable qvxsys::detail::TEventBase<true> m_base;
};

/// Set by the last of `count` signals, until it is reset. Signals are counted without a lower bound: one more after the
/// last leaves it set and begins another round of 4,294,967,296. With a count of 0 it is never set by fewer than that
/// many. 56 bytes.
class QVXSYS_API TCountdownEvent final : public IEvent
{
public:
    /// Set by the last of `count` signals.
    explicit TCountdownEvent(unsigned int count) noexcept : m_remaining(count), m_initial(count) {}
    TCountdownEvent(TCountdownEvent const&) = delete;
    TCountdownEvent& operator=(TCountdownEvent const&) = delete;
    ~TCountdownEvent() override;

    /// Counts; the last signal sets the event and runs the callbacks. Other signals and Reset wait meanwhile.
    void Signal() const override;
    [[nodiscard]] bool IsSet() const noexcept override { return m_event.IsSet(); }
    bool Wait(std::chrono::milliseconds timeout) const noexcept override { return m_event.Wait(timeout); }
    bool Wait() const noexcept override { return m_event.Wait(); }
    /// Clears the event and begins to count anew.
    void Reset() const noexcept override;
    void AddOnSignalCallback(void* key, std::function<void()> callback) const override;
    void RemoveOnSignalCallback(void* key) const override;

private:
    TEvent m_event;
    mutable unsigned int m_remaining QVXSYS_GUARDED_BY(m_mutex);
    unsigned int const m_initial;
    mutable TRecursiveMutex m_mutex;
};

/// A manual-reset event with children: its signal is passed on to them, and by them to theirs. A child keeps its own
/// state: it is not reset with its parent. Shared by RefCntPtr; a parent holds a reference to each child.
///
/// Signal goes depth first, children in the order of their addresses, on the calling thread, with the lists of children
/// locked from the top down to where it is. It uses no stack for the depth, nor does destroying a tree. Signalling a
/// tree takes O(n log n) in its events; an event that is reached by several ways is signalled by each. A ring is
/// signalled once around; its events keep each other alive until one is removed from its parent. Two threads must not
/// signal a ring at once: each would wait for the lists that the other has locked.
///
/// Callbacks may add and remove children of any event that the same thread is signalling: those added to a set event
/// are signalled by Add, those removed in time not at all.
class QVXSYS_API TCancelEvent final : public RefCntObject, public IEvent
{
public:
    TCancelEvent() noexcept;

    /// Sets this event, runs its callbacks, then signals every child. A null child raises the logic assertion "m_ptr".
    /// What a callback throws leaves Signal; the events behind it are not signalled.
    void Signal() const override;
    [[nodiscard]] bool IsSet() const noexcept override { return m_base.IsSet(); }
    bool Wait(std::chrono::milliseconds timeout) const noexcept override { return m_base.Wait(timeout); }
    bool Wait() const noexcept override { return m_base.Wait(); }
    void Reset() const noexcept override { m_base.Reset(); }
    void AddOnSignalCallback(void* key, std::function<void()> callback) const override;
    void RemoveOnSignalCallback(void* key) const override;

    /// Makes `child` a child of this event. If this event is set, signals the child at once. Raises the logic
    /// assertion "Attempted to insert duplicate event." when it is one already. O(log n).
    void Add(RefCntPtr<TCancelEvent> child) const;
    /// Detaches a child; raises the logic assertion "it != m_childEvents.end()" when it is none. O(log n).
    void Remove(RefCntPtr<TCancelEvent> child) const;

private:
    class Traversal;
    using Children = std::set<RefCntPtr<TCancelEvent>, std::less<>>;

    ~TCancelEvent() override;

    mutable qvxsys::detail::TEventBase<false> m_base;
    mutable Children m_childEvents QVXSYS_GUARDED_BY(m_childMutex);
    mutable TRecursiveMutex m_childMutex;
    /// The traversal of the thread that holds m_childMutex that is among the children; the innermost of nested ones.
    mutable Traversal const* m_traversal QVXSYS_GUARDED_BY(m_childMutex) = nullptr;
};

static_assert(sizeof(TEvent) == 24 && sizeof(TAutoResetEvent) == 24 && sizeof(TCountdownEvent) == 56);
static_assert(sizeof(TCancelEvent) == 112);

/// Waits until every event has been set, each at some time since the call began, not necessarily all at once. An
/// auto-reset event that is set when the call begins is used up and does not count; one that is signalled later counts
/// if this call is first to take its signal, and never again if another was first. No events: false after the timeout.
/// A null pointer among the events raises the logic assertion "event != nullptr"; when its hook returns: false.
QVXSYS_API bool WaitForAll(std::vector<IEvent*> const& events, std::chrono::milliseconds timeout);
/// Waits until an event is set, with the same rules for auto-reset events. All events are looked at, and the signals of
/// all auto-reset events taken that are set when the call begins.
QVXSYS_API bool WaitForAny(std::vector<IEvent*> const& events, std::chrono::milliseconds timeout);
/// Also gives the index in `events` of the event that was last to count; of several that are set when the call begins
/// the one with the highest index. Left alone when the result is false.
QVXSYS_API bool WaitForAny(std::vector<IEvent*> const& events, std::chrono::milliseconds timeout, unsigned int& index);

/// Waits until an event is set and gives the lowest index of those that are; empty when the time is over. A signal of
/// an auto-reset event is taken only from the event whose index is returned. No events: empty after the timeout. A null
/// pointer among the events as above.
[[nodiscard]] QVXSYS_API std::optional<std::size_t> WaitForAnyExact(std::span<IEvent* const> events,
                                                                    std::chrono::milliseconds timeout);
/// Waits until all events are seen set in one pass over them, and takes the signals of all auto-reset events then, and
/// of none before; false when the time is over. While it takes them, an auto-reset event may seem unset to others for
/// an instant although it remains set in the end. An event that is named twice counts once. No events: true at once. A
/// null pointer among the events as above.
[[nodiscard]] QVXSYS_API bool WaitForAllExact(std::span<IEvent* const> events, std::chrono::milliseconds timeout);
