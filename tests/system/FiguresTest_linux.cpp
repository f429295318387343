// Memory, processors and the local encoding: made-up trees of kernel files by table, and the machine as others see it.

#include <clocale>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include <sched.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <qvxsys/TSystem.h>

#include "ControlGroup.h"
#include "LocalEncoding.h"
#include "MachineFigures.h"
#include "support/ChildProcess.h"
#include "support/FakeTree.h"
#include "support/InChild_posix.h"

namespace {

using namespace qvxsys::system;

constexpr std::uint64_t kKilo = 1024;
std::string const kHost = "/proc/meminfo=MemTotal:  8000 kB\nMemFree: 100 kB\nMemAvailable: 6000 kB\nCached: 1 kB|";
// One tree of version 2, and the process's group in it.
std::string const kUnified =
    kHost + "/proc/self/mountinfo=30 1 0:26 / /cg rw - cgroup2 cgroup2 rw|/proc/self/cgroup=0::";
std::string const kOld = kHost + "/proc/self/mountinfo=1 1 0:1 / /cg/unified rw - cgroup2 cgroup2 rw\n"
                                 "2 1 0:2 ";

struct Machine
{
    std::string files;
    std::string found;
};

// Total, available (kB), and where they are from if not from the host.
TEST(Memory, OfMadeUpMachines)
{
    Machine const machines[] = {
        {kHost, "8000 6000"},
        {"/proc/meminfo=MemTotal: 8000 kB\nMemFree: 1000 kB\nBuffers: 500 kB\nCached: 700 kB\nShmem: 200 kB",
         "8000 2000"},
        {"/proc/meminfo=MemTotal: 8 kB\nMemAvailable: 9 kB", "8 8"},
        // Caches are available; so is all when there are more of them than use.
        {kUnified + "/a|/cg/a/memory.max=4096000|/cg/a/memory.current=3072000|"
                    "/cg/a/memory.stat=anon 7\ninactive_file 1024000\nactive_file 512000\nslab_reclaimable 512000",
         "4000 3000 /cg/a/memory.max /cg/a/memory.current"},
        {kUnified + "/|/cg/memory.max=1024000|/cg/memory.current=5|"
                    "/cg/memory.stat=inactive_file 99999999999999999999999\nactive_file 1",
         "1000 1000 /cg/memory.max /cg/memory.current"},
        // Ancestors, the limit that holds back, use over the limit and use unknown.
        {kUnified + "/a/b/c|/cg/a/b/c/memory.max=max|/cg/a/b/memory.max=4096000|/cg/a/b/memory.current=4096000|"
                    "/cg/a/memory.max=2048000|/cg/a/memory.current=1024",
         "2000 0 /cg/a/memory.max /cg/a/b/memory.current"},
        {kUnified + "/a|/cg/a/memory.max=4096000|/cg/a/memory.high=1024000|/cg/a/memory.current=0",
         "1000 1000 /cg/a/memory.high /cg/a/memory.current"},
        {kUnified + "/a|/cg/a/memory.max=1024000|/cg/a/memory.current=99999999999",
         "1000 0 /cg/a/memory.max /cg/a/memory.current"},
        {kUnified + "/a|/cg/a/memory.max=7168000", "7000 6000 /cg/a/memory.max"},
        // Limits beyond the machine or malformed, a path outside the namespace, one too long, long lines, blanks.
        {kUnified + "/a/b/c/d|/cg/a/b/c/d/memory.max=99999999999999999999999999|/cg/a/b/c/memory.max=-1|"
                    "/cg/a/b/memory.max=102~|/cg/a/memory.max=~",
         "8000 6000"},
        {kUnified + "/../x|/cg/memory.max=1024000|/x/memory.max=1", "1000 1000 /cg/memory.max /cg/memory.current"},
        {kHost +
             "/proc/self/mountinfo=1 1 0:1 /other /x rw - cgroup2 cgroup2 rw\n1 1 0:1 / /cg rw - cgroup2 cgroup2 rw|"
             "/proc/self/cgroup=0::/a|/cg/a/memory.max=1024000|/cg/a/memory.current=0|/x/memory.max=1",
         "1000 1000 /cg/a/memory.max /cg/a/memory.current"},
        {kUnified + '/' + std::string(2000, 'x') + "|/cg/memory.max=1024000", "8000 6000"},
        {kHost + "/proc/self/mountinfo=" + std::string(9000, 'x') + " - cgroup2 cgroup2 rw\n" +
             "30 1 0:26 / /cg rw - cgroup2 cgroup2 rw|/proc/self/cgroup=x\n0::\n:\n0::/a b\n0::/cut off~|"
             "/cg/a b/memory.max=1024000|/cg/a b/memory.current=0",
         "1000 1000 /cg/a b/memory.max /cg/a b/memory.current"},
        // Version 1: in a container, and with ancestors out of sight.
        {kOld + "/docker/f00 /cg/my\\040memory rw shared:1 - cgroup cgroup rw,memory|"
                "/proc/self/cgroup=4:memory:/docker/f00/job\n3:cpu,cpuacct:/\n0::/elsewhere|"
                "/cg/unified/elsewhere/memory.max=1|/cg/my memory/job/memory.limit_in_bytes=9223372036854771712|"
                "/cg/my memory/memory.limit_in_bytes=4096000|/cg/my memory/memory.usage_in_bytes=2048000|"
                "/cg/my memory/memory.stat=inactive_file 3\ntotal_inactive_file 1024000",
         "4000 3000 /cg/my memory/memory.limit_in_bytes /cg/my memory/memory.usage_in_bytes"},
        {kOld + "/ /cg rw - cgroup cgroup rw,memory|/proc/self/cgroup=4:memory:/|"
                "/cg/memory.limit_in_bytes=9223372036854771712|/cg/memory.usage_in_bytes=1024000|"
                "/cg/memory.stat=hierarchical_memory_limit 2048000",
         "2000 1000 /cg/memory.stat /cg/memory.usage_in_bytes"},
    };
    for (Machine const& machine : machines) {
        FakeTree const tree(machine.files);
        MachineMemory memory;
        platform::ReadMemory(tree.Root().c_str(), memory);
        std::string found =
            std::to_string(memory.usable.total / kKilo) + ' ' + std::to_string(memory.usable.available / kKilo);
        for (PathText const& from : {memory.totalFrom, memory.availableFrom}) {
            found += from.View() != "/proc/meminfo" ? ' ' + std::string(from.View().substr(tree.Root().size())) : "";
        }
        EXPECT_EQ(found, machine.found) << machine.files;
    }
}

TEST(Memory, WithoutMemInfo)
{
    struct sysinfo info
    {};
    ASSERT_EQ(sysinfo(&info), 0);
    for (std::string_view const text :
         {"~", "MemTotal: x kB\nMemFree: 1 kB", "MemTotal: 5 kB", "MemFree: 5 kB\nMemTotal: 5 kB~"}) {
        FakeTree const tree("/proc/meminfo=" + std::string(text));
        MachineMemory memory;
        platform::ReadMemory(tree.Root().c_str(), memory);
        EXPECT_EQ(memory.usable.total, info.totalram * info.mem_unit);
        EXPECT_GT(memory.usable.available, 0u);
        EXPECT_EQ(memory.totalFrom.View(), "sysinfo()");
    }
}

// Processors, quota/period, and processors that tell, capped ones and thermal events.
TEST(Processors, OfMadeUpMachines)
{
    std::string const real = std::to_string(sysconf(_SC_NPROCESSORS_ONLN));
    std::string const online = "/sys/devices/system/cpu/online=", cpu = "|/sys/devices/system/cpu/cpu";
    Machine const machines[] = {
        {"", real + " 0/0 0 0 0"},
        {online + "0-3,8,10-11", "7 0/0 0 0 0"},
        {online + "3-", real + " 0/0 0 0 0"},
        {online + "0-1~", real + " 0/0 0 0 0"},
        {online + "0-99999999999999999999999", "65536 0/0 0 0 0"},
        {kUnified + "/a/b|/cg/a/b/cpu.max=300000 200000|/cg/a/cpu.max=100000 100000|/cg/cpu.max=max 100000",
         real + " 100000/100000 0 0 0"},
        {kUnified + "/a/b/c/d|/cg/a/b/c/d/cpu.max=100000 0|/cg/a/b/c/cpu.max=-5 100000|"
                    "/cg/a/b/cpu.max=99999999999999999999 1|/cg/a/cpu.max=1 10000~",
         real + " 0/0 0 0 0"},
        {kOld + "/ /c rw - cgroup cgroup rw,cpu,cpuacct|/proc/self/cgroup=3:cpuacct,cpu:/a\n0::/|"
                "/c/a/cpu.cfs_quota_us=50000|/c/a/cpu.cfs_period_us=100000|/c/cpu.cfs_quota_us=-1|"
                "/c/cpu.cfs_period_us=100000",
         real + " 50000/100000 0 0 0"},
        // Idling slowly is no throttling.
        {online + "0-2" + cpu + "0/cpufreq/cpuinfo_max_freq=3000000" + cpu + "0/cpufreq/scaling_max_freq=3000000" +
             cpu + "0/cpufreq/scaling_cur_freq=800000" + cpu + "0/thermal_throttle/core_throttle_count=3" + cpu +
             "0/thermal_throttle/package_throttle_count=4" + cpu + "1/cpufreq/cpuinfo_max_freq=3000000" + cpu +
             "1/cpufreq/scaling_max_freq=2000000" + cpu + "2/cpufreq/cpuinfo_max_freq=3000000" + cpu +
             "2/cpufreq/bios_limit=-1",
         "3 0/0 3 1 7"},
        {online + "0" + cpu + "0/cpufreq/cpuinfo_max_freq=3000000" + cpu + "0/cpufreq/bios_limit=2999999" + cpu +
             "0/thermal_throttle/core_throttle_count=-3",
         "1 0/0 1 1 0"},
    };
    for (Machine const& machine : machines) {
        FakeTree const tree(machine.files);
        MachineProcessors processors;
        MachineThrottling throttling;
        platform::ReadProcessors(tree.Root().c_str(), processors);
        platform::ReadThrottling(tree.Root().c_str(), throttling);
        std::ostringstream found;
        found << processors.host << ' ' << processors.quota << '/' << processors.period << ' ' << throttling.known
              << ' ' << throttling.capped << ' ' << throttling.events;
        EXPECT_EQ(found.str(), machine.found) << machine.files;
    }
}

unsigned long long Asked(char const* command)
{
    ChildResult const result = RunChild({"/bin/sh", "-c", command});
    EXPECT_EQ(result.status, 0) << command << result.err;
    return std::strtoull(result.out.c_str(), nullptr, 10);
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
    TSystem::MemoryInfo const memory = TSystem::Memory();
    EXPECT_LE(memory.totalPhysical, host.totalPhysical);
    EXPECT_EQ(memory.usedPhysical, memory.totalPhysical - memory.availablePhysical);
    EXPECT_EQ(memory.usedCombined, memory.totalCombined - memory.availableCombined);
    EXPECT_EQ(memory.load, memory.usedPhysical * 100 / memory.totalPhysical);
    EXPECT_EQ(InChild([] {
                  cpu_set_t one;
                  CPU_ZERO(&one);
                  CPU_SET(static_cast<std::size_t>(sched_getcpu()), &one);
                  return sched_setaffinity(0, sizeof one, &one) == 0 && TSystem::Processors().allowed == 1 &&
                         TSystem::Processors().usable == 1;
              }),
              1);
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
    EXPECT_EQ(status, 1);
}

TEST(LocalEncoding, NamesOfCodePagesAndCharsets)
{
    EXPECT_STREQ(NameOfCodePage(1361), "UTF-8");
    EXPECT_STREQ(NameOfCodePage(37), "EBCDIC");
    EXPECT_STREQ(NameOfCodePage(1252), "windows-1252");
    EXPECT_STREQ(NameOfCodePage(1361), "windows-1252"); // the last one found
    EXPECT_STREQ(NameOfCodePage(65001), "UTF-8");
    constexpr char const* kNames[][2] = {{"ANSI_X3.4-1968", "US-ASCII"},
                                         {"ISO-8859-15", "iso-8859-15"},
                                         {"utf8", "UTF-8"},
                                         {"CP1251", "windows-1251"},
                                         {"SHIFT_JIS", "Shift_JIS"},
                                         {"GB2312", "EUC-CN"},
                                         {"IBM437", "US-ASCII"},
                                         {"EUC-JP", nullptr},
                                         {"cp1", nullptr},
                                         {"", nullptr}};
    for (auto const& [charset, name] : kNames) {
        EXPECT_STREQ(NameOfCharset(charset), name) << charset;
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
                  1)
            << row.environment;
    }
}

} // namespace
