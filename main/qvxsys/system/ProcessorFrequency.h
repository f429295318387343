#pragma once
// The frequency that the cycles of threads are counted in, for platforms that count cycles and not time: Windows.

#include <cstdint>
#include <span>

namespace qvxsys::system {

/// What the power information service tells of one logical processor.
struct ProcessorPowerRecord
{
    std::uint32_t number;
    std::uint32_t maxMhz;
    std::uint32_t currentMhz;
    std::uint32_t mhzLimit;
    std::uint32_t maxIdleState;
    std::uint32_t currentIdleState;
};
static_assert(sizeof(ProcessorPowerRecord) == 24);

/// The current frequency of a processor in hertz, by the first record with its number; 0 when there is none.
constexpr std::uint64_t FrequencyOf(std::span<ProcessorPowerRecord const> records, std::uint32_t number) noexcept
{
    for (ProcessorPowerRecord const& record : records) {
        if (record.number == number) {
            return std::uint64_t{record.currentMhz} * 1'000'000;
        }
    }
    return 0;
}

/// The frequency in hertz of the processor that the first caller ran on, as it was then; 0 when that could not be found
/// out. Asked once per process. (ProcessorFrequency_win.cpp; not there on Linux, which counts time.)
std::uint64_t ProcessorFrequency() noexcept;

} // namespace qvxsys::system
