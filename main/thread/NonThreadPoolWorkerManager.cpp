#include <atomic>
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
    [[nodiscard]] bool Enter();
    void Leave();

    TRecursiveMutex mutex;
    unsigned int running QVXSYS_GUARDED_BY(mutex) = 0;
    bool closed QVXSYS_GUARDED_BY(mutex) = false;
    TEvent allDone;
};

bool NonThreadPoolWorkerManager::WorkBarrier::Enter()
{
    TLockScope const lock(mutex);
    running += closed ? 0 : 1;
    return !closed;
}

void NonThreadPoolWorkerManager::WorkBarrier::Leave()
{
    TLockScope const lock(mutex);
    --running;
    if (running == 0 && closed) {
        allDone.Signal();
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
    if (!task || !m_barrier->Enter()) {
        return;
    }
    try {
        std::thread([barrier = m_barrier, onStart = m_onThreadStart, onExit = m_onThreadExit,
                     work = std::move(task)]() mutable noexcept {
            qvxsys::task::RunWorker(WorkerKind::Dedicated, "qvx-task", onStart, onExit,
                                    [&work] { qvxsys::task::RunItem(WorkerKind::Dedicated, work); });
            // Whoever waits for the manager may rely on what the task held being gone.
            work = nullptr;
            barrier->Leave();
        }).detach();
    } catch (...) {
        m_barrier->Leave();
        throw;
    }
}

bool NonThreadPoolWorkerManager::Close(std::chrono::milliseconds timeout)
{
    {
        TLockScope const lock(m_barrier->mutex);
        m_barrier->closed = true;
        if (m_barrier->running == 0) {
            return true;
        }
    }
    return m_barrier->allDone.Wait(timeout);
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
