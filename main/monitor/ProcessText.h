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

/// Of /proc/PID/statm: the pages in memory that are the process's alone.
constexpr std::optional<std::uint64_t> ParsePrivatePages(std::string_view text) noexcept
{
    if (!text.ends_with('\n')) {
        return std::nullopt;
    }
    system::TakeWord(text); // the size of the address space
    std::optional<std::uint64_t> const resident = system::ParseNumber(system::TakeWord(text));
    std::optional<std::uint64_t> const shared = system::ParseNumber(system::TakeWord(text));
    return resident && shared && *shared <= *resident ? std::optional(*resident - *shared) : std::nullopt;
}

/// Of the lines of /proc/PID/status: what is the process's alone, in memory or swapped out.
struct PrivateMemory
{
    std::uint64_t bytes = 0;

    constexpr void Take(std::string_view line) noexcept
    {
        for (std::string_view const key : {"RssAnon:", "VmSwap:"}) {
            if (line.starts_with(key)) {
                bytes = system::SaturatedSum(bytes, system::ParseBytes(line, key).value_or(0));
            }
        }
    }
};

} // namespace qvxsys::monitor
