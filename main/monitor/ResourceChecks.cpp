// The checks: is there too much CPU or memory in use, and is it this process's to answer for?

#include <algorithm>

#include "ResourceManagerImpl.h"
#include "ResourceReporterManager.h"

namespace qvxsys::monitor {

ResourceManagerImpl::Outcome ResourceManagerImpl::Check(Kind kind, ResourceValues const& own, bool info)
{
    return kind == Kind::Cpu ? CheckCpu(own, info) : CheckMemory(own, info);
}

void ResourceManagerImpl::CallReporters() const
{
    auto const interval = static_cast<std::uint32_t>(m_general.m_checkInterval.count());
    ResourceReporterManager::Get().NotifyAll(m_general.m_infoLogEvery * interval);
}

/// An episode begins with the first high sample and ends with the first that is not; only one that lasts counts. Of
/// several processes that use the same, each answers for it.
ResourceManagerImpl::Outcome ResourceManagerImpl::CheckCpu(ResourceValues const& own, bool info)
{
    if (own.m_cpuUsage == 0) {
        if (info) {
            m_general.m_logFunc(texts::CpuIdle());
        }
        m_highSince = kNoEpisode;
        return Outcome::Fine;
    }
    unsigned int total = own.m_cpuUsage;
    bool highest = true;
    std::size_t const count = m_info.VisitOthers(own.m_processId, [&](ResourceValues const& other) {
        total += other.m_cpuUsage;
        highest = highest && other.m_cpuUsage <= own.m_cpuUsage;
    });
    unsigned int const capped = std::min(total, 100U);
    double const compared = m_cpu.m_useAverage ? m_average.Push(capped) : capped;
    if (info) {
        m_general.m_logFunc(texts::CpuInfo(own.m_cpuUsage, capped, count));
        CallReporters();
    }
    // Not a number is not high.
    if (!(compared > m_cpu.m_maxCpu)) {
        m_highSince = kNoEpisode;
        return Outcome::Fine;
    }
    std::int64_t const now = Now();
    if (m_highSince == kNoEpisode) {
        m_general.m_logFunc(texts::CpuDetected(capped));
        m_highSince = now;
    }
    bool const sustained = Scaled(m_cpu.m_sustainedPeriod, 1'000'000'000) < now - m_highSince;
    if (!sustained) {
        return Outcome::Fine;
    }
    ResourceDecision& decision = BeginDecision(Rule::SustainedCpu);
    decision.m_cpuTotal = capped;
    decision.m_cpuCompared = compared;
    decision.m_maxCpu = m_cpu.m_maxCpu;
    decision.m_cpuHighFor = std::chrono::nanoseconds(now - m_highSince);
    if (!highest) {
        return Outcome::Spared;
    }
    m_general.m_logFunc(texts::CpuExceeded(m_cpu.m_maxCpu, m_cpu.m_sustainedPeriod, own.m_cpuUsage));
    CallReporters();
    return Outcome::Exceeded;
}

/// When the machine runs short, the process with the largest share of its own limit answers for it.
ResourceManagerImpl::Outcome ResourceManagerImpl::CheckMemory(ResourceValues const& own, bool info)
{
    if (own.m_memory > m_memory.m_perProcessLimit) {
        m_general.m_logFunc(texts::MemoryExceededByProcess(own.m_memory));
        BeginDecision(Rule::ProcessMemory).m_perProcessLimit = m_memory.m_perProcessLimit;
        return Outcome::Exceeded;
    }
    std::uint64_t const machine = SystemMemoryUsed();
    bool const exceeded = machine > m_memory.m_allProcessesLimit;
    if (!exceeded && !info) {
        return Outcome::Fine;
    }
    bool highest = true;
    MemoryFigures figures{.own = own.m_memory, .total = own.m_memory, .machine = machine};
    figures.count = m_info.VisitOthers(own.m_processId, [&](ResourceValues const& other) {
        figures.total += other.m_memory;
        highest = highest && other.m_memoryLimitUsage <= own.m_memoryLimitUsage;
    });
    if (info) {
        m_general.m_logFunc(texts::MemoryInfo(figures));
        CallReporters();
    }
    if (!exceeded) {
        return Outcome::Fine;
    }
    ResourceDecision& decision = BeginDecision(Rule::MachineMemory);
    decision.m_perProcessLimit = m_memory.m_perProcessLimit;
    decision.m_machineMemory = machine;
    decision.m_allProcessesLimit = m_memory.m_allProcessesLimit;
    if (!highest) {
        return Outcome::Spared;
    }
    m_general.m_logFunc(texts::MemoryExceededByAll(figures));
    CallReporters();
    return Outcome::Exceeded;
}

} // namespace qvxsys::monitor
