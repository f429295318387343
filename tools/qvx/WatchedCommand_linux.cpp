#include "WatchedCommand.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <set>
#include <string_view>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <qvxsys/Format.h>

#include "DisplayText.h"
#include "Failures.h"
#include "ProcText.h"

namespace qvx {
namespace {

constexpr int kForwarded[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2, SIGTSTP, SIGCONT, SIGWINCH};

class Descriptor
{
public:
    explicit Descriptor(int fd = -1) noexcept : m_fd(fd) {}
    Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~Descriptor() { Close(); }
    [[nodiscard]] int Get() const noexcept { return m_fd; }
    void Close() noexcept
    {
        if (m_fd >= 0) {
            close(std::exchange(m_fd, -1));
        }
    }

private:
    int m_fd;
};

[[noreturn]] void ThrowErrno(char const* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

// ---- /proc, where everything may vanish between two looks

std::string FileOf(pid_t pid, std::string const& name)
{
    Descriptor const file(open(("/proc/" + std::to_string(pid) + "/" + name).c_str(), O_RDONLY | O_CLOEXEC));
    std::string text;
    char piece[4096];
    for (ssize_t n = 0; file.Get() >= 0 && (n = read(file.Get(), piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<std::size_t>(n));
    }
    return text;
}

// Nothing when it is gone, or as good as gone.
std::optional<unsigned long long> StartOf(pid_t pid)
{
    return StartTime(FileOf(pid, "stat"));
}

std::vector<pid_t> ChildrenOf(pid_t pid)
{
    std::vector<pid_t> children;
    std::string const tasks = "/proc/" + std::to_string(pid) + "/task";
    std::unique_ptr<DIR, int (*)(DIR*)> const folder(opendir(tasks.c_str()), closedir);
    for (dirent const* entry = nullptr; folder != nullptr && (entry = readdir(folder.get())) != nullptr;) {
        if (entry->d_name[0] != '.') {
            std::string const file = std::string("task/") + entry->d_name + "/children";
            std::vector<pid_t> const some = Numbers<pid_t>(FileOf(pid, file));
            children.insert(children.end(), some.begin(), some.end());
        }
    }
    return children;
}

// By a descriptor of the process, so that none is hit that has got its id since.
void SendTo(ProcessKey const& process, std::initializer_list<int> signals)
{
    auto const pid = static_cast<pid_t>(process.pid);
    Descriptor const handle(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    if (handle.Get() >= 0 && StartOf(pid) == process.started) {
        for (int const signal : signals) {
            syscall(SYS_pidfd_send_signal, handle.Get(), signal, nullptr, 0);
        }
    }
}

CommandEnd EndOf(int status) noexcept
{
    return WIFSIGNALED(status) ? CommandEnd{128 + WTERMSIG(status), WTERMSIG(status)}
                               : CommandEnd{WEXITSTATUS(status), 0};
}

std::vector<char*> Pointers(std::vector<std::string> const& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string const& text : texts) {
        pointers.push_back(const_cast<char*>(text.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

bool HasTheTerminal()
{
    constexpr int kStreams[] = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    return std::ranges::any_of(kStreams, [](int stream) { return tcgetpgrp(stream) == getpgrp(); });
}

// ---- what this process changes for itself and its children must not see

class Inheritance
{
public:
    Inheritance()
    {
        sigemptyset(&m_blocked);
        for (int const signal : kForwarded) {
            struct sigaction now = {};
            sigaction(signal, nullptr, &now);
            if (now.sa_handler != SIG_IGN) {
                sigaddset(&m_blocked, signal);
            }
        }
        sigaddset(&m_blocked, SIGCHLD);
        pthread_sigmask(SIG_BLOCK, &m_blocked, &m_mask);
        struct sigaction action = {};
        action.sa_handler = SIG_IGN;
        sigaction(SIGPIPE, &action, &m_pipe);
        action.sa_handler = SIG_DFL; // ignored, children would vanish without a status
        sigaction(SIGCHLD, &action, &m_child);
        // The monitor keeps a descriptor for each process.
        getrlimit(RLIMIT_NOFILE, &m_files);
        rlimit const most{m_files.rlim_max, m_files.rlim_max};
        setrlimit(RLIMIT_NOFILE, &most);
        prctl(PR_SET_CHILD_SUBREAPER, 1);
    }

    // Between fork and exec: system calls only.
    void Restore() const noexcept
    {
        setrlimit(RLIMIT_NOFILE, &m_files);
        sigaction(SIGPIPE, &m_pipe, nullptr);
        sigaction(SIGCHLD, &m_child, nullptr);
        pthread_sigmask(SIG_SETMASK, &m_mask, nullptr);
    }

    [[nodiscard]] sigset_t const& Blocked() const noexcept { return m_blocked; }

private:
    sigset_t m_blocked;
    sigset_t m_mask;
    struct sigaction m_pipe = {};
    struct sigaction m_child = {};
    rlimit m_files{};
};

struct Launch
{
    char const* file;
    char* const* arguments;
    char* const* environment;
    bool isHelper;
};

[[noreturn]] void Become(Launch const& launch, Inheritance const& inheritance, pid_t parent, int report) noexcept
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) { // has died before it could matter
        _exit(1);
    }
    if (launch.isHelper) {
        setpgid(0, 0);
        dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
        dup2(STDERR_FILENO, STDOUT_FILENO);
    }
    inheritance.Restore();
    execvpe(launch.file, launch.arguments, launch.environment);
    int const error = errno;
    static_cast<void>(write(report, &error, sizeof error) != 0);
    _exit(127);
}

// The first thread forks: the death signal is for that of the thread that did.
pid_t Spawn(Launch const& launch, Inheritance const& inheritance)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        ThrowErrno("pipe");
    }
    Descriptor const reading(ends[0]);
    Descriptor writing(ends[1]);
    pid_t const parent = getpid();
    pid_t const child = fork();
    if (child == 0) {
        Become(launch, inheritance, parent, writing.Get());
    }
    int error = child < 0 ? errno : 0;
    writing.Close();
    if (child > 0 && read(reading.Get(), &error, sizeof error) > 0) {
        waitpid(child, nullptr, 0);
    }
    if (error != 0) {
        Failure const failure = error == ENOENT ? Failure::CommandNotFound : Failure::CannotRun;
        TStringCore const reason(std::generic_category().message(error).c_str());
        throw MakeFailure(failure, qvxsys::Format(u"cannot run %1: %2", DisplayName(launch.file), reason));
    }
    return child;
}

} // namespace

struct WatchedCommand::State
{
    void ReadSignals();
    void Reap();
    [[nodiscard]] std::vector<ProcessKey> Scan();

    Inheritance inheritance;
    Descriptor signals;
    Descriptor wake;
    pid_t child = -1;
    pid_t helper = -1;
    std::optional<CommandEnd> end;
    std::optional<CommandEnd> helperEnd;
    std::set<ProcessKey> known; // a look at /proc may miss what is there
};

// Those of the terminal have come to the command, too.
void WatchedCommand::State::ReadSignals()
{
    signalfd_siginfo signal{};
    while (read(signals.Get(), &signal, sizeof signal) == sizeof signal) {
        auto const number = static_cast<int>(signal.ssi_signo);
        if (number != SIGCHLD && signal.ssi_code != SI_KERNEL && child > 0 && !end) {
            kill(child, number);
        }
    }
}

void WatchedCommand::State::Reap()
{
    int status = 0;
    for (pid_t pid = 0; (pid = waitpid(-1, &status, WNOHANG | WUNTRACED)) > 0;) {
        if (WIFSTOPPED(status)) {
            int const signal = WSTOPSIG(status);
            bool const isByTerminal = signal == SIGTSTP || signal == SIGTTIN || signal == SIGTTOU;
            if (pid == child && (isByTerminal || HasTheTerminal())) {
                kill(getpid(), SIGSTOP); // the job has stopped, and the terminal is free, when all of it has
            }
        } else if (pid == child) {
            end = EndOf(status);
        } else if (pid == helper) {
            helperEnd = EndOf(status);
        }
    }
}

std::vector<ProcessKey> WatchedCommand::State::Scan()
{
    std::set<ProcessKey> seen;
    std::vector<pid_t> found = ChildrenOf(getpid());
    if (child > 0 && !end) {
        found.push_back(child); // where the kernel does not tell of children
    }
    for (std::size_t i = 0; i < found.size(); ++i) {
        pid_t const pid = found[i];
        bool const isHelper = pid == helper && !helperEnd;
        std::optional<unsigned long long> const start = isHelper ? std::nullopt : StartOf(pid);
        if (start && seen.insert({static_cast<unsigned int>(pid), *start}).second) {
            std::vector<pid_t> const children = ChildrenOf(pid);
            found.insert(found.end(), children.begin(), children.end());
        }
    }
    std::erase_if(known, [&](ProcessKey const& process) {
        return !seen.contains(process) && StartOf(static_cast<pid_t>(process.pid)) != process.started;
    });
    known.insert(seen.begin(), seen.end());
    return {known.begin(), known.end()};
}

WatchedCommand::WatchedCommand() : m_state(std::make_unique<State>())
{
    m_state->signals = Descriptor(signalfd(-1, &m_state->inheritance.Blocked(), SFD_CLOEXEC | SFD_NONBLOCK));
    m_state->wake = Descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (m_state->signals.Get() < 0 || m_state->wake.Get() < 0) {
        ThrowErrno("signalfd");
    }
}

WatchedCommand::~WatchedCommand()
{
    KillHelper();
    if (m_state->child > 0 && !m_state->end) {
        Kill();
        constexpr std::chrono::seconds kPatience{1}; // what the system is in the middle of may outlast a signal
        auto const until = std::chrono::steady_clock::now() + kPatience;
        while (!m_state->end && std::chrono::steady_clock::now() < until) {
            Wait(until);
        }
    }
}

void WatchedCommand::Start(std::vector<std::string> const& command)
{
    std::vector<char*> const arguments = Pointers(command);
    m_state->child = Spawn({arguments[0], arguments.data(), environ, false}, m_state->inheritance);
}

unsigned int WatchedCommand::ProcessId() const noexcept
{
    return static_cast<unsigned int>(m_state->child);
}

void WatchedCommand::Wait(std::chrono::steady_clock::time_point until)
{
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
    std::array<pollfd, 2> waiting{{{m_state->signals.Get(), POLLIN, 0}, {m_state->wake.Get(), POLLIN, 0}}};
    poll(waiting.data(), waiting.size(), static_cast<int>(std::clamp<long long>(left.count(), 0, 3'600'000)));
    std::uint64_t count = 0;
    static_cast<void>(read(m_state->wake.Get(), &count, sizeof count) != 0);
    m_state->ReadSignals();
    m_state->Reap();
}

void WatchedCommand::Wake() noexcept
{
    std::uint64_t const one = 1;
    static_cast<void>(write(m_state->wake.Get(), &one, sizeof one) != 0);
}

std::optional<CommandEnd> WatchedCommand::End() const noexcept
{
    return m_state->end;
}

std::vector<ProcessKey> WatchedCommand::Processes()
{
    return m_state->Scan();
}

void WatchedCommand::AskToEnd()
{
    for (ProcessKey const& process : m_state->Scan()) {
        SendTo(process, {SIGTERM, SIGCONT});
    }
}

void WatchedCommand::Kill()
{
    for (ProcessKey const& process : m_state->Scan()) {
        SendTo(process, {SIGKILL});
    }
}

void WatchedCommand::StartHelper(std::string const& line,
                                 std::vector<std::pair<std::string, std::string>> const& environment)
{
    std::vector<std::string> variables;
    variables.reserve(environment.size());
    for (auto const& [name, value] : environment) {
        variables.emplace_back(name).append("=").append(value);
    }
    for (char** variable = environ; *variable != nullptr; ++variable) {
        std::string_view const text = *variable;
        bool const isSet = std::ranges::any_of(environment, [&](auto const& entry) {
            return text.starts_with(entry.first) && text.substr(entry.first.size()).starts_with('=');
        });
        if (!isSet) {
            variables.emplace_back(text);
        }
    }
    std::vector<std::string> const command = {"sh", "-c", line};
    m_state->helperEnd.reset();
    m_state->helper =
        Spawn({"/bin/sh", Pointers(command).data(), Pointers(variables).data(), true}, m_state->inheritance);
}

std::optional<CommandEnd> WatchedCommand::HelperEnd() const noexcept
{
    return m_state->helperEnd;
}

// Its id cannot be another's: it was not waited for yet.
void WatchedCommand::KillHelper()
{
    if (m_state->helper > 0 && !m_state->helperEnd) {
        kill(m_state->helper, SIGKILL); // in case it is not the leader of its group yet
        kill(-m_state->helper, SIGKILL);
    }
}

int ExitStatusLike(CommandEnd const& end) noexcept
{
    if (end.signal != 0) {
        rlimit const none{0, 0};
        setrlimit(RLIMIT_CORE, &none);
        std::signal(end.signal, SIG_DFL);
        sigset_t one;
        sigemptyset(&one);
        sigaddset(&one, end.signal);
        pthread_sigmask(SIG_UNBLOCK, &one, nullptr);
        raise(end.signal);
    }
    return end.status;
}

std::string CommandLineOf(unsigned int pid)
{
    return CommandText(FileOf(static_cast<pid_t>(pid), "cmdline"), FileOf(static_cast<pid_t>(pid), "comm"));
}

} // namespace qvx
