#pragma once
// Which reporters there are.

#include <cstddef>
#include <vector>

#include <qvxsys/ResourceReporter.h>
#include <qvxsys/TLocks.h>
#include <qvxsys/ThreadAnnotations.h>

namespace qvxsys::monitor {

/// All members may be called from any thread.
class ResourceReporterManager
{
public:
    /// The process's one, made by the first call and never destroyed: reporters may outlive everything else.
    static ResourceReporterManager& Get();

    void Add(ResourceReporter* reporter);
    /// Raises the logic assertion "el != mng.m_reporters.end()" when it is not there.
    void Remove(ResourceReporter const* reporter);
    /// Calls them in the order in which they were added, under the lock.
    void NotifyAll(unsigned int seconds);

private:
    TRecursiveMutex m_mutex;
    std::vector<ResourceReporter*> m_reporters QVXSYS_GUARDED_BY(m_mutex);
    /// The index of the reporter to be called next, which those that go take along.
    std::size_t m_next QVXSYS_GUARDED_BY(m_mutex) = 0;
};

} // namespace qvxsys::monitor
