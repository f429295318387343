#pragma once
// A dump (<qvxsys/CrashDump.h>) of a process that crashes, written by the process itself in its last moments. Off until
// a program installs it.
//
//     int main()
//     {
//         if (!quorvex::crash::InstallHandler(u"/var/crash/server-%p.dmp")) {
//             std::cerr << "no crash dumps: " << GetLastErrorString() << '\n';
//         }
//         ...
//     }
//
//     $ lldb -c /var/crash/server-4711.dmp -o "bt all"
//
// Linux: handles SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS and SIGABRT, thus also std::terminate, failed
// assert()s and what the C library finds wrong with the heap. The first of them writes one dump, whose exception record
// has signal, si_code, address and registers; other threads that crash meanwhile wait for it. Then the signal is given
// to whoever handled it before: without other handlers the process dies as it would have, with the same status, si_code
// and core dump. If it lives on, because such a handler has mended what was wrong, no second dump is written. The
// handler allocates nothing and takes no locks, so a crash within malloc is dumped, too. Signal dispositions belong to
// the process: a handler that is installed later takes this one's place and should chain to it.
//
// Windows: installs a filter for unhandled exceptions and a handler of SIGABRT; the dump is written by a thread that
// stands ready. The filter that was there before is called next. Not covered: fast failures (__fastfail, such as those
// after damage to the heap or a stack cookie), which end the process without asking anybody.
//
// Not covered anywhere: SIGKILL and its like, memory that runs out so that the kernel ends the process, and stack
// overflow on threads that did not call PrepareThread().

#include <qvxsys/CrashDump.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringView.h>
#include <qvxsys/WideText.h>

namespace quorvex::crash {

/// What the handler does besides writing a dump.
struct HandlerOptions
{
    /// What goes into the dump.
    qvxsys::minidump::MINIDUMP_TYPE type = qvxsys::minidump::MiniDumpNormal;
    /// Tell of the dump, or why there is none, in a line on the standard error stream. Linux only.
    bool announce = false;
};

/// Installs the handler and prepares the calling thread. In `path` "%p" stands for the process id, "%t" for the seconds
/// since 1970 at the crash, "%%" for "%"; a relative path is understood from where the current folder is now. An
/// existing file of that name is replaced. The folder is not created. False, with the last error, if the handler is
/// installed already (EALREADY), for a path or a type that WriteCrashDump would refuse (ENAMETOOLONG beyond 4000
/// bytes), and when the system refuses. To be called at start, while no other thread calls it or RemoveHandler().
[[nodiscard]] QVXSYS_API bool InstallHandler(TStringView path, HandlerOptions const& options = {});
template<qvxsys::detail::WidePointer W>
[[nodiscard]] bool InstallHandler(W const& path, HandlerOptions const& options = {})
{
    return InstallHandler(qvxsys::detail::WideText(path), options);
}

/// Puts back the handlers that were there before, unless others have been installed since. Does nothing when none is
/// installed.
QVXSYS_API void RemoveHandler() noexcept;

/// Gives the calling thread what it needs for a dump when its stack overflows: on Linux a stack for signals (256 KiB of
/// address space, touched when used; one that the thread has already is kept), on Windows a reserve of its stack. It is
/// taken back at the thread's end. InstallHandler() does this for its own thread; for the threads of the pool, call it
/// in the function that TThreadPool::Configure takes for their start. False, with the last error, when the system
/// refuses.
QVXSYS_API bool PrepareThread() noexcept;

} // namespace quorvex::crash
