// The manager as programs use it, with its threads and sockets.

#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <qvxsys/qvxsys.h>

#include "MonitorSupport.h"
#include "MonitoredProcess.h"
#include "PressureRelief.h"
#include "ResourceReporterManager.h"
#include "support/LogicAsserts.h"
#include "support/Threads.h"

namespace {

using namespace std::chrono_literals;

TEST(ResourceManager, WithBothMonitorsOffOnlyAnswers)
{
    Lines lines;
    Settings settings(lines);
    settings.cpu.m_maxCpu = 100;
    settings.memory.m_perProcessLimit = 0;
    settings.Start();
    ResourceManager::AddReclaimCpuFunction("f", [] {});
    ResourceManager::RemoveReclaimCpuFunction("f");
    EXPECT_EQ(ResourceManager::GetCpuAndMemoryUsage(), std::pair(std::uint8_t{0}, std::uint64_t{0}));
    EXPECT_TRUE(ResourceManager::GetSnapshot().empty());
    settings.Start();
    EXPECT_EQ(lines.Get(), std::vector<std::string>());
    ResourceManager::Stop();
    ResourceManager::Stop();
    EXPECT_EQ(lines.Get(), std::vector<std::string>{"Resource Manager: stopped"});
}

TEST(ResourceManager, SaysHowItStartsAndStops)
{
    Lines lines;
    unsigned short const port = NextPort();
    auto const log = [&lines](TStringCore const& line) { lines.Add(line); };
    ResourceManager::Start(
        port, 99, 5s, false, false, 1ULL << 31, 1ULL << 32, false, false, 3600s, 3600s, 0, log,
        [](bool, TStringCore const&) {}, nullptr);
    ResourceManager::Stop();
    EXPECT_EQ(lines.Get(), (std::vector<std::string>{
                               "Resource Manager: Max CPU limited to 99% over 5 seconds",
                               "Resource Manager: Per Process Memory Limit: 2,147,483,648 bytes",
                               "Resource Manager: All Processes Memory Limit: 4,294,967,296 bytes",
                               "Resource Manager: Checking resources every 3600 seconds",
                               "Resource Manager: listening on port " + std::to_string(port),
                               "Resource Manager: listening thread has stopped", "Resource Manager: stopped"}));
}

TEST(ResourceManager, ChecksHowItIsUsed)
{
    Lines lines;
    Settings const settings(lines);
    auto const without = [&settings](auto member) {
        return [&settings, member] {
            ResourceManager::GeneralConfig general = settings.general;
            general.*member = nullptr;
            ResourceManager::Start(settings.port, settings.cpu, settings.memory, general);
        };
    };
    struct Misuse
    {
        std::function<void()> action;
        RaisedAssert expected;
    };
    using Manager = ResourceManager;
    std::string const kNotStarted = "s_singleton";
    Misuse const stopped[] = {
        {without(&Manager::GeneralConfig::m_logFunc), {"ResourceManager", 64, "generalConfig.m_logFunc != nullptr"}},
        {without(&Manager::GeneralConfig::m_terminateFunc),
         {"ResourceManager", 65, "generalConfig.m_terminateFunc != nullptr"}},
        {[] { Manager::AddReclaimCpuFunction("f", [] {}); }, {"ResourceManager", 107, kNotStarted}},
        {[] { Manager::RemoveReclaimCpuFunction("f"); }, {"ResourceManager", 113, kNotStarted}},
        {[] { Manager::AddReclaimMemoryFunction("f", [] {}); }, {"ResourceManager", 119, kNotStarted}},
        {[] { Manager::RemoveReclaimMemoryFunction("f"); }, {"ResourceManager", 125, kNotStarted}},
        {[] { Manager::RegisterChildProcessId(1); }, {"ResourceManager", 131, kNotStarted}},
        {[] { Manager::UnregisterChildProcessId(1); }, {"ResourceManager", 137, kNotStarted}},
        {[] { static_cast<void>(Manager::GetCpuAndMemoryUsage()); }, {"ResourceManager", 143, kNotStarted}},
    };
    Misuse const started[] = {
        {[] { Manager::AddReclaimCpuFunction("f", nullptr); }, {"ReclaimFunctions", 28, "func"}},
        {[] { Manager::AddReclaimCpuFunction("taken", [] {}); },
         {"ReclaimFunctions", 30, "m_functions.insert(make_pair(name, func)).second"}},
        {[] { Manager::RemoveReclaimMemoryFunction("taken"); },
         {"ReclaimFunctions", 36, "m_functions.erase(name) > 0"}},
    };
    auto const check = [](auto const& cases) {
        for (auto const& [action, expected] : cases) {
            RaisedAssert const named{"qvxsys/main/monitor/" + expected.file, expected.line, expected.condition};
            EXPECT_EQ(AssertRaisedBy(action), named);
        }
    };
    check(stopped);
    Settings off = settings;
    off.memory.m_perProcessLimit = 0;
    off.Start();
    Manager::AddReclaimCpuFunction("taken", [] {});
    check(started);
    ResourceManager::Stop();
}

/// Stop from every function of the host that runs on one of the manager's threads, and from outside in every state.
TEST(ResourceManager, StopsInEveryState)
{
    struct
    {
        char const* name;
        bool exceeds;        ///< whether the machine is above its limit
        char const* outside; ///< the line that another thread waits for and then stops; null: none does
        char const* inside;  ///< the line or call that stops the manager, on the thread that it comes from
    } const s_cases[] = {
        {"check interval", false, "Memory info", nullptr},
        {"reclaim wait", true, "reclaiming", nullptr},
        {"reclaim function", true, nullptr, "reclaiming"},
        {"both", true, "Calling reclaim", "reclaiming"},
        {"terminate function", true, "reclaiming", "Requesting termination"},
        {"log function of the worker", true, nullptr, "Exceeded allowed"},
        {"log function of the listener", false, nullptr, "rejected invalid"},
    };
    for (auto const& c : s_cases) {
        SCOPED_TRACE(c.name);
        Lines lines;
        TEvent go(c.outside == nullptr);
        Settings settings(lines);
        auto const hear = [&](TStringCore const& line) {
            bool const last = line.endsWith("stopped"); // when the test may be over as soon as it has heard it
            lines.Add(line);
            if (last) {
                return;
            }
            if (line.contains("Checking resources")) {
                // In time for the first check.
                ResourceManager::AddReclaimMemoryFunction("f",
                                                          [&settings] { settings.general.m_logFunc("reclaiming"); });
            }
            if (c.inside != nullptr && line.contains(c.inside)) {
                go.Wait();
                ResourceManager::Stop();
            }
        };
        settings.memory.m_allProcessesLimit = c.exceeds ? 0 : ~0ULL;
        settings.general.m_checkInterval = 3600s;
        settings.general.m_infoLogEvery = 1;
        settings.general.m_logFunc = hear;
        settings.general.m_terminateFunc = [hear](bool, TStringCore const& line) { hear(line); };
        settings.Start();
        if (!c.exceeds && c.inside != nullptr) {
            SendRaw(settings.port, 13);
        }
        if (c.outside != nullptr) {
            EXPECT_TRUE(lines.WaitFor(c.outside));
            go.Signal();
            ResourceManager::Stop();
        }
        EXPECT_TRUE(lines.WaitFor("Resource Manager: stopped"));
        EXPECT_EQ(lines.Has("Requesting termination"), c.exceeds) << "as a stop while reclaiming takes effect";
    }
}

TEST(ResourceManager, CountsTheChildrenThatAreRegistered)
{
    Lines lines;
    Settings settings(lines);
    std::string const own = std::to_string(TSystem::ProcessID()); // serves as a child
    settings.general.m_checkInterval = 3600s;
    settings.general.m_logFunc = [&lines](TStringCore const& line) {
        lines.Add(line);
        if (line.contains("Checking resources")) { // in time for the first check
            ResourceManager::RegisterChildProcessId(TSystem::ProcessID());
        }
    };
    settings.Start();
    std::uint64_t const alone = qvxsys::monitor::MonitoredProcess().GetMemoryUsage(); // 0 under Wine
    YieldUntil([&] { return alone == 0 || ResourceManager::GetCpuAndMemoryUsage().second != 0; });
    EXPECT_GE(ResourceManager::GetCpuAndMemoryUsage().second, alone / 2 * 3);
    ResourceManager::UnregisterChildProcessId(TSystem::ProcessID());
    ResourceManager::Stop();
    EXPECT_TRUE(lines.Has("Adding child process: " + own) && lines.Has("Removing child process: " + own));
}

TEST(ResourceReporter, IsCalledInOrderAndMayComeAndGo)
{
    static std::string s_called;
    struct Named : ResourceReporter
    {
        explicit Named(char name, std::function<void()> does = nullptr) : m_name(name), m_does(std::move(does)) {}
        void Report(unsigned int seconds) override
        {
            s_called += m_name + std::to_string(seconds);
            if (m_does) {
                std::exchange(m_does, nullptr)();
            }
        }
        char m_name;
        std::function<void()> m_does;
    };
    auto first = std::make_unique<Named>('a');
    std::unique_ptr<Named> third;
    Named const second('b', [&] {
        first.reset();
        third = std::make_unique<Named>('c');
    });
    auto& manager = qvxsys::monitor::ResourceReporterManager::Get();
    manager.NotifyAll(1);
    manager.NotifyAll(2);
    EXPECT_EQ(s_called, "a1b1c1b2c2");
    EXPECT_EQ(AssertRaisedBy([&] { Named const copy(second); }, HookThat::Returns),
              (RaisedAssert{"qvxsys/main/monitor/ResourceReporterManager", 47, "el != mng.m_reporters.end()"}));
}

TEST(ResourceManager, AdjustsLimits)
{
    constexpr std::uint64_t kGiB = 1ULL << 30;
    std::uint64_t const total = TSystem::Memory().totalPhysical;
    EXPECT_EQ(ResourceManager::AdjustMemoryLimit(1, 5, 0.5, false), 5 * kGiB);
    EXPECT_EQ(ResourceManager::AdjustMemoryLimit(0, 0, 0.5, false), total / 2);
    EXPECT_EQ(ResourceManager::AdjustMemoryLimit(4'000'000, 0, 0.5, false), 4'000'000 * kGiB);
    EXPECT_LE(ResourceManager::AdjustMemoryLimit(0, 0, 1, true), total);
    EXPECT_EQ(ResourceManager::AdjustMemoryLimit(3, 0, -1, false), 3 * kGiB);
}

/// Warnings by script.
class ScriptedPressure final : public qvxsys::monitor::PressureSource
{
public:
    explicit ScriptedPressure(std::vector<unsigned int> warnings) : m_warnings(std::move(warnings)) {}
    unsigned int Wait() noexcept override
    {
        if (m_next < m_warnings.size()) {
            return m_warnings[m_next++];
        }
        m_stop.Wait();
        return 0;
    }
    void Stop() noexcept override { m_stop.Signal(); }

private:
    std::vector<unsigned int> const m_warnings;
    std::size_t m_next = 0;
    TEvent m_stop;
};

TEST(MemoryPressure, CallsFunctionsByGradeAndTellsWhatTheyFreed)
{
    using qvxsys::monitor::PressureSource;
    constexpr std::size_t kSize = std::size_t{300} << 20; // more than sanitizers keep back
    std::unique_ptr<std::vector<char>> block;
    std::vector<std::string> reliefs;
    qvxsys::monitor::PressureRelief relief(nullptr, [&](MemoryRelief const& told) {
        reliefs.push_back(told.m_name.toStdString() + (told.m_bytesFreed >= kSize / 2 ? " much" : ""));
    });
    relief.Add("second", 2, [] {});
    relief.Add("first", 1, [&] {
        block.reset();
        relief.Remove("gone");
    });
    relief.Add("gone", 1, [] {});
    relief.Add("last", 2, [] {});
    block = std::make_unique<std::vector<char>>(kSize, 'x');
    // Wine tells of no private memory.
    bool const measured = qvxsys::monitor::MonitoredProcess().GetMemoryUsage() != 0;
    std::string const first = measured ? "first much" : "first";
    EXPECT_GE(relief.Reclaim(1), measured ? kSize / 2 : 0);
    EXPECT_EQ(reliefs, std::vector<std::string>{first});
    relief.Remove("first");
    relief.Reclaim(2);
    EXPECT_EQ(reliefs, (std::vector<std::string>{first, "second", "last"}));
    EXPECT_EQ(AssertRaisedBy([&] { relief.Add("third", 3, [] {}); })->condition, "grade == 1 || grade == 2");
    EXPECT_EQ(AssertRaisedBy([&] { relief.Add("last", 1, [] {}); })->condition, "!IsKnown(name)");

    std::atomic<int> called = 0;
    qvxsys::monitor::PressureRelief listening(
        std::make_unique<ScriptedPressure>(
            std::vector{PressureSource::kSome, PressureSource::kSome | PressureSource::kFull}),
        [&called](MemoryRelief const&) { ++called; });
    YieldUntil([&] { return listening.GetWarnings(MemoryPressure::Level::Full) == 1; });
    EXPECT_EQ(listening.GetWarnings(MemoryPressure::Level::Some), 2U);
    EXPECT_TRUE(listening.IsListening());
}

/// Whether it listens or not, it says to what, or why not.
TEST(MemoryPressure, SaysWhatItListensTo)
{
    MemoryPressure pressure({}, nullptr);
    TStringCore const status = pressure.GetStatus();
    EXPECT_TRUE(status.contains("pressure")) << status;
    EXPECT_EQ(pressure.IsListening(), !status.contains(": ")) << status;
    MemoryPressure const impossible({.m_window = 1ms}, nullptr);
    EXPECT_FALSE(impossible.IsListening());
    EXPECT_TRUE(impossible.GetStatus().contains(": ")) << impossible.GetStatus();
    int freed = 0;
    pressure.AddReclaim("f", 2, [&freed] { ++freed; });
    pressure.Reclaim(MemoryPressure::Level::Some);
    EXPECT_EQ(freed, 0);
    pressure.Reclaim(MemoryPressure::Level::Full);
    EXPECT_EQ(freed, 1);
    pressure.RemoveReclaim("f");
    pressure.Reclaim(MemoryPressure::Level::Full);
    EXPECT_EQ(freed, 1);
    EXPECT_EQ(impossible.GetWarnings(MemoryPressure::Level::Some), 0u);
}

void EndWithSeven()
{
    std::_Exit(7);
}

/// What leaves the listening thread goes to its terminate handler, what leaves others does not.
TEST(ResourceManagerDeathTest, CallsTheListenersTerminateHandlerThereOnly)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto const start = [](char const* throwAt) {
        Lines lines;
        Settings settings(lines);
        settings.general.m_startDelay = 3600s;
        settings.general.m_listenerTerminateHandler = &EndWithSeven;
        settings.general.m_logFunc = [throwAt](TStringCore const& line) {
            if (line.contains(throwAt)) {
                throw std::runtime_error("log");
            }
        };
        settings.Start();
        SendRaw(settings.port, 15);
        std::thread([throwAt]() noexcept {
            if (std::string_view(throwAt) == "none") {
                std::terminate();
            }
            TEvent().Wait();
        }).join();
    };
    EXPECT_EXIT(start("rejected"), testing::ExitedWithCode(7), "");
    EXPECT_EXIT(
        start("none"), [](int status) { return status != 7 << 8 && status != 7; }, "terminate called");
    EXPECT_DEATH(
        ResourceManager::Start(
            1, {}, {}, {.m_checkInterval = 0s, .m_logFunc = [](auto&) {}, .m_terminateFunc = [](bool, auto&) {}}),
        "");
}

} // namespace
