#include <qvxsys/TEvent.h>

#include <mutex>
#include <utility>
#include <vector>

#include <qvxsys/LogicException.h>

#include "EventCallbacks.h"

using qvxsys::detail::KeepRemoved;

namespace {

constexpr char const* kFile = "qvxsys/main/synchronize/TEvent";
constexpr int kDuplicateLine = 103;
constexpr int kUnknownLine = 114;

} // namespace

IEvent::~IEvent() = default;

TEvent::~TEvent() = default;

void TEvent::AddOnSignalCallback(void* key, std::function<void()> callback) const
{
    m_base.AddOnSignalCallback(key, std::move(callback));
}

void TEvent::RemoveOnSignalCallback(void* key) const
{
    m_base.RemoveOnSignalCallback(key);
}

TAutoResetEvent::~TAutoResetEvent() = default;

void TAutoResetEvent::AddOnSignalCallback(void* key, std::function<void()> callback) const
{
    m_base.AddOnSignalCallback(key, std::move(callback));
}

void TAutoResetEvent::RemoveOnSignalCallback(void* key) const
{
    m_base.RemoveOnSignalCallback(key);
}

TCountdownEvent::~TCountdownEvent()
{
    // The signal that set it may still hold the lock.
    std::lock_guard const lock(m_mutex);
}

void TCountdownEvent::Signal() const
{
    KeepRemoved const untilUnlocked;
    TLockScope const lock(m_mutex);
    --m_remaining;
    if (m_remaining == 0) {
        m_event.Signal();
    }
}

void TCountdownEvent::Reset() const noexcept
{
    TLockScope const lock(m_mutex);
    m_remaining = m_initial;
    m_event.Reset();
}

void TCountdownEvent::AddOnSignalCallback(void* key, std::function<void()> callback) const
{
    m_event.AddOnSignalCallback(key, std::move(callback));
}

void TCountdownEvent::RemoveOnSignalCallback(void* key) const
{
    m_event.RemoveOnSignalCallback(key);
}

/// A walk down a tree of events that signals each. The way from the root to where it is lies on the heap, and every
/// event on it has its list of children locked. The next child is found by the address of the last one, since callbacks
/// may change any list on the way.
class TCancelEvent::Traversal
{
public:
    Traversal() = default;
    Traversal(Traversal const&) = delete;
    Traversal& operator=(Traversal const&) = delete;
    ~Traversal()
    {
        while (!m_way.empty()) {
            Leave();
        }
    }

    void Signal(TCancelEvent const& root) QVXSYS_NO_THREAD_SAFETY_ANALYSIS
    {
        Enter(&root);
        while (!m_way.empty()) {
            Step& step = m_way.back();
            auto const& children = step.event->m_childEvents;
            auto const next = step.entered ? children.upper_bound(step.last) : children.begin();
            if (next == children.end()) {
                Leave();
                continue;
            }
            step.entered = true;
            step.last = *next;
            if (TCancelEvent const* const child = step.last.operator->()) {
                Enter(child);
            }
        }
    }

private:
    struct Step
    {
        TCancelEvent const* event;
        RefCntPtr<TCancelEvent> last; ///< the child that was signalled last, kept alive meanwhile
        Traversal const* outer;       ///< that this one interrupts
        bool entered;
    };

    /// Signals the event, and begins with its children unless this way leads through it already. A signal from within
    /// a callback is a traversal of its own: it goes to every child, as any signal does.
    void Enter(TCancelEvent const* event) QVXSYS_NO_THREAD_SAFETY_ANALYSIS
    {
        event->m_base.Signal();
        m_way.push_back({event, {}, nullptr, false});
        event->m_childMutex.Lock();
        if (event->m_traversal == this) {
            event->m_childMutex.Unlock();
            m_way.pop_back();
        } else {
            m_way.back().outer = std::exchange(event->m_traversal, this);
        }
    }

    void Leave() QVXSYS_NO_THREAD_SAFETY_ANALYSIS
    {
        TCancelEvent const* const event = m_way.back().event;
        event->m_traversal = m_way.back().outer;
        event->m_childMutex.Unlock();
        m_way.pop_back();
    }

    std::vector<Step> m_way;
};

TCancelEvent::TCancelEvent() noexcept = default;

/// Events that only this one keeps alive are taken apart here, one by one, instead of each within the destructor of the
/// one above it.
TCancelEvent::~TCancelEvent() QVXSYS_NO_THREAD_SAFETY_ANALYSIS
{
    Children doomed = std::move(m_childEvents);
    while (!doomed.empty()) {
        RefCntPtr<TCancelEvent> const event = std::move(doomed.extract(doomed.begin()).value());
        if (event.use_count() == 1) {
            doomed.merge(event->m_childEvents);
        }
    }
}

void TCancelEvent::Signal() const
{
    // Whoever waits for this event may drop the last reference of others to it when it is set.
    RefCntPtr<TCancelEvent const> const self(UseCount() != 0 ? this : nullptr);
    KeepRemoved const untilUnlocked;
    Traversal().Signal(*this);
}

void TCancelEvent::AddOnSignalCallback(void* key, std::function<void()> callback) const
{
    m_base.AddOnSignalCallback(key, std::move(callback));
}

void TCancelEvent::RemoveOnSignalCallback(void* key) const
{
    m_base.RemoveOnSignalCallback(key);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface hands handles over by value
void TCancelEvent::Add(RefCntPtr<TCancelEvent> child) const
{
    TLockScope const lock(m_childMutex);
    if (!m_childEvents.insert(child).second) {
        ThrowLogicException(kFile, kDuplicateLine, "Attempted to insert duplicate event.");
        return;
    }
    if (IsSet()) {
        if (TCancelEvent const* const added = child.operator->()) {
            added->Signal();
        }
    }
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface hands handles over by value
void TCancelEvent::Remove(RefCntPtr<TCancelEvent> child) const
{
    Children::node_type removed; // dropped after the lock
    TLockScope const lock(m_childMutex);
    auto const it = m_childEvents.find(child);
    if (it == m_childEvents.end()) {
        ThrowLogicException(kFile, kUnknownLine, "it != m_childEvents.end()");
        return;
    }
    removed = m_childEvents.extract(it);
}
