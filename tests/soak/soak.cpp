// soak SECONDS [SEED]: three monitored processes do random work for so long (Workload.h), while this one listens to
// what they report, kills one of the last two at random moments and starts another in its place. It ends with 0 when
// every result was right, every process that was not killed ended well with nothing left over, everybody was heard, and
// nothing is left over here.
//
// The work depends on the seed alone, its interleaving on the machine.

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <thread>

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <qvxsys/qvxsys.h>

#include "Workload.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kPeers = 3;

/// The end of a process that does the work: what is left over when all has been closed.
int Peer(unsigned short port, Clock::time_point deadline, std::uint64_t seed)
{
    unsigned const descriptors = OpenDescriptors();
    std::thread([] {}).join(); // a race detector has a thread of its own from the first one on
    unsigned const threads = Threads();
    ResourceManager::MemoryConfig memory;
    memory.m_perProcessLimit = 1ULL << 40;
    memory.m_allProcessesLimit = ~0ULL;
    ResourceManager::GeneralConfig general;
    general.m_infoLogEvery = 1;
    std::atomic<unsigned> lines = 0; // counted by two threads of the manager
    general.m_logFunc = [&lines](TStringCore const&) { ++lines; };
    general.m_terminateFunc = [](bool, TStringCore const&) { std::abort(); };
    ResourceManager::Start(port, {}, memory, general);
    SoakResult const result = RunSoak(deadline, seed);
    ResourceManager::Stop();
    std::string faults = result.faults;
    if (OpenDescriptors() != descriptors) {
        faults +=
            "descriptors left: " + std::to_string(OpenDescriptors()) + " of " + std::to_string(descriptors) + "\n";
    }
    if (Threads(threads) > threads) {
        faults += "threads left: " + std::to_string(Threads()) + "\n";
    }
    std::cout << "process " << getpid() << ": " << result.done << " right, " << result.cancelled << " cancelled, "
              << result.rounds << " rounds, " << lines << " lines\n"
              << faults << std::flush;
    return faults.empty() ? 0 : 1;
}

class Suite
{
public:
    Suite(std::string program, double seconds, std::uint64_t seed)
        : m_program(std::move(program)), m_seed(seed), m_random(seed),
          m_end(Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds))),
          m_port(static_cast<unsigned short>(10000 + getpid() % 20000))
    {}

    int Run()
    {
        unsigned const descriptors = OpenDescriptors();
        std::thread([] {}).join(); // as in Peer
        unsigned const threads = Threads();
        {
            ResourceObserver observer(m_port, {[this](ResourceValues const& values) {
                                                   std::scoped_lock const lock(m_mutex);
                                                   ++m_heard[values.m_processId];
                                               },
                                               [](TStringCore const&) {}});
            std::array<Started, kPeers> peers;
            std::ranges::generate(peers, [this] { return Start(); });
            while (Clock::now() + 4s < m_end) {
                // The first one lives to the end: what leaks slowly shows in it.
                Started& peer = peers[1 + m_random() % (kPeers - 1)];
                WaitFor(peer, std::chrono::milliseconds(m_random() % 3000));
                kill(peer.id, SIGKILL);
                int status = 0;
                waitpid(peer.id, &status, 0);
                Check(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL, "a process ended before it was killed");
                close(peer.handle);
                peer = Start();
                ++m_killed;
            }
            for (Started const& peer : peers) {
                int status = 0;
                waitpid(peer.id, &status, 0);
                Check(WIFEXITED(status) && WEXITSTATUS(status) == 0, "a process did not end well");
                close(peer.handle);
                std::scoped_lock const lock(m_mutex);
                Check(m_heard[static_cast<std::uint32_t>(peer.id)] > 0, "a process was not heard");
            }
            Check(observer.GetSnapshot().empty(), "processes that have ended are still in the table");
        }
        Check(OpenDescriptors() == descriptors, "descriptors are left over");
        Check(Threads(threads) <= threads, "threads are left over");
        std::cout << "soak: seed " << m_seed << ", " << m_killed << " processes killed, " << m_heard.size()
                  << " heard, " << m_faults << " faults\n";
        return m_faults == 0 ? 0 : 1;
    }

private:
    struct Started
    {
        pid_t id = -1;
        int handle = -1;
    };

    Started Start()
    {
        auto const left = std::chrono::duration<double>(m_end - Clock::now()).count();
        std::string const port = std::to_string(m_port);
        std::string const seconds = std::to_string(std::max(left, 0.0));
        std::string const seed = std::to_string(m_random() >> 16);
        pid_t const id = fork();
        if (id == 0) {
            execl(m_program.c_str(), m_program.c_str(), "--peer", port.c_str(), seconds.c_str(), seed.c_str(), nullptr);
            _exit(127);
        }
        return {id, static_cast<int>(syscall(SYS_pidfd_open, id, 0))};
    }

    static void WaitFor(Started const& peer, std::chrono::milliseconds time)
    {
        pollfd ended = {peer.handle, POLLIN, 0};
        poll(&ended, 1, static_cast<int>(time.count()));
    }

    void Check(bool holds, char const* what)
    {
        if (!holds) {
            ++m_faults;
            std::cout << "soak: " << what << "\n";
        }
    }

    std::string m_program;
    std::uint64_t m_seed;
    std::mt19937_64 m_random;
    Clock::time_point m_end;
    unsigned short m_port;
    std::mutex m_mutex;
    std::map<std::uint32_t, unsigned> m_heard;
    unsigned m_killed = 0;
    unsigned m_faults = 0;
};

} // namespace

int main(int argc, char** argv)
{
    if (argc == 5 && std::string(argv[1]) == "--peer") {
        auto const seconds = std::chrono::duration<double>(std::atof(argv[3]));
        return Peer(static_cast<unsigned short>(std::atoi(argv[2])),
                    Clock::now() + std::chrono::duration_cast<Clock::duration>(seconds), std::stoull(argv[4]));
    }
    if (argc < 2 || std::atof(argv[1]) <= 0) {
        std::cerr << "usage: soak SECONDS [SEED]\n";
        return 2;
    }
    return Suite("/proc/self/exe", std::atof(argv[1]), argc > 2 ? std::stoull(argv[2]) : std::random_device{}()).Run();
}
