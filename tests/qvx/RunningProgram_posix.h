#pragma once
// A program that the test talks to while it runs.

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include <arpa/inet.h>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

class RunningProgram
{
public:
    enum Streams { Pipes, Terminal };

    /// In a process group of its own. With Terminal all its streams are one terminal of 24 lines and 100 columns.
    explicit RunningProgram(std::vector<std::string> const& command, Streams streams = Pipes)
    {
        std::signal(SIGPIPE, SIG_IGN);
        int err[2] = {-1, -1};
        if (streams == Terminal) {
            winsize size{24, 100, 0, 0};
            m_pid = forkpty(&m_in, nullptr, nullptr, &size);
            m_out = m_in;
        } else {
            int in[2];
            int out[2];
            if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0) {
                throw std::runtime_error("no pipe");
            }
            m_pid = fork();
            if (m_pid == 0) {
                setpgid(0, 0);
                dup2(in[0], 0);
                dup2(out[1], 1);
                dup2(err[1], 2);
            }
            close(in[0]);
            close(out[1]);
            close(err[1]);
            m_in = in[1];
            m_out = out[0];
            m_err = err[0];
        }
        if (m_pid == 0) {
            std::vector<char*> arguments;
            for (std::string const& argument : command) {
                arguments.push_back(const_cast<char*>(argument.c_str()));
            }
            arguments.push_back(nullptr);
            setenv("TERM", "xterm", 1);
            std::signal(SIGPIPE, SIG_DFL);
            execv(arguments[0], arguments.data());
            _exit(127);
        }
    }
    ~RunningProgram()
    {
        if (m_pid > 0) {
            kill(m_pid, SIGKILL);
            waitpid(m_pid, nullptr, 0);
        }
        for (int const fd : {m_in, m_err, m_out != m_in ? m_out : -1}) {
            if (fd >= 0) {
                close(fd);
            }
        }
    }
    RunningProgram(RunningProgram const&) = delete;
    RunningProgram& operator=(RunningProgram const&) = delete;

    pid_t Pid() const { return m_pid; }
    int TerminalDescriptor() const { return m_in; }
    void Send(int signal) const { kill(m_pid, signal); }
    /// False when nobody reads any more.
    bool Write(std::string const& text) const
    {
        return write(m_in, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    }
    void EndInput()
    {
        close(m_in);
        m_in = -1;
    }

    /// What it prints up to and with a text; without it when that does not come within a minute.
    std::string ReadUntil(std::string const& text) { return Read(m_out, text); }
    std::string ReadErrorsUntil(std::string const& text) { return Read(m_err, text); }
    std::string ReadAll() { return Read(m_out, ""); }
    std::string ReadAllErrors() { return Read(m_err, ""); }

    /// False when it has ended instead.
    bool WaitUntilItStops() const
    {
        int status = 0;
        return waitpid(m_pid, &status, WUNTRACED) == m_pid && WIFSTOPPED(status);
    }

    /// Its exit status, or minus the signal that has ended it.
    int Wait()
    {
        int status = 0;
        while (waitpid(m_pid, &status, 0) < 0 && errno == EINTR) {
        }
        m_pid = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    static std::string Read(int fd, std::string const& until)
    {
        using Clock = std::chrono::steady_clock;
        std::string text;
        Clock::time_point const end = Clock::now() + std::chrono::minutes(1);
        pollfd ready{fd, POLLIN, 0};
        while ((until.empty() || !text.ends_with(until)) && Clock::now() < end && poll(&ready, 1, 60'000) == 1) {
            char c = 0;
            if (read(fd, &c, 1) != 1) {
                break;
            }
            text += c;
        }
        return text;
    }

    pid_t m_pid = -1;
    int m_in = -1;
    int m_out = -1;
    int m_err = -1;
};

/// A port of 127.0.0.1 that nobody else gets while it lives.
class BoundPort
{
public:
    BoundPort() : m_socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof m_address;
        auto* const any = reinterpret_cast<sockaddr*>(&m_address);
        if (bind(m_socket, any, length) != 0 || getsockname(m_socket, any, &length) != 0) {
            throw std::runtime_error("no port");
        }
    }
    ~BoundPort() { close(m_socket); }
    BoundPort(BoundPort const&) = delete;
    BoundPort& operator=(BoundPort const&) = delete;

    unsigned short Number() const { return ntohs(m_address.sin_port); }

private:
    int m_socket;
    sockaddr_in m_address{};
};

/// A port on which nobody listens.
inline unsigned short FreePort()
{
    return BoundPort().Number();
}
