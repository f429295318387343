// Futures and promises on one thread, and what they do with values, exceptions and continuations.

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "TaskSupport.h"

using namespace AsyncTask;

namespace {

/// Counts its objects; copying or moving it throws when told to.
struct Fragile
{
    static inline int alive = 0;
    bool throws = false;
    int value = 0;

    explicit Fragile(int v = 0, bool t = false) : throws(t), value(v) { ++alive; }
    Fragile(Fragile const& other) : throws(other.throws), value(other.value)
    {
        if (throws) {
            throw std::runtime_error("fragile");
        }
        ++alive;
    }
    ~Fragile() { --alive; }
};

template<class T>
struct Sample;
template<>
struct Sample<int&>
{
    static inline int object = 0;
    static int& Make() { return object; }
    static bool Is(int& value) { return &value == &object; }
};
template<>
struct Sample<std::unique_ptr<int>>
{
    static std::unique_ptr<int> Make() { return std::make_unique<int>(7); }
    static bool Is(std::unique_ptr<int> const& value) { return value != nullptr && *value == 7; }
};
template<>
struct Sample<Fragile>
{
    static Fragile Make() { return Fragile(5); }
    static bool Is(Fragile const& value) { return value.value == 5; }
};

template<class T>
class FutureOf : public testing::Test
{};
using Types = testing::Types<int&, std::unique_ptr<int>, Fragile>;
TYPED_TEST_SUITE(FutureOf, Types);

int ThrowNine()
{
    throw 9;
}

template<class F>
int CaughtFrom(F&& get)
{
    try {
        get();
    } catch (int value) {
        return value;
    }
    return 0;
}

} // namespace

TYPED_TEST(FutureOf, GoesThroughEveryWay)
{
    using T = TypeParam;
    using S = Sample<T>;
    {
        Promise<T> promise;
        Future<T> future = promise.GetFuture();
        EXPECT_FALSE(future.IsReady());
        promise.SetValue(S::Make());
        EXPECT_TRUE(future.IsReady());
        EXPECT_TRUE(S::Is(future.Get()));
        EXPECT_FALSE(future.IsValid());
    }
    for (Launch const launch : {Launch::Deferred, Launch::OnCaller}) {
        EXPECT_TRUE(S::Is(AsyncTask::Run(launch, &S::Make).Get()));
        EXPECT_TRUE(
            S::Is(AsyncTask::Run(launch, &S::Make).Then([](T value) -> T { return std::forward<T>(value); }).Get()));
        EXPECT_TRUE(AsyncTask::Run(launch, &S::Make).Then([](Future<T> f) { return S::Is(f.Get()); }).Get());
        EXPECT_TRUE(S::Is(AsyncTask::Run(launch, &S::Make).Then([](std::exception_ptr) -> T { throw 1; }).Get()));
        EXPECT_TRUE(S::Is(AsyncTask::Run(launch, [launch] { return AsyncTask::Run(launch, &S::Make); }).Get()));
        SharedFuture<T> const shared = AsyncTask::Run(launch, &S::Make);
        SharedFuture<T> const other = shared;
        EXPECT_TRUE(S::Is(const_cast<std::add_lvalue_reference_t<T>>(shared.Get())));
        EXPECT_TRUE(other.Then([](SharedFuture<T> f) { return f.IsReady(); }).Get());
        EXPECT_EQ(&other.Get(), &shared.Get());
    }
    EXPECT_EQ(Fragile::alive, 0);
}

TEST(Future, OfVoid)
{
    Promise<void> promise;
    Future<void> future = promise.GetFuture();
    promise.SetValue();
    int sum = 0;
    future.Then([&sum] { sum += 1; }).Then([](Future<void> f) { f.Get(); }).Get();
    MakeFailed<void>(9).Then([](std::exception_ptr) {}).Then([&sum] { sum += 2; }).Get();
    SharedFuture<void> const shared = MakeReady();
    shared.Get();
    shared.Then([&sum] { sum += 4; }).Get();
    EXPECT_EQ(sum, 7);
}

TEST(Future, WithoutState)
{
    Future<int> future;
    Future<int> const moved = std::move(future);
    std::function<void()> const uses[] = {
        [&] { static_cast<void>(future.IsReady()); },
        [&] { future.Wait(); },
        [&] { static_cast<void>(future.WaitFor(std::chrono::milliseconds(1))); },
        [&] { future.Cancel(); },
        [&] { static_cast<void>(future.Then([](int) {})); },
        [&] { static_cast<void>(future.Share()); },
        [&] { future.Get(); },
        [] { SharedFuture<int>().Get(); },
        [] { static_cast<void>(WhenAll(Future<int>())); },
        [] { AsyncTask::Run(Launch::OnCaller, [] { return Future<int>(); }).Get(); }, // an inner one
    };
    for (auto const& use : uses) {
        EXPECT_EQ(MessageOf<InvalidFutureException>(use), u"InvalidFuture");
    }
    Future<int> itself = MakeReady(3);
    auto& same = itself;
    itself = std::move(same);
    EXPECT_EQ(itself.Get(), 3);
}

template<class Exception>
void ExpectCopiesOfItsClass(Exception const& e)
{
    EXPECT_THROW(e.Throw(), Exception);
    std::unique_ptr<QuorvexException> const clone(e.Clone());
    EXPECT_NE(dynamic_cast<Exception*>(clone.get()), nullptr);
}

TEST(Future, ExceptionsKeepTheirClass)
{
    auto const info = TError::ErrorInfo::TestError();
    ExpectCopiesOfItsClass(InvalidFutureException(info));
    ExpectCopiesOfItsClass(PromiseException(u"why", info));
    ExpectCopiesOfItsClass(BrokenPromiseException(u"why", info));
    ExpectCopiesOfItsClass(WaitCycleException(u"why", info));
}

TEST(Promise, MisuseAndBreaking)
{
    Promise<int> promise;
    Future<int> future = promise.GetFuture();
    EXPECT_EQ(MessageOf<PromiseException>([&] { static_cast<void>(promise.GetFuture()); }),
              u"AsyncTask::Promise: the future has been taken already.");
    promise.SetValue(1);
    EXPECT_EQ(MessageOf<PromiseException>([&] { promise.SetValue(2); }),
              u"AsyncTask::Promise: the result has been set already.");
    EXPECT_THROW(promise.SetException(2), PromiseException);
    EXPECT_FALSE(promise.TrySetValue(3));
    EXPECT_EQ(future.Get(), 1);

    future = [] { return Promise<int>().GetFuture(); }();
    EXPECT_EQ(MessageOf<BrokenPromiseException>([&] { future.Get(); }),
              u"AsyncTask::Promise: destroyed without a result.");
    promise = Promise<int>(); // assigned over one that has a result
    future = promise.GetFuture();
    Promise<int> other = std::move(promise);
    EXPECT_EQ(MessageOf<PromiseException>([&] { promise.SetValue(2); }), u"AsyncTask::Promise: no state.");
    other = Promise<int>(); // and over one that has none
    EXPECT_THROW(future.Get(), BrokenPromiseException);
}

TEST(Promise, AValueThatCannotBeCopied)
{
    Fragile const fragile(1, true);
    Promise<Fragile> promise;
    Future<Fragile> future = promise.GetFuture();
    EXPECT_THROW(promise.SetValue(fragile), std::runtime_error);
    EXPECT_FALSE(future.IsReady());
    promise.SetValue(2); // constructed in place
    EXPECT_EQ(future.Get().value, 2);
    promise = {};
    // In a task, the exception is the result.
    EXPECT_THROW(AsyncTask::Run(Launch::OnCaller, [&]() -> Fragile { return fragile; }).Get(), std::runtime_error);
    EXPECT_EQ(Fragile::alive, 1);
}

TEST(Future, ExceptionsPassByWhoDoesNotWantThem)
{
    int called = 0;
    EXPECT_EQ(CaughtFrom([&] {
                  AsyncTask::Run(Launch::OnCaller, ThrowNine)
                      .Then([&](int v) { return ++called, v; })
                      .Then([&](int) { ++called; })
                      .Get();
              }),
              9);
    EXPECT_EQ(called, 0);
    EXPECT_EQ(MakeFailed<int>(8)
                  .Then([](std::exception_ptr const& e) { return CaughtFrom([&e] { std::rethrow_exception(e); }); })
                  .Get(),
              8);
    EXPECT_EQ(CaughtFrom([] { MakeReady(1).Then([](int) { throw 7; }).Get(); }), 7);
    EXPECT_EQ(CaughtFrom([] { MakeFailed<int>(6).Then([](std::exception_ptr) -> int { throw 5; }).Get(); }), 5);
    SharedFuture<int> const shared = MakeFailed<int>(4);
    EXPECT_EQ(CaughtFrom([&] { shared.Get(); }), 4);
    EXPECT_EQ(CaughtFrom([&] { shared.Then([](int) {}).Get(); }), 4);
    EXPECT_EQ(shared.Then([](std::exception_ptr) { return 3; }).Get(), 3);
    // Of a future in a future: the outer's, the inner's.
    EXPECT_EQ(CaughtFrom([] { AsyncTask::Run(Launch::OnCaller, []() -> Future<int> { throw 2; }).Get(); }), 2);
    EXPECT_EQ(CaughtFrom([] { AsyncTask::Run(Launch::OnCaller, [] { return MakeFailed<int>(1); }).Get(); }), 1);
}

TEST(Future, TheExceptionHookSeesWhatConsumersAreThrownOnce)
{
    std::vector<int> seen;
    SetExceptionHook([&seen](std::exception_ptr const& e) {
        seen.push_back(CaughtFrom([&e] { std::rethrow_exception(e); }));
        return std::make_exception_ptr(seen.back() + 1);
    });
    EXPECT_EQ(CaughtFrom([] { AsyncTask::Run(Launch::OnCaller, ThrowNine).Then([](int) {}).Then([] {}).Get(); }), 10);
    SetExceptionHook(nullptr);
    EXPECT_EQ(seen, std::vector<int>{9});
}

TEST(Future, TheCreatedHookSeesEveryState)
{
    std::vector<std::weak_ptr<SharedStateBase>> seen;
    SetOnSharedStateCreatedHook([&seen](std::weak_ptr<SharedStateBase> s) { seen.push_back(std::move(s)); });
    Future<int> const future = AsyncTask::Run(Launch::OnCaller, [] { return 1; }).Then([](int v) { return v; });
    Promise<int> const promise;
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_TRUE(_HasOnSharedStateCreatedHook());
    EXPECT_EQ(seen[1].lock(), future.GetState());
    SetOnSharedStateCreatedHook([](std::weak_ptr<SharedStateBase> const&) { throw 3; });
    EXPECT_EQ(CaughtFrom([] { Promise<int>(); }), 3);
    EXPECT_EQ(CaughtFrom([] { static_cast<void>(AsyncTask::Run(Launch::OnCaller, [] {})); }), 3);
    SetOnSharedStateCreatedHook(nullptr);
}

TEST(Future, ContinuationsRunInOrderBehindEachOther)
{
    std::string log;
    Promise<int> promise;
    SharedFuture<int> const shared = promise.GetFuture();
    Future<void> last;
    auto const first = shared.Then([&](int) {
        log += "a(";
        last = shared.Then([&](int) { log += "now "; }); // ready already: within
        Promise<void> inner;
        auto const behind = inner.GetFuture().Then([&] { log += "inner "; });
        inner.SetValue(); // told behind this one, before the next
        log += ") ";
    });
    auto const second = shared.Then([&](int) { log += "b "; });
    promise.SetValue(1);
    EXPECT_EQ(log, "a(now ) inner b ");
}

TEST(Future, WhatAContinuationHasCompletedIsToldBeforeItBlocks)
{
    Promise<int> promise, inner, last;
    auto const task = promise.GetFuture().Then([&](int) {
        auto const between = inner.GetFuture().Then([&](int v) { last.SetValue(v + 1); });
        inner.SetValue(1);
        return last.GetFuture().Get(); // depends on what is told behind this
    });
    promise.SetValue(0);
    EXPECT_TRUE(task.IsReady());
}

TEST(Deferred, RunsWhenWaitedForOrNever)
{
    int runs = 0;
    {
        auto const dropped = AsyncTask::Run(Launch::Deferred, [&runs] { return ++runs; }).Then([](int v) { return v; });
        EXPECT_FALSE(dropped.WaitFor(std::chrono::milliseconds(1)));
    }
    EXPECT_EQ(runs, 0);
    auto chain = AsyncTask::Run(Launch::Deferred, [&runs] { return ++runs; }).Then(Launch::PoolQueued, [](int v) {
        return v + 10;
    });
    EXPECT_EQ(runs, 0);
    EXPECT_EQ(chain.Get(), 11);
    EXPECT_EQ(WhenAll(AsyncTask::Run(Launch::Deferred, [] { return 1; }), MakeReady(2))
                  .Then([](auto both) { return std::get<0>(both).Get() + std::get<1>(both).Get(); })
                  .Get(),
              3);
}

TEST(Chain, OfAMillion)
{
    constexpr int kLength = 1'000'000;
    for (Launch const launch : {Launch::OnCaller, Launch::Deferred}) {
        Promise<int> promise;
        Future<int> future =
            launch == Launch::Deferred ? AsyncTask::Run(launch, [] { return 0; }) : promise.GetFuture();
        for (int i = 0; i < kLength; ++i) {
            future = future.Then(launch, [](int v) { return v + 1; });
        }
        promise.SetValue(0);
        EXPECT_EQ(future.Get(), kLength);
    }
    {
        constexpr int kShorter = kLength / 5;
        Promise<int> promise;
        Future<int> failed = promise.GetFuture();
        Future<int> deferred = AsyncTask::Run(Launch::Deferred, [] { return 0; });
        Promise<int> other;
        Future<int> cancelled = other.GetFuture();
        for (int i = 0; i < kShorter; ++i) {
            failed = failed.Then([](int v) { return v; });
            deferred = deferred.Then([](int v) { return v; });
            cancelled = cancelled.Then([](int v) { return v; });
        }
        cancelled.Cancel();
        EXPECT_TRUE(other.IsCancelled());
        EXPECT_THROW(cancelled.Get(), CancelException);
        promise = Promise<int>();
        EXPECT_THROW(failed.Get(), BrokenPromiseException);
    } // the deferred one is destroyed without having run
}

TEST(Chain, OfFuturesInFutures)
{
    struct Loop
    {
        static Future<int> From(int n)
        {
            return n == 0 ? MakeReady(0) : MakeReady(n).Then([](int v) { return From(v - 1); });
        }
        static Future<int> Late(Future<int> first, int n)
        {
            return n == 0 ? std::move(first)
                          : MakeReady(0).Then([f = std::move(first)](int) mutable { return std::move(f); });
        }
    };
    EXPECT_EQ(Loop::From(200).Get(), 0);
    Promise<int> promise;
    Future<int> future = promise.GetFuture();
    for (int i = 0; i < 100'000; ++i) {
        future = Loop::Late(std::move(future), 1);
    }
    promise.SetValue(6);
    EXPECT_EQ(future.Get(), 6);
}

TEST(Group, AllAndAny)
{
    Promise<int> a, b;
    auto all = WhenAll(a.GetFuture(), b.GetFuture());
    b.SetException(9);
    EXPECT_FALSE(all.IsReady());
    a.SetValue(1);
    EXPECT_TRUE(all.IsReady());
    auto [x, y] = all.Get();
    EXPECT_EQ(x.Get(), 1);
    EXPECT_EQ(CaughtFrom([&y = y] { y.Get(); }), 9);

    Promise<int> c, d;
    std::vector<Future<int>> two;
    two.push_back(c.GetFuture());
    two.push_back(d.GetFuture());
    auto any = WhenAny(std::move(two));
    EXPECT_FALSE(any.IsReady());
    d.SetValue(4);
    c.SetValue(3);
    auto first = any.Get();
    EXPECT_EQ(first.index, 1u);
    EXPECT_EQ(first.futures[1].Get(), 4);
    EXPECT_EQ(first.futures[0].Get(), 3);
    SharedFuture<int> const shared = MakeReady(1);
    EXPECT_EQ(WhenAny(shared, shared).Get().index, 0u);
}

TEST(Group, EmptyAndValues)
{
    EXPECT_TRUE(WhenAll(std::vector<Future<int>>()).Get().empty());
    using Any = AnyOf<std::vector<Future<int>>>;
    EXPECT_EQ(WhenAny(std::vector<Future<int>>()).Get().index, Any::kNone);
    std::vector<Future<int>> futures, failing;
    for (int i = 0; i < 3; ++i) {
        futures.push_back(MakeReady(i));
        failing.push_back(MakeFailed<int>(i + 5));
    }
    EXPECT_EQ(WhenAllValues(std::move(futures)).Get(), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(CaughtFrom([&] { WhenAllValues(std::move(failing)).Get(); }), 5);
}

TEST(Group, CancelReachesWhatIsOwned)
{
    Promise<int> a, b;
    SharedFuture<int> const shared = b.GetFuture();
    auto all = WhenAll(a.GetFuture(), shared);
    all.Cancel();
    EXPECT_TRUE(a.IsCancelled());
    EXPECT_FALSE(b.IsCancelled());
    b.SetValue(1);
    EXPECT_THROW(std::get<0>(all.Get()).Get(), CancelException);
}

TEST(WrappedFuture, HidesTheType)
{
    Promise<int> promise;
    WrappedFuture<int> pending(promise.GetFuture());
    WrappedFuture<void> failed(MakeFailed<void>(3));
    EXPECT_FALSE(pending.IsReady() || pending.WaitFor(std::chrono::milliseconds(0)));
    IWrappedFuture& plain = failed;
    plain.Wait();
    EXPECT_EQ(CaughtFrom([&] { plain.Check(); }), 3);
    pending.Cancel();
    EXPECT_THROW(pending.Check(), CancelException);
}
