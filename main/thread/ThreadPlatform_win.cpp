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

// Not by a thread_local object: MinGW frees those before it calls their destructors.
void ReleaseAtThreadEnd(void* object, void (*release)(void* object)) noexcept
{
    static void (*const s_release)(void*) = release;
    static DWORD const s_slot = FlsAlloc([](void* held) {
        if (held != nullptr) {
            s_release(held);
        }
    });
    if (s_slot != FLS_OUT_OF_INDEXES) {
        FlsSetValue(s_slot, object);
    }
}

} // namespace qvxsys::task::platform
