#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

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

TEST(SharedState, TellsWaitersAndCallbacks)
{
    State state;
    EXPECT_FALSE(state.IsReady() || state.HasException() || state.IsCancelled() || state.IsDeferred());
    EXPECT_FALSE(state.TryTakingDeferredOwnership() || state.WaitFor(std::chrono::milliseconds(0)));
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
    InParallel(4, [&](int) { taken += state.TryTakingDeferredOwnership(); });
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
    // Cancelled before it has one.
    State cancelled;
    cancelled.Cancel();
    auto const late = MakeRefCnt<TCancelEvent>();
    cancelled.SetCancelEvent(late);
    EXPECT_TRUE(late->IsSet() && cancelled.IsCancelled());
}

TEST(SharedState, Checks)
{
    State state;
    auto const set = [&] { state.SetCancelEvent(MakeRefCnt<TCancelEvent>()); };
    ExpectFailedCheck([&] { state.AssertIsReady(); }, "qvxsys/main/thread/SharedState 135: m_ready->IsSet()");
    ExpectFailedCheck([&] { state.RemoveCancelOnSignalCallback(); }, ": m_ptr");
    set();
    ExpectFailedCheck(set, "qvxsys/main/thread/SharedState 66: !m_cancel");
    state.RemoveCancelOnSignalCallback(); // the lock is free again
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
