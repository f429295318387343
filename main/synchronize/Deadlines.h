#pragma once
// From timeouts to deadlines.

#include <chrono>

#include "Parking.h"

namespace qvxsys::sync {

/// So many milliseconds, or more, are no limit.
inline constexpr long long kNoLimit = 0xFFFFFFFF;

/// The end of a wait that begins now. `milliseconds` is not negative.
[[nodiscard]] inline Deadline DeadlineIn(long long milliseconds) noexcept
{
    if (milliseconds >= kNoLimit) {
        return {};
    }
    return std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
}

} // namespace qvxsys::sync
