#include <qvxsys/Executor.h>

#include <atomic>
#include <limits>
#include <utility>

#include <qvxsys/TThreadPool.h>

#include "WorkerScope.h"

namespace {

constinit std::atomic<AsyncTask::IExecutor*> g_executor = nullptr;

bool MustBeQueued(AsyncTask::Launch launch) noexcept
{
    return launch == AsyncTask::Launch::PoolQueued || launch == AsyncTask::Launch::PoolOnly;
}

} // namespace

namespace AsyncTask {

IExecutor::~IExecutor() = default;

bool ScheduleOnThreadPool(std::function<void()>&& work, Launch launch)
{
    if (IExecutor* const executor = g_executor.load(std::memory_order_acquire)) {
        return executor->Schedule(std::move(work), launch);
    }
    return TThreadPool::Get().AddWork(std::move(work),
                                      MustBeQueued(launch) ? TThreadPoolWork::Queue : TThreadPoolWork::IfIdle);
}

void RunOnDedicatedThread(std::function<void()>&& work)
{
    if (IExecutor* const executor = g_executor.load(std::memory_order_acquire)) {
        executor->RunDedicated(std::move(work));
    } else {
        NonThreadPoolWorkerManager::Get().RunTask(std::move(work));
    }
}

ManualExecutor::ManualExecutor()
    : m_threads(std::numeric_limits<std::size_t>::max()), m_previous(TestHooks::SwapExecutor(this))
{}

ManualExecutor::~ManualExecutor()
{
    TestHooks::SwapExecutor(m_previous);
}

bool ManualExecutor::Schedule(std::function<void()> work, Launch launch)
{
    TLockScope const lock(m_mutex);
    if (!MustBeQueued(launch) && m_forPool >= m_threads) {
        return false;
    }
    m_items.push_back({std::move(work), true});
    ++m_forPool;
    return true;
}

void ManualExecutor::RunDedicated(std::function<void()> work)
{
    TLockScope const lock(m_mutex);
    m_items.push_back({std::move(work), false});
}

void ManualExecutor::SetThreads(std::size_t threads)
{
    TLockScope const lock(m_mutex);
    m_threads = threads;
}

bool ManualExecutor::RunOne()
{
    Item item;
    {
        TLockScope const lock(m_mutex);
        if (m_items.empty()) {
            return false;
        }
        item = std::move(m_items.front());
        m_items.pop_front();
        m_forPool -= item.onPool ? 1 : 0;
    }
    using qvxsys::task::WorkerKind;
    qvxsys::task::RunItem(item.onPool ? WorkerKind::Pool : WorkerKind::Dedicated, item.work);
    return true;
}

std::size_t ManualExecutor::RunAll()
{
    std::size_t count = 0;
    while (RunOne()) {
        ++count;
    }
    return count;
}

std::size_t ManualExecutor::Pending() const
{
    TLockScope const lock(m_mutex);
    return m_items.size();
}

} // namespace AsyncTask

namespace TestHooks {

AsyncTask::IExecutor* SwapExecutor(AsyncTask::IExecutor* executor)
{
    return g_executor.exchange(executor);
}

} // namespace TestHooks
