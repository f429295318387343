// Waiting for several events of any kinds: each tells by a callback.

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <memory>

#include <qvxsys/TEvent.h>

#include "Deadlines.h"
#include "EventCallbacks.h"
#include "LogicAssert.h"
#include "Waiting.h"

namespace qvxsys::sync {

namespace {

bool AllThere(std::span<IEvent* const> events)
{
    for (IEvent* const event : events) {
        QVX_LOGIC_ASSERT(event != nullptr);
        if (event == nullptr) {
            return false;
        }
    }
    return true;
}

/// A negative timeout ends the process, as it does in the events' own waits.
Deadline DeadlineOf(std::chrono::milliseconds timeout) noexcept
{
    constexpr char const* kFile = "qvxsys/main/synchronize/TEventBase_win";
    constexpr int kTimeoutLine = 71;
    if (timeout.count() < 0) {
        ThrowLogicException(kFile, kTimeoutLine, "timeout.count() >= 0");
        return DeadlineIn(0);
    }
    return DeadlineIn(timeout.count());
}

/// A number that callbacks increase and one thread waits for to change.
class Notice
{
public:
    [[nodiscard]] std::uint32_t Count() const noexcept { return m_count.load(std::memory_order_acquire); }
    /// Afterwards only the address is used.
    void Give() noexcept
    {
        m_count.fetch_add(1, std::memory_order_acq_rel);
        DeferredWakes::WakeAll(&m_count);
    }
    /// False when the time is over, or the system refuses to let the thread sleep.
    [[nodiscard]] bool AwaitChange(std::uint32_t seen, Deadline const& deadline) const noexcept
    {
        auto const changed = [this, seen] { return Count() != seen; };
        if (changed() || SpinUntil(kEventPauses, changed)) {
            return true;
        }
        Parked parked = Parked::Awake;
        while (!changed() && parked == Parked::Awake) {
            parked = SystemParking::Park(&m_count, seen, deadline);
        }
        return changed();
    }

private:
    std::atomic<std::uint32_t> m_count = 0;
};

/// One call of WaitForAll or WaitForAny: counts the events that were set, each at most once.
class CountingWait
{
public:
    CountingWait(std::span<IEvent* const> events, std::size_t required)
        : m_events(events), m_missing(static_cast<std::ptrdiff_t>(required))
    {}
    CountingWait(CountingWait const&) = delete;
    CountingWait& operator=(CountingWait const&) = delete;
    ~CountingWait()
    {
        for (std::size_t i = 0; i < m_registered; ++i) {
            m_events[i]->RemoveOnSignalCallback(&m_slots[i]);
        }
    }

    [[nodiscard]] static bool LooksAtAll(std::span<IEvent* const> events) noexcept { return events.size() <= kLooked; }

    /// True when enough events are set already. Needs no memory and registers nothing.
    bool Look()
    {
        if (!LooksAtAll(m_events)) {
            return false;
        }
        for (std::size_t i = 0; i < m_events.size(); ++i) {
            if (m_events[i]->IsSet()) {
                m_claimed |= std::uint64_t(1) << i;
                if (Counts(*m_events[i])) {
                    m_index.store(i, std::memory_order_relaxed);
                    --m_missing;
                }
            }
        }
        return m_missing <= 0 && !m_events.empty();
    }

    bool Wait(Deadline const& deadline)
    {
        m_slots = m_events.size() <= m_fewSlots.size()
                      ? m_fewSlots.data()
                      : (m_manySlots = std::make_unique<Slot[]>(m_events.size())).get();
        while (m_registered < m_events.size()) {
            std::size_t const i = m_registered;
            Slot& slot = m_slots[i];
            slot.wait = this;
            slot.claimed = i < kLooked && (m_claimed >> i & 1) != 0;
            m_events[i]->AddOnSignalCallback(&slot, [&slot] { slot.wait->Claim(slot); });
            ++m_registered;
            if (!slot.claimed && m_events[i]->IsSet()) {
                Claim(slot);
            }
        }
        return m_enough.AwaitChange(0, deadline);
    }

    [[nodiscard]] std::size_t Index() const noexcept { return m_index.load(std::memory_order_relaxed); }

private:
    struct Slot
    {
        CountingWait* wait;
        std::atomic<bool> claimed;
    };
    static constexpr std::size_t kLooked = 64;

    /// An auto-reset event counts only for who takes its signal. By now IsSet has taken the one that was there.
    static bool Counts(IEvent const& event)
    {
        auto const* const autoReset = dynamic_cast<TAutoResetEvent const*>(&event);
        return autoReset == nullptr || autoReset->IsSet();
    }

    void Claim(Slot& slot)
    {
        auto const i = static_cast<std::size_t>(&slot - m_slots);
        if (!slot.claimed.exchange(true) && Counts(*m_events[i])) {
            m_index.store(i, std::memory_order_relaxed);
            if (m_missing.fetch_sub(1) == 1) {
                m_enough.Give();
            }
        }
    }

    std::span<IEvent* const> const m_events;
    /// Falls below 0 when more events count than are required.
    std::atomic<std::ptrdiff_t> m_missing;
    std::atomic<std::size_t> m_index = 0;
    std::uint64_t m_claimed = 0;
    Notice m_enough;
    Slot* m_slots = nullptr;
    std::size_t m_registered = 0;
    std::array<Slot, 16> m_fewSlots;
    std::unique_ptr<Slot[]> m_manySlots;
};

bool WaitForCount(std::span<IEvent* const> events, std::chrono::milliseconds timeout, std::size_t required,
                  unsigned int& index)
{
    if (!AllThere(events)) {
        return false;
    }
    CountingWait wait(events, required);
    if (timeout.count() < 0 || !wait.Look()) {
        bool const onlyLook = timeout.count() == 0 && CountingWait::LooksAtAll(events);
        if (onlyLook || !wait.Wait(DeadlineOf(timeout))) {
            return false;
        }
    }
    index = static_cast<unsigned int>(wait.Index());
    return true;
}

} // namespace

/// One call of WaitForAnyExact or WaitForAllExact: callbacks tell that something was signalled, and the events are
/// looked at again.
class ExactWait
{
public:
    explicit ExactWait(std::span<IEvent* const> events) : m_events(events) {}
    ExactWait(ExactWait const&) = delete;
    ExactWait& operator=(ExactWait const&) = delete;
    ~ExactWait()
    {
        for (std::size_t i = 0; i < m_registered; ++i) {
            m_events[i]->RemoveOnSignalCallback(this);
        }
    }

    /// Calls `attempt` until it is true; false when the time is over.
    template<class Attempt>
    bool Until(Deadline const& deadline, Attempt attempt)
    {
        if (attempt()) {
            return true;
        }
        for (; m_registered < m_events.size(); ++m_registered) {
            m_events[m_registered]->AddOnSignalCallback(this, [this] { m_notice.Give(); });
        }
        for (;;) {
            std::uint32_t const seen = m_notice.Count();
            if (attempt()) {
                return true;
            }
            if (!m_notice.AwaitChange(seen, deadline)) {
                return attempt();
            }
        }
    }

    [[nodiscard]] bool TakeFirst(std::size_t& index) const
    {
        for (index = 0; index < m_events.size(); ++index) {
            if (auto* const autoReset = dynamic_cast<TAutoResetEvent*>(m_events[index])) {
                TReadLockScope const lock(s_taking);
                if (autoReset->IsSet()) {
                    return true;
                }
            } else if (m_events[index]->IsSet()) {
                return true;
            }
        }
        return false;
    }

    [[nodiscard]] bool TakeAll() const
    {
        bool anyAutoReset = false;
        for (IEvent* const event : m_events) {
            auto* const autoReset = dynamic_cast<TAutoResetEvent*>(event);
            anyAutoReset = anyAutoReset || autoReset != nullptr;
            if (!(autoReset != nullptr ? IsThere(*autoReset) : event->IsSet())) {
                return false;
            }
        }
        return !anyAutoReset || TakeAllAutoReset();
    }

private:
    /// Also when another wait has taken the signal and is about to give it back, of which nobody would tell this one.
    [[nodiscard]] static bool IsThere(TAutoResetEvent const& event)
    {
        if (event.Peek()) {
            return true;
        }
        TReadLockScope const lock(s_taking);
        return event.Peek();
    }
    /// All or none.
    [[nodiscard]] bool TakeAllAutoReset() const
    {
        TLockScope const lock(s_taking);
        for (std::size_t i = 0; i < m_events.size(); ++i) {
            auto* const event = dynamic_cast<TAutoResetEvent*>(m_events[i]);
            if (event != nullptr && IsFirst(i) && !event->IsSet()) {
                GiveBack(i);
                return false;
            }
        }
        return true;
    }
    void GiveBack(std::size_t end) const
    {
        for (std::size_t i = 0; i < end; ++i) {
            auto* const event = dynamic_cast<TAutoResetEvent*>(m_events[i]);
            if (event != nullptr && IsFirst(i)) {
                event->m_base.SignalWithoutCallbacks();
            }
        }
    }
    /// Whether the event is not named earlier.
    [[nodiscard]] bool IsFirst(std::size_t i) const
    {
        auto const earlier = m_events.first(i);
        return std::ranges::find(earlier, m_events[i]) == earlier.end();
    }

    /// Exact waits for all take signals under it, those for any share it: they do not see a signal that is taken and
    /// given back, of which nobody would tell them.
    static constinit TReadWriteLock s_taking;

    std::span<IEvent* const> const m_events;
    Notice m_notice;
    std::size_t m_registered = 0;
};

constinit TReadWriteLock ExactWait::s_taking;

} // namespace qvxsys::sync

using namespace qvxsys::sync;

bool WaitForAll(std::vector<IEvent*> const& events, std::chrono::milliseconds timeout)
{
    unsigned int index = 0;
    return WaitForCount(events, timeout, events.size(), index);
}

bool WaitForAny(std::vector<IEvent*> const& events, std::chrono::milliseconds timeout)
{
    unsigned int index = 0;
    return WaitForCount(events, timeout, 1, index);
}

bool WaitForAny(std::vector<IEvent*> const& events, std::chrono::milliseconds timeout, unsigned int& index)
{
    return WaitForCount(events, timeout, 1, index);
}

std::optional<std::size_t> WaitForAnyExact(std::span<IEvent* const> events, std::chrono::milliseconds timeout)
{
    if (!AllThere(events)) {
        return {};
    }
    std::size_t index = 0;
    ExactWait wait(events);
    bool const found = wait.Until(DeadlineOf(timeout), [&] { return wait.TakeFirst(index); });
    return found ? std::optional(index) : std::nullopt;
}

bool WaitForAllExact(std::span<IEvent* const> events, std::chrono::milliseconds timeout)
{
    if (!AllThere(events)) {
        return false;
    }
    ExactWait wait(events);
    return wait.Until(DeadlineOf(timeout), [&] { return wait.TakeAll(); });
}
