#include "ModulePlatform.h"

#include "WindowsApi.h"

namespace qvxsys::path::platform {
namespace {

TPathCore FileOf(HMODULE module)
{
    wchar_t name[261];
    DWORD const length = ::GetModuleFileNameW(module, name, 261);
    return length != 0 ? TPathCore(name) : TPathCore();
}

} // namespace

TPathCore ModuleFile(void const* address)
{
    if (address == nullptr) {
        return FileOf(nullptr);
    }
    MEMORY_BASIC_INFORMATION region;
    bool const isKnown = ::VirtualQuery(address, &region, sizeof region) != 0 && region.State != MEM_FREE;
    // Where there is no region, the address is asked for, which is no module: null would be the program.
    void* const base = isKnown ? region.AllocationBase : const_cast<void*>(address);
    return FileOf(static_cast<HMODULE>(base));
}

TPathCore LoadedModule(TPathCore const& filename)
{
    HMODULE module = nullptr;
    TStringCore const name = filename.NativeString();
    bool const found = ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                            static_cast<wchar_t const*>(name), &module) != 0;
    return found ? FileOf(module) : TPathCore();
}

} // namespace qvxsys::path::platform
