// Datagrams of the exchange, with any sender, size and content: what is reported is the 14 bytes that came from
// 127.0.0.1, what is wrong with others is said once, and nothing else happens.

#include "Fuzz.h"
#include "MonitorTexts.h"
#include "ResourceExchange.h"

using namespace qvxsys::monitor;

void Fuzz(std::uint8_t const* data, std::size_t size)
{
    if (size < 2) {
        return;
    }
    Datagram datagram;
    datagram.address = (data[0] & 1) != 0 ? kLoopback : kLoopback + data[0];
    datagram.port = data[1];
    if ((data[0] & 6) == 6) {
        datagram.error.assign(data[1], boost::system::system_category());
    }
    datagram.size = std::min(size - 2, Datagram::kMost);
    std::memcpy(datagram.bytes.data(), data + 2, datagram.size);
    int reports = 0;
    int lines = 0;
    auto const report = [&](ResourceValues const& values) {
        ++reports;
        Require(std::memcmp(&values, data + 2, sizeof(values)) == 0);
        static_cast<void>(texts::Process(values));
    };
    bool const goesOn = HandleDatagram(datagram, {report, [&lines](TStringCore const&) { ++lines; }});
    bool const ends = datagram.error || datagram.size == 0;
    bool const counts = !ends && datagram.address == kLoopback;
    bool const right = datagram.size == sizeof(ResourceValues);
    Require(goesOn != ends && reports == (counts && right ? 1 : 0) && lines == (ends || (counts && !right) ? 1 : 0));
}
