#pragma once
// What can be done to a process only once.

#include <functional>

#include <sys/wait.h>
#include <unistd.h>

/// The exit status of a child process that runs `function`, which returns it; minus the signal that has ended it.
inline int InChild(std::function<int()> const& function)
{
    pid_t const child = fork();
    if (child == 0) {
        alarm(200);
        _exit(function());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}
