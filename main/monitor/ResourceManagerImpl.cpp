#include "ResourceManagerImpl.h"

#include <csignal>
#include <cstdlib>
#include <utility>

#include <qvxsys/LogicException.h>
#include <qvxsys/TSystem.h>
#include <qvxsys/TThreadPool.h>

namespace qvxsys::monitor {

namespace {

constexpr char const* kFile = "qvxsys/main/monitor/ResourceManagerImpl";
constexpr int kExchangeLine = 90;
constexpr int kWorkerLine = 97;

/// The manager whose thread this is, as long as functions of the host may be called.
constinit thread_local ResourceManagerImpl const* t_manager = nullptr;

class OnThreadOf
{
public:
    explicit OnThreadOf(ResourceManagerImpl const* manager) noexcept : m_before(std::exchange(t_manager, manager)) {}
    ~OnThreadOf() { t_manager = m_before; }
    OnThreadOf(OnThreadOf const&) = delete;
    OnThreadOf& operator=(OnThreadOf const&) = delete;

private:
    ResourceManagerImpl const* m_before;
};

/// How many checks the sustained period has. Dividing by 0 is as fatal as a division instruction makes it, whatever the
/// compiler would make of it.
std::int64_t SustainedChecks(std::chrono::seconds period, std::chrono::seconds interval)
{
    if (interval.count() == 0) {
        std::raise(SIGFPE);
        std::abort();
    }
    return period / interval;
}

} // namespace

ResourceManagerImpl::ResourceManagerImpl(ResourceManager::CpuConfig const& cpu,
                                         ResourceManager::MemoryConfig const& memory,
                                         ResourceManager::GeneralConfig const& general,
                                         ResourceManager::Options const& options)
    : m_sleep([this](std::chrono::milliseconds time) { return m_stopEvent.Wait(time); }), m_cpu(cpu), m_memory(memory),
      m_general(general), m_options(options), m_info(&MonitoredProcess::IsRunning), m_children(general.m_logFunc),
      m_cpuFunctions(u"CPU"), m_memoryFunctions(u"memory"),
      m_average(SustainedChecks(cpu.m_sustainedPeriod, general.m_checkInterval))
{}

ResourceManagerImpl::~ResourceManagerImpl()
{
    m_stopEvent.Signal();
    if (m_process != TSystem::ProcessID() && m_worker.joinable()) {
        m_worker.detach(); // a fork does not copy threads
    } else if (m_worker.joinable()) {
        m_worker.join();
    }
    m_ipc.reset();
    if (!m_quiet) {
        m_general.m_logFunc(texts::Stopped());
    }
}

bool ResourceManagerImpl::IsOnOwnThread() const noexcept
{
    return t_manager == this;
}

void ResourceManagerImpl::Start(std::uint16_t port)
{
    if (!MonitorsCpu() && !MonitorsMemory()) {
        return;
    }
    m_quiet = true;
    if (MonitorsCpu()) {
        m_general.m_logFunc(texts::CpuLimit(m_cpu.m_maxCpu, m_cpu.m_sustainedPeriod));
    }
    if (MonitorsMemory()) {
        m_general.m_logFunc(texts::PerProcessLimit(m_memory.m_perProcessLimit));
        m_general.m_logFunc(texts::AllProcessesLimit(m_memory.m_allProcessesLimit));
    }
    m_general.m_logFunc(texts::CheckInterval(m_general.m_checkInterval));
    StartExchange(port);
    StartWorker();
    m_quiet = false;
    m_started.Signal();
}

void ResourceManagerImpl::StartExchange(std::uint16_t port)
{
    m_general.m_logFunc(texts::Listening(port));
    if (m_ipc) {
        ThrowLogicException(kFile, kExchangeLine, "!m_ipc");
    }
    auto log = [this](TStringCore const& line) {
        OnThreadOf const scope(this);
        m_general.m_logFunc(line);
    };
    m_ipc = std::make_unique<ResourceExchange>(
        port, ExchangeHandlers{[this](ResourceValues const& values) { Receive(values); }, std::move(log)},
        m_general.m_listenerTerminateHandler);
}

void ResourceManagerImpl::StartWorker()
{
    if (m_worker.joinable()) {
        ThrowLogicException(kFile, kWorkerLine, "!m_worker");
        return;
    }
    // What the host's functions throw ends the process where it was thrown.
    m_worker = std::thread([this]() noexcept {
        AsyncTask::NameThisThread("qvx-monitor");
        m_started.Wait();
        OnThreadOf const scope(this);
        Work();
    });
}

std::int64_t ResourceManagerImpl::Now() const
{
    return TSystem::UpTime().count();
}

void ResourceManagerImpl::Sample(MonitoredProcess const& process, ResourceValues& own)
{
    if (MonitorsCpu()) {
        // A machine that is slowed down counts as idle: percentages of it say nothing.
        own.m_cpuUsage = MonitoredProcess::IsCpuAtMaxFrequency()
                             ? AddedPercent(m_children.GetCpuUsage(), process.GetCpuUsage())
                             : std::uint8_t{0};
    }
    if (MonitorsMemory()) {
        own.m_memory = m_children.GetMemoryUsage() + process.GetMemoryUsage();
        own.m_memoryLimitUsage = LimitUsage(own.m_memory, m_memory.m_perProcessLimit);
    }
    if (m_ipc) {
        m_ipc->Send(own);
    }
    m_info.Prune(own.m_processId);
}

std::uint64_t ResourceManagerImpl::SystemMemoryUsed() const
{
    TSystem::MemoryInfo const memory = TSystem::Memory();
    return m_memory.m_includeSwap ? memory.usedCombined : memory.usedPhysical;
}

void ResourceManagerImpl::Work()
{
    MonitoredProcess const process;
    ResourceValues own;
    own.m_processId = TSystem::ProcessID();
    if (m_sleep(Milliseconds(m_general.m_startDelay))) {
        return;
    }
    std::uint32_t counter = 0;
    do {
        Sample(process, own);
        bool const info = m_general.m_infoLogEvery != 0 && counter + 1 == m_general.m_infoLogEvery;
        if (MonitorsCpu() && !Pass(Kind::Cpu, process, own, info)) {
            return;
        }
        if (MonitorsMemory() && !Pass(Kind::Memory, process, own, info)) {
            return;
        }
        counter = info ? 0 : counter + 1;
    } while (!m_sleep(Milliseconds(m_general.m_checkInterval)));
}

bool ResourceManagerImpl::Pass(Kind kind, MonitoredProcess const& process, ResourceValues& own, bool info)
{
    switch (Check(kind, own, info)) {
    case Outcome::Fine:
        return true;
    case Outcome::Spared:
        Decide(Verdict::Spared, own);
        return true;
    case Outcome::Exceeded:
        break;
    }
    return Reclaim(kind, process, own) || Terminate(kind, own);
}

/// True when that was enough. A stop while the functions take effect counts as not enough.
bool ResourceManagerImpl::Reclaim(Kind kind, MonitoredProcess const& process, ResourceValues& own)
{
    bool const cpu = kind == Kind::Cpu;
    std::uint64_t const before = own.m_memory;
    ResourceDecision breach = m_decision;
    breach.m_functionsCalled =
        static_cast<unsigned int>((cpu ? m_cpuFunctions : m_memoryFunctions).Reclaim(m_general.m_logFunc));
    bool averted = false;
    if (breach.m_functionsCalled != 0 && !m_sleep(Milliseconds(m_general.m_checkInterval))) {
        Sample(process, own);
        breach.m_bytesFreed = before > own.m_memory ? before - own.m_memory : 0;
        averted = Check(kind, own, true) != Outcome::Exceeded;
    }
    m_general.m_logFunc(cpu ? texts::CpuReclaimed(averted) : texts::MemoryReclaimed(averted));
    if (!averted) {
        m_decision.m_functionsCalled = breach.m_functionsCalled;
        m_decision.m_bytesFreed = breach.m_bytesFreed;
        return false;
    }
    m_decision = std::move(breach);
    Decide(Verdict::Averted, own);
    return true;
}

/// True when checks go on all the same.
bool ResourceManagerImpl::Terminate(Kind kind, ResourceValues const& own)
{
    LogAllProcesses(own);
    Decide(Verdict::Terminate, own);
    bool const cpu = kind == Kind::Cpu;
    TStringCore const reason = cpu ? texts::CpuTermination() : texts::MemoryTermination();
    if (m_options.m_dryRun) {
        m_general.m_logFunc(texts::DryRun(reason));
        return true;
    }
    m_general.m_terminateFunc(cpu ? m_cpu.m_terminateFlag : m_memory.m_terminateFlag, reason);
    return false;
}

void ResourceManagerImpl::LogAllProcesses(ResourceValues const& own)
{
    m_general.m_logFunc(texts::ProcessesFollow());
    m_general.m_logFunc(texts::Process(own));
    // Copied, so that a slow log function does not hold up the listener.
    for (ResourceSample const& peer : m_info.Snapshot(0, own.m_processId)) {
        m_general.m_logFunc(texts::Process(peer.m_values));
    }
}

ResourceDecision& ResourceManagerImpl::BeginDecision(Rule rule)
{
    m_decision = ResourceDecision();
    m_decision.m_rule = rule;
    return m_decision;
}

void ResourceManagerImpl::Decide(Verdict verdict, ResourceValues const& own)
{
    if (!m_options.m_onDecision) {
        return;
    }
    m_decision.m_verdict = verdict;
    m_decision.m_dryRun = m_options.m_dryRun;
    m_decision.m_own = own;
    m_decision.m_peers = m_info.Snapshot(Now(), own.m_processId);
    m_options.m_onDecision(m_decision);
}

} // namespace qvxsys::monitor
