#pragma once
// What the tests of pools and loops share.

#include <chrono>
#include <functional>

#include <gtest/gtest.h>
#include <qvxsys/qvxsys.h>

#include "TaskSupport.h"

namespace testing_support {

inline constexpr std::chrono::milliseconds kNoLimit = std::chrono::milliseconds::max();

/// The process's pool while a test runs.
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

} // namespace testing_support
