#include "ProcessorFrequency.h"

#include <cstddef>
#include <memory>
#include <new>

#include "WindowsApi.h"

#include <powrprof.h>

namespace qvxsys::system {
namespace {

std::uint64_t QueryFrequency() noexcept
{
    DWORD const number = ::GetCurrentProcessorNumber();
    std::size_t const count = ::GetActiveProcessorCount(ALL_PROCESSOR_GROUPS);
    std::unique_ptr<ProcessorPowerRecord[]> const records(new (std::nothrow) ProcessorPowerRecord[count]());
    if (records == nullptr || ::CallNtPowerInformation(ProcessorInformation, nullptr, 0, records.get(),
                                                       static_cast<ULONG>(count * sizeof(ProcessorPowerRecord))) != 0) {
        return 0;
    }
    return FrequencyOf({records.get(), count}, number);
}

} // namespace

std::uint64_t ProcessorFrequency() noexcept
{
    static std::uint64_t const frequency = QueryFrequency();
    return frequency;
}

} // namespace qvxsys::system
