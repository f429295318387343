// Work on other threads: many empty tasks through a pool, one there and back, and loops, beside what people would use
// instead. Times are of the clock on the wall. To see rows as on a machine with one processor: taskset -c 0.

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include <qvxsys/TEvent.h>

#include "BenchSupport.h"
#include "PoolPeers.h"

namespace {

constexpr int kTasks = 200'000;

template<class Body>
void WallRow(std::string const& row, std::string const& who, Body body)
{
    std::string const name = row + "/" + who;
    benchmark::RegisterBenchmark(name.c_str(), std::move(body))
        
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond);
}

/// One thread adds empty tasks; the time until all have run.
template<class Pool>
void ManyTasks(benchmark::State& state, unsigned int workers)
{
    Pool pool(workers);
    for ([[maybe_unused]] auto _ : state) {
        std::atomic<int> left = kTasks;
        TEvent done;
        for (int i = 0; i < kTasks; ++i) {
            pool.Post([&left, &done] {
                if (left.fetch_sub(1, std::memory_order_acq_rel) == 1) {
                    done.Signal();
                }
            });
        }
        done.Wait();
    }
}

/// A task that adds the next, so many in parallel.
template<class Pool>
struct Chain
{
    Pool& pool;
    std::atomic<int>& left;
    TEvent& done;

    void operator()() const
    {
        int const now = left.fetch_sub(1, std::memory_order_acq_rel);
        if (now > 0) {
            pool.Post(*this);
        } else if (now == -7) {
            done.Signal();
        }
    }
};

/// Eight chains of tasks, each of which adds its successor, on so many workers.
template<class Pool>
void Chains(benchmark::State& state, unsigned int workers)
{
    Pool pool(workers);
    for ([[maybe_unused]] auto _ : state) {
        std::atomic<int> left = kTasks;
        TEvent done;
        for (int i = 0; i < 8; ++i) {
            pool.Post(Chain<Pool>{pool, left, done});
        }
        done.Wait();
    }
}

template<class Pool>
void ThereAndBack(benchmark::State& state)
{
    Pool pool(1);
    for ([[maybe_unused]] auto _ : state) {
        TEvent done;
        pool.Post([&done] { done.Signal(); });
        done.Wait();
    }
}

void PoolRows()
{
    bench::ForEachPool([]<class Pool>() {
        WallRow("g1 200,000 empty tasks, 2 workers", Pool::kName,
                [](benchmark::State& state) { ManyTasks<Pool>(state, 2); });
        WallRow("g1 200,000 empty tasks, 8 workers", Pool::kName,
                [](benchmark::State& state) { ManyTasks<Pool>(state, 8); });
        WallRow("g1 8 chains of tasks, 8 workers", Pool::kName,
                [](benchmark::State& state) { Chains<Pool>(state, 8); });
        WallRow("g2 one task there and back", Pool::kName, [](benchmark::State& state) { ThereAndBack<Pool>(state); });
    });
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, PoolRows);
}
