#include "support/ChildProcess.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "WindowsApi.h"

#include <psapi.h>

namespace {

constexpr DWORD kMostMilliseconds = 60'000;
constexpr DWORD kInterval = 5;

class Handle
{
public:
    explicit Handle(HANDLE handle = nullptr) : m_handle(handle) {}
    ~Handle() { Close(); }
    Handle(Handle const&) = delete;
    Handle& operator=(Handle const&) = delete;

    operator HANDLE() const { return m_handle; }
    HANDLE* operator&() { return &m_handle; }
    void Close()
    {
        if (m_handle != nullptr && m_handle != INVALID_HANDLE_VALUE) {
            CloseHandle(m_handle);
        }
        m_handle = nullptr;
    }

private:
    HANDLE m_handle;
};

std::wstring Wide(std::string const& utf8)
{
    int const bytes = static_cast<int>(utf8.size());
    std::wstring wide(utf8.size(), L'\0');
    wide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, wide.data(), static_cast<int>(wide.size()))));
    return wide;
}

// Quoted so that the C run-time of the program takes it apart again: backslashes count only before a quotation mark.
// What needs no quotation marks gets none, as a user writes it: patterns are expanded only then.
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

std::string ReadAll(HANDLE pipe)
{
    std::string text;
    char buffer[4096];
    for (DWORD n = 0; ReadFile(pipe, buffer, sizeof buffer, &n, nullptr) != 0 && n != 0;) {
        text.append(buffer, n);
    }
    for (std::size_t at = 0; (at = text.find("\r\n", at)) != std::string::npos;) {
        text.erase(at, 1);
    }
    return text;
}

long PeakKiB(HANDLE process)
{
    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(process, &memory, sizeof memory);
    return static_cast<long>(memory.PeakWorkingSetSize / 1024);
}

HANDLE OpenFile(wchar_t const* name, DWORD access)
{
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    return CreateFileW(name, access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING, 0, nullptr);
}

void MakePipe(Handle& read, Handle& write)
{
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    if (CreatePipe(&read, &write, &inherited, 0) == 0 || SetHandleInformation(read, HANDLE_FLAG_INHERIT, 0) == 0) {
        throw std::runtime_error("no pipe");
    }
}

} // namespace

ChildResult RunChild(std::vector<std::string> const& command, ChildOptions const& options)
{
    Handle out, outEnd, err, errEnd;
    MakePipe(out, outEnd);
    MakePipe(err, errEnd);
    Handle in(OpenFile(L"NUL", GENERIC_READ));
    Handle file(options.outTo != nullptr ? OpenFile(Wide(options.outTo).c_str(), GENERIC_WRITE) : nullptr);
    std::string line;
    for (std::string const& argument : command) {
        line += (line.empty() ? "" : " ") + Quoted(argument);
    }
    std::wstring writable = Wide(line);
    std::wstring const folder = Wide(options.folder);

    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in;
    startup.hStdOutput = options.outTo != nullptr ? file : outEnd;
    startup.hStdError = errEnd;
    PROCESS_INFORMATION process{};
    ChildResult result;
    if (CreateProcessW(nullptr, writable.data(), nullptr, nullptr, TRUE, 0, nullptr,
                       folder.empty() ? nullptr : folder.c_str(), &startup, &process) == 0) {
        result.status = 127;
        return result;
    }
    Handle const child(process.hProcess);
    Handle const thread(process.hThread);
    outEnd.Close();
    errEnd.Close();
    std::thread reader([&] { result.err = ReadAll(err); });
    std::thread other([&] { result.out = ReadAll(out); });
    // The peak is looked at while the program runs: not every system tells it afterwards.
    for (DWORD waited = 0; WaitForSingleObject(child, kInterval) == WAIT_TIMEOUT; waited += kInterval) {
        result.peakKiB = std::max(result.peakKiB, PeakKiB(child));
        if (waited >= kMostMilliseconds) {
            TerminateProcess(child, 124);
        }
    }
    result.peakKiB = std::max(result.peakKiB, PeakKiB(child));
    reader.join();
    other.join();
    DWORD status = 0;
    GetExitCodeProcess(child, &status);
    result.status = static_cast<int>(status);
    return result;
}

long LeastPeakKiB()
{
    return 0;
}
