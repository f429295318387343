#pragma once
// The one thing that locks, semaphores and events need of the system: to put a thread to sleep until a word in memory
// has changed, and to wake it. Parking_linux.cpp has it from futexes, Parking_win.cpp from WaitOnAddress. What is built
// on it (Waiting.h) takes the type as a template argument, so that tests can run it over others.

#include <chrono>
#include <cstdint>
#include <optional>

namespace qvxsys::sync {

/// When a wait ends at the latest, on a clock that setting the time does not move; without a value, never.
using Deadline = std::optional<std::chrono::steady_clock::time_point>;

enum class Parked {
    Awake,    ///< woken, for nothing perhaps, or never asleep because the word had another value
    TimedOut, ///< the deadline has passed
    Refused,  ///< the system does not let the thread sleep; its last error says why
};

/// The contract, for every such type:
/// - Park sleeps only while the 32-bit word at `address` equals `expected`, compared atomically with going to sleep: a
///   wake-up that follows a change of the word is never lost. It may return Awake at any time for no reason, but not
///   TimedOut before the deadline. Signals and changes of the system time have no effect.
/// - WakeOne and WakeAll wake threads that sleep on `address`. They do not read memory there, which may be gone. False
///   when the system refuses, its last error says why.
/// - All may be called from any thread and allocate nothing.
struct SystemParking
{
    static Parked Park(void const* address, std::uint32_t expected, Deadline const& deadline) noexcept;
    static bool WakeOne(void const* address) noexcept;
    static bool WakeAll(void const* address) noexcept;
};

/// Errors of our own that take the place of the system's, and its code for them.
enum class SystemError { InvalidArgument, SemaphoreOverflow };
[[nodiscard]] unsigned long CodeOf(SystemError error) noexcept;

/// The processors that this process may run on, as far as can be told cheaply; at least 1. On Linux, where each thread
/// has its own set, those of the main thread and of the calling one.
[[nodiscard]] unsigned int UsableProcessors() noexcept;

} // namespace qvxsys::sync
