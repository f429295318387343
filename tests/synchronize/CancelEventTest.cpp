// Trees of TCancelEvent.

#include <algorithm>
#include <random>
#include <set>

#include <gtest/gtest.h>

#include "EventKinds.h"
#include "support/LogicAsserts.h"
#include "support/Threads.h"

namespace {

using Cancel = RefCntPtr<TCancelEvent>;
constexpr char const* kFile = "qvxsys/main/synchronize/TEvent";

std::vector<Cancel> Make(std::size_t count)
{
    std::vector<Cancel> events(count);
    std::ranges::generate(events, [] { return MakeRefCnt<TCancelEvent>(); });
    // Children are signalled in the order of their addresses.
    std::ranges::sort(events, std::less(), [](Cancel const& event) { return event.get(); });
    return events;
}

TEST(TCancelEvent, EachHasItsOwnState)
{
    auto const e = Make(2);
    e[0]->Add(e[1]);
    EXPECT_EQ(e[1].use_count(), 2);
    e[1]->Signal();
    EXPECT_FALSE(e[0]->IsSet()) << "not upwards";
    e[0]->Signal();
    e[0]->Reset();
    EXPECT_TRUE(!e[0]->IsSet() && e[1]->IsSet());
    e[1]->Reset();
    e[0]->Remove(e[1]);
    EXPECT_EQ(e[1].use_count(), 1);
    e[0]->Signal();
    EXPECT_FALSE(e[1]->IsSet());
    e[0]->Add(e[1]);
    EXPECT_TRUE(e[1]->IsSet()) << "at once";
}

TEST(TCancelEvent, PinnedChecks)
{
    auto const e = Make(2);
    for (HookThat const does : {HookThat::Throws, HookThat::Returns}) {
        EXPECT_EQ(AssertRaisedBy([&] { e[0]->Remove(e[1]); }, does),
                  (RaisedAssert{kFile, 114, "it != m_childEvents.end()"}));
        e[0]->Add(e[1]);
        EXPECT_EQ(AssertRaisedBy([&] { e[0]->Add(e[1]); }, does),
                  (RaisedAssert{kFile, 103, "Attempted to insert duplicate event."}));
        EXPECT_EQ(e[1].use_count(), 2);

        e[0]->Add(nullptr);
        auto const null = AssertRaisedBy([&] { e[0]->Signal(); }, does);
        ASSERT_TRUE(null);
        EXPECT_EQ(null->condition, "m_ptr");
        EXPECT_TRUE(e[0]->IsSet());
        EXPECT_EQ(e[1]->IsSet(), does == HookThat::Returns) << "null is the lowest address";
        EXPECT_TRUE(Elsewhere([&] { return e[0]->Remove(nullptr), e[0]->Remove(e[1]), true; })) << "unlocked";
        auto const added = AssertRaisedBy([&] { e[0]->Add(nullptr); }, does);
        ASSERT_TRUE(added);
        EXPECT_EQ(added->condition, "m_ptr");
        e[0]->Remove(nullptr);
        e[0]->Reset();
    }
    EXPECT_THROW(e[0]->Remove(e[1]), LogicException);
}

/// Depth first, in the order of addresses, each event by every way that leads to it: as plain recursion has it.
void Walk(std::vector<std::set<std::size_t>> const& children, std::size_t event, std::vector<std::size_t>& log)
{
    log.push_back(event);
    for (std::size_t const child : children[event]) {
        Walk(children, child, log);
    }
}

TEST(TCancelEvent, SignalsDepthFirst)
{
    std::mt19937 random(5);
    for (int round = 0; round < 40; ++round) {
        constexpr std::size_t kEvents = 12;
        auto const e = Make(kEvents);
        std::vector<std::set<std::size_t>> children(kEvents);
        std::vector<std::size_t> log;
        for (std::size_t i = 0; i < kEvents; ++i) {
            e[i]->AddOnSignalCallback(&log, [&log, i] { log.push_back(i); });
        }
        // Arrows go from lower to higher ranks: no rings, but diamonds.
        std::vector<std::size_t> rank(kEvents);
        std::ranges::generate(rank, [n = std::size_t(0)]() mutable { return n++; });
        std::ranges::shuffle(rank, random);
        for (int i = 0; i < 20; ++i) {
            auto const [from, to] = std::minmax<std::size_t>({random() % kEvents, random() % kEvents});
            if (from != to && children[rank[from]].insert(rank[to]).second) {
                e[rank[from]]->Add(e[rank[to]]);
            }
        }
        std::vector<std::size_t> expected;
        Walk(children, rank[0], expected);
        e[rank[0]]->Signal();
        ASSERT_EQ(log, expected);
    }
}

TEST(TCancelEvent, RingsAreSignalledOnceAround)
{
    auto const e = Make(3);
    int signals[3] = {};
    for (std::size_t i = 0; i < 3; ++i) {
        e[i]->Add(e[(i + 1) % 3]);
        e[i]->AddOnSignalCallback(&signals, [&signals, i] { ++signals[i]; });
    }
    e[0]->Add(e[0]);
    e[1]->Signal();
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(e[i]->IsSet());
        EXPECT_GE(signals[i], 1);
        EXPECT_LE(signals[i], 2);
        e[i]->Remove(e[(i + 1) % 3]);
    }
    e[0]->Remove(e[0]);
    EXPECT_EQ(e[0].use_count(), 1);
}

/// Callbacks of the first child change the lists, or signal again, while the parent's signal is on its way.
TEST(TCancelEvent, CallbacksChangeTheTree)
{
    using Events = std::vector<Cancel>;
    struct Case
    {
        char const* name;
        void (*callback)(Events& e);
        bool goesOn; ///< to the child behind
    };
    for (Case const& c : {
             Case{"remove next", [](Events& e) { e[0]->Remove(e[3]); }, false},
             Case{"remove self", [](Events& e) { e[0]->Remove(e[2]); }, true},
             Case{"remove all", [](Events& e) { std::for_each_n(&e[1], 3, [&](auto& x) { e[0]->Remove(x); }); }, false},
             Case{"add last", [](Events& e) { e[0]->Add(e[4]); }, true},
             Case{"drop all", [](Events& e) { e.clear(); }, true},
             Case{"signal again", [](Events& e) { e[1]->Reset(), e[0]->Signal(); }, true},
             Case{"throw", [](Events&) { throw 1; }, false},
         }) {
        SCOPED_TRACE(c.name);
        Events e = Make(5);
        Cancel const watched = e[3];
        TCancelEvent const& parent = *e[0];
        std::for_each_n(&e[1], 3, [&](Cancel const& child) { parent.Add(child); });
        bool done = false;
        e[2]->AddOnSignalCallback(&done, [&] {
            if (!std::exchange(done, true)) {
                c.callback(e);
            }
        });
        std::string const name = c.name;
        try {
            parent.Signal();
            EXPECT_NE(name, "throw");
        } catch (int) {
            EXPECT_EQ(name, "throw");
        }
        EXPECT_EQ(watched->IsSet(), c.goesOn);
        if (e.empty()) {
            EXPECT_EQ(watched.use_count(), 1) << "parent and children are gone";
            continue;
        }
        EXPECT_TRUE(e[1]->IsSet() && e[2]->IsSet()) << "a signal from within reaches every child too";
        EXPECT_EQ(e[4]->IsSet(), name == "add last");
        EXPECT_TRUE(Elsewhere([&] { return parent.Add(MakeRefCnt<TCancelEvent>()), true; })) << "unlocked";
    }
}

TEST(TCancelEvent, TreesChangeWhileTheyAreSignalled)
{
    auto const e = Make(8);
    std::atomic<bool> stop = false;
    std::jthread const signaller([&] {
        while (!stop) {
            e[0]->Signal();
            e[4]->Signal();
        }
    });
    InParallel(3, [&](int thread) {
        Cancel const& middle = e[static_cast<std::size_t>(thread + 1)];
        for (int i = 0; i < 3000 / kStressDivisor; ++i) {
            e[0]->Add(middle);
            Cancel leaf = MakeRefCnt<TCancelEvent>();
            middle->Add(leaf);
            e[4]->Add(leaf);
            leaf->Wait();
            middle->Remove(leaf);
            e[0]->Remove(middle);
            e[4]->Remove(leaf);
            middle->Reset();
        }
    });
    stop = true;
}

} // namespace
