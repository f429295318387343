#pragma once
// Loops on several threads.
//
//     AsyncTask::ParallelFor(std::size_t(0), files.size(), [&](std::size_t i) { results[i] = Measure(files[i]); });
//
//     long long const total = AsyncTask::ParallelReduce(0, n, 0LL, [&](int i) { return Weight(i); }, std::plus<>());
//
// Which one:
// - ParallelFor calls a function for each index, ParallelReduce adds up what it returns, ParallelForChunks gives it
//   stretches of indexes at a time. They share the process's pool and cost next to nothing when there is little to do:
//   indexes go in chunks, and other threads are asked to help only when a first stretch on the calling thread has taken
//   some microseconds. For anything that computes.
// - ParallelForThread starts threads of its own for the one call and hands out single indexes. Measured, it costs 10 to
//   30 microseconds for each thread, and for each index some 20 to 100 nanoseconds, or a few microseconds where a
//   thread has to be woken for it. So it is for few indexes that each take long, or that block, and for loops that must
//   run every index whatever the others throw.
//
// Helpers of ParallelFor come from TThreadPool::Get(), as many as have nothing else to do and as there are processors;
// without a configured pool the loop runs on the calling thread. The calling thread always works too, and at the end
// waits only for chunks that are being worked on, so loops may be nested in each other and in work of the pool.
//
// What the body throws first is thrown by the loop; chunks that have not begun by then are not begun. The calling
// thread's cancellation event (AsyncTask::Cancel) is that of the helpers while they help, so ThrowIfCancelled works in
// the body, and between chunks the loop itself looks at it and throws AsyncTask::CancelException.
//
// Threads: all may be called from any thread at any time.

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <functional>
#include <utility>

#include <qvxsys/Platform.h>
#include <qvxsys/TLocks.h>

namespace qvxsys::detail {

/// Runs the indexes in [begin, end) of a loop.
struct LoopBody
{
    void (*run)(void const* body, std::uint64_t begin, std::uint64_t end);
    void const* body;
};

/// How the rest of a loop is cut. Chunks begin with a share of what is left and shrink towards the end.
struct LoopChunks
{
    std::uint64_t least;
    std::uint64_t most;
};

/// So many cycles of the time-stamp counter are the first stretch, on the calling thread alone: about what waking a
/// thread costs.
inline constexpr std::uint64_t kFirstStretchCycles = 10'000;

[[nodiscard]] QVXSYS_API LoopChunks ChunksFor(std::uint64_t indexes, std::uint64_t cycles) noexcept;
/// Runs a loop on this thread and on idle threads of the pool.
QVXSYS_API void RunLoopTogether(LoopBody const& body, std::uint64_t begin, std::uint64_t end, LoopChunks const& chunks);

template<class Stretch>
void RunLoop(std::uint64_t count, std::uint64_t grain, Stretch const& stretch)
{
    std::uint64_t done = 0;
    LoopChunks chunks{grain, grain};
    if (grain == 0) {
        std::uint64_t const most = std::max<std::uint64_t>(1, count / 8);
        std::uint64_t const start = __builtin_ia32_rdtsc();
        std::uint64_t cycles = 0;
        while (cycles < kFirstStretchCycles) {
            if (done == count) {
                return;
            }
            std::uint64_t const size = std::clamp<std::uint64_t>(done, 1, std::min(most, count - done));
            stretch(done, done + size);
            done += size;
            cycles = __builtin_ia32_rdtsc() - start;
        }
        chunks = ChunksFor(done, cycles);
    }
    if (done != count) {
        auto const run = [](void const* body, std::uint64_t begin, std::uint64_t end) {
            (*static_cast<Stretch const*>(body))(begin, end);
        };
        RunLoopTogether({run, &stretch}, done, count, chunks);
    }
}

} // namespace qvxsys::detail

namespace AsyncTask {

/// Calls `body(first, last)` for stretches [first, last) that together are [begin, end), each index in one of them, on
/// this thread and on helpers, in no particular order. For bodies that have something to set up or to add up.
///
/// `grain` is the number of indexes in a chunk. With 0, chunks are sized by measuring: they take 5 microseconds or
/// more, as far as the first indexes tell. A grain of your own says that a chunk is worth a thread: helpers are asked
/// for at once. Give one when there are few indexes that take long.
template<std::integral Index, class Body>
void ParallelForChunks(Index begin, Index end, Body const& body, unsigned long long grain = 0)
{
    if (begin < end) {
        auto const base = static_cast<std::uint64_t>(begin);
        qvxsys::detail::RunLoop(static_cast<std::uint64_t>(end) - base, grain,
                                [&body, base](std::uint64_t first, std::uint64_t last) {
                                    body(static_cast<Index>(base + first), static_cast<Index>(base + last));
                                });
    }
}

/// Calls `body(i)` for each i in [begin, end). Cost per index over the body's own: less than a nanosecond; a loop that
/// is done before helpers are asked for costs some ten nanoseconds.
template<std::integral Index, class Body>
void ParallelFor(Index begin, Index end, Body const& body, unsigned long long grain = 0)
{
    ParallelForChunks(
        begin, end,
        [&body](Index first, Index last) {
            for (Index i = first; i != last; ++i) {
                body(i);
            }
        },
        grain);
}

/// The combination of map(i) for each i in [begin, end), beginning with `identity`, which must not change what it is
/// combined with. `combine(T, T)` must be associative and commutative: the order is not always the same, so sums of
/// floating-point numbers can differ in their last digits.
template<std::integral Index, class T, class Map, class Combine>
[[nodiscard]] T ParallelReduce(Index begin, Index end, T const& identity, Map const& map, Combine const& combine,
                               unsigned long long grain = 0)
{
    T result = identity;
    TRecursiveMutex mutex;
    ParallelForChunks(
        begin, end,
        [&](Index first, Index last) {
            T part = identity;
            for (Index i = first; i != last; ++i) {
                part = combine(std::move(part), map(i));
            }
            TLockScope const lock(mutex);
            result = combine(std::move(result), std::move(part));
        },
        grain);
    return result;
}

/// The most threads on which a loop that begins now would run at a time, the calling one included: no more than the
/// pool has besides, nor than there are processors for the process. At least 1. Makes the pool if it is only
/// configured.
[[nodiscard]] QVXSYS_API unsigned int MostLoopThreads();

/// Whether loops may use other threads at all; true at the start of the process. Switched off, every loop here runs on
/// its calling thread, index by index, which makes it easy to follow in a debugger. Takes effect for loops that begin
/// afterwards and, in ParallelForThread, for the next index.
QVXSYS_API void SetParallelExecution(bool enabled) noexcept;
[[nodiscard]] QVXSYS_API bool IsParallelExecution() noexcept;

} // namespace AsyncTask

/// Calls `body(i)` for each i in [begin, end), one by one on `numThreads` threads of its own, and on the calling thread
/// whenever none of them is free. With 0 threads all run on the calling thread.
///
/// Every index is run, whatever others throw on the threads of the loop; then the first exception that came is thrown,
/// and the others are dropped. One that is thrown on the calling thread ends the loop there: the indexes handed out by
/// then are finished, the others not begun, and it is the one thrown.
///
/// Throws std::system_error when a thread cannot be started. Cost: see above.
QVXSYS_API void ParallelForThread(unsigned int numThreads, unsigned long long begin, unsigned long long end,
                                  std::function<void(unsigned long long)> const& body);
