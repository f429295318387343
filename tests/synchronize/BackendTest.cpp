// The algorithms of locks, semaphores and events, over several parkings: the system's, and one that wakes threads for
// nothing. Words are set up by hand where thousands of threads would be needed.

#include <atomic>
#include <memory>
#include <utility>

#include <gtest/gtest.h>

#include "Deadlines.h"
#include "Waiting.h"
#include "support/Parkings.h"
#include "support/Threads.h"

using namespace qvxsys::sync;

namespace {

constexpr int kRounds = 4000 / kStressDivisor;

/// Also counts the threads that have ever gone to sleep.
template<class Parking>
struct Counted : Parking
{
    static Parked Park(void const* address, std::uint32_t expected, Deadline const& deadline) noexcept
    {
        thread_local bool parked = false;
        if (!std::exchange(parked, true)) {
            ++s_parked;
        }
        return Parking::Park(address, expected, deadline);
    }
    static inline std::atomic<int> s_parked = 0;
};

template<class Parking>
class Backend : public testing::Test
{
public:
    using Own = Counted<Parking>;

    static void Lock(LockWord& word)
    {
        if (!word.TryAcquire()) {
            LockContended<Own>(word);
        }
    }
    static void Unlock(LockWord& word)
    {
        if (word.Release()) {
            Own::WakeOne(word.Address());
        }
    }
    static void Release(SemaphoreWord& word)
    {
        if (word.Release() == SemaphoreWord::Released::WakeOne) {
            Own::WakeOne(word.Address());
        }
    }
    template<bool AutoReset>
    static Waited Wait(EventWord& word, Deadline const& deadline)
    {
        return AutoReset ? WaitAuto<Own>(word, deadline) : WaitManual<Own>(word, deadline);
    }
    template<bool AutoReset>
    static std::uint64_t Signal(EventWord& word)
    {
        bool refused = false;
        std::uint64_t const before = SetAndWake<Own, AutoReset>(word, true, refused);
        EXPECT_FALSE(refused);
        return before;
    }
    static void Put(EventWord& word, std::uint64_t value)
    {
        std::uint64_t seen = word.Load();
        while (!word.Change(seen, value)) {
        }
    }
    static std::uint64_t Events(std::uint64_t sleepers, std::uint64_t grants, std::uint64_t low)
    {
        return sleepers * EventWord::kSleeper + grants * EventWord::kGrant + low;
    }
};

using Parkings = testing::Types<SystemParking, RestlessParking>;
TYPED_TEST_SUITE(Backend, Parkings);

TYPED_TEST(Backend, LockExcludes)
{
    LockWord word;
    int count = 0; // not atomic
    InParallel(4, [&](int) {
        for (int i = 0; i < kRounds; ++i) {
            this->Lock(word);
            ++count;
            if (i % 16 == 0) {
                std::this_thread::yield(); // so that others find it held
            }
            this->Unlock(word);
        }
    });
    EXPECT_EQ(count, 4 * kRounds);
    EXPECT_TRUE(word.IsFree());
}

TYPED_TEST(Backend, SemaphoreLosesNoUnit)
{
    using P = typename TestFixture::Own;
    SemaphoreWord word(0);
    std::atomic<int> taken = 0;
    InParallel(6, [&](int thread) {
        for (int i = 0; i < kRounds; ++i) {
            if (thread < 3) {
                this->Release(word);
            } else if (i % 4 != 0) {
                taken += AcquireSlowly<P>(word, {}) == Waited::Success;
            } else {
                // Comes and goes as a sleeper until it has one.
                while (AcquireSlowly<P>(word, std::chrono::steady_clock::now()) != Waited::Success) {
                }
                ++taken;
            }
        }
    });
    EXPECT_EQ(taken, 3 * kRounds);
    EXPECT_FALSE(word.TryAcquire());
    EXPECT_EQ(word.Release(), SemaphoreWord::Released::Quietly) << "nobody is counted as a sleeper any more";
}

TYPED_TEST(Backend, PulseReleasesAllWhoSlept)
{
    using P = typename TestFixture::Own;
    EventWord word;
    for (int round = 0; round < 50; ++round) {
        P::s_parked = 0;
        std::atomic<int> released = 0;
        std::jthread pulse([&] {
            YieldUntil([] { return P::s_parked == 4; });
            this->template Signal<false>(word);
            word.Clear();
        });
        InParallel(4, [&](int) { released += WaitManual<P>(word, DeadlineIn(kLost.count())) == Waited::Success; });
        pulse.join();
        ASSERT_EQ(released, 4);
        ASSERT_FALSE(word.IsSet());
    }
}

TYPED_TEST(Backend, QuickSignalsToAnAutoResetEventReleaseOneEach)
{
    using P = typename TestFixture::Own;
    EventWord word;
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> released = 0;
        std::jthread signals([&] {
            YieldUntil([&] { return EventWord::Sleepers(word.Load()) == 4; });
            for (int i = 0; i < 3; ++i) {
                this->template Signal<true>(word);
                word.Clear(); // takes nothing back
            }
            YieldUntil([&] { return EventWord::Sleepers(word.Load()) == 1; });
            this->template Signal<true>(word);
        });
        InParallel(4, [&](int) { released += WaitAuto<P>(word, DeadlineIn(kLost.count())) == Waited::Success; });
        signals.join();
        ASSERT_EQ(released, 4);
        ASSERT_EQ(word.Load() >> 32, 0U) << "sleepers or grants left";
        ASSERT_FALSE(word.IsSet());
    }
}

/// A signal is for who sleeps, also when the signaller waits next: both pass one event to and fro.
TYPED_TEST(Backend, SignallersDoNotTakeTheirSignalsBack)
{
    using P = typename TestFixture::Own;
    EventWord word;
    for (int round = 0; round < 50; ++round) {
        std::atomic<bool> released = false;
        std::jthread sleeper([&] {
            EXPECT_EQ(WaitAuto<P>(word, DeadlineIn(kLost.count())), Waited::Success);
            released = true;
            this->template Signal<true>(word);
        });
        YieldUntil([&] { return EventWord::Sleepers(word.Load()) == 1; });
        this->template Signal<true>(word);
        ASSERT_EQ(WaitAuto<P>(word, DeadlineIn(kLost.count())), Waited::Success);
        ASSERT_TRUE(released);
    }
}

template<class Suite, bool AutoReset>
void PingPong()
{
    EventWord words[2];
    InParallel(2, [&](int self) {
        for (int i = 0; i < kRounds; ++i) {
            if (self == 0) {
                Suite::template Signal<AutoReset>(words[1]);
            }
            ASSERT_EQ(Suite::template Wait<AutoReset>(words[self], DeadlineIn(kLost.count())), Waited::Success);
            words[self].Clear();
            if (self == 1) {
                Suite::template Signal<AutoReset>(words[0]);
            }
        }
    });
}

TYPED_TEST(Backend, PingPong)
{
    PingPong<TestFixture, false>();
    PingPong<TestFixture, true>();
}

/// Signals that meet waits at their ends: each is either taken by a wait or still there.
TYPED_TEST(Backend, SignalsThatMeetTimeoutsAreNotLost)
{
    using P = typename TestFixture::Own;
    EventWord word;
    std::atomic<bool> stop = false;
    std::atomic<int> taken = 0;
    std::jthread waiter([&] {
        for (int i = 0; !stop; ++i) {
            auto const soon = std::chrono::steady_clock::now() + std::chrono::microseconds(i % 50);
            taken += WaitAuto<P>(word, soon) == Waited::Success;
        }
    });
    for (int i = 0; i < kRounds; ++i) {
        this->template Signal<true>(word);
        YieldUntil([&] { return taken == i + 1; });
    }
    stop = true;
}

TYPED_TEST(Backend, WaitsAreNeverEarly)
{
    using P = typename TestFixture::Own;
    SemaphoreWord semaphore(0);
    EventWord manual;
    EventWord automatic;
    EventWord crowded;
    this->Put(crowded, this->Events(EventWord::kMostSleepers, 0, 0));
    for (auto const length : {0, 1, 300, 2500, 11000}) {
        auto const timesOut = [length](auto wait) {
            auto const end = std::chrono::steady_clock::now() + std::chrono::microseconds(length);
            EXPECT_EQ(wait(Deadline(end)), Waited::TimedOut);
            EXPECT_GE(std::chrono::steady_clock::now(), end);
        };
        timesOut([&](Deadline const& end) { return AcquireSlowly<P>(semaphore, end); });
        timesOut([&](Deadline const& end) { return WaitManual<P>(manual, end); });
        timesOut([&](Deadline const& end) { return WaitAuto<P>(automatic, end); });
        timesOut([&](Deadline const& end) { return WaitAuto<P>(crowded, end); });
    }
}

TYPED_TEST(Backend, MoreSleepersThanTheWordCounts)
{
    using P = typename TestFixture::Own;
    constexpr std::uint64_t kMost = EventWord::kMostSleepers;
    EventWord word;
    this->Put(word, this->Events(kMost, kMost, 0));
    std::jthread const signaller([&] { this->template Signal<true>(word); });
    EXPECT_EQ(WaitAuto<P>(word, {}), Waited::Success) << "the signal after one for each sleeper";
    EXPECT_EQ(word.Load(), this->Events(kMost, kMost, 0));

    this->Put(word, this->Events(kMost, 0, 0));
    for (std::uint64_t i = 1; i <= kMost; ++i) {
        this->template Signal<true>(word);
        ASSERT_EQ(EventWord::Grants(word.Load()), i);
    }
    ASSERT_FALSE(word.IsSet());
    for (std::uint64_t i = 0; i < kMost; ++i) {
        std::uint64_t seen = word.Load();
        ASSERT_FALSE(LeaveAuto(word, seen, EventWord::Changes(seen), true)) << "given before it slept";
        ASSERT_TRUE(LeaveAuto(word, seen, EventWord::Changes(seen) - 1, true));
    }
    EXPECT_EQ(word.Load() >> 32, 0U);
}

template<class Suite, bool AutoReset>
void WrapAround()
{
    using P = typename Suite::Own;
    EventWord word;
    Suite::Put(word, 0xFFFFFFF8); // the last change count
    P::s_parked = 0;
    std::jthread const signaller([&] {
        YieldUntil([] { return P::s_parked == 1; });
        Suite::template Signal<AutoReset>(word);
        word.Clear();
    });
    EXPECT_EQ(Elsewhere([&] { return Suite::template Wait<AutoReset>(word, DeadlineIn(kLost.count())); }),
              Waited::Success);
    YieldUntil([&] { return !word.IsSet(); });
    EXPECT_EQ(word.Load(), 0U) << "the carry goes nowhere";
}

TYPED_TEST(Backend, ChangeCountWrapsAround)
{
    WrapAround<TestFixture, false>();
    WrapAround<TestFixture, true>();
}

TYPED_TEST(Backend, SignallersAreCountedUpTo255)
{
    using P = typename TestFixture::Own;
    EventWord word;
    this->Put(word, EventWord::kCallbacks + 253 * EventWord::kSignaller);
    auto const counted = [&] { return EventWord::Signallers(word.Load()); };
    {
        std::vector<std::jthread> signallers;
        for (int i = 0; i < 4; ++i) {
            signallers.emplace_back([&] { this->template Signal<false>(word); });
        }
        YieldUntil([&] { return counted() == 255; });
        for (int i = 0; i < 1000; ++i) {
            std::this_thread::yield();
            ASSERT_EQ(counted(), 255U);
        }
        LeaveSignallers<P>(word);
        LeaveSignallers<P>(word);
    }
    EXPECT_EQ(counted(), 255U);

    // The destructor and the last signallers.
    for (int round = 0; round < kRounds / 10; ++round) {
        auto dying = std::make_unique<EventWord>();
        this->Put(*dying, EventWord::kCallbacks);
        std::atomic<int> leaving = 0;
        std::vector<std::jthread> signallers;
        for (int i = 0; i < 3; ++i) {
            this->template Signal<false>(*dying);
        }
        for (int i = 0; i < 3; ++i) {
            signallers.emplace_back([&leaving, &word = *dying] {
                ++leaving;
                LeaveSignallers<P>(word);
            });
        }
        AwaitSignallers<P>(*dying);
        dying.reset();
        ASSERT_EQ(leaving, 3);
    }
}

TEST(RefusingBackend, WaitsFailAndLocksYield)
{
    SemaphoreWord semaphore(0);
    EventWord word;
    EXPECT_EQ(AcquireSlowly<RefusingParking>(semaphore, {}), Waited::Refused);
    EXPECT_EQ(WaitManual<RefusingParking>(word, {}), Waited::Refused);
    EXPECT_EQ(WaitAuto<RefusingParking>(word, {}), Waited::Refused);
    EXPECT_EQ(semaphore.Release(), SemaphoreWord::Released::Quietly) << "has left";
    EXPECT_EQ(AcquireSlowly<RefusingParking>(semaphore, {}), Waited::Success);

    LockWord lock;
    ASSERT_TRUE(lock.TryAcquire());
    std::jthread const waiter([&] { LockContended<RefusingParking>(lock); });
    static_cast<void>(lock.Release());
    YieldUntil([&] { return !lock.IsFree(); });

    Backend<RefusingParking>::Put(word, EventWord::kSleeper);
    bool refused = false;
    SetAndWake<RefusingParking, false>(word, true, refused);
    EXPECT_TRUE(refused);
    EXPECT_TRUE(word.IsSet());
}

} // namespace
