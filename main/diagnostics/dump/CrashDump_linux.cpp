#include <cerrno>
#include <climits>
#include <string>
#include <system_error>
#include <thread>

#include <ucontext.h>

#include <qvxsys/StringUtils.h>

#include "CrashDumpPlatform.h"
#include "DumpProcess_linux.h"

namespace qvxsys::dump::platform {
namespace {

/// On a thread of its own, which the kernel frees the traced from when it ends, and whose signals are blocked, so that
/// a pipe without a reader or a file beyond the limit is an error and not a signal.
DumpResult DumpByThread(DumpRequest const& request)
{
    DumpResult result{};
    std::uint64_t const signals = kernel::BlockSignals();
    try {
        std::thread([&] { result = DumpProcess(request); }).join();
    } catch (std::system_error const&) {
        result.error = EAGAIN;
    }
    kernel::RestoreSignals(signals);
    return result;
}

DumpResult DumpOwn(DumpRequest& request)
{
    request.thread = kernel::CurrentThread();
    ::getcontext(&request.context);
    return DumpByHelper(request, UINT64_MAX);
}

DumpResult DumpOther(DumpRequest& request)
{
    DumpResult const result = DumpByHelper(request, 0);
    if (result.error != EPERM) {
        return result;
    }
    // Where Yama lets processes trace their descendants only, the program may what its helper may not.
    request.helper = false;
    return DumpByThread(request);
}

} // namespace

void SetLastError(Refusal refusal) noexcept
{
    errno = refusal == Refusal::BadArgument ? EINVAL : refusal == Refusal::NoText ? EILSEQ : ENOMEM;
}

bool WriteDump(void*, unsigned long processId, TStringView path, unsigned int type)
{
    std::string const name = StringUtils::toStdString(path);
    DumpRequest request{};
    request.process = processId > INT_MAX ? 0 : static_cast<int>(processId);
    request.type = type;
    request.path = name.c_str();
    request.helper = true;
    bool const own = request.process == kernel::CurrentProcess();
    DumpResult const result = own ? DumpOwn(request) : DumpOther(request);
    if (result.error != 0) {
        errno = result.error;
    }
    return result.error == 0;
}

} // namespace qvxsys::dump::platform
