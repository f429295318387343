// The examples of the headers of the resource monitor: a process with a cache and a limit that watches itself, seen by
// an observer; and relief under memory pressure.

#include <atomic>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <qvxsys/qvxsys.h>

namespace {

// Any port that the suite's processes agree on.
unsigned short Port()
{
    return static_cast<unsigned short>(30000 + TSystem::ProcessID() % 10000);
}

std::mutex g_mutex;
std::vector<std::string> g_log;
std::unique_ptr<std::vector<char>> g_thumbnails;
std::atomic<unsigned int> g_reported = 0;

void Log(TStringCore const& line)
{
    std::lock_guard const lock(g_mutex);
    g_log.push_back(line.toStdString());
}

class CacheReporter : public ResourceReporter
{
    void Report(unsigned int seconds) override { g_reported = seconds; }
};

/// A limit that the process is above until its thumbnails are gone.
bool Manager()
{
    g_thumbnails = std::make_unique<std::vector<char>>(std::size_t{512} << 20, 'x');
    CacheReporter const reporter;
    TEvent decided;
    ResourceDecision decision;
    TEvent seen;
    ResourceObserver observer(Port(), {[&seen](ResourceValues const&) { seen.Signal(); }, nullptr});

    ResourceManager::CpuConfig const cpu; // off
    ResourceManager::MemoryConfig memory;
    memory.m_perProcessLimit = std::uint64_t{384} << 20;
    memory.m_allProcessesLimit = ResourceManager::AdjustMemoryLimit(1, 0, 1.0, false);
    ResourceManager::GeneralConfig general;
    general.m_checkInterval = std::chrono::seconds(1);
    general.m_startDelay = std::chrono::seconds(1);
    general.m_infoLogEvery = 5;
    general.m_logFunc = &Log;
    general.m_terminateFunc = [&decided](bool, TStringCore const& why) {
        Log(why);
        decided.Signal();
    };
    ResourceManager::Options options;
    options.m_onDecision = [&](ResourceDecision const& made) {
        decision = made;
        decided.Signal();
    };
    ResourceManager::Start(Port(), cpu, memory, general, options);
    ResourceManager::AddReclaimMemoryFunction("thumbnails", [] { g_thumbnails.reset(); });
    decided.Wait();
    seen.Wait();
    bool const others = !observer.GetSnapshot().empty();
    ResourceManager::Stop();
    for (std::string const& line : g_log) {
        std::cout << line << '\n';
    }
    return decision.m_verdict == ResourceDecision::Verdict::Averted &&
           decision.m_bytesFreed > memory.m_perProcessLimit && g_reported == 5 && others;
}

bool Pressure()
{
    std::vector<char> glyphs(std::size_t{64} << 20, 'x');
    MemoryPressure pressure({}, [](MemoryRelief const& relief) {
        std::cout << relief.m_name.toStdString() << " freed " << relief.m_bytesFreed << " bytes\n";
    });
    std::cout << pressure.GetStatus().toStdString() << (pressure.IsListening() ? ": listening\n" : "\n");
    pressure.AddReclaim("glyph cache", 1, [&glyphs] { std::vector<char>().swap(glyphs); });
    pressure.Reclaim(MemoryPressure::Level::Some);
    return glyphs.empty();
}

} // namespace

int main()
{
    bool const monitored = Manager();
    bool const relieved = Pressure();
    return monitored && relieved ? 0 : 1;
}
