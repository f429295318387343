#include <qvxsys/Version.h>

namespace qvxsys {

Version LoadedVersion() noexcept
{
    return kVersion;
}

char const* LoadedVersionText() noexcept
{
    return QVXSYS_VERSION_STRING;
}

} // namespace qvxsys
