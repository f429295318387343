#pragma once
// Runs a program and captures what it prints.

#include <string>
#include <vector>

struct ChildResult
{
    int status = 0; ///< the exit status, or minus the signal that ended the program
    std::string out;
    std::string err;
    long peakKiB = 0; ///< of resident memory
};

struct ChildOptions
{
    bool unprivileged = false;   ///< when run by root, as user 65534: so that file permissions count (POSIX only)
    std::string folder;          ///< to run in, if not the current one
    char const* outTo = nullptr; ///< a file to use as stdout
};

/// command[0] is the program's path; all in UTF-8. What is printed comes with line feeds alone, however the system ends
/// lines. A program that cannot be started has status 127, one that takes more than a minute is ended.
ChildResult RunChild(std::vector<std::string> const& command, ChildOptions const& options = {});

/// What ChildResult::peakKiB is at least: a child can begin with the size of the process that it was forked from.
long LeastPeakKiB();
