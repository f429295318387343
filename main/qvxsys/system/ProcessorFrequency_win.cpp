#include "ProcessorFrequency.h"

#include <new>
#include <utility>

#include "WindowsApi.h"

#include <powrprof.h>

namespace qvxsys::system {

ProcessorPowerRecords ReadPowerRecords() noexcept
{
    std::size_t const count = ::GetActiveProcessorCount(ALL_PROCESSOR_GROUPS);
    std::unique_ptr<ProcessorPowerRecord[]> records(new (std::nothrow) ProcessorPowerRecord[count]());
    if (records == nullptr || ::CallNtPowerInformation(ProcessorInformation, nullptr, 0, records.get(),
                                                       static_cast<ULONG>(count * sizeof(ProcessorPowerRecord))) != 0) {
        return {};
    }
    return {std::move(records), count};
}

std::uint64_t ProcessorFrequency() noexcept
{
    static std::uint64_t const frequency = FrequencyOf(ReadPowerRecords(), ::GetCurrentProcessorNumber());
    return frequency;
}

} // namespace qvxsys::system
