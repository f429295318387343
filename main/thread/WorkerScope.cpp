#include "WorkerScope.h"

#include <mutex>
#include <utility>
#include <vector>

#include <qvxsys/TLocks.h>

#include "ThreadPlatform.h"

namespace qvxsys::task {

namespace {

constinit TRecursiveMutex g_keptMutex;

} // namespace

void RunWorker(char const* name, std::function<void()> const& onStart, std::function<void()> const& onExit,
               std::function<void()> const& body)
{
    platform::NameThisThread(name);
    if (onStart) {
        onStart();
    }
    body();
    if (onExit) {
        onExit();
    }
}

void RunItem(std::function<void()>& item)
{
    item();
}

void KeepForEver(void const* object)
{
    std::lock_guard const lock(g_keptMutex);
    static auto& kept = *new std::vector<void const*>;
    kept.push_back(object);
}

} // namespace qvxsys::task
