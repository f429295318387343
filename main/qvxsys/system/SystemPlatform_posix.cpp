#include "SystemPlatform.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstring>
#include <ctime>

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include "KeepErrno.h"

namespace qvxsys::system::platform {
namespace {

constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::uint32_t kNoLimit = 0xFFFFFFFF;

std::uint64_t Nanoseconds(clockid_t clock) noexcept
{
    timespec time{};
    if (::clock_gettime(clock, &time) != 0) {
        return 0;
    }
    return static_cast<std::uint64_t>(time.tv_sec) * kNanosecondsPerSecond + static_cast<std::uint64_t>(time.tv_nsec);
}

std::uint64_t HundredNanoseconds(timeval const& time) noexcept
{
    return static_cast<std::uint64_t>(time.tv_sec) * 10'000'000 + static_cast<std::uint64_t>(time.tv_usec) * 10;
}

} // namespace

std::uint64_t Counter() noexcept
{
    return Nanoseconds(CLOCK_MONOTONIC);
}

std::uint64_t CounterFrequency() noexcept
{
    return kNanosecondsPerSecond;
}

std::uint64_t ThreadCycleMilliseconds() noexcept
{
    return Nanoseconds(CLOCK_THREAD_CPUTIME_ID) / 1'000'000;
}

ThreadTimes CurrentThreadTimes() noexcept
{
    rusage usage{};
    if (::getrusage(RUSAGE_THREAD, &usage) != 0) {
        return {};
    }
    return {HundredNanoseconds(usage.ru_utime), HundredNanoseconds(usage.ru_stime)};
}

std::uint32_t ProcessId() noexcept
{
    return static_cast<std::uint32_t>(::getpid());
}

void Sleep(std::uint32_t ms) noexcept
{
    if (ms == 0) {
        qvxsys::platform::KeepErrno const keep;
        ::sched_yield();
        return;
    }
    while (ms == kNoLimit) {
        ::pause();
    }
    // To a point in time, so that being interrupted neither shortens nor prolongs it.
    std::uint64_t const end = Counter() + std::uint64_t{ms} * 1'000'000;
    timespec const time{static_cast<time_t>(end / kNanosecondsPerSecond),
                        static_cast<long>(end % kNanosecondsPerSecond)};
    while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr) == EINTR) {
    }
}

unsigned long LastError() noexcept
{
    return static_cast<unsigned>(errno);
}

void SetLastError(unsigned long code) noexcept
{
    errno = static_cast<int>(code);
}

std::string ErrorMessage(unsigned long code)
{
    // Never translated, unlike strerror_r, and null where that makes up a text.
    char const* const text = code <= INT_MAX ? ::strerrordesc_np(static_cast<int>(code)) : nullptr;
    return text != nullptr ? text : "";
}

double PowerOfTen(int exponent) noexcept
{
    return std::pow(10.0, exponent);
}

} // namespace qvxsys::system::platform
