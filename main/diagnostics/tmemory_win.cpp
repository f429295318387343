#include "tmemory_platform.h"

#include <malloc.h>

// The one function needed here; declared by hand so that this layer does without <windows.h>.
extern "C" __declspec(dllimport) unsigned long __stdcall GetCurrentThreadId();

namespace quorvex::memory::platform {

std::size_t UsableSize(void* ptr) noexcept
{
    return ptr != nullptr ? _msize(ptr) : 0;
}

std::uint32_t ThreadId() noexcept
{
    return ::GetCurrentThreadId();
}

} // namespace quorvex::memory::platform
