#include "LoopbackSockets.h"

#include <utility>

#include <winsock2.h>
// Behind winsock2.h, which would otherwise find its predecessor.
#include "WindowsApi.h"

#include <boost/system/system_error.hpp>

namespace qvxsys::monitor {

namespace {

constexpr unsigned int kBurst = 64;

[[noreturn]] void Fail(char const* step, int error = WSAGetLastError())
{
    throw boost::system::system_error(error, boost::system::system_category(), step);
}

sockaddr_in Endpoint(std::uint32_t address, std::uint16_t port) noexcept
{
    sockaddr_in endpoint{};
    endpoint.sin_family = AF_INET;
    endpoint.sin_addr.s_addr = htonl(address);
    endpoint.sin_port = htons(port);
    return endpoint;
}

/// The sockets library is loaded for the first socket and never given up, like everything that threads may use at exit.
void LoadSockets()
{
    static int const s_error = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data);
    }();
    if (s_error != 0) {
        Fail("open", s_error);
    }
}

class Socket
{
public:
    explicit Socket(int option)
    {
        LoadSockets();
        m_socket =
            WSASocketW(AF_INET, SOCK_DGRAM, IPPROTO_UDP, nullptr, 0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
        if (m_socket == INVALID_SOCKET) {
            Fail("open");
        }
        BOOL const on = TRUE;
        if (setsockopt(m_socket, SOL_SOCKET, option, reinterpret_cast<char const*>(&on), sizeof(on)) != 0) {
            int const error = WSAGetLastError();
            closesocket(m_socket);
            Fail("set_option", error);
        }
    }
    Socket(Socket const&) = delete;
    Socket& operator=(Socket const&) = delete;
    ~Socket()
    {
        if (m_socket != INVALID_SOCKET) {
            closesocket(m_socket);
        }
    }
    [[nodiscard]] SOCKET Get() const noexcept { return m_socket; }
    [[nodiscard]] std::intptr_t Release() noexcept
    {
        return static_cast<std::intptr_t>(std::exchange(m_socket, INVALID_SOCKET));
    }
    [[nodiscard]] bool Bind(std::uint32_t address, std::uint16_t port) noexcept
    {
        sockaddr_in const endpoint = Endpoint(address, port);
        return ::bind(m_socket, reinterpret_cast<sockaddr const*>(&endpoint), sizeof(endpoint)) == 0;
    }

private:
    SOCKET m_socket = INVALID_SOCKET;
};

/// Reset by hand.
class Event
{
public:
    Event() : m_event(CreateEventW(nullptr, TRUE, FALSE, nullptr))
    {
        if (m_event == nullptr) {
            Fail("open", static_cast<int>(GetLastError()));
        }
    }
    Event(Event const&) = delete;
    Event& operator=(Event const&) = delete;
    ~Event()
    {
        if (m_event != nullptr) {
            CloseHandle(m_event);
        }
    }
    [[nodiscard]] HANDLE Get() const noexcept { return m_event; }
    [[nodiscard]] std::intptr_t Release() noexcept
    {
        return reinterpret_cast<std::intptr_t>(std::exchange(m_event, nullptr));
    }

private:
    HANDLE m_event;
};

SOCKET Handle(std::intptr_t socket) noexcept
{
    return static_cast<SOCKET>(socket);
}

HANDLE EventHandle(std::intptr_t event) noexcept
{
    return reinterpret_cast<HANDLE>(event);
}

} // namespace

LoopbackSender::LoopbackSender(std::uint16_t port) : m_socket(Socket(SO_BROADCAST).Release()), m_port(port)
{}

LoopbackSender::~LoopbackSender()
{
    closesocket(Handle(m_socket));
}

void LoopbackSender::Send(void const* data, std::size_t size)
{
    sockaddr_in const everyone = Endpoint(kLoopbackBroadcast, m_port);
    if (::sendto(Handle(m_socket), static_cast<char const*>(data), static_cast<int>(size), 0,
                 reinterpret_cast<sockaddr const*>(&everyone), sizeof(everyone)) == SOCKET_ERROR) {
        Fail("send_to");
    }
}

/// Windows delivers the broadcast to those who are bound to 127.0.0.1. Where the broadcast address can be bound, as
/// under Wine on Linux, the broadcasts may arrive there instead, so that is tried, too.
LoopbackListener::LoopbackListener(std::uint16_t port)
{
    Socket direct(SO_REUSEADDR);
    if (!direct.Bind(kLoopback, port)) {
        Fail("bind");
    }
    Socket broadcast(SO_REUSEADDR);
    bool const both = broadcast.Bind(kLoopbackBroadcast, port);
    Event stop;
    Event wait;
    if (WSAEventSelect(direct.Get(), wait.Get(), FD_READ) != 0 ||
        (both && WSAEventSelect(broadcast.Get(), wait.Get(), FD_READ) != 0)) {
        Fail("open");
    }
    m_sockets = {direct.Release(), both ? broadcast.Release() : kNone};
    m_stop = stop.Release();
    m_wait = wait.Release();
}

LoopbackListener::~LoopbackListener()
{
    Close();
    CloseHandle(EventHandle(m_wait));
    CloseHandle(EventHandle(m_stop));
}

/// False when there was nothing. The sockets do not block once WSAEventSelect has seen them.
bool LoopbackListener::TryReceive(std::intptr_t socket, Datagram& datagram) noexcept
{
    sockaddr_in from{};
    int length = sizeof(from);
    int const received =
        ::recvfrom(Handle(socket), reinterpret_cast<char*>(datagram.bytes.data()),
                   static_cast<int>(datagram.bytes.size()), 0, reinterpret_cast<sockaddr*>(&from), &length);
    int const error = received == SOCKET_ERROR ? WSAGetLastError() : 0;
    if (error == WSAEWOULDBLOCK) {
        return false;
    }
    // The rest of a longer datagram is gone, as it is elsewhere.
    bool const cut = error == WSAEMSGSIZE;
    datagram.error.assign(cut ? 0 : error, boost::system::system_category());
    datagram.size = cut ? datagram.bytes.size() : error != 0 ? 0 : static_cast<std::size_t>(received);
    datagram.address = ntohl(from.sin_addr.s_addr);
    datagram.port = ntohs(from.sin_port);
    return true;
}

bool LoopbackListener::Receive(Datagram& datagram) noexcept
{
    for (;;) {
        for (std::size_t look = 0; look < kSockets && m_credit != 0; ++look) {
            std::size_t const i = (m_first + look) % kSockets;
            if (m_sockets[i] != kNone && (m_ready & (1U << i)) != 0) {
                if (TryReceive(m_sockets[i], datagram)) {
                    --m_credit;
                    return true;
                }
                m_ready &= ~(1U << i);
            }
        }
        std::array<HANDLE, 2> const waited{EventHandle(m_stop), EventHandle(m_wait)};
        DWORD const which = WaitForMultipleObjects(2, waited.data(), FALSE, INFINITE);
        if (which == WAIT_OBJECT_0) {
            return false;
        }
        if (which == WAIT_FAILED) {
            datagram.error.assign(static_cast<int>(GetLastError()), boost::system::system_category());
            datagram.size = 0;
            return true;
        }
        // Before the sockets are looked at: what comes behind that sets it again.
        ResetEvent(waited[1]);
        m_ready = 3;
        m_credit = kBurst;
        m_first = (m_first + 1) % kSockets;
    }
}

void LoopbackListener::Stop() noexcept
{
    SetEvent(EventHandle(m_stop));
}

void LoopbackListener::Close() noexcept
{
    for (std::intptr_t& socket : m_sockets) {
        if (socket != kNone) {
            ::shutdown(Handle(socket), SD_BOTH);
            closesocket(Handle(socket));
            socket = kNone;
        }
    }
}

} // namespace qvxsys::monitor
