#pragma once
// Other parkings than the system's, to run the waiting algorithms over (contract: main/synchronize/Parking.h).

#include <atomic>
#include <condition_variable>
#include <list>
#include <mutex>
#include <random>
#include <thread>

#include "Parking.h"

/// Of the standard library's mutex and condition variables: slow, obviously right, never awake for nothing.
class ReferenceParking
{
public:
    using Parked = qvxsys::sync::Parked;

    static Parked Park(void const* address, std::uint32_t expected, qvxsys::sync::Deadline const& deadline) noexcept
    {
        std::unique_lock lock(s_mutex);
        if (static_cast<std::atomic<std::uint32_t> const*>(address)->load() != expected) {
            return Parked::Awake;
        }
        Sleeper self{address, false, {}};
        auto const place = s_sleepers.insert(s_sleepers.end(), &self);
        auto const woken = [&self] { return self.woken; };
        if (deadline) {
            self.wake.wait_until(lock, *deadline, woken);
        } else {
            self.wake.wait(lock, woken);
        }
        s_sleepers.erase(place);
        return self.woken ? Parked::Awake : Parked::TimedOut;
    }
    static bool WakeOne(void const* address) noexcept { return Wake(address, 1); }
    static bool WakeAll(void const* address) noexcept { return Wake(address, -1); }

private:
    struct Sleeper
    {
        void const* address;
        bool woken;
        std::condition_variable wake;
    };

    static bool Wake(void const* address, int most) noexcept
    {
        std::lock_guard const lock(s_mutex);
        for (Sleeper* const sleeper : s_sleepers) {
            if (most != 0 && sleeper->address == address && !sleeper->woken) {
                sleeper->woken = true;
                sleeper->wake.notify_one();
                --most;
            }
        }
        return true;
    }

    static inline std::mutex s_mutex;
    static inline std::list<Sleeper*> s_sleepers;
};

/// The system's, but half of the sleeps end for no reason: at once, or after some microseconds.
class RestlessParking
{
public:
    using Parked = qvxsys::sync::Parked;

    static Parked Park(void const* address, std::uint32_t expected, qvxsys::sync::Deadline const& deadline) noexcept
    {
        static std::atomic<unsigned int> seed = 1;
        thread_local std::minstd_rand random(seed++);
        auto const soon = std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 100);
        switch (random() % 4) {
        case 0:
            std::this_thread::yield();
            return Parked::Awake;
        case 1:
            if (!deadline || soon < *deadline) {
                auto const parked = qvxsys::sync::SystemParking::Park(address, expected, soon);
                return parked == Parked::TimedOut ? Parked::Awake : parked;
            }
            [[fallthrough]];
        default:
            return qvxsys::sync::SystemParking::Park(address, expected, deadline);
        }
    }
    static bool WakeOne(void const* address) noexcept { return qvxsys::sync::SystemParking::WakeOne(address); }
    static bool WakeAll(void const* address) noexcept { return qvxsys::sync::SystemParking::WakeAll(address); }
};

/// A system that puts nobody to sleep and wakes nobody.
struct RefusingParking
{
    static qvxsys::sync::Parked Park(void const*, std::uint32_t, qvxsys::sync::Deadline const&) noexcept
    {
        return qvxsys::sync::Parked::Refused;
    }
    static bool WakeOne(void const*) noexcept { return false; }
    static bool WakeAll(void const*) noexcept { return false; }
};
