#include <atomic>
#include <list>
#include <mutex>
#include <thread>
#include <utility>

#include <qvxsys/TEvent.h>
#include <qvxsys/TLocks.h>
#include <qvxsys/TThreadPool.h>

#include "LogicAssert.h"
#include "PoolSettings.h"
#include "WorkerScope.h"

using qvxsys::task::PoolSettings;
using qvxsys::task::WorkerKind;

namespace {

constinit TRecursiveMutex g_managerMutex;
constinit std::atomic<NonThreadPoolWorkerManager*> g_manager = nullptr;

} // namespace

/// What the threads share with the manager, and keep when it goes.
struct NonThreadPoolWorkerManager::WorkBarrier
{
    using Threads = std::list<std::thread>;

    void Leave(Threads::iterator self);
    void JoinLast();
    void Abandon();

    TRecursiveMutex mutex;
    unsigned int running QVXSYS_GUARDED_BY(mutex) = 0;
    bool closed QVXSYS_GUARDED_BY(mutex) = false;
    bool abandoned QVXSYS_GUARDED_BY(mutex) = false; ///< nobody will join the last one
    Threads threads QVXSYS_GUARDED_BY(mutex);        ///< those that run
    /// The thread that was last to leave and only ends. Each that leaves joins the one before it, so there is one at
    /// most; why it is joined at all is said in TThreadPool::JoinAll.
    std::thread last QVXSYS_GUARDED_BY(mutex);
    TEvent allDone;
};

void NonThreadPoolWorkerManager::WorkBarrier::Leave(Threads::iterator self)
{
    std::thread before;
    {
        TLockScope const lock(mutex);
        before = std::exchange(last, std::move(*self));
        threads.erase(self);
        if (abandoned) {
            last.detach();
        }
        --running;
        if (running == 0 && closed) {
            allDone.Signal();
        }
    }
    if (before.joinable()) {
        before.join();
    }
}

void NonThreadPoolWorkerManager::WorkBarrier::JoinLast()
{
    std::thread thread;
    {
        TLockScope const lock(mutex);
        thread.swap(last);
    }
    if (thread.joinable()) {
        thread.join();
    }
}

void NonThreadPoolWorkerManager::WorkBarrier::Abandon()
{
    TLockScope const lock(mutex);
    abandoned = true;
    if (last.joinable()) {
        last.detach();
    }
}

NonThreadPoolWorkerManager& NonThreadPoolWorkerManager::Get()
{
    if (NonThreadPoolWorkerManager* const manager = g_manager.load(std::memory_order_acquire)) {
        return *manager;
    }
    std::lock_guard const lock(g_managerMutex);
    NonThreadPoolWorkerManager* manager = g_manager.load();
    if (manager == nullptr) {
        PoolSettings settings = PoolSettings::Get();
        manager = new NonThreadPoolWorkerManager(std::move(settings.onThreadStart), std::move(settings.onThreadExit));
        g_manager.store(manager);
    }
    return *manager;
}

/// A manager with tasks left stays in memory, for the same reason as a pool does.
bool NonThreadPoolWorkerManager::Shutdown(std::chrono::milliseconds timeout)
{
    std::lock_guard const lock(g_managerMutex);
    NonThreadPoolWorkerManager* const manager = g_manager.load();
    if (manager == nullptr) {
        return true;
    }
    bool const closed = manager->Close(timeout);
    g_manager.store(nullptr);
    if (closed) {
        delete manager;
    } else {
        manager->m_barrier->Abandon();
        qvxsys::task::KeepForEver(manager);
    }
    return closed;
}

NonThreadPoolWorkerManager::NonThreadPoolWorkerManager(std::function<void()> onThreadStart,
                                                       std::function<void()> onThreadExit)
    : m_barrier(std::make_shared<WorkBarrier>()), m_onThreadStart(std::move(onThreadStart)),
      m_onThreadExit(std::move(onThreadExit))
{}

NonThreadPoolWorkerManager::~NonThreadPoolWorkerManager()
{
    Close(std::chrono::milliseconds::max());
}

void NonThreadPoolWorkerManager::RunTask(std::function<void()> task)
{
    QVX_LOGIC_ASSERT(task);
    if (!task) {
        return;
    }
    // Held until the thread is in the list, where it looks for itself when it leaves.
    TLockScope const lock(m_barrier->mutex);
    if (m_barrier->closed) {
        return;
    }
    auto const self = m_barrier->threads.emplace(m_barrier->threads.end());
    try {
        *self = std::thread([barrier = m_barrier, self, onStart = m_onThreadStart, onExit = m_onThreadExit,
                             work = std::move(task)]() mutable noexcept {
            qvxsys::task::RunWorker(WorkerKind::Dedicated, "qvx-task", onStart, onExit,
                                    [&work] { qvxsys::task::RunItem(WorkerKind::Dedicated, work); });
            // Whoever waits for the manager may rely on what the task held being gone.
            work = nullptr;
            barrier->Leave(self);
        });
    } catch (...) {
        m_barrier->threads.erase(self);
        throw;
    }
    ++m_barrier->running;
}

bool NonThreadPoolWorkerManager::Close(std::chrono::milliseconds timeout)
{
    bool done = false;
    {
        TLockScope const lock(m_barrier->mutex);
        m_barrier->closed = true;
        done = m_barrier->running == 0;
    }
    if (!done && !m_barrier->allDone.Wait(timeout)) {
        return false;
    }
    m_barrier->JoinLast();
    return true;
}

unsigned int NonThreadPoolWorkerManager::GetThreadCount()
{
    TLockScope const lock(m_barrier->mutex);
    return m_barrier->running;
}

namespace TestHooks {

NonThreadPoolWorkerManager* SwapNonThreadPoolManager(NonThreadPoolWorkerManager* manager)
{
    std::lock_guard const lock(g_managerMutex);
    return g_manager.exchange(manager);
}

} // namespace TestHooks
