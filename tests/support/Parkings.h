#pragma once
// Other parkings than the system's, to run the waiting algorithms over (contract: main/synchronize/Parking.h).

#include <atomic>
#include <random>
#include <thread>

#include "Parking.h"

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
