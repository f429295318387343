// Locks, semaphores and events: what they cost while nobody waits, and how fast they pass from thread to thread.
// `sync_bench --sizes` prints what they take up instead.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <future>
#include <memory>
#include <thread>

#include <malloc.h>

#include "BenchSupport.h"
#include "SyncPeers.h"
#include "SyncThreads.h"
#include "SyncWaitAny.h"

namespace {

using namespace bench::sync;
using bench::Cores;
using bench::ThreadRow;
using bench::TimeTogether;

/// A row on one thread, with an object of its own that the compiler must take for shared.
template<class Object, class Op>
void ObjectRow(std::string const& row, std::string const& who, Op op, bool wallClock = false)
{
    auto* const benchmark = benchmark::RegisterBenchmark((row + "/" + who).c_str(), [op](benchmark::State& state) {
        auto const object = std::make_unique<Object>();
        Object* shared = object.get();
        benchmark::DoNotOptimize(shared);
        op(*shared, [&state](auto step) {
            for ([[maybe_unused]] auto _ : state) {
                step();
                benchmark::ClobberMemory();
            }
        });
    });
    if (wallClock) {
        benchmark->UseRealTime();
    }
}

// -- f1 to f4: locks --------------------------------------------------------------------------------------------------

void LockRows()
{
    auto const free = []<class Lock>(char const* who) {
        ObjectRow<Lock>("f1 lock and unlock", who, [](Lock& lock, auto repeat) {
            repeat([&lock] {
                lock.lock();
                lock.unlock();
            });
        });
    };
    ForEachRecursiveLock(free);
    ForEachPlainLock(free);
    ForEachRecursiveLock([]<class Lock>(char const* who) {
        ObjectRow<Lock>("f2 enter again and leave", who, [](Lock& lock, auto repeat) {
            lock.lock();
            repeat([&lock] {
                lock.lock();
                lock.unlock();
            });
            lock.unlock();
        });
    });
}

/// All threads take the same lock for an increment, as fast as they can.
template<class Lock>
double Contend(unsigned int threads, Cores cores, unsigned int sections)
{
    struct Guarded
    {
        Lock lock;
        std::uint64_t value = 0;
    };
    auto const guarded = std::make_unique<Guarded>();
    double const seconds = TimeTogether(threads, cores, [&guarded, sections](unsigned int) {
        for (unsigned int i = 0; i < sections; ++i) {
            guarded->lock.lock();
            ++guarded->value;
            benchmark::ClobberMemory();
            guarded->lock.unlock();
        }
    });
    if (guarded->value != std::uint64_t(threads) * sections) {
        std::abort();
    }
    return seconds;
}

void ContendedRows()
{
    struct Setting
    {
        char const* name;
        unsigned int threads;
        Cores cores;
        unsigned int sections;
    };
    static constexpr Setting kSettings[] = {{"f3 contended lock, 2 threads", 2, Cores::Each, 50'000},
                                            {"f3 contended lock, 8 threads", 8, Cores::Any, 20'000},
                                            {"f3 contended lock, 8 threads on one core", 8, Cores::One, 10'000}};
    for (Setting const& setting : kSettings) {
        auto const with = [&setting]<class Lock>(char const* who) {
            ThreadRow(setting.name, who, setting.threads * setting.sections,
                      [&setting] { return Contend<Lock>(setting.threads, setting.cores, setting.sections); });
        };
        ForEachRecursiveLock(with);
        ForEachPlainLock(with);
    }
}

void SharedLockRows()
{
    ForEachSharedLock([]<class Lock>(char const* who) {
        ObjectRow<Lock>("f4 read lock, 1 thread", who, [](Lock& lock, auto repeat) {
            repeat([&lock] {
                lock.lock_shared();
                lock.unlock_shared();
            });
        });
        static constexpr unsigned int kReads = 100'000;
        ThreadRow("f4 read lock, 2 threads", who, kReads * 2, [] {
            auto const lock = std::make_unique<Lock>();
            return TimeTogether(2, Cores::Each, [&lock](unsigned int) {
                for (unsigned int i = 0; i < kReads; ++i) {
                    lock->lock_shared();
                    benchmark::ClobberMemory();
                    lock->unlock_shared();
                }
            });
        });
    });
}

// -- f5: semaphores ---------------------------------------------------------------------------------------------------

template<class Baton>
void SemaphoreRow(char const* who)
{
    ObjectRow<Baton>("f5 semaphore, release and acquire", who, [](Baton& baton, auto repeat) {
        repeat([&baton] {
            baton.Give();
            baton.Take();
        });
    });
}

void SemaphoreRows()
{
    SemaphoreRow<OwnSemaphoreBaton>("own");
    SemaphoreRow<PosixSemaphoreBaton>("sem_t");
    SemaphoreRow<StdSemaphoreBaton>("std::counting_semaphore");
#if defined(QVXSYS_BENCH_QT)
    SemaphoreRow<QtSemaphoreBaton>("QSemaphore");
#endif
}

// -- f6: events that nobody waits for ---------------------------------------------------------------------------------

template<class Event>
void EventRows(char const* who)
{
    ObjectRow<Event>("f6 event, is it set", who,
                     [](Event& event, auto repeat) { repeat([&event] { benchmark::DoNotOptimize(event.IsSet()); }); });
    ObjectRow<Event>("f6 event, set and reset", who, [](Event& event, auto repeat) {
        repeat([&event] {
            event.Set();
            event.Reset();
        });
    });
    ObjectRow<Event>("f6 event, wait when set", who, [](Event& event, auto repeat) {
        event.Set();
        repeat([&event] { event.Wait(); });
    });
}

void AllEventRows()
{
    EventRows<OwnEvent>("own");
    EventRows<AtomicEvent>("std::atomic::wait");
    EventRows<CondvarEvent>("condvar");
    EventRows<EventFd>("eventfd");
#if defined(QVXSYS_BENCH_QT)
    EventRows<QtEvent>("QWaitCondition");
#endif
    // Through the interface, as code sees it that takes any kind of event.
    ObjectRow<TEvent>("f6 event, is it set", "own, IEvent", [](TEvent& event, auto repeat) {
        IEvent* any = &event;
        repeat([&any] {
            benchmark::DoNotOptimize(any);
            benchmark::DoNotOptimize(any->IsSet());
        });
    });
#if defined(QVXSYS_BENCH_ABSL_SYNC)
    ObjectRow<absl::Notification>("f6 event, is it set", "absl::Notification",
                                  [](absl::Notification& event, auto repeat) {
                                      repeat([&event] { benchmark::DoNotOptimize(event.HasBeenNotified()); });
                                  });
    ObjectRow<absl::Notification>("f6 event, wait when set", "absl::Notification",
                                  [](absl::Notification& event, auto repeat) {
                                      event.Notify();
                                      repeat([&event] { event.WaitForNotification(); });
                                  });
#endif
}

// -- f7, f8: ping-pong ------------------------------------------------------------------------------------------------

constexpr unsigned int kRounds = 2000;

/// There and back again is one step.
template<class Baton>
double PingPong(Cores cores, unsigned int rounds)
{
    auto const there = std::make_unique<Baton>();
    auto const back = std::make_unique<Baton>();
    return TimeTogether(2, cores, [&there, &back, rounds](unsigned int side) {
        for (unsigned int i = 0; i < rounds; ++i) {
            if (side == 0) {
                there->Give();
                back->Take();
            } else {
                there->Take();
                back->Give();
            }
        }
    });
}

void PingPongRows()
{
    ForEachBaton([]<class Baton>(char const* who) {
        ThreadRow("f7 ping-pong on one core", who, kRounds, [] { return PingPong<Baton>(Cores::One, kRounds); });
        ThreadRow("f8 ping-pong on two cores", who, kRounds, [] { return PingPong<Baton>(Cores::Each, kRounds); });
    });
}

// -- f9, f10: any of several ------------------------------------------------------------------------------------------

template<class Any>
void AnySetRow(char const* who)
{
    ObjectRow<Any>("f9 wait for any of 8, one is set", who, [](Any& any, auto repeat) {
        any.Set(5);
        repeat([&any] { benchmark::DoNotOptimize(any.WaitAny()); });
    });
}

template<class Any>
double AnyPingPong(Cores cores, unsigned int rounds)
{
    auto const any = std::make_unique<Any>();
    auto const back = std::make_unique<typename Any::Back>();
    return TimeTogether(2, cores, [&any, &back, rounds](unsigned int side) {
        for (unsigned int i = 0; i < rounds; ++i) {
            if (side == 0) {
                any->Set(i % kEvents);
                back->Take();
            } else {
                any->Clear(any->WaitAny());
                back->Give();
            }
        }
    });
}

template<class Any>
void AnyWokenRows(char const* who)
{
    ThreadRow("f10 woken waiting for any of 8, one core", who, kRounds,
              [] { return AnyPingPong<Any>(Cores::One, kRounds); });
    ThreadRow("f10 woken waiting for any of 8, two cores", who, kRounds,
              [] { return AnyPingPong<Any>(Cores::Each, kRounds); });
}

void AnyRows()
{
    AnySetRow<OwnAny>("own");
    AnySetRow<CondvarAny>("condvar");
    AnySetRow<PollAny>("poll");
    AnySetRow<EpollAny>("epoll");
#if defined(QVXSYS_BENCH_BOOST_THREAD)
    AnySetRow<BoostAny>("boost::wait_for_any");
#endif
    AnyWokenRows<OwnAny>("own");
    AnyWokenRows<OwnExact>("own, exact");
    AnyWokenRows<CondvarAny>("condvar");
    AnyWokenRows<PollAny>("poll");
    AnyWokenRows<EpollAny>("epoll");
}

// -- f11: time limits -------------------------------------------------------------------------------------------------

template<class Object>
void TimeoutRows(char const* who)
{
    for (int const limit : {0, 1}) {
        ObjectRow<Object>(
            "f11 wait of " + std::to_string(limit) + " ms", who,
            [limit](Object& object, auto repeat) {
                repeat([&object, timeout = milliseconds(limit)] {
                    auto opaque = timeout;
                    benchmark::DoNotOptimize(opaque);
                    if constexpr (requires { object.Wait(opaque); }) {
                        benchmark::DoNotOptimize(object.Wait(opaque));
                    } else {
                        benchmark::DoNotOptimize(object.Take(opaque));
                    }
                });
            },
            limit != 0);
    }
}

void AllTimeoutRows()
{
    TimeoutRows<OwnEvent>("own");
    TimeoutRows<OwnSemaphoreBaton>("own, TSemaphore");
    TimeoutRows<CondvarEvent>("condvar");
    TimeoutRows<EventFd>("poll");
    TimeoutRows<PosixSemaphoreBaton>("sem_t");
    TimeoutRows<StdSemaphoreBaton>("std::counting_semaphore");
#if defined(QVXSYS_BENCH_QT)
    TimeoutRows<QtEvent>("QWaitCondition");
    TimeoutRows<QtSemaphoreBaton>("QSemaphore");
#endif
#if defined(QVXSYS_BENCH_ABSL_SYNC)
    TimeoutRows<AbslBaton>("absl::Mutex");
#endif
}

void RegisterRows()
{
    LockRows();
    ContendedRows();
    SharedLockRows();
    SemaphoreRows();
    AllEventRows();
    PingPongRows();
    AnyRows();
    AllTimeoutRows();
}

// -- sizes ------------------------------------------------------------------------------------------------------------

/// The process's memory, in bytes.
double ResidentBytes()
{
    std::ifstream statm("/proc/self/statm");
    double pages = 0;
    statm >> pages >> pages;
    return pages * static_cast<double>(sysconf(_SC_PAGESIZE));
}

/// Resident bytes for each of a million objects that have been set once, where that can be done.
template<class Object>
double BytesOfEach()
{
    constexpr std::size_t kMany = 1'000'000;
    // What the objects of the last line have left behind must not be used again.
    mallopt(M_MMAP_THRESHOLD, 1 << 20);
    malloc_trim(0);
    double const before = ResidentBytes();
    auto const objects = std::make_unique<Object[]>(kMany);
    for (std::size_t i = 0; i < kMany; ++i) {
        if constexpr (requires { objects[i].Set(); }) {
            objects[i].Set();
        } else if constexpr (requires { objects[i].Give(); }) {
            objects[i].Give();
        } else {
            objects[i].lock();
            objects[i].unlock();
        }
    }
    return (ResidentBytes() - before) / kMany;
}

template<class Object>
void SizeLine(char const* name)
{
    std::printf("| %-28s | %12zu | %21.1f |\n", name, sizeof(Object), BytesOfEach<Object>());
}

int PrintSizes()
{
    std::printf("| Object                       | sizeof       | resident, of a million |\n|---|---|---|\n");
    SizeLine<OwnEvent>("own, TEvent");
    SizeLine<OwnAutoBaton>("own, TAutoResetEvent");
    SizeLine<AtomicEvent>("std::atomic<int>");
    SizeLine<CondvarEvent>("std::mutex, condvar, bool");
    SizeLine<PosixSemaphoreBaton>("sem_t");
    SizeLine<OwnSemaphoreBaton>("own, RefCntPtr<TSemaphore>");
    SizeLine<StdSemaphoreBaton>("std::counting_semaphore");
    ForEachRecursiveLock([]<class Lock>(char const* who) {
        SizeLine<Lock>(std::strcmp(who, "own") == 0 ? "own, TRecursiveMutex" : who);
    });
    ForEachPlainLock([]<class Lock>(char const* who) { SizeLine<Lock>(who); });
    ForEachSharedLock([]<class Lock>(char const* who) {
        SizeLine<Lock>(std::strcmp(who, "own") == 0 ? "own, TReadWriteLock" : who);
    });
#if defined(QVXSYS_BENCH_QT)
    SizeLine<QtEvent>("QMutex, QWaitCondition, bool");
    SizeLine<QtSemaphoreBaton>("QSemaphore");
#endif
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 2 && std::strcmp(argv[1], "--sizes") == 0) {
        return PrintSizes();
    }
    // With one thread only, the C library leaves out the locked instructions that this is about.
    std::promise<void> over;
    std::jthread const other([done = over.get_future()] { done.wait(); });
    int const result = bench::Main(argc, argv, RegisterRows);
    over.set_value();
    return result;
}
