#pragma once
// What the machine has for this process: memory and processors, as the host has them and as far as this process may use
// them. (MachineFigures_linux.cpp, MachineFigures_win.cpp)
//
// Linux: a process can live in a control group (a container, a service) that may use less than the machine has. Groups
// are nested, and the narrowest counts, so each from the process's own up to the mounted root is looked at:
//
//   - what a group may have is memory.max or memory.high, if that is lower (above it the kernel holds the group back);
//     for version 1 memory.limit_in_bytes and the hierarchical_memory_limit in memory.stat, which knows of ancestors
//     that a container cannot see;
//   - what it has in use is memory.current (memory.usage_in_bytes) without the file pages and, in version 2, the slabs
//     that the kernel gives back when memory is needed, since /proc/meminfo counts those as available, too. A machine
//     that has merely read many files is not short of memory;
//   - the processors' time is cpu.max (cpu.cfs_quota_us and cpu.cfs_period_us).
//
// Where the groups are mounted is looked up once; in which one the process lives, every time, since it can be moved.

#include <cstdint>

#include "KernelText.h"

namespace qvxsys::system {

struct MemoryAmounts
{
    std::uint64_t total = 0;     ///< bytes
    std::uint64_t available = 0; ///< bytes, at most the total
};

struct MachineMemory
{
    MemoryAmounts host;
    MemoryAmounts usable;
    PathText hostFrom;
    PathText totalFrom;
    PathText availableFrom;
};

struct MachineProcessors
{
    std::uint64_t host = 1;    ///< online
    std::uint64_t allowed = 1; ///< to the process's first thread by its affinity
    std::uint64_t quota = 0;   ///< microseconds of processor time in each period; 0 when there is no limit
    std::uint64_t period = 0;  ///< microseconds
    PathText quotaFrom;        ///< empty when there is no limit
};

struct MachineThrottling
{
    std::uint64_t known = 0;  ///< processors that tell how fast they may run
    std::uint64_t capped = 0; ///< of those, the ones held below their full frequency
    std::uint64_t events = 0; ///< how often a processor has been slowed down by heat since the machine was started
};

namespace platform {

/// None of these fails, allocates, or changes errno or the last error. `root` is put in front of every path (the tests
/// make trees of their own); "" is the machine. Where /proc/meminfo cannot be read, sysinfo() tells of memory.
void ReadMemory(char const* root, MachineMemory& memory) noexcept;
void ReadProcessors(char const* root, MachineProcessors& processors) noexcept;
/// Linux: a processor that idles slowly is not held back; one is when scaling_max_freq or bios_limit is below
/// cpuinfo_max_freq. Five small files for each processor. Windows: held back is one that runs slower at this moment.
void ReadThrottling(char const* root, MachineThrottling& throttling) noexcept;
/// Bytes.
std::uint32_t PageSize() noexcept;

} // namespace platform
} // namespace qvxsys::system
