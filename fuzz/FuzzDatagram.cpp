// Datagrams of the exchange, with any sender, size and content: what is reported is the 14 bytes that came from
// 127.0.0.1, what is wrong with others is said once, and nothing else happens.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "MonitorTexts.h"
#include "ResourceExchange.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    using namespace qvxsys::monitor;
    if (size < 2) {
        return 0;
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
    bool const goesOn = HandleDatagram(datagram, {[&](ResourceValues const& values) {
                                                      ++reports;
                                                      if (std::memcmp(&values, data + 2, sizeof(values)) != 0) {
                                                          std::abort();
                                                      }
                                                      static_cast<void>(texts::Process(values));
                                                  },
                                                  [&lines](TStringCore const&) { ++lines; }});
    bool const ends = datagram.error || datagram.size == 0;
    bool const counts = !ends && datagram.address == kLoopback;
    bool const right = datagram.size == sizeof(ResourceValues);
    if (goesOn == ends || reports != (counts && right ? 1 : 0) || lines != (ends || (counts && !right) ? 1 : 0)) {
        std::abort();
    }
    return 0;
}
