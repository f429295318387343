#pragma once
// Platform primitives under TMemory.h.

#include <cstddef>
#include <cstdint>

namespace quorvex::memory::platform {

/// The usable size of a heap block of the runtime's allocator; 0 for null.
std::size_t UsableSize(void* ptr) noexcept;

/// The calling thread's id as the operating system numbers threads.
std::uint32_t ThreadId() noexcept;

} // namespace quorvex::memory::platform
