#include <atomic>
#include <csignal>
#include <ctime>
#include <string>

#include "CrashDumpPlatform.h"
#include "WindowsApi.h"

#include <dbghelp.h>

namespace qvxsys::dump::platform {
namespace {

constexpr ULONG kStackReserve = 64 << 10; // left for the filter when a stack has run over
constexpr DWORD kAbort = 0x40000015;      // STATUS_FATAL_APP_EXIT
constexpr DWORD kAlreadyInstalled = ERROR_ALREADY_EXISTS;

/// All that a crash needs, there before it. Never given back: a thread may be in the filter at any time.
struct Handler
{
    std::wstring pattern;
    MINIDUMP_TYPE type;
    HANDLE wake;    // tells the writing thread
    HANDLE written; // and is told by it
    LPTOP_LEVEL_EXCEPTION_FILTER before;
    void (*abortBefore)(int);
    EXCEPTION_POINTERS* exception;
    DWORD thread;
    std::atomic<bool> crashed{false};
};

Handler* g_handler = nullptr;
bool g_installed = false;

std::wstring ExpandPath(std::wstring const& pattern)
{
    std::wstring path;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        wchar_t const next = pattern[i] == L'%' && i + 1 < pattern.size() ? pattern[i + 1] : L'\0';
        if (next == L'p') {
            path += std::to_wstring(::GetCurrentProcessId());
        } else if (next == L't') {
            path += std::to_wstring(std::time(nullptr));
        } else {
            path += pattern[i];
        }
        i += next == L'p' || next == L't' || next == L'%' ? 1 : 0;
    }
    return path;
}

void Write(Handler& handler)
{
    std::wstring const path = ExpandPath(handler.pattern);
    HANDLE const file = ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return;
    }
    // Without DebugHelpTurn(): whoever has it may be the thread that crashed.
    MINIDUMP_EXCEPTION_INFORMATION exception{handler.thread, handler.exception, FALSE};
    BOOL const written = ::MiniDumpWriteDump(::GetCurrentProcess(), ::GetCurrentProcessId(), file, handler.type,
                                             &exception, nullptr, nullptr);
    ::CloseHandle(file);
    if (written == FALSE) {
        ::DeleteFileW(path.c_str());
    }
}

/// The thread that writes: its stack is whole and its own, whatever became of the one that crashed.
DWORD WINAPI RunWriter(void* argument)
{
    Handler& handler = *static_cast<Handler*>(argument);
    ::WaitForSingleObject(handler.wake, INFINITE);
    Write(handler);
    ::SetEvent(handler.written);
    return 0;
}

void WriteOnce(EXCEPTION_POINTERS* exception)
{
    Handler& handler = *g_handler;
    if (!handler.crashed.exchange(true)) {
        handler.exception = exception;
        handler.thread = ::GetCurrentThreadId();
        ::SetEvent(handler.wake);
    }
    ::WaitForSingleObject(handler.written, INFINITE);
}

LONG WINAPI OnException(EXCEPTION_POINTERS* exception)
{
    WriteOnce(exception);
    return g_handler->before != nullptr ? g_handler->before(exception) : EXCEPTION_CONTINUE_SEARCH;
}

void OnAbort(int)
{
    CONTEXT context{};
    EXCEPTION_RECORD record{};
    ::RtlCaptureContext(&context);
    record.ExceptionCode = kAbort;
    record.ExceptionAddress = reinterpret_cast<void*>(context.Rip);
    EXCEPTION_POINTERS exception{&record, &context};
    WriteOnce(&exception);
    // abort() ends the process when its handler returns, unless there is another to ask.
    void (*const before)(int) = g_handler->abortBefore;
    std::signal(SIGABRT, before);
    if (before != SIG_DFL && before != SIG_IGN && before != SIG_ERR) {
        before(SIGABRT);
    }
}

} // namespace

bool PrepareThread() noexcept
{
    ULONG reserve = kStackReserve;
    return ::SetThreadStackGuarantee(&reserve) != FALSE;
}

bool InstallHandler(TStringView path, unsigned int type, bool)
{
    if (g_installed) {
        ::SetLastError(kAlreadyInstalled);
        return false;
    }
    Handler* const handler = new Handler{};
    wchar_t whole[MAX_PATH * 4];
    std::wstring const given(path.begin(), path.end());
    DWORD const length = ::GetFullPathNameW(given.c_str(), static_cast<DWORD>(std::size(whole)), whole, nullptr);
    handler->pattern = length != 0 && length < std::size(whole) ? std::wstring(whole, length) : given;
    handler->type = static_cast<MINIDUMP_TYPE>(type);
    handler->wake = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    handler->written = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    HANDLE const thread = ::CreateThread(nullptr, 0, RunWriter, handler, 0, nullptr);
    if (handler->wake == nullptr || handler->written == nullptr || thread == nullptr || !PrepareThread()) {
        return false;
    }
    ::CloseHandle(thread);
    g_handler = handler;
    g_installed = true;
    handler->before = ::SetUnhandledExceptionFilter(OnException);
    handler->abortBefore = std::signal(SIGABRT, OnAbort);
    return true;
}

void RemoveHandler() noexcept
{
    if (!g_installed) {
        return;
    }
    g_installed = false;
    if (LPTOP_LEVEL_EXCEPTION_FILTER const current = ::SetUnhandledExceptionFilter(g_handler->before);
        current != OnException) {
        ::SetUnhandledExceptionFilter(current);
    }
    if (void (*const current)(int) = std::signal(SIGABRT, g_handler->abortBefore); current != OnAbort) {
        std::signal(SIGABRT, current);
    }
}

} // namespace qvxsys::dump::platform
