#pragma once
// Bounded spinning before a thread goes to sleep.
//
// Waking a sleeping thread costs between 2 (busy processor) and 50 (halted one) microseconds, so a wait that ends
// sooner is cheaper spun. A wait that does not end sooner wastes what it spins, and on a machine with fewer processors
// than runnable threads it takes that from the very thread it waits for. Hence three bounds: one wait spins for about
// one wake-up's cost on a busy processor; a process with one processor never spins; and a thread whose last spins were
// all in vain stops spinning, but for a try once in a while.

#include <algorithm>
#include <cstdint>

#include <qvxsys/Platform.h>

namespace qvxsys::sync {

/// How many cycles of the time-stamp counter this wait may spin; 0 for not at all.
[[nodiscard]] std::uint64_t SpinBudget() noexcept;
/// Tells whether the spin paid, for the thread's next waits.
void RecordSpin(bool paid) noexcept;

/// Pauses between two looks double from `first` to `most`. Waits whose end is worth more may spin so many `times` as
/// long.
struct SpinPace
{
    unsigned int most;
    unsigned int first = 1;
    unsigned int times = 1;
};

/// Calls `ready` at that pace until it returns true, for as long as spinning may pay.
template<class Ready>
[[nodiscard]] bool SpinUntil(SpinPace pace, Ready ready) noexcept
{
    std::uint64_t const budget = SpinBudget() * pace.times;
    if (budget == 0) {
        return false;
    }
    std::uint64_t const start = __builtin_ia32_rdtsc();
    bool paid = false;
    for (unsigned int pauses = pace.first; !paid && __builtin_ia32_rdtsc() - start < budget;
         pauses = std::min(2 * pauses, pace.most)) {
        for (unsigned int i = 0; i < pauses; ++i) {
            qvxsys::detail::SpinPause();
        }
        paid = ready();
    }
    RecordSpin(paid);
    return paid;
}

} // namespace qvxsys::sync
