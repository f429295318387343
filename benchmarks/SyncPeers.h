#pragma once
// Locks, counts and events of other libraries under one set of names each, and ours among them, so that the rows of
// SyncBench.cpp are templates.

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <ctime>
#include <mutex>
#include <semaphore>
#include <shared_mutex>

#include <poll.h>
#include <semaphore.h>
#include <sys/eventfd.h>
#include <unistd.h>

#if defined(QVXSYS_BENCH_QT)
#include <QtCore/QDeadlineTimer>
#include <QtCore/QMutex>
#include <QtCore/QReadWriteLock>
#include <QtCore/QSemaphore>
#include <QtCore/QWaitCondition>
#endif
#if defined(QVXSYS_BENCH_TBB)
#include <oneapi/tbb/mutex.h>
#include <oneapi/tbb/rw_mutex.h>
#include <oneapi/tbb/spin_mutex.h>
#include <oneapi/tbb/spin_rw_mutex.h>
#endif
#if defined(QVXSYS_BENCH_ABSL_SYNC)
#include <absl/synchronization/mutex.h>
#include <absl/synchronization/notification.h>
#include <absl/time/time.h>
#endif
#if defined(QVXSYS_BENCH_BOOST_THREAD)
#include <boost/thread/recursive_mutex.hpp>
#include <boost/thread/shared_mutex.hpp>
#endif

#include <qvxsys/TEvent.h>
#include <qvxsys/TLocks.h>
#include <qvxsys/TSemaphore.h>

namespace bench::sync {

using std::chrono::milliseconds;

/// The events: Set, Reset, IsSet, Wait; some also Wait(timeout), true when it is set.

struct OwnEvent
{
    TEvent event;
    void Set() { event.Signal(); }
    void Reset() { event.Reset(); }
    bool IsSet() { return event.IsSet(); }
    void Wait() { event.Wait(); }
    bool Wait(milliseconds timeout) { return event.Wait(timeout); }
};

struct AtomicEvent
{
    std::atomic<int> word = 0;
    void Set()
    {
        word.store(1);
        word.notify_all();
    }
    void Reset() { word.store(0); }
    bool IsSet() { return word.load() != 0; }
    void Wait() { word.wait(0); }
};

/// What events of a lock and a condition variable have in common.
template<class Mutex>
struct LockedFlag
{
    Mutex mutex;
    bool set = false;
    void Put(bool value)
    {
        std::lock_guard const lock(mutex);
        set = value;
    }
    void Reset() { Put(false); }
    bool IsSet()
    {
        std::lock_guard const lock(mutex);
        return set;
    }
};

struct CondvarEvent : LockedFlag<std::mutex>
{
    std::condition_variable changed;
    void Set()
    {
        Put(true);
        changed.notify_all();
    }
    void Wait()
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return set; });
    }
    bool Wait(milliseconds timeout)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, timeout, [this] { return set; });
    }
};

struct EventFd
{
    int const fd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    EventFd() = default;
    EventFd(EventFd const&) = delete;
    EventFd& operator=(EventFd const&) = delete;
    ~EventFd() { close(fd); }
    void Set() { eventfd_write(fd, 1); }
    void Reset() { Take(); }
    bool Take()
    {
        eventfd_t value = 0;
        return eventfd_read(fd, &value) == 0;
    }
    bool Poll(int timeout)
    {
        pollfd entry = {fd, POLLIN, 0};
        return poll(&entry, 1, timeout) == 1;
    }
    bool IsSet() { return Poll(0); }
    void Wait() { Poll(-1); }
    bool Wait(milliseconds timeout) { return Poll(static_cast<int>(timeout.count())); }
};

#if defined(QVXSYS_BENCH_QT)
struct QtEvent : LockedFlag<QMutex>
{
    QWaitCondition changed;
    void Set()
    {
        Put(true);
        changed.wakeAll();
    }
    void Wait() { Wait(milliseconds(-1)); }
    bool Wait(milliseconds timeout)
    {
        std::lock_guard const lock(mutex);
        QDeadlineTimer const deadline(timeout.count() < 0 ? QDeadlineTimer(QDeadlineTimer::Forever)
                                                          : QDeadlineTimer(timeout.count()));
        while (!set && changed.wait(&mutex, deadline)) {
        }
        return set;
    }
};
#endif

/// The batons: Give lets one Take through.

struct OwnAutoBaton
{
    TAutoResetEvent event;
    void Give() { event.Signal(); }
    void Take() { event.Wait(); }
};

struct OwnManualBaton
{
    TEvent event;
    void Give() { event.Signal(); }
    void Take()
    {
        event.Wait();
        event.Reset();
    }
};

struct OwnSemaphoreBaton
{
    RefCntPtr<TSemaphore> semaphore = TSemaphore::Construct(0);
    void Give() { semaphore->Release(); }
    void Take() { semaphore->Acquire(); }
    bool Take(milliseconds timeout) { return semaphore->TryAcquire(static_cast<unsigned int>(timeout.count())); }
};

struct StdSemaphoreBaton
{
    std::counting_semaphore<> semaphore{0};
    void Give() { semaphore.release(); }
    void Take() { semaphore.acquire(); }
    bool Take(milliseconds timeout) { return semaphore.try_acquire_for(timeout); }
};

struct PosixSemaphoreBaton
{
    sem_t semaphore;
    PosixSemaphoreBaton() { sem_init(&semaphore, 0, 0); }
    PosixSemaphoreBaton(PosixSemaphoreBaton const&) = delete;
    PosixSemaphoreBaton& operator=(PosixSemaphoreBaton const&) = delete;
    ~PosixSemaphoreBaton() { sem_destroy(&semaphore); }
    void Give() { sem_post(&semaphore); }
    void Take()
    {
        while (sem_wait(&semaphore) != 0) {
        }
    }
    bool Take(milliseconds timeout)
    {
        timespec until;
        clock_gettime(CLOCK_MONOTONIC, &until);
        until.tv_nsec += timeout.count() * 1'000'000;
        until.tv_sec += until.tv_nsec / 1'000'000'000;
        until.tv_nsec %= 1'000'000'000;
        int result = 0;
        while ((result = sem_clockwait(&semaphore, CLOCK_MONOTONIC, &until)) != 0 && errno == EINTR) {
        }
        return result == 0;
    }
};

struct AtomicBaton
{
    std::atomic<int> word = 0;
    void Give()
    {
        word.store(1, std::memory_order_release);
        word.notify_one();
    }
    void Take()
    {
        word.wait(0, std::memory_order_acquire);
        word.store(0, std::memory_order_relaxed);
    }
};

struct CondvarBaton : LockedFlag<std::mutex>
{
    std::condition_variable changed;
    void Give()
    {
        Put(true);
        changed.notify_one();
    }
    void Take()
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return set; });
        set = false;
    }
};

struct EventFdBaton
{
    EventFd event;
    void Give() { event.Set(); }
    void Take()
    {
        do {
            event.Wait();
        } while (!event.Take());
    }
};

#if defined(QVXSYS_BENCH_QT)
struct QtSemaphoreBaton
{
    QSemaphore semaphore;
    void Give() { semaphore.release(); }
    void Take() { semaphore.acquire(); }
    bool Take(milliseconds timeout) { return semaphore.tryAcquire(1, static_cast<int>(timeout.count())); }
};

struct QtCondvarBaton : LockedFlag<QMutex>
{
    QWaitCondition changed;
    void Give()
    {
        Put(true);
        changed.wakeOne();
    }
    void Take()
    {
        std::lock_guard const lock(mutex);
        while (!set) {
            changed.wait(&mutex);
        }
        set = false;
    }
};
#endif

#if defined(QVXSYS_BENCH_ABSL_SYNC)
struct AbslBaton
{
    absl::Mutex mutex;
    bool given = false;
    void Give()
    {
        absl::MutexLock const lock(&mutex);
        given = true;
    }
    void Take()
    {
        absl::MutexLock const lock(&mutex, absl::Condition(&given));
        given = false;
    }
    bool Take(milliseconds timeout)
    {
        absl::MutexLock const lock(&mutex);
        bool const taken = mutex.AwaitWithTimeout(absl::Condition(&given), absl::FromChrono(timeout));
        given = given && !taken;
        return taken;
    }
};

/// The names of the standard library.
struct AbslLock
{
    absl::Mutex mutex;
    void lock() { mutex.Lock(); }
    void unlock() { mutex.Unlock(); }
    void lock_shared() { mutex.ReaderLock(); }
    void unlock_shared() { mutex.ReaderUnlock(); }
};
#endif

#if defined(QVXSYS_BENCH_QT)
struct QtSharedLock
{
    QReadWriteLock rw;
    void lock() { rw.lockForWrite(); }
    void unlock() { rw.unlock(); }
    void lock_shared() { rw.lockForRead(); }
    void unlock_shared() { rw.unlock(); }
};
#endif

/// Calls `with.operator()<Lock>(name)` for each lock.
template<class With>
void ForEachRecursiveLock(With with)
{
    with.template operator()<TRecursiveMutex>("own");
    with.template operator()<std::recursive_mutex>("std::recursive_mutex");
#if defined(QVXSYS_BENCH_QT)
    with.template operator()<QRecursiveMutex>("QRecursiveMutex");
#endif
#if defined(QVXSYS_BENCH_BOOST_THREAD)
    with.template operator()<boost::recursive_mutex>("boost::recursive_mutex");
#endif
}

/// Those that their owner may not enter again: bounds for a recursive lock rather than peers, hence the brackets.
template<class With>
void ForEachPlainLock(With with)
{
    with.template operator()<std::mutex>("[std::mutex]");
#if defined(QVXSYS_BENCH_QT)
    with.template operator()<QMutex>("[QMutex]");
#endif
#if defined(QVXSYS_BENCH_TBB)
    with.template operator()<tbb::spin_mutex>("[tbb::spin_mutex]");
    with.template operator()<tbb::mutex>("[tbb::mutex]");
#endif
#if defined(QVXSYS_BENCH_ABSL_SYNC)
    with.template operator()<AbslLock>("[absl::Mutex]");
#endif
}

template<class With>
void ForEachSharedLock(With with)
{
    with.template operator()<TReadWriteLock>("own");
    with.template operator()<std::shared_mutex>("std::shared_mutex");
#if defined(QVXSYS_BENCH_QT)
    with.template operator()<QtSharedLock>("QReadWriteLock");
#endif
#if defined(QVXSYS_BENCH_TBB)
    with.template operator()<tbb::spin_rw_mutex>("tbb::spin_rw_mutex");
    with.template operator()<tbb::rw_mutex>("tbb::rw_mutex");
#endif
#if defined(QVXSYS_BENCH_BOOST_THREAD)
    with.template operator()<boost::shared_mutex>("boost::shared_mutex");
#endif
#if defined(QVXSYS_BENCH_ABSL_SYNC)
    with.template operator()<AbslLock>("absl::Mutex");
#endif
}

template<class With>
void ForEachBaton(With with)
{
    with.template operator()<OwnAutoBaton>("own");
    with.template operator()<OwnManualBaton>("own, TEvent");
    with.template operator()<OwnSemaphoreBaton>("own, TSemaphore");
    with.template operator()<PosixSemaphoreBaton>("sem_t");
    with.template operator()<StdSemaphoreBaton>("std::counting_semaphore");
    with.template operator()<AtomicBaton>("std::atomic::wait");
    with.template operator()<CondvarBaton>("condvar");
    with.template operator()<EventFdBaton>("eventfd");
#if defined(QVXSYS_BENCH_QT)
    with.template operator()<QtSemaphoreBaton>("QSemaphore");
    with.template operator()<QtCondvarBaton>("QWaitCondition");
#endif
#if defined(QVXSYS_BENCH_ABSL_SYNC)
    with.template operator()<AbslBaton>("absl::Mutex");
#endif
}

} // namespace bench::sync
