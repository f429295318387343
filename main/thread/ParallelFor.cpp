#include <qvxsys/ParallelFor.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include <qvxsys/Cancel.h>
#include <qvxsys/TThreadPool.h>

#include "Parking.h"
#include "Waiting.h"

namespace {

using qvxsys::detail::LoopBody;
using qvxsys::detail::LoopChunks;
using qvxsys::sync::SystemParking;

constinit std::atomic<bool> g_parallel = true;

/// Chunks are not cut smaller than about 5 microseconds of work, so that handing them out costs nothing, nor larger
/// than about a millisecond, so that a loop notices soon that it is cancelled.
constexpr double kLeastChunkCycles = 15'000;
constexpr double kMostChunkCycles = 3'000'000;
/// Chunks for each thread if all were as large as the first.
constexpr std::uint64_t kShares = 8;

/// A loop that is being worked on. Shared with helpers, since one that was asked may come when the loop is over; the
/// body is touched only by those who entered, and the caller waits for them to leave.
class Loop
{
public:
    Loop(LoopBody const& body, std::uint64_t begin, std::uint64_t end, LoopChunks const& chunks,
         unsigned int threads) noexcept
        : m_body(body), m_chunks(chunks), m_end(end), m_threads(threads), m_next(begin)
    {}

    void Help() noexcept;
    /// The caller's part. Throws what the loop throws.
    void Run();

private:
    static constexpr std::uint32_t kOver = std::uint32_t(1) << 31;

    [[nodiscard]] bool Enter() noexcept;
    void Leave() noexcept;
    void WorkOnChunks() noexcept;
    [[nodiscard]] bool NextChunk(std::uint64_t& begin, std::uint64_t& end) noexcept;
    void AwaitHelpers() noexcept;

    LoopBody const m_body;
    LoopChunks const m_chunks;
    std::uint64_t const m_end;
    std::uint64_t const m_threads;
    /// The caller's.
    RefCntPtr<TCancelEvent> const m_cancel = AsyncTask::Cancel::Get();
    /// Written by whoever sets m_failed first; read when all have left.
    std::exception_ptr m_exception;
    std::atomic<bool> m_failed = false;
    std::atomic<bool> m_cancelled = false;
    /// Helpers at work, and whether the loop is over for those who come later.
    std::atomic<std::uint32_t> m_helpers = 0;
    alignas(64) std::atomic<std::uint64_t> m_next;
};

bool Loop::Enter() noexcept
{
    std::uint32_t seen = m_helpers.load(std::memory_order_relaxed);
    do {
        if ((seen & kOver) != 0) {
            return false;
        }
    } while (!m_helpers.compare_exchange_weak(seen, seen + 1, std::memory_order_acquire, std::memory_order_relaxed));
    return true;
}

void Loop::Leave() noexcept
{
    if (m_helpers.fetch_sub(1, std::memory_order_acq_rel) == (kOver | 1)) {
        SystemParking::WakeOne(&m_helpers);
    }
}

bool Loop::NextChunk(std::uint64_t& begin, std::uint64_t& end) noexcept
{
    begin = m_next.load(std::memory_order_relaxed);
    do {
        if (begin >= m_end || m_failed.load(std::memory_order_relaxed)) {
            return false;
        }
        if (m_cancel != nullptr && m_cancel->IsSet()) {
            m_cancelled.store(true, std::memory_order_relaxed);
            return false;
        }
        std::uint64_t const left = m_end - begin;
        std::uint64_t const share = left / (m_threads * kShares);
        end = begin + std::min(left, std::clamp(share, m_chunks.least, m_chunks.most));
    } while (!m_next.compare_exchange_weak(begin, end, std::memory_order_relaxed));
    return true;
}

void Loop::WorkOnChunks() noexcept
{
    try {
        for (std::uint64_t begin = 0, end = 0; NextChunk(begin, end);) {
            m_body.run(m_body.body, begin, end);
        }
    } catch (...) {
        if (!m_failed.exchange(true, std::memory_order_acq_rel)) {
            m_exception = std::current_exception();
        }
    }
}

void Loop::Help() noexcept
{
    if (Enter()) {
        {
            AsyncTask::Cancel::CancelEventSetter const scope(m_cancel);
            WorkOnChunks();
        }
        Leave();
    }
}

void Loop::AwaitHelpers() noexcept
{
    std::uint32_t seen = m_helpers.fetch_or(kOver, std::memory_order_acq_rel) | kOver;
    auto const allLeft = [this, &seen] {
        seen = m_helpers.load(std::memory_order_acquire);
        return seen == kOver;
    };
    if (seen == kOver || qvxsys::sync::SpinUntil(qvxsys::sync::kEventPace, allLeft)) {
        return;
    }
    while (!allLeft()) {
        if (SystemParking::Park(&m_helpers, seen, {}) == qvxsys::sync::Parked::Refused) {
            std::this_thread::yield();
        }
    }
}

void Loop::Run()
{
    WorkOnChunks();
    AwaitHelpers();
    if (m_exception) {
        // Not to be destroyed by a helper that comes late and lets go of the loop last.
        std::rethrow_exception(std::exchange(m_exception, nullptr));
    }
    if (m_cancelled.load(std::memory_order_relaxed)) {
        throw AsyncTask::Cancel::MakeException();
    }
}

std::uint64_t Processors() noexcept
{
    static std::uint64_t const processors = qvxsys::sync::UsableProcessors();
    return processors;
}

bool MayHaveHelpers() noexcept
{
    return AsyncTask::IsParallelExecution() && Processors() > 1 && TThreadPool::IsAvailable();
}

} // namespace

namespace qvxsys::detail {

LoopChunks ChunksFor(std::uint64_t indexes, std::uint64_t cycles) noexcept
{
    double const rate = static_cast<double>(indexes) / static_cast<double>(cycles);
    auto const chunk = [rate](double cyclesPerChunk) {
        return static_cast<std::uint64_t>(std::clamp(rate * cyclesPerChunk, 1.0, 1e18));
    };
    return {chunk(kLeastChunkCycles), chunk(kMostChunkCycles)};
}

void RunLoopTogether(LoopBody const& body, std::uint64_t begin, std::uint64_t end, LoopChunks const& chunks)
{
    std::uint64_t const helpers = MayHaveHelpers() ? std::min(Processors() - 1, (end - begin - 1) / chunks.least) : 0;
    if (helpers == 0) {
        Loop(body, begin, end, chunks, 1).Run();
        return;
    }
    TThreadPool& pool = TThreadPool::Get();
    auto const loop = std::make_shared<Loop>(body, begin, end, chunks, static_cast<unsigned int>(helpers + 1));
    for (std::uint64_t i = 0; i < helpers && pool.AddWork([loop] { loop->Help(); }, TThreadPoolWork::IfIdle); ++i) {
    }
    loop->Run();
}

} // namespace qvxsys::detail

namespace AsyncTask {

unsigned int MostLoopThreads()
{
    if (!MayHaveHelpers()) {
        return 1;
    }
    return static_cast<unsigned int>(
        std::min<std::uint64_t>(Processors(), TThreadPool::Get().GetNumberOfThreads() + 1));
}

void SetParallelExecution(bool enabled) noexcept
{
    g_parallel.store(enabled);
}

bool IsParallelExecution() noexcept
{
    return g_parallel.load();
}

} // namespace AsyncTask

void ParallelForThread(unsigned int numThreads, unsigned long long begin, unsigned long long end,
                       std::function<void(unsigned long long)> const& body)
{
    TRecursiveMutex mutex;
    std::vector<std::exception_ptr> exceptions; // in the order of their arrival
    auto const runAndKeep = [&](unsigned long long index) {
        try {
            body(index);
        } catch (...) {
            TLockScope const lock(mutex);
            exceptions.push_back(std::current_exception());
        }
    };
    // Destroyed, and that means joined, before what its work refers to.
    TThreadPool pool(numThreads, nullptr, nullptr);
    for (unsigned long long i = begin; i < end; ++i) {
        if (!AsyncTask::IsParallelExecution() ||
            !pool.AddWork([&runAndKeep, i] { runAndKeep(i); }, TThreadPoolWork::IfIdle)) {
            body(i);
        }
    }
    pool.JoinAll(std::chrono::milliseconds::max());
    if (!exceptions.empty()) {
        std::rethrow_exception(exceptions.front());
    }
}
