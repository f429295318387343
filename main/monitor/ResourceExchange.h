#pragma once
// The listener and sender: what this process uses goes out, what the others use comes in.

#include <atomic>
#include <cstdint>
#include <functional>
#include <thread>

#include <qvxsys/ResourceValues.h>
#include <qvxsys/TStringCore.h>

#include "LoopbackSockets.h"

namespace qvxsys::monitor {

/// Who is told of what arrives, on the listening thread.
struct ExchangeHandlers
{
    std::function<void(ResourceValues const&)> report;
    std::function<void(TStringCore const&)> log;
};

/// What a datagram leads to: a report, a line in the log, or nothing. False when listening ends: after an error or an
/// empty datagram. Only 14 bytes from 127.0.0.1 are reported; from there other sizes are logged. What comes from
/// elsewhere is passed over.
[[nodiscard]] bool HandleDatagram(Datagram const& datagram, ExchangeHandlers const& handlers);

class ResourceExchange
{
public:
    /// Starts listening. Throws what LoopbackSender and LoopbackListener throw, and std::system_error when the thread
    /// cannot be started. What the handlers throw ends the process by way of the terminate handler, which may be null.
    ResourceExchange(std::uint16_t port, ExchangeHandlers handlers, void (*terminateHandler)());
    ResourceExchange(ResourceExchange const&) = delete;
    ResourceExchange& operator=(ResourceExchange const&) = delete;
    /// Waits for the listening thread; in a process forked since, does not touch that of the other.
    ~ResourceExchange();

    /// Throws boost::system::system_error, "send_to". One thread sends at a time.
    void Send(ResourceValues const& values);
    [[nodiscard]] bool IsListening() const noexcept { return m_listening.load(std::memory_order_acquire); }

private:
    void Listen() noexcept;

    ExchangeHandlers const m_handlers;
    void (*const m_terminateHandler)();
    unsigned int const m_process;
    LoopbackSender m_sender;
    LoopbackListener m_listener;
    std::atomic<bool> m_listening = true;
    std::thread m_thread;
};

} // namespace qvxsys::monitor
