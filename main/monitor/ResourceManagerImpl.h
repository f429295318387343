#pragma once
// The manager behind ResourceManager: what is configured and registered, the worker that checks, the exchange.
//
// Tests derive from it, replace the virtual operations and the sleep, and call Work() on their own thread.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <thread>

#include <qvxsys/ResourceManager.h>
#include <qvxsys/ResourceValues.h>
#include <qvxsys/TEvent.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TSystem.h>

#include "ChildProcessManager.h"
#include "InfoTable.h"
#include "MonitorArithmetic.h"
#include "MonitorTexts.h"
#include "MonitoredProcess.h"
#include "ReclaimFunctions.h"
#include "ResourceExchange.h"

namespace qvxsys::monitor {

class ResourceManagerImpl
{
public:
    /// Ends the process (SIGFPE) when the check interval is 0.
    ResourceManagerImpl(ResourceManager::CpuConfig const& cpu, ResourceManager::MemoryConfig const& memory,
                        ResourceManager::GeneralConfig const& general, ResourceManager::Options const& options);
    ResourceManagerImpl(ResourceManagerImpl const&) = delete;
    ResourceManagerImpl& operator=(ResourceManagerImpl const&) = delete;
    /// Stops, waits for the threads, and logs that it has stopped.
    virtual ~ResourceManagerImpl();

    /// The start sequence: logs the limits, then starts the exchange and the worker, unless there is nothing to
    /// monitor. When it throws, the destructor logs nothing.
    void Start(std::uint16_t port);
    /// Whether the caller is a function of the host's that this manager has called on one of its threads.
    [[nodiscard]] bool IsOnOwnThread() const noexcept;
    /// Waits for the start sequence, which a thread that it has started may be ahead of.
    void AwaitStart() const { m_started.Wait(); }
    /// True for the first caller, who is to destroy the manager.
    [[nodiscard]] bool ClaimStop() noexcept { return !m_stopClaimed.exchange(true); }

    [[nodiscard]] ReclaimFunctions& CpuFunctions() noexcept { return m_cpuFunctions; }
    [[nodiscard]] ReclaimFunctions& MemoryFunctions() noexcept { return m_memoryFunctions; }
    [[nodiscard]] ChildProcessManager& Children() noexcept { return m_children; }
    [[nodiscard]] InfoTable const& Info() const noexcept { return m_info; }
    [[nodiscard]] std::vector<ResourceSample> GetSnapshot() const { return m_info.Snapshot(Now()); }

protected:
    /// Nanoseconds of a steady clock. On any thread.
    [[nodiscard]] virtual std::int64_t Now() const;
    /// Measures this process and its children into `own`, tells the others, and forgets those that have ended.
    virtual void Sample(MonitoredProcess const& process, ResourceValues& own);
    /// Bytes in use on the machine, with or without swap as configured.
    [[nodiscard]] virtual std::uint64_t SystemMemoryUsed() const;

    /// The life of the worker: checks until it is stopped or the host has been asked to end.
    void Work();
    /// What came in from the exchange.
    void Receive(ResourceValues const& values) { m_info.Store(values, Now()); }
    /// Sleeps that long; true when stopped meanwhile. Of the stop event, unless a test has replaced it.
    std::function<bool(std::chrono::milliseconds)> m_sleep;

private:
    using Rule = ResourceDecision::Rule;
    using Verdict = ResourceDecision::Verdict;
    enum class Kind : bool { Cpu, Memory };
    /// Of a check. Spared: above a limit, but others are heavier.
    enum class Outcome { Fine, Spared, Exceeded };

    static constexpr std::int64_t kNoEpisode = std::numeric_limits<std::int64_t>::max();

    [[nodiscard]] bool MonitorsCpu() const noexcept { return m_cpu.m_maxCpu >= 1 && m_cpu.m_maxCpu <= 99; }
    [[nodiscard]] bool MonitorsMemory() const noexcept { return m_memory.m_perProcessLimit != 0; }

    void StartExchange(std::uint16_t port);
    void StartWorker();

    /// Checks, reclaims and, if need be, has the process end; false when the worker's work is done.
    bool Pass(Kind kind, MonitoredProcess const& process, ResourceValues& own, bool info);
    bool Reclaim(Kind kind, MonitoredProcess const& process, ResourceValues& own);
    bool Terminate(Kind kind, ResourceValues const& own);
    void LogAllProcesses(ResourceValues const& own);

    Outcome Check(Kind kind, ResourceValues const& own, bool info);
    Outcome CheckCpu(ResourceValues const& own, bool info);
    Outcome CheckMemory(ResourceValues const& own, bool info);
    void CallReporters() const;

    /// The record of the verdict at hand, filled by the check; thrown away unless somebody wants to be told.
    ResourceDecision& BeginDecision(Rule rule);
    void Decide(Verdict verdict, ResourceValues const& own);

    ResourceManager::CpuConfig const m_cpu;
    ResourceManager::MemoryConfig const m_memory;
    ResourceManager::GeneralConfig const m_general;
    ResourceManager::Options const m_options;
    unsigned int const m_process = TSystem::ProcessID();
    InfoTable m_info;
    ChildProcessManager m_children;
    ReclaimFunctions m_cpuFunctions;
    ReclaimFunctions m_memoryFunctions;
    std::unique_ptr<ResourceExchange> m_ipc;
    std::thread m_worker;
    TEvent m_stopEvent;
    RunningAverage m_average;
    std::int64_t m_highSince = kNoEpisode;
    ResourceDecision m_decision;
    /// Set when the start sequence is through: who stops at once must not find it under way.
    TEvent m_started;
    std::atomic<bool> m_stopClaimed = false;
    /// A failed start is not followed by a line that says it has stopped.
    bool m_quiet = false;
};

} // namespace qvxsys::monitor
