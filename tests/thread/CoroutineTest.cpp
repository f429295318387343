#include <coroutine>
#include <memory>
#include <string>

#include "TaskSupport.h"

using namespace AsyncTask;

namespace {

Future<int> Twice(Future<int> input)
{
    int const value = co_await input;
    co_return 2 * value;
}

Future<std::string> Text(SharedFuture<int> input)
{
    co_return std::to_string(co_await input);
}

Future<int&> Reference(int& object)
{
    co_await MakeReady();
    co_return object;
}

Future<void> Nothing()
{
    co_return;
}

Future<std::unique_ptr<int>> Caught(Future<int> input)
{
    auto result = std::make_unique<int>(0);
    try {
        *result = co_await std::move(input);
    } catch (int error) {
        *result = -error;
    }
    co_return result;
}

Future<int> Countdown(int from)
{
    if (from == 0) {
        co_return 0;
    }
    co_return co_await Countdown(from - 1);
}

Future<int> Sum(int count, Future<void> start)
{
    co_await start;
    int sum = 0;
    for (int i = 0; i < count; ++i) {
        sum += co_await MakeReady(1);
    }
    co_return sum;
}

/// Another kind of coroutine, which knows nothing of ours.
struct Foreign
{
    struct promise_type
    {
        Foreign get_return_object() const noexcept { return {}; }
        std::suspend_never initial_suspend() const noexcept { return {}; }
        std::suspend_never final_suspend() const noexcept { return {}; }
        void return_void() const noexcept {}
        void unhandled_exception() const noexcept { std::terminate(); }
    };
};

Foreign Store(Future<int> input, int& out)
{
    out = co_await input;
}

} // namespace

TEST(Coroutine, AwaitsAndReturns)
{
    Promise<int> promise;
    Future<int> future = Twice(Twice(promise.GetFuture()));
    EXPECT_FALSE(future.IsReady());
    promise.SetValue(3);
    EXPECT_EQ(future.Get(), 12);
    EXPECT_EQ(Twice(MakeReady(1)).Get(), 2);
    EXPECT_EQ(Text(MakeReady(17)).Get(), "17");
    int object = 0;
    EXPECT_EQ(&Reference(object).Get(), &object);
    Nothing().Get();
    EXPECT_EQ(Twice(AsyncTask::Run(Launch::Deferred, [] { return 4; }).Then([](int v) { return v + 1; })).Get(), 10);
    int out = 0;
    Store(MakeReady(5), out);
    EXPECT_EQ(out, 5);
    EXPECT_THROW(Twice(Future<int>()).Get(), InvalidFutureException);
}

TEST(Coroutine, Exceptions)
{
    EXPECT_EQ(*Caught(MakeFailed<int>(3)).Get(), -3);
    Promise<int> promise;
    Future<int> const input = Twice(promise.GetFuture());
    promise.SetException(7);
    EXPECT_THROW(const_cast<Future<int>&>(input).Get(), int);
    EXPECT_THROW(Twice([] { return Promise<int>().GetFuture(); }()).Get(), BrokenPromiseException);
}

TEST(Coroutine, LongLoopsAndDepthsUseNoStack)
{
    EXPECT_EQ(Countdown(100).Get(), 0);
    Promise<void> start;
    Future<int> sum = Sum(100'000, start.GetFuture());
    start.SetValue();
    EXPECT_EQ(sum.Get(), 100'000);
    Promise<int> promise;
    Future<int> future = promise.GetFuture();
    for (int i = 0; i < 100'000; ++i) {
        future = [](Future<int> f) -> Future<int> { co_return co_await f; }(std::move(future));
    }
    promise.SetValue(9);
    EXPECT_EQ(future.Get(), 9);
}

TEST(Coroutine, HasAnEventThatItsFutureCancels)
{
    Promise<int> promise;
    Promise<void> gate;
    bool cleaned = false;
    auto const body = [&](Future<int> input, Future<void> last) -> Future<int> {
        RefCntPtr<TCancelEvent> const event = Cancel::Get();
        try {
            static_cast<void>(co_await input);
        } catch (CancelException const&) {
            EXPECT_EQ(Cancel::Get(), event);
            EXPECT_TRUE(event->IsSet());
        }
        co_await last.Share(); // shared: not cancelled
        cleaned = true;
        Cancel::ThrowIfCancelled();
        co_return 1;
    };
    Future<int> future = body(promise.GetFuture(), gate.GetFuture());
    EXPECT_EQ(Cancel::Get(), nullptr);
    future.Cancel();
    EXPECT_TRUE(promise.IsCancelled());
    EXPECT_FALSE(gate.IsCancelled() || future.IsReady());
    gate.SetValue();
    EXPECT_THROW(future.Get(), CancelException);
    EXPECT_TRUE(cleaned);
}

TEST(Coroutine, SwitchesThreads)
{
    Workers workers(1);
    auto const body = []() -> Future<bool> {
        bool const at = TThreadPool::Get().IsThreadPoolThread();
        co_await SwitchTo(Launch::PoolOnly);
        co_return !at && TThreadPool::Get().IsThreadPoolThread();
    };
    EXPECT_TRUE(body().Get());
    // Waited for on the only thread of the pool.
    EXPECT_TRUE(AsyncTask::Run(Launch::PoolOnly, [] {
                    return []() -> Future<bool> {
                        co_await SwitchTo(Launch::PoolOnly);
                        co_return true;
                    }()
                                       .Get();
                }).Get());
    workers.Pool().JoinAll(kNoLimit);
    EXPECT_THROW(body().Get(), BrokenPromiseException);
}
