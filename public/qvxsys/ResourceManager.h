#pragma once
// ResourceManager: a watchdog in each process of a suite. It samples the CPU and memory use of its process and of the
// children registered with it, tells the other processes on the machine and hears from them, and when a limit is
// exceeded has the program free what it can; if that does not help, it asks the program to end.
//
//     ResourceManager::CpuConfig cpu;                          // off
//     ResourceManager::MemoryConfig memory;
//     memory.m_perProcessLimit = ResourceManager::AdjustMemoryLimit(1, 0, 0.5, false);   // half the machine, 1 GiB
//     memory.m_allProcessesLimit = ResourceManager::AdjustMemoryLimit(1, 0, 0.9, false); // at least
//     ResourceManager::GeneralConfig general;
//     general.m_checkInterval = std::chrono::seconds(5);
//     general.m_logFunc = [](TStringCore const& line) { Log(line); };
//     general.m_terminateFunc = [](bool, TStringCore const& why) { SaveAndExit(why); };
//
//     ResourceManager::Start(47000, cpu, memory, general);
//     ResourceManager::AddReclaimMemoryFunction("thumbnails", [] { g_thumbnails.Clear(); });
//     ...
//     ResourceManager::Stop();
//
// The exchange: once per check each process broadcasts the 14 bytes of its ResourceValues to 127.255.255.255 on the
// port, and listens there. Only the process that uses most is asked to end: by CPU, or, when the machine's memory runs
// short, by the share of its own limit. Processes with the same port see one another; any datagram of 14 bytes from
// 127.0.0.1 is believed.
//
// The manager never ends the process and writes no files: its lines, each beginning with "Resource Manager: ", go to
// the log function.
//
// Threads: Start and Stop must not run at the same time as each other or as other calls (which rules out a Stop from
// the log function while Start or RegisterChildProcessId calls it); everything else may be called from any thread. The
// log function is called by the threads that call Start, Stop and RegisterChildProcessId, by the worker and by the
// listening thread; everything else that is handed in by the worker only. What these functions throw is not caught on
// the manager's threads and ends the process, as does a report that cannot be sent (to port 0, for one).
//
// Stop waits for the functions of the program that are running. Called by one of them (that is, on a thread of the
// manager's) it cannot wait for itself: it returns at once, the manager is detached and goes when they have returned,
// and Start makes another one. As after any other Stop there is the line "Resource Manager: stopped", then.
//
// A forked process has the manager but not its threads: nothing is checked there, and Stop there leaves the other
// process as it is.
//
// Cost: two threads that sleep between checks and datagrams, five descriptors on Linux, and those of the children; a
// check is a few dozen microseconds and as much for each child. At most 65,536 processes are remembered, however many
// claim to exist.

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include <qvxsys/Platform.h>
#include <qvxsys/ResourceValues.h>
#include <qvxsys/TStringCore.h>

namespace qvxsys::monitor {
class ResourceManagerImpl;
}

/// What was decided when a limit was exceeded, and why.
struct ResourceDecision
{
    /// Which limit was exceeded.
    enum class Rule : unsigned char {
        SustainedCpu,  ///< the processes together used more than the CPU threshold for too long
        ProcessMemory, ///< this process is above the limit for one process
        MachineMemory, ///< the machine is above the limit for all processes
    };
    /// What comes of it.
    enum class Verdict : unsigned char {
        Spared,    ///< another process uses more: nothing is done here
        Averted,   ///< the reclaim functions helped
        Terminate, ///< the program is asked to end
    };

    Rule m_rule = Rule::SustainedCpu;    ///< which limit was exceeded
    Verdict m_verdict = Verdict::Spared; ///< what comes of it
    /// The verdict is not carried out.
    bool m_dryRun = false;

    /// This process, as it was last sampled, and the others as they last reported, in no order.
    ResourceValues m_own;
    std::vector<ResourceSample> m_peers; ///< the others, as they last reported

    /// @name What was compared; 0 where the rule does not look at it
    /// @{
    unsigned int m_cpuTotal = 0;              ///< of all processes, percent, at most 100
    double m_cpuCompared = 0;                 ///< the total or its average
    unsigned int m_maxCpu = 0;                ///< the threshold, percent
    std::chrono::nanoseconds m_cpuHighFor{0}; ///< for how long it has been exceeded
    std::uint64_t m_perProcessLimit = 0;      ///< bytes
    std::uint64_t m_machineMemory = 0;        ///< bytes in use
    std::uint64_t m_allProcessesLimit = 0;    ///< bytes
    /// @}

    /// Reclaim functions that were called for this verdict.
    unsigned int m_functionsCalled = 0;
    /// By how much the memory of this process and its children went down meanwhile; 0 if it did not, or is not
    /// monitored.
    std::uint64_t m_bytesFreed = 0;
};

/// The watchdog of this process; see the top of the file.
class QVXSYS_API ResourceManager
{
public:
    ResourceManager() = delete;

    /// Receives messages.
    using LogFunc = std::function<void(TStringCore const&)>;
    /// Receives the flag of the limit and the reason.
    using TerminateFunc = std::function<void(bool, TStringCore const&)>;

    /// How CPU is monitored.
    struct CpuConfig
    {
        /// Percent of the whole machine; monitored from 1 to 99, otherwise off.
        std::uint32_t m_maxCpu = 0;
        /// How long it must be exceeded; also the length of the average.
        std::chrono::seconds m_sustainedPeriod{0};
        /// Whether the average over that time is compared instead of each sample. Samples with no use by this process
        /// do not count.
        bool m_useAverage = false;
        /// Handed to the terminate function.
        bool m_terminateFlag = false;
    };

    /// How memory is monitored.
    struct MemoryConfig
    {
        /// Bytes that this process and its children may use; 0: memory is not monitored.
        std::uint64_t m_perProcessLimit = 0;
        /// Bytes that may be in use on the machine.
        std::uint64_t m_allProcessesLimit = 0;
        /// Whether swap counts as the machine's memory in use.
        bool m_includeSwap = false;
        /// Handed to the terminate function.
        bool m_terminateFlag = false;
    };

    /// How often, and who is told.
    struct GeneralConfig
    {
        /// Between two checks, and after reclaiming. 0 ends the process (SIGFPE), a negative one too.
        std::chrono::seconds m_checkInterval{1};
        /// Before the first check.
        std::chrono::seconds m_startDelay{0};
        /// Every so many checks usage is logged and reporters are called; 0: never.
        std::uint32_t m_infoLogEvery = 0;
        /// Receives every message. Required.
        LogFunc m_logFunc;
        /// Called once, when the process must go: with the flag of the limit that was exceeded and the reason. There
        /// are no further checks after that. Required.
        TerminateFunc m_terminateFunc;
        /// The terminate handler of the listening thread. On Linux, where handlers are the process's, a handler is
        /// installed that calls this one on the listening thread and the previous one on all others.
        void (*m_listenerTerminateHandler)() = nullptr;
    };

    /// What is off unless it is asked for.
    struct Options
    {
        /// Told of every verdict, on the worker thread, before it is carried out.
        std::function<void(ResourceDecision const&)> m_onDecision;
        /// Calls reclaim functions, but never the terminate function: in its place there is the line "Resource Manager:
        /// Dry run: termination is not requested. " followed by the reason, and the checks go on.
        bool m_dryRun = false;
    };

    /// Starts monitoring, unless it has been started. With both monitors off nothing runs, but the other operations
    /// work. Raises the logic assertions "generalConfig.m_logFunc != nullptr" and "generalConfig.m_terminateFunc !=
    /// nullptr". Throws boost::system::system_error ("open", "set_option" or "bind" in its text) when a socket cannot
    /// be had, std::system_error when a thread cannot be started, std::bad_alloc and std::length_error when there is no
    /// memory for the samples of the sustained period; nothing remains started then.
    static void Start(unsigned short port, CpuConfig const& cpuConfig, MemoryConfig const& memoryConfig,
                      GeneralConfig const& generalConfig);
    static void Start(unsigned short port, CpuConfig const& cpuConfig, MemoryConfig const& memoryConfig,
                      GeneralConfig const& generalConfig, Options const& options);
    /// The same with the fields of the configurations in their order.
    static void Start(unsigned short port, unsigned int maxCpu, std::chrono::seconds sustainedPeriod, bool useAverage,
                      bool cpuTerminateFlag, unsigned long long perProcessLimit, unsigned long long allProcessesLimit,
                      bool includeSwap, bool memoryTerminateFlag, std::chrono::seconds checkInterval,
                      std::chrono::seconds startDelay, unsigned int infoLogEvery, LogFunc logFunc,
                      TerminateFunc terminateFunc, void (*listenerTerminateHandler)());
    /// Stops and forgets all that was registered; does nothing when not started. Wakes a sleeping worker. While reclaim
    /// functions take effect (the check interval after calling them), the limit that was exceeded leads to the
    /// terminate function all the same.
    static void Stop();

    // The following raise the logic assertion "s_singleton" when not started; if its hook returns, they do nothing and
    // return nothing.

    /// Registers a function that frees memory or sheds work, called on the worker in the order of the names, under a
    /// lock that these four functions take too. An empty function raises the logic assertion "func", a name that is
    /// taken "m_functions.insert(make_pair(name, func)).second", removing an unknown one "m_functions.erase(name) > 0".
    static void AddReclaimCpuFunction(TStringCore const& name, std::function<void()> func);
    /// Takes such a function away.
    static void RemoveReclaimCpuFunction(TStringCore const& name);
    /// Registers a function that frees memory.
    static void AddReclaimMemoryFunction(TStringCore const& name, std::function<void()> func);
    /// Takes such a function away.
    static void RemoveReclaimMemoryFunction(TStringCore const& name);

    /// Adds a child's use to this process's. Throws QuorvexException when it does not run; raises the logic assertion
    /// "m_processes.emplace(pid, pid).second" for one that is registered, and "m_processes.erase(pid) > 0" when it is
    /// not there to be taken away. Children that have ended count as 0 until they are taken away.
    static void RegisterChildProcessId(unsigned int pid);
    /// Takes a child away.
    static void UnregisterChildProcessId(unsigned int pid);

    /// The CPU percentage and the bytes that this process last reported, as they came back; 0 and 0 before that.
    [[nodiscard]] static std::pair<std::uint8_t, std::uint64_t> GetCpuAndMemoryUsage();
    /// What every process last reported, this one included, in no order.
    [[nodiscard]] static std::vector<ResourceSample> GetSnapshot();

    /// A limit in bytes: `fixedGB` GiB, or if that is 0 a fraction of the machine's memory (all of it, or with
    /// `useAvailable` what is available), at least `minGB` GiB. Works without a started manager.
    [[nodiscard]] static std::uint64_t AdjustMemoryLimit(unsigned int minGB, unsigned int fixedGB, double fraction,
                                                         bool useAvailable);

private:
    static std::atomic<qvxsys::monitor::ResourceManagerImpl*> s_singleton;
};
static_assert(offsetof(ResourceManager::CpuConfig, m_maxCpu) == 0 &&
              offsetof(ResourceManager::CpuConfig, m_sustainedPeriod) == 8 &&
              offsetof(ResourceManager::CpuConfig, m_useAverage) == 16 &&
              offsetof(ResourceManager::CpuConfig, m_terminateFlag) == 17);
static_assert(offsetof(ResourceManager::MemoryConfig, m_perProcessLimit) == 0 &&
              offsetof(ResourceManager::MemoryConfig, m_allProcessesLimit) == 8 &&
              offsetof(ResourceManager::MemoryConfig, m_includeSwap) == 16 &&
              offsetof(ResourceManager::MemoryConfig, m_terminateFlag) == 17);
