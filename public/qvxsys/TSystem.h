#pragma once
// The process and its platform: up-time, ids, sleeping, the desktop main thread, and the texts of platform error codes.
//
//     unsigned int const start = TSystem::AppUpTime();
//     Load(file);
//     Log(TSystem::AppUpTime() - start);                         // milliseconds, right across the wrap
//
//     if (std::FILE* const file = std::fopen(name, "rb"); file == nullptr) {
//         std::cerr << GetLastErrorString() << '\n';             // "last error : 0x0000000000000002 No such file ..."
//     }
//
// Everything here may be called from any thread; only the function for the desktop main thread is meant to be installed
// at start, before other threads ask.

#include <chrono>
#include <functional>
#include <string>

#include <qvxsys/Platform.h>

class TPathCore;
class TStringCore;

class QVXSYS_API TSystem
{
public:
    TSystem() = delete;

    /// Milliseconds since the library was loaded, modulo 2^32: it wraps after 49.7 days. Differences of two values are
    /// right in unsigned arithmetic. By the clock of UpTime().
    [[nodiscard]] static unsigned int AppUpTime() noexcept;
    /// Time since the library was loaded, without the wrap. The clock never steps back and is not set; it is that of
    /// std::chrono::steady_clock, which on Linux stands still while the machine is suspended. Costs one read of that
    /// clock.
    [[nodiscard]] static std::chrono::nanoseconds UpTime() noexcept;

    /// The current process id; in a child directly after a fork its own.
    [[nodiscard]] static unsigned int ProcessID() noexcept;
    /// The calling thread's id as the operating system numbers threads, zero-extended from 32 bits.
    [[nodiscard]] static unsigned long long ThreadID() noexcept;

    /// Suspends the calling thread for `ms` milliseconds, never less; signals that are handled meanwhile do not shorten
    /// it. 0 gives up the rest of the time slice to threads that are ready; 0xFFFFFFFF does not return. errno is kept.
    static void Sleep(unsigned int ms) noexcept;

    /// Installs the function that tells whether the calling thread is the desktop's main thread (empty: none) and
    /// returns the previous one. Not locked: call it while no other thread calls it or IsDesktopMainThread().
    static std::function<bool()> SetDesktopMainThreadFunc(std::function<bool()> func);
    /// What the installed function returns (or throws); false without one.
    [[nodiscard]] static bool IsDesktopMainThread();

    /// @name Files of program and modules
    /// Names as the module was loaded by, in full; include <qvxsys/TPathCore.h> to use them. Empty where there is none.
    /// Windows cuts names of more than 260 units; on Linux they are of any length and any bytes (FileSystemPath.h), and
    /// a program whose file is gone has the name it had.
    /// @{
    /// Of the module that contains the address; null is the program's own.
    [[nodiscard]] static TPathCore ModuleFilename(void const* address);
    /// The same as ModuleFilename(nullptr).
    [[nodiscard]] static TPathCore ExecutableFilename();
    /// The folders that these files are in: Parent() where there is one.
    [[nodiscard]] static TPathCore ExecutablePath();
    [[nodiscard]] static TPathCore ModuleDirectory(void const* address);
    /// Of a loaded module by its file name; what else `module` has is not looked at. Windows ignores case and takes
    /// ".dll" for granted; on Linux the name must be that of the file the module was loaded by ("libc.so.6").
    [[nodiscard]] static TPathCore ModulePath(TPathCore const& module);
    /// The name from UTF-8, mangled as it is. Null is empty text.
    [[nodiscard]] static TStringCore unmangleClassName(char const* name);
    /// @}
};

/// "last error : 0x", the code as sixteen lower-case hexadecimal digits, a blank and the platform's text for it exactly
/// as the platform has it: on Linux the C library's description of an errno value, always in English and without a line
/// break, on Windows the system's message in the user's language, as UTF-8, line break included. For a code that the
/// platform does not know nothing follows the blank. Changes neither errno nor the last error. Throws std::bad_alloc
/// only.
[[nodiscard]] QVXSYS_API std::string GetLastErrorString(unsigned long code);
/// The same for the calling thread's last error code (errno, GetLastError()), which is read before anything else
/// happens.
[[nodiscard]] QVXSYS_API std::string GetLastErrorString();
