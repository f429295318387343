#include <qvxsys/ResourceObserver.h>

#include <utility>

#include <qvxsys/TLocks.h>
#include <qvxsys/TSystem.h>

#include "InfoTable.h"
#include "MonitoredProcess.h"
#include "ResourceExchange.h"

struct ResourceObserver::State
{
    State(std::uint16_t port, Options given)
        : options(std::move(given)), info(&qvxsys::monitor::MonitoredProcess::IsRunning),
          exchange(port,
                   {[this](ResourceValues const& values) { Receive(values); },
                    [this](TStringCore const& line) { Log(line); }},
                   nullptr)
    {}

    void Receive(ResourceValues const& values)
    {
        info.Store(values, TSystem::UpTime().count());
        if (options.m_onReport) {
            options.m_onReport(values);
        }
    }
    void Log(TStringCore const& line) const
    {
        if (options.m_logFunc) {
            options.m_logFunc(line);
        }
    }

    Options const options;
    qvxsys::monitor::InfoTable info;
    /// For Prune and Send, which are for one thread at a time.
    TRecursiveMutex mutex;
    qvxsys::monitor::ResourceExchange exchange;
};

ResourceObserver::ResourceObserver(unsigned short port) : ResourceObserver(port, Options())
{}

ResourceObserver::ResourceObserver(unsigned short port, Options options)
    : m_state(std::make_unique<State>(port, std::move(options)))
{}

ResourceObserver::~ResourceObserver() = default;

std::vector<ResourceSample> ResourceObserver::GetSnapshot()
{
    TLockScope const lock(m_state->mutex);
    // This process runs.
    m_state->info.Prune(TSystem::ProcessID());
    return m_state->info.Snapshot(TSystem::UpTime().count());
}

bool ResourceObserver::IsListening() const noexcept
{
    return m_state->exchange.IsListening();
}

void ResourceObserver::Send(ResourceValues const& values)
{
    TLockScope const lock(m_state->mutex);
    m_state->exchange.Send(values);
}
