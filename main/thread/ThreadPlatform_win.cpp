#include "ThreadPlatform.h"

#include "WindowsApi.h"

namespace qvxsys::task::platform {

void NameThisThread(char const* name) noexcept
{
    // In Windows since 10 version 1607: looked up, so that the library loads on older ones.
    using SetDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
    static auto const setDescription = reinterpret_cast<SetDescription>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
    wchar_t wide[64] = {};
    if (setDescription != nullptr && MultiByteToWideChar(CP_UTF8, 0, name, -1, wide, 64) != 0) {
        setDescription(GetCurrentThread(), wide);
    }
}

} // namespace qvxsys::task::platform
