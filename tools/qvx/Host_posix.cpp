#include "Host.h"

#include <csignal>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

namespace qvx::host {

void Prepare()
{}

// All threads that are started later inherit the mask, so the signal goes to the one that waits for it, where any
// function may be called.
void OnInterrupt(std::function<void()> function)
{
    struct sigaction now = {};
    sigaction(SIGINT, nullptr, &now);
    if (now.sa_handler == SIG_IGN) {
        return;
    }
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    pthread_sigmask(SIG_BLOCK, &interrupt, nullptr);
    std::thread([interrupt, function = std::move(function)] {
        int signal = 0;
        sigwait(&interrupt, &signal);
        function();
        pthread_sigmask(SIG_UNBLOCK, &interrupt, nullptr);
        pause();
    }).detach();
}

bool StderrIsTerminal() noexcept
{
    return isatty(STDERR_FILENO) == 1;
}

bool StdoutHasColours() noexcept
{
    auto const value = [](char const* name) -> std::string_view {
        char const* const set = std::getenv(name);
        return set != nullptr ? set : "";
    };
    return isatty(STDOUT_FILENO) == 1 && value("NO_COLOR").empty() && !value("TERM").empty() && value("TERM") != "dumb";
}

int StderrWidth() noexcept
{
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col : 80;
}

bool IsInteractive() noexcept
{
    return isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
}

std::FILE* OpenToAppend(std::filesystem::path const& path) noexcept
{
    return std::fopen(path.c_str(), "ae");
}

std::filesystem::path PathOf(std::string const& argument)
{
    return argument;
}

std::vector<Entry> EntriesOf(std::filesystem::path const& folder, std::function<bool()> const& goesOn,
                             std::error_code& error)
{
    std::vector<Entry> entries;
    for (std::filesystem::directory_iterator at(folder, error), end; !error && at != end && goesOn();
         at.increment(error)) {
        std::error_code ignored;
        entries.push_back({at->path(), at->is_regular_file(ignored)}); // most file systems tell with the name
    }
    return entries;
}

bool IsLink(std::filesystem::path const& path) noexcept
{
    std::error_code error;
    return std::filesystem::is_symlink(std::filesystem::symlink_status(path, error));
}

std::string PathBytes(std::filesystem::path const& path)
{
    return path.native();
}

bool ComesBefore(std::filesystem::path const& a, std::filesystem::path const& b) noexcept
{
    return a.native() < b.native(); // bytes of UTF-8 are in the order of the code points
}

} // namespace qvx::host

int main(int argc, char** argv)
{
    return qvx::Main({argv + (argc > 0 ? 1 : 0), argv + argc});
}
