#pragma once
// The name that the dynamic linker knows a module by, as dl_iterate_phdr() tells it.

#include <cstddef>
#include <string_view>

#include <link.h>

namespace qvxsys::platform {

/// ThreadSanitizer does not see the linker's lock. It forgives reads of the name, but not of the 0 behind it, if
/// another thread has just loaded the module: so nothing here is what it watches, and strlen, which it does, is not
/// called.
inline __attribute__((noinline, no_sanitize("thread"))) std::string_view LinkedName(dl_phdr_info const& info) noexcept
{
    char const volatile* const name = info.dlpi_name;
    std::size_t length = 0;
    while (name != nullptr && name[length] != 0) {
        ++length;
    }
    return {info.dlpi_name, length};
}

} // namespace qvxsys::platform
