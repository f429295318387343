#pragma once
// The folding of units (TCType::FoldCase) for inner loops, and its inverse.

#include <qvxsys/TCType.h>

namespace qvxsys::text {

/// The units that fold to the same unit as `c`, c among them. More than kMost are not listed: `count` is 0 then
/// (Unicode has no such case).
struct UnitClass
{
    static constexpr unsigned kMost = 4;

    char16_t units[kMost];
    unsigned count;
};

/// The first call of a process asks ICU for all units (a fraction of a millisecond), from then on it costs a few loads.
[[nodiscard]] UnitClass ClassOf(char16_t c) noexcept;

} // namespace qvxsys::text
