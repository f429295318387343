#pragma once
// The host's functions that give back one kind of resource.

#include <functional>
#include <map>

#include <qvxsys/TLocks.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/ThreadAnnotations.h>

namespace qvxsys::monitor {

/// All members may be called from any thread; they share one lock, which is held while the functions run.
class ReclaimFunctions
{
public:
    explicit ReclaimFunctions(TStringCore name);
    ReclaimFunctions(ReclaimFunctions const&) = delete;
    ReclaimFunctions& operator=(ReclaimFunctions const&) = delete;

    /// Raises the logic assertions "func" for an empty function and "m_functions.insert(make_pair(name, func)).second"
    /// for a name that is there; the function that has it stays.
    void Add(TStringCore const& name, std::function<void()> func);
    /// Raises the logic assertion "m_functions.erase(name) > 0".
    void Remove(TStringCore const& name);

    /// Calls them all in the order of their names, and says so; how many were called. A function may add and remove
    /// functions: what it adds behind its own name is called too.
    std::size_t Reclaim(std::function<void(TStringCore const&)> const& logFunc);

private:
    TStringCore const m_name;
    TRecursiveMutex m_mutex;
    std::map<TStringCore, std::function<void()>> m_functions QVXSYS_GUARDED_BY(m_mutex);
};

} // namespace qvxsys::monitor
