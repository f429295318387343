#include "CrashDumpPlatform.h"

#include <mutex>
#include <string>

#include "DebugHelp.h"
#include "WindowsApi.h"

#include <dbghelp.h>

namespace qvxsys::dump::platform {
namespace {

constexpr DWORD kRights = PROCESS_QUERY_INFORMATION | PROCESS_VM_READ | PROCESS_DUP_HANDLE;

/// The handle given, or one of its own where none is.
class ProcessHandle
{
public:
    ProcessHandle(void* given, DWORD id)
        : m_own(given == nullptr && id != ::GetCurrentProcessId()), m_handle(given != nullptr ? given
                                                                             : m_own ? ::OpenProcess(kRights, FALSE, id)
                                                                                     : ::GetCurrentProcess())
    {}
    ProcessHandle(ProcessHandle const&) = delete;
    ProcessHandle& operator=(ProcessHandle const&) = delete;
    ~ProcessHandle()
    {
        if (m_own && m_handle != nullptr) {
            ::CloseHandle(m_handle);
        }
    }

    HANDLE Get() const { return m_handle; }

private:
    bool m_own;
    HANDLE m_handle;
};

} // namespace

void SetLastError(Refusal refusal) noexcept
{
    ::SetLastError(refusal == Refusal::BadArgument ? ERROR_INVALID_PARAMETER
                   : refusal == Refusal::NoText    ? ERROR_NO_UNICODE_TRANSLATION
                                                   : ERROR_NOT_ENOUGH_MEMORY);
}

bool WriteDump(void* process, unsigned long processId, TStringView path, unsigned int type)
{
    std::wstring const name(path.begin(), path.end());
    ProcessHandle const dumped(process, processId);
    if (dumped.Get() == nullptr) {
        return false;
    }
    HANDLE const file = ::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    BOOL written;
    DWORD error;
    {
        std::lock_guard const lock(DebugHelpTurn());
        written = ::MiniDumpWriteDump(dumped.Get(), processId, file, static_cast<MINIDUMP_TYPE>(type), nullptr, nullptr,
                                      nullptr);
        error = ::GetLastError();
    }
    ::CloseHandle(file);
    if (written == FALSE) {
        ::DeleteFileW(name.c_str());
        ::SetLastError(error);
    }
    return written != FALSE;
}

} // namespace qvxsys::dump::platform
