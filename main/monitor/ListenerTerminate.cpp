#include "ListenerTerminate.h"

#include <atomic>
#include <cstdlib>
#include <exception>

namespace qvxsys::monitor {

namespace {

constinit thread_local std::terminate_handler t_handler = nullptr;
constinit std::atomic<std::terminate_handler> g_previous = nullptr;

[[noreturn]] void Terminate()
{
    if (t_handler != nullptr) {
        t_handler();
    } else if (std::terminate_handler const previous = g_previous.load(); previous != nullptr) {
        previous();
    }
    std::abort();
}

} // namespace

void SetThreadTerminateHandler(void (*handler)()) noexcept
{
    if (handler == nullptr) {
        return;
    }
    t_handler = handler;
    std::terminate_handler const installed = std::get_terminate();
    if (installed != &Terminate) {
        g_previous.store(installed);
        std::set_terminate(&Terminate);
    }
}

} // namespace qvxsys::monitor
