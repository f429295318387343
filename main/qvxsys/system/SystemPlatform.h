#pragma once
// Platform primitives under TSystem.h and CpuTime.h. None of them fails but by what is said here, or changes errno or
// the last error unless it says so.

#include <cstdint>
#include <string>

namespace qvxsys::system::platform {

/// Ticks of the clock that timed waits go by: never set, never back.
std::uint64_t Counter() noexcept;
/// Its ticks in a second. Constant; never 0.
std::uint64_t CounterFrequency() noexcept;

/// The processor time that the calling thread has taken, in milliseconds, by its cycle counter. 0 when the platform
/// does not tell.
std::uint64_t ThreadCycleMilliseconds() noexcept;

/// In units of 100 ns.
struct ThreadTimes
{
    std::uint64_t user;
    std::uint64_t kernel;
};
/// What the kernel has booked to the calling thread. Both 0 when the platform does not tell.
ThreadTimes CurrentThreadTimes() noexcept;

std::uint32_t ProcessId() noexcept;

/// As TSystem::Sleep.
void Sleep(std::uint32_t ms) noexcept;

/// The calling thread's last error, and putting it back.
unsigned long LastError() noexcept;
void SetLastError(unsigned long code) noexcept;
/// The platform's text for an error code, in UTF-8; empty when it has none. May change the last error.
std::string ErrorMessage(unsigned long code);

/// pow(10, exponent): the nearest double up to 10^+-22, and near it beyond.
double PowerOfTen(int exponent) noexcept;

} // namespace qvxsys::system::platform
