#include "InfoTable.h"

#include <algorithm>

namespace qvxsys::monitor {

void InfoTable::Store(ResourceValues const& values, std::int64_t now)
{
    std::uint32_t const processId = values.m_processId;
    bool known = false;
    {
        TLockScope const lock(m_mutex);
        known = m_entries.size() < kBelieved || m_entries.count(processId) != 0;
        if (!known && m_entries.size() >= kMost) {
            return;
        }
    }
    // Asked without the lock, which the checks need.
    if (!known && !m_isRunning(processId)) {
        return;
    }
    TLockScope const lock(m_mutex);
    Entry& entry = m_entries[processId];
    entry.values = values;
    entry.arrived = now;
    ++entry.received;
}

void InfoTable::Prune(std::uint32_t keep)
{
    m_processIds.clear();
    VisitOthers(keep,
                [this](ResourceValues const& values) { m_processIds.push_back(std::uint32_t{values.m_processId}); });
    auto const running = [this](std::uint32_t processId) { return m_isRunning(processId); };
    m_processIds.erase(std::remove_if(m_processIds.begin(), m_processIds.end(), running), m_processIds.end());
    TLockScope const lock(m_mutex);
    for (std::uint32_t const processId : m_processIds) {
        m_entries.erase(processId);
    }
}

std::optional<ResourceValues> InfoTable::Find(std::uint32_t processId) const
{
    TLockScope const lock(m_mutex);
    auto const found = m_entries.find(processId);
    return found != m_entries.end() ? std::optional(found->second.values) : std::nullopt;
}

std::vector<ResourceSample> InfoTable::Snapshot(std::int64_t now, std::optional<std::uint32_t> without) const
{
    TLockScope const lock(m_mutex);
    std::vector<ResourceSample> samples;
    samples.reserve(m_entries.size());
    for (auto const& [processId, entry] : m_entries) {
        if (processId != without) {
            samples.push_back({entry.values, std::chrono::nanoseconds(std::max<std::int64_t>(now - entry.arrived, 0)),
                               entry.received});
        }
    }
    return samples;
}

} // namespace qvxsys::monitor
