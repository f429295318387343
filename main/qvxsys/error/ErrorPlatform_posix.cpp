#include "ErrorPlatform.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include <sys/uio.h>
#include <unistd.h>

#include "KeepErrno.h"

namespace qvxsys::error::platform {
namespace {

/// While it lives, a write to a pipe that nobody reads fails, and that is all.
class WithoutPipeSignal
{
public:
    WithoutPipeSignal() noexcept
    {
        sigemptyset(&m_pipe);
        sigaddset(&m_pipe, SIGPIPE);
        sigset_t pending;
        sigemptyset(&pending);
        sigpending(&pending);
        m_wasPending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &m_pipe, &m_before);
    }
    ~WithoutPipeSignal()
    {
        // One that is pending now only is that of the write. One that was before is left to whoever blocked it.
        timespec const now{};
        while (!m_wasPending && sigtimedwait(&m_pipe, nullptr, &now) == -1 && errno == EINTR) {
        }
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
    WithoutPipeSignal(WithoutPipeSignal const&) = delete;
    WithoutPipeSignal& operator=(WithoutPipeSignal const&) = delete;

private:
    sigset_t m_pipe;
    sigset_t m_before;
    bool m_wasPending;
};

} // namespace

void DebugOutput(char const* text) noexcept
{
    qvxsys::platform::KeepErrno const keep;
    char feed[] = "\n";
    // One call, so that lines of several threads stay whole.
    iovec const parts[] = {{const_cast<char*>(text), std::strlen(text)}, {feed, 1}};
    WithoutPipeSignal const quiet;
    [[maybe_unused]] auto const written = ::writev(STDERR_FILENO, parts, 2);
}

} // namespace qvxsys::error::platform
