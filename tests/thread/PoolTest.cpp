#include "TaskSupport.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

constexpr auto kIfIdle = TThreadPoolWork::IfIdle;
constexpr auto kQueue = TThreadPoolWork::Queue;

TEST(ThreadPool, IsMadeByTheFirstGetAsConfigured)
{
    std::atomic<int> starts = 0;
    std::atomic<int> exits = 0;
    std::vector<TStringCore> lines;
    TThreadPool::Configure(
        4, [&] { ++starts; }, [&] { ++exits; }, [&](TStringCore line) { lines.push_back(line); });
    EXPECT_TRUE(lines.empty());
    EXPECT_EQ(TThreadPool::Get().GetNumberOfThreads(), 4U);
    EXPECT_EQ(&TThreadPool::Get(), &TThreadPool::Get());
    EXPECT_EQ(lines, std::vector<TStringCore>{u"Started thread pool with: 4 threads"});
    TThreadPool::Configure(0, nullptr, nullptr, nullptr);
    EXPECT_EQ(TThreadPool::Get().GetNumberOfThreads(), 4U);
    EXPECT_TRUE(TThreadPool::Shutdown(kNoLimit));
    EXPECT_EQ(starts, 4);
    EXPECT_EQ(exits, 4);
    EXPECT_TRUE(TThreadPool::Shutdown(0ms)) << "there is none";
    EXPECT_FALSE(TThreadPool::IsAvailable());
}

TEST(ThreadPool, ReportsMisuse)
{
    EXPECT_EQ(FailedCheck([] { static_cast<void>(TThreadPool::Get()); }),
              "qvxsys/main/thread/TThreadPool 67: g_numThreads > 0");
    TThreadPool pool(1, nullptr, nullptr);
    EXPECT_EQ(FailedCheck([&] { pool.AddWork(nullptr, kQueue); }), "qvxsys/main/thread/TThreadPool 121: func");
    EXPECT_EQ(pool.GetThreadPoolUseCount(), 0U);
    FailedCheck(
        [&] {
            EXPECT_FALSE(pool.AddWork(nullptr, kIfIdle));
            TThreadPool& none = TThreadPool::Get();
            EXPECT_EQ(none.GetNumberOfThreads(), 0U);
            EXPECT_FALSE(none.AddWork([] {}, kIfIdle));
            EXPECT_TRUE(TThreadPool::Shutdown(kNoLimit));
        },
        HookThat::Returns);
    EXPECT_TRUE(pool.JoinAll(kNoLimit));
    EXPECT_EQ(FailedCheck([&] { EXPECT_FALSE(pool.AddWork(nullptr, kQueue)); }), "") << "closed comes first";
}

TEST(ThreadPool, AcceptsUnforcedWorkWhileAThreadIsFree)
{
    for (unsigned int const threads : {1U, 4U}) {
        TThreadPool pool(threads, nullptr, nullptr);
        Blockers blockers(threads);
        for (unsigned int i = 0; i < threads; ++i) {
            EXPECT_TRUE(pool.AddWork(blockers.Item(), kIfIdle));
        }
        auto const resource = std::make_shared<int>();
        EXPECT_FALSE(pool.AddWork([resource] { FAIL(); }, kIfIdle));
        EXPECT_FALSE(pool.AddWork([resource] { FAIL(); }, static_cast<TThreadPoolWork>(2)));
        EXPECT_FALSE(pool.IsThreadPoolThread());
        EXPECT_EQ(resource.use_count(), 1) << "refused work is destroyed";
        EXPECT_EQ(pool.GetThreadPoolUseCount(), threads);
        std::atomic<bool> ran = false;
        TThreadPool const other(0, nullptr, nullptr);
        EXPECT_TRUE(pool.AddWork([&] { ran = pool.IsThreadPoolThread() && !other.IsThreadPoolThread(); }, kQueue));
        EXPECT_EQ(pool.GetThreadPoolUseCount(), threads + 1);
        blockers.AwaitAll();
        EXPECT_FALSE(ran);
        blockers.Release();
        YieldUntil([&] { return pool.GetThreadPoolUseCount() == 0; });
        EXPECT_TRUE(ran);
        EXPECT_TRUE(pool.AddWork([] {}, kIfIdle)) << "free again";
    }
}

TEST(ThreadPool, RunsWhatIsQueuedInOrderAndThenLeaves)
{
    constexpr int kItems = 1000; // several chunks of the queue
    TThreadPool pool(1, nullptr, nullptr);
    Blockers blocker(1);
    pool.AddWork(blocker.Item(), kQueue);
    std::vector<int> order;
    auto const resource = std::make_shared<int>();
    for (int i = 0; i < kItems; ++i) {
        ASSERT_TRUE(pool.AddWork([&order, resource, i] { order.push_back(i); }, kQueue));
    }
    EXPECT_FALSE(pool.JoinAll(0ms)) << "the first item still runs";
    EXPECT_FALSE(pool.AddWork([] {}, kQueue));
    EXPECT_FALSE(pool.JoinAll(kNoLimit)) << "closed before: at once";
    EXPECT_EQ(pool.GetNumberOfThreads(), 1U);
    blocker.Release();
    YieldUntil([&] { return pool.GetStatistics().threads == 0; });
    ASSERT_EQ(order.size(), std::size_t(kItems));
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_EQ(pool.GetThreadPoolUseCount(), 0U);
    EXPECT_EQ(resource.use_count(), 1) << "work is destroyed when it has run";
}

TEST(ThreadPool, GoesWhileItsThreadsStillRun)
{
    auto const left = std::make_shared<TCountdownEvent>(2);
    TEvent go;
    {
        TThreadPool pool(2, nullptr, [left] { left->Signal(); });
        pool.AddWork([&go] { go.Wait(); }, kQueue);
        EXPECT_FALSE(pool.JoinAll(1ms));
    }
    EXPECT_FALSE(left->IsSet());
    go.Signal();
    left->Wait();
}

TEST(ThreadPool, RefusesWhatComesWhileItIsJoinedAndAfterwards)
{
    ConfiguredPool const configured(1);
    for (bool const inTime : {true, false}) {
        TThreadPool& pool = TThreadPool::Get();
        TEvent go;
        TEvent ended;
        pool.AddWork(
            [&] {
                go.Wait();
                YieldUntil([&] { return !pool.AddWork([] {}, kQueue); }); // instead of a deadlock
                EXPECT_TRUE(!inTime || !AsyncTask::ScheduleOnThreadPool([] {}, AsyncTask::Launch::PoolOnly));
                ended.Signal();
            },
            kQueue);
        if (inTime) {
            go.Signal();
            EXPECT_TRUE(TThreadPool::Shutdown(kNoLimit));
        } else {
            EXPECT_FALSE(TThreadPool::Shutdown(0ms));
            EXPECT_NE(&TThreadPool::Get(), &pool) << "a new one; the old one stays for who knew it";
            go.Signal();
        }
        ended.Wait();
    }
}

/// Every item that is accepted runs once, whoever adds it, however often the threads fall asleep in between, and when
/// the pool is closed meanwhile.
TEST(ThreadPool, RunsExactlyWhatItAcceptedBeforeItClosed)
{
    constexpr std::size_t kProducers = 3;
    constexpr std::size_t kItems = 2000;
    for (unsigned int round = 0; round < 8; ++round) {
        TThreadPool pool(1 + round, nullptr, nullptr);
        std::vector<std::atomic<int>> runs(kProducers * kItems);
        std::vector<char> accepted(runs.size());
        {
            std::vector<std::jthread> producers;
            for (std::size_t first = 0; first < runs.size(); first += kItems) {
                producers.emplace_back([&, first] {
                    for (std::size_t i = first; i < first + kItems; ++i) {
                        auto const run = [&runs, i] { ++runs[i]; };
                        // Twice if a thread is free for it.
                        if (i % 5 == 0 && pool.AddWork([run] { run(), run(); }, kIfIdle)) {
                            accepted[i] = 2;
                        } else if (pool.AddWork(run, kQueue)) {
                            accepted[i] = 1;
                        }
                        if (i % 100 == first / kItems) {
                            YieldUntil([&] { return pool.GetThreadPoolUseCount() == 0; });
                        }
                    }
                });
            }
            YieldUntil([&] { return runs[kItems * (round % 4) / 4] != 0; });
            EXPECT_TRUE(round % 4 == 3 || pool.JoinAll(kNoLimit));
        }
        pool.JoinAll(kNoLimit);
        EXPECT_TRUE(std::equal(runs.begin(), runs.end(), accepted.begin())) << round;
    }
}

TEST(ThreadPool, RunsItemsByTheExecutionHook)
{
    TThreadPool pool(1, nullptr, nullptr);
    NonThreadPoolWorkerManager manager(nullptr, nullptr);
    std::vector<std::string> log;
    std::mutex mutex;
    auto const write = [&](std::string const& line) {
        std::lock_guard const lock(mutex);
        log.push_back(line);
    };
    AsyncTask::SetExecutionHook([&](std::function<void()> work, bool onPool) -> std::function<void()> {
        write(onPool ? "pool" : "dedicated");
        return log.size() > 3 ? nullptr : work;
    });
    pool.AddWork([&] { write("one"); }, kQueue);
    YieldUntil([&] { return pool.GetThreadPoolUseCount() == 0; });
    manager.RunTask([&] { write("two"); });
    EXPECT_TRUE(manager.Close(kNoLimit));
    pool.AddWork([&] { write("dropped by the hook"); }, kQueue);
    EXPECT_TRUE(pool.JoinAll(kNoLimit));
    AsyncTask::SetExecutionHook(nullptr);
    EXPECT_EQ(log, (std::vector<std::string>{"pool", "one", "dedicated", "two", "pool"}));
}

TEST(ThreadPool, CallsTheCleanUpFunctionAfterTheExitFunction)
{
    static std::atomic<int> step;
    static std::atomic<int> cleaned;
    step = 0;
    cleaned = 0;
    auto const onStart = [] { AsyncTask::TLS::Get().SetThreadCleanupFunc([] { cleaned += step == 1 ? 1 : 100; }); };
    auto const onExit = [] { step = 1; };
    EXPECT_TRUE(TThreadPool(2, onStart, onExit).JoinAll(kNoLimit));
    EXPECT_EQ(cleaned, 2);
    NonThreadPoolWorkerManager manager(onStart, onExit);
    manager.RunTask([] {});
    EXPECT_TRUE(manager.Close(kNoLimit));
    EXPECT_EQ(cleaned, 3);
}

TEST(ThreadPool, TellsWhatItDoes)
{
    auto const before = std::chrono::steady_clock::now();
    TThreadPool pool(2, nullptr, nullptr);
    EXPECT_EQ(pool.GetStatistics().longestRunning, 0ns);
    Blockers blockers(2);
    pool.AddWork(blockers.Item(), kQueue);
    pool.AddWork(blockers.Item(), kQueue);
    blockers.AwaitAll();
    pool.AddWork([] {}, kQueue);
    pool.AddWork([] {}, kIfIdle);
    auto const busy = pool.GetStatistics();
    EXPECT_EQ(busy.threads, 2U);
    EXPECT_EQ(busy.queued, 1U);
    EXPECT_EQ(busy.running, 2U);
    EXPECT_EQ(busy.finished, 0U);
    EXPECT_EQ(busy.refused, 1U);
    YieldUntil([&] { return pool.GetStatistics().longestRunning > 2ms; });
    EXPECT_LE(pool.GetStatistics().longestRunning, std::chrono::steady_clock::now() - before);
    blockers.Release();
    EXPECT_TRUE(pool.JoinAll(kNoLimit));
    auto const after = pool.GetStatistics();
    EXPECT_EQ(after.threads + after.queued + after.running, 0U);
    EXPECT_EQ(after.finished, 3U);
    EXPECT_EQ(after.longestRunning, 0ns);
}

/// One item at a time, added at all moments between the end of the one before and the threads' falling asleep: a lost
/// wake-up would hang here. With more threads the items wait for each other, which must not keep one of them from
/// running.
TEST(ThreadPool, WakesForEachItem)
{
    for (unsigned int const threads : {1U, 4U}) {
        TThreadPool pool(threads, nullptr, nullptr);
        for (unsigned int i = 0; i < 20'000 / threads; ++i) {
            TCountdownEvent all(threads);
            auto const done = std::make_shared<TCountdownEvent>(threads);
            for (unsigned int item = 0; item < threads; ++item) {
                pool.AddWork(
                    [&all, done] {
                        all.Signal();
                        all.Wait();
                        done->Signal();
                    },
                    kQueue);
            }
            done->Wait();
            if (threads != 1 && i % 100 == 0) {
                YieldUntil([&] { return pool.GetStatistics().sleeping == threads; });
            }
            for (unsigned int pauses = i % 101; pauses != 0; --pauses) {
                qvxsys::detail::SpinPause();
            }
        }
    }
}

class ThreadPoolDeathTest : public testing::Test
{
protected:
    ThreadPoolDeathTest() { testing::GTEST_FLAG(death_test_style) = "threadsafe"; }
};

TEST_F(ThreadPoolDeathTest, ExceptionsEndTheProcess)
{
    auto const fail = [] { throw std::runtime_error("nobody catches this"); };
    struct
    {
        char const* what;
        std::function<void()> run;
    } const cases[] = {
        {"work", [&] { TThreadPool(1, nullptr, nullptr).AddWork(fail, kQueue); }},
        {"start function", [&] { TThreadPool(1, fail, nullptr).JoinAll(kNoLimit); }},
        {"exit function", [&] { TThreadPool(1, nullptr, fail).JoinAll(kNoLimit); }},
        {"task", [&] { NonThreadPoolWorkerManager(nullptr, nullptr).RunTask(fail); }},
    };
    for (auto const& one : cases) {
        EXPECT_DEATH(one.run(), "") << one.what;
    }
}

/// exit() while threads run, add, wait for locks and for each other, with the singletons in place.
void ExitWithBusyWorkers()
{
    TThreadPool::Configure(4, nullptr, nullptr, nullptr);
    static std::atomic<int> busy = 0;
    static TEvent const& never = *new TEvent;
    auto const blocked = [] {
        ++busy;
        never.Wait();
    };
    auto const adding = [] {
        ++busy;
        for (;;) {
            TThreadPool::Get().AddWork([] {}, kIfIdle);
        }
    };
    auto const looping = [] {
        ++busy;
        for (;;) {
            AsyncTask::ParallelFor(
                0, 1000, [](int) {}, 10);
        }
    };
    TThreadPool::Get().AddWork(blocked, kQueue);
    TThreadPool::Get().AddWork(adding, kQueue);
    NonThreadPoolWorkerManager::Get().RunTask(blocked);
    NonThreadPoolWorkerManager::Get().RunTask(adding);
    NonThreadPoolWorkerManager::Get().RunTask(looping);
    YieldUntil([] { return busy == 5; });
    std::exit(7);
}

TEST_F(ThreadPoolDeathTest, ProcessesMayEndWithBusyWorkers)
{
    EXPECT_EXIT(ExitWithBusyWorkers(), testing::ExitedWithCode(7), "");
}

TEST(NonThreadPoolWorkerManager, CountsAndWaits)
{
    std::atomic<int> starts = 0;
    std::atomic<int> exits = 0;
    auto const resource = std::make_shared<int>();
    {
        NonThreadPoolWorkerManager manager([&] { ++starts; }, [&] { ++exits; });
        Blockers blockers(2);
        manager.RunTask(blockers.Item());
        manager.RunTask([resource, wait = blockers.Item()] { wait(); });
        blockers.AwaitAll();
        EXPECT_EQ(manager.GetThreadCount(), 2U);
        EXPECT_EQ(starts, 2);
        EXPECT_FALSE(manager.Close(0ms));
        manager.RunTask([resource] { FAIL(); });
        EXPECT_EQ(manager.GetThreadCount(), 2U);
        blockers.Release();
        EXPECT_TRUE(manager.Close(kNoLimit));
        EXPECT_EQ(manager.GetThreadCount(), 0U);
        EXPECT_EQ(resource.use_count(), 1);
        EXPECT_TRUE(manager.Close(0ms));
        EXPECT_EQ(FailedCheck([&] { manager.RunTask(nullptr); }).empty(), false);
    }
    EXPECT_EQ(exits, 2);
}

TEST(NonThreadPoolWorkerManager, DestructorWaitsAndShutdownDoesNot)
{
    TEvent go;
    TEvent ended;
    auto const task = [&] {
        go.Wait();
        ended.Signal();
    };
    NonThreadPoolWorkerManager::Get().RunTask(task);
    EXPECT_FALSE(NonThreadPoolWorkerManager::Shutdown(0ms));
    go.Signal();
    ended.Wait();
    ended.Reset();
    {
        NonThreadPoolWorkerManager manager(nullptr, nullptr);
        manager.RunTask(task);
    }
    EXPECT_TRUE(ended.IsSet());
    EXPECT_TRUE(NonThreadPoolWorkerManager::Shutdown(0ms)) << "there is none";
}

} // namespace
