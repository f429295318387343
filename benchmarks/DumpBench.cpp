// Crash dumps of a process with 200 threads. There is no peer that writes such files; what counts is for how long the
// process stands still, as one of its threads sees it: the longest time between two looks at the clock while a dump is
// being written. The row without a dump tells how much of that is the machine's doing.

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <qvxsys/CrashDump.h>
#include <qvxsys/TSystem.h>

#include "BenchSupport.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kThreads = 200;

/// A thread that looks at the clock all the time.
class Watch
{
public:
    Watch()
        : m_thread([this](std::stop_token const& stop) {
              for (Clock::time_point before = Clock::now(); !stop.stop_requested();) {
                  Clock::time_point const now = Clock::now();
                  auto const gap = (now - before).count();
                  if (gap > m_longest.load(std::memory_order_relaxed)) {
                      m_longest.store(gap, std::memory_order_relaxed);
                  }
                  before = now;
              }
          })
    {}

    void Begin() { m_longest = 0; }
    double Seconds() const { return std::chrono::duration<double>(Clock::duration(m_longest.load())).count(); }

private:
    std::atomic<Clock::duration::rep> m_longest{0};
    std::jthread m_thread;
};

class Waiting
{
public:
    Waiting()
    {
        for (int i = 0; i < kThreads; ++i) {
            m_threads.emplace_back([this] { m_end.wait(false); });
        }
    }
    ~Waiting()
    {
        m_end = true;
        m_end.notify_all();
    }

private:
    std::atomic<bool> m_end{false};
    std::vector<std::jthread> m_threads;
};

void Dump(benchmark::State& state, int type, bool stopped)
{
    std::filesystem::path const file = std::filesystem::temp_directory_path() / "dump_bench.dmp";
    Waiting const waiting;
    Watch watch;
    for ([[maybe_unused]] auto _ : state) {
        watch.Begin();
        auto const begin = Clock::now();
        if (type >= 0 && WriteCrashDump(nullptr, TSystem::ProcessID(), file.u16string().c_str(), type) == 0) {
            state.SkipWithError(GetLastErrorString().c_str());
            break;
        }
        if (type < 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        state.SetIterationTime(stopped ? watch.Seconds() : std::chrono::duration<double>(Clock::now() - begin).count());
    }
    std::error_code ignored;
    if (type >= 0) {
        state.counters["bytes"] = static_cast<double>(std::filesystem::file_size(file, ignored));
        std::filesystem::remove(file, ignored);
    }
}

void AddRow(char const* row, char const* who, int type, bool stopped)
{
    benchmark::RegisterBenchmark((std::string(row) + "/" + who).c_str(),
                                 [=](benchmark::State& state) { Dump(state, type, stopped); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int count, char** arguments)
{
    AddRow("j4 dump of 200 threads, stopped", "own", MiniDumpNormal, true);
    AddRow("j4 dump of 200 threads, stopped", "[no dump]", -1, true);
    AddRow("j4 dump of 200 threads, all", "own", MiniDumpNormal, false);
    AddRow("j4 dump of 200 threads with heap, stopped", "own", MiniDumpWithPrivateReadWriteMemory, true);
    AddRow("j4 dump of 200 threads with heap, all", "own", MiniDumpWithPrivateReadWriteMemory, false);
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
