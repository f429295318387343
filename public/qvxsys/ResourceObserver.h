#pragma once
// ResourceObserver: sees what the processes with a resource manager (ResourceManager.h) report, without being one.
//
//     ResourceObserver const observer(47000);
//     ...
//     for (ResourceSample const& sample : observer.GetSnapshot()) {
//         Print(sample.m_values.m_processId, sample.m_values.m_memory, sample.m_age);
//     }
//
// Threads: all operations may be called from any thread. Costs a thread that sleeps between datagrams and five
// descriptors on Linux.

#include <functional>
#include <memory>
#include <vector>

#include <qvxsys/Platform.h>
#include <qvxsys/ResourceValues.h>
#include <qvxsys/TStringCore.h>

/// Listens to what the processes on a port report, without being one of them.
class QVXSYS_API ResourceObserver
{
public:
    /// Who is told.
    struct Options
    {
        /// Called with everything that arrives, on the listening thread. Must not destroy the observer; what it throws
        /// ends the process.
        std::function<void(ResourceValues const&)> m_onReport;
        /// Receives what the listening thread has to say; lines begin with "Resource Manager: ". May be empty.
        std::function<void(TStringCore const&)> m_logFunc;
    };

    /// Starts listening. Throws boost::system::system_error ("open", "set_option" or "bind" in its text) when a socket
    /// cannot be had, std::system_error when the thread cannot be started.
    explicit ResourceObserver(unsigned short port);
    ResourceObserver(unsigned short port, Options options);
    ~ResourceObserver();
    ResourceObserver(ResourceObserver const&) = delete;
    ResourceObserver& operator=(ResourceObserver const&) = delete;

    /// What each process last reported, in no order. Those that have ended are left out, and forgotten.
    [[nodiscard]] std::vector<ResourceSample> GetSnapshot();
    /// False when an error or an empty datagram has ended listening.
    [[nodiscard]] bool IsListening() const noexcept;
    /// Sends a report in the name of whatever process `values` say, to everyone who listens on the port, this observer
    /// too. Throws boost::system::system_error with "send_to" in its text.
    void Send(ResourceValues const& values);

private:
    struct State;

    std::unique_ptr<State> m_state;
};
