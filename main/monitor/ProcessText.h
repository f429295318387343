#pragma once
// What Linux writes of a process in /proc.

#include <cstdint>
#include <optional>
#include <string_view>

#include "KernelText.h"

namespace qvxsys::monitor {

/// Of /proc/PID/stat.
struct ProcessStat
{
    bool ended = false;        ///< a zombie, or about to go; not a process whose first thread alone has ended
    std::uint64_t ticks = 0;   ///< user and kernel time
    std::uint64_t started = 0; ///< ticks since boot
};

/// Nothing for a text that is malformed or cut off.
constexpr std::optional<ProcessStat> ParseStat(std::string_view text) noexcept
{
    // "PID (NAME) STATE ...": the name can have blanks, parentheses and line feeds in it, what follows has not.
    std::size_t const nameEnd = text.rfind(')');
    if (nameEnd == std::string_view::npos || !text.ends_with('\n')) {
        return std::nullopt;
    }
    text.remove_prefix(nameEnd + 1);
    constexpr int kState = 3, kUser = 14, kKernel = 15, kThreads = 20, kStarted = 22; // numbered as in proc(5)
    std::string_view const state = system::TakeWord(text);
    std::optional<std::uint64_t> user, kernel, threads, started;
    for (int field = kState + 1; field <= kStarted; ++field) {
        std::optional<std::uint64_t> const number = system::ParseNumber(system::TakeWord(text));
        user = field == kUser ? number : user;
        kernel = field == kKernel ? number : kernel;
        threads = field == kThreads ? number : threads;
        started = field == kStarted ? number : started;
    }
    if (state.empty() || !user || !kernel || !threads || !started) {
        return std::nullopt;
    }
    bool const isDead = state == "Z" || state == "X" || state == "x";
    return ProcessStat{isDead && *threads <= 1, system::SaturatedSum(*user, *kernel), *started};
}

} // namespace qvxsys::monitor
