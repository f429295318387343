// Whole lives of the worker, on this thread, with samples, clock and sleep by script. Each ends when its samples are
// used up: the sleep after the last one is interrupted by the stop.

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <qvxsys/qvxsys.h>

#include "ResourceManagerImpl.h"

namespace {

using qvxsys::monitor::MonitoredProcess;
using qvxsys::monitor::ResourceManagerImpl;
using namespace std::chrono_literals;
/// Lines, each with its line feed.
using Transcript = std::string;

constexpr std::chrono::seconds kInterval = 10s;

struct Step
{
    std::uint8_t cpu = 0;
    std::uint64_t memory = 0;
    std::uint8_t usage = 0;
    std::uint64_t machine = 0;
    std::vector<ResourceValues> peers{}; ///< whose datagrams arrive with the sample
};

struct Scenario
{
    char const* name;
    ResourceManager::CpuConfig cpu;
    ResourceManager::MemoryConfig memory;
    unsigned int infoEvery;
    bool functions; ///< whether there are reclaim functions, "a" and "b"
    bool dryRun;
    std::vector<Step> steps;
    Transcript expected;

    friend void PrintTo(Scenario const& scenario, std::ostream* out) { *out << scenario.name; }
};

/// A line without what every line begins with, and without the process's own id.
std::string Line(TStringCore const& text)
{
    static std::string const s_start = "Resource Manager: ";
    std::string line = text.toStdString();
    EXPECT_EQ(line.substr(0, s_start.size()), s_start);
    line.erase(0, s_start.size());
    std::string const own = "pid: " + std::to_string(TSystem::ProcessID()) + ";";
    return line.rfind(own, 0) == 0 ? "own;" + line.substr(own.size()) : line;
}

std::string Text(ResourceDecision const& decision)
{
    static char const* const s_rules[] = {"CPU", "process", "machine"};
    static char const* const s_verdicts[] = {"spared", "averted", "terminate"};
    return std::string("=> ") + s_rules[static_cast<int>(decision.m_rule)] + ' ' +
           s_verdicts[static_cast<int>(decision.m_verdict)] + ", called " + std::to_string(decision.m_functionsCalled) +
           ", freed " + std::to_string(decision.m_bytesFreed) + ", peers " + std::to_string(decision.m_peers.size());
}

ResourceManager::GeneralConfig General(Scenario const& scenario, Transcript& heard)
{
    ResourceManager::GeneralConfig general;
    general.m_checkInterval = kInterval;
    general.m_infoLogEvery = scenario.infoEvery;
    general.m_logFunc = [&heard](TStringCore const& line) { heard += Line(line) + '\n'; };
    general.m_terminateFunc = [&heard](bool flag, TStringCore const& reason) {
        heard += (flag ? "terminate(true): " : "terminate(false): ") + Line(reason) + '\n';
    };
    return general;
}

class ScriptedManager final : public ResourceManagerImpl
{
public:
    ScriptedManager(Scenario const& scenario, Transcript& heard)
        : ResourceManagerImpl(
              scenario.cpu, scenario.memory, General(scenario, heard),
              {[&heard](ResourceDecision const& decision) { heard += Text(decision) + '\n'; }, scenario.dryRun}),
          m_steps(scenario.steps)
    {
        m_sleep = [this](std::chrono::milliseconds time) {
            m_now += time;
            return m_next == m_steps.size();
        };
        for (char const* const name : {"b", "a"}) {
            if (scenario.functions) {
                CpuFunctions().Add(name, [&heard, name] { heard += std::string(name) + "()\n"; });
                MemoryFunctions().Add(name, [&heard, name] { heard += std::string(name) + "()\n"; });
            }
        }
    }
    void Run() { Work(); }

private:
    std::int64_t Now() const override { return std::chrono::nanoseconds(m_now).count(); }
    void Sample(MonitoredProcess const&, ResourceValues& own) override
    {
        Step const& step = m_steps.at(m_next++);
        own = {own.m_processId, step.memory, step.usage, step.cpu};
        Receive(own);
        for (ResourceValues const& peer : step.peers) {
            Receive(peer);
        }
    }
    std::uint64_t SystemMemoryUsed() const override { return m_steps[m_next - 1].machine; }

    std::vector<Step> const& m_steps;
    std::size_t m_next = 0;
    std::chrono::milliseconds m_now = 1h;
};

struct Reporter final : ResourceReporter
{
    explicit Reporter(Transcript& to) : heard(to) {}
    void Report(unsigned int seconds) override { heard += "report " + std::to_string(seconds) + '\n'; }
    Transcript& heard;
};

class ManagerScenario : public testing::TestWithParam<Scenario>
{};

TEST_P(ManagerScenario, SaysAndDoesWhatIsWritten)
{
    Transcript heard;
    {
        Reporter const reporter(heard);
        ScriptedManager manager(GetParam(), heard);
        manager.Run();
        heard += "end\n";
    }
    EXPECT_EQ(heard, GetParam().expected + "end\nstopped\n");
}

constexpr std::uint32_t kPeer = 7;

ResourceManager::CpuConfig const kCpu{.m_maxCpu = 50, .m_sustainedPeriod = 20s, .m_terminateFlag = true};
ResourceManager::CpuConfig const kCpuAtOnce{.m_maxCpu = 50};
ResourceManager::CpuConfig const kAverage{.m_maxCpu = 50, .m_sustainedPeriod = 20s, .m_useAverage = true};
ResourceManager::CpuConfig const kAverageOfNone{.m_maxCpu = 50, .m_sustainedPeriod = 5s, .m_useAverage = true};
ResourceManager::MemoryConfig const kMemory{.m_perProcessLimit = 1000, .m_allProcessesLimit = 5000};

/// What two functions say and do when they are called, and none.
std::string Called(std::string const& kind)
{
    return "Reclaiming " + kind + ". Number registered functions: 2\nCalling reclaim function named: a\na()\n" +
           "Calling reclaim function named: b\nb()\n";
}

std::string NoneToCall(std::string const& kind)
{
    return "Reclaiming " + kind + ". Number registered functions: 0\n";
}

std::string const kCpuLost = "CPU reclamation was unsucessful. Process has to be terminated.\n"
                             "Logging all CPU/memory info across processes.\n";
std::string const kMemoryLost = "Memory reclamation was unsucessful. Process has to be terminated.\n"
                                "Logging all CPU/memory info across processes.\n";
std::string const kCpuEnd = "Process is above CPU threshold. Requesting termination.\n";
std::string const kMemoryEnd = "Process is above memory threshold. Requesting termination.\n";
std::string const kExceeded1001 = "Exceeded allowed memory usage per process. 1,001 bytes\n";
std::string const kOwn1001 = "own; Memory info: 1,001 bytes; Memory limit usage: 0%; CPU info: 0%\n";

Scenario const kScenarios[] = {
    {"CpuEpisodesEndWithIdleAndLast",
     kCpu,
     {},
     0,
     false,
     false,
     {{60}, {0}, {60}, {60}, {60}, {60}, {60}},
     "Detected high CPU usage. 60%\nDetected high CPU usage. 60%\n"
     "Exceeded sustained high CPU threshold above 50% for 20 seconds.  This process has the highest usage of 60%\n"
     "report 0\n" +
         NoneToCall("CPU") + kCpuLost +
         "own; Memory info: 0 bytes; Memory limit usage: 0%; CPU info: 60%\n"
         "=> CPU terminate, called 0, freed 0, peers 0\nterminate(true): " +
         kCpuEnd},
    {"CpuIsForTheHeaviestAndTiesCount",
     kCpuAtOnce,
     {},
     0,
     true,
     false,
     {{60, 0, 0, 0, {{kPeer, 5, 0, 61}}}, {60}, {60, 0, 0, 0, {{kPeer, 5, 0, 60}}}, {40, 0, 0, 0, {{kPeer, 5, 0, 2}}}},
     "Detected high CPU usage. 100%\n=> CPU spared, called 0, freed 0, peers 1\n"
     "Exceeded sustained high CPU threshold above 50% for 0 seconds.  This process has the highest usage of 60%\n"
     "report 0\n" +
         Called("CPU") +
         "CPU info: 40%; 42% (Quorvex total); 2 (info count)\nreport 0\n"
         "CPU reclaimed. Process termination has been averted!\n=> CPU averted, called 2, freed 0, peers 1\n"},
    {"InfoComesEveryThirdTime",
     kCpu,
     kMemory,
     3,
     false,
     false,
     {{0, 1000, 100, 4000}, {0}, {0, 1000, 100, 4000}, {1}, {1}, {1, 2, 3, 5000}},
     "CPU info: 0%\nMemory info: 1,000 bytes (current process);1,000 bytes (Quorvex total); 4,000 bytes (total of all "
     "processes); 1 (info count)\nreport 30\nCPU info: 1%; 1% (Quorvex total); 1 (info count)\nreport 30\n"
     "Memory info: 2 bytes (current process);2 bytes (Quorvex total); 5,000 bytes (total of all processes); 1 (info "
     "count)\nreport 30\n"},
    // 90; (90 + 30) / 2; (30 + 30) / 2; nothing; (30 + 90) / 2; 90
    {"AverageOfTheLastTwo",
     kAverage,
     {},
     0,
     false,
     false,
     {{90}, {30}, {30}, {0}, {90}, {90}},
     "Detected high CPU usage. 90%\nDetected high CPU usage. 90%\n"},
    {"AverageOfNoneIsNeverHigh", kAverageOfNone, {}, 0, false, false, {{100}, {100}, {100}}, ""},
    {"OneByteTooManyIsReclaimed",
     {},
     kMemory,
     0,
     true,
     false,
     {{0, 1000, 100, 1}, {0, 1001}, {0, 900, 90, 5000}},
     kExceeded1001 + Called("memory") +
         "Memory info: 900 bytes (current process);900 bytes (Quorvex total); 5,000 bytes "
         "(total of all processes); 1 (info count)\nreport 0\nMemory reclaimed. Process termination has been averted!\n"
         "=> process averted, called 2, freed 101, peers 0\n"},
    {"TheMachineIsForTheLargestShare",
     {},
     kMemory,
     0,
     false,
     false,
     {{0, 300, 30, 5001, {{kPeer, 400, 31, 0}}}, {0, 300, 30, 5001, {{kPeer, 400, 30, 0}}}},
     "=> machine spared, called 0, freed 0, peers 1\n"
     "Exceeded allowed memory usage across all processes. Memory info: 300 bytes (current process);700 bytes (Quorvex "
     "total); 5,001 bytes (total of all processes); 2 (info count)\nreport 0\n" +
         NoneToCall("memory") + kMemoryLost +
         "own; Memory info: 300 bytes; Memory limit usage: 30%; CPU info: 0%\n"
         "pid: 7; Memory info: 400 bytes; Memory limit usage: 30%; CPU info: 0%\n"
         "=> machine terminate, called 0, freed 0, peers 1\nterminate(false): " +
         kMemoryEnd},
    {"AStopWhileReclaimingTakesEffectStillTerminates",
     {},
     kMemory,
     0,
     true,
     false,
     {{0, 1001}},
     kExceeded1001 + Called("memory") + kMemoryLost + kOwn1001 +
         "=> process terminate, called 2, freed 0, peers 0\nterminate(false): " + kMemoryEnd},
    {"CpuTerminationComesBeforeTheMemoryCheck",
     kCpuAtOnce,
     kMemory,
     0,
     false,
     false,
     {{60, 1}, {60, 1001}},
     "Detected high CPU usage. 60%\n"
     "Exceeded sustained high CPU threshold above 50% for 0 seconds.  This process has the highest usage of 60%\n"
     "report 0\n" +
         NoneToCall("CPU") + kCpuLost +
         "own; Memory info: 1,001 bytes; Memory limit usage: 0%; CPU info: 60%\n"
         "=> CPU terminate, called 0, freed 0, peers 0\nterminate(false): " +
         kCpuEnd},
    {"ADryRunGoesOn",
     {},
     kMemory,
     2,
     false,
     true,
     {{0, 1001}, {0, 1000, 99, 3}},
     kExceeded1001 + NoneToCall("memory") + kMemoryLost + kOwn1001 +
         "=> process terminate, called 0, freed 0, peers 0\n"
         "Dry run: termination is not requested. Resource Manager: " +
         kMemoryEnd +
         "Memory info: 1,000 bytes (current process);1,000 bytes (Quorvex total); 3 bytes (total of all processes); 1 "
         "(info "
         "count)\nreport 20\n"},
};

INSTANTIATE_TEST_SUITE_P(Transcripts, ManagerScenario, testing::ValuesIn(kScenarios),
                         [](auto const& of) { return std::string(of.param.name); });

TEST(MonitorArithmetic, KeepsEightBits)
{
    using qvxsys::monitor::AddedPercent;
    using qvxsys::monitor::LimitUsage;
    EXPECT_EQ(AddedPercent(60, 70), 100);
    EXPECT_EQ(AddedPercent(30, 40), 70);
    struct
    {
        std::uint64_t used, limit;
        int percent;
    } const s_cases[] = {{3000, 1000, 44}, {999, 1000, 99}, {1000, 1000, 100}, {2000, 1000, 100},
                         {2570, 1000, 1},  {0, 1, 0},       {~0ULL, 1, 0}};
    for (auto const& c : s_cases) {
        EXPECT_EQ(LimitUsage(c.used, c.limit), c.percent) << c.used << '/' << c.limit;
    }
    EXPECT_EQ(qvxsys::monitor::texts::Bytes(~0ULL), u"18,446,744,073,709,551,615 bytes");
    EXPECT_EQ(qvxsys::monitor::texts::Bytes(100), u"100 bytes");
    EXPECT_EQ(qvxsys::monitor::Milliseconds(std::chrono::seconds::max()), std::chrono::milliseconds::max());
}

/// Made-up process ids are remembered up to a limit, behind which a process must run, and there is room for those.
TEST(InfoTable, IsBoundedHoweverManyProcessesClaimToExist)
{
    using qvxsys::monitor::InfoTable;
    static constexpr std::uint32_t kReal = 5'000'000;
    InfoTable table([](unsigned int processId) noexcept { return processId >= kReal; });
    for (std::uint32_t processId = 1; processId <= 1'000'000; ++processId) {
        table.Store({processId, 1, 1, 1}, 5);
    }
    EXPECT_EQ(table.Snapshot(0).size(), InfoTable::kBelieved);
    for (std::uint32_t processId = kReal; processId < kReal + 2 * InfoTable::kMost; ++processId) {
        table.Store({processId, 1, 1, 1}, 5);
    }
    EXPECT_EQ(table.Snapshot(0).size(), InfoTable::kMost);
    table.Store({kReal, 9, 1, 1}, 20);
    table.Prune(1);
    EXPECT_EQ(table.Snapshot(0).size(), InfoTable::kMost - InfoTable::kBelieved + 1)
        << "1 is kept, the made-up ones go";
    EXPECT_EQ(table.Find(kReal)->m_memory, 9U);
    std::size_t others = 0;
    std::size_t const all = table.VisitOthers(kReal, [&others](ResourceValues const&) { ++others; });
    EXPECT_EQ(all, others + 1);
}

} // namespace
