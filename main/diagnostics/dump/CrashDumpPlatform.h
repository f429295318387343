#pragma once
// Platform primitives under CrashDump.h and CrashHandler.h.

#include <qvxsys/TStringView.h>

namespace qvxsys::dump::platform {

/// Why a dump is refused before anything is done.
enum class Refusal { BadArgument, NoText, NoMemory };
/// Makes it the calling thread's last error.
void SetLastError(Refusal refusal) noexcept;

/// Writes the dump of a type that is valid to a path that is Unicode text without a 0. False: not written, the last
/// error tells why. Throws std::bad_alloc.
bool WriteDump(void* process, unsigned long processId, TStringView path, unsigned int type);

/// As quorvex::crash has them, for such a path and type.
bool InstallHandler(TStringView path, unsigned int type, bool announce);
void RemoveHandler() noexcept;
bool PrepareThread() noexcept;

} // namespace qvxsys::dump::platform

namespace qvxsys::dump {

/// True, with the last error, for a path that no file can have and for types with unknown flags.
bool IsRefused(TStringView path, unsigned int type) noexcept;

} // namespace qvxsys::dump
