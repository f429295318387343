#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include <qvxsys/SharedState.h>

#include "TaskSupport.h"

using namespace AsyncTask;

namespace {

class State : public SharedStateBase
{
public:
    using SharedStateBase::AssertIsReady;
    using SharedStateBase::MarkAsCancelled;
    void Cancel() override { MarkAsCancelled(); }
};

template<class T>
std::exception_ptr Error(T value)
{
    return std::make_exception_ptr(value);
}

int Thrown(SharedStateBase const& state)
{
    try {
        state.CheckForException();
    } catch (int value) {
        return value;
    }
    return 0;
}

} // namespace

TEST(SharedState, BeginsWithNothing)
{
    State state;
    EXPECT_FALSE(state.IsReady() || state.HasException() || state.IsCancelled() || state.IsDeferred());
    EXPECT_FALSE(state.TryTakingDeferredOwnership());
    EXPECT_EQ(state.GetWhenCanceled(), WhenCanceled(0));
    EXPECT_FALSE(state.GetIgnoreCancelBeforeStart());
    EXPECT_FALSE(state.WaitFor(std::chrono::milliseconds(0)));
    state.CheckForException();
    state.SignalCancelEventIfSet();
}

TEST(SharedState, TellsWaitersAndCallbacks)
{
    State state;
    int key = 0, kept = 0, removed = 0;
    state.AddOnReadyCallback(&key, [&kept] { ++kept; });
    state.AddOnReadyCallback(&removed, [&removed] { ++removed; });
    state.RemoveOnReadyCallback(&removed);
    std::thread producer([&state] { state.MarkAsReady(); });
    state.Wait();
    EXPECT_TRUE(state.IsReady() && state.GetRawReadyEvent().IsSet());
    EXPECT_TRUE(state.WaitFor(std::chrono::milliseconds(1)));
    producer.join();
    EXPECT_EQ(kept, 1);
    EXPECT_EQ(removed, 0);
    state.AssertIsReady();
}

TEST(SharedState, TheFirstExceptionWins)
{
    State state;
    state.SetException(nullptr);
    EXPECT_FALSE(state.HasException());
    state.SetException(Error(1));
    state.SetException(Error(2));
    EXPECT_TRUE(state.HasException());
    EXPECT_EQ(Thrown(state), 1);
    EXPECT_EQ(Thrown(state), 1);
}

TEST(SharedState, DeferredWorkIsTakenOnce)
{
    State state;
    state.SetDeferred();
    EXPECT_TRUE(state.IsDeferred());
    std::atomic<int> taken = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] { taken += state.TryTakingDeferredOwnership(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(taken, 1);
    EXPECT_FALSE(state.IsDeferred());
}

TEST(SharedState, CancelEventCallsTheOnCancelFunction)
{
    State state;
    int called = 0;
    state.SetOnCancelFunction(std::make_unique<std::function<void()>>([&called] { called += 100; }));
    state.SetOnCancelFunction(std::make_unique<std::function<void()>>([&called] { ++called; }));
    auto const event = MakeRefCnt<TCancelEvent>();
    state.SetCancelEvent(event);
    EXPECT_EQ(event.use_count(), 2);
    EXPECT_FALSE(event->IsSet());
    state.SignalCancelEventIfSet();
    EXPECT_TRUE(event->IsSet());
    EXPECT_EQ(called, 1);
    state.RemoveCancelOnSignalCallback();
    event->Signal();
    EXPECT_EQ(called, 1);
}

TEST(SharedState, CancelledBeforeItHasAnEvent)
{
    State state;
    state.Cancel();
    auto const event = MakeRefCnt<TCancelEvent>();
    state.SetCancelEvent(event);
    EXPECT_TRUE(event->IsSet() && state.IsCancelled());
}

TEST(SharedState, Checks)
{
    auto const set = [](State& state) { state.SetCancelEvent(MakeRefCnt<TCancelEvent>()); };
    for (auto const kind : {FailedChecks::Hook::Throws, FailedChecks::Hook::Returns}) {
        State state;
        EXPECT_EQ(FailedChecks::In([&] { state.AssertIsReady(); }, kind),
                  "qvxsys/main/thread/SharedState 135: m_ready->IsSet()");
        EXPECT_TRUE(FailedChecks::In([&] { state.RemoveCancelOnSignalCallback(); }, kind).ends_with(": m_ptr"));
        set(state);
        EXPECT_EQ(FailedChecks::In([&] { set(state); }, kind), "qvxsys/main/thread/SharedState 66: !m_cancel");
        state.RemoveCancelOnSignalCallback(); // the lock is free again
    }
}

TEST(SharedState, InvalidFutureKeepsItsClass)
{
    InvalidFutureException const e(TError::ErrorInfo::TestError());
    EXPECT_EQ(e.GetMessagesFront(), u"InvalidFuture");
    EXPECT_THROW(e.Throw(), InvalidFutureException);
    std::unique_ptr<QuorvexException> const clone(e.Clone());
    EXPECT_NE(dynamic_cast<InvalidFutureException*>(clone.get()), nullptr);
}

TEST(Hooks, ExceptionHookMapsWhatIsThrown)
{
    State state;
    state.SetException(Error(1));
    EXPECT_EQ(_ApplyExceptionHook(nullptr), nullptr);
    SetExceptionHook([](std::exception_ptr const&) { return Error(7); });
    EXPECT_EQ(Thrown(state), 7);
    SetExceptionHook([](std::exception_ptr const&) -> std::exception_ptr { throw 8; });
    EXPECT_EQ(Thrown(state), 8);
    SetExceptionHook([](std::exception_ptr const&) { return nullptr; });
    EXPECT_EQ(Thrown(state), 1);
    SetExceptionHook([](std::exception_ptr const&) {
        SetExceptionHook(nullptr); // the running hook stays alive
        return Error(9);
    });
    EXPECT_EQ(Thrown(state), 9);
    EXPECT_EQ(Thrown(state), 1);
}

TEST(Hooks, ExecutionHookReplacesWork)
{
    int runs = 0;
    std::vector<bool> flags;
    _ApplyExecutionHook([&runs] { ++runs; }, true)();
    EXPECT_EQ(runs, 1);
    SetExecutionHook([&](std::function<void()> work, bool flag) -> std::function<void()> {
        flags.push_back(flag);
        return [&runs, work = std::move(work)] {
            work();
            runs += 10;
        };
    });
    _ApplyExecutionHook([&runs] { ++runs; }, true)();
    static_cast<void>(_ApplyExecutionHook([&runs] { ++runs; }, false));
    SetExecutionHook(nullptr);
    EXPECT_EQ(runs, 12);
    EXPECT_EQ(flags, (std::vector<bool>{true, false}));
}

TEST(Hooks, CreatedHookSeesTheState)
{
    auto const state = std::make_shared<State>();
    std::weak_ptr<SharedStateBase> seen;
    _ApplyOnSharedStateCreatedHook(state);
    SetOnSharedStateCreatedHook([&seen](std::weak_ptr<SharedStateBase> created) { seen = std::move(created); });
    EXPECT_TRUE(_HasOnSharedStateCreatedHook());
    _ApplyOnSharedStateCreatedHook(state);
    SetOnSharedStateCreatedHook({});
    EXPECT_FALSE(_HasOnSharedStateCreatedHook());
    EXPECT_EQ(seen.lock(), state);
}
