#pragma once
// A process written to a file, to be looked at later, elsewhere, with a debugger: a minidump, on Linux as on Windows.
//
//     if (WriteCrashDump(nullptr, TSystem::ProcessID(), u"hung.dmp", MiniDumpNormal) == 0) {
//         std::cerr << GetLastErrorString() << '\n';
//     }
//
//     $ lldb -c hung.dmp -o "bt all"
//
// What is in a dump is told by its type; docs/crash-dumps.md has the table for Linux. Whatever the type, a dump holds
// parts of the process's memory, and on Linux its environment: treat it as you treat the data the process works on.
// For a dump of a process that crashes, see <qvxsys/CrashHandler.h>.

#include <type_traits>

#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace qvxsys::minidump {

/// What a dump is to hold, with the names and values of Microsoft's dbghelp.h. On Linux these names are global, too. On
/// Windows the global ones are those of <dbghelp.h>, if a program includes it, before or after; either kind is
/// accepted.
enum MINIDUMP_TYPE : int {
    MiniDumpNormal = 0x00000000,
    MiniDumpWithDataSegs = 0x00000001,
    MiniDumpWithFullMemory = 0x00000002,
    MiniDumpWithHandleData = 0x00000004,
    MiniDumpFilterMemory = 0x00000008,
    MiniDumpScanMemory = 0x00000010,
    MiniDumpWithUnloadedModules = 0x00000020,
    MiniDumpWithIndirectlyReferencedMemory = 0x00000040,
    MiniDumpFilterModulePaths = 0x00000080,
    MiniDumpWithProcessThreadData = 0x00000100,
    MiniDumpWithPrivateReadWriteMemory = 0x00000200,
    MiniDumpWithoutOptionalData = 0x00000400,
    MiniDumpWithFullMemoryInfo = 0x00000800,
    MiniDumpWithThreadInfo = 0x00001000,
    MiniDumpWithCodeSegs = 0x00002000,
    MiniDumpWithoutAuxiliaryState = 0x00004000,
    MiniDumpWithFullAuxiliaryState = 0x00008000,
    MiniDumpWithPrivateWriteCopyMemory = 0x00010000,
    MiniDumpIgnoreInaccessibleMemory = 0x00020000,
    MiniDumpWithTokenInformation = 0x00040000,
    MiniDumpWithModuleHeaders = 0x00080000,
    MiniDumpFilterTriage = 0x00100000,
    MiniDumpWithAvxXStateContext = 0x00200000,
    MiniDumpWithIptTrace = 0x00400000,
    MiniDumpScanInaccessiblePartialPages = 0x00800000,
    MiniDumpFilterWriteCombinedMemory = 0x01000000,
    MiniDumpValidTypeFlags = 0x01ffffff,
};

constexpr MINIDUMP_TYPE operator|(MINIDUMP_TYPE a, MINIDUMP_TYPE b) noexcept
{
    return static_cast<MINIDUMP_TYPE>(static_cast<int>(a) | static_cast<int>(b));
}

} // namespace qvxsys::minidump

QVXSYS_WITHOUT_DBGHELP(using namespace qvxsys::minidump;)

/// Writes a dump of the process to the file `path`. 1 if it was written, 0 if not; GetLastErrorString() then tells why.
///
/// On Windows `process` is a handle with the rights that dbghelp's MiniDumpWriteDump asks for; null stands for the
/// process with that id. On Linux processes have no handles: `process` is not looked at.
///
/// The process's threads stand still while their registers and stacks are read; unless the type asks for memory beyond
/// that (see docs/crash-dumps.md), they go on before the file is written. A process may dump itself: the calling thread
/// then appears where it called this function. Blocking system calls of the process that are not restarted after a stop
/// (epoll_wait and its like, see signal(7)) return EINTR.
///
/// The file is created, or replaced once the dump is complete. On Linux it can be read by its owner only; a dump that
/// fails leaves nothing, and an existing file as it was; what is no regular file (a pipe, a device) is written to.
///
/// Reasons to fail on Linux, as errno values: what opening, writing and renaming a file reports (ENOENT, EACCES,
/// ENOSPC, EFBIG...); EILSEQ, the path is no Unicode text; EINVAL, the path has a 0 in it or the type unknown flags;
/// ESRCH, no such process, or it ended meanwhile; EPERM, the kernel does not let the caller look into the process
/// (another user's, one that a debugger is attached to, ptrace forbidden by seccomp or Yama); ENOTSUP, a 32-bit
/// program, or a kernel without /proc/PID/pagemap where the type asks for memory; EAGAIN or ENOMEM, no helper process
/// or thread could be started; ETIMEDOUT, no thread of the process would stop; ECANCELED, the helper process was ended,
/// or ended itself because it could get no further (a program that was just being replaced by exec).
///
/// May be called from any thread; dumps of the own process are written one after the other. Never throws. Neither the
/// helper nor the dumped process shows in the caller's SIGCHLD or wait(), but where Yama lets processes trace their
/// descendants only: there both may tell of stops of a child that is being dumped.
QVXSYS_API int WriteCrashDump(void* process, unsigned long processId, wchar_t const* path,
                              qvxsys::minidump::MINIDUMP_TYPE type);
QVXSYS_API int WriteCrashDump(void* process, unsigned long processId, TStringView path,
                              qvxsys::minidump::MINIDUMP_TYPE type);

namespace qvxsys::detail {

/// What converts to the arguments of a function above, but not by itself or not to one alone.
template<class Path, class Type>
concept OtherDumpArguments = (std::is_same_v<Type, int> ||
                              (std::is_enum_v<Type> && std::is_convertible_v<Type, int>)) &&
                             (std::is_same_v<Path, TStringCore> || !std::is_same_v<Type, minidump::MINIDUMP_TYPE>);

} // namespace qvxsys::detail

/// The same for a string, and for a type as <dbghelp.h> declares it or as a number, which is what flags become when
/// they are combined.
template<class Path, class Type>
requires qvxsys::detail::OtherDumpArguments<Path, Type>
int WriteCrashDump(void* process, unsigned long processId, Path const& path, Type type)
{
    auto const flags = static_cast<qvxsys::minidump::MINIDUMP_TYPE>(type);
    if constexpr (std::is_same_v<Path, TStringCore>) {
        return WriteCrashDump(process, processId, path.view(), flags);
    } else {
        return WriteCrashDump(process, processId, path, flags);
    }
}
