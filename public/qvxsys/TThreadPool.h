#pragma once
// Where work runs: a pool of threads for the whole process (TThreadPool), and a thread of its own for work that may
// block for long (NonThreadPoolWorkerManager).
//
//     TThreadPool::Configure(4, nullptr, nullptr, Log);          // at start, once
//     ...
//     if (!TThreadPool::Get().AddWork([file] { Index(file); }, TThreadPoolWork::IfIdle)) {
//         Index(file);                                           // every thread is busy: here, then
//     }
//     TThreadPool::Get().AddWork([] { Tidy(); }, TThreadPoolWork::Queue);
//     NonThreadPoolWorkerManager::Get().RunTask([] { ServeUntilClosed(); });
//     ...
//     TThreadPool::Shutdown(std::chrono::seconds(5));            // before main returns
//     NonThreadPoolWorkerManager::Shutdown(std::chrono::seconds(5));
//
// Most programs start tasks through AsyncTask and loops through ParallelFor.h; both come here. Loops: do not give the
// pool one item per index, that is what ParallelFor is for.
//
// Work must not throw: an exception that leaves it ends the process, on a pool thread as on one of its own. The same is
// true of the functions that hosts have called at the start and the exit of each thread.
//
// A process may end while work runs. Nothing here waits for it: threads go on until the system ends them, and what they
// use of the library stays in memory. What they use of the host is the host's care; shutting down first avoids that.
//
// After a fork the child has the pool, but not its threads: what is added there never runs, and joining does not end.
//
// Threads: everything may be called from any thread at any time, except that a pool must not be destroyed while another
// thread calls it, and that Configure is meant for the start.

#include <chrono>
#include <functional>
#include <memory>

#include <qvxsys/Launch.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>

/// Whether AddWork may put work behind other work. Any value but 1 means 0.
enum class TThreadPoolWork : unsigned int {
    IfIdle = 0, ///< accepted while fewer items than threads are in use: a thread is free for it
    Queue = 1,  ///< always accepted; runs when its turn comes
};

/// What a pool is doing, at about one moment.
struct TThreadPoolStatistics
{
    unsigned long long threads = 0;  ///< that have been started and have not left
    unsigned long long sleeping = 0; ///< threads that sleep until there is work
    unsigned long long queued = 0;   ///< items that wait for a thread
    unsigned long long running = 0;  ///< items that a thread has taken and not finished
    unsigned long long finished = 0; ///< items since the pool was made
    unsigned long long refused = 0;  ///< items that AddWork did not accept because no thread was free
    /// For how long the item has been running that has been running longest; 0 when none is. Within a percent or so.
    std::chrono::nanoseconds longestRunning{0};
};

/// Threads that take work from one queue, first come first served. The number of threads is fixed.
///
/// An item costs two uncontended locked instructions to add and three to take and finish, no allocation beyond what
/// std::function makes of what it captures, and the waking of a thread only if one sleeps and none is on its way.
/// Threads that run out of work spin for a few microseconds at most (see TLocks.h) before they sleep.
///
/// Do not block in work on a small pool for what other queued work is to do: nobody may be left to do it.
class QVXSYS_API TThreadPool
{
public:
    /// What Get() makes the pool, and NonThreadPoolWorkerManager::Get() the manager, of: the number of threads, what
    /// each thread calls when it starts and when it exits, and who is told that the pool was started. Any function may
    /// be empty. Has no effect on what exists already.
    static void Configure(unsigned int numThreads, std::function<void()> onThreadStart,
                          std::function<void()> onThreadExit, std::function<void(TStringCore)> log);
    /// The process's pool, made by the first call (and the first after Shutdown) as configured; the log function is
    /// then called with "Started thread pool with: 4 threads", or whatever the number is. Without a number of threads
    /// raises the logic assertion "g_numThreads > 0"; when its hook returns, the result is a pool without threads.
    /// Throws what the constructor and the log function throw. Costs a load when the pool is there.
    [[nodiscard]] static TThreadPool& Get();
    /// Whether there is a pool that Get() would return at once, or settings to make one of.
    [[nodiscard]] static bool IsAvailable() noexcept;
    /// Joins the process's pool and takes it away; true if there is none. False when the time is over before all
    /// threads have left. They then finish what is queued in their own time.
    static bool Shutdown(std::chrono::milliseconds timeout);

    /// A pool of its own. Throws std::system_error when a thread cannot be started; those started before then leave.
    /// More than 65,535 threads cannot: none is started then.
    /// Threads are called "qvx-pool-1" and so on in debuggers; the start function may rename them (NameThisThread).
    TThreadPool(unsigned int numThreads, std::function<void()> onThreadStart, std::function<void()> onThreadExit);
    /// Joins without limit, unless that was done before.
    ~TThreadPool();
    TThreadPool(TThreadPool const&) = delete;
    TThreadPool& operator=(TThreadPool const&) = delete;

    /// Has `work` called by a thread of the pool. False when it was refused, because the pool is closed or no thread is
    /// free (see TThreadPoolWork): it is destroyed then without being called, before this returns. Empty work raises
    /// the logic assertion "func"; if its hook returns, the result is false. May throw std::bad_alloc, with no effect.
    bool AddWork(std::function<void()> work, TThreadPoolWork kind);

    /// Closes the pool: refuses new work, has what is queued done, and waits `timeout` for all threads to leave, and
    /// then until they have ended, with the destructors of what is local to them. False when the time is over, and at
    /// once when the pool was closed before. Timeouts as in TEvent.h. On a thread of the pool itself it cannot succeed.
    bool JoinAll(std::chrono::milliseconds timeout);

    /// The number of threads the pool was made with.
    [[nodiscard]] unsigned int GetNumberOfThreads() const noexcept;
    /// Items that were accepted and are not finished.
    [[nodiscard]] unsigned long long GetThreadPoolUseCount() const noexcept;
    /// Whether the calling thread is one of this pool's.
    [[nodiscard]] bool IsThreadPoolThread() const noexcept;
    /// Costs a few reads for each thread, and the pool nothing.
    [[nodiscard]] TThreadPoolStatistics GetStatistics() const noexcept;

private:
    struct ThreadPoolState;

    void AddThread(unsigned int number);

    std::shared_ptr<ThreadPoolState> m_state;
    std::function<void()> m_onThreadStart;
    std::function<void()> m_onThreadExit;
};

/// Runs each task on a thread of its own and knows how many are running, so that it can wait for them at the end.
class QVXSYS_API NonThreadPoolWorkerManager
{
public:
    /// The process's manager, made by the first call (and the first after Shutdown) with the functions that
    /// TThreadPool::Configure was given.
    [[nodiscard]] static NonThreadPoolWorkerManager& Get();
    /// Closes the process's manager and takes it away; true if there is none. False when the time is over before all
    /// tasks have ended; they then run on.
    static bool Shutdown(std::chrono::milliseconds timeout);

    /// With what is called at the start and the end of each thread.
    NonThreadPoolWorkerManager(std::function<void()> onThreadStart, std::function<void()> onThreadExit);
    /// Closes without limit, unless Close was called before.
    ~NonThreadPoolWorkerManager();
    NonThreadPoolWorkerManager(NonThreadPoolWorkerManager const&) = delete;
    NonThreadPoolWorkerManager& operator=(NonThreadPoolWorkerManager const&) = delete;

    /// Runs `task` on a new thread, called "qvx-task" in debuggers. A closed manager destroys it and says nothing. An
    /// empty task raises the logic assertion "task"; if its hook returns, nothing happens. Throws std::system_error
    /// when the thread cannot be started. Costs the start of a thread, tens of microseconds.
    void RunTask(std::function<void()> task);
    /// Refuses new tasks and waits `timeout` for running ones. Timeouts as in TEvent.h.
    bool Close(std::chrono::milliseconds timeout);
    /// Tasks that are running.
    [[nodiscard]] unsigned int GetThreadCount();

private:
    struct WorkBarrier;

    std::shared_ptr<WorkBarrier> m_barrier;
    std::function<void()> m_onThreadStart;
    std::function<void()> m_onThreadExit;
};

namespace AsyncTask {

/// TThreadPool::Get().AddWork(work): queued for PoolQueued and PoolOnly (values 4 and 5), otherwise only if a thread is
/// free. Tests may have it elsewhere (Executor.h).
QVXSYS_API bool ScheduleOnThreadPool(std::function<void()>&& work, Launch launch);
/// NonThreadPoolWorkerManager::Get().RunTask(work). Tests may have it elsewhere too.
QVXSYS_API void RunOnDedicatedThread(std::function<void()>&& work);

/// Gives the calling thread the name that debuggers and system tools show, UTF-8; Linux keeps the first 15 bytes.
QVXSYS_API void NameThisThread(char const* name) noexcept;

} // namespace AsyncTask

/// For tests: put another object in a singleton's place. The caller owns what it gets back and takes back what it gave;
/// Shutdown destroys what is there.
namespace TestHooks {

/// Puts a pool in the place of the process's; gives the one before.
QVXSYS_API TThreadPool* SwapThreadPool(TThreadPool* pool);
/// Puts a manager in the place of the process's; gives the one before.
QVXSYS_API NonThreadPoolWorkerManager* SwapNonThreadPoolManager(NonThreadPoolWorkerManager* manager);

} // namespace TestHooks
