#pragma once
// Locks: TRecursiveMutex, which its owner may enter again; TReadWriteLock, shared by readers or held by one writer; and
// the scopes that hold them.
//
//     TReadWriteLock g_lock;
//     std::map<int, TStringCore> g_names;
//
//     TStringCore NameOf(int id)
//     {
//         TReadLockScope const lock(g_lock);
//         auto const found = g_names.find(id);
//         return found != g_names.end() ? found->second : TStringCore();
//     }
//
// Both have the standard library's names beside their own (lock, try_lock, unlock, lock_shared, ...), so
// std::lock_guard, std::scoped_lock and std::shared_lock take them, and carry Clang's annotations
// (ThreadAnnotations.h).
//
// They are plain words in memory: no allocation, no system object, nothing to destroy, and a lock with static storage
// works before and after main. A free lock is taken and given up by one atomic instruction each, without a call. Who
// finds it held spins for a few microseconds at most, if this process has more than one processor and spinning has paid
// lately, and then sleeps. Neither lock is fair: who comes at the right moment is first.
//
// Not checked, and nothing good comes of it: giving up a lock that is not held or (of writers and mutexes) that another
// thread holds; destroying a lock that is held or waited for.

#include <atomic>
#include <cstdint>
#include <limits>

#include <qvxsys/Platform.h>
#include <qvxsys/SyncWords.h>
#include <qvxsys/ThreadAnnotations.h>

/// A lock for one thread at a time. Its owner may enter it again, and must then leave it as many times. 16 bytes.
/// Entering again costs a comparison and an increment.
///
/// "Read" names are the same operations, for code that is templated on the kind of lock.
class QVXSYS_CAPABILITY("mutex") TRecursiveMutex
{
public:
    constexpr TRecursiveMutex() noexcept = default;
    /// The number is ignored.
    constexpr explicit TRecursiveMutex(unsigned int) noexcept {}
    TRecursiveMutex(TRecursiveMutex const&) = delete;
    TRecursiveMutex& operator=(TRecursiveMutex const&) = delete;

    void Lock() noexcept QVXSYS_ACQUIRE()
    {
        unsigned long long const self = qvxsys::detail::ThreadTag();
        if (m_owner.load(std::memory_order_relaxed) == self) {
            ++m_entries;
        } else {
            if (!m_word.TryAcquire()) [[unlikely]] {
                LockContended();
            }
            m_owner.store(self, std::memory_order_relaxed);
        }
    }
    void Unlock() noexcept QVXSYS_RELEASE()
    {
        if (m_entries != 0) {
            --m_entries;
        } else {
            m_owner.store(0, std::memory_order_relaxed);
            if (m_word.Release()) [[unlikely]] {
                Wake(m_word.Address());
            }
        }
    }
    /// Enters if that needs no waiting; true on success, which it always is for the owner.
    [[nodiscard]] bool TryLock() noexcept QVXSYS_TRY_ACQUIRE(true)
    {
        unsigned long long const self = qvxsys::detail::ThreadTag();
        if (m_owner.load(std::memory_order_relaxed) == self) {
            ++m_entries;
            return true;
        }
        if (!m_word.TryAcquire()) {
            return false;
        }
        m_owner.store(self, std::memory_order_relaxed);
        return true;
    }
    void LockRead() noexcept QVXSYS_ACQUIRE() { Lock(); }
    void UnlockRead() noexcept QVXSYS_RELEASE() { Unlock(); }

    /// Whether the calling thread holds it.
    [[nodiscard]] bool IsHeldByThisThread() const noexcept
    {
        return m_owner.load(std::memory_order_relaxed) == qvxsys::detail::ThreadTag();
    }

    /// The standard library's names.
    void lock() noexcept QVXSYS_ACQUIRE() { Lock(); }
    [[nodiscard]] bool try_lock() noexcept QVXSYS_TRY_ACQUIRE(true) { return TryLock(); }
    void unlock() noexcept QVXSYS_RELEASE() { Unlock(); }
    void lock_shared() noexcept QVXSYS_ACQUIRE() { Lock(); }
    [[nodiscard]] bool try_lock_shared() noexcept QVXSYS_TRY_ACQUIRE(true) { return TryLock(); }
    void unlock_shared() noexcept QVXSYS_RELEASE() { Unlock(); }

private:
    QVXSYS_API void LockContended() noexcept;
    QVXSYS_API static void Wake(void const* address) noexcept;

    qvxsys::detail::LockWord m_word;
    /// How often the owner has entered beyond the first time; written by the owner only.
    std::uint32_t m_entries = 0;
    std::atomic<unsigned long long> m_owner = 0;
};

/// Shared by readers, or held by one writer. 32 bytes.
///
/// Readers come in while a writer waits for other readers to leave, so a steady stream of readers can hold a writer off
/// for ever: use it where reading is frequent and short and writing is rare. When the last reader or a writer leaves
/// and writers wait, exactly one is woken.
///
/// Up to 65,535 readers and 65,535 writers (holding and waiting) at a time; one more raises a logic assertion
/// (LogicException, or the hook) with the text "m_readerCount < std::numeric_limits<decltype(m_readerCount)>::max()" or
/// "m_writerCount < std::numeric_limits<decltype(m_writerCount)>::max()". A hook that returns lets it in all the same.
///
/// A writer may take the lock again as a writer or as a reader, and then counts as that too; a reader that asks to
/// write waits for itself. Readers may leave on another thread than they came on, writers may not.
class QVXSYS_CAPABILITY("mutex") TReadWriteLock
{
public:
    constexpr TReadWriteLock() noexcept = default;
    /// The number is ignored.
    constexpr explicit TReadWriteLock(unsigned int) noexcept {}
    TReadWriteLock(TReadWriteLock const&) = delete;
    TReadWriteLock& operator=(TReadWriteLock const&) = delete;

    /// Waits until nobody else holds the lock. When the system refuses to let the thread sleep, raises the logic
    /// assertion "SleepConditionVariableCS(&m_cv, mutex.native_handle(), INFINITE)", without the lock; a hook that
    /// returns makes it try again.
    QVXSYS_API void Lock() QVXSYS_ACQUIRE();
    QVXSYS_API void Unlock() noexcept QVXSYS_RELEASE();
    /// Takes the lock for writing if that needs no waiting.
    [[nodiscard]] QVXSYS_API bool TryLock() QVXSYS_TRY_ACQUIRE(true);

    /// Waits while a writer holds the lock.
    void LockRead() QVXSYS_ACQUIRE_SHARED()
    {
        std::uint64_t const before = m_counts.EnterAsReader();
        if ((before & Word::kWriting) != 0 || Word::Readers(before) >= kMostReaders) [[unlikely]] {
            LockReadSlowly();
        }
    }
    void UnlockRead() noexcept QVXSYS_RELEASE_SHARED()
    {
        if (m_counts.LeaveAsReader()) [[unlikely]] {
            WakeWriter(m_counts.Address());
        }
    }
    /// Takes the lock for reading if that needs no waiting.
    [[nodiscard]] QVXSYS_API bool TryLockRead() QVXSYS_TRY_ACQUIRE_SHARED(true);

    /// The standard library's names.
    void lock() QVXSYS_ACQUIRE() { Lock(); }
    [[nodiscard]] bool try_lock() QVXSYS_TRY_ACQUIRE(true) { return TryLock(); }
    void unlock() noexcept QVXSYS_RELEASE() { Unlock(); }
    void lock_shared() QVXSYS_ACQUIRE_SHARED() { LockRead(); }
    [[nodiscard]] bool try_lock_shared() QVXSYS_TRY_ACQUIRE_SHARED(true) { return TryLockRead(); }
    void unlock_shared() noexcept QVXSYS_RELEASE_SHARED() { UnlockRead(); }

private:
    using Word = qvxsys::detail::SharedLockWord;
    static constexpr std::uint64_t kMostReaders = std::numeric_limits<std::uint16_t>::max();
    static constexpr std::uint64_t kMostWriters = std::numeric_limits<std::uint16_t>::max();

    QVXSYS_API void LockReadSlowly() QVXSYS_NO_THREAD_SAFETY_ANALYSIS;
    QVXSYS_API static void WakeWriter(void const* address) noexcept;
    void WaitForReaders() QVXSYS_NO_THREAD_SAFETY_ANALYSIS;

    Word m_counts;
    /// Writers hold it while they write; who finds a writer waits for it.
    TRecursiveMutex m_mutex;
    /// How often the writer holds the lock; guarded by m_mutex.
    std::uint32_t m_entries = 0;
};

static_assert(sizeof(TRecursiveMutex) == 16 && sizeof(TReadWriteLock) == 32);

/// Holds a lock from construction to the end of the scope.
template<class Lockable>
class QVXSYS_SCOPED_CAPABILITY [[nodiscard]] TLockScope
{
public:
    /// Locks.
    explicit TLockScope(Lockable& lock) QVXSYS_ACQUIRE(lock) : m_lock(lock) { m_lock.Lock(); }
    ~TLockScope() QVXSYS_RELEASE() { m_lock.Unlock(); }
    TLockScope(TLockScope const&) = delete;
    TLockScope& operator=(TLockScope const&) = delete;

private:
    Lockable& m_lock;
};

/// Holds a lock for reading from construction to the end of the scope.
template<class Lockable>
class QVXSYS_SCOPED_CAPABILITY [[nodiscard]] TReadLockScope
{
public:
    /// Locks for reading.
    explicit TReadLockScope(Lockable& lock) QVXSYS_ACQUIRE_SHARED(lock) : m_lock(lock) { m_lock.LockRead(); }
    ~TReadLockScope() QVXSYS_RELEASE_GENERIC() { m_lock.UnlockRead(); }
    TReadLockScope(TReadLockScope const&) = delete;
    TReadLockScope& operator=(TReadLockScope const&) = delete;

private:
    Lockable& m_lock;
};
