#include "MachineFigures.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

#include "ProcessorFrequency.h"

#include "WindowsApi.h"

#include <powrprof.h>

namespace qvxsys::system::platform {

void ReadMemory(char const*, MachineMemory& memory) noexcept
{
    qvxsys::platform::KeepLastError const keep;
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    if (::GlobalMemoryStatusEx(&status) != 0) {
        memory.host = {status.ullTotalPhys, std::min(status.ullAvailPhys, status.ullTotalPhys)};
    }
    memory.usable = memory.host;
    memory.hostFrom = memory.totalFrom = memory.availableFrom = PathText("GlobalMemoryStatusEx");
}

void ReadProcessors(char const*, MachineProcessors& processors) noexcept
{
    qvxsys::platform::KeepLastError const keep;
    processors.host = std::max<DWORD>(::GetActiveProcessorCount(ALL_PROCESSOR_GROUPS), 1);
    DWORD_PTR allowed = 0;
    DWORD_PTR present = 0;
    // A process that runs in more than one processor group has no affinity, and is told 0.
    bool const isKnown = ::GetProcessAffinityMask(::GetCurrentProcess(), &allowed, &present) != 0 && allowed != 0;
    processors.allowed =
        isKnown && allowed != present ? static_cast<std::uint64_t>(__builtin_popcountll(allowed)) : processors.host;
}

void ReadThrottling(char const*, MachineThrottling& throttling) noexcept
{
    std::size_t const count = std::max<DWORD>(::GetActiveProcessorCount(ALL_PROCESSOR_GROUPS), 1);
    std::unique_ptr<ProcessorPowerRecord[]> const records(new (std::nothrow) ProcessorPowerRecord[count]());
    if (records == nullptr || ::CallNtPowerInformation(ProcessorInformation, nullptr, 0, records.get(),
                                                       static_cast<ULONG>(count * sizeof(ProcessorPowerRecord))) != 0) {
        return;
    }
    throttling.known = count;
    throttling.capped = static_cast<std::uint64_t>(
        std::count_if(records.get(), records.get() + count,
                      [](ProcessorPowerRecord const& record) { return record.currentMhz < record.maxMhz; }));
}

std::uint32_t PageSize() noexcept
{
    SYSTEM_INFO info;
    ::GetSystemInfo(&info);
    return info.dwPageSize;
}

} // namespace qvxsys::system::platform
