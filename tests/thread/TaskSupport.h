#pragma once
// What the tests of tasks and pools share.

#include <chrono>
#include <functional>
#include <thread>

#include <gtest/gtest.h>
#include <qvxsys/qvxsys.h>

#include "support/LogicAsserts.h"
#include "support/Threads.h"

inline constexpr std::chrono::milliseconds kNoLimit = std::chrono::milliseconds::max();

/// The check that fails in `body`, as "FILE LINE: CONDITION"; "" when none does.
template<class Body>
std::string FailedCheck(Body const& body, HookThat does = HookThat::Throws)
{
    auto const raised = AssertRaisedBy(body, does);
    return raised ? raised->file + " " + std::to_string(raised->line) + ": " + raised->condition : "";
}

/// This check fails in `body`, whatever the hook does.
template<class Body>
void ExpectFailedCheck(Body const& body, std::string const& check)
{
    for (HookThat const does : {HookThat::Throws, HookThat::Returns}) {
        std::string const failed = FailedCheck(body, does);
        EXPECT_TRUE(failed.ends_with(check)) << failed << " is not " << check;
    }
}

/// Signals an event when its thread is about to sleep.
class TellsOfBlocking : public AsyncTask::IWaitHandler
{
public:
    explicit TellsOfBlocking(TEvent& event) : m_event(event) {}
    void BeforeBlocking(AsyncTask::SharedStateBase const&) noexcept override { m_event.Signal(); }
    void AfterBlocking(AsyncTask::SharedStateBase const&) noexcept override {}

private:
    TEvent& m_event;
};

/// The text of the exception that `body` throws, "" when it throws none.
template<class Exception, class Body>
TStringCore MessageOf(Body const& body)
{
    try {
        body();
    } catch (Exception const& e) {
        return e.GetMessagesFront();
    }
    return {};
}

/// The process has a pool of so many threads, and a manager, as long as this lives.
class Workers
{
public:
    explicit Workers(unsigned int threads)
        : m_pool(threads, nullptr, nullptr), m_manager(nullptr, nullptr),
          m_poolBefore(TestHooks::SwapThreadPool(&m_pool)),
          m_managerBefore(TestHooks::SwapNonThreadPoolManager(&m_manager))
    {}
    Workers(Workers const&) = delete;
    Workers& operator=(Workers const&) = delete;
    ~Workers()
    {
        m_pool.JoinAll(kNoLimit);
        m_manager.Close(kNoLimit);
        TestHooks::SwapThreadPool(m_poolBefore);
        TestHooks::SwapNonThreadPoolManager(m_managerBefore);
    }
    TThreadPool& Pool() { return m_pool; }
    NonThreadPoolWorkerManager& Manager() { return m_manager; }

private:
    TThreadPool m_pool;
    NonThreadPoolWorkerManager m_manager;
    TThreadPool* m_poolBefore;
    NonThreadPoolWorkerManager* m_managerBefore;
};

/// The process's own pool while a test runs.
class ConfiguredPool
{
public:
    explicit ConfiguredPool(unsigned int threads) { TThreadPool::Configure(threads, nullptr, nullptr, nullptr); }
    ~ConfiguredPool()
    {
        TThreadPool::Shutdown(kNoLimit);
        TThreadPool::Configure(0, nullptr, nullptr, nullptr);
    }
    ConfiguredPool(ConfiguredPool const&) = delete;
    ConfiguredPool& operator=(ConfiguredPool const&) = delete;
};

/// Items that run until they are let go.
class Blockers
{
public:
    explicit Blockers(unsigned int count) : m_started(count) {}
    ~Blockers() { Release(); }
    Blockers(Blockers const&) = delete;
    Blockers& operator=(Blockers const&) = delete;

    [[nodiscard]] std::function<void()> Item()
    {
        return [this] {
            m_started.Signal();
            m_go.Wait();
        };
    }
    void AwaitAll() { m_started.Wait(); }
    void Release() { m_go.Signal(); }

private:
    TCountdownEvent m_started;
    TEvent m_go;
};
