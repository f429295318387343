// Waits of a thread that gets one signal after another: they neither end early nor fail. And trees on a small stack.

#include <atomic>
#include <functional>
#include <mutex>
#include <pthread.h>
#include <shared_mutex>

#include <gtest/gtest.h>
#include <qvxsys/TSemaphore.h>

#include "EventKinds.h"
#include "support/Interruptions_posix.h"

using std::chrono::milliseconds;

namespace {

TEST(Interrupted, TimedWaitsAreNotEarly)
{
    Interruptions const signals;
    std::vector<std::shared_ptr<IEvent>> owners;
    std::vector<IEvent*> events;
    for (EventKind const& kind : kEventKinds) {
        owners.push_back(kind.make());
        events.push_back(owners.back().get());
    }
    auto const semaphore = TSemaphore::Construct(0);
    constexpr milliseconds kTime(30);
    auto waits = WaitsForMany(events);
    waits.emplace_back(
        [&](milliseconds time) { return semaphore->TryAcquire(static_cast<unsigned int>(time.count())); });
    for (IEvent* const event : events) {
        waits.emplace_back([event](milliseconds time) { return event->Wait(time); });
    }
    for (TimedWait const& wait : waits) {
        auto const timed = [&] {
            auto const start = std::chrono::steady_clock::now();
            EXPECT_FALSE(wait(kTime));
            EXPECT_GE(Since(start), kTime);
        };
        Interruptions::Run(timed, [] {});
    }
}

TEST(Interrupted, WaitsWithoutLimitGoOn)
{
    Interruptions const signals;
    auto const semaphore = TSemaphore::Construct(0);
    TRecursiveMutex mutex;
    TReadWriteLock lock;
    std::atomic<bool> ended = false;
    auto const run = [&](std::function<void()> const& wait, std::function<void()> const& end) {
        ended = false;
        Interruptions::Run(
            [&] {
                wait();
                EXPECT_TRUE(ended);
            },
            [&] {
                ended = true;
                end();
            });
    };
    run([&] { semaphore->Acquire(); }, [&] { semaphore->Release(); });
    mutex.Lock();
    run([&] { std::lock_guard const held(mutex); }, [&] { mutex.Unlock(); });
    lock.Lock();
    run([&] { std::lock_guard const held(lock); }, [&] { lock.Unlock(); });
    lock.Lock();
    run([&] { std::shared_lock const held(lock); }, [&] { lock.Unlock(); });
    lock.LockRead();
    run([&] { std::lock_guard const held(lock); }, [&] { lock.UnlockRead(); });
    for (EventKind const& kind : kEventKinds) {
        auto const event = kind.make();
        auto const again = [&] {
            event->Reset();
            event->Signal();
        };
        std::function<bool()> const waits[] = {
            [&] { return event->Wait(); },
            [&] { return event->Wait(kLost); },
            [&] { return WaitForAllExact(std::vector{event.get()}, kLost); },
            // An auto-reset event is used up when it is signalled before the wait has begun.
            [&] { return kind.autoReset ? event->Wait() : WaitForAny({event.get()}, kLost); },
        };
        for (auto const& wait : waits) {
            run([&] { EXPECT_TRUE(wait()); }, again);
            event->Reset();
        }
    }
}

/// Runs `function` on a thread with a stack of 256 KiB.
void OnSmallStack(std::function<void()> function)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
    pthread_t thread;
    auto const run = [](void* f) -> void* { return (*static_cast<std::function<void()>*>(f))(), nullptr; };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &function), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

/// A chain of `depth` events, each with `width` more children. Returns the signals that one signal at the top causes.
/// They come in linear time: the test's own limit would show if the time were quadratic.
std::size_t SignalTree(std::size_t depth, std::size_t width)
{
    std::size_t signals = 0;
    RefCntPtr<TCancelEvent> const root = MakeRefCnt<TCancelEvent>();
    RefCntPtr<TCancelEvent> last = root;
    auto const add = [&signals](RefCntPtr<TCancelEvent> const& to) {
        auto child = MakeRefCnt<TCancelEvent>();
        child->AddOnSignalCallback(&signals, [&signals] { ++signals; });
        to->Add(child);
        return child;
    };
    for (std::size_t i = 0; i < depth; ++i) {
        for (std::size_t n = 0; n < width; ++n) {
            add(last);
        }
        last = add(last);
    }
    root->Signal();
    EXPECT_TRUE(last->IsSet());
    return signals;
}

TEST(TCancelEvent, BigTreesNeedLittleStackAndTime)
{
    OnSmallStack([] {
        EXPECT_EQ(SignalTree(1, 100'000), 100'001U);
        EXPECT_EQ(SignalTree(10'000, 0), 10'000U);
        EXPECT_EQ(SignalTree(10'000, 9), 100'000U);
    });
    // Added to an event that is set: signalled by Add.
    OnSmallStack([] {
        auto const set = MakeRefCnt<TCancelEvent>();
        set->Signal();
        auto top = MakeRefCnt<TCancelEvent>();
        auto const bottom = top;
        for (int i = 0; i < 10'000; ++i) {
            auto above = MakeRefCnt<TCancelEvent>();
            above->Add(top);
            top = above;
        }
        set->Add(top);
        EXPECT_TRUE(bottom->IsSet());
    });
}

} // namespace
