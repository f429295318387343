#include "PressureSource.h"

namespace qvxsys::monitor {

std::unique_ptr<PressureSource> OpenPressureSource(MemoryPressure::Config const&, std::string& status)
{
    status = "memory pressure: not supported on this system";
    return nullptr;
}

} // namespace qvxsys::monitor
