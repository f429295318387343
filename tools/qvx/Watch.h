#pragma once
// Runs a command under limits that it shares with all others on the machine that are watched.

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace qvx {

/// Where watched commands and `qvx top` find one another unless told otherwise.
inline constexpr unsigned short kDefaultPort = 17171;

struct WatchOptions
{
    std::vector<std::string> command;
    std::optional<std::uint64_t> maxMemory; ///< bytes; none: the machine's memory
    std::optional<std::uint64_t> allMemory; ///< bytes
    unsigned int maxCpu = 0;                ///< percent of the machine; 0: no limit
    std::chrono::seconds sustain{10};       ///< how long the CPU limit must be exceeded
    bool average = false;                   ///< of the CPU use over that time
    std::string onLimit;                    ///< by the shell
    std::chrono::seconds interval{1};       ///< between checks
    std::chrono::milliseconds grace{5000};  ///< for what is asked to end, and for `onLimit`
    unsigned short port = kDefaultPort;
    bool isVerbose = false; ///< the monitor's lines on stderr
    std::string logFile;    ///< and in this file
    bool isDryRun = false;
};

inline constexpr int kEndedByLimit = 124; ///< as timeout(1) has it
inline constexpr int kWatchFailed = 125;  ///< as env(1), nice(1) and others have it, and these two:
inline constexpr int kCannotRun = 126;
inline constexpr int kNotFound = 127;

/// Runs the command to its end. Returns the exit status: that of the command, kEndedByLimit when a limit has ended it,
/// kNotFound and kCannotRun when it could not be started. If a signal has ended it, this process ends by the same one.
/// Call on the process's first thread, before others are started.
[[nodiscard]] int Watch(WatchOptions const& options);

} // namespace qvx
