#include "TaskSupport.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

/// Runs a loop and expects each index exactly once.
template<class Index>
void ExpectEachOnce(Index begin, Index end, unsigned long long grain)
{
    auto const base = static_cast<std::uint64_t>(begin);
    std::vector<std::atomic<int>> runs(begin < end ? static_cast<std::uint64_t>(end) - base : 0);
    AsyncTask::ParallelFor(
        begin, end, [&](Index i) { ++runs[static_cast<std::uint64_t>(i) - base]; }, grain);
    EXPECT_TRUE(std::all_of(runs.begin(), runs.end(), [](auto const& run) { return run == 1; }))
        << +begin << " to " << +end << " by " << grain;
}

TEST(ParallelFor, RunsEachIndexOnce)
{
    ConfiguredPool const pool(2);
    using Big = std::numeric_limits<std::uint64_t>;
    using Small = std::numeric_limits<std::int8_t>;
    for (std::uint64_t const grain : std::initializer_list<std::uint64_t>{0, 1, 7, 1'000'000'000, Big::max()}) {
        ExpectEachOnce(0, 0, grain);
        ExpectEachOnce(5, -5, grain);
        ExpectEachOnce(0, 1, grain);
        ExpectEachOnce(-8, 8, grain);
        ExpectEachOnce<std::int8_t>(Small::min(), Small::max(), grain);
        ExpectEachOnce<std::uint64_t>(Big::max() - 1000, Big::max(), grain);
        ExpectEachOnce<std::int64_t>(-10'000, 20'000, grain);
        ExpectEachOnce(0, grain == 1 ? 30'000 : 300'000, grain);
    }
}

TEST(ParallelFor, GetsHelpWhereTheGrainSaysSo)
{
    EXPECT_EQ(AsyncTask::MostLoopThreads(), 1U) << "without a pool";
    std::vector<int> order;
    auto const expectInOrder = [&order] {
        order.clear();
        AsyncTask::ParallelFor(
            0, 1000, [&](int i) { order.push_back(i); }, 1);
        EXPECT_TRUE(order.size() == 1000 && std::is_sorted(order.begin(), order.end()));
    };
    expectInOrder();
    ConfiguredPool const pool(1);
    if (AsyncTask::MostLoopThreads() < 2) {
        GTEST_SKIP() << "one processor: no help";
    }
    // Index 0 waits for index 1, on whichever threads they are.
    TEvent second;
    std::atomic<int> runs = 0;
    AsyncTask::ParallelFor(
        0, 2,
        [&](int i) {
            ++runs;
            if (i == 0) {
                second.Wait();
            } else {
                second.Signal();
            }
        },
        1);
    EXPECT_EQ(runs, 2);

    AsyncTask::SetParallelExecution(false);
    expectInOrder();
    AsyncTask::SetParallelExecution(true);
}

TEST(ParallelFor, ThrowsTheFirstExceptionAndStops)
{
    ConfiguredPool const pool(2);
    for (unsigned long long const grain : {0ULL, 1ULL}) {
        constexpr int kCount = 1'000'000;
        std::atomic<int> runs = 0;
        std::atomic<int> thrown = 0;
        EXPECT_THROW(AsyncTask::ParallelFor(
                         0, kCount,
                         [&](int i) {
                             ++runs;
                             if (i >= 1000) {
                                 ++thrown;
                                 throw std::out_of_range("enough");
                             }
                         },
                         grain),
                     std::out_of_range);
        EXPECT_GE(thrown, 1);
        EXPECT_LE(thrown, 3) << "one for each thread";
        EXPECT_LT(runs, kCount);
    }
}

TEST(ParallelFor, NestsInItselfAndInWorkOfABusyPool)
{
    ConfiguredPool const pool(2);
    constexpr int kSide = 60;
    std::atomic<int> runs = 0;
    auto const nested = [&runs] {
        AsyncTask::ParallelFor(
            0, kSide,
            [&](int) {
                AsyncTask::ParallelFor(
                    0, kSide, [&](int) { ++runs; }, 4);
            },
            1);
    };
    TCountdownEvent done(8);
    for (int i = 0; i < 8; ++i) {
        TThreadPool::Get().AddWork(
            [&] {
                nested();
                done.Signal();
            },
            TThreadPoolWork::Queue);
    }
    nested();
    done.Wait();
    EXPECT_EQ(runs, 9 * kSide * kSide);
}

TEST(ParallelFor, IsCancelledWithItsCaller)
{
    ConfiguredPool const pool(2);
    auto const event = MakeRefCnt<TCancelEvent>();
    AsyncTask::Cancel::CancelEventSetter const scope(event);
    constexpr int kCount = 200'000;
    struct
    {
        bool asks; ///< the body itself
        int cancelAt;
        bool throws;
    } const cases[] = {{false, kCount / 10, true}, {true, kCount / 10, true}, {false, kCount, false}};
    for (auto const& one : cases) {
        for (unsigned long long const grain : {0ULL, 100ULL}) {
            event->Reset();
            std::atomic<int> runs = 0;
            auto const loop = [&] {
                AsyncTask::ParallelFor(
                    0, kCount,
                    [&](int) {
                        EXPECT_EQ(AsyncTask::Cancel::Get(), event); // on helpers too
                        if (++runs == one.cancelAt) {
                            event->Signal();
                        }
                        if (one.asks) {
                            AsyncTask::Cancel::ThrowIfCancelled();
                        }
                    },
                    grain);
            };
            bool thrown = false;
            try {
                loop();
            } catch (AsyncTask::CancelException const& e) {
                thrown = true;
                EXPECT_EQ(e.GetMessagesFront(), u"Canceled");
            }
            EXPECT_EQ(thrown, one.throws);
            EXPECT_EQ(runs == kCount, !one.throws);
        }
    }
}

/// Loops that end before those whom they asked have come.
TEST(ParallelFor, IsNotMissedByLateHelpers)
{
    ConfiguredPool const pool(4);
    for (int round = 0; round < 2000; ++round) {
        std::atomic<int> sum = 0;
        AsyncTask::ParallelFor(
            0, 4, [&](int i) { sum += i; }, 1);
        ASSERT_EQ(sum, 6);
    }
}

TEST(ParallelReduce, AgreesWithTheStandardLibrary)
{
    ConfiguredPool const pool(2);
    for (int const count : {0, 1, 17, 100'000}) {
        std::vector<std::uint64_t> values(static_cast<std::size_t>(count));
        std::iota(values.begin(), values.end(), 0x9E3779B97F4A7C15);
        auto const value = [&](std::size_t i) { return values[i] * values[i]; };
        std::uint64_t expected = 0;
        for (std::size_t i = 0; i < values.size(); ++i) {
            expected += value(i);
        }
        for (unsigned long long const grain : {0ULL, 1ULL, 1000ULL}) {
            EXPECT_EQ(
                AsyncTask::ParallelReduce(std::size_t(0), values.size(), std::uint64_t(0), value, std::plus<>(), grain),
                expected);
        }
    }
    EXPECT_EQ(AsyncTask::ParallelReduce(
                  5, 5, std::string("none"), [](int) { return "x"; }, std::plus<>()),
              "none");
}

TEST(ParallelForThread, RunsEachIndexOnce)
{
    for (unsigned int const threads : {0U, 1U, 3U}) {
        std::vector<std::atomic<int>> runs(200);
        ParallelForThread(threads, 5, 5, [](unsigned long long) { FAIL(); });
        ParallelForThread(threads, 6, 5, [](unsigned long long) { FAIL(); });
        ParallelForThread(threads, 100, 200, [&](unsigned long long i) { ++runs[i]; });
        for (std::size_t i = 0; i < runs.size(); ++i) {
            EXPECT_EQ(runs[i], i < 100 ? 0 : 1);
        }
    }
}

TEST(ParallelForThread, GivesTheCallerWhatNoThreadIsFreeFor)
{
    auto const self = std::this_thread::get_id();
    TEvent onCaller;
    ParallelForThread(1, 0, 2, [&](unsigned long long i) {
        if (i == 0) {
            EXPECT_NE(std::this_thread::get_id(), self);
            onCaller.Wait(); // the one thread is taken until the caller has run the other
        } else {
            EXPECT_EQ(std::this_thread::get_id(), self);
            onCaller.Signal();
        }
    });
    AsyncTask::SetParallelExecution(false);
    ParallelForThread(2, 0, 10, [&](unsigned long long) { EXPECT_EQ(std::this_thread::get_id(), self); });
    AsyncTask::SetParallelExecution(true);
}

TEST(ParallelForThread, ThrowsWhatCameFirstWhenAllHaveRun)
{
    auto const self = std::this_thread::get_id();
    std::vector<int> thrown; // by the one thread of the loop, so in order
    std::atomic<int> runs = 0;
    int caught = -1;
    try {
        ParallelForThread(1, 0, 500, [&](unsigned long long i) {
            ++runs;
            if (std::this_thread::get_id() != self) {
                thrown.push_back(static_cast<int>(i));
                throw static_cast<int>(i);
            }
        });
    } catch (int i) {
        caught = i;
    }
    EXPECT_EQ(runs, 500);
    ASSERT_FALSE(thrown.empty());
    EXPECT_EQ(caught, thrown.front());
}

TEST(ParallelForThread, EndsWhereTheCallerThrows)
{
    auto const self = std::this_thread::get_id();
    for (unsigned int const threads : {0U, 2U}) {
        std::atomic<unsigned long long> last = 0;
        auto const throws = [&](unsigned long long i) {
            last = std::max(last.load(), i);
            if (std::this_thread::get_id() == self) {
                throw std::out_of_range("here");
            }
        };
        EXPECT_THROW(ParallelForThread(threads, 0, 100'000, throws), std::out_of_range);
        EXPECT_LT(last, 99'999U) << threads;
    }
}

} // namespace
