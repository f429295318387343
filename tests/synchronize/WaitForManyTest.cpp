// WaitForAll, WaitForAny and the exact waits.

#include <algorithm>
#include <atomic>
#include <string>

#include <gtest/gtest.h>

#include "EventKinds.h"
#include "support/LogicAsserts.h"
#include "support/Threads.h"

using std::chrono::milliseconds;

namespace {

/// Events by a letter each: T (TEvent), A (TAutoResetEvent), C (TCountdownEvent), X (TCancelEvent); small: unset.
class Events
{
public:
    explicit Events(std::string const& letters)
    {
        for (char const letter : letters) {
            auto const upper = static_cast<char>(letter & ~0x20);
            m_owners.push_back(kEventKinds[std::string("TACX").find(upper)].make());
            all.push_back(m_owners.back().get());
            if (letter == upper) {
                all.back()->Signal();
            }
        }
    }
    /// Which are set; takes the signals.
    [[nodiscard]] std::string Set() const
    {
        std::string set;
        for (IEvent const* const event : all) {
            set += event->IsSet() ? '1' : '0';
        }
        return set;
    }
    std::vector<IEvent*> all;

private:
    std::vector<std::shared_ptr<IEvent>> m_owners;
};

constexpr unsigned int kNone = 4711;

/// What the four waits say of events that are set before, with a timeout of 0 or 1 ms, and which events are set then.
TEST(WaitForMany, EventsThatAreSetBefore)
{
    struct Case
    {
        char const* events;
        bool all;
        unsigned int any; ///< the last to count
        char const* setAfter;
        bool allExact;
        std::size_t anyExact;
        char const* setAfterAllExact;
        char const* setAfterAnyExact;
    };
    static constexpr Case kCases[] = {
        {"", false, kNone, "", true, kNone, "", ""},
        {"t", false, kNone, "0", false, kNone, "0", "0"},
        {"T", true, 0, "1", true, 0, "1", "1"},
        {"tT", false, 1, "01", false, 1, "01", "01"},
        {"TCX", true, 2, "111", true, 0, "111", "111"},
        {"tCtXt", false, 3, "01010", false, 1, "01010", "01010"},
        // Auto-reset events that are set are used up and do not count.
        {"A", false, kNone, "0", true, 0, "0", "0"},
        {"TA", false, 0, "10", true, 0, "10", "11"},
        {"AT", false, 1, "01", true, 0, "01", "01"},
        {"aA", false, kNone, "00", false, 1, "01", "00"},
        {"AAa", false, kNone, "000", false, 0, "110", "010"},
        {"TAtAX", false, 4, "10001", false, 0, "11011", "11011"},
    };
    for (Case const& c : kCases) {
        for (milliseconds const timeout : {milliseconds(0), milliseconds(1)}) {
            SCOPED_TRACE(std::string(c.events) + ' ' + std::to_string(timeout.count()));
            Events const forAll(c.events);
            EXPECT_EQ(WaitForAll(forAll.all, timeout), c.all);
            EXPECT_EQ(forAll.Set(), c.setAfter);

            Events const forAny(c.events);
            unsigned int index = kNone;
            EXPECT_EQ(WaitForAny(forAny.all, timeout, index), c.any != kNone);
            EXPECT_EQ(index, c.any);
            EXPECT_EQ(forAny.Set(), c.setAfter);
            EXPECT_EQ(WaitForAny(Events(c.events).all, timeout), c.any != kNone);

            Events const allExact(c.events);
            EXPECT_EQ(WaitForAllExact(allExact.all, timeout), c.allExact);
            EXPECT_EQ(allExact.Set(), c.setAfterAllExact);

            Events const anyExact(c.events);
            EXPECT_EQ(WaitForAnyExact(anyExact.all, timeout).value_or(kNone), c.anyExact);
            EXPECT_EQ(anyExact.Set(), c.setAfterAnyExact);
        }
    }
}

TEST(WaitForMany, NeverEarly)
{
    Events const events("taAx");
    auto waits = WaitsForMany({});
    waits.pop_back();
    std::ranges::move(WaitsForMany(events.all), std::back_inserter(waits));
    for (TimedWait const& wait : waits) {
        for (int const timeout : {1, 20}) {
            auto const start = std::chrono::steady_clock::now();
            EXPECT_FALSE(wait(milliseconds(timeout)));
            EXPECT_GE(Since(start).count(), timeout);
        }
    }
}

/// One event after another is signalled while the waits wait, whatever the number: the first few are looked at and kept
/// differently from many.
TEST(WaitForMany, EventsThatAreSetLater)
{
    for (std::size_t const count : {1U, 3U, 16U, 17U, 64U, 65U, 150U}) {
        std::string letters;
        for (std::size_t i = 0; i < count; ++i) {
            letters += "taxca"[i % 5];
        }
        auto const signals = [](Events const& events) {
            std::ranges::for_each(events.all, [](IEvent* event) { event->Signal(); });
        };
        for (milliseconds const timeout : {kLost, milliseconds(0xFFFFFFFF), milliseconds::max()}) {
            Events const exact(letters);
            {
                std::jthread const signalling([&] { signals(exact); });
                EXPECT_TRUE(WaitForAllExact(exact.all, timeout));
            }
            std::string set = exact.Set();
            for (std::size_t i = 0; i < count; ++i) {
                EXPECT_EQ(set[i], letters[i] == 'a' ? '0' : '1');
            }
        }
        for (std::size_t const last : {std::size_t(0), count / 2, count - 1}) {
            Events const any(letters);
            std::jthread const signalling([&] { any.all[last]->Signal(); });
            EXPECT_EQ(WaitForAnyExact(any.all, kLost), last);
            any.all[last]->Reset();
            std::string manual = letters;
            std::ranges::replace(manual, 'a', 't');
            Events const plain(manual);
            unsigned int index = kNone;
            std::jthread const again([&] { plain.all[last]->Signal(); });
            EXPECT_TRUE(WaitForAny(plain.all, kLost, index));
            EXPECT_EQ(index, last);
            Events const whole(manual);
            std::jthread const everything([&] { signals(whole); });
            EXPECT_TRUE(WaitForAll(whole.all, kLost));
        }
    }
}

/// Does something when it is looked at: between the steps of a wait.
class Probe : public IEvent
{
public:
    std::function<bool(int)> looked;
    std::function<void()> registered = [] {};

    void Signal() const override { m_event.Signal(); }
    bool IsSet() const override { return looked(m_looks++); }
    bool Wait(milliseconds) const noexcept override { return false; }
    bool Wait() const override { return false; }
    void Reset() const override {}
    void AddOnSignalCallback(void* key, std::function<void()> callback) const override
    {
        m_event.AddOnSignalCallback(key, std::move(callback));
        registered();
    }
    void RemoveOnSignalCallback(void* key) const override { m_event.RemoveOnSignalCallback(key); }

private:
    TEvent m_event;
    mutable int m_looks = 0;
};

TEST(WaitForMany, AutoResetEventsThatAreSignalledWhileItWaits)
{
    // Registered by the time the probe is: counts, and its signal is taken.
    TAutoResetEvent event;
    Probe probe;
    probe.looked = [](int) { return false; };
    unsigned int index = kNone;
    probe.registered = [&] { event.Signal(); };
    EXPECT_TRUE(WaitForAny({&event, &probe}, kLost, index));
    EXPECT_EQ(index, 0U);
    EXPECT_FALSE(event.IsSet());

    // Another is first to take the signal: does not count, nor does the next one.
    int taken = 0;
    event.AddOnSignalCallback(&taken, [&] { taken += event.IsSet(); });
    probe.registered = [&] {
        event.Signal();
        event.RemoveOnSignalCallback(&taken);
        event.Signal();
    };
    EXPECT_FALSE(WaitForAny({&event, &probe}, milliseconds(5), index));
    EXPECT_EQ(taken, 1);

    // Each event counts once, however often it is signalled; nothing is registered afterwards.
    TEvent manual;
    probe.registered = [&] {
        manual.Signal();
        manual.Signal();
    };
    EXPECT_FALSE(WaitForAll({&manual, &probe}, milliseconds(5)));
    manual.Reset();
    EXPECT_TRUE(WaitForAny({&manual, &manual, &probe}, kLost, index));
    EXPECT_EQ(index, 1U) << "the last to count";
}

TEST(WaitForMany, NullPointers)
{
    TEvent set(true);
    std::vector<IEvent*> const events = {&set, nullptr};
    for (HookThat const does : {HookThat::Throws, HookThat::Returns}) {
        for (TimedWait const& wait : WaitsForMany(events)) {
            bool result = false;
            auto const raised = AssertRaisedBy([&] { result = wait(kLost); }, does);
            ASSERT_TRUE(raised);
            EXPECT_EQ(raised->condition, "event != nullptr");
            EXPECT_EQ(raised->file, "qvxsys/main/synchronize/WaitForMany.cpp");
            EXPECT_FALSE(result);
        }
    }
}

/// A wait for all that takes many signals and gives them back again and again, because the last one is missing, must
/// not hide them from another.
TEST(WaitForMany, SignalsThatAreGivenBackAreNotLost)
{
    constexpr std::size_t kMany = 1000;
    std::vector<TAutoResetEvent> many(kMany);
    TAutoResetEvent& shared = many.front();
    TAutoResetEvent second;
    Probe probe;
    probe.looked = [&](int) {
        return many.back().IsSet();
    }; // takes the last signal, which all have just been seen with
    std::vector<IEvent*> all;
    for (TAutoResetEvent& event : many) {
        event.Signal();
        all.push_back(&event);
    }
    all.push_back(&probe);
    std::atomic<bool> stop = false;
    std::jthread const taking([&] {
        while (!stop) {
            EXPECT_FALSE(WaitForAllExact(all, milliseconds(0)));
            many.back().Signal();
        }
    });
    for (int i = 0; i < 100; ++i) {
        std::jthread const signalling([&] { second.Signal(); });
        bool const both = WaitForAllExact(std::vector<IEvent*>{&shared, &second}, std::chrono::seconds(10));
        EXPECT_TRUE(both);
        if (!both) {
            break;
        }
        shared.Signal();
    }
    stop = true;
}

} // namespace
