// Watched processes on Linux: children that are killed, zombies, ids that go to another process, and a system that
// hands out no process descriptors.

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <qvxsys/QuorvexException.h>

#include "MonitoredProcess.h"
#include "ProcessText.h"

namespace {

using namespace qvxsys::monitor;

constexpr int kNotPossible = 77;

/// A forked process that does `work` and then waits to be killed. Made when the work is done.
class Child
{
public:
    explicit Child(std::function<void()> const& work = [] {})
    {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        m_pid = fork();
        if (m_pid == 0) {
            alarm(60);
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            work();
            EXPECT_EQ(write(ready[1], "x", 1), 1);
            for (;;) {
                pause();
            }
        }
        close(ready[1]);
        char x = 0;
        EXPECT_EQ(read(ready[0], &x, 1), 1);
        close(ready[0]);
    }
    ~Child()
    {
        if (m_pid != 0) {
            End();
            Reap();
        }
    }
    Child(Child const&) = delete;
    Child& operator=(Child const&) = delete;

    unsigned Pid() const { return static_cast<unsigned>(m_pid); }
    /// Leaves a zombie.
    void End() const
    {
        kill(m_pid, SIGKILL);
        siginfo_t info{};
        waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOWAIT);
    }
    void Reap()
    {
        waitpid(m_pid, nullptr, 0);
        m_pid = 0;
    }

private:
    pid_t m_pid = 0;
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

bool LooksEnded(MonitoredProcess const& process)
{
    return !process.IsRunning() && process.GetCpuUsage() == 0 && process.GetMemoryUsage() == 0;
}

/// The next process to be made gets this id, where the system lets itself be told so.
bool MakeNextPid(unsigned pid)
{
    return static_cast<bool>(std::ofstream("/proc/sys/kernel/ns_last_pid") << pid - 1 << std::flush);
}

std::uint64_t StartOf(unsigned pid)
{
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    return ParseStat(std::string(std::istreambuf_iterator<char>(in), {})).value().started;
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
    if (!LooksEnded(process) || !IsRefused(pid)) {
        return 2;
    }
    child.Reap();
    if (!LooksEnded(process) || !IsRefused(pid)) {
        return 3;
    }
    // Start times are in ticks of 10 ms: another process of the same tick cannot be told without a descriptor.
    while (StartOf(Child().Pid()) == started) {
    }
    // Other processes are made on the machine, too: it can take some tries.
    for (int i = 0; i < 100; ++i) {
        if (!MakeNextPid(pid)) {
            return kNotPossible;
        }
        Child const other;
        if (other.Pid() == pid) {
            return LooksEnded(process) && MonitoredProcess(pid).IsRunning() ? 0 : 4;
        }
    }
    return kNotPossible;
}

/// From now on pidfd_open fails with this error.
void RefusePidfd(unsigned error)
{
    sock_filter filter[] = {
        {BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)},
        {BPF_JMP | BPF_JEQ | BPF_K, 0, 1, SYS_pidfd_open},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | error},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
    };
    sock_fprog const program = {std::size(filter), filter};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
        _exit(kNotPossible);
    }
}

TEST(MonitoredProcess, KilledReapedRecycled)
{
    for (unsigned const error : {0, ENOSYS, EPERM, EMFILE}) {
        SCOPED_TRACE(error);
        pid_t const judge = fork();
        if (judge == 0) {
            if (error != 0) {
                RefusePidfd(error);
            }
            alarm(60);
            _exit(LifeOfAChild());
        }
        int status = 0;
        ASSERT_EQ(waitpid(judge, &status, 0), judge);
        ASSERT_TRUE(WIFEXITED(status));
        if (WEXITSTATUS(status) == kNotPossible) {
            GTEST_SKIP() << "no recycled id";
        }
        EXPECT_EQ(WEXITSTATUS(status), 0) << "the step that went wrong";
    }
}

TEST(MonitoredProcess, FirstThreadEndedBeforeTheOthers)
{
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    pid_t const child = fork();
    if (child == 0) {
        alarm(60);
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        static int const out = ready[1];
        pthread_t other;
        pthread_create(
            &other, nullptr,
            [](void*) -> void* {
                std::string state;
                while (state != "Z") { // until the first thread is gone
                    std::ifstream in("/proc/self/stat");
                    std::string skip;
                    in >> skip >> skip >> state;
                }
                EXPECT_EQ(write(out, "x", 1), 1);
                for (;;) {
                    pause();
                }
            },
            nullptr);
        syscall(SYS_exit, 0);
    }
    char x = 0;
    ASSERT_EQ(read(ready[0], &x, 1), 1);
    EXPECT_TRUE(MonitoredProcess(static_cast<unsigned>(child)).IsRunning());
    std::ifstream in("/proc/" + std::to_string(child) + "/stat");
    std::string const stat(std::istreambuf_iterator<char>(in), {});
    EXPECT_NE(stat.find(") Z "), std::string::npos) << stat;
    EXPECT_FALSE(ParseStat(stat).value().ended) << stat;
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(ready[0]);
    close(ready[1]);
}

// The kernel's sum over all mappings, which it takes another way.
TEST(MonitoredProcess, PrivateMemoryOfAChild)
{
    constexpr std::size_t kPrivate = 48 << 20, kShared = 32 << 20;
    Child const child([] {
        std::memset(mmap(nullptr, kPrivate, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0), 1, kPrivate);
        std::memset(mmap(nullptr, kShared, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0), 1, kShared);
    });
    std::ifstream in("/proc/" + std::to_string(child.Pid()) + "/smaps_rollup");
    std::uint64_t expected = 0, kilobytes = 0;
    for (std::string key; in >> key; in.ignore(100, '\n')) {
        if (key == "Anonymous:" && in >> kilobytes) {
            expected = kilobytes * 1024;
        }
        in.clear();
    }
    ASSERT_GE(expected, kPrivate);
    EXPECT_NEAR(static_cast<double>(MonitoredProcess(child.Pid()).GetMemoryUsage()), static_cast<double>(expected),
                1e6);
}

TEST(MonitoredProcess, OneDescriptorEach)
{
    auto const descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator());
    };
    Child const child;
    auto const before = descriptors();
    {
        std::vector<MonitoredProcess> processes;
        for (int i = 0; i < 20; ++i) {
            processes.emplace_back(child.Pid());
            static_cast<void>(processes.back().GetCpuUsage());
            static_cast<void>(processes.back().GetMemoryUsage());
        }
        processes.emplace_back();
        EXPECT_EQ(descriptors(), before + 20);
        EXPECT_TRUE(IsRefused(static_cast<unsigned>(-1)));
    }
    EXPECT_EQ(descriptors(), before);
}

// The other way to the same figure, which is taken when something on the machine is swapped out.
TEST(MonitoredProcess, PrivateMemoryByStatusAndStatm)
{
    PrivateMemory memory;
    std::ifstream in("/proc/self/status");
    for (std::string line; std::getline(in, line);) {
        memory.Take(line);
    }
    EXPECT_NEAR(static_cast<double>(MonitoredProcess().GetMemoryUsage()), static_cast<double>(memory.bytes), 1e6);
    PrivateMemory swapped;
    for (char const* const line : {"VmRSS:\t 9 kB", "RssAnon:\t  3 kB", "VmSwap: 4 kB", "VmSwap:", "RssAnon: -1 kB"}) {
        swapped.Take(line);
    }
    EXPECT_EQ(swapped.bytes, 7u * 1024);
    EXPECT_EQ(ParsePrivatePages("900 50 20 1 0 9 0\n"), 30u);
    for (char const* const text : {"900 50 20", "900 20 50 1\n", "900 x 20\n", "\n", ""}) {
        EXPECT_EQ(ParsePrivatePages(text), std::nullopt) << text;
    }
}

TEST(ProcessStat, Texts)
{
    std::string const tail = " 1 1 1 0 -1 4194560 100 0 0 0 12 30 5 6 20 0 1 0 987654321 0 0\n";
    struct Case
    {
        std::string text;
        bool good;
        bool ended;
    } const cases[] = {
        {"7 (sh) S" + tail, true, false},
        {"7 (a) Z (b\n) c) R" + tail, true, false},
        {"7 () Z" + tail, true, true},
        {"7 (sh) S 1 1 1 0 -1 4194560 100 0 0 0 12 30 5 6 20 0 1 0 98765", false, false},
        {"7 (sh) S 1 1 1\n", false, false},
        {"7 (sh) S 1 1 1 0 -1 4194560 100 0 0 0 -12 30 5 6 20 0 1 0 9 0 0\n", false, false},
        {"", false, false},
    };
    for (Case const& row : cases) {
        auto const stat = ParseStat(row.text);
        ASSERT_EQ(stat.has_value(), row.good) << row.text;
        if (stat) {
            EXPECT_EQ(stat->ended, row.ended) << row.text;
            EXPECT_EQ(stat->ticks, 42u);
            EXPECT_EQ(stat->started, 987654321u);
        }
    }
}

} // namespace
