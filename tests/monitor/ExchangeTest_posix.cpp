// The exchange between processes: programs that know nothing of the library send and listen, processes of the library's
// see one another and are ended, ports are taken, and nothing leaks.

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
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
#include "ResourceExchange.h"
#include "support/ChildProcess.h"
#include "support/Threads.h"

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr char const* kPython = "/usr/bin/python3";
/// Process ids that no process has: behind the kernel's highest, 2^22. The last datagram of a series has the first.
constexpr std::uint32_t kLast = 0x7FFFFFF0;

auto Entries(char const* folder)
{
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

/// What an observer was told, by process id.
struct Reports
{
    ResourceObserver::Options Options(Lines& lines)
    {
        return {[this](ResourceValues const& values) { Take(values); },
                [&lines](TStringCore const& line) { lines.Add(line); }};
    }
    void Take(ResourceValues const& values)
    {
        std::lock_guard const lock(mutex);
        received[values.m_processId].push_back(values);
        came.Signal();
    }
    /// Whether so many process ids of which `is` holds have come within a minute.
    template<class Is>
    bool WaitFor(std::size_t count, Is is)
    {
        for (;;) {
            {
                std::lock_guard const lock(mutex);
                if (static_cast<std::size_t>(std::count_if(received.begin(), received.end(), [&is](auto const& entry) {
                        return is(entry.first);
                    })) >= count) {
                    return true;
                }
            }
            if (!came.Wait(kLost)) {
                return false;
            }
        }
    }

    std::mutex mutex;
    std::map<std::uint32_t, std::vector<ResourceValues>> received;
    TAutoResetEvent came;
};

bool IsLast(std::uint32_t processId)
{
    return processId == kLast;
}

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
    Lines lines;
    Reports reports;
    ResourceObserver observer(port, reports.Options(lines));
    ChildResult const sent =
        Python("for size in [13, 15, 1, 1024, 1025, 65000]: s.sendto(bytes(size), everyone)\n"
               "opened('127.0.0.2').sendto(struct.pack('<IQBB', 2, 2, 2, 2), everyone)\n"
               "opened('127.0.0.2').sendto(bytes(13), everyone)\n"
               "s.sendto(struct.pack('<IQBB', os.getpid(), 0x0102030405060708, 99, 100), everyone)\n"
               "s.sendto(struct.pack('<IQBB', 0x7FFFFFF1, 4, 5, 6), ('127.0.0.1', port))\n"
               "s.sendto(struct.pack('<IQBB', 0x7FFFFFF0, 0, 0, 0), everyone)\n"
               "print(os.getpid())\n",
               port);
    ASSERT_EQ(sent.status, 0) << sent.err;
    auto const processId = static_cast<std::uint32_t>(std::stoul(sent.out));
    ASSERT_TRUE(reports.WaitFor(2, [](std::uint32_t id) { return id >= kLast; }));
    std::map<std::uint32_t, std::vector<ResourceValues>> const expected{
        {kLast + 1, {{kLast + 1, 4, 5, 6}}},
        {processId, {{processId, 0x0102030405060708, 99, 100}}},
        {kLast, {{kLast, 0, 0, 0}}}};
    EXPECT_EQ(reports.received, expected);
    std::vector<std::string> const rejected = lines.Get();
    EXPECT_EQ(rejected.size(), 6U) << "and nothing about 127.0.0.2";
    for (std::string const& line : rejected) {
        EXPECT_EQ(line.rfind("Resource Manager: rejected invalid network packet from: 127.0.0.1:", 0), 0U) << line;
    }
    EXPECT_TRUE(observer.GetSnapshot().empty()) << "none of them runs";
    // An empty datagram ends listening, from wherever it comes; sending goes on.
    ASSERT_EQ(Python("opened('127.0.0.2').sendto(b'', everyone)", port).status, 0);
    EXPECT_TRUE(lines.WaitFor("listening thread has stopped"));
    EXPECT_TRUE(lines.Has("Resource Manager: socket error: Success"));
    YieldUntil([&] { return !observer.IsListening(); });
    observer.Send({1, 2, 3, 4});
}

TEST(Exchange, ReachesOtherPrograms)
{
    unsigned short const port = NextPort();
    Lines lines;
    Reports reports;
    ResourceObserver observer(port, reports.Options(lines));
    std::jthread const answer([&] {
        reports.WaitFor(1, IsLast);
        observer.Send({17, 0x0102030405060708, 9, 10});
    });
    ChildResult const heard = Python("r = opened(everyone[0])\n"
                                     "s.sendto(struct.pack('<IQBB', 0x7FFFFFF0, 0, 0, 0), everyone)\n"
                                     "for i in range(2):\n"
                                     "    data, sender = r.recvfrom(100)\n"
                                     "print(len(data), struct.unpack('<IQBB', data), sender[0])\n",
                                     port);
    EXPECT_EQ(heard.out, "14 (17, 72623859790382856, 9, 10) 127.0.0.1\n") << heard.err;
}

/// In a process of its own: a manager on the port that is in the environment. Says that it has seen two others by
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
    Reports reports;
    ResourceObserver observer(settings.port, reports.Options(lines));
    settings.Start();
    std::uint32_t const own = TSystem::ProcessID();
    reports.WaitFor(2, [own](std::uint32_t id) { return id != own && id < kLast; });
    observer.Send({kLast | own, 0, 0, 0});
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
    Lines lines;
    Reports reports;
    ResourceObserver observer(port, reports.Options(lines));
    std::set<std::uint32_t> peers;
    for (int i = 0; i < 3; ++i) {
        peers.insert(static_cast<std::uint32_t>(SpawnPeer(port)));
    }
    EXPECT_TRUE(reports.WaitFor(3, [](std::uint32_t id) { return id > kLast; }));
    std::set<std::uint32_t> seen;
    for (ResourceSample const& sample : observer.GetSnapshot()) {
        seen.insert(sample.m_values.m_processId);
        EXPECT_GT(sample.m_values.m_memory, 0U);
        EXPECT_LT(sample.m_age, kLost);
    }
    EXPECT_EQ(seen, peers);
    for (std::uint32_t const peer : peers) {
        ::kill(static_cast<pid_t>(peer), SIGKILL);
        ::waitpid(static_cast<pid_t>(peer), nullptr, 0);
    }
    EXPECT_TRUE(observer.GetSnapshot().empty());
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
            ResourceValues const values{kLast - i, 1, 1, 1};
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
TEST(Exchange, SleepsBetweenChecks)
{
    Lines lines;
    Settings settings(lines);
    settings.general.m_checkInterval = 3600s;
    settings.general.m_infoLogEvery = 1;
    settings.Start();
    ASSERT_TRUE(lines.WaitFor("Memory info"));
    YieldUntil([] { return !ResourceManager::GetSnapshot().empty(); });
    auto const sleeps = [] {
        rusage usage{};
        ::getrusage(RUSAGE_SELF, &usage);
        return usage.ru_nvcsw;
    };
    auto const before = sleeps();
    TEvent().Wait(500ms);
    EXPECT_LE(sleeps() - before, 4) << "this thread's, and of the two that may still have been on their way to sleep";
    ResourceManager::Stop();
}

} // namespace
