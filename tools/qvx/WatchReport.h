#pragma once
// What `qvx watch` tells of a limit, in words.

#include <chrono>
#include <optional>

#include <qvxsys/ResourceManager.h>
#include <qvxsys/TStringCore.h>

#include "Watch.h"
#include "WatchedCommand.h"

namespace qvx {

/// What was done before a command had to go.
struct WatchAttempts
{
    bool ranHelper = false;
    std::optional<CommandEnd> helperEnd; ///< empty when it took too long
    std::size_t asked = 0;               ///< processes, of which `killed` had to be killed
    std::size_t killed = 0;
    std::size_t left = 0; ///< that could not even be killed
    std::chrono::steady_clock::duration ending{0};
};

/// "it used 2.10 GiB, more than the 2.00 GiB of --max-memory", and what the others used.
[[nodiscard]] TStringCore Measured(ResourceDecision const& decision, WatchOptions const& options);

/// "--on-limit (exit status 0) freed 0 B; ...": what was tried, and how it ended.
[[nodiscard]] TStringCore Tried(ResourceDecision const& decision, WatchAttempts const& attempts,
                                WatchOptions const& options);

} // namespace qvx
