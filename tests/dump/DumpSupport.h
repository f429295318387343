#pragma once
// Programs to be dumped, and the debugger that reads the dumps.

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "support/ChildProcess.h"

/// `dump_victim wait THREADS` or `alone THREADS`, waiting.
class Victim
{
public:
    static constexpr std::size_t kMemory = 16 << 20; ///< that it has written to, at least
    static constexpr std::size_t kRuns = 400;        ///< of pages, between which there is nothing

    explicit Victim(int threads, char const* how = "wait")
    {
        int in[2];
        int out[2];
        if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        m_id = fork();
        if (m_id == 0) {
            dup2(in[0], STDIN_FILENO);
            dup2(out[1], STDOUT_FILENO);
            execl(DUMP_VICTIM, "dump_victim", how, std::to_string(threads).c_str(), nullptr);
            _exit(127);
        }
        close(in[0]);
        close(out[1]);
        m_in = in[1];
        char byte = 0;
        while (byte != '\n' && read(out[0], &byte, 1) > 0) {
        }
        close(out[0]);
    }
    Victim(Victim const&) = delete;
    Victim& operator=(Victim const&) = delete;
    ~Victim()
    {
        if (m_id > 0) {
            Kill();
            End();
        }
    }

    [[nodiscard]] pid_t Id() const { return m_id; }
    void Kill() const { kill(m_id, SIGKILL); }
    /// Lets it end; how it did.
    int End()
    {
        int status = -1;
        close(m_in);
        waitpid(m_id, &status, 0);
        m_id = 0;
        return status;
    }

    /// A field of its status: "State", "TracerPid".
    [[nodiscard]] std::string Status(std::string const& field) const
    {
        std::ifstream in("/proc/" + std::to_string(m_id) + "/status");
        for (std::string line; std::getline(in, line);) {
            if (line.starts_with(field + ":\t")) {
                return line.substr(field.size() + 2);
            }
        }
        return {};
    }

private:
    pid_t m_id = 0;
    int m_in = -1;
};

/// Whether one process may trace another here.
inline bool CanTrace()
{
    pid_t const child = fork();
    if (child == 0) {
        pause();
        _exit(0);
    }
    bool const traced = ptrace(PTRACE_SEIZE, child, nullptr, nullptr) == 0;
    kill(child, SIGKILL);
    waitpid(child, nullptr, __WALL);
    return traced;
}

/// What lldb says to these commands; empty if there is none.
inline std::string Debugger(std::string const& dump, std::vector<std::string> const& commands)
{
    std::vector<std::string> line{"/usr/bin/env", "lldb", "-b", "-c", dump};
    for (std::string const& command : commands) {
        line.insert(line.end(), {"-o", command});
    }
    ChildResult const result = RunChild(line);
    return result.status == 127 ? std::string() : result.out;
}

inline int CountOf(std::string const& text, std::string const& piece)
{
    int count = 0;
    for (std::size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) {
        ++count;
    }
    return count;
}

#define SKIP_WITHOUT_TRACING()                                                                                         \
    if (!CanTrace()) {                                                                                                 \
        GTEST_SKIP() << "ptrace is not allowed here";                                                                  \
    }
