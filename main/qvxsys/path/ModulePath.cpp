// What TSystem knows of the files of program and modules.

#include <qvxsys/TPathCore.h>
#include <qvxsys/TSystem.h>

#include "ModulePlatform.h"

namespace platform = qvxsys::path::platform;

namespace {

TPathCore FolderOf(TPathCore const& file)
{
    return file.HasParentPath() ? file.Parent() : file;
}

} // namespace

TPathCore TSystem::ModuleFilename(void const* address)
{
    return platform::ModuleFile(address);
}

TPathCore TSystem::ExecutableFilename()
{
    return ModuleFilename(nullptr);
}

TPathCore TSystem::ExecutablePath()
{
    return FolderOf(ExecutableFilename());
}

TPathCore TSystem::ModuleDirectory(void const* address)
{
    return FolderOf(ModuleFilename(address));
}

TPathCore TSystem::ModulePath(TPathCore const& module)
{
    TPathCore const name = module.Filename();
    return name.empty() ? TPathCore() : platform::LoadedModule(name);
}
