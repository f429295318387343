#include "TaskSupport.h"

#include "support/FailingNew.h"

#include <array>
#include <atomic>
#include <pthread.h>
#include <string>
#include <system_error>

namespace {

/// While it lives, no thread can be started: its stack would be larger than the address space.
class NoMoreThreads
{
public:
    NoMoreThreads()
    {
        pthread_getattr_default_np(&m_before);
        pthread_attr_t impossible;
        pthread_attr_init(&impossible);
        pthread_attr_setstacksize(&impossible, std::size_t(1) << 48);
        pthread_setattr_default_np(&impossible);
        pthread_attr_destroy(&impossible);
    }
    ~NoMoreThreads()
    {
        pthread_setattr_default_np(&m_before);
        pthread_attr_destroy(&m_before);
    }
    NoMoreThreads(NoMoreThreads const&) = delete;
    NoMoreThreads& operator=(NoMoreThreads const&) = delete;

private:
    pthread_attr_t m_before;
};

TEST(ThreadPool, ReportsThreadsThatCannotBeStarted)
{
    NonThreadPoolWorkerManager manager(nullptr, nullptr);
    {
        NoMoreThreads const none;
        EXPECT_THROW(TThreadPool(2, nullptr, nullptr), std::system_error);
        EXPECT_THROW(manager.RunTask([] { FAIL(); }), std::system_error);
        EXPECT_EQ(manager.GetThreadCount(), 0U);
        // So many would take more memory than there is, were it not known before that they cannot be.
        EXPECT_THROW(TThreadPool(0xFFFFFFFF, nullptr, nullptr), std::system_error);
        EXPECT_THROW(ParallelForThread(1, 0, 1, [](unsigned long long) { FAIL(); }), std::system_error);
    }
    EXPECT_TRUE(manager.Close(kNoLimit));
}

// A body that helpers are at work on must not be left because no more helpers can be asked.
TEST(ParallelFor, RunsWhereHelpersCannotBeAsked)
{
    for (int news = 0; news < 5; ++news) {
        ConfiguredPool const configured(4);
        if (AsyncTask::MostLoopThreads() == 1) {
            GTEST_SKIP() << "one processor: no help";
        }
        std::atomic<int> runs = 0;
        FailingNew const failing(news);
        AsyncTask::ParallelFor(
            0, 1000, [&](int) { ++runs; }, 1);
        EXPECT_EQ(runs, 1000) << news;
    }
}

std::string ThisThreadsName()
{
    std::array<char, 16> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return name.data();
}

TEST(ThreadPool, NamesItsThreads)
{
    std::string first;
    std::string second;
    TThreadPool pool(1, nullptr, nullptr);
    pool.AddWork(
        [&] {
            first = ThisThreadsName();
            AsyncTask::NameThisThread("Verm\u00E4chtnisse\u00E4");
            second = ThisThreadsName();
        },
        TThreadPoolWork::Queue);
    EXPECT_TRUE(pool.JoinAll(kNoLimit));
    EXPECT_EQ(first, "qvx-pool-1");
    EXPECT_EQ(second, "Verm\u00E4chtnisse") << "15 bytes: the last letter would be cut in half";
}

} // namespace
