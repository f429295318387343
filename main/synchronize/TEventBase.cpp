#include <mutex>

#include <qvxsys/LogicException.h>
#include <qvxsys/TEvent.h>
#include <qvxsys/TSystem.h>

#include "Deadlines.h"
#include "EventCallbacks.h"
#include "LogicAssert.h"
#include "Waiting.h"

namespace qvxsys::detail {

using sync::SystemParking;

namespace {

constexpr char const* kFile = "qvxsys/main/synchronize/TEventBase_win";
constexpr int kSetLine = 59;
constexpr int kTimeoutLine = 71;

/// Counts a signaller out at the end of the scope.
class CountedSignaller
{
public:
    explicit CountedSignaller(EventWord* word) noexcept : m_word(word) {}
    CountedSignaller(CountedSignaller const&) = delete;
    CountedSignaller& operator=(CountedSignaller const&) = delete;
    ~CountedSignaller()
    {
        if (m_word != nullptr) {
            sync::LeaveSignallers<SystemParking>(*m_word);
        }
    }

private:
    EventWord* const m_word;
};

/// Raised at once, while the system's last error is that of the wake-up.
void ThrowNotSet()
{
    ThrowLogicException(kFile, kSetLine, ("SetEvent() failed with error: " + GetLastErrorString()).c_str());
}

} // namespace

template<bool AutoReset>
void TEventBase<AutoReset>::SignalSlowly()
{
    // What is destroyed last need not find the event alive.
    struct Removed : EventCallbacks::Garbage
    {
        Removed() = default;
        Removed(Removed const&) = delete;
        Removed& operator=(Removed const&) = delete;
        ~Removed() { KeepRemoved::Hand(*this); }
    } garbage;
    sync::DeferredWakes const wakes;
    // A signal from within a callback of this event is covered by the outer one.
    EventCallbacks* callbacks = m_callbacks.load(std::memory_order_acquire);
    bool const nested =
        callbacks != nullptr && (m_word.Load() & EventWord::kCallbacks) != 0 && callbacks->mutex.IsHeldByThisThread();
    bool refused = false;
    std::uint64_t const before = sync::SetAndWake<SystemParking, AutoReset>(m_word, !nested, refused);
    bool const call = (before & EventWord::kCallbacks) != 0;
    CountedSignaller const counted(call && !nested ? &m_word : nullptr);
    if (refused) {
        ThrowNotSet();
    }
    if (call) {
        callbacks = m_callbacks.load(std::memory_order_acquire);
        std::lock_guard const lock(callbacks->mutex);
        callbacks->Run(garbage);
    }
}

template<bool AutoReset>
void TEventBase<AutoReset>::SignalWithoutCallbacks()
{
    bool refused = false;
    sync::SetAndWake<SystemParking, AutoReset>(m_word, false, refused);
    if (refused) {
        ThrowNotSet();
    }
}

template<bool AutoReset>
bool TEventBase<AutoReset>::WaitSlowly(long long milliseconds) noexcept
{
    if (milliseconds < 0) {
        ThrowLogicException(kFile, kTimeoutLine, "timeout.count() >= 0");
        return IsSet();
    }
    sync::Deadline const deadline = sync::DeadlineIn(milliseconds);
    if constexpr (AutoReset) {
        return sync::WaitAuto<SystemParking>(m_word, deadline) == sync::Waited::Success;
    } else {
        return sync::WaitManual<SystemParking>(m_word, deadline) == sync::Waited::Success;
    }
}

template<bool AutoReset>
void TEventBase<AutoReset>::AddOnSignalCallback(void* key, std::function<void()>&& callback)
{
    EventCallbacks* callbacks = m_callbacks.load(std::memory_order_acquire);
    if (callbacks == nullptr) {
        auto fresh = std::make_unique<EventCallbacks>();
        if (m_callbacks.compare_exchange_strong(callbacks, fresh.get(), std::memory_order_acq_rel)) {
            callbacks = fresh.release();
        }
    }
    EventCallbacks::Garbage garbage;
    std::lock_guard const lock(callbacks->mutex);
    callbacks->Put(key, std::move(callback), garbage);
    m_word.Mark(EventWord::kCallbacks);
}

template<bool AutoReset>
void TEventBase<AutoReset>::RemoveOnSignalCallback(void* key)
{
    EventCallbacks* const callbacks = m_callbacks.load(std::memory_order_acquire);
    if (callbacks == nullptr) {
        return;
    }
    EventCallbacks::Garbage garbage;
    std::lock_guard const lock(callbacks->mutex);
    callbacks->Remove(key, garbage);
    if (callbacks->IsEmpty()) {
        m_word.Unmark(EventWord::kCallbacks);
    }
}

template<bool AutoReset>
void TEventBase<AutoReset>::Destroy() noexcept
{
    std::unique_ptr<EventCallbacks> const callbacks(m_callbacks.load(std::memory_order_acquire));
    if (callbacks != nullptr && callbacks->mutex.IsHeldByThisThread()) {
        ThrowLogicException(__FILE__, __LINE__, "an event is not destroyed by its own callback");
        std::terminate();
    }
    sync::AwaitSignallers<SystemParking>(m_word);
}

template class TEventBase<false>;
template class TEventBase<true>;

} // namespace qvxsys::detail
