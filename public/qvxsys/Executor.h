#pragma once
// Where the library's tasks go (IExecutor), and an executor for tests, which runs them one by one when it is told to
// (ManualExecutor).
//
//     AsyncTask::ManualExecutor executor;                        // in place of pool and threads, while it lives
//     Service service;
//     service.LoadInBackground();
//     EXPECT_FALSE(service.IsLoaded());
//     executor.RunAll();
//     EXPECT_TRUE(service.IsLoaded());
//
// AsyncTask::ScheduleOnThreadPool and RunOnDedicatedThread (TThreadPool.h) ask the executor, and with them everything
// that starts tasks by a Launch. Without one, which is the rule, they use the process's pool and threads. What calls a
// pool or a manager directly is not affected, nor are parallel loops. Together with ManualClock (Timer.h), code that
// starts tasks and sets deadlines runs in a test as the test says, on one thread.

#include <cstddef>
#include <deque>
#include <functional>

#include <qvxsys/Launch.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TLocks.h>

namespace AsyncTask {

/// Takes work for other threads. Called from any thread; must be there until no thread can call it any more.
class QVXSYS_API IExecutor
{
public:
    IExecutor() noexcept = default;
    IExecutor(IExecutor const&) noexcept = default;
    IExecutor& operator=(IExecutor const&) noexcept = default;
    virtual ~IExecutor();

    /// What ScheduleOnThreadPool does: false when the work was refused and is the caller's to run elsewhere, which is
    /// not expected for PoolQueued and PoolOnly unless the executor is closed.
    virtual bool Schedule(std::function<void()> work, Launch launch) = 0;
    /// What RunOnDedicatedThread does.
    virtual void RunDedicated(std::function<void()> work) = 0;
};

/// Keeps work until it is run by RunOne or RunAll, in the order in which it came. Work may come from any thread.
///
/// Waits inside of work are real: work that waits for other kept work must be able to run that itself, as futures do
/// for all launches but PoolOnly.
class QVXSYS_API ManualExecutor final : public IExecutor
{
public:
    /// Becomes the executor of the process.
    ManualExecutor();
    /// Puts the previous one back. Work that has not run is destroyed.
    ~ManualExecutor() override;
    ManualExecutor(ManualExecutor const&) = delete;
    ManualExecutor& operator=(ManualExecutor const&) = delete;

    bool Schedule(std::function<void()> work, Launch launch) override;
    void RunDedicated(std::function<void()> work) override;

    /// As if the pool had so many threads: work that is not to be queued is refused while as many pieces of work for
    /// the pool are kept. Without limit at first.
    void SetThreads(std::size_t threads);

    /// Runs the oldest work on this thread; false when there is none. What the work throws comes out here.
    bool RunOne();
    /// Runs work until there is none, what it adds included; returns how many pieces.
    std::size_t RunAll();
    /// How many pieces of work are kept.
    [[nodiscard]] std::size_t Pending() const;

private:
    struct Item
    {
        std::function<void()> work;
        bool onPool = false;
    };

    mutable TRecursiveMutex m_mutex;
    std::deque<Item> m_items QVXSYS_GUARDED_BY(m_mutex);
    std::size_t m_forPool QVXSYS_GUARDED_BY(m_mutex) = 0;
    std::size_t m_threads QVXSYS_GUARDED_BY(m_mutex);
    IExecutor* m_previous;
};

} // namespace AsyncTask

namespace TestHooks {

/// Has another executor from now on, null for pool and threads; returns the one before. Neither is owned.
QVXSYS_API AsyncTask::IExecutor* SwapExecutor(AsyncTask::IExecutor* executor);

} // namespace TestHooks
