// Dumps of the own and of other processes, read back by an independent reader and by lldb.

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <link.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>

#include <gtest/gtest.h>
#include <qvxsys/CrashDump.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TSystem.h>

#include "DumpSupport.h"
#include "MinidumpReader.h"
#include "support/SystemCalls_linux.h"
#include "support/TemporaryFolder.h"
#include "support/Threads.h"

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kMark = 0x5EC7E7A11CE0FFEE;
constexpr unsigned int kNobody = 65534;

std::uint64_t volatile g_marker = kMark; // in a data segment

int Dump(long id, fs::path const& path, int type = MiniDumpNormal)
{
    errno = 0;
    return WriteCrashDump(nullptr, static_cast<unsigned long>(id), TStringCore(path.string()), type);
}

/// 0, or why the dump failed.
int DumpError(long id, fs::path const& path, int type = MiniDumpNormal)
{
    return Dump(id, path, type) == 1 ? 0 : errno;
}

std::string BytesOf(std::uint64_t value)
{
    return std::string(reinterpret_cast<char const*>(&value), sizeof value);
}

template<class T>
std::uint64_t AddressOf(T* pointer)
{
    return reinterpret_cast<std::uint64_t>(pointer);
}

class DumpTest : public testing::Test
{
protected:
    void SetUp() override { SKIP_WITHOUT_TRACING(); }

    fs::path File(std::string const& name = "a.dmp") const { return m_folder.Path() / name; }
    [[nodiscard]] bool IsEmpty() const { return fs::is_empty(m_folder.Path()); }

    TemporaryFolder m_folder;
    long m_own = getpid();
};

/// Threads that stand with a mark on their stacks.
class MarkedThreads
{
public:
    struct Mark
    {
        std::uint32_t thread;
        std::uint64_t address;
    };

    explicit MarkedThreads(int count) : marks(static_cast<std::size_t>(count))
    {
        for (std::size_t i = 0; i < marks.size(); ++i) {
            m_threads.emplace_back([this, i] { Stand(i); });
        }
        YieldUntil([&] { return m_standing.load() == count; });
    }
    ~MarkedThreads()
    {
        m_end = true;
        m_end.notify_all();
    }

    std::vector<Mark> marks;

private:
    [[gnu::noinline]] void Stand(std::size_t i)
    {
        std::uint64_t volatile mark = kMark + i;
        pthread_setname_np(pthread_self(), ("mark " + std::to_string(i)).c_str());
        marks[i] = {static_cast<std::uint32_t>(TSystem::ThreadID()), AddressOf(&mark)};
        ++m_standing;
        m_end.wait(false);
    }

    std::atomic<int> m_standing{0};
    std::atomic<bool> m_end{false};
    std::vector<std::jthread> m_threads;
};

/// A moment of a dump: before its helper makes a certain system call on a file whose path ends like this.
struct Stage
{
    long call;
    std::string file;
    int times; ///< the how manieth of them
    int error; ///< expected
};

std::string FileOf(pid_t process, user_regs_struct const& registers)
{
    if (registers.orig_rax != SYS_openat) {
        std::error_code none;
        return fs::read_symlink("/proc/" + std::to_string(process) + "/fd/" + std::to_string(registers.rdi), none);
    }
    char path[64] = {};
    iovec const to{path, sizeof path - 1};
    iovec const from{reinterpret_cast<void*>(registers.rsi), sizeof path - 1};
    process_vm_readv(process, &to, 1, &from, 1, 0);
    return path;
}

/// Waits until nothing of its memory is left, which is earlier than its end.
void KillWhole(Victim const& victim)
{
    int const pageMap = open(("/proc/" + std::to_string(victim.Id()) + "/pagemap").c_str(), O_RDONLY);
    victim.Kill();
    std::uint64_t entry;
    YieldUntil([&] { return pread(pageMap, &entry, sizeof entry, 0) <= 0; });
    close(pageMap);
}

/// The error of a dump of the victim, which is killed at that stage; -1 if the dump was never there. Where that is to
/// fail, less may be written than the victim's memory, even less than its address space.
int DumpWithAKill(Victim const& victim, Stage const& stage, fs::path const& file)
{
    pid_t const writer = fork();
    if (writer == 0) {
        if (stage.error != 0) {
            rlimit const little{Victim::kMemory / 2, Victim::kMemory / 2};
            setrlimit(RLIMIT_FSIZE, &little);
        }
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        Filter(stage.call, SECCOMP_RET_TRACE);
        if (stage.call == SYS_pread64) {
            Refuse(SYS_ioctl, ENOTTY); // so that it reads the page map, as before Linux 6.7
        }
        _exit(DumpError(victim.Id(), file, MiniDumpWithPrivateReadWriteMemory));
    }
    int status = 0;
    waitpid(writer, &status, 0);
    ptrace(PTRACE_SETOPTIONS, writer, nullptr, PTRACE_O_EXITKILL | PTRACE_O_TRACECLONE | PTRACE_O_TRACESECCOMP);
    ptrace(PTRACE_CONT, writer, nullptr, nullptr);
    waitpid(writer, &status, 0);
    if (!WIFSTOPPED(status)) {
        return WEXITSTATUS(status);
    }
    unsigned long message = 0;
    ptrace(PTRACE_GETEVENTMSG, writer, nullptr, &message);
    ptrace(PTRACE_DETACH, writer, nullptr, nullptr);
    pid_t const helper = static_cast<pid_t>(message);
    int seen = 0;
    while (waitpid(helper, &status, __WALL) == helper && WIFSTOPPED(status)) {
        user_regs_struct registers;
        ptrace(PTRACE_GETREGS, helper, nullptr, &registers);
        bool const call = status >> 16 == PTRACE_EVENT_SECCOMP;
        if (call && FileOf(helper, registers).ends_with(stage.file) && ++seen == stage.times) {
            KillWhole(victim);
        }
        ptrace(PTRACE_CONT, helper, nullptr, nullptr);
    }
    waitpid(writer, &status, 0);
    return seen < stage.times ? -1 : WEXITSTATUS(status);
}

} // namespace

TEST_F(DumpTest, OwnThreadsWithNamesRegistersAndStacks)
{
    MarkedThreads const standing(20);
    ASSERT_EQ(WriteCrashDump(nullptr, TSystem::ProcessID(), File().wstring().c_str(), MiniDumpNormal), 1);
    MinidumpReader const dump(File());
    EXPECT_EQ(dump.threads.size(), Entries("/proc/self/task"));
    for (std::size_t i = 0; i < standing.marks.size(); ++i) {
        ASSERT_EQ(dump.threads.count(standing.marks[i].thread), 1u);
        MinidumpReader::Thread const& thread = dump.threads.at(standing.marks[i].thread);
        EXPECT_EQ(thread.name, "mark " + std::to_string(i));
        EXPECT_EQ(dump.Memory(standing.marks[i].address, 8), BytesOf(kMark + i));
        EXPECT_GE(thread.sp, thread.stack);
        EXPECT_LT(thread.sp, thread.stack + thread.stackSize);
        EXPECT_EQ(dump.Memory(thread.ip, 16), std::string(reinterpret_cast<char const*>(thread.ip), 16));
    }
    EXPECT_EQ(dump.In<std::uint16_t>(7, 0), 9);        // x86-64
    EXPECT_EQ(dump.In<std::uint32_t>(7, 20), 0x8201u); // Linux
    EXPECT_EQ(dump.In<std::uint32_t>(15, 8), static_cast<std::uint32_t>(m_own));
    EXPECT_EQ(dump.Stream(0x47670006), ReadWhole("/proc/self/cmdline"));
    EXPECT_EQ(dump.Stream(0x47670007), ReadWhole("/proc/self/environ"));
    EXPECT_EQ(dump.Stream(0x47670008), ReadWhole("/proc/self/auxv"));
    EXPECT_FALSE(dump.Has(6)) << "nothing crashed";
    struct stat info
    {};
    ASSERT_EQ(stat(File().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600u);
    EXPECT_EQ(Entries(m_folder.Path()), 1u);
    std::string const stacks = Debugger(File(), {"bt all"});
    EXPECT_EQ(CountOf(stacks, "OwnThreadsWithNamesRegistersAndStacks_Test::TestBody("), stacks.empty() ? 0 : 1)
        << stacks;
    // More where what it calls is inlined into it.
    EXPECT_GE(CountOf(stacks, "MarkedThreads::Stand("), stacks.empty() ? 0 : 20) << stacks;
}

TEST_F(DumpTest, ModulesAreThoseOfTheDynamicLinker)
{
    ASSERT_EQ(Dump(m_own, File()), 1) << GetLastErrorString();
    MinidumpReader const dump(File());
    auto const find = [&](std::uint64_t address) -> MinidumpReader::Module {
        for (MinidumpReader::Module const& module : dump.modules) {
            if (address >= module.base && address < module.base + module.size) {
                return module;
            }
        }
        return {};
    };
    std::vector<std::pair<std::string, std::uint64_t>> loaded;
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* list) {
            static_cast<decltype(loaded)*>(list)->emplace_back(info->dlpi_name, AddressOf(info->dlpi_phdr));
            return 0;
        },
        &loaded);
    for (auto const& [name, headers] : loaded) {
        MinidumpReader::Module const module = find(headers);
        EXPECT_NE(module.size, 0u) << name;
        if (name.starts_with('/')) {
            EXPECT_EQ(module.name, fs::canonical(name).string());
        }
        if (fs::exists(module.name)) {
            std::string const notes = RunChild({"/usr/bin/readelf", "-n", module.name}).out;
            EXPECT_EQ(notes.find("Build ID: " + module.buildId + "\n") != std::string::npos,
                      notes.find("Build ID: ") != std::string::npos)
                << module.name << module.buildId << notes;
        }
    }
    EXPECT_EQ(dump.modules.front().name, fs::canonical("/proc/self/exe").string());
}

TEST_F(DumpTest, TypesTellWhatIsInIt)
{
    auto const heap = std::make_unique<std::uint64_t>(kMark + 1);
    std::uint64_t volatile onStack = kMark + 2;
    std::string const code(reinterpret_cast<char const*>(&ReadWhole), 64);
    struct
    {
        int type;
        bool stack, heap, data, code, paths;
    } const table[] = {
        {MiniDumpNormal, true, false, false, false, true},
        {MiniDumpWithDataSegs, true, false, true, false, true},
        {MiniDumpWithPrivateReadWriteMemory, true, true, false, false, true},
        {MiniDumpWithPrivateWriteCopyMemory, true, false, true, false, true},
        {MiniDumpWithCodeSegs, true, false, false, true, true},
        {MiniDumpWithIndirectlyReferencedMemory, true, true, false, false, true},
        {MiniDumpWithFullMemory, true, true, true, true, true},
        {MiniDumpFilterMemory, false, false, false, false, true},
        {MiniDumpFilterModulePaths, true, false, false, false, false},
        {MiniDumpFilterTriage, false, false, false, false, false},
        {MiniDumpWithoutOptionalData, true, false, false, false, true},
    };
    for (auto const& row : table) {
        SCOPED_TRACE(row.type);
        ASSERT_EQ(Dump(m_own, File(), row.type), 1) << GetLastErrorString();
        MinidumpReader const dump(File());
        EXPECT_EQ(dump.Memory(AddressOf(&onStack), 8) == BytesOf(onStack), row.stack);
        EXPECT_EQ(dump.Memory(AddressOf(heap.get()), 8) == BytesOf(*heap), row.heap);
        if (row.type != MiniDumpWithIndirectlyReferencedMemory) { // which may find a pointer to anything
            EXPECT_EQ(dump.Memory(AddressOf(&g_marker), 8) == BytesOf(kMark), row.data);
        }
        EXPECT_EQ(dump.Memory(AddressOf(&ReadWhole), 64) == code, row.code);
        EXPECT_EQ(dump.modules.front().name.starts_with('/'), row.paths);
        EXPECT_EQ(dump.Has(0x47670009), row.paths && row.type != MiniDumpWithoutOptionalData);
    }
    EXPECT_EQ(DumpError(m_own, File("b.dmp"), 0x02000000), EINVAL);
}

TEST_F(DumpTest, AnotherProcessWithManyThreadsInTheDebugger)
{
    constexpr int kThreads = 200;
    Victim victim(kThreads);
    sigset_t pending;
    sigset_t told;
    sigemptyset(&told);
    sigaddset(&told, SIGCHLD);
    pthread_sigmask(SIG_BLOCK, &told, nullptr);
    ASSERT_EQ(Dump(victim.Id(), File()), 1) << GetLastErrorString();
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGCHLD), 0);
    pthread_sigmask(SIG_UNBLOCK, &told, nullptr);
    EXPECT_EQ(victim.Status("TracerPid"), "0");
    EXPECT_EQ(victim.End(), 0) << "it goes on as if nothing had been";
    // A race detector has a thread of its own there.
    EXPECT_EQ(MinidumpReader(File()).threads.size(), kThreads + (kStressDivisor == 1 ? 1u : 2u));
    std::string const stacks = Debugger(File(), {"bt all"});
    if (stacks.empty()) {
        GTEST_SKIP() << "no lldb";
    }
    EXPECT_GE(CountOf(stacks, "WaitForTheEnd(waiting="), kThreads)
        << "the main thread may be on its way there" << stacks.substr(0, 4000);
    EXPECT_EQ(CountOf(stacks, "`main("), 1);
}

TEST_F(DumpTest, StoppedProcessesAndThoseWithoutAMainThread)
{
    Victim stopped(3);
    int status = 0;
    kill(stopped.Id(), SIGSTOP);
    ASSERT_EQ(waitpid(stopped.Id(), &status, WUNTRACED), stopped.Id());
    EXPECT_EQ(Dump(stopped.Id(), File()), 1) << GetLastErrorString();
    YieldUntil([&] { return stopped.Status("State") == "T (stopped)"; });
    kill(stopped.Id(), SIGCONT);
    EXPECT_EQ(stopped.End(), 0);

    if (kStressDivisor != 1) {
        return; // ThreadSanitizer gives up where a thread joins the main one
    }
    Victim const alone(3, "alone");
    YieldUntil([&] { return alone.Status("State").starts_with("Z"); }); // it is joined a little earlier
    EXPECT_EQ(Dump(alone.Id(), File()), 1) << GetLastErrorString();
    MinidumpReader const dump(File());
    EXPECT_GE(dump.threads.size(), 3u);
    EXPECT_EQ(dump.modules.front().name, fs::canonical(DUMP_VICTIM).string());
}

TEST_F(DumpTest, SeveralAtOnce)
{
    Victim const victim(3);
    InParallel(4, [&](int i) {
        std::string const name = std::to_string(i) + ".dmp";
        EXPECT_EQ(Dump(m_own, File(name)), 1) << GetLastErrorString();
        EXPECT_NO_THROW(MinidumpReader{File(name)});
        // Others trace it at the same time, who are refused.
        int const error = DumpError(victim.Id(), File("v" + name));
        EXPECT_TRUE(error == 0 || error == EPERM) << error;
    });
}

TEST_F(DumpTest, RefusalsLeaveNothing)
{
    pid_t const zombie = fork();
    if (zombie == 0) {
        _exit(0);
    }
    siginfo_t ended{};
    waitid(P_PID, static_cast<id_t>(zombie), &ended, WEXITED | WNOWAIT);
    fs::create_directory(File("folder"));
    std::u16string const surrogate = File().u16string() + u'\xD800';
    struct
    {
        long id;
        std::string path;
        int error;
    } const table[] = {
        {0, File(), ESRCH},
        {0x7FFFFFFF, File(), ESRCH},
        {1L << 40, File(), ESRCH},
        {zombie, File(), ESRCH},
        {m_own, "", ENOENT},
        {m_own, File("none/a.dmp"), ENOENT},
        {m_own, File("folder"), EISDIR},
        {m_own, File("folder/"), EISDIR},
        {m_own, File(std::string(300, 'x')), ENAMETOOLONG},
        {m_own, "/dev/full", ENOSPC},
        {m_own, File(std::string("a\0b", 3)), EINVAL},
    };
    for (auto const& row : table) {
        EXPECT_EQ(DumpError(row.id, row.path), row.error) << row.id << " " << row.path;
    }
    errno = 0;
    EXPECT_EQ(WriteCrashDump(nullptr, TSystem::ProcessID(), TStringView(surrogate), MiniDumpNormal), 0);
    EXPECT_EQ(errno, EILSEQ);
    waitpid(zombie, nullptr, 0);
    EXPECT_EQ(Entries(m_folder.Path()), 1u) << "the folder that was there";
    EXPECT_TRUE(fs::is_empty(File("folder")));
}

TEST_F(DumpTest, FullDiskLeavesTheOldFile)
{
    Victim const victim(3);
    std::ofstream(File()) << "old";
    fs::create_symlink(File(), File("link"));
    for (long const id : {m_own, static_cast<long>(victim.Id())}) {
        EXPECT_EQ(InChild([&] {
                      rlimit const little{4096, 4096};
                      setrlimit(RLIMIT_FSIZE, &little);
                      return DumpError(id == m_own ? getpid() : id, File());
                  }),
                  EFBIG);
        EXPECT_EQ(ReadWhole(File()), "old");
    }
    EXPECT_EQ(Dump(m_own, File("link")), 1);
    EXPECT_TRUE(fs::is_symlink(File("link"))) << "replaced is what it leads to";
    EXPECT_NO_THROW(MinidumpReader{File()});
    EXPECT_EQ(Entries(m_folder.Path()), 2u);
}

TEST_F(DumpTest, WithoutAFreeDescriptor)
{
    fs::path const file = File();
    EXPECT_EQ(InChild([&] {
                  rlimit const few{8, 8};
                  setrlimit(RLIMIT_NOFILE, &few);
                  while (dup(STDIN_FILENO) >= 0) {
                  }
                  return DumpError(getpid(), file);
              }),
              0);
}

TEST_F(DumpTest, OtherUsers)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "not root";
    }
    fs::create_directory(File("open"));
    fs::permissions(m_folder.Path(), fs::perms(0755));
    fs::permissions(File("open"), fs::perms(0777));
    Victim const victim(1);
    auto const asNobody = [&](auto const& function) {
        return InChild([&] { return setgid(kNobody) != 0 || setuid(kNobody) != 0 ? 255 : function(); });
    };
    EXPECT_EQ(asNobody([&] { return DumpError(victim.Id(), File("open/a.dmp")); }), EPERM);
    EXPECT_EQ(asNobody([&] { return DumpError(getpid(), File("a.dmp")); }), EACCES);
    EXPECT_TRUE(fs::is_empty(File("open")));
    EXPECT_EQ(Entries(m_folder.Path()), 1u);
    EXPECT_EQ(asNobody([&] { return DumpError(getpid(), File("open/a.dmp")); }), 0) << "itself it may";
    EXPECT_EQ(asNobody([&] { return prctl(PR_GET_DUMPABLE); }), 0) << "what the case above is about";
}

TEST_F(DumpTest, PtraceForbidden)
{
    int const error = InChild([&] {
        Refuse(SYS_ptrace, EPERM);
        return DumpError(getpid(), File());
    });
    if (error == kNotPossible) {
        GTEST_SKIP() << "a kernel without filters";
    }
    EXPECT_EQ(error, EPERM);
    EXPECT_TRUE(IsEmpty());
}

TEST_F(DumpTest, ProcessThatEndsMeanwhile)
{
    Stage const table[] = {
        {SYS_ptrace, "", 1, ESRCH},
        {SYS_ptrace, "", 7, ESRCH}, // some threads are traced, some not
        {SYS_openat, "/mem", 1, ESRCH},
        {SYS_openat, "/maps", 1, ESRCH},
        {SYS_pread64, "/mem", 5, ESRCH}, // of a stack
        {SYS_openat, "/auxv", 1, ESRCH},
        {SYS_openat, "/pagemap", 1, ESRCH},
        {SYS_ioctl, "/pagemap", 1, ESRCH},
        {SYS_pread64, "/pagemap", 1, ESRCH},
        {SYS_pread64, "/pagemap", 20, ESRCH},
        {SYS_write, "", 1, ESRCH},
        {SYS_write, "", 20, ESRCH}, // in the midst of the memory
        {SYS_linkat, "", 1, 0},     // all has been read
    };
    for (Stage const& row : table) {
        SCOPED_TRACE(std::to_string(row.call) + " " + row.file + " " + std::to_string(row.times));
        Victim const victim(5);
        int const error = DumpWithAKill(victim, row, File());
        if (error == kNotPossible) {
            GTEST_SKIP() << "a kernel without filters";
        }
        EXPECT_EQ(error, row.error);
        EXPECT_EQ(IsEmpty(), row.error != 0);
        if (row.error == 0) {
            EXPECT_NO_THROW(MinidumpReader{File()});
        }
    }
}

TEST_F(DumpTest, SameMemoryHoweverItsPagesAreFound)
{
    if (kStressDivisor != 1) {
        GTEST_SKIP() << "it would read the page map of a terabyte of address space";
    }
    Victim const victim(1);
    int const type = MiniDumpWithPrivateReadWriteMemory;
    int const error = InChild([&] {
        Refuse(SYS_ioctl, ENOTTY);
        return DumpError(victim.Id(), File("read.dmp"), type);
    });
    if (error == kNotPossible) {
        GTEST_SKIP() << "a kernel without filters";
    }
    ASSERT_EQ(error, 0);
    ASSERT_EQ(Dump(victim.Id(), File(), type), 1) << GetLastErrorString();
    MinidumpReader const dump(File());
    EXPECT_EQ(dump.Stream(9), MinidumpReader(File("read.dmp")).Stream(9)); // the list of ranges
    EXPECT_GE(fs::file_size(File()), Victim::kMemory);
    EXPECT_GT(dump.memory.size(), Victim::kRuns);
}

TEST_F(DumpTest, WriterThatIsKilledLetsGo)
{
    Victim victim(5);
    ASSERT_EQ(mkfifo(File("pipe").c_str(), 0600), 0);
    int const pipe = open(File("pipe").c_str(), O_RDONLY | O_NONBLOCK);
    // The pipe is soon full, and nobody reads, while the process stands still.
    pid_t const writer = fork();
    if (writer == 0) {
        Dump(victim.Id(), File("pipe"), MiniDumpWithFullMemory);
        _exit(0);
    }
    YieldUntil([&] { return victim.Status("State").starts_with("t"); });
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
    YieldUntil([&] { return victim.Status("TracerPid") == "0" && !victim.Status("State").starts_with("t"); });
    EXPECT_EQ(victim.End(), 0);

    // The same with the helper of a process that dumps itself.
    pid_t const self = fork();
    if (self == 0) {
        _exit(DumpError(getpid(), File("pipe"), MiniDumpWithFullMemory));
    }
    std::string const children = "/proc/" + std::to_string(self) + "/task/" + std::to_string(self) + "/children";
    std::string helper;
    YieldUntil([&] { return !(helper = ReadWhole(children)).empty(); });
    kill(std::stoi(helper), SIGKILL);
    int status = 0;
    waitpid(self, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), ECANCELED);
    close(pipe);
}
