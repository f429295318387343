// The resource monitor: a datagram there and back on one thread and between two, beside what people would use instead,
// and what a check costs. Own and the first peers are what they are in the library: own sends to everybody on the
// machine and listens on two sockets, the others send to one socket.

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <arpa/inet.h>
#include <csignal>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef QVXSYS_BENCH_ASIO
#include <boost/asio.hpp>
#endif
#ifdef QVXSYS_BENCH_QT_NETWORK
#include <QCoreApplication>
#include <QNetworkDatagram>
#include <QUdpSocket>
#endif

#include "BenchSupport.h"
#include "LoopbackSockets.h"
#include "ResourceManagerImpl.h"

namespace {

using namespace qvxsys::monitor;

constexpr std::size_t kSize = sizeof(ResourceValues);
using Bytes = std::array<unsigned char, 1024>;

std::uint16_t NextPort()
{
    static std::uint16_t s_port = 41000;
    return ++s_port;
}

/// One end of a conversation of two, which sends to `to` and listens on `from`.
struct Own
{
    Own(std::uint16_t from, std::uint16_t to) : listener(from), sender(to) {}
    void Send() { sender.Send(datagram.bytes.data(), kSize); }
    void Receive() { listener.Receive(datagram); }

    LoopbackListener listener;
    LoopbackSender sender;
    Datagram datagram{};
};

enum class Destination { Direct, Connected, Broadcast };

template<Destination D>
struct Posix
{
    Posix(std::uint16_t from, std::uint16_t to)
        : in(::socket(AF_INET, SOCK_DGRAM, 0)), out(::socket(AF_INET, SOCK_DGRAM, 0))
    {
        int const on = 1;
        ::setsockopt(in, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
        ::setsockopt(out, SOL_SOCKET, SO_BROADCAST, &on, sizeof(on));
        sockaddr_in const listened = At(from);
        ::bind(in, reinterpret_cast<sockaddr const*>(&listened), sizeof(listened));
        target = At(to);
        if (D == Destination::Connected) {
            ::connect(out, reinterpret_cast<sockaddr const*>(&target), sizeof(target));
        }
    }
    Posix(Posix const&) = delete;
    Posix& operator=(Posix const&) = delete;
    ~Posix()
    {
        ::close(in);
        ::close(out);
    }
    static sockaddr_in At(std::uint16_t port)
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(D == Destination::Broadcast ? kLoopbackBroadcast : kLoopback);
        return address;
    }
    void Send()
    {
        bool const connected = D == Destination::Connected;
        ::sendto(out, bytes.data(), kSize, 0, connected ? nullptr : reinterpret_cast<sockaddr const*>(&target),
                 connected ? 0 : sizeof(target));
    }
    void Receive()
    {
        sockaddr_in sender{};
        socklen_t length = sizeof(sender);
        ::recvfrom(in, bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&sender), &length);
        benchmark::DoNotOptimize(sender);
    }

    int in;
    int out;
    sockaddr_in target{};
    Bytes bytes{};
};

#ifdef QVXSYS_BENCH_ASIO
using boost::asio::ip::udp;

struct AsioSync
{
    AsioSync(std::uint16_t from, std::uint16_t to)
        : in(context, udp::endpoint(boost::asio::ip::address_v4::loopback(), from)), out(context, udp::v4()),
          target(boost::asio::ip::address_v4::loopback(), to)
    {}
    void Send() { out.send_to(boost::asio::buffer(bytes, kSize), target); }
    void Receive() { in.receive_from(boost::asio::buffer(bytes), sender); }

    boost::asio::io_context context;
    udp::socket in;
    udp::socket out;
    udp::endpoint target;
    udp::endpoint sender;
    Bytes bytes{};
};

struct AsioAsync : AsioSync
{
    using AsioSync::AsioSync;
    void Receive()
    {
        in.async_receive_from(boost::asio::buffer(bytes), sender, [](boost::system::error_code, std::size_t) {});
        context.run();
        context.restart();
    }
};
#endif

#ifdef QVXSYS_BENCH_QT_NETWORK
struct Qt
{
    Qt(std::uint16_t from, std::uint16_t to) : target(to) { in.bind(QHostAddress(QHostAddress::LocalHost), from); }
    void Send() { out.writeDatagram(reinterpret_cast<char const*>(bytes.data()), kSize, local, target); }
    void Receive()
    {
        while (!in.hasPendingDatagrams()) {
            in.waitForReadyRead();
        }
        QHostAddress sender;
        in.readDatagram(reinterpret_cast<char*>(bytes.data()), static_cast<qint64>(bytes.size()), &sender);
    }

    QUdpSocket in;
    QUdpSocket out;
    QHostAddress local{QHostAddress::LocalHost};
    quint16 target;
    Bytes bytes{};
};
#endif

template<class End>
void OneThread(std::string const& who)
{
    bench::Register("k1 datagram of 14 bytes sent and received/" + who, [](benchmark::State& state) {
        std::uint16_t const port = NextPort();
        End end(port, port);
        for ([[maybe_unused]] auto _ : state) {
            end.Send();
            end.Receive();
        }
    });
}

/// The other thread answers until it has heard what it counts with this thread.
template<class End>
void TwoThreads(std::string const& who)
{
    auto const body = [](benchmark::State& state) {
        std::uint16_t const there = NextPort();
        std::uint16_t const back = NextPort();
        End end(back, there);
        End other(there, back);
        std::atomic<bool> done = false;
        std::thread echo([&] {
            while (!done) {
                other.Receive();
                other.Send();
            }
        });
        for ([[maybe_unused]] auto _ : state) {
            end.Send();
            end.Receive();
        }
        done = true;
        end.Send();
        echo.join();
    };
    benchmark::RegisterBenchmark(("k2 datagram there and back between two threads/" + who).c_str(), body)
        ->UseRealTime();
}

/// The real sampling, without the sleep between checks.
class BusyManager final : public ResourceManagerImpl
{
public:
    BusyManager() : ResourceManagerImpl(Cpu(), Memory(), General(), {}) {}
    using ResourceManagerImpl::Receive;
    void Run(std::function<bool(std::chrono::milliseconds)> sleep)
    {
        m_sleep = std::move(sleep);
        Work();
    }

private:
    static ResourceManager::CpuConfig Cpu() { return {.m_maxCpu = 99, .m_sustainedPeriod = std::chrono::hours(1)}; }
    static ResourceManager::MemoryConfig Memory()
    {
        return {.m_perProcessLimit = 1ULL << 50, .m_allProcessesLimit = 1ULL << 50};
    }
    static ResourceManager::GeneralConfig General()
    {
        ResourceManager::GeneralConfig general;
        general.m_logFunc = [](TStringCore const&) {};
        general.m_terminateFunc = [](bool, TStringCore const&) {};
        return general;
    }
};

/// Of a process with children that are registered, or others that report before each check.
void Check(std::string const& row, int processes, bool children)
{
    bench::Register(row + "/own", [processes, children](benchmark::State& state) {
        BusyManager manager;
        std::vector<pid_t> started;
        for (int i = 0; i < processes; ++i) {
            pid_t const child = ::fork();
            if (child == 0) {
                ::pause();
                ::_exit(0);
            }
            started.push_back(child);
            if (children) {
                manager.Children().Add(static_cast<unsigned int>(child));
            }
        }
        manager.Run([&](std::chrono::milliseconds) {
            for (std::size_t i = 0; i < started.size() && !children; ++i) {
                manager.Receive({static_cast<std::uint32_t>(started[i]), 1, 1, 1});
            }
            return !state.KeepRunning();
        });
        for (pid_t const child : started) {
            ::kill(child, SIGKILL);
            ::waitpid(child, nullptr, 0);
        }
    });
}

void RegisterRows()
{
    OneThread<Own>("own");
    OneThread<Posix<Destination::Direct>>("POSIX sendto");
    OneThread<Posix<Destination::Connected>>("POSIX connected");
    OneThread<Posix<Destination::Broadcast>>("POSIX sendto, broadcast");
    TwoThreads<Own>("own");
    TwoThreads<Posix<Destination::Direct>>("POSIX sendto");
    TwoThreads<Posix<Destination::Broadcast>>("POSIX sendto, broadcast");
#ifdef QVXSYS_BENCH_ASIO
    OneThread<AsioSync>("Asio sync");
    OneThread<AsioAsync>("Asio async");
    TwoThreads<AsioSync>("Asio sync");
    TwoThreads<AsioAsync>("Asio async");
#endif
#ifdef QVXSYS_BENCH_QT_NETWORK
    OneThread<Qt>("QUdpSocket");
#endif
    Check("k3 check of a process", 0, false);
    Check("k3 check of a process and 50 children", 50, true);
    Check("k3 check and reports of 1000 processes", 1000, false);
}

} // namespace

int main(int argc, char** argv)
{
#ifdef QVXSYS_BENCH_QT_NETWORK
    QCoreApplication const application(argc, argv);
#endif
    return bench::Main(argc, argv, &RegisterRows);
}
