#pragma once
// A command with everything that it starts: what is asked of the operating system to run it, to follow it and to end
// it. One source file for each system.

#include <chrono>
#include <compare>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qvx {

/// A process for as long as the machine runs: process ids are used again.
struct ProcessKey
{
    unsigned int pid = 0;
    unsigned long long started = 0; ///< in a unit of the system's

    // NOLINTNEXTLINE(modernize-use-nullptr): the 0 that results are compared with is no pointer
    auto operator<=>(ProcessKey const&) const = default;
};

/// How a command has ended.
struct CommandEnd
{
    int status = 0; ///< the exit status; 128 and the number of the signal when one has ended it
    int signal = 0;
};

/// Ends this process the way the command has ended, by the same signal if there was one (without another core dump):
/// so whoever started it sees no difference. Returns the exit status when it has to be the status of main.
[[nodiscard]] int ExitStatusLike(CommandEnd const& end) noexcept;

/// Runs one command. All functions are called on the thread that made the object, which is the process's first one,
/// but for Wake.
///
/// POSIX: the command is in the process group of its parent, so terminals, job control and Ctrl-C work as without one.
/// SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2, SIGTSTP, SIGCONT and SIGWINCH are handed on to it, unless they
/// come from the terminal, which sends them to the whole group itself, or were ignored from the start. When the command
/// is stopped by the terminal, or in whatever way while it has the terminal, this process stops with it. Descendants
/// whose parents end become children of this process (a Linux subreaper), so none gets lost. The command is killed by
/// the system when this process dies, though not what it has started, nor a program that changes its user.
///
/// Windows: the command is in a job, which ends with this process, and in a console group of its own; Ctrl-C and
/// Ctrl-Break are handed on to it as Ctrl-Break, which no program ignores unless it wants to.
class WatchedCommand
{
public:
    /// Call before other threads are started: they must not get the signals.
    WatchedCommand();
    /// Kills the command if it still runs.
    ~WatchedCommand();
    WatchedCommand(WatchedCommand const&) = delete;
    WatchedCommand& operator=(WatchedCommand const&) = delete;

    /// Starts it, with this process's standard streams. Throws Failure::CommandNotFound or Failure::CannotRun.
    void Start(std::vector<std::string> const& command);
    [[nodiscard]] unsigned int ProcessId() const noexcept;

    /// Hands on signals and notices what ends. Returns when something has ended, after Wake, and at the time given.
    void Wait(std::chrono::steady_clock::time_point until);
    /// Ends the wait, or the next one; from any thread.
    void Wake() noexcept;
    /// Empty while it runs.
    [[nodiscard]] std::optional<CommandEnd> End() const noexcept;

    /// The command and its descendants that are alive, without the helper.
    [[nodiscard]] std::vector<ProcessKey> Processes();
    /// Asks all of them to end: SIGTERM, and SIGCONT for those that are stopped; Ctrl-Break on Windows.
    void AskToEnd();
    void Kill();

    /// Runs a line by the system's shell beside the command, with these additions to the environment, without input and
    /// with its output on stderr. One at a time. Throws Failure::CannotRun.
    void StartHelper(std::string const& line, std::vector<std::pair<std::string, std::string>> const& environment);
    /// Empty while it runs.
    [[nodiscard]] std::optional<CommandEnd> HelperEnd() const noexcept;
    /// With all that it has started, unless that has gone its own ways.
    void KillHelper();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// The arguments of a process as one line, or its name where they are not to be had; empty when there is no such
/// process. Whatever the process has put there: not printable as it is.
[[nodiscard]] std::string CommandLineOf(unsigned int pid);

} // namespace qvx
