#pragma once
// What MemoryPressure is made of, over any source of warnings.

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include <qvxsys/MemoryPressure.h>
#include <qvxsys/TLocks.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/ThreadAnnotations.h>

#include "PressureSource.h"

namespace qvxsys::monitor {

class PressureRelief
{
public:
    /// Listens to `source`, unless it is null.
    PressureRelief(std::unique_ptr<PressureSource> source, std::function<void(MemoryRelief const&)> report);
    PressureRelief(PressureRelief const&) = delete;
    PressureRelief& operator=(PressureRelief const&) = delete;
    ~PressureRelief();

    [[nodiscard]] bool IsListening() const noexcept { return m_listening.load(std::memory_order_acquire); }
    void Add(TStringCore const& name, unsigned int grade, std::function<void()> func);
    void Remove(TStringCore const& name);
    std::uint64_t Reclaim(unsigned int grade);
    [[nodiscard]] std::uint64_t GetWarnings(MemoryPressure::Level level) const noexcept
    {
        return m_warnings[level == MemoryPressure::Level::Full ? 1 : 0].load(std::memory_order_relaxed);
    }

private:
    struct Function
    {
        TStringCore name;
        unsigned int grade;
        std::function<void()> call;
    };

    void Listen() noexcept;
    [[nodiscard]] bool IsKnown(TStringCore const& name) const QVXSYS_REQUIRES(m_mutex);
    std::uint64_t Call(Function const& function);

    std::unique_ptr<PressureSource> const m_source;
    std::function<void(MemoryRelief const&)> const m_report;
    TRecursiveMutex m_mutex;
    std::vector<Function> m_functions QVXSYS_GUARDED_BY(m_mutex);
    std::atomic<std::uint64_t> m_warnings[2] = {};
    std::atomic<bool> m_listening;
    std::thread m_thread;
};

} // namespace qvxsys::monitor
