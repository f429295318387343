#pragma once
// The modules that stacks were seen to go through, each recorded once and never forgotten, so that a trace can be told
// long after a module was unloaded.

#include <cstdint>

#include <qvxsys/StackTrace.h>

namespace qvxsys::unwind {

/// One module at one place in memory. What is known of it never changes.
struct ModuleRecord : quorvex::StackModule
{
    [[nodiscard]] bool Has(std::uintptr_t address) const noexcept { return address - begin < end - begin; }

    /// Where the build-id lies in memory, if that can be read without asking for as long as anything is loaded there.
    unsigned char const* buildIdInMemory = nullptr;
    /// It stays for as long as the library's own code does: the program, the library and what that is built on.
    bool isPermanent = false;
};

/// Numbers of records are below this. 0 stands for no module.
constexpr unsigned kMaxModules = 1024;

/// The number of the module that has the address, and recorded now if it has not been; 0 if no module has it, and when
/// there is no room left. Neither allocates nor locks; may be called in signal handlers.
[[nodiscard]] std::uint16_t ModuleAt(std::uintptr_t address) noexcept;

/// Whether the module that is at this address now is the one of that number. No other can then have been there since it
/// was recorded that would matter: same place, same build. False for modules that cannot be told apart.
[[nodiscard]] bool IsStill(std::uint16_t number, std::uintptr_t address) noexcept;

extern ModuleRecord g_modules[kMaxModules];

/// Number 0 is an empty one.
[[nodiscard]] inline ModuleRecord const& Module(std::uint16_t number) noexcept
{
    return g_modules[number];
}

namespace platform {

/// The range of the module that has the address; false if none has. Cheap.
bool FindRange(std::uintptr_t address, std::uintptr_t& begin, std::uintptr_t& end) noexcept;

/// Fills in everything about the module whose range is given, by an address in it.
void Describe(std::uintptr_t address, ModuleRecord& record) noexcept;

/// Whether the record tells of what is in its range now: by its build-id, or of a module without one by its name.
bool IsSame(ModuleRecord const& record) noexcept;

} // namespace platform
} // namespace qvxsys::unwind
