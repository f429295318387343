#include "Console.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace qvx::console {

void Prepare() noexcept
{}

bool StderrIsTerminal() noexcept
{
    return isatty(STDERR_FILENO) == 1;
}

int StderrWidth() noexcept
{
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col : 80;
}

} // namespace qvx::console
