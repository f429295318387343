#include "ChildProcessManager.h"

#include <algorithm>
#include <utility>

#include <qvxsys/LogicException.h>

#include "MonitorTexts.h"

namespace qvxsys::monitor {
namespace {

constexpr char const* kFile = "qvxsys/main/monitor/ChildProcessManager";
constexpr int kAddLine = 28;
constexpr int kRemoveLine = 35;

} // namespace

ChildProcessManager::ChildProcessManager(std::function<void(TStringCore const&)> logFunc)
    : m_logFunc(std::move(logFunc))
{}

ChildProcessManager::~ChildProcessManager() = default;

void ChildProcessManager::Add(unsigned int pid)
{
    m_logFunc(texts::AddingChild(pid));
    TLockScope const lock(m_mutex);
    if (!m_processes.emplace(pid, pid).second) {
        ThrowLogicException(kFile, kAddLine, "m_processes.emplace(pid, pid).second");
    }
}

void ChildProcessManager::Remove(unsigned int pid)
{
    m_logFunc(texts::RemovingChild(pid));
    TLockScope const lock(m_mutex);
    if (m_processes.erase(pid) == 0) {
        ThrowLogicException(kFile, kRemoveLine, "m_processes.erase(pid) > 0");
    }
}

std::uint8_t ChildProcessManager::GetCpuUsage()
{
    TLockScope const lock(m_mutex);
    std::uint8_t sum = 0;
    for (auto const& [pid, process] : m_processes) {
        sum = static_cast<std::uint8_t>(sum + process.GetCpuUsage());
    }
    return std::min(sum, std::uint8_t{100});
}

std::uint64_t ChildProcessManager::GetMemoryUsage()
{
    TLockScope const lock(m_mutex);
    std::uint64_t sum = 0;
    for (auto const& [pid, process] : m_processes) {
        sum += process.GetMemoryUsage();
    }
    return sum;
}

} // namespace qvxsys::monitor
