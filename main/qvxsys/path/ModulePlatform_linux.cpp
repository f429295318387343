#include "ModulePlatform.h"

#include <cstdint>
#include <new>
#include <string>
#include <string_view>

#include <link.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <qvxsys/FileSystemPath.h>

#include "LinkedName_linux.h"
#include "MappedFile_linux.h"

namespace qvxsys::path::platform {
namespace {

constexpr char kSelf[] = "/proc/self/exe";

bool SameFile(char const* a, char const* b) noexcept
{
    struct stat left, right;
    return ::stat(a, &left) == 0 && ::stat(b, &right) == 0 && left.st_dev == right.st_dev &&
           left.st_ino == right.st_ino;
}

std::string Executable()
{
    std::string name(256, '\0');
    for (;;) {
        ssize_t const length = ::readlink(kSelf, name.data(), name.size());
        if (length < 0) {
            // Without /proc: what the kernel was asked to run, if that is a full name.
            auto const* const asked = reinterpret_cast<char const*>(::getauxval(AT_EXECFN));
            return asked != nullptr && asked[0] == '/' ? asked : "";
        }
        if (static_cast<std::size_t>(length) < name.size()) {
            name.resize(static_cast<std::size_t>(length));
            break;
        }
        name.resize(2 * name.size());
    }
    qvxsys::platform::DropDeleted(name, SameFile(name.c_str(), kSelf));
    return name;
}

// A loaded module that contains an address, or whose file has a name; and the search for it.
struct Module
{
    std::uintptr_t wantedAddress;
    std::string_view wantedName;
    std::string executable = Executable(); // the loader has no name for the program
    bool isFound = false;
    bool outOfMemory = false;
    std::uintptr_t address = 0; // one of the module's
    std::string name = {};      // as it was loaded by
};

std::uintptr_t LoadAddress(dl_phdr_info const& module, std::uintptr_t wanted) noexcept
{
    for (int i = 0; i < module.dlpi_phnum; ++i) {
        ElfW(Phdr) const& part = module.dlpi_phdr[i];
        std::uintptr_t const start = module.dlpi_addr + part.p_vaddr;
        if (part.p_type == PT_LOAD && (wanted == 0 || wanted - start < part.p_memsz)) {
            return start;
        }
    }
    return 0;
}

// Called under the loader's lock, through which nothing may be thrown.
int Look(dl_phdr_info* info, std::size_t, void* data) noexcept
{
    Module& module = *static_cast<Module*>(data);
    std::string_view name = qvxsys::platform::LinkedName(*info);
    if (name.empty()) {
        name = module.executable;
    }
    bool const isNamed = module.wantedName.empty() || name.substr(name.rfind('/') + 1) == module.wantedName;
    module.address = isNamed ? LoadAddress(*info, module.wantedAddress) : 0;
    module.isFound = module.address != 0;
    if (module.isFound) {
        try {
            module.name = name;
        } catch (std::bad_alloc const&) {
            module.outOfMemory = true;
        }
    }
    return module.isFound ? 1 : 0;
}

TPathCore FileOf(Module&& module)
{
    ::dl_iterate_phdr(Look, &module);
    if (module.outOfMemory) {
        throw std::bad_alloc();
    }
    // A module that was loaded by a relative name may have lost the folder that was relative to; the vDSO has no file.
    bool const isFull = !module.isFound || module.name.starts_with('/');
    return FromNative(isFull ? module.name : qvxsys::platform::MappedFile(module.address));
}

} // namespace

TPathCore ModuleFile(void const* address)
{
    return address == nullptr ? FromNative(Executable()) : FileOf({reinterpret_cast<std::uintptr_t>(address), {}});
}

TPathCore LoadedModule(TPathCore const& filename)
{
    std::string const name = ToNative(filename);
    return FileOf({0, name});
}

} // namespace qvxsys::path::platform
