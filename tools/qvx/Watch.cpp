#include "Watch.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <set>
#include <system_error>
#include <utility>

#include <qvxsys/Format.h>
#include <qvxsys/ResourceManager.h>
#include <qvxsys/TEvent.h>
#include <qvxsys/TLocks.h>
#include <qvxsys/TSystem.h>
#include <qvxsys/std.h>

#include "DisplayText.h"
#include "Failures.h"
#include "Host.h"
#include "Units.h"
#include "WatchReport.h"
#include "WatchedCommand.h"

namespace qvx {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// The monitor's lines, from any thread.
class WatchLog
{
public:
    WatchLog(bool isVerbose, std::string const& file) : m_isVerbose(isVerbose)
    {
        if (!file.empty()) {
            m_file.reset(host::OpenToAppend(host::PathOf(file)));
            if (m_file == nullptr) {
                int const error = errno;
                TStringCore const reason(std::generic_category().message(error).c_str());
                throw MakeFailure(Failure::CannotAccess,
                                  qvxsys::Format(u"%1: %2", DisplayName(host::PathOf(file)), reason));
            }
        }
    }

    // One write for a line, so that several processes may share the file.
    void Add(TStringCore const& text)
    {
        TLockScope const lock(m_mutex);
        std::string const line = text.toStdString() + '\n';
        if (m_isVerbose) {
            std::cerr << line;
        }
        if (m_file != nullptr) {
            std::fwrite(line.data(), 1, line.size(), m_file.get());
            std::fflush(m_file.get());
        }
    }

private:
    TRecursiveMutex m_mutex;
    bool m_isVerbose;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> m_file{nullptr, std::fclose};
};

// The command, its processes and the monitor are handled by the main thread; the monitor's worker leaves requests for
// it and wakes it up.
class Watcher
{
public:
    explicit Watcher(WatchOptions const& options) : m_options(options), m_log(options.isVerbose, options.logFile) {}
    ~Watcher() { StopManager(); }

    int Run();

private:
    enum class Phase { Running, Asked, Killing };
    struct Requests
    {
        bool isOver = false;           // nobody serves them any more
        char const* reclaim = nullptr; // the limit for which memory or CPU is to be freed
        std::optional<bool> terminate; // whether for memory
        ResourceDecision decision;     // the last one that was not to spare
        bool isNewDecision = false;
    };

    void StartManager();
    void StopManager();
    void OnReclaim(char const* limit);
    void OnTerminate(bool isForMemory, TStringCore const& message);
    void OnDecision(ResourceDecision const& decision);

    void Track();
    void ServeReclaim();
    void ServeDecision();
    void ServeTermination();
    void GoOnEnding();
    [[nodiscard]] bool IsOver();
    [[nodiscard]] Clock::time_point NextLook() const;
    int Conclude();
    void Tell(TStringCore const& text) const;

    // How often new processes of the command are looked for: so that a check misses none that is older than a quarter
    // of the time between two.
    static constexpr auto kLongestLook = 1000ms;
    static constexpr auto kKillAgain = 20ms;
    static constexpr auto kGiveUp = 10s;
    // Without --max-cpu the CPU is measured, for others to see. That needs a limit, and here it is one that is not
    // enforced: when it is exceeded for a day the monitor begins anew.
    static constexpr unsigned int kNoCpuLimit = 99;
    static constexpr auto kNoCpuPeriod = std::chrono::seconds(24h);

    WatchOptions const& m_options;
    WatchLog m_log;
    WatchedCommand m_command; // before the monitor's threads
    std::set<ProcessKey> m_registered;
    bool m_isManaged = false;

    Phase m_phase = Phase::Running;
    Clock::time_point m_started;
    Clock::time_point m_asked;
    Clock::time_point m_helperUntil;
    bool m_helperRuns = false;
    WatchAttempts m_attempts;
    ResourceDecision m_ending; // what ends the command
    std::optional<ResourceDecision::Rule> m_toldInDryRun;

    TRecursiveMutex m_mutex;
    Requests m_requests QVXSYS_GUARDED_BY(m_mutex);
    TEvent m_reclaimed;
};

// ---- on the monitor's worker

void Watcher::OnReclaim(char const* limit)
{
    {
        TLockScope const lock(m_mutex);
        if (m_requests.isOver) {
            return;
        }
        m_reclaimed.Reset();
        m_requests.reclaim = limit;
    }
    m_command.Wake();
    m_reclaimed.Wait();
}

void Watcher::OnTerminate(bool isForMemory, TStringCore const& message)
{
    m_log.Add(message);
    TLockScope const lock(m_mutex);
    m_requests.terminate = isForMemory;
    m_command.Wake();
}

void Watcher::OnDecision(ResourceDecision const& decision)
{
    if (decision.m_verdict != ResourceDecision::Verdict::Spared) {
        TLockScope const lock(m_mutex);
        m_requests.decision = decision;
        m_requests.isNewDecision = true;
        m_command.Wake();
    }
}

// ---- on the main thread

void Watcher::StartManager()
{
    ResourceManager::CpuConfig cpu;
    cpu.m_maxCpu = m_options.maxCpu != 0 ? m_options.maxCpu : kNoCpuLimit;
    cpu.m_sustainedPeriod = m_options.maxCpu != 0 ? m_options.sustain : kNoCpuPeriod;
    cpu.m_useAverage = m_options.maxCpu != 0 && m_options.average;
    ResourceManager::MemoryConfig memory;
    memory.m_perProcessLimit = m_options.maxMemory.value_or(TSystem::Memory().totalPhysical);
    memory.m_allProcessesLimit = m_options.allMemory.value_or(std::numeric_limits<std::uint64_t>::max());
    memory.m_terminateFlag = true;
    ResourceManager::GeneralConfig general;
    general.m_checkInterval = m_options.interval;
    general.m_startDelay = 1s; // the CPU use of the first instants says nothing
    general.m_infoLogEvery = m_options.isVerbose || !m_options.logFile.empty() ? 10 : 0;
    general.m_logFunc = [this](TStringCore const& line) { m_log.Add(line); };
    general.m_terminateFunc = [this](bool flag, TStringCore const& message) { OnTerminate(flag, message); };
    ResourceManager::Options options;
    options.m_onDecision = [this](ResourceDecision const& decision) { OnDecision(decision); };
    options.m_dryRun = m_options.isDryRun;
    try {
        ResourceManager::Start(m_options.port, cpu, memory, general, options);
    } catch (std::exception const& error) {
        throw MakeFailure(Failure::CannotListen, qvxsys::Format(u"port %1: %2", m_options.port, error.what()));
    }
    m_isManaged = true;
    if (!m_options.onLimit.empty() && !m_options.isDryRun) {
        ResourceManager::AddReclaimMemoryFunction(u"--on-limit", [this] { OnReclaim("memory"); });
        if (m_options.maxCpu != 0) {
            ResourceManager::AddReclaimCpuFunction(u"--on-limit", [this] { OnReclaim("cpu"); });
        }
    }
}

// Waits for the worker, which may wait for this thread.
void Watcher::StopManager()
{
    {
        TLockScope const lock(m_mutex);
        m_requests.isOver = true;
    }
    m_reclaimed.Signal();
    if (std::exchange(m_isManaged, false)) {
        ResourceManager::Stop();
    }
    m_registered.clear();
    TLockScope const lock(m_mutex);
    m_requests = {};
}

// Tells the monitor which processes the command consists of.
void Watcher::Track()
{
    std::vector<ProcessKey> const now = m_command.Processes();
    std::erase_if(m_registered, [&](ProcessKey const& process) {
        bool const isGone = !std::ranges::binary_search(now, process);
        if (isGone) {
            ResourceManager::UnregisterChildProcessId(process.pid);
        }
        return isGone;
    });
    for (ProcessKey const& process : now) {
        if (m_registered.contains(process)) {
            continue;
        }
        try {
            ResourceManager::RegisterChildProcessId(process.pid);
            m_registered.insert(process);
        } catch (QuorvexException const&) {
            // has ended meanwhile
        }
    }
}

void Watcher::ServeReclaim()
{
    char const* limit = nullptr;
    {
        TLockScope const lock(m_mutex);
        limit = std::exchange(m_requests.reclaim, nullptr);
    }
    if (limit != nullptr) {
        m_attempts.ranHelper = true;
        m_attempts.helperEnd.reset();
        m_helperUntil = Clock::now() + m_options.grace;
        try {
            m_command.StartHelper(m_options.onLimit,
                                  {{"QVX_LIMIT", limit}, {"QVX_PID", std::to_string(m_command.ProcessId())}});
            m_helperRuns = true;
        } catch (QuorvexException const& error) {
            Tell(Describe(error));
            m_reclaimed.Signal();
        }
    }
    if (m_helperRuns) {
        m_attempts.helperEnd = m_command.HelperEnd();
        bool const isLate = Clock::now() >= m_helperUntil;
        if (m_attempts.helperEnd || isLate) {
            m_command.KillHelper();
            m_helperRuns = false;
            m_reclaimed.Signal();
        }
    }
}

// What is told while the command goes on.
void Watcher::ServeDecision()
{
    std::optional<ResourceDecision> decision;
    {
        TLockScope const lock(m_mutex);
        if (std::exchange(m_requests.isNewDecision, false)) {
            decision = m_requests.decision;
        }
    }
    if (!decision) {
        return;
    }
    if (decision->m_verdict == ResourceDecision::Verdict::Averted) {
        Tell(qvxsys::Format(u"a limit was exceeded; --on-limit freed %1, and the command goes on.",
                            SizeText(decision->m_bytesFreed)));
        m_toldInDryRun.reset();
        m_attempts = {};
    } else if (m_options.isDryRun && m_toldInDryRun != decision->m_rule) {
        m_toldInDryRun = decision->m_rule;
        Tell(qvxsys::Format(u"would have ended %1 after %2: %3", DisplayName(host::PathOf(m_options.command.front())),
                            TimeText(Clock::now() - m_started), Measured(*decision, m_options)));
    }
}

void Watcher::ServeTermination()
{
    std::optional<bool> isForMemory;
    {
        TLockScope const lock(m_mutex);
        isForMemory = std::exchange(m_requests.terminate, std::nullopt);
        m_ending = isForMemory ? m_requests.decision : m_ending;
    }
    if (!isForMemory) {
        return;
    }
    if (!*isForMemory && m_options.maxCpu == 0) {
        StopManager();
        StartManager();
        return;
    }
    m_phase = Phase::Asked;
    m_asked = Clock::now();
    m_attempts.asked = m_command.Processes().size();
    m_command.AskToEnd();
}

// What does not end when it is asked to is killed, and so is what it starts meanwhile.
void Watcher::GoOnEnding()
{
    if (m_phase == Phase::Asked && Clock::now() >= m_asked + m_options.grace) {
        m_phase = Phase::Killing;
        m_attempts.killed = m_command.Processes().size();
    }
    if (m_phase == Phase::Killing) {
        m_command.Kill();
    }
}

bool Watcher::IsOver()
{
    if (m_phase == Phase::Running) {
        return m_command.End().has_value();
    }
    // The command itself is among them, unless it waits for this process to notice its end.
    m_attempts.left = std::max<std::size_t>(m_command.Processes().size(), m_command.End() ? 0 : 1);
    return m_attempts.left == 0 || Clock::now() >= m_asked + m_options.grace + kGiveUp;
}

Clock::time_point Watcher::NextLook() const
{
    Clock::time_point const now = Clock::now();
    switch (m_phase) {
    case Phase::Asked: // the end of what is not a child of this process is not told
        return std::min(now + kKillAgain, m_asked + m_options.grace);
    case Phase::Killing:
        return now + kKillAgain;
    case Phase::Running:
        break;
    }
    Clock::time_point const next =
        now + std::min<Clock::duration>(std::chrono::milliseconds(m_options.interval) / 4, kLongestLook);
    return m_helperRuns ? std::min(next, m_helperUntil) : next;
}

int Watcher::Run()
{
    StartManager();
    m_command.Start(m_options.command);
    m_started = Clock::now();
    while (!IsOver()) {
        if (m_phase == Phase::Running) {
            Track();
            ServeReclaim();
            ServeDecision();
            ServeTermination();
        }
        GoOnEnding();
        m_command.Wait(NextLook());
    }
    return Conclude();
}

int Watcher::Conclude()
{
    m_attempts.ending = Clock::now() - m_asked;
    std::vector<ProcessKey> const left = m_command.Processes();
    m_command.KillHelper();
    StopManager();
    if (m_phase == Phase::Running) {
        if (!left.empty()) {
            Tell(qvxsys::Format(u"the command has ended; what it has started goes on without limits: %1 (pid %2%3).",
                                left.size(), left.front().pid, left.size() > 1 ? u", ..." : u""));
        }
        return ExitStatusLike(*m_command.End());
    }
    Tell(qvxsys::Format(u"ended %1 (pid %2) after %3: %4 %5", DisplayName(host::PathOf(m_options.command.front())),
                        m_command.ProcessId(), TimeText(m_asked - m_started), Measured(m_ending, m_options),
                        Tried(m_ending, m_attempts, m_options)));
    return kEndedByLimit;
}

void Watcher::Tell(TStringCore const& text) const
{
    std::cerr << qvxsys::Format(u"qvx watch: %1\n", text) << std::flush;
}

} // namespace

int Watch(WatchOptions const& options)
{
    try {
        return Watcher(options).Run();
    } catch (QuorvexException const& error) {
        std::cerr << qvxsys::Format(u"qvx: %1\n", Describe(error));
        auto const failure = static_cast<Failure>(error.GetErrorCode());
        return failure == Failure::CommandNotFound ? kNotFound
               : failure == Failure::CannotRun     ? kCannotRun
                                                   : kWatchFailed;
    }
}

} // namespace qvx
