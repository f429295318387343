#include "ErrorPlatform.h"

#include "WindowsApi.h"

namespace qvxsys::error::platform {

void DebugOutput(char const* text) noexcept
{
    ::OutputDebugStringA(text);
}

} // namespace qvxsys::error::platform
