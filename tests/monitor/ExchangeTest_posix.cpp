// The exchange between processes: programs that know nothing of the library send and listen, processes of the library's
// see one another and are ended, ports are taken, and nothing leaks.

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <thread>

#include <netinet/in.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/system/system_error.hpp>
#include <gtest/gtest.h>
#include <qvxsys/qvxsys.h>

#include "MonitorSupport.h"
#include "support/ChildProcess.h"
#include "support/InChild_posix.h"
#include "support/TemporaryFolder.h"
#include "support/Threads.h"

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr char const* kPython = "/usr/bin/python3";
/// No process has such an id: the kernel's highest is 2^22.
constexpr std::uint32_t kMadeUp = 0x40000000;

/// An observer whose reports are lines among those of its log.
struct Observer
{
    explicit Observer(unsigned short port)
        : observer(port, {[this](ResourceValues const& values) { lines.Add(Text(values)); },
                          [this](TStringCore const& line) { lines.Add(line); }})
    {}
    static TStringCore Text(ResourceValues const& values)
    {
        return qvxsys::Format(u"pid %1 has %2, %3%%, %4%%", values.m_processId + 0, values.m_memory + 0,
                              values.m_memoryLimitUsage + 0, values.m_cpuUsage + 0);
    }

    Lines lines;
    ResourceObserver observer;
};

ChildResult Python(std::string const& script, unsigned short port)
{
    return RunChild({kPython, "-c",
                     "import os, socket, struct, sys\n"
                     "port = int(sys.argv[1])\n"
                     "everyone = ('127.255.255.255', port)\n"
                     "def opened(address=''):\n"
                     "    s = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)\n"
                     "    s.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)\n"
                     "    s.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)\n"
                     "    if address: s.bind((address, port if address == everyone[0] else 0))\n"
                     "    return s\n"
                     "s = opened()\n" +
                         script,
                     std::to_string(port)});
}

/// Everything that another program can send: what counts is 14 bytes, in the right order, from 127.0.0.1.
TEST(Exchange, TakesWhatOtherProgramsSend)
{
    unsigned short const port = NextPort();
    Observer observer(port);
    Lines const& lines = observer.lines;
    ChildResult const sent =
        Python("s.bind(('127.0.0.1', 0))\n"
               "for size in [13, 15, 1, 1024, 1025, 65000]: s.sendto(bytes(size), everyone)\n"
               "opened('127.0.0.2').sendto(struct.pack('<IQBB', 2, 2, 2, 2), everyone)\n"
               "opened('127.0.0.2').sendto(bytes(13), everyone)\n"
               "s.sendto(struct.pack('<IQBB', 0x7FFFFFF1, 0x0102030405060708, 99, 100), everyone)\n"
               "print(s.getsockname()[1], end='')\n",
               port);
    ASSERT_EQ(sent.status, 0) << sent.err;
    EXPECT_TRUE(lines.WaitFor("pid 2147483633"));
    std::vector<std::string> expected(6,
                                      "Resource Manager: rejected invalid network packet from: 127.0.0.1:" + sent.out);
    expected.emplace_back("pid 2147483633 has 72623859790382856, 99%, 100%");
    EXPECT_EQ(lines.Get(), expected);
    ASSERT_EQ(Python("s.sendto(struct.pack('<IQBB', 0x7FFFFFF2, 4, 5, 6), ('127.0.0.1', port))", port).status, 0);
    EXPECT_TRUE(lines.WaitFor("pid 2147483634 has 4, 5%, 6%"));
    EXPECT_TRUE(observer.observer.GetSnapshot().empty()) << "no such process runs";
    // An empty datagram ends listening, from wherever it comes; sending goes on.
    ASSERT_EQ(Python("opened('127.0.0.2').sendto(b'', everyone)", port).status, 0);
    EXPECT_TRUE(lines.WaitFor("listening thread has stopped"));
    EXPECT_TRUE(lines.Has("Resource Manager: socket error: Success"));
    EXPECT_FALSE(observer.observer.IsListening());
    observer.observer.Send({1, 2, 3, 4});
}

TEST(Exchange, ReachesOtherPrograms)
{
    unsigned short const port = NextPort();
    Observer observer(port);
    std::jthread const answer([&] {
        observer.lines.WaitFor("pid 2147483633");
        observer.observer.Send({17, 0x0102030405060708, 9, 10});
    });
    ChildResult const heard = Python("r = opened(everyone[0])\n"
                                     "s.sendto(struct.pack('<IQBB', 0x7FFFFFF1, 0, 0, 0), everyone)\n"
                                     "for i in range(2):\n"
                                     "    data, sender = r.recvfrom(100)\n"
                                     "print(len(data), struct.unpack('<IQBB', data), sender[0])\n",
                                     port);
    EXPECT_EQ(heard.out, "14 (17, 72623859790382856, 9, 10) 127.0.0.1\n") << heard.err;
}

/// In a process of its own: a manager on the port that is in the environment. Says that it has heard two others by
/// reporting in the name of a process id made of its own, and then waits to be ended.
TEST(Exchange, DISABLED_Peer)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    char const* const port = std::getenv("QVXSYS_TEST_PORT");
    ASSERT_NE(port, nullptr);
    Lines lines;
    Settings settings(lines);
    settings.port = static_cast<unsigned short>(std::stoi(port));
    settings.general.m_checkInterval = 1s;
    std::set<std::uint32_t> heard;
    TEvent all;
    ResourceObserver observer(settings.port, {[&](ResourceValues const& values) {
                                                  if (values.m_processId < kMadeUp) {
                                                      heard.insert(values.m_processId + 0);
                                                  }
                                                  if (heard.size() == 3) {
                                                      all.Signal();
                                                  }
                                              },
                                              nullptr});
    settings.Start();
    all.Wait();
    observer.Send({kMadeUp | TSystem::ProcessID(), 0, 0, 0});
    TEvent().Wait();
}

pid_t SpawnPeer(unsigned short port)
{
    ::setenv("QVXSYS_TEST_PORT", std::to_string(port).c_str(), 1);
    std::string const self = fs::read_symlink("/proc/self/exe").string();
    char const* const arguments[] = {self.c_str(), "--gtest_also_run_disabled_tests",
                                     "--gtest_filter=Exchange.DISABLED_Peer", nullptr};
    pid_t pid = -1;
    EXPECT_EQ(::posix_spawn(&pid, self.c_str(), nullptr, nullptr, const_cast<char**>(arguments), environ), 0);
    return pid;
}

TEST(Exchange, ProcessesSeeOneAnotherUntilTheyAreKilled)
{
    unsigned short const port = NextPort();
    Observer observer(port);
    std::set<std::uint32_t> peers;
    for (int i = 0; i < 3; ++i) {
        peers.insert(static_cast<std::uint32_t>(SpawnPeer(port)));
    }
    std::set<std::uint32_t> seen;
    for (std::uint32_t const peer : peers) {
        EXPECT_TRUE(observer.lines.WaitFor("pid " + std::to_string(kMadeUp | peer)));
    }
    for (ResourceSample const& sample : observer.observer.GetSnapshot()) {
        seen.insert(sample.m_values.m_processId + 0);
        EXPECT_GT(sample.m_values.m_memory + 0, 0U);
        EXPECT_LT(sample.m_age, kLost);
    }
    EXPECT_EQ(seen, peers);
    for (std::uint32_t const peer : peers) {
        ::kill(static_cast<pid_t>(peer), SIGKILL);
        ::waitpid(static_cast<pid_t>(peer), nullptr, 0);
    }
    EXPECT_TRUE(observer.observer.GetSnapshot().empty());
}

/// A port that somebody has who does not share, and no thread to be had: an error, and nothing is left of the attempt.
TEST(Exchange, FailsWhole)
{
    Lines lines;
    Settings const settings(lines);
    int const foreign = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(settings.port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ASSERT_EQ(::bind(foreign, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    auto const descriptors = Entries("/proc/self/fd");
    auto const threads = Entries("/proc/self/task");
    try {
        settings.Start();
        FAIL() << "started";
    } catch (boost::system::system_error const& e) {
        EXPECT_EQ(e.code(), boost::system::errc::address_in_use);
        EXPECT_EQ(std::string(e.what()).rfind("bind", 0), 0U) << e.what();
    }
    EXPECT_EQ(Entries("/proc/self/fd"), descriptors);
    EXPECT_EQ(Entries("/proc/self/task"), threads);
    EXPECT_FALSE(lines.Has("stopped"));
    ::close(foreign);
    settings.Start();
    ResourceManager::Stop();
    EXPECT_TRUE(lines.Has("stopped"));
}

/// What a forked process inherits and gives up is not this one's.
TEST(Exchange, GoesOnWhenAForkedProcessStops)
{
    Lines lines;
    Settings settings(lines);
    settings.general.m_startDelay = 3600s;
    settings.Start();
    auto observer = std::make_unique<Observer>(settings.port);
    EXPECT_EQ(InChild([&] {
                  observer.reset();
                  ResourceManager::Stop();
                  return lines.Get().back() == "Resource Manager: stopped" ? 7 : 8;
              }),
              7);
    observer->observer.Send({TSystem::ProcessID(), 2, 3, 4});
    EXPECT_TRUE(observer->lines.WaitFor("has 2, 3%, 4%"));
    YieldUntil([] { return ResourceManager::GetCpuAndMemoryUsage().second == 2; });
    ResourceManager::Stop();
}

/// However much comes as broadcasts, what is sent to 127.0.0.1 gets its turn.
TEST(Exchange, ServesBothSocketsUnderAFlood)
{
    namespace monitor = qvxsys::monitor;
    unsigned short const port = NextPort();
    monitor::LoopbackListener listener(port);
    monitor::LoopbackSender sender(port);
    ASSERT_EQ(Python("s.sendto(b'x', ('127.0.0.1', port))", port).status, 0);
    monitor::Datagram datagram;
    int heard = 0;
    do {
        sender.Send("flood", 5); // at least one is always waiting
        sender.Send("flood", 5);
        ASSERT_TRUE(listener.Receive(datagram));
    } while (datagram.size != 1 && ++heard < 1000);
    EXPECT_EQ(datagram.size, 1U) << "after " << heard;
}

TEST(Exchange, StartsAndStopsAThousandTimesWithoutALeak)
{
    Lines lines;
    Settings settings(lines);
    settings.general.m_logFunc = [](TStringCore const&) {};
    settings.Start();
    ResourceManager::Stop();
    auto const descriptors = Entries("/proc/self/fd");
    auto const threads = Entries("/proc/self/task");
    for (int i = 0; i < 1000 / kStressDivisor; ++i) {
        settings.general.m_startDelay = std::chrono::seconds(i % 2 * 3600);
        settings.Start();
        ResourceManager::Stop();
    }
    EXPECT_EQ(Entries("/proc/self/fd"), descriptors);
    EXPECT_EQ(Entries("/proc/self/task"), threads);
}

/// While a million datagrams with made-up process ids arrive, as fast as they can be sent, the worker does its checks.
TEST(Exchange, AFloodNeitherFillsTheTableNorStarvesTheWorker)
{
    Lines lines;
    Settings settings(lines);
    settings.general.m_checkInterval = 1s;
    settings.general.m_infoLogEvery = 1;
    settings.Start();
    {
        qvxsys::monitor::LoopbackSender sender(settings.port);
        std::size_t const checks = lines.Get().size();
        for (std::uint32_t i = 0; i < 1'000'000 / kStressDivisor || lines.Get().size() < checks + 2; ++i) {
            ResourceValues const values{kMadeUp + i, 1, 1, 1};
            sender.Send(&values, sizeof(values));
        }
    }
    std::size_t const checks = lines.Get().size();
    EXPECT_LE(ResourceManager::GetSnapshot().size(), 4097U);
    YieldUntil([&] { return lines.Get().size() > checks; });
    EXPECT_LE(ResourceManager::GetSnapshot().size(), 1U) << "the check has forgotten them";
    ResourceManager::Stop();
}

/// Between checks nothing runs: no thread of the process goes to sleep again, apart from this one.
TEST(Exchange, HearsItselfAndSleepsBetweenChecks)
{
    Lines lines;
    Settings settings(lines);
    settings.general.m_checkInterval = 3600s;
    settings.general.m_infoLogEvery = 1;
    settings.Start();
    ASSERT_TRUE(lines.WaitFor("Memory info"));
    YieldUntil([] { return ResourceManager::GetCpuAndMemoryUsage().second != 0; });
    std::vector<ResourceSample> const snapshot = ResourceManager::GetSnapshot();
    ASSERT_EQ(snapshot.size(), 1U);
    EXPECT_EQ(snapshot[0].m_values.m_processId + 0, TSystem::ProcessID());
    auto const sleeps = [] {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        return usage.ru_nvcsw;
    };
    auto const before = sleeps();
    TEvent().Wait(500ms);
    EXPECT_LE(sleeps() - before, 4 * kStressDivisor)
        << "this thread's, and of the two that may still have been on their way to sleep";
    ResourceManager::Stop();
}

} // namespace
