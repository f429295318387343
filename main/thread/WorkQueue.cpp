#include "WorkQueue.h"

#include <memory>
#include <new>
#include <utility>

#include "Parking.h"
#include "Spinning.h"
#include "Waiting.h"

namespace qvxsys::task {

using qvxsys::detail::HalfAddress;
using qvxsys::detail::LockWord;
using qvxsys::detail::WordHalf;
using qvxsys::sync::SystemParking;

/// The only searcher spins so much longer, 30 to 100 microseconds: longer than it takes to wake a thread on a halted
/// processor. Otherwise a thread that adds one item at a time, and waits for it, and a worker would wake each other for
/// each item for ever, each asleep when the other one is ready.
constexpr unsigned int kOnlySearcher = 10;

/// 4 KiB with its links.
struct WorkQueue::Chunk
{
    static constexpr std::size_t kCells = 127;

    Chunk* next = nullptr;
    alignas(Work) unsigned char cells[kCells][sizeof(Work)];
};

class WorkQueue::Locked
{
public:
    explicit Locked(LockWord& lock) noexcept : m_lock(lock)
    {
        if (!m_lock.TryAcquire()) [[unlikely]] {
            qvxsys::sync::LockContended<SystemParking>(m_lock);
        }
    }
    ~Locked()
    {
        if (m_lock.Release()) [[unlikely]] {
            SystemParking::WakeOne(m_lock.Address());
        }
    }
    Locked(Locked const&) = delete;
    Locked& operator=(Locked const&) = delete;

private:
    LockWord& m_lock;
};

WorkQueue::~WorkQueue()
{
    Work work;
    while (TryPop(work)) {
        work = nullptr;
    }
    delete (m_consumers.first != nullptr ? m_consumers.first : m_origin.load());
    delete m_spare.load();
}

WorkQueue::Chunk* WorkQueue::NewChunk()
{
    if (Chunk* const spare = m_spare.exchange(nullptr)) {
        spare->next = nullptr;
        return spare;
    }
    return new Chunk;
}

void WorkQueue::Recycle(Chunk* chunk) noexcept
{
    delete m_spare.exchange(chunk);
}

/// Where the next item goes. A new chunk is linked now, and seen by nobody before the item is.
void* WorkQueue::CellToFill()
{
    std::size_t const cell = m_producers.accepted.load(std::memory_order_relaxed) % Chunk::kCells;
    if (cell == 0) {
        Chunk* const chunk = NewChunk();
        if (m_producers.last == nullptr) {
            m_origin.store(chunk);
        } else {
            m_producers.last->next = chunk;
        }
        m_producers.last = chunk;
    }
    return m_producers.last->cells[cell];
}

WorkQueue::Offer WorkQueue::Push(Work& work, bool forced)
{
    {
        Locked const lock(m_producers.lock);
        if (m_producers.closed.load(std::memory_order_relaxed)) {
            return Offer::Closed;
        }
        if (!work) {
            return Offer::Empty;
        }
        std::uint64_t const accepted = m_producers.accepted.load(std::memory_order_relaxed);
        if (!forced && accepted - m_finished.load() >= m_capacity.load()) {
            m_producers.refused.store(m_producers.refused.load(std::memory_order_relaxed) + 1,
                                      std::memory_order_relaxed);
            return Offer::Refused;
        }
        new (CellToFill()) Work(std::move(work));
        m_producers.accepted.store(accepted + 1, std::memory_order_release);
    }
    // Giving up the lock is a locked instruction and thus, on this processor family, a barrier: the item is visible
    // before the idle word is read. A consumer announces its sleep and looks for work in the opposite order.
    std::atomic_signal_fence(std::memory_order_seq_cst);
    WakeIfNobodySearches();
    return Offer::Accepted;
}

bool WorkQueue::TryPop(Work& work)
{
    Chunk* emptied = nullptr;
    {
        Locked const lock(m_consumers.lock);
        std::uint64_t const taken = m_consumers.taken.load(std::memory_order_relaxed);
        if (taken == m_consumers.known) {
            m_consumers.known = m_producers.accepted.load(std::memory_order_acquire);
            if (taken == m_consumers.known) {
                return false;
            }
        }
        std::size_t const cell = taken % Chunk::kCells;
        if (cell == 0) {
            emptied = m_consumers.first;
            m_consumers.first = emptied != nullptr ? emptied->next : m_origin.load();
        }
        auto* const item = std::launder(reinterpret_cast<Work*>(m_consumers.first->cells[cell]));
        work = std::move(*item);
        std::destroy_at(item);
        m_consumers.taken.store(taken + 1, std::memory_order_release);
    }
    if (emptied != nullptr) [[unlikely]] {
        Recycle(emptied);
    }
    return true;
}

void WorkQueue::WakeIfNobodySearches() noexcept
{
    std::uint64_t idle = m_idle.load();
    while (Sleepers(idle) != 0 && Searchers(idle) == 0) {
        if (m_idle.compare_exchange_weak(idle, idle - kSleeper + kGrant + kSearcher)) {
            SystemParking::WakeOne(HalfAddress(m_idle, WordHalf::Low));
            return;
        }
    }
}

bool WorkQueue::WaitAndPop(Work& work)
{
    m_idle.fetch_add(kSearcher);
    for (;;) {
        // What was accepted before it was closed is seen after it is seen closed.
        bool const closed = m_producers.closed.load();
        if (HasWork() && TryPop(work)) {
            m_idle.fetch_sub(kSearcher);
            if (HasWork()) {
                WakeIfNobodySearches();
            }
            return true;
        }
        if (closed && !HasWork()) {
            m_idle.fetch_sub(kSearcher);
            return false;
        }
        auto const thereIsSome = [this] { return HasWork() || m_producers.closed.load(); };
        qvxsys::sync::SpinPace pace = qvxsys::sync::kEventPace;
        pace.times = Searchers(m_idle.load()) == 1 ? kOnlySearcher : 1;
        if (!qvxsys::sync::SpinUntil(pace, thereIsSome)) {
            Sleep();
        }
    }
}

/// From searcher to sleeper and back.
void WorkQueue::Sleep() noexcept
{
    m_idle.fetch_add(kSleeper - kSearcher);
    if (HasWork() || m_producers.closed.load()) {
        StopSleeping();
        return;
    }
    while (!TakeGrant()) {
        if (SystemParking::Park(HalfAddress(m_idle, WordHalf::Low), 0, {}) == qvxsys::sync::Parked::Refused) {
            std::this_thread::yield();
        }
    }
}

bool WorkQueue::TakeGrant() noexcept
{
    std::uint64_t idle = m_idle.load();
    while (Grants(idle) != 0) {
        if (m_idle.compare_exchange_weak(idle, idle - kGrant)) {
            return true;
        }
    }
    return false;
}

/// When there is no sleeper left without a grant, one of the grants is for the caller.
void WorkQueue::StopSleeping() noexcept
{
    std::uint64_t idle = m_idle.load();
    while (!m_idle.compare_exchange_weak(idle, Sleepers(idle) != 0 ? idle - kSleeper + kSearcher : idle - kGrant)) {
    }
}

bool WorkQueue::Close() noexcept
{
    {
        Locked const lock(m_producers.lock);
        if (m_producers.closed.exchange(true)) {
            return false;
        }
    }
    std::uint64_t idle = m_idle.load();
    while (!m_idle.compare_exchange_weak(idle, idle + Sleepers(idle) * (kGrant + kSearcher - kSleeper))) {
    }
    SystemParking::WakeAll(HalfAddress(m_idle, WordHalf::Low));
    return true;
}

} // namespace qvxsys::task
