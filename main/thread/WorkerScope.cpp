#include "WorkerScope.h"

#include <mutex>
#include <utility>
#include <vector>

#include <qvxsys/AsyncTaskTls.h>
#include <qvxsys/SharedState.h>
#include <qvxsys/TLocks.h>

#include "ExecutionHook.h"
#include "ThreadPlatform.h"
#include "ThreadRecord.h"

namespace qvxsys::task {

namespace {

constinit TRecursiveMutex g_keptMutex;

} // namespace

void RunWorker(WorkerKind kind, char const* name, std::function<void()> const& onStart,
               std::function<void()> const& onExit, std::function<void()> const& body)
{
    platform::NameThisThread(name);
    if (kind == WorkerKind::Pool) {
        MarkPoolThread();
    }
    if (onStart) {
        onStart();
    }
    body();
    if (onExit) {
        onExit();
    }
    if (auto* const cleanUp = AsyncTask::TLS::Get().GetThreadCleanupFunc()) {
        cleanUp();
    }
}

void RunItem(WorkerKind kind, std::function<void()>& item)
{
    if (HasExecutionHook()) [[unlikely]] {
        item = AsyncTask::_ApplyExecutionHook(std::move(item), kind == WorkerKind::Pool);
        if (!item) {
            return;
        }
    }
    item();
}

void KeepForEver(void const* object)
{
    std::lock_guard const lock(g_keptMutex);
    static auto& kept = *new std::vector<void const*>;
    kept.push_back(object);
}

} // namespace qvxsys::task
