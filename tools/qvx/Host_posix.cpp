#include "Host.h"

#include <cstdlib>
#include <string_view>

#include <sys/ioctl.h>
#include <unistd.h>

namespace qvx::host {

void Prepare()
{}

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

std::filesystem::path PathOf(std::string const& argument)
{
    return argument;
}

std::vector<Entry> EntriesOf(std::filesystem::path const& folder, std::error_code& error)
{
    std::vector<Entry> entries;
    for (std::filesystem::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
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
