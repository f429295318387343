#pragma once
// Platform primitives under ResourceExchange: datagrams to everyone on this machine who listens on a port, and nothing
// to or from other machines. (LoopbackSockets_linux.cpp, LoopbackSockets_win.cpp)
//
// Failures of the system are boost::system::system_error, thrown by constructors and Send with the name of the step
// ("open", "set_option", "bind", "send_to"), as Boost.Asio throws them.

#include <array>
#include <cstddef>
#include <cstdint>

#include <boost/system/error_code.hpp>

namespace qvxsys::monitor {

/// What one receive brought: an error, or a datagram that may be empty.
struct Datagram
{
    static constexpr std::size_t kMost = 1024;

    boost::system::error_code error;
    std::size_t size = 0; ///< longer datagrams are cut to kMost
    /// The sender; the address in the host's byte order.
    std::uint32_t address = 0;
    std::uint16_t port = 0;
    std::array<unsigned char, kMost> bytes;
};

inline constexpr std::uint32_t kLoopback = 0x7F000001;          // 127.0.0.1
inline constexpr std::uint32_t kLoopbackBroadcast = 0x7FFFFFFF; // 127.255.255.255

/// Sends to 127.255.255.255; who receives it sees 127.0.0.1 as the sender. One descriptor, closed on exec.
class LoopbackSender
{
public:
    explicit LoopbackSender(std::uint16_t port);
    LoopbackSender(LoopbackSender const&) = delete;
    LoopbackSender& operator=(LoopbackSender const&) = delete;
    ~LoopbackSender();

    void Send(void const* data, std::size_t size);

private:
    std::intptr_t m_socket;
    std::uint16_t m_port;
};

/// Hears what is sent to 127.255.255.255 and to 127.0.0.1, together with all others that are bound so. Never bound to
/// all addresses: nothing from other machines gets here.
///
/// Linux delivers a broadcast only to those who are bound to the broadcast address, and what is sent to 127.0.0.1 only
/// to one of those who are bound to that; hence two sockets. Four descriptors, closed on exec.
///
/// After a fork both processes have them; one may destroy its listener without the other's noticing.
class LoopbackListener
{
public:
    explicit LoopbackListener(std::uint16_t port);
    LoopbackListener(LoopbackListener const&) = delete;
    LoopbackListener& operator=(LoopbackListener const&) = delete;
    ~LoopbackListener();

    /// Waits for a datagram or an error on either socket; false when Stop has been called. For one thread.
    bool Receive(Datagram& datagram) noexcept;
    /// Makes Receive return false from now on. May be called from any thread.
    void Stop() noexcept;
    /// Shuts the sockets down and closes them; others receive on. For the thread that receives, or when none does.
    void Close() noexcept;

private:
    static constexpr std::size_t kSockets = 2;
    static constexpr std::intptr_t kNone = -1;

    bool TryReceive(std::intptr_t socket, Datagram& datagram) noexcept;

    std::array<std::intptr_t, kSockets> m_sockets;
    /// What Stop makes ready, and what waits for that and the sockets.
    std::intptr_t m_stop;
    std::intptr_t m_wait;
    /// Which sockets may have something, one bit each, and how many datagrams are taken before the system is asked
    /// anew.
    unsigned int m_ready = 0;
    unsigned int m_credit = 0;
    /// The socket that is looked at first, each in its turn.
    std::size_t m_first = 0;
    /// How many times the system is asked at once, as datagrams have been coming one by one.
    unsigned int m_askFirst = 0;
};

} // namespace qvxsys::monitor
