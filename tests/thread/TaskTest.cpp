// Tasks on pools and threads: where they run, who waits for them and helps, cancellation, deadlines, wait cycles.

#include <atomic>
#include <numeric>
#include <random>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "TaskSupport.h"

using namespace AsyncTask;
using std::chrono::milliseconds;

namespace {

bool OnPool()
{
    return TThreadPool::Get().IsThreadPoolThread();
}

/// A task that has begun and goes on until it is told to end.
struct Blocker
{
    TEvent begun, end;
    Future<void> task;

    explicit Blocker(Launch launch)
        : task(AsyncTask::Run(launch, [this] {
              begun.Signal();
              end.Wait();
          }))
    {
        begun.Wait();
    }
    Blocker(Blocker const&) = delete;
    Blocker& operator=(Blocker const&) = delete;
    ~Blocker()
    {
        end.Signal();
        task.Wait();
    }
};

int Nested(int depth)
{
    return depth == 0 ? 0 : AsyncTask::Run(Launch::PoolQueued, Nested, depth - 1).Get() + 1;
}

} // namespace

TEST(Run, WhereTheLaunchSays)
{
    Workers workers(1);
    auto const here = std::this_thread::get_id();
    auto const where = [here](Launch launch) {
        Future<std::pair<bool, bool>> place =
            AsyncTask::Run(launch, [here] { return std::pair(std::this_thread::get_id() == here, OnPool()); });
        static_cast<void>(place.WaitFor(launch == Launch::Deferred ? milliseconds(0) : kNoLimit));
        return place.Get();
    };
    using Place = std::pair<bool, bool>; // on this thread, on the pool
    EXPECT_EQ(where(Launch::Deferred), Place(true, false));
    EXPECT_EQ(where(Launch::OnCaller), Place(true, false));
    EXPECT_EQ(where(Launch::PoolOrDedicated), Place(false, true));
    EXPECT_EQ(where(Launch::Dedicated), Place(false, false));
    EXPECT_EQ(where(Launch::PoolQueued), Place(false, true));
    EXPECT_EQ(where(Launch::PoolOnly), Place(false, true));
    Blocker const busy(Launch::PoolQueued);
    EXPECT_EQ(where(Launch::PoolOrDedicated), Place(false, false));
}

TEST(Run, ArgumentsDepthAndEvent)
{
    EXPECT_EQ(AsyncTask::Run(
                  Launch::OnCaller, [](std::unique_ptr<int> p, int& r) { return r += *p; }, std::make_unique<int>(2),
                  std::ref(*std::make_unique<int>(3)))
                  .Get(),
              5);
    EXPECT_EQ(TLS::Get().GetDepth(), 0u);
    AsyncTask::Run(Launch::OnCaller, [] {
        EXPECT_EQ(TLS::Get().GetDepth(), 1u);
        EXPECT_NE(Cancel::Get(), nullptr);
        AsyncTask::Run(Launch::Deferred, [outer = Cancel::Get()] {
            EXPECT_EQ(TLS::Get().GetDepth(), 2u);
            EXPECT_NE(Cancel::Get(), outer);
        }).Get();
    }).Get();
    EXPECT_EQ(TLS::Get().GetDepth(), 0u);
    EXPECT_EQ(Cancel::Get(), nullptr);
}

TEST(Run, WorkThatIsDroppedBreaksItsFuture)
{
    Workers workers(1);
    SetExecutionHook([](std::function<void()>, bool) { return std::function<void()>([] {}); });
    auto dropped = AsyncTask::Run(Launch::Dedicated, [] {});
    EXPECT_EQ(MessageOf<BrokenPromiseException>([&] { dropped.Get(); }),
              u"AsyncTask: the task was dropped before it ran.");
    SetExecutionHook(nullptr);
    workers.Pool().JoinAll(kNoLimit);
    workers.Manager().Close(kNoLimit);
    for (Launch const launch : {Launch::PoolOrDedicated, Launch::Dedicated, Launch::PoolQueued, Launch::PoolOnly}) {
        EXPECT_THROW(AsyncTask::Run(launch, [] {}).Get(), BrokenPromiseException);
        EXPECT_THROW(MakeReady().Then(launch, [] {}).Get(), BrokenPromiseException);
    }
}

TEST(Wait, HelpsWithWhatHasNotStarted)
{
    Workers workers(1);
    EXPECT_EQ(AsyncTask::Run(Launch::PoolQueued, Nested, 20).Get(), 20);
    Blocker const busy(Launch::PoolQueued);
    auto const here = std::this_thread::get_id();
    auto const isHere = [here](auto&&...) { return std::this_thread::get_id() == here; };
    // Itself, what it follows, and what follows that on the pool.
    EXPECT_TRUE(AsyncTask::Run(Launch::PoolQueued, isHere).Get());
    EXPECT_TRUE(AsyncTask::Run(Launch::PoolQueued, isHere).Then(Launch::PoolQueued, isHere).Get());
    auto all = WhenAll(AsyncTask::Run(Launch::PoolQueued, isHere), AsyncTask::Run(Launch::PoolQueued, isHere));
    EXPECT_TRUE(all.Then(Launch::PoolQueued, isHere).Get());
    Promise<bool> never;
    EXPECT_EQ(WhenAny(never.GetFuture(), AsyncTask::Run(Launch::PoolQueued, isHere)).Get().index, 1u);
    // Not what is for the pool alone.
    EXPECT_FALSE(AsyncTask::Run(Launch::PoolOnly, isHere).WaitFor(milliseconds(1)));
}

TEST(Wait, TellsTheHandlerWhenItReallyBlocks)
{
    struct Handler : IWaitHandler
    {
        std::vector<SharedStateBase const*> log;
        void BeforeBlocking(SharedStateBase const& s) noexcept override { log.push_back(&s); }
        void AfterBlocking(SharedStateBase const& s) noexcept override { log.push_back(&s); }
    } handler;
    WaitHandlerScopeGuard const scope(&handler);
    AsyncTask::Run(Launch::Deferred, [] {}).Get();
    MakeReady().Wait();
    Promise<void> promise;
    Future<void> future = promise.GetFuture();
    EXPECT_FALSE(future.WaitFor(milliseconds(0)));
    EXPECT_TRUE(handler.log.empty());
    EXPECT_FALSE(future.WaitFor(milliseconds(1)));
    EXPECT_EQ(handler.log, std::vector<SharedStateBase const*>(2, future.GetState().get()));
}

TEST(Wait, WhatIsBehindAContinuationThatBlocksMovesOn)
{
    Workers workers(1);
    Promise<int> promise, needed;
    SharedFuture<int> const shared = promise.GetFuture();
    auto const blocks = shared.Then([&](int) { return needed.GetFuture().Get(); });
    auto const behind = shared.Then([&](int v) { needed.SetValue(v); });
    promise.SetValue(3);
    EXPECT_TRUE(blocks.IsReady());
    behind.Wait();
}

TEST(WaitCycle, NamesTheTasks)
{
    Workers workers(2);
    bool const before = GetWaitCycleDetection();
    SetWaitCycleDetection(true);
    Promise<SharedFuture<int>> ofA, ofB;
    SharedFuture<SharedFuture<int>> const a = ofA.GetFuture(), b = ofB.GetFuture();
    auto const waitFor = [](SharedFuture<SharedFuture<int>> const& other) { return other.Get().Get(); };
    SharedFuture<int> const first = AsyncTask::Run({.launch = Launch::Dedicated, .name = u"a"}, waitFor, b);
    SharedFuture<int> const second = AsyncTask::Run({.launch = Launch::Dedicated, .name = u"b"}, waitFor, a);
    ofA.SetValue(first);
    ofB.SetValue(second);
    TStringCore const message = MessageOf<WaitCycleException>([&] { first.Get(); });
    EXPECT_TRUE(message == u"AsyncTask: wait cycle: \"a\" -> \"b\" -> \"a\"" ||
                message == u"AsyncTask: wait cycle: \"b\" -> \"a\" -> \"b\"")
        << message.toStdString();
    EXPECT_THROW(second.Get(), WaitCycleException);

    Promise<SharedFuture<int>> ofSelf;
    SharedFuture<int> const self = AsyncTask::Run(Launch::Dedicated, waitFor, SharedFuture(ofSelf.GetFuture()));
    ofSelf.SetValue(self);
    EXPECT_EQ(MessageOf<WaitCycleException>([&] { self.Get(); }), u"AsyncTask: wait cycle: (unnamed) -> (unnamed)");
    SetWaitCycleDetection(before);
}

TEST(CancelTask, BeforeItStarts)
{
    Workers workers(1);
    std::atomic<int> runs = 0;
    Blocker busy(Launch::PoolQueued);
    auto dropped = AsyncTask::Run(Launch::PoolOnly, [&runs] { ++runs; });
    auto behind = dropped.Then([&runs] { ++runs; });
    behind.Cancel();
    EXPECT_TRUE(behind.IsReady());
    EXPECT_THROW(behind.Get(), CancelException);
    auto stubborn = AsyncTask::Run({.launch = Launch::PoolOnly, .ignoreCancelBeforeStart = true}, [&runs] {
        runs += 10;
        Cancel::ThrowIfCancelled();
    });
    stubborn.Cancel();
    EXPECT_FALSE(stubborn.IsReady());
    busy.end.Signal();
    EXPECT_THROW(stubborn.Get(), CancelException);
    EXPECT_EQ(runs, 10);
}

TEST(CancelTask, WhileItRuns)
{
    Workers workers(2);
    for (WhenCanceled const when : {WhenCanceled::AwaitWork, WhenCanceled::FailAtOnce}) {
        struct Events
        {
            TEvent begun, cancelled, end;
        };
        auto const events = std::make_shared<Events>(); // the work may outlive its future
        auto task = AsyncTask::Run({.launch = Launch::PoolQueued, .whenCanceled = when}, [events] {
            events->begun.Signal();
            Cancel::GetNonNull().Wait();
            events->cancelled.Signal();
            events->end.Wait();
            return 5; // the work need not give up
        });
        events->begun.Wait();
        task.Cancel();
        task.Cancel();
        events->cancelled.Wait();
        EXPECT_EQ(task.IsReady(), when == WhenCanceled::FailAtOnce);
        EXPECT_TRUE(task.IsCancelled());
        events->end.Signal();
        if (when == WhenCanceled::FailAtOnce) {
            EXPECT_THROW(task.Get(), CancelException);
        } else {
            EXPECT_EQ(task.Get(), 5);
        }
    }
    auto done = MakeReady(1);
    done.Cancel();
    EXPECT_FALSE(done.IsCancelled());
    EXPECT_EQ(done.Get(), 1);
}

TEST(CancelTask, ReachesWhatTheTaskWaitsFor)
{
    Workers workers(1);
    for (Launch const inner : {Launch::Dedicated, Launch::PoolQueued, Launch::Deferred}) {
        TEvent begun;
        auto outer = AsyncTask::Run(Launch::PoolQueued, [&begun, inner] {
            return AsyncTask::Run(inner,
                                  [&begun] {
                                      begun.Signal();
                                      Cancel::GetNonNull().Wait();
                                      Cancel::ThrowIfCancelled();
                                      return 1;
                                  })
                .Then([](int v) { return v; })
                .Get();
        });
        begun.Wait();
        outer.Cancel();
        EXPECT_THROW(outer.Get(), CancelException);
    }
    // Not what others may be waiting for.
    Promise<int> promise;
    SharedFuture<int> const shared = promise.GetFuture();
    auto outer = AsyncTask::Run(Launch::PoolQueued, [shared] { return shared.Get(); });
    outer.Cancel();
    EXPECT_FALSE(promise.IsCancelled());
    promise.SetValue(1);
    outer.Wait();
}

TEST(CancelTask, PromisesFailAtOnceAndTellTheirProducer)
{
    int told = 0;
    Promise<int> promise;
    promise.SetOnCancelFunction([&told] { ++told; });
    Future<int> future = promise.GetFuture();
    Future<int> handled = future.Then([](std::exception_ptr) { return 3; });
    handled.Cancel(); // takes the continuation along
    EXPECT_THROW(handled.Get(), CancelException);
    EXPECT_TRUE(promise.IsCancelled());
    EXPECT_EQ(told, 1);
    promise.SetValue(1); // too late, and no error
    EXPECT_FALSE(promise.TrySetValue(1));

    Promise<int> patient;
    patient.SetWhenCanceled(WhenCanceled::AwaitWork);
    future = patient.GetFuture();
    future.Cancel();
    EXPECT_FALSE(future.IsReady());
    patient.SetValue(2);
    EXPECT_EQ(future.Get(), 2);
}

TEST(Deadline, CancelsWhenItComes)
{
    ManualClock clock;
    Promise<int> late, inTime;
    Future<int> first = late.GetFuture(), second = inTime.GetFuture();
    auto const event = MakeRefCnt<TCancelEvent>();
    CancelAfter(first, milliseconds(10));
    CancelAfter(second, milliseconds(10));
    CancelAfter(event, milliseconds(20));
    EXPECT_EQ(clock.Pending(), 3u);
    inTime.SetValue(1);
    EXPECT_EQ(clock.Pending(), 2u); // forgotten
    clock.Advance(milliseconds(9));
    EXPECT_FALSE(first.IsReady());
    clock.Advance(milliseconds(1));
    EXPECT_THROW(first.Get(), CancelException);
    EXPECT_EQ(second.Get(), 1);
    EXPECT_FALSE(event->IsSet());
    clock.Advance(milliseconds(10));
    EXPECT_TRUE(event->IsSet());
    first = Promise<int>().GetFuture();
    CancelAfter(first, milliseconds(10));
    EXPECT_EQ(clock.Pending(), 0u);
    Promise<int> now;
    first = now.GetFuture();
    CancelAfter(first, milliseconds(0));
    EXPECT_TRUE(first.IsReady());
}

TEST(StopToken, BothWays)
{
    std::stop_source source;
    Promise<int> a, b, c;
    Future<int> first = a.GetFuture(), second = b.GetFuture(), third = c.GetFuture();
    CancelOnStop(first, source.get_token());
    CancelOnStop(second, source.get_token());
    b.SetValue(1);
    source.request_stop();
    EXPECT_TRUE(first.IsReady() && a.IsCancelled());
    EXPECT_FALSE(b.IsCancelled());
    CancelOnStop(third, source.get_token());
    EXPECT_TRUE(c.IsCancelled());

    auto const event = MakeRefCnt<TCancelEvent>();
    Cancel::CancelEventSetter const setter(event);
    StopTokenScope const scope;
    EXPECT_FALSE(scope.Token().stop_requested());
    event->Signal();
    EXPECT_TRUE(scope.Token().stop_requested());
    EXPECT_TRUE(StopTokenScope().Token().stop_requested());
    EXPECT_FALSE(StopTokenScope(nullptr).Token().stop_requested());
}

namespace {

/// A random tree of tasks, waits, continuations and cancellations; what it comes to, the number of its tasks, does not
/// depend on who runs what.
Future<int> Grow(unsigned int seed, std::vector<Launch> const& launches, int depth)
{
    std::mt19937 random(seed);
    Launch const launch = launches[random() % launches.size()];
    if (depth == 0) {
        return AsyncTask::Run(launch, [] { return 1; });
    }
    auto const below = [next = static_cast<unsigned int>(random()), depth, launches] {
        std::vector<Future<int>> parts;
        for (unsigned int i = 0; i < 3; ++i) {
            parts.push_back(Grow(next + i, launches, depth - 1));
        }
        return parts;
    };
    auto const sumOfParts = [](std::vector<Future<int>> parts) {
        int sum = 1;
        for (Future<int>& part : parts) {
            sum += part.Get();
        }
        return sum;
    };
    auto const sum = [](std::vector<int> const& values) { return std::accumulate(values.begin(), values.end(), 1); };
    switch (random() % 4) {
    case 0:
        return AsyncTask::Run(launch, [=] { return sumOfParts(below()); }); // waits inside
    case 1:
        return AsyncTask::Run(launch, [=] { return WhenAllValues(below()).Then(sum); });
    case 2:
        return WhenAllValues(below()).Then(launch, sum);
    default:
        return WhenAll(below()).Then(launch, sumOfParts);
    }
}

std::vector<Launch> const kAnywhere{Launch::Deferred, Launch::OnCaller, Launch::PoolOrDedicated, Launch::Dedicated,
                                    Launch::PoolQueued};

} // namespace

TEST(Stress, RandomTreesOnPoolsOfAllSizes)
{
    bool const before = GetWaitCycleDetection();
    for (unsigned int seed = 0; seed < 30; ++seed) {
        SetWaitCycleDetection(seed % 2 == 0);
        Workers workers(1 + seed % 3);
        EXPECT_EQ(Grow(seed, seed % 5 == 0 ? std::vector{Launch::PoolOnly} : kAnywhere, 3).Get(), 1 + 3 + 9 + 27)
            << seed;
    }
    SetWaitCycleDetection(before);
}

TEST(Stress, CancelledAtAnyTime)
{
    Workers workers(2);
    std::mt19937 random(1);
    int cancelled = 0;
    for (unsigned int seed = 0; seed < 60; ++seed) {
        Future<int> future = Grow(seed, kAnywhere, 2);
        std::thread canceller([&future, pauses = random() % 2000] {
            for (unsigned int i = 0; i < pauses; ++i) {
                qvxsys::detail::SpinPause();
            }
            future.Cancel();
        });
        future.Wait();
        canceller.join();
        try {
            EXPECT_EQ(future.Get(), 1 + 3 + 9) << seed;
        } catch (CancelException const&) {
            ++cancelled;
        }
    }
    EXPECT_GT(cancelled, 0);
}

TEST(Stress, CompletionRacesWithEverything)
{
    Workers workers(2);
    for (int round = 0; round < 300; ++round) {
        Promise<int> promise;
        SharedFuture<int> const shared = promise.GetFuture();
        std::atomic<int> sum = 0;
        std::thread setter([&promise] { promise.TrySetValue(1); });
        std::thread follower([&] {
            for (int i = 0; i < 5; ++i) {
                auto const f = shared.Then([&sum](SharedFuture<int> const&) { ++sum; });
                if (i == 4) {
                    f.Wait();
                }
            }
        });
        std::thread canceller([&shared, round] {
            if (round % 2 == 0) {
                shared.Cancel();
            }
        });
        shared.Wait();
        setter.join();
        follower.join();
        canceller.join();
        EXPECT_EQ(sum, 5);
    }
}

// The only thread of the pool waits for a task that has not said yet what it needs.
TEST(Wait, HelpsWithWhatATaskComesToNeedLater)
{
    Workers workers(1);
    TEvent waiting;
    auto const needed = [] { return AsyncTask::Run(Launch::PoolQueued, [] { return 7; }); };
    auto const coroutine = [&](Future<void> start) -> Future<int> {
        co_await start;
        co_return co_await needed();
    };
    std::function<Future<int>()> const inner[] = {
        [&] {
            return AsyncTask::Run(Launch::Dedicated, [&] {
                waiting.Wait();
                return needed();
            });
        },
        [&] { return coroutine(AsyncTask::Run(Launch::Dedicated, [&] { waiting.Wait(); })); },
    };
    for (auto const& make : inner) {
        waiting.Reset();
        auto outer = AsyncTask::Run(Launch::PoolOnly, [&] {
            TellsOfBlocking handler(waiting);
            WaitHandlerScopeGuard const scope(&handler);
            return make().Get();
        });
        EXPECT_EQ(outer.Get(), 7);
    }
}
