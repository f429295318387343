// Many threads at semaphores and events at once, and events that are destroyed as soon as they are set.

#include <array>
#include <atomic>
#include <random>

#include <gtest/gtest.h>
#include <qvxsys/TSemaphore.h>

#include "EventKinds.h"
#include "support/Threads.h"

using std::chrono::milliseconds;

namespace {

TEST(Stress, SixtyFourThreads)
{
    constexpr int kThreads = 64;
    constexpr int kRounds = 600 / kStressDivisor;
    auto const semaphore = TSemaphore::Construct(3);
    TAutoResetEvent token; // held by one at a time, like a lock
    token.Signal();
    std::array<TEvent, 2> gates;
    TCountdownEvent finished(kThreads);
    int underToken = 0;
    std::atomic<int> inside = 0;
    auto const work = [&](int thread) {
        std::minstd_rand random(static_cast<unsigned int>(thread + 1));
        int key = 0;
        for (int i = 0; i < kRounds; ++i) {
            if (random() % 2 == 0) {
                semaphore->Acquire();
            } else {
                YieldUntil([&] { return semaphore->TryAcquire(static_cast<unsigned int>(random() % 3)); });
            }
            EXPECT_LE(++inside, 3);
            --inside;
            semaphore->Release();
            auto const which = random() % 4;
            if (which == 0) {
                EXPECT_TRUE(token.Wait());
            } else if (which == 1) {
                EXPECT_TRUE(token.Wait(kLost));
            } else if (which == 2) {
                YieldUntil([&] { return token.Wait(milliseconds(1)); });
            } else {
                EXPECT_EQ(WaitForAnyExact(std::vector<IEvent*>{&gates[1], &token}, kLost), 1U);
            }
            ++underToken;
            token.Signal();
            IEvent& gate = gates[0];
            if (auto const what = random() % 5; what < 2) {
                what == 0 ? gate.Signal() : gate.Reset();
            } else if (what < 4) {
                what == 2 ? gate.RemoveOnSignalCallback(&key) : gate.AddOnSignalCallback(&key, [] {});
            } else {
                static_cast<void>(WaitForAny({&gate, &finished}, milliseconds(random() % 2)));
            }
        }
        gates[0].RemoveOnSignalCallback(&key);
        finished.Signal();
        EXPECT_TRUE(finished.Wait());
    };
    InParallel(kThreads, work);
    EXPECT_EQ(underToken, kThreads * kRounds);
}

/// A writer enters again while others that want to read come and are turned away.
TEST(Stress, WriterEntersAgain)
{
    constexpr int kRounds = 5000 / kStressDivisor;
    TReadWriteLock lock;
    std::atomic<int> round = 0;
    int written = 0;
    std::vector<std::jthread> readers;
    for (int reader = 0; reader < 6; ++reader) {
        readers.emplace_back([&] {
            for (int i = 1; i <= kRounds; ++i) {
                YieldUntil([&] { return round >= i; });
                TReadLockScope const reading(lock);
                EXPECT_EQ(written % 2, 0);
            }
        });
    }
    while (round < kRounds) {
        lock.Lock();
        ++written;
        ++round; // here they come
        for (int again = 0; again < 100; ++again) {
            lock.Lock();
            lock.Unlock();
            ASSERT_TRUE(lock.TryLock());
            lock.Unlock();
        }
        ++written;
        lock.Unlock();
    }
}

enum class Waiting { Unlimited, Timed, Asking, Any, AnyExact };

bool WaitFor(IEvent& event, Waiting how)
{
    switch (how) {
    case Waiting::Unlimited:
        return event.Wait();
    case Waiting::Timed:
        return event.Wait(kLost);
    case Waiting::Asking:
        YieldUntil([&] { return event.IsSet(); });
        return true;
    case Waiting::Any:
        return WaitForAny({&event}, kLost);
    case Waiting::AnyExact:
        return WaitForAnyExact(std::vector{&event}, kLost) == 0;
    }
    return false;
}

class DestroyedWhenSet : public testing::TestWithParam<EventKind>
{};
INSTANTIATE_TEST_SUITE_P(Kinds, DestroyedWhenSet, testing::ValuesIn(kEventKinds), testing::PrintToStringParamName());

/// The waiter destroys the event while the signal that woke it is still on its way out on another thread.
TEST_P(DestroyedWhenSet, EvenWhileSignalRuns)
{
    bool const isCounted = dynamic_cast<RefCntObject*>(GetParam().make().get()) != nullptr;
    std::atomic<IEvent*> next = nullptr;
    std::atomic<bool> stop = false;
    std::jthread const signaller([&] {
        for (;;) {
            IEvent* event = nullptr;
            YieldUntil([&] { return stop || (event = next.exchange(nullptr)) != nullptr; });
            if (event == nullptr) {
                return;
            }
            event->Signal();
        }
    });
    for (Waiting const how : {Waiting::Unlimited, Waiting::Timed, Waiting::Asking, Waiting::Any, Waiting::AnyExact}) {
        if (GetParam().autoReset && how == Waiting::Any) {
            continue; // may find it set before it waits, and use it up
        }
        for (int i = 0; i < 3000 / kStressDivisor; ++i) {
            std::shared_ptr<IEvent> event = GetParam().make();
            auto const called = std::make_shared<std::atomic<int>>(0);
            if (i % 2 == 0) {
                event->AddOnSignalCallback(&next, [called] { ++*called; });
            }
            next = event.get();
            ASSERT_TRUE(WaitFor(*event, how));
            event.reset();
            if (!isCounted) { // others' destructors wait for callbacks
                ASSERT_EQ(*called, i % 2 == 0);
            }
        }
    }
    stop = true;
}

} // namespace
