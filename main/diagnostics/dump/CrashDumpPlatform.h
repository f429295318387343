#pragma once
// Platform primitives under CrashDump.h.

#include <qvxsys/TStringView.h>

namespace qvxsys::dump::platform {

/// Why a dump is refused before anything is done.
enum class Refusal { BadArgument, NoText, NoMemory };
/// Makes it the calling thread's last error.
void SetLastError(Refusal refusal) noexcept;

/// Writes the dump of a type that is valid to a path that is Unicode text without a 0. False: not written, the last
/// error tells why. Throws std::bad_alloc.
bool WriteDump(void* process, unsigned long processId, TStringView path, unsigned int type);

} // namespace qvxsys::dump::platform
