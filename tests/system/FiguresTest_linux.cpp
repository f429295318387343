// Memory, processors and the local encoding: made-up trees of kernel files by table, and the machine as others see it.

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>

#include <sched.h>
#include <sys/sysinfo.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <qvxsys/TSystem.h>

#include "ControlGroup.h"
#include "LocalEncoding.h"
#include "MachineFigures.h"
#include "support/ChildProcess.h"
#include "support/FakeTree.h"

namespace {

using namespace qvxsys::system;

constexpr std::uint64_t kKilo = 1024;
constexpr std::string_view kMemInfo = "MemTotal:        8000 kB\nMemFree:    100 kB\nMemAvailable:  6000 kB\n"
                                      "Buffers:  1 kB\nCached:  1 kB\n";
constexpr std::string_view kUnified = "30 1 0:26 / /cg rw - cgroup2 cgroup2 rw\n";
constexpr std::string_view kUnifiedStat =
    "anon 7\ninactive_file 1024000\nactive_file 512000\nslab_reclaimable 512000\n";

struct MemoryCase
{
    char const* name;
    FakeFiles files;
    std::uint64_t total; // kB
    std::uint64_t available;
    std::string_view totalFrom;
    std::string_view availableFrom;
};

FakeFiles With(FakeFiles files, FakeFiles const& more)
{
    files.insert(files.end(), more.begin(), more.end());
    return files;
}

FakeFiles Unified(std::string_view group, FakeFiles const& more)
{
    return With({{"/proc/meminfo", kMemInfo}, {"/proc/self/mountinfo", kUnified}, {"/proc/self/cgroup", group}}, more);
}

TEST(Memory, OfMadeUpMachines)
{
    constexpr std::string_view kHost = "/proc/meminfo";
    std::string const deep = "0::/" + std::string(2000, 'x') + "\n";
    std::string const noise = std::string(9000, 'x') + " - cgroup2 cgroup2 rw\n";
    std::string const afterNoise = noise + std::string(kUnified);
    MemoryCase const cases[] = {
        {"host alone", {{kHost, kMemInfo}}, 8000, 6000, kHost, kHost},
        {"old kernel",
         {{kHost, "MemTotal: 8000 kB\nMemFree: 1000 kB\nBuffers: 500 kB\nCached: 700 kB\nShmem: 200 kB\n"}},
         8000,
         2000,
         kHost,
         kHost},
        {"more available than there is", {{kHost, "MemTotal: 8 kB\nMemAvailable: 9 kB\n"}}, 8, 8, kHost, kHost},
        {"limit, caches are available",
         Unified("0::/a\n", {{"/cg/a/memory.max", "4096000\n"},
                             {"/cg/a/memory.current", "3072000\n"},
                             {"/cg/a/memory.stat", kUnifiedStat}}),
         4000, 3000, "/cg/a/memory.max", "/cg/a/memory.current"},
        {"an ancestor is narrower",
         Unified("0::/a/b/c\n", {{"/cg/a/b/c/memory.max", "max\n"},
                                 {"/cg/a/b/memory.max", "4096000\n"},
                                 {"/cg/a/b/memory.current", "4096000\n"},
                                 {"/cg/a/memory.max", "2048000\n"},
                                 {"/cg/a/memory.current", "1024\n"}}),
         2000, 0, "/cg/a/memory.max", "/cg/a/b/memory.current"},
        {"held back before the limit",
         Unified(
             "0::/a\n",
             {{"/cg/a/memory.max", "4096000\n"}, {"/cg/a/memory.high", "1024000\n"}, {"/cg/a/memory.current", "0\n"}}),
         1000, 1000, "/cg/a/memory.high", "/cg/a/memory.current"},
        {"over the limit",
         Unified("0::/a\n", {{"/cg/a/memory.max", "1024000\n"}, {"/cg/a/memory.current", "99999999999\n"}}), 1000, 0,
         "/cg/a/memory.max", "/cg/a/memory.current"},
        {"more cache than use",
         Unified("0::/\n", {{"/cg/memory.max", "1024000\n"},
                            {"/cg/memory.current", "5\n"},
                            {"/cg/memory.stat", "inactive_file 99999999999999999999999\nactive_file 1\n"}}),
         1000, 1000, "/cg/memory.max", "/cg/memory.current"},
        {"use unknown", Unified("0::/a\n", {{"/cg/a/memory.max", "7168000\n"}}), 7000, 6000, "/cg/a/memory.max", kHost},
        {"limits beyond the machine or malformed",
         Unified("0::/a/b/c/d\n", {{"/cg/a/b/c/d/memory.max", "99999999999999999999999999\n"},
                                   {"/cg/a/b/c/memory.max", "-1\n"},
                                   {"/cg/a/b/memory.max", "102"},
                                   {"/cg/a/memory.max", ""}}),
         8000, 6000, kHost, kHost},
        {"outside its namespace", Unified("0::/../x\n", {{"/cg/memory.max", "1024000\n"}, {"/x/memory.max", "1\n"}}),
         1000, 1000, "/cg/memory.max", "/cg/memory.current"},
        {"path too long", Unified(deep, {{"/cg/memory.max", "1024000\n"}}), 8000, 6000, kHost, kHost},
        {"long lines and blanks",
         {{kHost, kMemInfo},
          {"/proc/self/mountinfo", afterNoise},
          {"/proc/self/cgroup", "x\n0::\n:\n0::/a b\n0::/cut off"},
          {"/cg/a b/memory.max", "1024000\n"},
          {"/cg/a b/memory.current", "0\n"}},
         1000,
         1000,
         "/cg/a b/memory.max",
         "/cg/a b/memory.current"},
        {"version 1 in a container, beside version 2",
         {{kHost, kMemInfo},
          {"/proc/self/mountinfo", "1 1 0:1 / /cg/unified rw - cgroup2 cgroup2 rw\n"
                                   "2 1 0:2 /docker/f00 /cg/my\\040memory rw shared:1 - cgroup cgroup rw,memory\n"},
          {"/proc/self/cgroup", "4:memory:/docker/f00/job\n3:cpu,cpuacct:/\n0::/elsewhere\n"},
          {"/cg/unified/elsewhere/memory.max", "1\n"},
          {"/cg/my memory/job/memory.limit_in_bytes", "9223372036854771712\n"},
          {"/cg/my memory/memory.limit_in_bytes", "4096000\n"},
          {"/cg/my memory/memory.usage_in_bytes", "2048000\n"},
          {"/cg/my memory/memory.stat", "inactive_file 3\ntotal_inactive_file 1024000\n"}},
         4000,
         3000,
         "/cg/my memory/memory.limit_in_bytes",
         "/cg/my memory/memory.usage_in_bytes"},
        {"version 1, ancestors out of sight",
         {{kHost, kMemInfo},
          {"/proc/self/mountinfo", "2 1 0:2 / /cg rw - cgroup cgroup rw,memory\n"},
          {"/proc/self/cgroup", "4:memory:/\n"},
          {"/cg/memory.limit_in_bytes", "9223372036854771712\n"},
          {"/cg/memory.usage_in_bytes", "1024000\n"},
          {"/cg/memory.stat", "hierarchical_memory_limit 2048000\n"}},
         2000,
         1000,
         "/cg/memory.stat",
         "/cg/memory.usage_in_bytes"},
    };
    for (MemoryCase const& row : cases) {
        SCOPED_TRACE(row.name);
        FakeTree const tree(row.files);
        MachineMemory memory;
        platform::ReadMemory(tree.Root().c_str(), memory);
        auto const shown = [&](PathText const& path) {
            std::string const text(path.View());
            return text.starts_with(tree.Root()) ? text.substr(tree.Root().size()) : text;
        };
        EXPECT_EQ(memory.usable.total, row.total * kKilo);
        EXPECT_EQ(memory.usable.available, row.available * kKilo);
        EXPECT_EQ(shown(memory.totalFrom), row.totalFrom);
        EXPECT_EQ(shown(memory.availableFrom), row.availableFrom);
        EXPECT_EQ(shown(memory.hostFrom), kHost);
        EXPECT_GE(memory.host.total, memory.usable.total);
    }
}

TEST(Memory, WithoutMemInfo)
{
    struct sysinfo info
    {};
    ASSERT_EQ(sysinfo(&info), 0);
    for (std::string_view const text : {"", "MemTotal: x kB\nMemFree: 1 kB\n", "MemTotal: 5 kB\n", "MemTotal: 5 kB"}) {
        FakeTree const tree({{"/proc/meminfo", text}});
        MachineMemory memory;
        platform::ReadMemory(tree.Root().c_str(), memory);
        EXPECT_EQ(memory.usable.total, info.totalram * info.mem_unit);
        EXPECT_GT(memory.usable.available, 0u);
        EXPECT_EQ(memory.totalFrom.View(), "sysinfo()");
    }
}

TEST(Processors, OfMadeUpMachines)
{
    struct Case
    {
        char const* name;
        FakeFiles files;
        std::uint64_t host;
        std::uint64_t quota;
        std::uint64_t period;
        MachineThrottling throttling;
    };
    constexpr std::string_view kOnline = "/sys/devices/system/cpu/online";
    constexpr std::string_view kCgroup = "/proc/self/cgroup", kMounts = "/proc/self/mountinfo";
    auto const real = static_cast<std::uint64_t>(sysconf(_SC_NPROCESSORS_ONLN));
    Case const cases[] = {
        {"nothing known", {}, real, 0, 0, {}},
        {"a list", {{kOnline, "0-3,8,10-11\n"}}, 7, 0, 0, {}},
        {"no list", {{kOnline, "3-\n"}}, real, 0, 0, {}},
        {"cut off", {{kOnline, "0-1"}}, real, 0, 0, {}},
        {"endless", {{kOnline, "0-99999999999999999999999\n"}}, 65536, 0, 0, {}},
        {"the narrowest quota",
         {{kCgroup, "0::/a/b\n"},
          {kMounts, kUnified},
          {"/cg/a/b/cpu.max", "300000 200000\n"},
          {"/cg/a/cpu.max", "100000 100000\n"},
          {"/cg/cpu.max", "max 100000\n"}},
         real,
         100000,
         100000,
         {}},
        {"malformed quotas",
         {{kCgroup, "0::/a/b/c/d\n"},
          {kMounts, kUnified},
          {"/cg/a/b/c/d/cpu.max", "100000 0\n"},
          {"/cg/a/b/c/cpu.max", "-5 100000\n"},
          {"/cg/a/b/cpu.max", "99999999999999999999 1\n"},
          {"/cg/a/cpu.max", "1 10000"}},
         real,
         0,
         0,
         {}},
        {"version 1",
         {{kCgroup, "3:cpuacct,cpu:/a\n0::/\n"},
          {kMounts, "9 1 0:2 / /c rw - cgroup cgroup rw,cpu,cpuacct\n"},
          {"/c/a/cpu.cfs_quota_us", "50000\n"},
          {"/c/a/cpu.cfs_period_us", "100000\n"},
          {"/c/cpu.cfs_quota_us", "-1\n"},
          {"/c/cpu.cfs_period_us", "100000\n"}},
         real,
         50000,
         100000,
         {}},
        {"throttling",
         {{kOnline, "0-2\n"},
          {"/sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", "3000000\n"},
          {"/sys/devices/system/cpu/cpu0/cpufreq/scaling_max_freq", "3000000\n"},
          {"/sys/devices/system/cpu/cpu0/cpufreq/scaling_cur_freq", "800000\n"},
          {"/sys/devices/system/cpu/cpu0/thermal_throttle/core_throttle_count", "3\n"},
          {"/sys/devices/system/cpu/cpu0/thermal_throttle/package_throttle_count", "4\n"},
          {"/sys/devices/system/cpu/cpu1/cpufreq/cpuinfo_max_freq", "3000000\n"},
          {"/sys/devices/system/cpu/cpu1/cpufreq/scaling_max_freq", "2000000\n"},
          {"/sys/devices/system/cpu/cpu2/cpufreq/cpuinfo_max_freq", "3000000\n"},
          {"/sys/devices/system/cpu/cpu2/cpufreq/bios_limit", "-1\n"}},
         3,
         0,
         0,
         {3, 1, 7}},
        {"limited by the firmware",
         {{kOnline, "0\n"},
          {"/sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq", "3000000\n"},
          {"/sys/devices/system/cpu/cpu0/cpufreq/bios_limit", "2999999\n"},
          {"/sys/devices/system/cpu/cpu0/thermal_throttle/core_throttle_count", "-3\n"}},
         1,
         0,
         0,
         {1, 1, 0}},
    };
    for (Case const& row : cases) {
        SCOPED_TRACE(row.name);
        FakeTree const tree(row.files);
        MachineProcessors processors;
        platform::ReadProcessors(tree.Root().c_str(), processors);
        EXPECT_EQ(processors.host, row.host);
        EXPECT_EQ(processors.quota, row.quota);
        EXPECT_EQ(processors.period, row.period);
        EXPECT_EQ(processors.quotaFrom.View().empty(), row.quota == 0);
        MachineThrottling throttling;
        platform::ReadThrottling(tree.Root().c_str(), throttling);
        EXPECT_EQ(throttling.known, row.throttling.known);
        EXPECT_EQ(throttling.capped, row.throttling.capped);
        EXPECT_EQ(throttling.events, row.throttling.events);
    }
}

unsigned long long Asked(char const* command)
{
    ChildResult const result = RunChild({"/bin/sh", "-c", command});
    EXPECT_EQ(result.status, 0) << command << result.err;
    return std::strtoull(result.out.c_str(), nullptr, 10);
}

// Runs `check` in a child, which tells by its exit status; 77 when it could not be tried.
int InChild(std::function<bool()> const& check)
{
    pid_t const child = fork();
    if (child == 0) {
        alarm(60);
        _exit(check() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Figures, AsOthersSeeThem)
{
    TSystem::MemoryInfo const host = TSystem::HostMemory();
    EXPECT_EQ(host.totalPhysical, kKilo * Asked("awk '/^MemTotal:/ {print $2}' /proc/meminfo"));
    EXPECT_NEAR(static_cast<double>(host.availablePhysical),
                1024.0 * static_cast<double>(Asked("awk '/^MemAvailable:/ {print $2}' /proc/meminfo")), 512e6);
    EXPECT_EQ(host.pageSize, Asked("getconf PAGESIZE"));
    EXPECT_EQ(TSystem::Processors().host, Asked("getconf _NPROCESSORS_ONLN"));
    EXPECT_EQ(TSystem::Processors().allowed, Asked("nproc"));
    EXPECT_FALSE(TSystem::Sources().availableMemory.empty());

    TSystem::MemoryInfo const memory = TSystem::Memory();
    EXPECT_LE(memory.totalPhysical, host.totalPhysical);
    EXPECT_EQ(memory.usedPhysical, memory.totalPhysical - memory.availablePhysical);
    EXPECT_EQ(memory.usedCombined, memory.usedPhysical);
    EXPECT_EQ(memory.totalCombined, memory.totalPhysical);
    EXPECT_EQ(memory.load, memory.usedPhysical * 100 / memory.totalPhysical);
    EXPECT_EQ(InChild([] {
                  cpu_set_t one;
                  CPU_ZERO(&one);
                  CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
                  return sched_setaffinity(0, sizeof one, &one) == 0 && TSystem::Processors().allowed == 1 &&
                         TSystem::Processors().usable == 1;
              }),
              0);
}

// A group of this machine's own, where it lets us make one.
TEST(Figures, InARealControlGroup)
{
    ControlGroupWalk own("", MachineControlGroups(), Controller::Memory);
    if (own.AtEnd()) {
        GTEST_SKIP() << "no control groups";
    }
    std::filesystem::path const folder = own.File("qvx-test-" + std::to_string(getpid()));
    std::error_code error;
    std::filesystem::create_directory(folder, error);
    std::uint64_t const limit = 96 << 20;
    std::ofstream(folder / (own.IsUnified() ? "memory.max" : "memory.limit_in_bytes")) << limit << std::flush;
    std::ifstream in(folder / (own.IsUnified() ? "memory.max" : "memory.limit_in_bytes"));
    std::uint64_t set = 0;
    if (!(in >> set) || set != limit) {
        std::filesystem::remove(folder, error);
        GTEST_SKIP() << "no group of our own";
    }
    int const status = InChild([&] {
        std::ofstream(folder / "cgroup.procs") << getpid() << std::flush;
        TSystem::MemoryInfo const before = TSystem::Memory();
        std::string const taken(32 << 20, 'x');
        TSystem::MemoryInfo const after = TSystem::Memory();
        return before.totalPhysical == limit && after.availablePhysical + (30 << 20) < before.availablePhysical &&
               after.availablePhysical > (16 << 20) && TSystem::HostMemory().totalPhysical > limit &&
               TSystem::Sources().totalMemory.starts_with(folder.native());
    });
    std::filesystem::remove(folder, error);
    EXPECT_EQ(status, 0);
}

TEST(LocalEncoding, NamesOfCodePagesAndCharsets)
{
    EXPECT_STREQ(NameOfCodePage(1361), "UTF-8");
    EXPECT_STREQ(NameOfCodePage(37), "EBCDIC");
    EXPECT_STREQ(NameOfCodePage(1252), "windows-1252");
    EXPECT_STREQ(NameOfCodePage(1361), "windows-1252"); // the last one found
    EXPECT_STREQ(NameOfCodePage(65001), "UTF-8");
    constexpr struct
    {
        char const* charset;
        char const* name;
    } kCases[] = {
        {"ANSI_X3.4-1968", "US-ASCII"},
        {"ISO-8859-1", "iso-8859-1"},
        {"ISO-8859-15", "iso-8859-15"},
        {"utf8", "UTF-8"},
        {"CP1251", "windows-1251"},
        {"TIS-620", "tis-620"},
        {"SHIFT_JIS", "Shift_JIS"},
        {"GB2312", "EUC-CN"},
        {"IBM437", "US-ASCII"},
        {"EUC-JP", nullptr},
        {"cp1", nullptr},
        {"", nullptr},
    };
    for (auto const& row : kCases) {
        EXPECT_STREQ(NameOfCharset(row.charset), row.name) << row.charset;
    }
}

// The name is found out once per process, so each in a process of its own.
TEST(LocalEncoding, OfTheProgramOrElseOfTheEnvironment)
{
    constexpr struct
    {
        char const* environment;
        char const* set;
        std::string_view name;
    } kCases[] = {{"C", nullptr, "US-ASCII"},
                  {"C.UTF-8", nullptr, "UTF-8"},
                  {"C", "C.UTF-8", "UTF-8"},
                  {"no_SUCH.locale", nullptr, "UTF-8"}};
    for (auto const& row : kCases) {
        EXPECT_EQ(InChild([&] {
                      setenv("LC_ALL", row.environment, 1);
                      bool const isSet = row.set == nullptr || std::setlocale(LC_ALL, row.set) != nullptr;
                      char const* const name = TSystem::Local8BitEncoding();
                      return isSet && name == row.name && TSystem::Local8BitEncoding() == name;
                  }),
                  0)
            << row.environment;
    }
}

} // namespace
