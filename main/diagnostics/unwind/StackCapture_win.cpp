#include "StackCapture.h"

#include "WindowsApi.h"

namespace qvxsys::unwind {

[[gnu::noinline]] int CaptureStack(void** frames, int capacity, int skip) noexcept
{
    if (capacity <= 0) {
        return 0;
    }
    constexpr int kMost = 0xFFFF; // the result has 16 bits
    return ::RtlCaptureStackBackTrace(static_cast<ULONG>(skip) + 1,
                                      static_cast<ULONG>(capacity < kMost ? capacity : kMost), frames, nullptr);
}

} // namespace qvxsys::unwind
