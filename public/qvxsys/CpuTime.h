#pragma once
// How much processor time a piece of code takes on its thread (ThreadTimeScope), in whole milliseconds.
//
//     quorvex::cputime::ThreadTimeValue total;
//     for (File const& file : files) {
//         quorvex::cputime::ThreadTimeScope const scope(total);   // adds at its end
//         Parse(file);
//     }
//     Log(total.kernelMs + total.userMs);
//
// There are two measures, chosen for the whole process by SetThreadTimeOption:
// - Cycles (the default): precise, and cannot tell kernel from user, so everything is booked as user time. On Linux
//   this is the thread's CPU clock (CLOCK_THREAD_CPUTIME_ID). On Windows the thread's cycles are divided by the
//   frequency that one processor had at the first use, so the result is as good as that frequency is steady. 0 where
//   the platform does not count cycles.
// - ThreadTimes: what the kernel books to the thread, split into both parts. On Linux getrusage(RUSAGE_THREAD): usually
//   an exact sum that is split in the proportion found by sampling at timer ticks, so a short scope's split can be far
//   off. On Windows GetThreadTimes, in steps of 10 to 16 ms.
//
// Both ends of a scope are cut to whole milliseconds (Cycles) or their difference is (ThreadTimes): many short scopes
// add up to less than they took. A scope costs two queries, each a call into the kernel: 0.3 to 0.4 us in all on Linux.

#include <cstddef>
#include <cstdint>

#include <qvxsys/Platform.h>

namespace quorvex::cputime {

/// Processor time in milliseconds.
struct ThreadTimeValue
{
    std::uint32_t kernelMs = 0; ///< in the kernel
    std::uint32_t userMs = 0;   ///< in user mode

    constexpr ThreadTimeValue() noexcept = default;
    /// Milliseconds.
    constexpr ThreadTimeValue(unsigned int kernel, unsigned int user) noexcept : kernelMs(kernel), userMs(user) {}
    /// Field by field, modulo 2^32.
    constexpr ThreadTimeValue& operator+=(ThreadTimeValue const& other) noexcept
    {
        kernelMs += other.kernelMs;
        userMs += other.userMs;
        return *this;
    }
    [[nodiscard]] friend constexpr bool operator==(ThreadTimeValue const&, ThreadTimeValue const&) noexcept = default;
};
static_assert(offsetof(ThreadTimeValue, kernelMs) == 0 && offsetof(ThreadTimeValue, userMs) == 4 &&
              sizeof(ThreadTimeValue) == 8);

/// How scopes measure. Every value but 0 means ThreadTimes.
enum class ThreadTimeOption : std::int32_t {
    Cycles = 0,
    ThreadTimes = 1,
};

/// For the whole process; Cycles at start. Set it at start-up: a scope that is open meanwhile mixes both measures.
QVXSYS_API void SetThreadTimeOption(ThreadTimeOption option) noexcept;
[[nodiscard]] QVXSYS_API ThreadTimeOption GetThreadTimeOption() noexcept;

/// A switch for callers who decide by it whether to open scopes; scopes themselves do not look at it. For the whole
/// process, true at start. The setter returns the previous value.
QVXSYS_API bool SetCpuTrackingEnabled(bool enabled) noexcept;
[[nodiscard]] QVXSYS_API bool GetCpuTrackingEnabled() noexcept;

/// Adds the processor time that the thread takes between construction and destruction to a value. Must end on the
/// thread that it began on. A copy has the same start and adds to the same value, at its own end.
class ThreadTimeScope
{
public:
    /// `accumulator` must outlive the scope and is written at its end only, without a lock.
    QVXSYS_API explicit ThreadTimeScope(ThreadTimeValue& accumulator) noexcept;
    ThreadTimeScope(ThreadTimeScope const&) noexcept = default;
    ThreadTimeScope& operator=(ThreadTimeScope const&) = delete;
    QVXSYS_API ~ThreadTimeScope();

private:
    ThreadTimeValue& m_accumulator;
    std::uint64_t m_start[2]; ///< milliseconds and 0, or user and kernel time in units of 100 ns
};
static_assert(sizeof(ThreadTimeScope) == 24);

} // namespace quorvex::cputime
