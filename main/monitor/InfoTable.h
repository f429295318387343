#pragma once
// What every process on the exchange last reported.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

#include <qvxsys/ResourceValues.h>
#include <qvxsys/TLocks.h>
#include <qvxsys/ThreadAnnotations.h>

namespace qvxsys::monitor {

/// By process id. All members may be called from any thread.
///
/// Process ids come from outside, so somebody may make them up: up to kBelieved they are all remembered until the next
/// Prune. Behind that a new one must belong to a running process, which leaves room for real ones however many are made
/// up, and there are never more than kMost.
class InfoTable
{
public:
    using IsRunning = bool (*)(unsigned int processId) noexcept;

    static constexpr std::size_t kBelieved = 4096;
    static constexpr std::size_t kMost = 65536;

    explicit InfoTable(IsRunning isRunning) noexcept : m_isRunning(isRunning) {}
    InfoTable(InfoTable const&) = delete;
    InfoTable& operator=(InfoTable const&) = delete;

    /// `now` in nanoseconds of a steady clock, as in the other members.
    void Store(ResourceValues const& values, std::int64_t now);
    /// Forgets processes that do not run any more, but not `keep`.
    void Prune(std::uint32_t keep);

    [[nodiscard]] std::optional<ResourceValues> Find(std::uint32_t processId) const;
    /// All but `without`, if given.
    [[nodiscard]] std::vector<ResourceSample> Snapshot(std::int64_t now,
                                                       std::optional<std::uint32_t> without = {}) const;
    /// Calls `visit` for every process but `own`, under the lock; how many processes there are, `own` included.
    template<class Visit>
    std::size_t VisitOthers(std::uint32_t own, Visit visit) const
    {
        TLockScope const lock(m_mutex);
        for (auto const& [processId, entry] : m_entries) {
            if (processId != own) {
                visit(entry.values);
            }
        }
        return m_entries.size();
    }

private:
    struct Entry
    {
        ResourceValues values;
        std::int64_t arrived = 0;
        std::uint64_t received = 0;
    };

    IsRunning const m_isRunning;
    mutable TRecursiveMutex m_mutex;
    std::unordered_map<std::uint32_t, Entry> m_entries QVXSYS_GUARDED_BY(m_mutex);
    /// Prune's, kept for its memory; one thread prunes at a time.
    std::vector<std::uint32_t> m_processIds;
};

} // namespace qvxsys::monitor
