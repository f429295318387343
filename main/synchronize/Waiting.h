#pragma once
// How threads wait for the words of SyncWords.h, over any parking (see Parking.h). The loops have one shape: spin a
// little, announce a sleeper in the word, then sleep and look again until the word says yes or the time is up. Who
// gives up looks one last time in the same atomic step that takes back the announcement, so no signal is lost on it.

#include <thread>

#include <qvxsys/SyncWords.h>

#include "Parking.h"
#include "Spinning.h"

namespace qvxsys::sync {

using qvxsys::detail::EventWord;
using qvxsys::detail::LockWord;
using qvxsys::detail::SemaphoreWord;
using qvxsys::detail::WordHalf;

enum class Waited { Success, TimedOut, Refused };

/// Who wants a lock looks seldom: each look takes the lock's cache line from the holder, and two threads that both look
/// as often as they can get half as much done as one that is left alone for some turns.
inline constexpr SpinPace kLockPace{.most = 32, .first = 8};
inline constexpr SpinPace kEventPace{.most = 4};

/// Takes the lock. When the system refuses to let the thread sleep, it yields instead.
template<class Parking>
void LockContended(LockWord& word) noexcept
{
    if (SpinUntil(kLockPace, [&word] { return word.IsFree() && word.TryAcquire(); })) {
        return;
    }
    while (!word.AcquireContended()) {
        if (Parking::Park(word.Address(), LockWord::kContended, {}) == Parked::Refused) {
            std::this_thread::yield();
        }
    }
}

template<class Parking>
Waited AcquireSlowly(SemaphoreWord& word, Deadline const& deadline) noexcept
{
    if (SpinUntil(kEventPace, [&word] { return word.TryAcquire(); })) {
        return Waited::Success;
    }
    word.Announce();
    for (;;) {
        if (word.TakeAsSleeper()) {
            return Waited::Success;
        }
        Parked const parked = Parking::Park(word.Address(), 0, deadline);
        if (parked != Parked::Awake) {
            if (word.TakeAsSleeper()) {
                return Waited::Success;
            }
            word.Leave();
            return parked == Parked::TimedOut ? Waited::TimedOut : Waited::Refused;
        }
    }
}

inline std::uint32_t LowHalf(std::uint64_t word) noexcept
{
    return static_cast<std::uint32_t>(word);
}

/// Waits for a manual-reset event.
template<class Parking>
Waited WaitManual(EventWord& word, Deadline const& deadline) noexcept
{
    std::uint64_t seen = word.Load();
    auto const changes = EventWord::Changes(seen);
    auto const released = [&seen, changes] {
        return (seen & EventWord::kSet) != 0 || EventWord::Changes(seen) != changes;
    };
    auto const look = [&] {
        seen = word.Load();
        return released();
    };
    if (released() || SpinUntil(kEventPace, look)) {
        return Waited::Success;
    }
    for (;;) {
        while (!released() && EventWord::Sleepers(seen) == 0) {
            if (word.Change(seen, seen + EventWord::kSleeper)) {
                seen += EventWord::kSleeper;
            }
        }
        if (released()) {
            return Waited::Success;
        }
        Parked const parked = Parking::Park(word.Address(), LowHalf(seen), deadline);
        if (look()) {
            return Waited::Success;
        }
        if (parked != Parked::Awake) {
            return parked == Parked::TimedOut ? Waited::TimedOut : Waited::Refused;
        }
    }
}

/// Announces a sleeper of an auto-reset event. False: there are as many as the word can count.
inline bool AnnounceAuto(EventWord& word, std::uint64_t& seen) noexcept
{
    while (EventWord::Sleepers(seen) != EventWord::kMostSleepers && (seen & EventWord::kSet) == 0) {
        if (word.Change(seen, seen + EventWord::kSleeper)) {
            seen += EventWord::kSleeper;
            return true;
        }
    }
    return false;
}

/// A sleeper of an auto-reset event leaves, with a grant if there is one for it. Grants are for those who were asleep
/// when they were given, that is, for whom the change count is another than `since`, when they announced themselves:
/// else the signaller itself, if it waits next, could take back what it has given. True: with a grant.
inline bool LeaveAuto(EventWord& word, std::uint64_t& seen, std::uint32_t since, bool onlyWithGrant) noexcept
{
    for (;;) {
        bool const granted = EventWord::Grants(seen) != 0 && EventWord::Changes(seen) != since;
        if (!granted && onlyWithGrant) {
            return false;
        }
        if (word.Change(seen, seen - EventWord::kSleeper - (granted ? EventWord::kGrant : 0))) {
            return granted;
        }
    }
}

/// Waits for an auto-reset event and takes its signal.
template<class Parking>
Waited WaitAuto(EventWord& word, Deadline const& deadline) noexcept
{
    if (word.TryTake() || SpinUntil(kEventPace, [&word] { return word.IsSet() && word.TryTake(); })) {
        return Waited::Success;
    }
    std::uint64_t seen = word.Load();
    while (!AnnounceAuto(word, seen)) {
        if (word.TryTake()) {
            return Waited::Success;
        }
        if (EventWord::Sleepers(word.Load()) == EventWord::kMostSleepers) {
            // Too many to be told one by one: this one asks every millisecond.
            auto const now = std::chrono::steady_clock::now();
            if (deadline && now >= *deadline) {
                return Waited::TimedOut;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        seen = word.Load();
    }
    auto const since = EventWord::Changes(seen);
    for (;;) {
        if (LeaveAuto(word, seen, since, true)) {
            return Waited::Success;
        }
        Parked const parked = Parking::Park(word.Address(), LowHalf(seen), deadline);
        seen = word.Load();
        if (parked != Parked::Awake) {
            if (LeaveAuto(word, seen, since, false)) {
                return Waited::Success;
            }
            return parked == Parked::TimedOut ? Waited::TimedOut : Waited::Refused;
        }
        if (EventWord::Grants(seen) != 0 && EventWord::Changes(seen) == since) {
            // The wake-up was for one who is asleep for longer; the system may wake in another order.
            Parking::WakeOne(word.Address());
        }
    }
}

/// Sets the event and wakes who must be woken. Returns the word before; with callbacks in it and `count`, the caller is
/// counted among the signallers. `refused` becomes true when the system refused to wake.
template<class Parking, bool AutoReset>
std::uint64_t SetAndWake(EventWord& word, bool count, bool& refused) noexcept
{
    std::uint64_t seen = word.Load();
    for (;;) {
        bool const counts = count && (seen & EventWord::kCallbacks) != 0;
        if (counts && EventWord::Signallers(seen) == EventWord::kMostSignallers) {
            std::this_thread::yield();
            seen = word.Load();
        } else if (word.Change(seen, EventWord::AfterSet<AutoReset>(seen) + (counts ? EventWord::kSignaller : 0))) {
            break;
        }
    }
    // From here on the event may be gone unless the caller was counted; its address is enough.
    if (EventWord::MustWake<AutoReset>(seen)) {
        refused = !(AutoReset ? Parking::WakeOne(word.Address()) : Parking::WakeAll(word.Address()));
    }
    return seen;
}

/// Waits until every signaller has run its callbacks, before the event is destroyed.
template<class Parking>
void AwaitSignallers(EventWord& word) noexcept
{
    if (EventWord::Signallers(word.Load()) == 0) {
        return;
    }
    word.Mark(EventWord::kDying);
    for (std::uint64_t seen = word.Load(); EventWord::Signallers(seen) != 0; seen = word.Load()) {
        Parking::Park(word.Address(WordHalf::High), static_cast<std::uint32_t>(seen >> 32), {});
    }
}

/// The other side of AwaitSignallers.
template<class Parking>
void LeaveSignallers(EventWord& word) noexcept
{
    if (word.LeaveSignallers()) {
        Parking::WakeAll(word.Address(WordHalf::High));
    }
}

} // namespace qvxsys::sync
