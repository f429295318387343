#pragma once
// MemoryPressure: an early warning that memory is running short, before anything fails or a limit is exceeded, and
// functions that then free some, the cheapest first.
//
//     MemoryPressure pressure({}, [](MemoryRelief const& relief) { Log(relief.m_name, relief.m_bytesFreed); });
//     if (!pressure.IsListening()) {
//         Log(pressure.GetStatus());                          // "/proc/pressure/memory: Permission denied", say
//     }
//     pressure.AddReclaim("glyph cache", 1, [] { g_glyphs.Clear(); });      // costs little to make again
//     pressure.AddReclaim("undo history", 2, [] { g_undo.Trim(); });        // hurts
//
// Linux tells of the time that tasks lose waiting for memory (pressure stall information). That of the control group of
// the process is listened to, where there is one with that file, else that of the machine. Elsewhere IsListening() is
// false, and functions are called by Reclaim only.
//
// Threads: all operations may be called from any thread. One thread sleeps until there is pressure; it calls the
// functions.

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>

/// What one function freed.
struct MemoryRelief
{
    TStringCore m_name;       ///< the name it was registered with
    unsigned int m_grade = 0; ///< its grade; low ones come first
    /// By how much the private memory of the process went down while the function ran; 0 if it did not.
    std::uint64_t m_bytesFreed = 0;
};

/// Listens to the kernel's pressure figures and has registered functions free memory.
class QVXSYS_API MemoryPressure
{
public:
    /// How short memory is.
    enum class Level : unsigned char {
        Some = 1, ///< tasks wait for memory now and then: functions of grade 1
        Full = 2, ///< nothing gets done for want of memory: functions of grades 1 and 2
    };

    /// When warnings come.
    struct Config
    {
        /// Warn when tasks have lost this much time within the window. 0: not at all.
        std::chrono::milliseconds m_some{150};
        std::chrono::milliseconds m_full{100}; ///< the same for the stalling of everything
        /// From 500 ms to 10 s; without privileges only multiples of 2 s are allowed.
        std::chrono::milliseconds m_window{2000};
    };

    /// Listens from now on. `report` is told of each function that was called, on the thread that called it; it may be
    /// empty. Throws std::system_error when the thread cannot be started; what else goes wrong is in GetStatus().
    MemoryPressure(Config const& config, std::function<void(MemoryRelief const&)> report);
    /// Waits for functions that are running. Must not be called by one.
    ~MemoryPressure();
    MemoryPressure(MemoryPressure const&) = delete;
    MemoryPressure& operator=(MemoryPressure const&) = delete;

    /// Whether the system tells of pressure.
    [[nodiscard]] bool IsListening() const noexcept;
    /// What is listened to, or why not: a file's name, and behind ": " the system's reason.
    [[nodiscard]] TStringCore GetStatus() const;

    /// Registers a function of grade 1 or 2; those of one grade are called in the order in which they were added. What
    /// they throw on the listening thread ends the process. An empty function raises the logic assertion "func",
    /// another grade "grade == 1 || grade == 2", a name that is taken "!IsKnown(name)", removing an unknown one
    /// "IsKnown(name)". Removing waits while functions run, except on the thread that runs them.
    void AddReclaim(TStringCore const& name, unsigned int grade, std::function<void()> func);
    /// Takes a function away, see AddReclaim.
    void RemoveReclaim(TStringCore const& name);

    /// Calls the functions as if the system had warned, on this thread; the bytes that they freed together.
    std::uint64_t Reclaim(Level level);
    /// Warnings so far.
    [[nodiscard]] std::uint64_t GetWarnings(Level level) const noexcept;

private:
    struct State;

    std::unique_ptr<State> m_state;
};
