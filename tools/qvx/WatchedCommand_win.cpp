#include "WatchedCommand.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <qvxsys/Format.h>
#include <qvxsys/TStringCore.h>

#include "DisplayText.h"
#include "Failures.h"
#include "WindowsApi.h"

namespace qvx {
namespace {

constexpr UINT kKilled = 137; // as shells have it elsewhere

class Handle
{
public:
    explicit Handle(HANDLE handle = nullptr) noexcept : m_handle(handle) {}
    Handle(Handle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~Handle()
    {
        if (m_handle != nullptr && m_handle != INVALID_HANDLE_VALUE) {
            CloseHandle(m_handle);
        }
    }
    [[nodiscard]] HANDLE Get() const noexcept { return m_handle; }

private:
    HANDLE m_handle;
};

std::wstring Wide(std::string const& utf8)
{
    TStringCore const text = TStringCore::fromStdString(utf8);
    return {static_cast<wchar_t const*>(text), static_cast<std::size_t>(text.size())};
}

// As the C run-time of the program takes it apart again: backslashes count only before a quotation mark.
std::string Quoted(std::string const& argument)
{
    if (!argument.empty() && argument.find_first_of(" \t\n\"") == std::string::npos) {
        return argument;
    }
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (char const c : argument) {
        if (c == '"') {
            quoted.append(backslashes + 1, '\\');
        }
        backslashes = c == '\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    return quoted.append(backslashes, '\\') + '"';
}

void SetLimits(HANDLE job, DWORD flags)
{
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = flags;
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
}

// A job that ends with the last handle to it, which is this process's.
Handle MakeJob()
{
    Handle job(CreateJobObjectW(nullptr, nullptr));
    SetLimits(job.Get(), JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE);
    return job;
}

struct Running
{
    Handle job;
    Handle process;
    DWORD pid = 0;
    std::optional<CommandEnd> end;

    void Look()
    {
        DWORD status = 0;
        if (!end && process.Get() != nullptr && WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0 &&
            GetExitCodeProcess(process.Get(), &status) != 0) {
            end = CommandEnd{static_cast<int>(status), 0};
        }
    }
};

Running Launch(std::string const& name, std::wstring line, STARTUPINFOW startup, DWORD flags)
{
    Running running{MakeJob(), Handle(), 0, {}};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION made{};
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, flags | CREATE_SUSPENDED, nullptr, nullptr,
                       &startup, &made) == 0) {
        DWORD const error = GetLastError();
        bool const isMissing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
        TStringCore const reason(
            std::system_category().default_error_condition(static_cast<int>(error)).message().c_str());
        throw MakeFailure(isMissing ? Failure::CommandNotFound : Failure::CannotRun,
                          qvxsys::Format(u"cannot run %1: %2", TStringCore::fromStdString(name), reason));
    }
    running.process = Handle(made.hProcess);
    running.pid = made.dwProcessId;
    Handle const thread(made.hThread);
    AssignProcessToJobObject(running.job.Get(), made.hProcess); // before it can start anything
    ResumeThread(made.hThread);
    return running;
}

// When it was started. Nothing when it has ended.
std::optional<unsigned long long> StartOf(DWORD pid)
{
    Handle const process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE, FALSE, pid));
    FILETIME started{}, ended{}, kernel{}, user{};
    if (process.Get() == nullptr || WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0 ||
        GetProcessTimes(process.Get(), &started, &ended, &kernel, &user) == 0) {
        return std::nullopt;
    }
    return (static_cast<unsigned long long>(started.dwHighDateTime) << 32) | started.dwLowDateTime;
}

std::vector<DWORD> ProcessesOf(HANDLE job)
{
    std::vector<std::byte> buffer(sizeof(JOBOBJECT_BASIC_PROCESS_ID_LIST) + 4096 * sizeof(ULONG_PTR));
    if (QueryInformationJobObject(job, JobObjectBasicProcessIdList, buffer.data(), static_cast<DWORD>(buffer.size()),
                                  nullptr) == 0) {
        return {};
    }
    auto const* const list = reinterpret_cast<JOBOBJECT_BASIC_PROCESS_ID_LIST const*>(buffer.data());
    std::vector<DWORD> pids;
    for (DWORD i = 0; i < list->NumberOfProcessIdsInList; ++i) {
        pids.push_back(static_cast<DWORD>(list->ProcessIdList[i]));
    }
    return pids;
}

DWORD g_group = 0; // to which Ctrl-C is handed on; written before there is a handler

BOOL WINAPI HandOn(DWORD event)
{
    if (event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT) {
        GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, g_group);
        return TRUE;
    }
    return FALSE; // the console is closed: this process ends, and the job with it
}

} // namespace

struct WatchedCommand::State
{
    Handle wake{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    Running command;
    Running helper;
};

WatchedCommand::WatchedCommand() : m_state(std::make_unique<State>())
{}

WatchedCommand::~WatchedCommand()
{
    SetConsoleCtrlHandler(HandOn, FALSE);
    if (m_state->command.end) { // what it has left behind goes on
        SetLimits(m_state->command.job.Get(), 0);
    }
}

void WatchedCommand::Start(std::vector<std::string> const& command)
{
    std::string line;
    for (std::string const& argument : command) {
        line.append(line.empty() ? "" : " ").append(Quoted(argument));
    }
    m_state->command = Launch(command.front(), Wide(line), {}, CREATE_NEW_PROCESS_GROUP);
    g_group = m_state->command.pid;
    SetConsoleCtrlHandler(HandOn, TRUE);
}

unsigned int WatchedCommand::ProcessId() const noexcept
{
    return m_state->command.pid;
}

void WatchedCommand::Wait(std::chrono::steady_clock::time_point until)
{
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
    std::array<HANDLE, 3> waiting{m_state->wake.Get()};
    DWORD count = 1;
    for (Running const* const running : {&m_state->command, &m_state->helper}) {
        if (running->process.Get() != nullptr && !running->end) {
            waiting[count++] = running->process.Get();
        }
    }
    WaitForMultipleObjects(count, waiting.data(), FALSE,
                           static_cast<DWORD>(std::clamp<long long>(left.count(), 0, 3'600'000)));
    m_state->command.Look();
    m_state->helper.Look();
}

void WatchedCommand::Wake() noexcept
{
    SetEvent(m_state->wake.Get());
}

std::optional<CommandEnd> WatchedCommand::End() const noexcept
{
    return m_state->command.end;
}

std::vector<ProcessKey> WatchedCommand::Processes()
{
    std::vector<DWORD> pids = ProcessesOf(m_state->command.job.Get());
    if (!m_state->command.end && std::ranges::find(pids, m_state->command.pid) == pids.end()) {
        pids.push_back(m_state->command.pid); // it may be that the system has no list of the job
    }
    std::vector<ProcessKey> processes;
    for (DWORD const pid : pids) {
        if (std::optional<unsigned long long> const start = StartOf(pid)) {
            processes.push_back({pid, *start});
        }
    }
    std::ranges::sort(processes);
    return processes;
}

void WatchedCommand::AskToEnd()
{
    GenerateConsoleCtrlEvent(CTRL_BREAK_EVENT, m_state->command.pid);
}

void WatchedCommand::Kill()
{
    TerminateJobObject(m_state->command.job.Get(), kKilled);
}

void WatchedCommand::StartHelper(std::string const& line,
                                 std::vector<std::pair<std::string, std::string>> const& environment)
{
    for (auto const& [name, value] : environment) { // of this process: it has no other use for them
        SetEnvironmentVariableW(Wide(name).c_str(), Wide(value).c_str());
    }
    STARTUPINFOW startup{};
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = GetStdHandle(STD_ERROR_HANDLE);
    startup.hStdError = startup.hStdOutput;
    m_state->helper = Launch("cmd.exe", L"cmd.exe /d /s /c \"" + Wide(line) + L"\"", startup, 0);
}

std::optional<CommandEnd> WatchedCommand::HelperEnd() const noexcept
{
    return m_state->helper.end;
}

void WatchedCommand::KillHelper()
{
    if (m_state->helper.process.Get() != nullptr && !m_state->helper.end) {
        TerminateJobObject(m_state->helper.job.Get(), kKilled);
    }
}

int ExitStatusLike(CommandEnd const& end) noexcept
{
    return end.status;
}

std::string CommandLineOf(unsigned int pid)
{
    Handle const process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, pid));
    std::array<wchar_t, 32768> name{};
    auto length = static_cast<DWORD>(name.size());
    bool const isKnown = process.Get() != nullptr && QueryFullProcessImageNameW(process.Get(), 0, name.data(), &length);
    return isKnown ? TStringCore(name.data()).toStdString() : std::string();
}

} // namespace qvx
