// What goes wrong around futures: functions that throw where they are called by others, coroutines that are destroyed,
// work that is dropped, and waits that can only be helped with later.

#include <atomic>
#include <coroutine>
#include <memory>
#include <stop_token>
#include <thread>
#include <vector>

#include "TaskSupport.h"

using namespace AsyncTask;
using std::chrono::milliseconds;

namespace {

struct ThrowsAtItsEnd
{
    ~ThrowsAtItsEnd() noexcept(false) { throw 7; }
};

Future<std::unique_ptr<int>> ThrowsBehindReturn()
{
    [[maybe_unused]] ThrowsAtItsEnd const local;
    co_return std::make_unique<int>(1);
}

/// Gives the suspended coroutine away.
struct Give
{
    std::coroutine_handle<>& to;
    [[nodiscard]] bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> body) const noexcept { to = body; }
    void await_resume() const noexcept {}
};

Future<int> Suspended(std::coroutine_handle<>& body)
{
    co_await Give{body};
    co_return 1;
}

std::function<void()> const kThrowNine = [] { throw 9; };

} // namespace

TEST(Faults, AnOnCancelFunctionThatThrows)
{
    Promise<int> promise, first;
    promise.SetOnCancelFunction(kThrowNine);
    first.SetOnCancelFunction(kThrowNine);
    auto const chain = WhenAll(first.GetFuture(), promise.GetFuture());
    EXPECT_THROW(chain.Cancel(), int); // when all of it has been cancelled
    EXPECT_TRUE(first.IsCancelled() && promise.IsCancelled() && chain.IsReady());
    auto deferred = AsyncTask::Run(Launch::Deferred, [] {});
    deferred.GetState()->SetOnCancelFunction(std::make_unique<std::function<void()>>(kThrowNine));
    EXPECT_THROW(deferred.Cancel(), int);
    ASSERT_TRUE(deferred.IsReady());
    EXPECT_THROW(deferred.Get(), CancelException);
}

TEST(Faults, AnEventOfTheUsersMakesTheTaskFail)
{
    auto task = AsyncTask::Run(Launch::Deferred, [] {});
    task.GetState()->SetCancelEvent(MakeRefCnt<TCancelEvent>());
    EXPECT_NE(FailedCheck([&] { task.Get(); }), "");
    EXPECT_EQ(TLS::Get().GetDepth(), 0u);
}

TEST(Faults, CoroutinesThatDoNotEndWell)
{
    auto thrown = ThrowsBehindReturn();
    ASSERT_TRUE(thrown.IsReady());
    EXPECT_THROW(thrown.Get(), int);
    std::coroutine_handle<> body;
    auto destroyed = Suspended(body);
    body.destroy();
    ASSERT_TRUE(destroyed.IsReady());
    EXPECT_THROW(destroyed.Get(), BrokenPromiseException);
}

TEST(Faults, WorkGoesBeforeItsFutureIsReady)
{
    auto held = std::make_shared<int>(1);
    std::weak_ptr<int> const work = held;
    Promise<int> promise;
    SharedFuture<int> const shared = promise.GetFuture();
    for (bool const continuation : {false, true}) {
        auto const function = [held](auto...) { return *held; };
        auto const future = continuation ? shared.Then(function) : AsyncTask::Run(Launch::Deferred, function);
        future.Cancel();
        EXPECT_TRUE(future.IsReady());
    }
    bool gone = false;
    auto const run =
        shared.Then([held = std::move(held)](int) { return *held; }).Then([&](int) { gone = work.expired(); });
    promise.SetValue(1);
    EXPECT_TRUE(gone);
}

TEST(Faults, DeadlinesAndStopsOfWorkThatNobodyWaitsFor)
{
    ManualClock clock;
    std::stop_source source; // a link that stays would be a leak
    {
        auto const never = AsyncTask::Run(Launch::Deferred, [] {});
        CancelAfter(never, milliseconds(10));
        CancelOnStop(never, source.get_token());
    }
    EXPECT_EQ(clock.Pending(), 0u);
}

TEST(Faults, ChainsOfGroupsUseNoStack)
{
    for (bool const deferred : {false, true}) {
        Promise<int> promise;
        promise.SetWhenCanceled(WhenCanceled::AwaitWork);
        auto chain = deferred ? AsyncTask::Run(Launch::Deferred, [] { return 1; }) : promise.GetFuture();
        for (int i = 0; i < 100'000; ++i) {
            chain = WhenAll(std::move(chain)).Then([](auto ready) { return std::get<0>(ready).Get(); });
        }
        if (!deferred) {
            chain.Cancel();
        }
    }
}

TEST(WhenAny, OfWhatNobodyCanHelpWithYet)
{
    Workers const workers(1);
    for (Launch const launch : {Launch::Deferred, Launch::PoolQueued}) {
        Promise<int> never, promise;
        TEvent blocked;
        TellsOfBlocking handler(blocked);
        std::thread setter([&] {
            blocked.Wait();
            promise.SetValue(1);
        });
        // What becomes possible when this, the pool's only thread, is asleep.
        auto index = AsyncTask::Run(Launch::PoolOnly, [&] {
            auto second = promise.GetFuture().Then(launch, [](int v) { return v; });
            auto any = WhenAny(never.GetFuture(), std::move(second));
            WaitHandlerScopeGuard const scope(&handler);
            return any.Get().index;
        });
        ASSERT_TRUE(index.WaitFor(milliseconds(20'000)));
        EXPECT_EQ(index.Get(), 1u);
        setter.join();
    }
}

TEST(WhenAny, InWhenAnyInWhenAny)
{
    auto any = MakeReady().Then(Launch::Deferred, [] { return 1; });
    for (int i = 0; i < 100; ++i) {
        any = WhenAny(std::move(any), AsyncTask::Run(Launch::Deferred, [] { return 1; })).Then([](auto futures) {
            return std::get<0>(futures.futures).Get() + 1;
        });
    }
    EXPECT_EQ(any.Get(), 101);
}

TEST(Faults, APromiseThatGoesAsSoonAsItsFutureIsReady)
{
    for (int i = 0; i < 500; ++i) {
        auto promise = std::make_unique<Promise<int>>();
        Future<int> future = promise->GetFuture();
        std::thread setter([&p = *promise] { p.SetValue(1); });
        EXPECT_EQ(future.Get(), 1);
        promise = nullptr;
        setter.join();
    }
}
