// TRecursiveMutex and TReadWriteLock.

#include <atomic>
#include <mutex>
#include <shared_mutex>
#include <string_view>

#include <gtest/gtest.h>
#include <qvxsys/TLocks.h>

#include "support/LogicAsserts.h"
#include "support/Threads.h"

namespace {

constexpr char const* kFile = "qvxsys/main/synchronize/TLocks";

/// Whether another thread could have the lock at this moment.
template<class L>
bool IsFree(L& lock)
{
    return Elsewhere([&] { return lock.TryLock() && (lock.Unlock(), true); });
}
template<class L>
bool IsFreeForReaders(L& lock)
{
    return Elsewhere([&] { return lock.try_lock_shared() && (lock.UnlockRead(), true); });
}

TEST(RecursiveMutex, IsLeftAsOftenAsEntered)
{
    TRecursiveMutex mutex(7);
    EXPECT_FALSE(mutex.IsHeldByThisThread());
    mutex.Lock();
    mutex.LockRead();
    EXPECT_TRUE(mutex.TryLock());
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(mutex.IsHeldByThisThread());
        EXPECT_FALSE(IsFree(mutex));
        EXPECT_FALSE(IsFreeForReaders(mutex));
        i == 1 ? mutex.UnlockRead() : mutex.Unlock();
    }
    EXPECT_TRUE(IsFree(mutex));
    EXPECT_FALSE(mutex.IsHeldByThisThread());
}

/// What the owner does, what others can do then, and what it can.
TEST(ReadWriteLock, WhoGetsIn)
{
    struct Case
    {
        char const* did; ///< w, W: Lock, Unlock; r, R: LockRead, UnlockRead; t, T: TryLock, TryLockRead
        bool free;
        bool freeForReaders;
        bool freeForSelf;
        bool freeForSelfAsReader;
    };
    static constexpr Case kCases[] = {
        {"", true, true, true, true},
        {"r", false, true, false, true},
        {"rr", false, true, false, true},
        {"rrR", false, true, false, true},
        {"rTRR", true, true, true, true},
        {"w", false, false, true, true},
        {"t", false, false, true, true},
        {"wW", true, true, true, true},
        {"wwW", false, false, true, true},
        {"wtW", false, false, true, true},
        {"wtWW", true, true, true, true},
        // A writer that reads counts as both, and stays a reader.
        {"wr", false, false, true, true},
        {"wrW", false, true, false, true},
        {"wrWR", true, true, true, true},
        {"wTR", false, false, true, true},
        // It may write again.
        {"wrw", false, false, true, true},
        {"wrtWR", false, false, true, true},
        {"wrwWW", false, true, false, true},
    };
    for (Case const& c : kCases) {
        SCOPED_TRACE(c.did);
        TReadWriteLock lock(1);
        for (char const did : std::string_view(c.did)) {
            // clang-format off
            did == 'w' ? lock.Lock() : did == 'W' ? lock.Unlock() : did == 'r' ? lock.LockRead()
                : did == 'R' ? lock.UnlockRead() : static_cast<void>(did == 't' ? lock.TryLock() : lock.TryLockRead());
            // clang-format on
        }
        EXPECT_EQ(IsFree(lock), c.free);
        EXPECT_EQ(IsFreeForReaders(lock), c.freeForReaders);
        EXPECT_EQ(lock.TryLock() && (lock.Unlock(), true), c.freeForSelf);
        EXPECT_EQ(lock.TryLockRead() && (lock.UnlockRead(), true), c.freeForSelfAsReader);
        EXPECT_EQ(IsFree(lock), c.free) << "afterwards as before";
    }
}

TEST(ReadWriteLock, ReadersComeInWhileWritersWait)
{
    TReadWriteLock lock;
    int written = 0;
    lock.LockRead();
    lock.LockRead();
    {
        std::vector<std::jthread> writers;
        std::atomic<int> coming = 0;
        for (int i = 0; i < 3; ++i) {
            writers.emplace_back([&] {
                ++coming;
                std::lock_guard const held(lock);
                ++written;
            });
        }
        YieldUntil([&] { return coming == 3; });
        for (int i = 0; i < 2000; ++i) {
            std::shared_lock const more(lock);
            ASSERT_EQ(written, 0);
        }
        Elsewhere([&] { return lock.UnlockRead(), true; }); // not the thread that came
        lock.UnlockRead();
    }
    EXPECT_EQ(written, 3) << "each hand-over wakes one";
}

TEST(ReadWriteLock, CountsUpTo65535)
{
    constexpr int kMost = 65535;
    TReadWriteLock lock;
    struct
    {
        void (TReadWriteLock::*enter)();
        bool (TReadWriteLock::*tryToEnter)();
        void (TReadWriteLock::*leave)();
        RaisedAssert raised;
    } const kinds[] = {
        {&TReadWriteLock::LockRead,
         &TReadWriteLock::TryLockRead,
         &TReadWriteLock::UnlockRead,
         {kFile, 249, "m_readerCount < std::numeric_limits<decltype(m_readerCount)>::max()"}},
        {&TReadWriteLock::Lock,
         &TReadWriteLock::TryLock,
         &TReadWriteLock::Unlock,
         {kFile, 228, "m_writerCount < std::numeric_limits<decltype(m_writerCount)>::max()"}},
    };
    for (auto const& kind : kinds) {
        auto const enter = [&] { (lock.*kind.enter)(); };
        for (int i = 0; i < kMost; ++i) {
            enter();
        }
        EXPECT_FALSE((lock.*kind.tryToEnter)());
        EXPECT_EQ(AssertRaisedBy(enter), kind.raised);
        EXPECT_EQ(AssertRaisedBy(enter, HookThat::Returns), kind.raised) << "and lets it in";
        for (int i = 0; i < kMost; ++i) {
            (lock.*kind.leave)();
        }
        EXPECT_FALSE(IsFree(lock));
        (lock.*kind.leave)();
        EXPECT_TRUE(IsFree(lock));
    }
}

template<class L>
class StandardLockable : public testing::Test
{};
using Lockables = testing::Types<TRecursiveMutex, TReadWriteLock>;
TYPED_TEST_SUITE(StandardLockable, Lockables);

TYPED_TEST(StandardLockable, IsTakenByTheStandardLibrary)
{
    static constinit TypeParam a;
    static constinit TypeParam b;
    constexpr int kThreads = 32;
    constexpr int kRounds = 400 / kStressDivisor;
    int count = 0;
    InParallel(kThreads, [&](int thread) {
        for (int i = 0; i < kRounds; ++i) {
            if ((thread + i) % 3 == 0) {
                std::scoped_lock const lock(a, b);
                ++count;
            } else if ((thread + i) % 3 == 1) {
                std::lock(b, a);
                std::lock_guard const first(a, std::adopt_lock);
                std::unique_lock const second(b, std::adopt_lock);
                ++count;
            } else {
                std::unique_lock<TypeParam> lock(a, std::try_to_lock);
                if (!lock) {
                    lock.lock();
                }
                ++count;
            }
            std::shared_lock const lock(a);
            EXPECT_GT(count, 0);
        }
    });
    EXPECT_TRUE(IsFree(a));
    EXPECT_TRUE(IsFree(b));
    EXPECT_EQ(count, kThreads * kRounds);
    {
        TReadLockScope const reading(a);
        EXPECT_FALSE(IsFree(a));
    }
    TLockScope const holding(a);
    EXPECT_FALSE(IsFreeForReaders(a));
}

} // namespace
