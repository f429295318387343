#pragma once
// Cooperative cancellation. A thread that runs a task has a current cancellation event; work that takes long asks it
// now and then, and nothing is interrupted otherwise.
//
//     AsyncTask::Future<int> sum = AsyncTask::Run(AsyncTask::Launch::PoolQueued, [] {
//         int result = 0;
//         for (int i = 0; i < 1'000'000; ++i) {
//             AsyncTask::Cancel::ThrowIfCancelled();          // leaves by a CancelException
//             result += Step(i);
//         }
//         return result;
//     });
//     sum.Cancel();
//
// Tasks that the library runs have an event; a thread of your own gets one by Cancel::Create or a CancelEventSetter.
// To ask costs some nanoseconds.
//
// A thread's current event is used by that thread alone; the event itself may be signalled from any thread, and its
// callbacks run there.

#include <list>
#include <memory>

#include <qvxsys/AsyncTaskTls.h>
#include <qvxsys/Platform.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/ReferenceCount.h>
#include <qvxsys/SharedState.h>
#include <qvxsys/TEvent.h>

namespace AsyncTask {

/// A task was cancelled.
class QVXSYS_API CancelException : public QuorvexException
{
public:
    /// With the message "Canceled".
    explicit CancelException(TError::ErrorInfo const& info);
    CancelException(TStringCore const& message, TError::ErrorInfo const& info, bool isOrphanQuery = false);
    CancelException(std::list<TStringCore> const& messages, TError::ErrorInfo const& info);
    CancelException(CancelException const&) = default;
    CancelException& operator=(CancelException const&) = default;
    ~CancelException() override;

    [[nodiscard]] QuorvexException* Clone() const override;
    [[noreturn]] void Throw() const override;

    /// A mark for the program's own use, which clones and rethrown copies keep.
    [[nodiscard]] bool IsOrphanQuery() const noexcept { return m_isOrphanQuery; }
    /// Sets the mark.
    void SetIsOrphanQuery(bool isOrphanQuery) noexcept { m_isOrphanQuery = isOrphanQuery; }

private:
    bool m_isOrphanQuery = false;
};

/// The calling thread's current cancellation event.
class QVXSYS_API Cancel
{
public:
    class CancelEventSetter;
    class SuppressParentCancel;

    Cancel() = delete;

    /// Gives the thread a new event. If it has one, raises the logic assertion
    /// "TLS::Get().GetCancelEvent() == nullptr" (and, if its hook returns, leaves it).
    static void Create();
    /// The event, null if there is none.
    [[nodiscard]] static RefCntPtr<TCancelEvent> Get() noexcept;
    /// The event; without one, raises the logic assertion "nullptr != ptr". If its hook returns, the result is an event
    /// that nobody uses.
    [[nodiscard]] static TCancelEvent& GetNonNull();
    /// Gives the thread an event that it has none, or takes away (null) the one that it has. An event over another
    /// raises the logic assertion "!newCancelEvent", and has taken the other's place: clear first.
    static void Set(RefCntPtr<TCancelEvent> newCancelEvent);
    /// Throws a CancelException, "Canceled", code 0x94A93C32, source 4, if the event is set. Without an event raises
    /// the logic assertion "m_ptr" (and returns if its hook does).
    static void ThrowIfCancelled();
    /// The exception that ThrowIfCancelled throws.
    [[nodiscard]] static CancelException MakeException();
};

/// Has another current event during a scope; null for none. To be used strictly nested.
class QVXSYS_API Cancel::CancelEventSetter
{
public:
    /// Sets the thread's event.
    explicit CancelEventSetter(RefCntPtr<TCancelEvent> event);
    CancelEventSetter(CancelEventSetter const&) = default;
    CancelEventSetter& operator=(CancelEventSetter const&) = default;
    virtual ~CancelEventSetter() noexcept(false);

protected:
    [[nodiscard]] RefCntPtr<TCancelEvent> const& Previous() const noexcept { return m_previous; }

private:
    RefCntPtr<TCancelEvent> m_previous;
};

/// Has a new event during a scope, which the cancellation of the thread's own event does not reach. At the end of the
/// scope the inner event becomes a child of the thread's own, so that a cancellation that came meanwhile reaches what
/// still runs under it, and the next ThrowIfCancelled.
///
/// The destructor raises the logic assertion "m_ptr" when the thread had no event.
class QVXSYS_API Cancel::SuppressParentCancel : public CancelEventSetter
{
public:
    SuppressParentCancel();
    SuppressParentCancel(SuppressParentCancel const&) = default;
    SuppressParentCancel& operator=(SuppressParentCancel const&) = default;
    ~SuppressParentCancel() noexcept(false) override;

    /// Resets the thread's own event: a cancellation that came meanwhile is forgotten.
    void ClearPendingCancel();
};

/// Runs a task in a caller's place: during the scope the thread has a new event, and a cancellation of `outer` calls
/// the state's Cancel(), at once if it has been signalled before. Afterwards the thread's event is `outer` (restore) or
/// none.
///
/// Without `restore` the thread must have none before: see Cancel::Create.
class QVXSYS_API ScopedCancelImpersonation
{
public:
    /// See the class.
    ScopedCancelImpersonation(bool restore, RefCntPtr<TCancelEvent> outer,
                              std::shared_ptr<SharedStateBase> const& state);
    ScopedCancelImpersonation(ScopedCancelImpersonation const&) = delete;
    ScopedCancelImpersonation& operator=(ScopedCancelImpersonation const&) = delete;
    ~ScopedCancelImpersonation();

private:
    RefCntPtr<TCancelEvent> m_outer;
    bool m_restore;
};

} // namespace AsyncTask
