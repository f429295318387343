#include <qvxsys/TSystem.h>

#include <algorithm>

#include "MachineFigures.h"

namespace platform = qvxsys::system::platform;
using qvxsys::system::MachineMemory;
using qvxsys::system::MachineProcessors;
using qvxsys::system::MemoryAmounts;

namespace {

TSystem::MemoryInfo InfoOf(MemoryAmounts const& amounts) noexcept
{
    TSystem::MemoryInfo info;
    unsigned long long const used = amounts.total - amounts.available;
    info.availablePhysical = amounts.available;
    info.usedPhysical = std::max(used, 1ULL);
    info.totalPhysical = amounts.total;
    info.pageSize = platform::PageSize();
    double const share = amounts.total != 0 ? static_cast<double>(used) / static_cast<double>(amounts.total) : 0;
    info.load = std::min(static_cast<unsigned int>(share * 100), 100U);
    info.availableCombined = info.availablePhysical + info.availableSwap;
    info.totalCombined = info.totalPhysical + info.totalSwap;
    info.usedCombined = info.totalCombined - info.availableCombined;
    return info;
}

TSystem::ProcessorInfo InfoOf(MachineProcessors const& processors) noexcept
{
    TSystem::ProcessorInfo info;
    info.host = static_cast<unsigned int>(processors.host);
    info.allowed = static_cast<unsigned int>(processors.allowed);
    info.usable = info.allowed;
    if (processors.quota != 0) {
        info.quota = static_cast<double>(processors.quota) / static_cast<double>(processors.period);
        auto const whole = (processors.quota + processors.period - 1) / processors.period;
        info.usable = static_cast<unsigned int>(std::min<unsigned long long>(info.usable, whole));
    }
    return info;
}

} // namespace

TSystem::MemoryInfo TSystem::Memory() noexcept
{
    MachineMemory memory;
    platform::ReadMemory("", memory);
    return InfoOf(memory.usable);
}

TSystem::MemoryInfo TSystem::HostMemory() noexcept
{
    MachineMemory memory;
    platform::ReadMemory("", memory);
    return InfoOf(memory.host);
}

TSystem::ProcessorInfo TSystem::Processors() noexcept
{
    MachineProcessors processors;
    platform::ReadProcessors("", processors);
    return InfoOf(processors);
}

TSystem::ThrottlingInfo TSystem::Throttling() noexcept
{
    qvxsys::system::MachineThrottling throttling;
    platform::ReadThrottling("", throttling);
    return {static_cast<unsigned int>(throttling.known), static_cast<unsigned int>(throttling.capped),
            throttling.events};
}

TSystem::FigureSources TSystem::Sources()
{
    MachineMemory memory;
    platform::ReadMemory("", memory);
    MachineProcessors processors;
    platform::ReadProcessors("", processors);
    return {std::string(memory.hostFrom.View()), std::string(memory.totalFrom.View()),
            std::string(memory.availableFrom.View()), std::string(processors.quotaFrom.View())};
}
