// What holds for every kind of event, and the countdown.

#include <atomic>
#include <functional>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "EventKinds.h"
#include "support/Threads.h"

using std::chrono::milliseconds;

namespace {

class Event : public testing::TestWithParam<EventKind>
{
protected:
    std::shared_ptr<IEvent> const m_owner = GetParam().make();
    IEvent const& m_event = *m_owner;

    void Again() const
    {
        m_event.Reset();
        m_event.Signal();
    }
};
INSTANTIATE_TEST_SUITE_P(Kinds, Event, testing::ValuesIn(kEventKinds), testing::PrintToStringParamName());

TEST_P(Event, IsSetUntilResetOrTaken)
{
    bool const autoReset = GetParam().autoReset;
    EXPECT_FALSE(m_event.IsSet());
    EXPECT_FALSE(m_event.Wait(milliseconds(0)));
    m_event.Signal();
    EXPECT_TRUE(m_event.IsSet());
    EXPECT_EQ(m_event.IsSet(), !autoReset) << "asking is consuming";
    m_event.Reset();
    EXPECT_FALSE(m_event.IsSet());
    Again();
    EXPECT_TRUE(m_event.Wait());
    EXPECT_EQ(m_event.Wait(milliseconds(0)), !autoReset);
    Again();
    EXPECT_TRUE(Elsewhere([&] { return m_event.Wait(kLost); }));
    EXPECT_EQ(m_event.Wait(milliseconds(1)), !autoReset);
}

TEST_P(Event, Timeouts)
{
    for (int const timeout : {0, 1, 20}) {
        auto const start = std::chrono::steady_clock::now();
        EXPECT_FALSE(m_event.Wait(milliseconds(timeout)));
        EXPECT_GE(Since(start).count(), timeout);
    }
    for (milliseconds const timeout : {kLost, milliseconds(0xFFFFFFFE), milliseconds(0xFFFFFFFF),
                                       milliseconds(0x100000000), milliseconds::max(), milliseconds(-2)}) {
        m_event.Reset();
        std::jthread const waiter([&] { EXPECT_TRUE(timeout.count() < 0 ? m_event.Wait() : m_event.Wait(timeout)); });
        std::this_thread::yield();
        m_event.Signal();
    }
}

using EventDeathTest = Event;
INSTANTIATE_TEST_SUITE_P(Kinds, EventDeathTest, testing::ValuesIn(kEventKinds), testing::PrintToStringParamName());

/// An event's own wait, and those for many.
TEST_P(EventDeathTest, NegativeTimeout)
{
    PrintFailedChecks();
    auto waits = WaitsForMany({m_owner.get()});
    waits.emplace_back([&](milliseconds time) { return m_event.Wait(time); });
    for (auto const& wait : waits) {
        for (milliseconds const timeout : {milliseconds(-1), milliseconds::min()}) {
            EXPECT_DEATH(wait(timeout), "qvxsys/main/synchronize/TEventBase_win:71: timeout.count.. >= 0");
            m_event.Signal(); // the same when it is set
        }
    }
    AssertHooks::SetLogicAssertHook(nullptr);
}

/// Adding, replacing, removing and signalling in any order, against a plain list.
TEST_P(Event, CallbacksAreCalledInTheOrderOfRegistration)
{
    std::mt19937 random(17);
    for (unsigned int const keys : {3U, 16U, 17U, 200U}) {
        std::vector<std::pair<unsigned int, int>> expected;
        std::vector<int> called;
        std::vector<char> key(keys);
        for (int i = 0; i < 1000; ++i) {
            auto const k = static_cast<unsigned int>(random() % keys);
            auto const what = random() % 16;
            if (what < 14) {
                std::erase_if(expected, [k](auto const& entry) { return entry.first == k; });
                if (what < 9) {
                    expected.emplace_back(k, i);
                    m_event.AddOnSignalCallback(&key[k], [&called, i] { called.push_back(i); });
                } else {
                    m_event.RemoveOnSignalCallback(&key[k]);
                }
            } else {
                called.clear();
                Again();
                ASSERT_EQ(called.size(), expected.size());
                for (std::size_t n = 0; n < called.size(); ++n) {
                    ASSERT_EQ(called[n], expected[n].second);
                }
            }
        }
        for (char& k : key) {
            m_event.RemoveOnSignalCallback(&k);
        }
        called.clear();
        Again();
        EXPECT_TRUE(called.empty());
    }
}

TEST_P(Event, CallbacksRunAtSignalsOnly)
{
    std::vector<std::thread::id> called;
    m_event.Signal();
    m_event.AddOnSignalCallback(this, [&] { called.push_back(std::this_thread::get_id()); });
    m_event.Reset();
    EXPECT_TRUE(called.empty()) << "neither for an event that is set nor for Reset";
    auto const other = Elsewhere([&] { return m_event.Signal(), std::this_thread::get_id(); });
    EXPECT_EQ(called, std::vector{other});
    if (GetParam().name != std::string("TCountdownEvent")) {
        m_event.Signal();
        EXPECT_EQ(called.size(), 2U) << "also when it was set already";
    }
}

/// What callbacks do to the event's callbacks while it is signalled.
TEST_P(Event, CallbacksChangeCallbacks)
{
    std::string log;
    int keys[5];
    auto const add = [&](
                         int key, char name, std::function<void()> action = [] {}) {
        m_event.AddOnSignalCallback(&keys[key], [&log, name, action = std::move(action)] {
            log += name;
            action();
        });
    };
    add(0, 'a', [&] { add(4, 'n'); });                              // adds
    add(1, 'b', [&] { m_event.RemoveOnSignalCallback(&keys[2]); }); // removes one that is still to come
    add(2, 'c');
    add(3, 'd', [&] { // replaces itself, and removes one that was called
        m_event.RemoveOnSignalCallback(&keys[0]);
        add(3, 'e', [&] { m_event.RemoveOnSignalCallback(&keys[3]); });
    });
    for (char const* const expected : {"abd", "bne", "bn"}) {
        log.clear();
        Again();
        EXPECT_EQ(log, expected);
    }
    // Signals from within, and removes everything on the way out.
    int depth = 0;
    add(0, 'r', [&] {
        if (++depth < 4) {
            Again();
        }
        for (int& key : keys) {
            m_event.RemoveOnSignalCallback(&key);
        }
    });
    log.clear();
    Again();
    EXPECT_EQ(log, "bnrbnrbnrbnr");
    Again();
    EXPECT_EQ(log, "bnrbnrbnrbnr");
}

TEST_P(Event, CallbacksThatThrow)
{
    int behind = 0;
    int key = 0;
    m_event.AddOnSignalCallback(&key, [] { throw 4711; });
    m_event.AddOnSignalCallback(&behind, [&] { ++behind; });
    EXPECT_THROW(m_event.Signal(), int);
    EXPECT_TRUE(m_event.IsSet());
    EXPECT_EQ(behind, 0);
    m_event.AddOnSignalCallback(&key, {});
    EXPECT_THROW(Again(), std::bad_function_call);
    EXPECT_EQ(behind, 1) << "the new callback is behind";
    // No lock is left behind.
    EXPECT_TRUE(Elsewhere([&] { return m_event.RemoveOnSignalCallback(&key), Again(), true; }));
    EXPECT_EQ(behind, 2);
}

/// A callback has the last reference to the event's owner, and is removed while it runs.
TEST_P(Event, RemovedCallbackDestroysTheEvent)
{
    enum How { Removed, Replaced, Throws, SignalsAgain };
    for (How const how : {Removed, Replaced, Throws, SignalsAgain}) {
        SCOPED_TRACE(how);
        auto owner = std::make_shared<std::shared_ptr<IEvent>>(GetParam().make());
        std::weak_ptr const alive = owner;
        IEvent* const event = owner->get();
        event->AddOnSignalCallback(event, [event, how, own = std::move(owner), depth = 0]() mutable {
            if (how == Replaced) {
                event->AddOnSignalCallback(event, [] {});
                return;
            }
            if (how == SignalsAgain && depth++ == 0) {
                event->Reset();
                event->Signal();
            }
            event->RemoveOnSignalCallback(event);
            if (how == Throws) {
                throw 1;
            }
        });
        EXPECT_FALSE(alive.expired());
        try {
            event->Signal();
            EXPECT_NE(how, Throws);
        } catch (int) {
            EXPECT_EQ(how, Throws);
        }
        EXPECT_TRUE(alive.expired());
    }
}

TEST_P(EventDeathTest, DestroyedByItsOwnCallback)
{
    auto const destroy = [] {
        PrintFailedChecks();
        std::shared_ptr<IEvent> event = GetParam().make();
        event->AddOnSignalCallback(&event, [&event] { event.reset(); });
        event.get()->Signal();
    };
    if (GetParam().name == std::string("TCancelEvent")) {
        destroy(); // which keeps a reference to itself
        AssertHooks::SetLogicAssertHook(nullptr);
    } else {
        EXPECT_DEATH(destroy(), "an event is not destroyed by its own callback");
    }
}

TEST(TAutoResetEvent, PeekTakesNothing)
{
    EXPECT_TRUE(TEvent(true).IsSet());
    TAutoResetEvent const event;
    EXPECT_FALSE(event.Peek());
    event.Signal();
    event.Signal();
    EXPECT_TRUE(event.Peek() && event.Peek() && event.IsSet());
    EXPECT_FALSE(event.Peek());
}

TEST(TCountdownEvent, SetByTheLastSignal)
{
    for (unsigned int const count : {1U, 3U, 10U}) {
        TCountdownEvent const event(count);
        int callbacks = 0;
        event.AddOnSignalCallback(&callbacks, [&] { ++callbacks; });
        for (int round = 1; round < 4; ++round) {
            for (unsigned int i = 1; i < count; ++i) {
                event.Signal();
                EXPECT_FALSE(event.IsSet());
            }
            EXPECT_EQ(callbacks, round - 1);
            for (int more = 0; more < round; ++more) { // no lower bound
                event.Signal();
                EXPECT_TRUE(event.IsSet());
            }
            EXPECT_EQ(callbacks, round);
            event.Reset();
            EXPECT_FALSE(event.IsSet());
        }
    }
    TCountdownEvent const none(0);
    EXPECT_FALSE(none.IsSet());
    none.Signal();
    EXPECT_FALSE(none.Wait(milliseconds(1)));
}

} // namespace
