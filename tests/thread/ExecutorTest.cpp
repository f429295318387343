#include "TaskSupport.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using AsyncTask::Launch;

TEST(ManualExecutor, RunsWorkOneByOne)
{
    std::string log;
    auto const write = [&log](char const* what) { return [&log, what] { log += what; }; };
    AsyncTask::ManualExecutor executor;
    EXPECT_TRUE(AsyncTask::ScheduleOnThreadPool(write("a"), Launch::PoolOrDedicated));
    AsyncTask::RunOnDedicatedThread(write("b"));
    EXPECT_TRUE(AsyncTask::ScheduleOnThreadPool(
        [&] {
            write("c")();
            AsyncTask::ScheduleOnThreadPool(write("d"), Launch::PoolOnly);
        },
        Launch::PoolQueued));
    EXPECT_EQ(executor.Pending(), 3U);
    EXPECT_EQ(log, "");
    EXPECT_TRUE(executor.RunOne());
    EXPECT_EQ(log, "a");
    EXPECT_EQ(executor.RunAll(), 3U);
    EXPECT_EQ(log, "abcd");
    EXPECT_FALSE(executor.RunOne());
    executor.RunDedicated([] { throw std::out_of_range("comes out"); });
    EXPECT_THROW(executor.RunOne(), std::out_of_range);
    EXPECT_EQ(executor.Pending(), 0U);
}

TEST(ManualExecutor, RefusesAsABusyPoolDoes)
{
    AsyncTask::ManualExecutor executor;
    executor.SetThreads(1);
    EXPECT_TRUE(AsyncTask::ScheduleOnThreadPool([] {}, Launch::PoolOrDedicated));
    for (std::uint32_t launch = 0; launch < 8; ++launch) {
        bool const queued = launch == 4 || launch == 5; // PoolQueued, PoolOnly
        EXPECT_EQ(AsyncTask::ScheduleOnThreadPool([] {}, static_cast<Launch>(launch)), queued) << launch;
    }
    EXPECT_EQ(executor.RunAll(), 3U);
    AsyncTask::RunOnDedicatedThread([] {});
    EXPECT_TRUE(AsyncTask::ScheduleOnThreadPool([] {}, Launch::PoolOrDedicated));
}

TEST(ManualExecutor, IsThereOnlyWhileItLives)
{
    ConfiguredPool const pool(1);
    auto const resource = std::make_shared<int>();
    {
        AsyncTask::ManualExecutor outer;
        {
            AsyncTask::ManualExecutor inner;
            AsyncTask::ScheduleOnThreadPool([resource] { FAIL(); }, Launch::PoolQueued);
            EXPECT_EQ(inner.Pending(), 1U);
        }
        EXPECT_EQ(resource.use_count(), 1);
        AsyncTask::ScheduleOnThreadPool([] {}, Launch::PoolQueued);
        EXPECT_EQ(outer.RunAll(), 1U);
    }
    TEvent done;
    EXPECT_TRUE(AsyncTask::ScheduleOnThreadPool([&done] { done.Signal(); }, Launch::PoolQueued));
    done.Wait();
}

TEST(ManualClock, MakesCallsInTheOrderOfTheirTimes)
{
    std::string log;
    AsyncTask::ManualClock clock;
    auto const at = [&](char const* what) {
        return [&log, &clock, what] { log += what + std::to_string(clock.Now().count()) + " "; };
    };
    AsyncTask::CallAfter(30ms, at("c"));
    AsyncTask::CallAfter(10ms, at("a"));
    AsyncTask::CallAfter(10ms, at("b"));
    auto const never = AsyncTask::CallAfter(20ms, at("x"));
    AsyncTask::CallAfter(-5ms, at("z"));
    AsyncTask::CallAfter(25ms, [&] { AsyncTask::CallAfter(5ms, at("d")); });
    AsyncTask::CallAfter(std::chrono::milliseconds::max(), at("y"));
    EXPECT_TRUE(AsyncTask::CancelCall(never));
    EXPECT_FALSE(AsyncTask::CancelCall(never));
    EXPECT_EQ(log, "");
    clock.Advance(0ms);
    EXPECT_EQ(log, "z0 ");
    clock.Advance(9ms);
    EXPECT_EQ(log, "z0 ");
    clock.Advance(31ms);
    EXPECT_EQ(log, "z0 a10 b10 c30 d30 ");
    EXPECT_EQ(clock.Now(), 40ms);
    EXPECT_EQ(clock.Pending(), 1U) << "the one that never comes";
}

TEST(ManualClock, NeverGoesBack)
{
    AsyncTask::ManualClock clock;
    std::string log;
    AsyncTask::CallAfter(5ms, [&] {
        clock.Advance(100ms);
        AsyncTask::CallAfter(0ms, [&] { log += std::to_string(clock.Now().count()); });
    });
    clock.Advance(10ms);
    EXPECT_EQ(log, "105") << "due when the clock stands there";
    EXPECT_EQ(clock.Now(), 105ms);
    clock.Advance(-50ms);
    EXPECT_EQ(clock.Now(), 105ms);
    AsyncTask::CallAfter(std::chrono::hours(1000), [&] { log += " far"; });
    AsyncTask::CallAfter(std::chrono::milliseconds::max(), [] { FAIL(); });
    for (std::chrono::milliseconds const by : {kNoLimit, kNoLimit, 1ms}) {
        clock.Advance(by);
        AsyncTask::CallAfter(std::chrono::hours(1), [&] { log += " end"; });
    }
    clock.Advance(0ms);
    EXPECT_EQ(log, "105 far end end end") << "nothing is later than the end of time";
    EXPECT_EQ(clock.Pending(), 1U);
}

TEST(CallAfter, CallsByTheRealClock)
{
    auto const start = std::chrono::steady_clock::now();
    struct Call
    {
        std::chrono::milliseconds delay;
        std::chrono::steady_clock::time_point made;
    };
    std::vector<Call> calls{{20ms, {}}, {0ms, {}}, {10ms, {}}, {10ms, {}}};
    std::vector<std::size_t> order;
    TCountdownEvent all(static_cast<unsigned int>(calls.size()));
    auto const far = AsyncTask::CallAfter(std::chrono::hours(1000), [] { FAIL(); });
    for (std::size_t i = 0; i < calls.size(); ++i) {
        AsyncTask::CallAfter(calls[i].delay, [&, i] {
            calls[i].made = std::chrono::steady_clock::now();
            order.push_back(i); // all on one thread
            all.Signal();
        });
    }
    all.Wait();
    for (auto const& call : calls) {
        EXPECT_GE(call.made - start, call.delay);
    }
    EXPECT_LT(std::find(order.begin(), order.end(), 2U), std::find(order.begin(), order.end(), 0U));
    EXPECT_LT(std::find(order.begin(), order.end(), 2U), std::find(order.begin(), order.end(), 3U));
    EXPECT_TRUE(AsyncTask::CancelCall(far));
}

TEST(CallAfter, ForgetsOrMakesEachCall)
{
    std::atomic<int> made = 0;
    std::atomic<int> forgotten = 0;
    constexpr int kThreads = 3;
    constexpr int kCalls = 500;
    InParallel(kThreads, [&](int) {
        for (int i = 0; i < kCalls; ++i) {
            auto const id = AsyncTask::CallAfter(std::chrono::milliseconds(i % 3), [&made] { ++made; });
            forgotten += i % 2 == 0 && AsyncTask::CancelCall(id) ? 1 : 0;
        }
    });
    YieldUntil([&] { return made + forgotten >= kThreads * kCalls; });
    TEvent last;
    AsyncTask::CallAfter(3ms, [&last] { last.Signal(); });
    last.Wait();
    EXPECT_EQ(made + forgotten, kThreads * kCalls);
    FailedCheck([] { EXPECT_EQ(AsyncTask::CallAfter(0ms, nullptr), 0U); }, HookThat::Returns);
}

} // namespace
