#pragma once
// The queue of a thread pool: unbounded, first in first out, any number of producers and consumers.
//
// Items lie in a chain of chunks, numbered in the order of their coming. Two counts say all: how many were accepted and
// how many were taken. Each has a lock of its own, so those who add and those who take meet only where one runs out of
// what it knows of the other. A chunk that was emptied is kept for the next one that is needed.
//
// Consumers that find nothing search for a while (spinning) and then sleep. A producer wakes one only if one sleeps and
// none is searching: a searcher that has found something looks whether there is more, and passes the duty on by waking
// the next one before it goes to work. So work never waits while a consumer sleeps and nobody is on the way, and adding
// many items in a row costs few wake-ups.
//
// The idle word, 64 bits: the low half counts grants, wake-ups that no sleeper has taken yet (sleepers sleep while it
// is 0); above are 16 bits of sleepers without a grant and 16 bits of searchers, those on their way included.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>

#include <qvxsys/SyncWords.h>

namespace qvxsys::task {

class WorkQueue
{
public:
    using Work = std::function<void()>;
    enum class Offer { Accepted, Refused, Closed, Empty };
    static constexpr std::uint64_t kMostConsumers = 0xFFFF;

    WorkQueue() noexcept = default;
    WorkQueue(WorkQueue const&) = delete;
    WorkQueue& operator=(WorkQueue const&) = delete;
    ~WorkQueue();

    /// Takes `work` over if the result is Accepted. Refused: not `forced`, and as many items as the capacity are
    /// accepted and unfinished.
    Offer Push(Work& work, bool forced);
    /// The next item if there is one.
    [[nodiscard]] bool TryPop(Work& work);
    /// Waits for an item; false when the queue is closed and empty.
    [[nodiscard]] bool WaitAndPop(Work& work);
    /// An item that was taken is done.
    void Finish() noexcept { m_finished.fetch_add(1); }
    /// Refuses further items and lets the waiting go. False: it was closed before.
    bool Close() noexcept;

    /// How many unforced items may be accepted and unfinished.
    void AddCapacity() noexcept { m_capacity.fetch_add(1); }
    /// Returns what is left.
    std::uint64_t RemoveCapacity() noexcept { return m_capacity.fetch_sub(1) - 1; }

    [[nodiscard]] std::uint64_t Capacity() const noexcept { return m_capacity.load(); }
    [[nodiscard]] std::uint64_t Accepted() const noexcept { return m_producers.accepted.load(); }
    [[nodiscard]] std::uint64_t Taken() const noexcept { return m_consumers.taken.load(); }
    [[nodiscard]] std::uint64_t Finished() const noexcept { return m_finished.load(); }
    /// Consumers that sleep and have not been sent for.
    [[nodiscard]] std::uint64_t Sleeping() const noexcept { return Sleepers(m_idle.load()); }
    [[nodiscard]] std::uint64_t Refused() const noexcept { return m_producers.refused.load(); }

private:
    struct Chunk;
    class Locked;
    static constexpr std::size_t kLine = 64;
    static constexpr std::uint64_t kGrant = 1;
    static constexpr std::uint64_t kSleeper = std::uint64_t(1) << 32;
    static constexpr std::uint64_t kSearcher = std::uint64_t(1) << 48;

    [[nodiscard]] static std::uint64_t Grants(std::uint64_t idle) noexcept { return idle & 0xFFFFFFFF; }
    [[nodiscard]] static std::uint64_t Sleepers(std::uint64_t idle) noexcept { return idle >> 32 & 0xFFFF; }
    [[nodiscard]] static std::uint64_t Searchers(std::uint64_t idle) noexcept { return idle >> 48; }

    [[nodiscard]] bool HasWork() const noexcept { return Accepted() != Taken(); }
    void* CellToFill();
    void WakeIfNobodySearches() noexcept;
    void Sleep() noexcept;
    bool TakeGrant() noexcept;
    void StopSleeping() noexcept;
    Chunk* NewChunk();
    void Recycle(Chunk* chunk) noexcept;

    /// What producers write, under their lock.
    struct alignas(kLine) Producers
    {
        qvxsys::detail::LockWord lock;
        std::atomic<bool> closed = false;
        Chunk* last = nullptr;
        std::atomic<std::uint64_t> accepted = 0;
        std::atomic<std::uint64_t> refused = 0;
    };
    /// What consumers write, under theirs.
    struct alignas(kLine) Consumers
    {
        qvxsys::detail::LockWord lock;
        Chunk* first = nullptr;
        std::atomic<std::uint64_t> taken = 0;
        /// What was last seen of `accepted`.
        std::uint64_t known = 0;
    };

    Producers m_producers;
    Consumers m_consumers;
    alignas(kLine) std::atomic<std::uint64_t> m_finished = 0;
    alignas(kLine) std::atomic<std::uint64_t> m_idle = 0;
    std::atomic<std::uint64_t> m_capacity = 0;
    /// The first chunk, for the consumers to begin with; and an empty one.
    alignas(kLine) std::atomic<Chunk*> m_origin = nullptr;
    std::atomic<Chunk*> m_spare = nullptr;
};

} // namespace qvxsys::task
