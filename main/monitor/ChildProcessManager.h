#pragma once
// The child processes that are registered with the resource manager: their use is added to that of its own process.

#include <cstdint>
#include <functional>
#include <map>

#include <qvxsys/TLocks.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/ThreadAnnotations.h>

#include "MonitoredProcess.h"

namespace qvxsys::monitor {

/// All members may be called from any thread. The log function is called on the caller's, before the lock is taken; an
/// empty one throws std::bad_function_call.
class ChildProcessManager
{
public:
    explicit ChildProcessManager(std::function<void(TStringCore const&)> logFunc);
    ChildProcessManager(ChildProcessManager const&) = delete;
    ChildProcessManager& operator=(ChildProcessManager const&) = delete;
    ~ChildProcessManager();

    /// Logs "Resource Manager: Adding child process: " + pid. Throws what MonitoredProcess throws for a process that
    /// does not run. A process that is there already raises the logic assertion
    /// "m_processes.emplace(pid, pid).second" and stays as it was.
    void Add(unsigned int pid);
    /// Logs "Resource Manager: Removing child process: " + pid. One that is not there raises the logic assertion
    /// "m_processes.erase(pid) > 0".
    void Remove(unsigned int pid);

    /// The children's GetCpuUsage() added up in 8 bits, in the order of their ids, and then no more than 100: three
    /// times 100 gives 44. Asks each child, so what it measures starts anew.
    [[nodiscard]] std::uint8_t GetCpuUsage();
    /// The children's private bytes.
    [[nodiscard]] std::uint64_t GetMemoryUsage();

private:
    TRecursiveMutex m_mutex;
    std::map<unsigned int, MonitoredProcess> m_processes QVXSYS_GUARDED_BY(m_mutex);
    std::function<void(TStringCore const&)> const m_logFunc;
};

} // namespace qvxsys::monitor
