#pragma once
// The frequencies of the processors, for platforms that count the cycles of threads and not their time: Windows.

#include <cstddef>
#include <cstdint>
#include <memory>
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

/// What it tells of all of them; empty when it tells nothing, or there is no memory. (ProcessorFrequency_win.cpp, as
/// the function below; not there on Linux, which counts time.)
struct ProcessorPowerRecords
{
    std::unique_ptr<ProcessorPowerRecord[]> records;
    std::size_t count = 0;

    operator std::span<ProcessorPowerRecord const>() const noexcept { return {records.get(), count}; }
};
ProcessorPowerRecords ReadPowerRecords() noexcept;

/// The frequency in hertz of the processor that the first caller ran on, as it was then; 0 when that could not be found
/// out. Asked once per process.
std::uint64_t ProcessorFrequency() noexcept;

} // namespace qvxsys::system
