#include "PoolSettings.h"

#include <atomic>
#include <mutex>
#include <utility>

#include <qvxsys/TLocks.h>

namespace qvxsys::task {

namespace {

constinit TRecursiveMutex g_mutex;
constinit std::atomic<unsigned int> g_numThreads = 0;

PoolSettings& Stored()
{
    static PoolSettings& settings = *new PoolSettings;
    return settings;
}

} // namespace

/// The functions that were there go after the lock: what they hold may do anything when it is destroyed.
void PoolSettings::Set(PoolSettings settings)
{
    PoolSettings& stored = Stored();
    std::lock_guard const lock(g_mutex);
    std::swap(stored, settings);
    g_numThreads.store(stored.numThreads);
}

PoolSettings PoolSettings::Get()
{
    PoolSettings const& stored = Stored();
    std::lock_guard const lock(g_mutex);
    return stored;
}

unsigned int PoolSettings::NumberOfThreads() noexcept
{
    return g_numThreads.load();
}

} // namespace qvxsys::task
