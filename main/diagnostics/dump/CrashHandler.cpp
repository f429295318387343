#include <qvxsys/CrashHandler.h>

#include <exception>

#include "CrashDumpPlatform.h"

namespace platform = qvxsys::dump::platform;

namespace quorvex::crash {

bool InstallHandler(TStringView path, HandlerOptions const& options)
{
    unsigned int const type = static_cast<unsigned int>(options.type);
    if (qvxsys::dump::IsRefused(path, type)) {
        return false;
    }
    try {
        return platform::InstallHandler(path, type, options.announce);
    } catch (std::exception const&) {
        platform::SetLastError(platform::Refusal::NoMemory);
        return false;
    }
}

void RemoveHandler() noexcept
{
    platform::RemoveHandler();
}

bool PrepareThread() noexcept
{
    return platform::PrepareThread();
}

} // namespace quorvex::crash
