#include "support/ChildProcess.h"

#include <array>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr unsigned kMostSeconds = 200; // a program that waits for something is ended by SIGALRM; load is no reason

[[noreturn]] void Become(std::vector<std::string> const& command, ChildOptions const& options, int out, int err)
{
    std::vector<char*> arguments;
    for (std::string const& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    int const in = open("/dev/null", O_RDONLY);
    int const to = options.outTo != nullptr ? open(options.outTo, O_WRONLY) : out;
    bool ready = dup2(in, 0) == 0 && dup2(to, 1) == 1 && dup2(err, 2) == 2;
    ready = ready && (options.folder.empty() || chdir(options.folder.c_str()) == 0);
    if (options.unprivileged && geteuid() == 0) {
        ready = ready && setgid(65534) == 0 && setuid(65534) == 0;
    }
    alarm(kMostSeconds);
    if (ready) {
        execv(arguments[0], arguments.data());
    }
    _exit(127);
}

// Reads both pipes to their ends at once, so that the program never waits for either.
void ReadAll(std::array<pollfd, 2> pipes, std::array<std::string*, 2> texts)
{
    for (int open = 2; open != 0;) {
        poll(pipes.data(), pipes.size(), -1);
        for (std::size_t i = 0; i < pipes.size(); ++i) {
            char buffer[4096];
            ssize_t const n = pipes[i].revents != 0 ? read(pipes[i].fd, buffer, sizeof buffer) : 0;
            if (n > 0) {
                texts[i]->append(buffer, static_cast<std::size_t>(n));
            } else if (pipes[i].revents != 0) {
                close(pipes[i].fd);
                pipes[i].fd = -1; // poll passes over it
                --open;
            }
        }
    }
}

} // namespace

ChildResult RunChild(std::vector<std::string> const& command, ChildOptions const& options)
{
    int out[2];
    int err[2];
    if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    pid_t const child = fork();
    if (child == 0) {
        Become(command, options, out[1], err[1]);
    }
    close(out[1]);
    close(err[1]);
    ChildResult result;
    ReadAll({{{out[0], POLLIN, 0}, {err[0], POLLIN, 0}}}, {&result.out, &result.err});
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child) {
        throw std::runtime_error("no child process");
    }
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    result.peakKiB = usage.ru_maxrss;
    return result;
}

long LeastPeakKiB()
{
    rusage own{};
    getrusage(RUSAGE_SELF, &own);
    return own.ru_maxrss;
}
