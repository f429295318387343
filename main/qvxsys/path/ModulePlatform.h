#pragma once
// Platform primitives under the module paths of TSystem.

#include <qvxsys/TPathCore.h>

namespace qvxsys::path::platform {

/// The file of the module that contains the address, for null that of the program; empty when there is none.
[[nodiscard]] TPathCore ModuleFile(void const* address);

/// The file of a loaded module that has this file name; empty when none has.
[[nodiscard]] TPathCore LoadedModule(TPathCore const& filename);

} // namespace qvxsys::path::platform
