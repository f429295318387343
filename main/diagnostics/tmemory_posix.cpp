#include "tmemory_platform.h"

#include <malloc.h>
#include <unistd.h>

namespace quorvex::memory::platform {

std::size_t UsableSize(void* ptr) noexcept
{
    return malloc_usable_size(ptr);
}

std::uint32_t ThreadId() noexcept
{
    return static_cast<std::uint32_t>(gettid());
}

} // namespace quorvex::memory::platform
