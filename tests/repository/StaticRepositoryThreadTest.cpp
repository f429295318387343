// The static repository from many threads. Run under ThreadSanitizer.

#include <atomic>
#include <memory>
#include <thread>

#include <gtest/gtest.h>
#include <qvxsys/StaticRepository.h>

#include "support/Threads.h"

namespace {

constexpr int kThreads = 6;
constexpr int kSlots = 40;

std::atomic<int> g_made = 0;
std::atomic<int> g_destroyed = 0;

struct Counted
{
    Counted() { ++g_made; }
    ~Counted() { g_destroyed += payload == 7 ? 1 : 1000; }
    Counted(Counted const&) = delete;
    Counted& operator=(Counted const&) = delete;

    int payload = 7; // plain: published by the slot alone
};

constinit TStaticObject<Counted> g_objects[kSlots];

/// Runs a function on many threads that begin together.
template<class Function>
void OnThreads(
    Function function, void (*meanwhile)() = [] {})
{
    std::atomic<int> waiting = kThreads + 1;
    auto const start = [&] {
        for (--waiting; waiting > 0;) {
            std::this_thread::yield();
        }
    };
    InParallel(kThreads + 1, [&](int t) {
        start();
        t == kThreads ? meanwhile() : function(t);
    });
}

TEST(StaticRepositoryThreads, EachObjectIsMadeOnce)
{
    for (int round = 0; round < 20; ++round) {
        InitializeStaticRepository();
        g_made = g_destroyed = 0;
        Counted* seen[kThreads][kSlots] = {};
        OnThreads([&](int t) {
            for (int i = 0; i < kSlots; ++i) {
                int const slot = (i + t * 5) % kSlots;
                // Every third one needs its neighbour.
                Counted* const object = g_objects[slot].Get([&] {
                    if (slot % 3 == 1) {
                        EXPECT_EQ(g_objects[slot - 1].Get()->payload, 7);
                    }
                    return Counted();
                });
                EXPECT_EQ(object->payload, 7);
                seen[t][slot] = object;
            }
        });
        EXPECT_EQ(g_made, kSlots);
        for (int slot = 0; slot < kSlots; ++slot) {
            for (auto const& thread : seen) {
                ASSERT_EQ(thread[slot], g_objects[slot].Peek());
            }
        }
        DeinitializeStaticRepository();
        EXPECT_EQ(g_destroyed, kSlots);
    }
}

// Threads that ask for objects while the end comes get one or null; whatever was made is destroyed.
TEST(StaticRepositoryThreads, LateCallers)
{
    for (int round = 0; round < 100; ++round) {
        InitializeStaticRepository();
        g_made = g_destroyed = 0;
        OnThreads(
            [](int) {
                for (TStaticObject<Counted>& object : g_objects) {
                    static_cast<void>(object.Get());
                }
            },
            &DeinitializeStaticRepository);
        DeinitializeStaticRepository();
        EXPECT_EQ(g_made, g_destroyed);
        for (TStaticObject<Counted>& object : g_objects) {
            ASSERT_EQ(object.Peek(), nullptr);
        }
    }
}

struct WaitsForThread
{
    ~WaitsForThread()
    {
        std::thread([] { EXPECT_EQ(g_objects[0].Get(), nullptr); }).join();
    }
};

constinit TStaticObject<WaitsForThread> g_waits;

// A destructor may wait for a thread that asks for an object.
TEST(StaticRepositoryThreads, DestructorWaitsForLateCaller)
{
    InitializeStaticRepository();
    ASSERT_NE(g_waits.Get(), nullptr);
    DeinitializeStaticRepository();
    EXPECT_EQ(g_waits.Peek(), nullptr);
}

} // namespace
