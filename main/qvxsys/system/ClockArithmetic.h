#pragma once
// Counters made into time, without overflow.

#include <cstdint>

namespace qvxsys::system {

/// ticks * units / frequency, exact and rounded down, as long as frequency * units and the result fit 64 bits. 0 for a
/// frequency of 0.
constexpr std::uint64_t TicksTo(std::uint64_t units, std::uint64_t ticks, std::uint64_t frequency) noexcept
{
    return frequency == 0 ? 0 : ticks / frequency * units + ticks % frequency * units / frequency;
}

/// Ticks as milliseconds, in double precision, truncated, the low 32 bits of that.
constexpr std::uint32_t WrappedMilliseconds(std::uint64_t ticks, double millisecondsPerTick) noexcept
{
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(static_cast<double>(ticks) * millisecondsPerTick));
}

} // namespace qvxsys::system
