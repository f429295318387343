#include "Loopback.h"

#include <atomic>
#include <exception>
#include <memory>
#include <thread>
#include <vector>

#include <qvxsys/ResourceObserver.h>
#include <qvxsys/TEvent.h>
#include <qvxsys/TSystem.h>

namespace qvx {
namespace {

constexpr std::uint32_t kNoProcess = 0xF0000000; // above every process id of Linux, and of those that Windows gives
constexpr auto kForRepeats = std::chrono::milliseconds(50);

/// Counts the datagrams with the marks of one check.
class Listener
{
public:
    Listener(unsigned short port, unsigned int count, std::uint64_t mark)
        : m_arrivals(count), m_missing(count),
          m_observer(port, {[this, mark](ResourceValues const& values) {
                                std::uint32_t const i = values.m_processId - kNoProcess;
                                if (values.m_memory == mark && i < m_arrivals.size()) {
                                    Add(i);
                                }
                            },
                            nullptr})
    {}

    [[nodiscard]] TCountdownEvent& Missing() noexcept { return m_missing; }
    [[nodiscard]] ResourceObserver& Observer() noexcept { return m_observer; }
    [[nodiscard]] LoopbackCheck::Listener Count() const
    {
        LoopbackCheck::Listener count;
        for (std::atomic<unsigned int> const& arrivals : m_arrivals) {
            count.once += arrivals == 1 ? 1 : 0;
            count.more += arrivals > 1 ? 1 : 0;
        }
        return count;
    }

private:
    void Add(std::uint32_t i)
    {
        if (m_arrivals[i]++ == 0) {
            m_missing.Signal();
        }
    }

    std::vector<std::atomic<unsigned int>> m_arrivals;
    TCountdownEvent m_missing;
    ResourceObserver m_observer; // ends before what it calls does
};

} // namespace

LoopbackCheck CheckLoopback(unsigned short port, unsigned int count, std::chrono::milliseconds timeout)
{
    LoopbackCheck check;
    try {
        // Two checks at the same time must not count for each other.
        auto const mark = (std::uint64_t{TSystem::ProcessID()} << 32) +
                          static_cast<std::uint64_t>(TSystem::UpTime().count() & 0xFFFFFFFF);
        Listener first(port, count, mark);
        Listener second(port, count, mark);
        for (; check.sent < count; ++check.sent) {
            ResourceValues values;
            values.m_processId = kNoProcess + check.sent;
            values.m_memory = mark;
            first.Observer().Send(values);
        }
        auto const until = std::chrono::steady_clock::now() + timeout;
        for (Listener* const listener : {&first, &second}) {
            auto const left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
            static_cast<void>(listener->Missing().Wait(std::max(left, std::chrono::milliseconds(0))));
        }
        std::this_thread::sleep_for(kForRepeats);
        check.listeners = {first.Count(), second.Count()};
    } catch (std::exception const& error) {
        check.error = TStringCore(error.what());
    }
    return check;
}

} // namespace qvx
