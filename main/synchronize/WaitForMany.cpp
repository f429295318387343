// Waiting for several events of any kinds: each tells by a callback.

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <memory>
#include <typeinfo>

#include <qvxsys/TEvent.h>

#include "Deadlines.h"
#include "EventCallbacks.h"
#include "LogicAssert.h"
#include "Waiting.h"

namespace qvxsys::sync {

namespace {

bool AllThere(std::span<IEvent* const> events)
{
    auto const missing = std::ranges::find(events, nullptr);
    if (missing == events.end()) {
        return true;
    }
    IEvent* const event = *missing;
    QVX_LOGIC_ASSERT(event != nullptr);
    return false;
}

/// Whether it is the kind that is waited for most. Two addresses of type information mean nothing when they differ;
/// when they are one, the types are.
bool IsTEvent(IEvent const& event) noexcept
{
    return &typeid(event) == &typeid(TEvent);
}

/// The event as an auto-reset event, or null. The class is final, so that comparing types is enough, which takes a
/// fraction of a dynamic_cast's time.
TAutoResetEvent* AsAutoReset(IEvent& event) noexcept
{
    return !IsTEvent(event) && typeid(event) == typeid(TAutoResetEvent) ? static_cast<TAutoResetEvent*>(&event)
                                                                        : nullptr;
}

/// event.IsSet(), mostly without a virtual call.
bool IsSet(IEvent& event)
{
    if (IsTEvent(event)) [[likely]] {
        return static_cast<TEvent&>(event).IsSet();
    }
    return event.IsSet();
}

/// An auto-reset event counts only for who takes its signal. By now IsSet has taken the one that was there.
bool Counts(IEvent& event)
{
    TAutoResetEvent const* const autoReset = AsAutoReset(event);
    return autoReset == nullptr || autoReset->IsSet();
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

/// A number that callbacks increase and one thread waits for to change. The lowest bit of the word says that the thread
/// may be asleep: who increases the number learns that in the same step, and afterwards uses the address only.
class Notice
{
public:
    [[nodiscard]] std::uint32_t Count() const noexcept { return m_word.load(std::memory_order_acquire) & ~kAsleep; }
    void Give() noexcept
    {
        if ((m_word.fetch_add(kOne, std::memory_order_acq_rel) & kAsleep) != 0) {
            DeferredWakes::WakeAll(&m_word);
        }
    }
    /// False when the time is over, or the system refuses to let the thread sleep.
    [[nodiscard]] bool AwaitChange(std::uint32_t seen, Deadline const& deadline) noexcept
    {
        auto const changed = [this, seen] { return Count() != seen; };
        if (changed()) {
            // It took no longer than to register with the events.
            RecordSpin(true);
            return true;
        }
        if (SpinUntil(kEventPace, changed)) {
            return true;
        }
        // Relaxed is enough: each Give, another step on the same word, comes either before this one, and then Park sees
        // another number, or after it, and then sees the mark.
        m_word.fetch_or(kAsleep, std::memory_order_relaxed);
        Parked parked = Parked::Awake;
        while (!changed() && parked == Parked::Awake) {
            parked = SystemParking::Park(&m_word, seen | kAsleep, deadline);
        }
        // Who read the mark meanwhile wakes nobody, or the next one who sleeps at this address: for nothing, which all
        // sleepers allow for.
        m_word.fetch_and(~kAsleep, std::memory_order_relaxed);
        return changed();
    }

private:
    static constexpr std::uint32_t kAsleep = 1;
    static constexpr std::uint32_t kOne = 2;

    std::atomic<std::uint32_t> m_word = 0;
};

/// What WaitForAll or WaitForAny finds before it registers callbacks, and needs no memory for.
class FirstLook
{
public:
    explicit FirstLook(std::size_t required) noexcept : m_missing(static_cast<std::ptrdiff_t>(required)) {}

    [[nodiscard]] static bool LooksAtAll(std::span<IEvent* const> events) noexcept { return events.size() <= kMost; }
    /// Looks at events of the kind that is waited for most, whose state does not change by that. False when others are
    /// among them, or null pointers: nothing has been found out then.
    [[nodiscard]] bool LookAtTEvents(std::span<IEvent* const> events) noexcept
    {
        if (!LooksAtAll(events)) {
            return false;
        }
        std::type_info const* const kind = &typeid(TEvent);
        std::uint64_t set = 0;
        for (std::size_t i = events.size(); i-- > 0;) {
            IEvent const* const event = events[i];
            if (event == nullptr || &typeid(*event) != kind) [[unlikely]] {
                return false;
            }
            set = 2 * set + (static_cast<TEvent const*>(event)->IsSet() ? 1 : 0);
        }
        if (set != 0) {
            m_claimed = set;
            m_index = static_cast<std::size_t>(std::bit_width(set)) - 1;
        }
        for (; set != 0; set &= set - 1) {
            --m_missing;
        }
        return true;
    }
    void Look(std::span<IEvent* const> events)
    {
        if (!LooksAtAll(events)) {
            return;
        }
        for (std::size_t i = 0; i < events.size(); ++i) {
            if (IsSet(*events[i])) [[unlikely]] {
                m_claimed |= std::uint64_t(1) << i;
                if (Counts(*events[i])) {
                    m_index = i;
                    --m_missing;
                }
            }
        }
    }
    /// Whether enough events have been found set. Of no events, none are.
    [[nodiscard]] bool IsEnough() const noexcept { return m_missing <= 0 && m_claimed != 0; }
    [[nodiscard]] bool HasClaimed(std::size_t i) const noexcept { return i < kMost && (m_claimed >> i & 1) != 0; }
    [[nodiscard]] std::ptrdiff_t Missing() const noexcept { return m_missing; }
    /// Of the last that counted.
    [[nodiscard]] std::size_t Index() const noexcept { return m_index; }

private:
    static constexpr std::size_t kMost = 64;

    std::ptrdiff_t m_missing;
    std::size_t m_index = 0;
    std::uint64_t m_claimed = 0;
};

/// One call of WaitForAll or WaitForAny that must wait: counts the events that were set, each at most once.
class CountingWait
{
public:
    CountingWait(std::span<IEvent* const> events, FirstLook const& look)
        : m_events(events), m_look(look), m_missing(look.Missing()), m_index(look.Index())
    {}
    CountingWait(CountingWait const&) = delete;
    CountingWait& operator=(CountingWait const&) = delete;
    ~CountingWait()
    {
        for (std::size_t i = 0; i < m_registered; ++i) {
            m_events[i]->RemoveOnSignalCallback(&m_slots[i]);
        }
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
            slot.claimed = m_look.HasClaimed(i);
            m_events[i]->AddOnSignalCallback(&slot, [&slot] { slot.wait->Claim(slot); });
            ++m_registered;
            if (!slot.claimed && IsSet(*m_events[i])) {
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
    FirstLook const m_look;
    /// Falls below 0 when more events count than are required.
    std::atomic<std::ptrdiff_t> m_missing;
    std::atomic<std::size_t> m_index;
    Notice m_enough;
    Slot* m_slots = nullptr;
    std::size_t m_registered = 0;
    std::array<Slot, 16> m_fewSlots;
    std::unique_ptr<Slot[]> m_manySlots;
};

/// What WaitForCount does when a look at events of the usual kind is not enough; `looked`: whether there was one.
[[gnu::noinline]] bool WaitForMore(std::span<IEvent* const> events, std::chrono::milliseconds timeout, FirstLook look,
                                   bool looked, unsigned int& index)
{
    if (!looked) {
        if (!AllThere(events)) {
            return false;
        }
        if (timeout.count() >= 0) {
            look.Look(events);
        }
        if (look.IsEnough()) {
            index = static_cast<unsigned int>(look.Index());
            return true;
        }
    }
    if (timeout.count() == 0 && FirstLook::LooksAtAll(events)) {
        return false;
    }
    CountingWait wait(events, look);
    if (!wait.Wait(DeadlineOf(timeout))) {
        return false;
    }
    index = static_cast<unsigned int>(wait.Index());
    return true;
}

bool WaitForCount(std::span<IEvent* const> events, std::chrono::milliseconds timeout, std::size_t required,
                  unsigned int& index)
{
    FirstLook look(required);
    bool const looked = timeout.count() >= 0 && look.LookAtTEvents(events);
    if (!look.IsEnough()) {
        return WaitForMore(events, timeout, look, looked, index);
    }
    index = static_cast<unsigned int>(look.Index());
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

    /// Calls `attempt` until it is true; false when the time is over. Nothing is registered and no clock read before
    /// the first attempt has failed.
    template<class Attempt>
    bool Until(std::chrono::milliseconds timeout, Attempt attempt)
    {
        if (timeout.count() < 0) {
            static_cast<void>(DeadlineOf(timeout));
        }
        if (attempt()) {
            return true;
        }
        if (timeout.count() <= 0) {
            return false;
        }
        Deadline const deadline = DeadlineOf(timeout);
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
            if (TAutoResetEvent* const autoReset = AsAutoReset(*m_events[index])) {
                TReadLockScope const lock(s_taking);
                if (autoReset->IsSet()) {
                    return true;
                }
            } else if (IsSet(*m_events[index])) {
                return true;
            }
        }
        return false;
    }

    [[nodiscard]] bool TakeAll() const
    {
        bool anyAutoReset = false;
        for (IEvent* const event : m_events) {
            TAutoResetEvent* const autoReset = AsAutoReset(*event);
            anyAutoReset = anyAutoReset || autoReset != nullptr;
            if (!(autoReset != nullptr ? IsThere(*autoReset) : IsSet(*event))) {
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
            TAutoResetEvent* const event = AsAutoReset(*m_events[i]);
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
            TAutoResetEvent* const event = AsAutoReset(*m_events[i]);
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
    bool const found = wait.Until(timeout, [&] { return wait.TakeFirst(index); });
    return found ? std::optional(index) : std::nullopt;
}

bool WaitForAllExact(std::span<IEvent* const> events, std::chrono::milliseconds timeout)
{
    if (!AllThere(events)) {
        return false;
    }
    ExactWait wait(events);
    return wait.Until(timeout, [&] { return wait.TakeAll(); });
}
