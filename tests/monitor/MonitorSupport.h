#pragma once
// What the tests of the running manager share.

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include <qvxsys/qvxsys.h>

#include "LoopbackSockets.h"

/// A port that no other test uses at the time.
inline unsigned short NextPort()
{
    static std::atomic<unsigned int> s_next = 0;
    return static_cast<unsigned short>(10000 + (TSystem::ProcessID() * 16 + s_next++) % 20000);
}

/// Sends so many bytes to everyone who listens on the port.
inline void SendRaw(unsigned short port, std::size_t size)
{
    qvxsys::monitor::LoopbackSender(port).Send(std::string(size, 'x').data(), size);
}

/// Lines from several threads, and the wait for one of them.
class Lines
{
public:
    void Add(TStringCore const& line)
    {
        std::lock_guard const lock(m_mutex);
        m_lines.push_back(line.toStdString());
        m_added.Signal();
    }
    [[nodiscard]] std::vector<std::string> Get() const
    {
        std::lock_guard const lock(m_mutex);
        return m_lines;
    }
    [[nodiscard]] bool Has(std::string const& part) const
    {
        for (std::string const& line : Get()) {
            if (line.find(part) != std::string::npos) {
                return true;
            }
        }
        return false;
    }
    /// False when it does not come within a minute.
    bool WaitFor(std::string const& part) const
    {
        while (!Has(part)) {
            if (!m_added.Wait(std::chrono::minutes(1))) {
                return false;
            }
        }
        return true;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
    TAutoResetEvent m_added;
};

/// A manager's settings with nothing exceeded, and its lines.
struct Settings
{
    explicit Settings(Lines& lines)
    {
        memory.m_perProcessLimit = 1ULL << 31;
        memory.m_allProcessesLimit = ~0ULL;
        general.m_logFunc = [&lines](TStringCore const& line) { lines.Add(line); };
        general.m_terminateFunc = [&lines](bool, TStringCore const& line) { lines.Add(line); };
    }
    void Start() const { ResourceManager::Start(port, cpu, memory, general, options); }

    unsigned short port = NextPort();
    ResourceManager::CpuConfig cpu;
    ResourceManager::MemoryConfig memory;
    ResourceManager::GeneralConfig general;
    ResourceManager::Options options;
};
