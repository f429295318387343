#pragma once
// What the process's pool and manager are made with (TThreadPool::Configure).

#include <functional>

#include <qvxsys/TStringCore.h>

namespace qvxsys::task {

struct PoolSettings
{
    unsigned int numThreads = 0;
    std::function<void()> onThreadStart;
    std::function<void()> onThreadExit;
    std::function<void(TStringCore)> log;

    /// Never destroyed, so they are there at exit too.
    static void Set(PoolSettings settings);
    static PoolSettings Get();
    static unsigned int NumberOfThreads() noexcept;
};

} // namespace qvxsys::task
