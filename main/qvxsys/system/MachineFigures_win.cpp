#include "MachineFigures.h"

#include <algorithm>
#include <span>

#include "ProcessorFrequency.h"

#include "WindowsApi.h"

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
    ProcessorPowerRecords const all = ReadPowerRecords();
    for (ProcessorPowerRecord const& record : std::span<ProcessorPowerRecord const>(all)) {
        ++throttling.known;
        throttling.capped += record.currentMhz < record.maxMhz ? 1 : 0;
    }
}

std::uint32_t PageSize() noexcept
{
    SYSTEM_INFO info;
    ::GetSystemInfo(&info);
    return info.dwPageSize;
}

} // namespace qvxsys::system::platform
