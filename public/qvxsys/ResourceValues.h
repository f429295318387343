#pragma once
// ResourceValues: what one process uses, as the resource manager measures it and as it travels between processes; and
// ResourceSample, such a record with the time of its arrival.
//
// Plain values. The fields of ResourceValues are not aligned, so no reference or pointer may be bound to one (as
// function templates that take their arguments by reference do): copy the field, or add 0 to it.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <type_traits>

/// One process's use of the machine. Also the whole payload of a datagram of the exchange: 14 bytes, little-endian,
/// without padding. What comes from other processes is believed as it is.
#pragma pack(push, 1)
struct ResourceValues
{
    std::uint32_t m_processId = 0; ///< whose values these are
    /// Bytes of private memory, those of registered child processes included.
    std::uint64_t m_memory = 0;
    /// Percent of the process's own limit, 0 to 100; the percentage is cut to 8 bits before it is capped, so 300 is 44.
    std::uint8_t m_memoryLimitUsage = 0;
    /// Percent of the whole machine, 0 to 100.
    std::uint8_t m_cpuUsage = 0;

    bool operator==(ResourceValues const&) const = default;
};
#pragma pack(pop)

static_assert(offsetof(ResourceValues, m_processId) == 0 && offsetof(ResourceValues, m_memory) == 4 &&
              offsetof(ResourceValues, m_memoryLimitUsage) == 12 && offsetof(ResourceValues, m_cpuUsage) == 13 &&
              sizeof(ResourceValues) == 14 && alignof(ResourceValues) == 1);
static_assert(std::is_trivially_copyable_v<ResourceValues>);

/// What is known of a process from its last datagram.
struct ResourceSample
{
    ResourceValues m_values; ///< what was reported
    /// Since the datagram arrived.
    std::chrono::nanoseconds m_age{0};
    /// Datagrams of this process id since it is known.
    std::uint64_t m_received = 0;
};
