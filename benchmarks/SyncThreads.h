#pragma once
// Rows whose work is done by several threads at once. They are timed by the clock on the wall, from the first thread's
// beginning to the last one's end.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <sched.h>

#include "BenchSupport.h"

namespace bench {

/// Which processors the threads of a row run on.
enum class Cores {
    Any,  ///< as the system likes
    One,  ///< all on the first processor
    Each, ///< thread i on processor i, as far as there are so many
};

inline void PinThread(Cores cores, unsigned int thread)
{
    if (cores != Cores::Any) {
        unsigned int const core = cores == Cores::One ? 0 : thread % std::max(1u, std::thread::hardware_concurrency());
        cpu_set_t set;
        CPU_ZERO(&set);
        CPU_SET(core, &set);
        sched_setaffinity(0, sizeof(set), &set);
    }
}

/// Runs work(0), work(1), ... on threads of their own, which start together; tells how many seconds they took.
template<class Work>
double TimeTogether(unsigned int threads, Cores cores, Work const& work)
{
    using Clock = std::chrono::steady_clock;
    std::vector<std::pair<Clock::time_point, Clock::time_point>> times(threads);
    std::atomic<unsigned int> missing = threads;
    {
        std::vector<std::jthread> running;
        for (unsigned int i = 0; i < threads; ++i) {
            running.emplace_back([&, i] {
                PinThread(cores, i);
                missing.fetch_sub(1);
                while (missing.load() != 0) {
                    std::this_thread::yield();
                }
                times[i].first = Clock::now();
                work(i);
                times[i].second = Clock::now();
            });
        }
    }
    auto begin = times[0].first;
    auto end = times[0].second;
    for (auto const& [first, last] : times) {
        begin = std::min(begin, first);
        end = std::max(end, last);
    }
    return std::chrono::duration<double>(end - begin).count();
}

/// A row that runs a few batches of `steps` steps altogether and gives the median batch's time for one step.
/// `batch` returns seconds.
template<class Batch>
void ThreadRow(std::string const& row, std::string const& who, double steps, Batch batch)
{
    constexpr std::size_t kBatches = 5;
    benchmark::RegisterBenchmark((row + "/" + who).c_str(),
                                 [steps, batch](benchmark::State& state) mutable {
                                     for ([[maybe_unused]] auto _ : state) {
                                         std::vector<double> seconds;
                                         while (seconds.size() < kBatches) {
                                             seconds.push_back(batch());
                                         }
                                         std::ranges::sort(seconds);
                                         state.SetIterationTime(seconds[kBatches / 2] / steps);
                                     }
                                 })
        ->Iterations(1)
        ->UseManualTime();
}

} // namespace bench
