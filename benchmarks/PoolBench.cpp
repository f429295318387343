// Work on other threads: many empty tasks through a pool, one there and back, and loops, beside what people would use
// instead. Times are of the clock on the wall. To see rows as on a machine with one processor: taskset -c 0.

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include <qvxsys/ParallelFor.h>
#include <qvxsys/TEvent.h>

#ifdef QVXSYS_BENCH_TBB
#include <tbb/parallel_for.h>
#endif

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

/// Something that takes a while for each index and cannot be left out.
struct Tiny
{
    std::vector<std::uint32_t>& values;

    void operator()(std::size_t i) const { values[i] = values[i] * 2654435761U + 1; }
};

/// About 1.4 microseconds.
struct Medium
{
    std::vector<std::uint32_t>& values;

    void operator()(std::size_t i) const
    {
        std::uint32_t value = values[i];
        for (int round = 0; round < 900; ++round) {
            value = value * 2654435761U + 1;
        }
        values[i] = value;
    }
};

/// `run(body, count)` is the loop.
template<class Body, class Run>
void LoopRow(std::string const& row, std::string const& who, std::size_t count, Run run)
{
    WallRow(row, who, [count, run](benchmark::State& state) {
        std::vector<std::uint32_t> values(count);
        for ([[maybe_unused]] auto _ : state) {
            run(Body{values}, count);
            benchmark::ClobberMemory();
        }
    });
}

template<class Body>
void LoopRows(std::string const& row, std::size_t count)
{
    LoopRow<Body>(row, "own", count,
                  [](Body const& body, std::size_t n) { AsyncTask::ParallelFor(std::size_t(0), n, body); });
    if (count < 100'000) {
        LoopRow<Body>(row, "own, ParallelForThread", count, [](Body const& body, std::size_t n) {
            ParallelForThread(1, 0, n, [&body](unsigned long long i) { body(i); });
        });
    }
    LoopRow<Body>(row, "[one thread]", count, [](Body const& body, std::size_t n) {
        for (std::size_t i = 0; i < n; ++i) {
            body(i);
        }
    });
#ifdef QVXSYS_BENCH_TBB
    LoopRow<Body>(row, "TBB parallel_for", count,
                  [](Body const& body, std::size_t n) { tbb::parallel_for(std::size_t(0), n, body); });
#endif
#ifdef QVXSYS_BENCH_OPENMP
    LoopRow<Body>(row, "OpenMP", count, [](Body const& body, std::size_t n) {
#pragma omp parallel for
        for (std::size_t i = 0; i < n; ++i) {
            body(i);
        }
    });
    LoopRow<Body>(row, "OpenMP, dynamic", count, [](Body const& body, std::size_t n) {
#pragma omp parallel for schedule(guided)
        for (std::size_t i = 0; i < n; ++i) {
            body(i);
        }
    });
#endif
}

void AllRows()
{
    TThreadPool::Configure(2, nullptr, nullptr, nullptr);
    PoolRows();
    LoopRows<Tiny>("g4 loop of 1,000,000 tiny indexes", 1'000'000);
    LoopRows<Medium>("g4 loop of 1,000 indexes of 1.4 us", 1'000);
    LoopRows<Tiny>("g5 loop of 16 tiny indexes", 16);
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, AllRows);
}
