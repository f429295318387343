// Watched processes on Linux: children that are killed, zombies, ids that go to another process, and a system that
// hands out no process descriptors.

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/TSystem.h>

#include "MonitoredProcess.h"
#include "ProcessText.h"
#include "support/SystemCalls_linux.h"
#include "support/TemporaryFolder.h"

namespace {

using namespace qvxsys::monitor;

std::string StatOf(unsigned pid)
{
    return ReadWhole("/proc/" + std::to_string(pid) + "/stat");
}

std::string StateOf(unsigned pid)
{
    std::string const stat = StatOf(pid);
    return stat.substr(stat.rfind(')') + 2, 1);
}

int g_pipe[2]; // from a child to its maker

void Tell()
{
    EXPECT_EQ(write(g_pipe[1], "x", 1), 1);
}

/// A forked process that does `work` and then waits to be killed. Made when the work is done.
class Child
{
public:
    explicit Child(std::function<void()> const& work = [] {})
    {
        EXPECT_EQ(pipe(g_pipe), 0);
        m_pid = fork();
        if (m_pid == 0) {
            alarm(60);
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            work();
            Tell();
            for (;;) {
                pause();
            }
        }
        close(g_pipe[1]);
        char x = 0;
        EXPECT_EQ(read(g_pipe[0], &x, 1), 1);
        close(g_pipe[0]);
    }
    ~Child()
    {
        End();
        Reap();
    }
    Child(Child const&) = delete;
    Child& operator=(Child const&) = delete;

    unsigned Pid() const { return static_cast<unsigned>(m_pid); }
    /// Leaves a zombie.
    void End() const
    {
        siginfo_t info{};
        if (!m_isReaped && kill(m_pid, SIGKILL) == 0) {
            waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOWAIT);
        }
    }
    void Reap() { m_isReaped = m_isReaped || waitpid(m_pid, nullptr, 0) == m_pid; }

private:
    pid_t m_pid = 0;
    bool m_isReaped = false;
};

bool IsRefused(unsigned pid)
{
    try {
        MonitoredProcess const process(pid);
        return false;
    } catch (QuorvexException const& e) {
        return e.GetError().GetCode() == 0xC1062A71 && !MonitoredProcess::IsRunning(pid);
    }
}

std::uint64_t StartOf(unsigned pid)
{
    return ParseStat(StatOf(pid)).value().started;
}

bool LooksEnded(MonitoredProcess const& process)
{
    return !process.IsRunning() && process.GetCpuUsage() == 0 && process.GetMemoryUsage() == 0;
}

/// Runs through the life of a child; which step went wrong, 0 for none.
int LifeOfAChild()
{
    Child child;
    unsigned const pid = child.Pid();
    std::uint64_t const started = StartOf(pid);
    MonitoredProcess const process(pid);
    if (!process.IsRunning() || !MonitoredProcess::IsRunning(pid) || process.GetMemoryUsage() == 0) {
        return 1;
    }
    child.End();
    bool const knowsZombies = LooksEnded(process) && IsRefused(pid);
    child.Reap();
    if (!knowsZombies || !LooksEnded(process) || !IsRefused(pid)) {
        return knowsZombies ? 3 : 2;
    }
    // Start times are in ticks of 10 ms: another process of the same tick cannot be told without a descriptor.
    while (StartOf(Child().Pid()) == started) {
    }
    // Other processes are made on the machine, too: it can take some tries.
    for (int i = 0; i < 100; ++i) {
        if (!(std::ofstream("/proc/sys/kernel/ns_last_pid") << pid - 1 << std::flush)) {
            return kNotPossible;
        }
        Child const other;
        if (other.Pid() == pid) {
            return LooksEnded(process) && MonitoredProcess(pid).IsRunning() ? 0 : 4;
        }
    }
    return kNotPossible;
}

TEST(MonitoredProcess, KilledReapedRecycled)
{
    for (int const error : {0, ENOSYS, EPERM, EMFILE}) {
        SCOPED_TRACE(error);
        int const step = InChild([error] {
            if (error != 0) {
                Refuse(SYS_pidfd_open, error);
            }
            return LifeOfAChild();
        });
        if (step == kNotPossible) {
            GTEST_SKIP() << "no recycled id";
        }
        EXPECT_EQ(step, 0) << "the step that went wrong";
    }
}

TEST(MonitoredProcess, FirstThreadEndedBeforeTheOthers)
{
    constexpr std::size_t kPrivate = 32 << 20;
    Child const child([] {
        std::memset(mmap(nullptr, kPrivate, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0), 1, kPrivate);
        // The parent hears of it from another thread, once the first one is gone.
        std::thread([] {
            while (StateOf(static_cast<unsigned>(getpid())) != "Z") {
            }
            Tell();
            pause();
        }).detach();
        syscall(SYS_exit, 0);
    });
    EXPECT_EQ(StateOf(child.Pid()), "Z");
    MonitoredProcess const process(child.Pid());
    EXPECT_TRUE(process.IsRunning());
    EXPECT_GE(process.GetMemoryUsage(), kPrivate) << "the others have it";
    EXPECT_FALSE(ParseStat(StatOf(child.Pid())).value().ended);
}

TEST(MonitoredProcess, ProcessorTimeAsTheCLibraryHasIt)
{
    MonitoredProcess const process;
    auto const wallStart = std::chrono::steady_clock::now();
    std::clock_t const start = std::clock();
    static_cast<void>(process.GetCpuUsage());
    while (std::clock() - start < CLOCKS_PER_SEC / 5) {
    }
    unsigned const percent = process.GetCpuUsage();
    double const used = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    std::chrono::duration<double> const wall = std::chrono::steady_clock::now() - wallStart;
    EXPECT_NEAR(percent, used * 100 / wall.count() / TSystem::Processors().usable, 8);
}

/// Calls visit(line) for each line of a file in /proc/PID.
void ForEachLine(unsigned pid, char const* name, std::function<void(std::string const&)> const& visit)
{
    std::ifstream in("/proc/" + std::to_string(pid) + '/' + name);
    for (std::string line; std::getline(in, line);) {
        visit(line);
    }
}

// As statm has it, beside the two figures of status, which take its place when something on the machine is swapped out,
// and the sum over all mappings.
TEST(MonitoredProcess, PrivateMemoryOfItself)
{
    MonitoredProcess const process;
    std::uint64_t const before = process.GetMemoryUsage();
    std::vector<char> const taken(64 << 20, 'x');
    // Memory checkers add an eighth of their own.
    EXPECT_NEAR(static_cast<double>(process.GetMemoryUsage() - before), 68 << 20, 6 << 20);
}

TEST(MonitoredProcess, PrivateMemoryOfAChild)
{
    constexpr std::size_t kPrivate = 48 << 20, kShared = 32 << 20;
    Child const child([] {
        std::memset(mmap(nullptr, kPrivate, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0), 1, kPrivate);
        std::memset(mmap(nullptr, kShared, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0), 1, kShared);
    });
    double mapped = 0;
    ForEachLine(child.Pid(), "smaps_rollup", [&](std::string const& line) {
        mapped += line.starts_with("Anonymous:") ? std::stod(line.substr(10)) * 1024 : 0;
    });
    PrivateMemory status;
    ForEachLine(child.Pid(), "status", [&](std::string const& line) { status.Take(line); });
    double const bytes = static_cast<double>(MonitoredProcess(child.Pid()).GetMemoryUsage());
    EXPECT_GE(bytes, kPrivate);
    EXPECT_NEAR(bytes, mapped, 1e6);
    EXPECT_NEAR(bytes, static_cast<double>(status.bytes), 1e6);
}

TEST(MonitoredProcess, OneDescriptorEach)
{
    auto const descriptors = [] { return Entries("/proc/self/fd"); };
    Child const child;
    auto const before = descriptors();
    {
        std::vector<MonitoredProcess> processes;
        for (int i = 0; i < 20; ++i) {
            processes.emplace_back(child.Pid());
            EXPECT_GT(processes.back().GetMemoryUsage() + processes.back().GetCpuUsage(), 0u);
        }
        processes.emplace_back();
        EXPECT_EQ(descriptors(), before + 20);
    }
    EXPECT_EQ(descriptors(), before);
}

TEST(ProcessText, MalformedOrCutOff)
{
    std::string const tail = " 1 1 1 0 -1 4194560 100 0 0 0 12 30 5 6 20 0 1 0 987654321 0 0\n";
    for (std::string const& text : {"7 (sh) S" + tail, "7 (a) Z (b\n) c) R" + tail, "7 () Z" + tail}) {
        ProcessStat const stat = ParseStat(text).value();
        EXPECT_EQ(stat.ended, text.starts_with("7 () Z"));
        EXPECT_EQ(stat.ticks, 42u);
        EXPECT_EQ(stat.started, 987654321u);
        EXPECT_FALSE(ParseStat(text.substr(0, text.size() - 1)));
    }
    EXPECT_FALSE(ParseStat("7 (sh) S 1 1 1\n"));
    EXPECT_FALSE(ParseStat("7 (sh) S 1 1 1 0 -1 4194560 100 0 0 0 -12 30 5 6 20 0 1 0 9 0 0\n"));
    EXPECT_EQ(ParsePrivatePages("900 50 20 1 0 9 0\n"), 30u);
    for (char const* const text : {"900 50 20", "900 20 50 1\n", "900 x 20\n", "\n", ""}) {
        EXPECT_EQ(ParsePrivatePages(text), std::nullopt) << text;
    }
    PrivateMemory memory;
    for (char const* const line : {"VmRSS:\t 9 kB", "RssAnon:\t  3 kB", "VmSwap: 4 kB", "VmSwap:", "RssAnon: -1 kB"}) {
        memory.Take(line);
    }
    EXPECT_EQ(memory.bytes, 7u * 1024);
}

} // namespace
