#include "MonitorTexts.h"

#include <array>
#include <charconv>

#include <qvxsys/Format.h>

namespace qvxsys::monitor::texts {

namespace {

TStringCore MemoryInfoOf(MemoryFigures const& figures)
{
    return Format(u"Memory info: %1 (current process);%2 (Quorvex total); %3 (total of all processes); %4 (info count)",
                  Bytes(figures.own), Bytes(figures.total), Bytes(figures.machine), figures.count);
}

} // namespace

TStringCore Bytes(std::uint64_t bytes)
{
    std::array<char, 20> digits{};
    char const* const end = std::to_chars(digits.data(), digits.data() + digits.size(), bytes).ptr;
    TStringCore text;
    for (char const* digit = digits.data(); digit != end; ++digit) {
        if (digit != digits.data() && (end - digit) % 3 == 0) {
            text.append(u',');
        }
        text.append(*digit);
    }
    return text.append(u" bytes");
}

TStringCore CpuLimit(unsigned int maxCpu, std::chrono::seconds sustained)
{
    return Format(u"Resource Manager: Max CPU limited to %1%% over %2 seconds", maxCpu, sustained.count());
}

TStringCore PerProcessLimit(std::uint64_t bytes)
{
    return Format(u"Resource Manager: Per Process Memory Limit: %1", Bytes(bytes));
}

TStringCore AllProcessesLimit(std::uint64_t bytes)
{
    return Format(u"Resource Manager: All Processes Memory Limit: %1", Bytes(bytes));
}

TStringCore CheckInterval(std::chrono::seconds interval)
{
    return Format(u"Resource Manager: Checking resources every %1 seconds", interval.count());
}

TStringCore Listening(unsigned int port)
{
    return Format(u"Resource Manager: listening on port %1", port);
}

TStringCore Stopped()
{
    return u"Resource Manager: stopped";
}

TStringCore CpuIdle()
{
    return u"Resource Manager: CPU info: 0%";
}

TStringCore CpuInfo(unsigned int own, unsigned int total, std::size_t count)
{
    return Format(u"Resource Manager: CPU info: %1%%; %2%% (Quorvex total); %3 (info count)", own, total, count);
}

TStringCore CpuDetected(unsigned int total)
{
    return Format(u"Resource Manager: Detected high CPU usage. %1%%", total);
}

TStringCore CpuExceeded(unsigned int maxCpu, std::chrono::seconds sustained, unsigned int own)
{
    return Format(u"Resource Manager: Exceeded sustained high CPU threshold above %1%% for %2 seconds.  "
                  u"This process has the highest usage of %3%%",
                  maxCpu, sustained.count(), own);
}

TStringCore MemoryExceededByProcess(std::uint64_t own)
{
    return Format(u"Resource Manager: Exceeded allowed memory usage per process. %1", Bytes(own));
}

TStringCore MemoryInfo(MemoryFigures const& figures)
{
    return Format(u"Resource Manager: %1", MemoryInfoOf(figures));
}

TStringCore MemoryExceededByAll(MemoryFigures const& figures)
{
    return Format(u"Resource Manager: Exceeded allowed memory usage across all processes. %1", MemoryInfoOf(figures));
}

TStringCore Reclaiming(TStringCore const& what, std::size_t registered)
{
    return Format(u"Resource Manager: Reclaiming %1. Number registered functions: %2", what, registered);
}

TStringCore CallingFunction(TStringCore const& name)
{
    return Format(u"Resource Manager: Calling reclaim function named: %1", name);
}

TStringCore CpuReclaimed(bool enough)
{
    return enough ? u"Resource Manager: CPU reclaimed. Process termination has been averted!"
                  : u"Resource Manager: CPU reclamation was unsucessful. Process has to be terminated.";
}

TStringCore MemoryReclaimed(bool enough)
{
    return enough ? u"Resource Manager: Memory reclaimed. Process termination has been averted!"
                  : u"Resource Manager: Memory reclamation was unsucessful. Process has to be terminated.";
}

TStringCore CpuTermination()
{
    return u"Resource Manager: Process is above CPU threshold. Requesting termination.";
}

TStringCore MemoryTermination()
{
    return u"Resource Manager: Process is above memory threshold. Requesting termination.";
}

TStringCore AddingChild(unsigned int pid)
{
    return Format(u"Resource Manager: Adding child process: %1", pid);
}

TStringCore RemovingChild(unsigned int pid)
{
    return Format(u"Resource Manager: Removing child process: %1", pid);
}

TStringCore ProcessesFollow()
{
    return u"Resource Manager: Logging all CPU/memory info across processes.";
}

TStringCore Process(ResourceValues const& values)
{
    return Format(u"Resource Manager: pid: %1; Memory info: %2; Memory limit usage: %3%%; CPU info: %4%%",
                  std::uint32_t{values.m_processId}, Bytes(values.m_memory),
                  static_cast<unsigned int>(values.m_memoryLimitUsage), static_cast<unsigned int>(values.m_cpuUsage));
}

TStringCore DryRun(TStringCore const& reason)
{
    return Format(u"Resource Manager: Dry run: termination is not requested. %1", reason);
}

TStringCore SocketError(TStringCore const& reason)
{
    return Format(u"Resource Manager: socket error: %1", reason);
}

TStringCore RejectedPacket(std::uint32_t address, unsigned int port)
{
    return Format(u"Resource Manager: rejected invalid network packet from: %1.%2.%3.%4:%5", address >> 24,
                  (address >> 16) & 0xFF, (address >> 8) & 0xFF, address & 0xFF, port);
}

TStringCore ListeningStopped()
{
    return u"Resource Manager: listening thread has stopped";
}

} // namespace qvxsys::monitor::texts
