#pragma once
// The callbacks of one event, and how they are run.

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <unordered_map>

#include <qvxsys/TLocks.h>

namespace qvxsys::sync {

/// Wake-ups that callbacks of the running Signal have put off until its lock is given up: a thread woken earlier would
/// run straight into that lock. Waking needs an address only, so what is there may be gone by then.
class DeferredWakes
{
public:
    DeferredWakes() noexcept;
    DeferredWakes(DeferredWakes const&) = delete;
    DeferredWakes& operator=(DeferredWakes const&) = delete;
    ~DeferredWakes();

    /// Wakes all who sleep on `address`: at the end of the Signal whose callback calls this, or now.
    static void WakeAll(void const* address) noexcept;

private:
    static constexpr unsigned int kMost = 4;

    void const* m_addresses[kMost];
    unsigned int m_count = 0;
    DeferredWakes* const m_outer;
};

} // namespace qvxsys::sync

namespace qvxsys::detail {

/// Callbacks by key, in the order of registration. The mutex is held by the user, in all operations and while they run.
/// As long as they run, in nested runs too, entries are only added at the end and marked as removed, so that the
/// running one and the way to the next stay in place.
class EventCallbacks
{
public:
    struct Entry
    {
        void* key;
        std::function<void()> call;
        std::uint64_t number;
        bool removed;
    };
    /// What has been removed. Destroyed by the user without locks, since what a callback captured may do anything when
    /// it is destroyed, even destroy the event.
    using Garbage = std::list<Entry>;

    void Put(void* key, std::function<void()>&& call, Garbage& garbage);
    void Remove(void* key, Garbage& garbage);
    [[nodiscard]] bool IsEmpty() const noexcept { return m_live == 0; }
    /// Calls those that are there at the beginning and have not been removed when it is their turn.
    void Run(Garbage& garbage);

    TRecursiveMutex mutex;

private:
    using Entries = std::list<Entry>;
    using Index = std::unordered_map<void*, Entries::iterator>;
    /// More entries than this are found by the index.
    static constexpr std::size_t kIndexFrom = 16;

    Entries::iterator Find(void* key);
    void Discard(Entries::iterator entry, Garbage& garbage);

    Entries m_entries;
    std::unique_ptr<Index> m_index;
    std::size_t m_live = 0;
    std::uint64_t m_nextNumber = 0;
    unsigned int m_runs = 0;
    bool m_anyRemoved = false;
};

/// Keeps what the signals in this scope remove, of any event, to its end. For events that have something left to do
/// when their callbacks have run, a lock to give up for instance: what is destroyed may own the event.
class KeepRemoved
{
public:
    KeepRemoved() noexcept;
    KeepRemoved(KeepRemoved const&) = delete;
    KeepRemoved& operator=(KeepRemoved const&) = delete;
    ~KeepRemoved();

    /// Moves it to the innermost scope of this thread; leaves it where it is when there is none.
    static void Hand(EventCallbacks::Garbage& garbage) noexcept;

private:
    EventCallbacks::Garbage m_garbage;
    KeepRemoved* const m_outer;
};

} // namespace qvxsys::detail
