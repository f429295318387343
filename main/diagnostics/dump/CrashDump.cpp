#include <qvxsys/CrashDump.h>

#include <exception>

#include <qvxsys/CharacterUtils.h>
#include <qvxsys/TStringCore.h>

#include "CrashDumpPlatform.h"

namespace platform = qvxsys::dump::platform;

namespace {

bool HasZero(TStringView path) noexcept
{
    return std::u16string_view(path).find(u'\0') != std::u16string_view::npos;
}

/// False for text with lone surrogates: no file has such a name.
bool IsUnicode(TStringView path) noexcept
{
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (CharacterUtils::IsSurrogate(path[i])) {
            if (!CharacterUtils::IsHighSurrogate(path[i]) || i + 1 == path.size() ||
                !CharacterUtils::IsLowSurrogate(path[i + 1])) {
                return false;
            }
            ++i;
        }
    }
    return true;
}

} // namespace

bool qvxsys::dump::IsRefused(TStringView path, unsigned int type) noexcept
{
    bool const known = (type & ~static_cast<unsigned int>(qvxsys::minidump::MiniDumpValidTypeFlags)) == 0;
    if (known && !HasZero(path) && IsUnicode(path)) {
        return false;
    }
    platform::SetLastError(known && !HasZero(path) ? platform::Refusal::NoText : platform::Refusal::BadArgument);
    return true;
}

int WriteCrashDump(void* process, unsigned long processId, TStringView path, qvxsys::minidump::MINIDUMP_TYPE type)
{
    unsigned int const flags = static_cast<unsigned int>(type);
    if (qvxsys::dump::IsRefused(path, flags)) {
        return 0;
    }
    try {
        return platform::WriteDump(process, processId, path, flags) ? 1 : 0;
    } catch (std::exception const&) {
        platform::SetLastError(platform::Refusal::NoMemory);
        return 0;
    }
}

int WriteCrashDump(void* process, unsigned long processId, wchar_t const* path, qvxsys::minidump::MINIDUMP_TYPE type)
{
    try {
        return WriteCrashDump(process, processId, TStringView(TStringCore(path)), type);
    } catch (std::exception const&) {
        platform::SetLastError(platform::Refusal::NoMemory);
        return 0;
    }
}
