#include "PressureSource.h"

// Pressure stall information: a process writes to the pressure file how much time may be lost within which window, and
// polls the descriptor; the kernel tells, at most once per window, when more was lost (Linux, Documentation/accounting/
// psi.rst). A control group of version 2 has a file of its own.

#include <cerrno>
#include <cstring>
#include <iterator>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "ControlGroup.h"
#include "Descriptor_posix.h"

namespace qvxsys::monitor {

namespace {

using platform::Descriptor;

class StallSource final : public PressureSource
{
public:
    /// False with errno set when the kernel refuses.
    bool Open(char const* file, MemoryPressure::Config const& config)
    {
        m_stop = Descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
        return m_stop.IsOpen() && Arm(m_some, file, "some ", config.m_some, config.m_window) &&
               Arm(m_full, file, "full ", config.m_full, config.m_window);
    }

    unsigned int Wait() noexcept override
    {
        for (;;) {
            // A negative descriptor is passed over.
            pollfd polled[] = {{m_some.Get(), POLLPRI, 0}, {m_full.Get(), POLLPRI, 0}, {m_stop.Get(), POLLIN, 0}};
            if (::poll(polled, std::size(polled), -1) < 0) {
                if (errno == EINTR) {
                    continue;
                }
                return 0;
            }
            // An error says that the group has gone.
            if (polled[2].revents != 0 || ((polled[0].revents | polled[1].revents) & (POLLERR | POLLNVAL)) != 0) {
                return 0;
            }
            return ((polled[0].revents & POLLPRI) != 0 ? kSome : 0U) |
                   ((polled[1].revents & POLLPRI) != 0 ? kFull : 0U);
        }
    }
    void Stop() noexcept override { eventfd_write(m_stop.Get(), 1); }

private:
    static bool Arm(Descriptor& trigger, char const* file, char const* kind, std::chrono::microseconds stall,
                    std::chrono::microseconds window)
    {
        if (stall.count() <= 0) {
            return true;
        }
        trigger = Descriptor(::open(file, O_RDWR | O_NONBLOCK | O_CLOEXEC));
        std::string const text = kind + std::to_string(stall.count()) + ' ' + std::to_string(window.count());
        // The kernel wants the terminator, too.
        return trigger.IsOpen() && ::write(trigger.Get(), text.c_str(), text.size() + 1) >= 0;
    }

    Descriptor m_some;
    Descriptor m_full;
    Descriptor m_stop;
};

/// The group's file, if the process lives in a group that has one.
std::string PressureFile()
{
    using qvxsys::system::ControlGroupWalk;
    using qvxsys::system::Controller;
    ControlGroupWalk group("", qvxsys::system::MachineControlGroups(), Controller::Memory);
    if (!group.AtEnd() && group.IsUnified()) {
        char const* const file = group.File("memory.pressure");
        if (::access(file, R_OK | W_OK) == 0) {
            return file;
        }
    }
    return "/proc/pressure/memory";
}

} // namespace

std::unique_ptr<PressureSource> OpenPressureSource(MemoryPressure::Config const& config, std::string& status)
{
    status = PressureFile();
    auto source = std::make_unique<StallSource>();
    if (source->Open(status.c_str(), config)) {
        return source;
    }
    status += ": ";
    status += ::strerrordesc_np(errno);
    return nullptr;
}

} // namespace qvxsys::monitor
