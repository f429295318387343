#include "MachineFigures.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>

#include <sched.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include "ControlGroup.h"
#include "KeepErrno.h"
#include "KernelFile.h"

namespace qvxsys::system::platform {
namespace {

using qvxsys::platform::KeepErrno;

std::uint64_t Minus(std::uint64_t a, std::uint64_t b) noexcept
{
    return a > b ? a - b : 0;
}

bool IsMachine(char const* root) noexcept
{
    return *root == 0;
}

// Kernels before 3.14 do not say what is available; then it is what is free, and buffers and files without shared
// memory.
bool ReadMemInfo(char const* root, MemoryAmounts& amounts) noexcept
{
    KernelFile file(PathText(root).Append("/proc/meminfo").Terminated());
    LineReader lines(file.Reader());
    std::optional<std::uint64_t> total, available, free, buffers, cached, shared;
    struct Field
    {
        std::string_view key;
        std::optional<std::uint64_t>& value;
    };
    Field const fields[] = {{"MemTotal:", total},  {"MemAvailable:", available}, {"MemFree:", free},
                            {"Buffers:", buffers}, {"Cached:", cached},          {"Shmem:", shared}};
    while (std::optional<std::string_view> const line = lines.Next()) {
        for (Field const& field : fields) {
            if (!field.value && line->starts_with(field.key)) {
                field.value = ParseBytes(*line, field.key);
            }
        }
        if (total && available) {
            break;
        }
    }
    if (!total || *total == 0 || (!available && !free)) {
        return false;
    }
    std::uint64_t const files = Minus(SaturatedSum(buffers.value_or(0), cached.value_or(0)), shared.value_or(0));
    amounts.total = *total;
    amounts.available = std::min(available ? *available : SaturatedSum(*free, files), *total);
    return true;
}

void AskSysinfo(MemoryAmounts& amounts) noexcept
{
    struct sysinfo info
    {};
    if (::sysinfo(&info) == 0) {
        amounts.total = SaturatedProduct(info.totalram, info.mem_unit);
        amounts.available = std::min(SaturatedProduct(info.freeram + info.bufferram, info.mem_unit), amounts.total);
    }
}

constexpr std::string_view kOnline = "/sys/devices/system/cpu/online";

struct MemoryFiles
{
    std::string_view limit;
    std::string_view lowerLimit; // "" where there is none
    std::string_view usage;
    std::string_view reclaimable[3];
};
constexpr MemoryFiles kUnifiedFiles = {
    "memory.max", "memory.high", "memory.current", {"inactive_file", "active_file", "slab_reclaimable"}};
// The totals are those of the group and all below it, as the usage is.
constexpr MemoryFiles kOldFiles = {
    "memory.limit_in_bytes", "", "memory.usage_in_bytes", {"total_inactive_file", "total_active_file", ""}};

struct MemoryStatistics
{
    std::uint64_t reclaimable = 0;
    std::uint64_t limitAbove = kGreatest;
};

MemoryStatistics ReadStatistics(ControlGroupWalk& group, MemoryFiles const& files) noexcept
{
    MemoryStatistics result;
    KernelFile file(group.File("memory.stat"));
    LineReader lines(file.Reader());
    while (std::optional<std::string_view> line = lines.Next()) {
        std::string_view const key = TakeWord(*line);
        bool const isReclaimable =
            std::find(std::begin(files.reclaimable), std::end(files.reclaimable), key) != std::end(files.reclaimable);
        if (isReclaimable) {
            result.reclaimable = SaturatedSum(result.reclaimable, ParseNumber(TakeWord(*line)).value_or(0));
        } else if (key == "hierarchical_memory_limit") {
            result.limitAbove = ParseNumber(TakeWord(*line)).value_or(kGreatest);
        }
    }
    return result;
}

void NarrowMemory(ControlGroupWalk& group, MachineMemory& memory) noexcept
{
    MemoryFiles const& files = group.IsUnified() ? kUnifiedFiles : kOldFiles;
    std::string_view limitFile = files.limit;
    std::uint64_t limit = ReadNumber(group.File(limitFile)).value_or(kGreatest);
    if (!files.lowerLimit.empty()) {
        std::uint64_t const high = ReadNumber(group.File(files.lowerLimit)).value_or(kGreatest);
        limitFile = high < limit ? files.lowerLimit : limitFile;
        limit = std::min(limit, high);
    }
    if (limit >= memory.host.total && (group.IsUnified() || !group.IsOutermost())) {
        return; // nothing that narrows, and no need to read the longest of the files
    }
    MemoryStatistics const statistics = ReadStatistics(group, files);
    if (statistics.limitAbove < limit) {
        limit = statistics.limitAbove;
        limitFile = "memory.stat";
    }
    if (limit >= memory.host.total) {
        return;
    }
    if (limit < memory.usable.total) {
        memory.usable.total = limit;
        memory.totalFrom = PathText(group.File(limitFile));
    }
    std::uint64_t const used = Minus(ReadNumber(group.File(files.usage)).value_or(0), statistics.reclaimable);
    if (Minus(limit, used) < memory.usable.available) {
        memory.usable.available = Minus(limit, used);
        memory.availableFrom = PathText(group.File(files.usage));
    }
}

struct Quota
{
    std::uint64_t time = 0;
    std::uint64_t period = 0;
};

// No limit is "max" in version 2 and -1 in version 1, neither of which is a number here.
Quota ReadQuota(ControlGroupWalk& group) noexcept
{
    if (!group.IsUnified()) {
        return {ReadNumber(group.File("cpu.cfs_quota_us")).value_or(0),
                ReadNumber(group.File("cpu.cfs_period_us")).value_or(0)};
    }
    char buffer[64];
    std::string_view text = ReadBeginning(group.File("cpu.max"), buffer);
    if (text.find('\n') == std::string_view::npos) {
        return {};
    }
    std::uint64_t const time = ParseNumber(TakeWord(text)).value_or(0);
    return {time, ParseNumber(TakeWord(text)).value_or(0)};
}

// The list of processors in a file of the machine's; "" when there is none.
std::string_view ReadList(PathText const& path, std::span<char> buffer) noexcept
{
    std::string_view text = ReadBeginning(path.Terminated(), buffer);
    return text.find('\n') != std::string_view::npos ? TakeWord(text) : std::string_view();
}

std::uint64_t OnlineProcessors(char const* root) noexcept
{
    char buffer[4096];
    std::uint64_t count = 0;
    ForEachOfList(ReadList(PathText(root).Append(kOnline), buffer), [&](std::uint64_t) { ++count; });
    return count != 0 ? count : static_cast<std::uint64_t>(std::max(::sysconf(_SC_NPROCESSORS_ONLN), 1L));
}

std::uint64_t AllowedProcessors() noexcept
{
    constexpr std::size_t kSets = 16; // of 1024 processors each
    cpu_set_t sets[kSets] = {};
    if (::sched_getaffinity(::getpid(), sizeof sets, sets) != 0) {
        return 0;
    }
    return static_cast<std::uint64_t>(CPU_COUNT_S(sizeof sets, sets));
}

template<class Visit>
void ForEachGroup(char const* root, Controller controller, Visit visit) noexcept
{
    // Those of a made-up tree are not kept.
    std::optional<ControlGroupMounts> mounts;
    if (!IsMachine(root)) {
        mounts = FindControlGroups(root);
    }
    ControlGroupWalk group(root, mounts ? *mounts : MachineControlGroups(), controller);
    for (; !group.AtEnd(); group.Up()) {
        visit(group);
    }
}

} // namespace

void ReadMemory(char const* root, MachineMemory& memory) noexcept
{
    KeepErrno const keep;
    if (ReadMemInfo(root, memory.host)) {
        memory.hostFrom = PathText("/proc/meminfo");
    } else {
        AskSysinfo(memory.host);
        memory.hostFrom = PathText("sysinfo()");
    }
    memory.usable = memory.host;
    memory.totalFrom = memory.availableFrom = memory.hostFrom;
    ForEachGroup(root, Controller::Memory, [&](ControlGroupWalk& group) { NarrowMemory(group, memory); });
}

void ReadProcessors(char const* root, MachineProcessors& processors) noexcept
{
    KeepErrno const keep;
    processors.host = OnlineProcessors(root);
    std::uint64_t const allowed = AllowedProcessors();
    processors.allowed = allowed != 0 ? allowed : processors.host;
    ForEachGroup(root, Controller::Processors, [&](ControlGroupWalk& group) {
        Quota const quota = ReadQuota(group);
        // Compared as fractions; what is beyond 32 bits of microseconds is no quota.
        bool const isLimit = quota.time != 0 && quota.period != 0 && (quota.time | quota.period) >> 32 == 0;
        if (isLimit && (processors.quota == 0 || quota.time * processors.period < processors.quota * quota.period)) {
            processors.quota = quota.time;
            processors.period = quota.period;
            processors.quotaFrom = PathText(group.File(group.IsUnified() ? "cpu.max" : "cpu.cfs_quota_us"));
        }
    });
}

void ReadThrottling(char const* root, MachineThrottling& throttling) noexcept
{
    KeepErrno const keep;
    char buffer[4096];
    std::string_view const online = ReadList(PathText(root).Append(kOnline), buffer);
    PathText path(root);
    path.Append("/sys/devices/system/cpu/cpu");
    std::size_t const stem = path.View().size();
    ForEachOfList(online, [&](std::uint64_t number) {
        char digits[20];
        char* const end = std::to_chars(digits, std::end(digits), number).ptr;
        path.Cut(stem);
        path.Append({digits, end});
        std::size_t const folder = path.View().size();
        auto const read = [&](std::string_view name) {
            path.Cut(folder);
            return ReadNumber(path.Append(name).Terminated());
        };
        if (std::optional<std::uint64_t> const full = read("/cpufreq/cpuinfo_max_freq")) {
            std::uint64_t const allowed = std::min(read("/cpufreq/scaling_max_freq").value_or(kGreatest),
                                                   read("/cpufreq/bios_limit").value_or(kGreatest));
            ++throttling.known;
            throttling.capped += allowed < *full ? 1 : 0;
        }
        for (std::string_view const counter :
             {"/thermal_throttle/core_throttle_count", "/thermal_throttle/package_throttle_count"}) {
            throttling.events = SaturatedSum(throttling.events, read(counter).value_or(0));
        }
    });
}

std::uint32_t PageSize() noexcept
{
    return static_cast<std::uint32_t>(::sysconf(_SC_PAGESIZE));
}

} // namespace qvxsys::system::platform
