#include "ProcessHandle.h"

#include "WindowsApi.h"

#include <psapi.h>

namespace qvxsys::monitor {
namespace {

using platform::KeepLastError;

std::uint64_t Units(FILETIME const& time) noexcept
{
    return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

// The value that stands for no handle is the pseudo handle of the own process, which is not to be closed.
HANDLE HandleOf(std::intptr_t handle) noexcept
{
    return reinterpret_cast<HANDLE>(handle);
}

} // namespace

ProcessHandle::ProcessHandle(std::uint32_t pid) noexcept : m_pid(pid), m_good(pid == ::GetCurrentProcessId())
{
    if (m_good) {
        return;
    }
    KeepLastError const keep;
    HANDLE const handle = ::OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, pid);
    if (handle != nullptr) {
        m_handle = reinterpret_cast<std::intptr_t>(handle);
        m_good = true;
    }
}

ProcessHandle::~ProcessHandle()
{
    if (m_handle != kNone) {
        ::CloseHandle(HandleOf(m_handle));
    }
}

bool ProcessHandle::HasEnded() const noexcept
{
    KeepLastError const keep;
    return ::WaitForSingleObject(HandleOf(m_handle), 0) != WAIT_TIMEOUT;
}

std::optional<CpuSample> ProcessHandle::Sample() const noexcept
{
    KeepLastError const keep;
    FILETIME created, ended, kernel, user, now;
    if (::GetProcessTimes(HandleOf(m_handle), &created, &ended, &kernel, &user) == 0) {
        return std::nullopt;
    }
    // The clock that advances with the ticks by which process times are booked.
    ::GetSystemTimeAsFileTime(&now);
    return CpuSample{Units(kernel), Units(user), Units(now)};
}

std::uint64_t ProcessHandle::PrivateBytes() const noexcept
{
    KeepLastError const keep;
    PROCESS_MEMORY_COUNTERS_EX counters{};
    counters.cb = sizeof counters;
    ::GetProcessMemoryInfo(HandleOf(m_handle), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters), sizeof counters);
    return counters.PrivateUsage;
}

bool ProcessHandle::Runs(std::uint32_t pid) noexcept
{
    KeepLastError const keep;
    HANDLE const handle = ::OpenProcess(SYNCHRONIZE, FALSE, pid);
    if (handle == nullptr) {
        return false;
    }
    bool const runs = ::WaitForSingleObject(handle, 0) == WAIT_TIMEOUT;
    ::CloseHandle(handle);
    return runs;
}

} // namespace qvxsys::monitor
