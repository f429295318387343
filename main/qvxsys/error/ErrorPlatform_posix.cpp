#include "ErrorPlatform.h"

#include <cerrno>
#include <cstring>

#include <sys/uio.h>
#include <unistd.h>
#include <unwind.h>

namespace qvxsys::error::platform {
namespace {

struct Walk
{
    void** frames;
    int capacity;
    int skip;
    int count;
};

_Unwind_Reason_Code AddFrame(_Unwind_Context* context, void* walk)
{
    Walk& w = *static_cast<Walk*>(walk);
    auto const address = _Unwind_GetIP(context);
    if (address == 0 || w.count == w.capacity) {
        return _URC_END_OF_STACK;
    }
    if (w.skip > 0) {
        --w.skip;
    } else {
        w.frames[w.count++] = reinterpret_cast<void*>(address);
    }
    return _URC_NO_REASON;
}

} // namespace

void DebugOutput(char const* text) noexcept
{
    int const before = errno;
    char feed[] = "\n";
    // One call, so that lines of several threads stay whole.
    iovec const parts[] = {{const_cast<char*>(text), std::strlen(text)}, {feed, 1}};
    [[maybe_unused]] auto const written = ::writev(STDERR_FILENO, parts, 2);
    errno = before;
}

int CaptureTrace(void** frames, int capacity, int skip) noexcept
{
    Walk walk{frames, capacity, skip + 1, 0};
    _Unwind_Backtrace(AddFrame, &walk);
    return walk.count;
}

} // namespace qvxsys::error::platform
