#pragma once
// Waiting for any of eight events, ours and the ways in which it is done without us: Set(i), Clear(i), and WaitAny,
// which tells one that is set. `Back` is the baton of the same kind for the way back.

#include <algorithm>
#include <array>
#include <chrono>
#include <vector>

#include <sys/epoll.h>

#if defined(QVXSYS_BENCH_BOOST_THREAD)
#define BOOST_THREAD_PROVIDES_FUTURE
#include <boost/thread/future.hpp>
#endif

#include "SyncPeers.h"

namespace bench::sync {

constexpr unsigned int kEvents = 8;
constexpr milliseconds kForEver{0xFFFFFFFF};

template<class Event>
struct OwnEvents
{
    using Back = OwnAutoBaton;
    std::array<Event, kEvents> events;
    std::vector<IEvent*> all;
    OwnEvents()
    {
        for (Event& event : events) {
            all.push_back(&event);
        }
    }
    void Set(unsigned int i) { events[i].Signal(); }
};

struct OwnAny : OwnEvents<TEvent>
{
    void Clear(unsigned int i) { events[i].Reset(); }
    unsigned int WaitAny()
    {
        unsigned int index = 0;
        WaitForAny(all, kForEver, index);
        return index;
    }
};

struct OwnExact : OwnEvents<TAutoResetEvent>
{
    void Clear(unsigned int) {}
    unsigned int WaitAny() { return static_cast<unsigned int>(*WaitForAnyExact(all, kForEver)); }
};

struct CondvarAny
{
    using Back = CondvarBaton;
    std::mutex mutex;
    std::condition_variable changed;
    std::array<bool, kEvents> set = {};
    void Set(unsigned int i)
    {
        {
            std::lock_guard const lock(mutex);
            set[i] = true;
        }
        changed.notify_all();
    }
    void Clear(unsigned int i)
    {
        std::lock_guard const lock(mutex);
        set[i] = false;
    }
    unsigned int WaitAny()
    {
        std::unique_lock lock(mutex);
        auto found = set.end();
        changed.wait(lock, [&] { return (found = std::ranges::find(set, true)) != set.end(); });
        return static_cast<unsigned int>(found - set.begin());
    }
};

struct PollAny
{
    using Back = EventFdBaton;
    std::array<EventFd, kEvents> events;
    std::array<pollfd, kEvents> entries;
    PollAny()
    {
        for (unsigned int i = 0; i < kEvents; ++i) {
            entries[i] = {events[i].fd, POLLIN, 0};
        }
    }
    void Set(unsigned int i) { events[i].Set(); }
    void Clear(unsigned int i) { events[i].Reset(); }
    unsigned int WaitAny()
    {
        while (poll(entries.data(), entries.size(), -1) < 1) {
        }
        return static_cast<unsigned int>(std::ranges::find(entries, POLLIN, &pollfd::revents) - entries.begin());
    }
};

struct EpollAny
{
    using Back = EventFdBaton;
    std::array<EventFd, kEvents> events;
    int const fd = epoll_create1(EPOLL_CLOEXEC);
    EpollAny()
    {
        for (unsigned int i = 0; i < kEvents; ++i) {
            epoll_event entry = {};
            entry.events = EPOLLIN;
            entry.data.u32 = i;
            epoll_ctl(fd, EPOLL_CTL_ADD, events[i].fd, &entry);
        }
    }
    EpollAny(EpollAny const&) = delete;
    EpollAny& operator=(EpollAny const&) = delete;
    ~EpollAny() { close(fd); }
    void Set(unsigned int i) { events[i].Set(); }
    void Clear(unsigned int i) { events[i].Reset(); }
    unsigned int WaitAny()
    {
        epoll_event entry = {};
        while (epoll_wait(fd, &entry, 1, -1) < 1) {
        }
        return entry.data.u32;
    }
};

#if defined(QVXSYS_BENCH_BOOST_THREAD)
/// Futures cannot be cleared; only for looking at those that are set already.
struct BoostAny
{
    std::array<boost::promise<void>, kEvents> promises;
    std::vector<boost::future<void>> futures;
    BoostAny()
    {
        for (auto& promise : promises) {
            futures.push_back(promise.get_future());
        }
    }
    void Set(unsigned int i) { promises[i].set_value(); }
    unsigned int WaitAny()
    {
        return static_cast<unsigned int>(boost::wait_for_any(futures.begin(), futures.end()) - futures.begin());
    }
};
#endif

} // namespace bench::sync
