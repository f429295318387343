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
using Transcript = std::vector<std::string>;

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
    general.m_logFunc = [&heard](TStringCore const& line) { heard.push_back(Line(line)); };
    general.m_terminateFunc = [&heard](bool flag, TStringCore const& reason) {
        heard.push_back((flag ? "terminate(true): " : "terminate(false): ") + Line(reason));
    };
    return general;
}

class ScriptedManager final : public ResourceManagerImpl
{
public:
    ScriptedManager(Scenario const& scenario, Transcript& heard)
        : ResourceManagerImpl(
              scenario.cpu, scenario.memory, General(scenario, heard),
              {[&heard](ResourceDecision const& decision) { heard.push_back(Text(decision)); }, scenario.dryRun}),
          m_steps(scenario.steps)
    {
        m_sleep = [this](std::chrono::milliseconds time) {
            m_now += time;
            return m_next == m_steps.size();
        };
        for (char const* const name : {"b", "a"}) {
            if (scenario.functions) {
                CpuFunctions().Add(name, [&heard, name] { heard.push_back(std::string(name) + "()"); });
                MemoryFunctions().Add(name, [&heard, name] { heard.push_back(std::string(name) + "()"); });
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
    void Report(unsigned int seconds) override { heard.push_back("report " + std::to_string(seconds)); }
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
        heard.push_back("end");
    }
    Transcript expected = GetParam().expected;
    expected.insert(expected.end(), {"end", "stopped"});
    EXPECT_EQ(heard, expected);
}

constexpr std::uint32_t kPeer = 7;

ResourceManager::CpuConfig const kCpu{.m_maxCpu = 50, .m_sustainedPeriod = 20s, .m_terminateFlag = true};
ResourceManager::CpuConfig const kCpuAtOnce{.m_maxCpu = 50};
ResourceManager::CpuConfig const kAverage{.m_maxCpu = 50, .m_sustainedPeriod = 20s, .m_useAverage = true};
ResourceManager::CpuConfig const kAverageOfNone{.m_maxCpu = 50, .m_sustainedPeriod = 5s, .m_useAverage = true};
ResourceManager::MemoryConfig const kMemory{.m_perProcessLimit = 1000, .m_allProcessesLimit = 5000};

Scenario const kScenarios[] = {
    {"CpuEpisodesEndWithIdleAndLastWithoutReclaiming",
     kCpu,
     {},
     0,
     false,
     false,
     {{60}, {0}, {60}, {60}, {60}, {60}, {60}},
     {"Detected high CPU usage. 60%", "Detected high CPU usage. 60%",
      "Exceeded sustained high CPU threshold above 50% for 20 seconds.  This process has the highest usage of 60%",
      "report 0", "Reclaiming CPU. Number registered functions: 0",
      "CPU reclamation was unsucessful. Process has to be terminated.", "Logging all CPU/memory info across processes.",
      "own; Memory info: 0 bytes; Memory limit usage: 0%; CPU info: 60%",
      "=> CPU terminate, called 0, freed 0, peers 0",
      "terminate(true): Process is above CPU threshold. Requesting termination."}},
    {"CpuIsForTheHeaviestAndTiesCount",
     kCpuAtOnce,
     {},
     0,
     true,
     false,
     {{60, 0, 0, 0, {{kPeer, 5, 0, 61}}}, {60}, {60, 0, 0, 0, {{kPeer, 5, 0, 60}}}, {40, 0, 0, 0, {{kPeer, 5, 0, 2}}}},
     {"Detected high CPU usage. 100%", "=> CPU spared, called 0, freed 0, peers 1",
      "Exceeded sustained high CPU threshold above 50% for 0 seconds.  This process has the highest usage of 60%",
      "report 0", "Reclaiming CPU. Number registered functions: 2", "Calling reclaim function named: a", "a()",
      "Calling reclaim function named: b", "b()", "CPU info: 40%; 42% (Quorvex total); 2 (info count)", "report 0",
      "CPU reclaimed. Process termination has been averted!", "=> CPU averted, called 2, freed 0, peers 1"}},
    {"InfoComesEveryThirdTime",
     kCpu,
     kMemory,
     3,
     false,
     false,
     {{0, 1000, 100, 4000}, {0}, {0, 1000, 100, 4000}, {1}, {1}, {1, 2, 3, 5000}},
     {"CPU info: 0%",
      "Memory info: 1,000 bytes (current process);1,000 bytes (Quorvex total); 4,000 bytes (total of all processes); 1 "
      "(info count)",
      "report 30", "CPU info: 1%; 1% (Quorvex total); 1 (info count)", "report 30",
      "Memory info: 2 bytes (current process);2 bytes (Quorvex total); 5,000 bytes (total of all processes); 1 (info "
      "count)",
      "report 30"}},
    // 90; (90 + 30) / 2; (30 + 30) / 2; nothing; (30 + 90) / 2; 90
    {"AverageOfTheLastTwo",
     kAverage,
     {},
     0,
     false,
     false,
     {{90}, {30}, {30}, {0}, {90}, {90}},
     {"Detected high CPU usage. 90%", "Detected high CPU usage. 90%"}},
    {"AverageOfNoneIsNeverHigh", kAverageOfNone, {}, 0, false, false, {{100}, {100}, {100}}, {}},
    {"OneByteTooManyIsReclaimed",
     {},
     kMemory,
     0,
     true,
     false,
     {{0, 1000, 100, 1}, {0, 1001}, {0, 900, 90, 5000}},
     {"Exceeded allowed memory usage per process. 1,001 bytes", "Reclaiming memory. Number registered functions: 2",
      "Calling reclaim function named: a", "a()", "Calling reclaim function named: b", "b()",
      "Memory info: 900 bytes (current process);900 bytes (Quorvex total); 5,000 bytes (total of all processes); 1 "
      "(info "
      "count)",
      "report 0", "Memory reclaimed. Process termination has been averted!",
      "=> process averted, called 2, freed 101, peers 0"}},
    {"TheMachineIsForTheLargestShare",
     {},
     kMemory,
     0,
     false,
     false,
     {{0, 300, 30, 5001, {{kPeer, 400, 31, 0}}}, {0, 300, 30, 5001, {{kPeer, 400, 30, 0}}}},
     {"=> machine spared, called 0, freed 0, peers 1",
      "Exceeded allowed memory usage across all processes. Memory info: 300 bytes (current process);700 bytes (Quorvex "
      "total); 5,001 bytes (total of all processes); 2 (info count)",
      "report 0", "Reclaiming memory. Number registered functions: 0",
      "Memory reclamation was unsucessful. Process has to be terminated.",
      "Logging all CPU/memory info across processes.",
      "own; Memory info: 300 bytes; Memory limit usage: 30%; CPU info: 0%",
      "pid: 7; Memory info: 400 bytes; Memory limit usage: 30%; CPU info: 0%",
      "=> machine terminate, called 0, freed 0, peers 1",
      "terminate(false): Process is above memory threshold. Requesting termination."}},
    {"AStopWhileReclaimingTakesEffectStillTerminates",
     {},
     kMemory,
     0,
     true,
     false,
     {{0, 1001}},
     {"Exceeded allowed memory usage per process. 1,001 bytes", "Reclaiming memory. Number registered functions: 2",
      "Calling reclaim function named: a", "a()", "Calling reclaim function named: b", "b()",
      "Memory reclamation was unsucessful. Process has to be terminated.",
      "Logging all CPU/memory info across processes.",
      "own; Memory info: 1,001 bytes; Memory limit usage: 0%; CPU info: 0%",
      "=> process terminate, called 2, freed 0, peers 0",
      "terminate(false): Process is above memory threshold. Requesting termination."}},
    {"CpuTerminationComesBeforeTheMemoryCheck",
     kCpuAtOnce,
     kMemory,
     0,
     false,
     false,
     {{99, 1}, {99, 1001}},
     {"Detected high CPU usage. 99%",
      "Exceeded sustained high CPU threshold above 50% for 0 seconds.  This process has the highest usage of 99%",
      "report 0", "Reclaiming CPU. Number registered functions: 0",
      "CPU reclamation was unsucessful. Process has to be terminated.", "Logging all CPU/memory info across processes.",
      "own; Memory info: 1,001 bytes; Memory limit usage: 0%; CPU info: 99%",
      "=> CPU terminate, called 0, freed 0, peers 0",
      "terminate(false): Process is above CPU threshold. Requesting termination."}},
    {"ADryRunGoesOn",
     {},
     kMemory,
     2,
     false,
     true,
     {{0, 1001}, {0, 1000, 99, 3}},
     {"Exceeded allowed memory usage per process. 1,001 bytes", "Reclaiming memory. Number registered functions: 0",
      "Memory reclamation was unsucessful. Process has to be terminated.",
      "Logging all CPU/memory info across processes.",
      "own; Memory info: 1,001 bytes; Memory limit usage: 0%; CPU info: 0%",
      "=> process terminate, called 0, freed 0, peers 0",
      "Dry run: termination is not requested. Resource Manager: Process is above memory threshold. Requesting "
      "termination.",
      "Memory info: 1,000 bytes (current process);1,000 bytes (Quorvex total); 3 bytes (total of all processes); 1 "
      "(info count)",
      "report 20"}},
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
