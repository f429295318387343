#include "ResourceExchange.h"

#include <bit>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

#include <qvxsys/TSystem.h>
#include <qvxsys/TThreadPool.h>

#include "ListenerTerminate.h"
#include "MonitorTexts.h"

namespace qvxsys::monitor {

static_assert(std::endian::native == std::endian::little, "a record in memory is what travels");

bool HandleDatagram(Datagram const& datagram, ExchangeHandlers const& handlers)
{
    if (datagram.error || datagram.size == 0) {
        std::string const reason = datagram.error.message();
        handlers.log(texts::SocketError(TStringCore::fromLocal8Bit(reason.c_str())));
        return false;
    }
    if (datagram.address != kLoopback) {
        return true;
    }
    ResourceValues values;
    if (datagram.size != sizeof(values)) {
        handlers.log(texts::RejectedPacket(datagram.address, datagram.port));
        return true;
    }
    std::memcpy(&values, datagram.bytes.data(), sizeof(values));
    handlers.report(values);
    return true;
}

ResourceExchange::ResourceExchange(std::uint16_t port, ExchangeHandlers handlers, void (*terminateHandler)())
    : m_handlers(std::move(handlers)), m_terminateHandler(terminateHandler), m_process(TSystem::ProcessID()),
      m_sender(port), m_listener(port), m_thread([this] { Listen(); })
{}

ResourceExchange::~ResourceExchange()
{
    if (m_process != TSystem::ProcessID()) {
        m_thread.detach(); // A fork does not copy threads, and the one there is goes on listening.
        return;
    }
    m_listener.Stop();
    m_thread.join();
}

void ResourceExchange::Send(ResourceValues const& values)
{
    m_sender.Send(&values, sizeof(values));
}

/// Not to be left by an exception: the terminate handler sees the stack of who threw it.
void ResourceExchange::Listen() noexcept
{
    AsyncTask::NameThisThread("qvx-listen");
    SetThreadTerminateHandler(m_terminateHandler);
    Datagram datagram;
    while (m_listener.Receive(datagram) && HandleDatagram(datagram, m_handlers)) {
    }
    m_listener.Close();
    m_listening.store(false, std::memory_order_release);
    m_handlers.log(texts::ListeningStopped());
}

} // namespace qvxsys::monitor
