#include "Parking.h"

#include <cerrno>
#include <climits>
#include <ctime>
#include <linux/futex.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qvxsys::sync {

namespace {

long Futex(void const* address, int operation, std::uint32_t value, timespec const* until) noexcept
{
    return syscall(SYS_futex, address, operation, value, until, nullptr, FUTEX_BITSET_MATCH_ANY);
}

/// steady_clock is CLOCK_MONOTONIC, which is what futexes take absolute times of.
timespec ToTimespec(std::chrono::steady_clock::time_point time) noexcept
{
    auto const sinceStart = time.time_since_epoch();
    auto const seconds = std::chrono::floor<std::chrono::seconds>(sinceStart);
    return {.tv_sec = seconds.count(), .tv_nsec = std::chrono::nanoseconds(sinceStart - seconds).count()};
}

} // namespace

Parked SystemParking::Park(void const* address, std::uint32_t expected, Deadline const& deadline) noexcept
{
    timespec const until = deadline ? ToTimespec(*deadline) : timespec();
    int const before = errno;
    if (Futex(address, FUTEX_WAIT_BITSET_PRIVATE, expected, deadline ? &until : nullptr) == 0) {
        return Parked::Awake;
    }
    switch (errno) {
    case EAGAIN:
    case EINTR:
        errno = before;
        return Parked::Awake;
    case ETIMEDOUT:
        errno = before;
        return Parked::TimedOut;
    default:
        return Parked::Refused;
    }
}

bool SystemParking::WakeOne(void const* address) noexcept
{
    return Futex(address, FUTEX_WAKE_PRIVATE, 1, nullptr) >= 0;
}

bool SystemParking::WakeAll(void const* address) noexcept
{
    return Futex(address, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr) >= 0;
}

unsigned long CodeOf(SystemError error) noexcept
{
    return error == SystemError::InvalidArgument ? EINVAL : EOVERFLOW;
}

unsigned int UsableProcessors() noexcept
{
    cpu_set_t ofMain;
    cpu_set_t ofThis;
    if (sched_getaffinity(0, sizeof(ofThis), &ofThis) == 0) {
        if (sched_getaffinity(getpid(), sizeof(ofMain), &ofMain) == 0) {
            CPU_OR(&ofThis, &ofThis, &ofMain);
        }
        return static_cast<unsigned int>(CPU_COUNT(&ofThis));
    }
    // More processors than the set has room for.
    long const online = sysconf(_SC_NPROCESSORS_ONLN);
    return online > 0 ? static_cast<unsigned int>(online) : 1;
}

} // namespace qvxsys::sync
