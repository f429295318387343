#pragma once
// The manager's arithmetic, whose narrow widths are part of what it promises.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>

#include <boost/circular_buffer.hpp>

namespace qvxsys::monitor {

/// Of two percentages, added in 8 bits and then capped.
[[nodiscard]] constexpr std::uint8_t AddedPercent(std::uint8_t a, std::uint8_t b) noexcept
{
    return std::min<std::uint8_t>(static_cast<std::uint8_t>(a + b), 100);
}

/// How many percent of `limit` (not 0) `used` is: cut to 8 bits first and capped then, so 300 % is 44.
[[nodiscard]] constexpr std::uint8_t LimitUsage(std::uint64_t used, std::uint64_t limit) noexcept
{
    double const percent = static_cast<double>(used) / static_cast<double>(limit) * 100.0;
    // Beyond 2^63 a double has no bits left that would be kept.
    auto const whole = percent < 9.2e18 ? static_cast<std::uint64_t>(percent) : 0;
    return std::min<std::uint8_t>(static_cast<std::uint8_t>(whole), 100);
}

/// A product with `unit`, at most the highest number of the type; `seconds` may be negative.
[[nodiscard]] constexpr std::int64_t Scaled(std::chrono::seconds seconds, std::int64_t unit) noexcept
{
    constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();
    std::int64_t const count = seconds.count();
    return count > kHighest / unit ? kHighest : count < -kHighest / unit ? -kHighest : count * unit;
}

/// For waits: the milliseconds of so many seconds.
[[nodiscard]] constexpr std::chrono::milliseconds Milliseconds(std::chrono::seconds seconds) noexcept
{
    return std::chrono::milliseconds(Scaled(seconds, 1000));
}

/// The running average of the last N samples, in constant time for each. Not recomputed, so what rounding does stays
/// in it. The ring has one place more than the average has samples: a full ring's oldest sample is the one that has
/// just left the average.
///
/// With N = 0 the average is the division by zero of doubles: infinite or not a number.
class RunningAverage
{
public:
    /// Throws std::bad_alloc or std::length_error when there is no memory for so many. A negative number counts as 0.
    explicit RunningAverage(std::int64_t samples)
        : m_samples(static_cast<std::size_t>(std::max<std::int64_t>(samples, 0))), m_ring(m_samples + 1)
    {}

    /// The average with `sample`.
    double Push(double sample)
    {
        m_ring.push_back(sample);
        bool const full = m_ring.full();
        auto const divisor = static_cast<double>(full ? m_samples : m_ring.size());
        m_average += (sample - (full ? m_ring.front() : m_average)) / divisor;
        return m_average;
    }

private:
    std::size_t m_samples;
    boost::circular_buffer<double> m_ring;
    double m_average = 0.0;
};

} // namespace qvxsys::monitor
