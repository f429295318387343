#pragma once
// Whether the exchange between processes works here: does every listener get each datagram, and once?

#include <array>
#include <chrono>

#include <qvxsys/TStringCore.h>

#include "Watch.h"

namespace qvx {

/// Used for the check unless told otherwise: nobody else's.
inline constexpr unsigned short kLoopbackPort = kDefaultPort + 1;

struct LoopbackCheck
{
    struct Listener
    {
        unsigned int once = 0; ///< datagrams that arrived exactly once
        unsigned int more = 0; ///< that arrived several times
    };
    unsigned int sent = 0;
    std::array<Listener, 2> listeners; ///< two of this process
    TStringCore error;                 ///< why it could not be checked; else empty

    [[nodiscard]] bool IsGood() const noexcept
    {
        return error.empty() && listeners[0].once == sent && listeners[1].once == sent;
    }
};

/// Sends `count` reports in the names of processes that cannot exist and has two listeners wait for them, `timeout` at
/// most. On a port that is in use the others there see the reports until their next check, as of processes that use
/// nothing.
[[nodiscard]] LoopbackCheck CheckLoopback(unsigned short port = kLoopbackPort, unsigned int count = 100,
                                          std::chrono::milliseconds timeout = std::chrono::milliseconds(1000));

} // namespace qvx
