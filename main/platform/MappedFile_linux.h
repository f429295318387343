#pragma once
// The kernel's names of files that are gone or were loaded by other names.

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

#include <unistd.h>

namespace qvxsys::platform {

/// Of a file that is gone the kernel writes " (deleted)" behind the name it had. A file may also be called so.
inline void DropDeleted(std::string& name, bool isThere)
{
    constexpr std::string_view kDeleted = " (deleted)";
    if (!isThere && name.ends_with(kDeleted)) {
        name.resize(name.size() - kDeleted.size());
    }
}

/// The name of the file that is mapped at the address, which is never relative; empty without one.
inline std::string MappedFile(std::uintptr_t address)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        // "START-END PERMISSIONS OFFSET DEVICE INODE    NAME"
        char* rest = nullptr;
        std::uintptr_t const start = std::strtoul(line.c_str(), &rest, 16);
        std::uintptr_t const end = *rest == '-' ? std::strtoul(rest + 1, nullptr, 16) : 0;
        std::size_t const at = line.find('/');
        if (address >= start && address < end && at != std::string::npos) {
            std::string name = line.substr(at);
            DropDeleted(name, ::access(name.c_str(), F_OK) == 0);
            return name;
        }
    }
    return {};
}

} // namespace qvxsys::platform
