#include "LoopbackSockets.h"

#include <cerrno>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <boost/system/system_error.hpp>

#include "Descriptor_posix.h"

namespace qvxsys::monitor {

namespace {

using platform::Descriptor;

/// Datagrams that are taken from sockets found ready before Stop and the other socket are looked at again.
constexpr unsigned int kBurst = 64;
/// How often it is then taken for granted, after a look in vain, that datagrams come one by one.
constexpr unsigned int kAskFirst = 16;

[[noreturn]] void Fail(char const* step)
{
    throw boost::system::system_error(errno, boost::system::system_category(), step);
}

sockaddr_in Endpoint(std::uint32_t address, std::uint16_t port) noexcept
{
    sockaddr_in endpoint{};
    endpoint.sin_family = AF_INET;
    endpoint.sin_addr.s_addr = htonl(address);
    endpoint.sin_port = htons(port);
    return endpoint;
}

Descriptor Opened(int descriptor)
{
    if (descriptor < 0) {
        Fail("open");
    }
    return Descriptor(descriptor);
}

Descriptor Open(int option)
{
    Descriptor opened = Opened(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP));
    int const on = 1;
    if (::setsockopt(opened.Get(), SOL_SOCKET, option, &on, sizeof(on)) != 0) {
        Fail("set_option");
    }
    return opened;
}

Descriptor Bind(std::uint32_t address, std::uint16_t port)
{
    Descriptor bound = Open(SO_REUSEADDR);
    sockaddr_in const endpoint = Endpoint(address, port);
    if (::bind(bound.Get(), reinterpret_cast<sockaddr const*>(&endpoint), sizeof(endpoint)) != 0) {
        Fail("bind");
    }
    return bound;
}

} // namespace

LoopbackSender::LoopbackSender(std::uint16_t port) : m_socket(Open(SO_BROADCAST).Release()), m_port(port)
{}

LoopbackSender::~LoopbackSender()
{
    ::close(static_cast<int>(m_socket));
}

void LoopbackSender::Send(void const* data, std::size_t size)
{
    sockaddr_in const everyone = Endpoint(kLoopbackBroadcast, m_port);
    while (::sendto(static_cast<int>(m_socket), data, size, MSG_NOSIGNAL, reinterpret_cast<sockaddr const*>(&everyone),
                    sizeof(everyone)) < 0) {
        if (errno != EINTR) {
            Fail("send_to");
        }
    }
}

LoopbackListener::LoopbackListener(std::uint16_t port)
{
    Descriptor broadcast = Bind(kLoopbackBroadcast, port);
    Descriptor direct = Bind(kLoopback, port);
    Descriptor stop = Opened(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    Descriptor wait = Opened(::epoll_create1(EPOLL_CLOEXEC));
    std::uint32_t number = 0;
    for (int const descriptor : {broadcast.Get(), direct.Get(), stop.Get()}) {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u32 = number++;
        if (::epoll_ctl(wait.Get(), EPOLL_CTL_ADD, descriptor, &event) != 0) {
            Fail("open");
        }
    }
    m_sockets = {broadcast.Release(), direct.Release()};
    m_stop = stop.Release();
    m_wait = wait.Release();
}

LoopbackListener::~LoopbackListener()
{
    for (std::intptr_t const descriptor : {m_sockets[0], m_sockets[1], m_wait, m_stop}) {
        if (descriptor != kNone) {
            ::close(static_cast<int>(descriptor));
        }
    }
}

/// False when there was nothing.
bool LoopbackListener::TryReceive(std::intptr_t socket, Datagram& datagram) noexcept
{
    sockaddr_in from{};
    socklen_t length = sizeof(from);
    ssize_t received = 0;
    do {
        received = ::recvfrom(static_cast<int>(socket), datagram.bytes.data(), datagram.bytes.size(), MSG_DONTWAIT,
                              reinterpret_cast<sockaddr*>(&from), &length);
    } while (received < 0 && errno == EINTR);
    if (received < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
        return false;
    }
    datagram.error.assign(received < 0 ? errno : 0, boost::system::system_category());
    datagram.size = received < 0 ? 0 : static_cast<std::size_t>(received);
    datagram.address = ntohl(from.sin_addr.s_addr);
    datagram.port = ntohs(from.sin_port);
    return true;
}

/// Sockets that were found ready are emptied without asking again: under load a datagram costs one system call. Where
/// they come one by one that look is mostly left out.
bool LoopbackListener::Receive(Datagram& datagram) noexcept
{
    if (m_askFirst != 0) {
        --m_askFirst;
        m_ready = 0;
    }
    for (bool asked = false;; asked = true) {
        for (std::size_t look = 0; look < kSockets && m_credit != 0; ++look) {
            std::size_t const i = (m_first + look) % kSockets;
            if ((m_ready & (1U << i)) != 0) {
                if (TryReceive(m_sockets[i], datagram)) {
                    --m_credit;
                    return true;
                }
                m_ready &= ~(1U << i);
                m_askFirst = asked ? m_askFirst : kAskFirst;
            }
        }
        std::array<epoll_event, kSockets + 1> events{};
        int const count = ::epoll_wait(static_cast<int>(m_wait), events.data(), static_cast<int>(events.size()), -1);
        if (count < 0 && errno != EINTR) {
            datagram.error.assign(errno, boost::system::system_category());
            datagram.size = 0;
            return true;
        }
        for (int i = 0; i < count; ++i) {
            m_ready |= 1U << events[static_cast<std::size_t>(i)].data.u32;
        }
        if ((m_ready & (1U << kSockets)) != 0) {
            return false;
        }
        m_credit = kBurst;
        m_first = (m_first + 1) % kSockets; // so that neither is kept waiting by what keeps coming on the other
    }
}

void LoopbackListener::Stop() noexcept
{
    // Fails only when the count is full, which is ready, too.
    eventfd_write(static_cast<int>(m_stop), 1);
}

void LoopbackListener::Close() noexcept
{
    for (std::intptr_t& socket : m_sockets) {
        if (socket != kNone) {
            // Not connected, so this gives an error, but takes effect also for whom a fork has given it to.
            ::shutdown(static_cast<int>(socket), SHUT_RDWR);
            ::close(static_cast<int>(socket));
            socket = kNone;
        }
    }
}

} // namespace qvxsys::monitor
