#include "tmemory_platform.h"

#include <malloc.h>

#include "WindowsApi.h"

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
