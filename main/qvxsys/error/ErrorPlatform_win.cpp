#include "ErrorPlatform.h"

#include "WindowsApi.h"

namespace qvxsys::error::platform {

void DebugOutput(char const* text) noexcept
{
    ::OutputDebugStringA(text);
}

int CaptureTrace(void** frames, int capacity, int skip) noexcept
{
    return ::RtlCaptureStackBackTrace(static_cast<ULONG>(skip) + 1, static_cast<ULONG>(capacity), frames, nullptr);
}

} // namespace qvxsys::error::platform
