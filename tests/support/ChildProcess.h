#pragma once
// Runs a program and captures what it prints (POSIX).

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

struct ChildResult
{
    int status = 0; ///< the exit status, or minus the signal that ended the program
    std::string out;
    std::string err;
    long peakKiB = 0; ///< of resident memory; at least that of the process that ran it, from which it was forked
};

struct ChildOptions
{
    bool unprivileged = false;   ///< when run by root, as user 65534: so that file permissions count
    char const* outTo = nullptr; ///< a file to use as stdout
};

namespace child_process {

constexpr unsigned kMostSeconds = 60; // a program that waits for something is ended by SIGALRM

[[noreturn]] inline void Become(std::vector<std::string> const& command, ChildOptions const& options, int out, int err)
{
    std::vector<char*> arguments;
    for (std::string const& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    int const in = open("/dev/null", O_RDONLY);
    int const to = options.outTo != nullptr ? open(options.outTo, O_WRONLY) : out;
    bool ready = dup2(in, 0) == 0 && dup2(to, 1) == 1 && dup2(err, 2) == 2;
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
inline void ReadAll(std::array<pollfd, 2> pipes, std::array<std::string*, 2> texts)
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

} // namespace child_process

/// command[0] is the program's path. A program that cannot be started has status 127.
inline ChildResult RunChild(std::vector<std::string> const& command, ChildOptions const& options = {})
{
    int out[2];
    int err[2];
    if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    pid_t const child = fork();
    if (child == 0) {
        child_process::Become(command, options, out[1], err[1]);
    }
    close(out[1]);
    close(err[1]);
    ChildResult result;
    child_process::ReadAll({{{out[0], POLLIN, 0}, {err[0], POLLIN, 0}}}, {&result.out, &result.err});
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child) {
        throw std::runtime_error("no child process");
    }
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    result.peakKiB = usage.ru_maxrss;
    return result;
}
