#include <qvxsys/TThreadPool.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <qvxsys/LogicException.h>
#include <qvxsys/TEvent.h>
#include <qvxsys/TLocks.h>

#include "PoolSettings.h"
#include "ThreadPlatform.h"
#include "WorkQueue.h"
#include "WorkerScope.h"

using qvxsys::task::PoolSettings;
using qvxsys::task::WorkerKind;
using qvxsys::task::WorkQueue;

namespace {

constexpr char const* kFile = "qvxsys/main/thread/TThreadPool";
constexpr int kNoThreadsLine = 67;
constexpr int kNoWorkLine = 121;

constexpr std::chrono::milliseconds kNoLimit = std::chrono::milliseconds::max();

constinit TRecursiveMutex g_poolMutex;
constinit std::atomic<TThreadPool*> g_pool = nullptr;

/// What a thread is doing, written by it alone.
struct alignas(64) Activity
{
    /// The time-stamp counter when it took the item that it is running; 0 while it has none.
    std::atomic<std::uint64_t> since = 0;
};

/// The state of the pool that the calling thread works for.
QVXSYS_TLS_INITIAL_EXEC thread_local constinit void const* t_state = nullptr;

/// More than that are not to be had, so none is started.
unsigned int Attainable(unsigned int numThreads)
{
    if (numThreads > WorkQueue::kMostConsumers) {
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    }
    return numThreads;
}

} // namespace

/// What the threads share with the pool, and keep when it goes.
struct TThreadPool::ThreadPoolState
{
    explicit ThreadPoolState(unsigned int numThreads) : activities(numThreads) {}

    void Work(unsigned int number, std::function<void()> const& onStart, std::function<void()> const& onExit) noexcept;
    void RunItems(Activity& activity);
    void LetThreadsGo() noexcept;

    WorkQueue queue;
    TEvent allLeft;
    std::vector<Activity> activities;
    std::vector<std::thread> threads; ///< the pool's to touch, not theirs
    std::atomic<unsigned int> started = 0;
    std::uint64_t const cyclesAtStart = __builtin_ia32_rdtsc();
    std::chrono::steady_clock::time_point const timeAtStart = std::chrono::steady_clock::now();
};

/// Not to be left by an exception: that ends the process, where it was thrown, so that a debugger shows the thrower.
void TThreadPool::ThreadPoolState::Work(unsigned int number, std::function<void()> const& onStart,
                                        std::function<void()> const& onExit) noexcept
{
    t_state = this;
    qvxsys::task::RunWorker(WorkerKind::Pool, ("qvx-pool-" + std::to_string(number)).c_str(), onStart, onExit,
                            [this, number] { RunItems(activities[number - 1]); });
    if (queue.RemoveCapacity() == 0) {
        allLeft.Signal();
    }
}

void TThreadPool::ThreadPoolState::RunItems(Activity& activity)
{
    std::function<void()> item;
    for (;;) {
        if (!queue.TryPop(item)) {
            activity.since.store(0, std::memory_order_relaxed);
            if (!queue.WaitAndPop(item)) {
                return;
            }
        }
        activity.since.store(__builtin_ia32_rdtsc(), std::memory_order_relaxed);
        qvxsys::task::RunItem(WorkerKind::Pool, item);
        queue.Finish();
        item = nullptr;
    }
}

void TThreadPool::ThreadPoolState::LetThreadsGo() noexcept
{
    for (std::thread& thread : threads) {
        if (thread.joinable()) {
            thread.detach();
        }
    }
}

void TThreadPool::Configure(unsigned int numThreads, std::function<void()> onThreadStart,
                            std::function<void()> onThreadExit, std::function<void(TStringCore)> log)
{
    PoolSettings::Set({numThreads, std::move(onThreadStart), std::move(onThreadExit), std::move(log)});
}

bool TThreadPool::IsAvailable() noexcept
{
    return g_pool.load() != nullptr || PoolSettings::NumberOfThreads() != 0;
}

TThreadPool& TThreadPool::Get()
{
    if (TThreadPool* const pool = g_pool.load(std::memory_order_acquire)) {
        return *pool;
    }
    std::lock_guard const lock(g_poolMutex);
    TThreadPool* pool = g_pool.load();
    if (pool == nullptr) {
        PoolSettings const settings = PoolSettings::Get();
        if (settings.numThreads == 0) {
            ThrowLogicException(kFile, kNoThreadsLine, "g_numThreads > 0");
        }
        pool = new TThreadPool(settings.numThreads, settings.onThreadStart, settings.onThreadExit);
        g_pool.store(pool);
        if (settings.log) {
            TStringCore line = u"Started thread pool with: ";
            settings.log(line.append(std::to_string(settings.numThreads).c_str()).append(u" threads"));
        }
    }
    return *pool;
}

/// A pool whose threads have not all left stays in memory: what they still run may know its address, and is to find a
/// closed pool there. That is little, and once for each shutdown that failed.
bool TThreadPool::Shutdown(std::chrono::milliseconds timeout)
{
    std::lock_guard const lock(g_poolMutex);
    TThreadPool* const pool = g_pool.load();
    if (pool == nullptr) {
        return true;
    }
    bool const joined = pool->JoinAll(timeout);
    g_pool.store(nullptr);
    if (pool->m_state->queue.Capacity() == 0) {
        delete pool;
    } else {
        qvxsys::task::KeepForEver(pool);
    }
    return joined;
}

TThreadPool::TThreadPool(unsigned int numThreads, std::function<void()> onThreadStart,
                         std::function<void()> onThreadExit)
    : m_state(std::make_shared<ThreadPoolState>(Attainable(numThreads))), m_onThreadStart(std::move(onThreadStart)),
      m_onThreadExit(std::move(onThreadExit))
{
    if (numThreads == 0) {
        m_state->allLeft.Signal();
    }
    try {
        for (unsigned int number = 1; number <= numThreads; ++number) {
            AddThread(number);
        }
    } catch (...) {
        m_state->queue.Close();
        m_state->LetThreadsGo();
        throw;
    }
}

TThreadPool::~TThreadPool()
{
    JoinAll(kNoLimit);
}

void TThreadPool::AddThread(unsigned int number)
{
    // Counted first: the thread may be asked for work as soon as it is there.
    m_state->queue.AddCapacity();
    try {
        m_state->threads.emplace_back([state = m_state, number, onStart = m_onThreadStart, onExit = m_onThreadExit] {
            state->Work(number, onStart, onExit);
        });
    } catch (...) {
        m_state->queue.RemoveCapacity();
        throw;
    }
    m_state->started.store(number);
}

bool TThreadPool::AddWork(std::function<void()> work, TThreadPoolWork kind)
{
    auto const offer = m_state->queue.Push(work, kind == TThreadPoolWork::Queue);
    if (offer == WorkQueue::Offer::Empty) [[unlikely]] {
        ThrowLogicException(kFile, kNoWorkLine, "func");
    }
    return offer == WorkQueue::Offer::Accepted;
}

bool TThreadPool::JoinAll(std::chrono::milliseconds timeout)
{
    if (!m_state->queue.Close()) {
        return false;
    }
    if (!m_state->allLeft.Wait(timeout)) {
        m_state->LetThreadsGo(); // nobody joins a second time
        return false;
    }
    // They have left and only end, but a process that ends while they do may be stuck for ever: Windows stops them
    // where they are, perhaps in the middle of what the last thread needs for its own end.
    for (std::thread& thread : m_state->threads) {
        thread.join();
    }
    return true;
}

unsigned int TThreadPool::GetNumberOfThreads() const noexcept
{
    return m_state->started.load();
}

/// Reads in the order that cannot find more finished than accepted.
unsigned long long TThreadPool::GetThreadPoolUseCount() const noexcept
{
    std::uint64_t const finished = m_state->queue.Finished();
    return m_state->queue.Accepted() - finished;
}

bool TThreadPool::IsThreadPoolThread() const noexcept
{
    return t_state == m_state.get();
}

TThreadPoolStatistics TThreadPool::GetStatistics() const noexcept
{
    auto const& queue = m_state->queue;
    TThreadPoolStatistics result;
    result.finished = queue.Finished();
    std::uint64_t const taken = queue.Taken();
    result.queued = queue.Accepted() - taken;
    result.running = taken - result.finished;
    result.threads = queue.Capacity();
    result.sleeping = queue.Sleeping();
    result.refused = queue.Refused();

    // Cycles become time by what the pool's own life took of both, so nothing needs to be known of the counter.
    std::uint64_t const now = __builtin_ia32_rdtsc();
    std::uint64_t oldest = now;
    for (auto const& activity : m_state->activities) {
        std::uint64_t const since = activity.since.load(std::memory_order_relaxed);
        oldest = since != 0 ? std::min(oldest, since) : oldest;
    }
    std::chrono::duration<double, std::nano> const age = std::chrono::steady_clock::now() - m_state->timeAtStart;
    double const share = static_cast<double>(now - oldest) /
                         static_cast<double>(std::max<std::uint64_t>(1, now - m_state->cyclesAtStart));
    result.longestRunning = std::chrono::nanoseconds(static_cast<long long>(age.count() * std::clamp(share, 0.0, 1.0)));
    return result;
}

namespace AsyncTask {

void NameThisThread(char const* name) noexcept
{
    qvxsys::task::platform::NameThisThread(name);
}

} // namespace AsyncTask

namespace TestHooks {

TThreadPool* SwapThreadPool(TThreadPool* pool)
{
    std::lock_guard const lock(g_poolMutex);
    return g_pool.exchange(pool);
}

} // namespace TestHooks
