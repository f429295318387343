#include <qvxsys/MemoryPressure.h>

#include <algorithm>
#include <string>
#include <utility>

#include <qvxsys/TThreadPool.h>

#include "LogicAssert.h"
#include "MonitoredProcess.h"
#include "PressureRelief.h"

namespace qvxsys::monitor {

PressureRelief::PressureRelief(std::unique_ptr<PressureSource> source, std::function<void(MemoryRelief const&)> report)
    : m_source(std::move(source)), m_report(std::move(report)), m_listening(m_source != nullptr)
{
    if (m_source) {
        m_thread = std::thread([this] { Listen(); });
    }
}

PressureRelief::~PressureRelief()
{
    if (m_source) {
        m_source->Stop();
        m_thread.join();
    }
}

/// Not to be left by an exception: that ends the process where it was thrown.
void PressureRelief::Listen() noexcept
{
    AsyncTask::NameThisThread("qvx-pressure");
    while (unsigned int const warning = m_source->Wait()) {
        bool const full = (warning & PressureSource::kFull) != 0;
        m_warnings[0].fetch_add((warning & PressureSource::kSome) != 0 ? 1 : 0, std::memory_order_relaxed);
        m_warnings[1].fetch_add(full ? 1 : 0, std::memory_order_relaxed);
        Reclaim(full ? 2 : 1);
    }
    m_listening.store(false, std::memory_order_release);
}

bool PressureRelief::IsKnown(TStringCore const& name) const
{
    return std::any_of(m_functions.begin(), m_functions.end(),
                       [&name](Function const& function) { return function.name == name; });
}

void PressureRelief::Add(TStringCore const& name, unsigned int grade, std::function<void()> func)
{
    TLockScope const lock(m_mutex);
    QVX_LOGIC_ASSERT(func);
    QVX_LOGIC_ASSERT(grade == 1 || grade == 2);
    QVX_LOGIC_ASSERT(!IsKnown(name));
    if (func && !IsKnown(name)) {
        m_functions.push_back({name, grade, std::move(func)});
    }
}

void PressureRelief::Remove(TStringCore const& name)
{
    TLockScope const lock(m_mutex);
    QVX_LOGIC_ASSERT(IsKnown(name));
    std::erase_if(m_functions, [&name](Function const& function) { return function.name == name; });
}

/// Grade by grade. Functions may add and remove functions, so they are called from a copy; one that was removed in the
/// meantime is not called.
std::uint64_t PressureRelief::Reclaim(unsigned int grade)
{
    TLockScope const lock(m_mutex);
    std::vector<Function> functions = m_functions;
    std::stable_sort(functions.begin(), functions.end(),
                     [](Function const& a, Function const& b) { return a.grade < b.grade; });
    std::uint64_t freed = 0;
    for (Function const& function : functions) {
        if (function.grade <= grade && IsKnown(function.name)) {
            freed += Call(function);
        }
    }
    return freed;
}

std::uint64_t PressureRelief::Call(Function const& function)
{
    MonitoredProcess const process;
    std::uint64_t const before = process.GetMemoryUsage();
    function.call();
    std::uint64_t const after = process.GetMemoryUsage();
    std::uint64_t const freed = before > after ? before - after : 0;
    if (m_report) {
        m_report({function.name, function.grade, freed});
    }
    return freed;
}

} // namespace qvxsys::monitor

using qvxsys::monitor::PressureRelief;

struct MemoryPressure::State
{
    State(Config const& config, std::function<void(MemoryRelief const&)> report)
        : relief(qvxsys::monitor::OpenPressureSource(config, status), std::move(report))
    {}

    std::string status;
    PressureRelief relief;
};

MemoryPressure::MemoryPressure(Config const& config, std::function<void(MemoryRelief const&)> report)
    : m_state(std::make_unique<State>(config, std::move(report)))
{}

MemoryPressure::~MemoryPressure() = default;

bool MemoryPressure::IsListening() const noexcept
{
    return m_state->relief.IsListening();
}

TStringCore MemoryPressure::GetStatus() const
{
    return TStringCore(m_state->status);
}

void MemoryPressure::AddReclaim(TStringCore const& name, unsigned int grade, std::function<void()> func)
{
    m_state->relief.Add(name, grade, std::move(func));
}

void MemoryPressure::RemoveReclaim(TStringCore const& name)
{
    m_state->relief.Remove(name);
}

std::uint64_t MemoryPressure::Reclaim(Level level)
{
    return m_state->relief.Reclaim(static_cast<unsigned int>(level));
}

std::uint64_t MemoryPressure::GetWarnings(Level level) const noexcept
{
    return m_state->relief.GetWarnings(level);
}
