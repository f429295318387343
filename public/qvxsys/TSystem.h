#pragma once
// The process and its platform: up-time, ids, sleeping, the desktop main thread, memory and processors, the encoding of
// 8-bit text, and the texts of platform error codes.
//
//     unsigned int const start = TSystem::AppUpTime();
//     Load(file);
//     Log(TSystem::AppUpTime() - start);                         // milliseconds, right across the wrap
//
//     TSystem::MemoryInfo const memory = TSystem::Memory();
//     ResizeCache(std::min(memory.totalPhysical / 8, memory.availablePhysical / 2));
//
//     if (std::FILE* const file = std::fopen(name, "rb"); file == nullptr) {
//         std::cerr << GetLastErrorString() << '\n';             // "last error : 0x0000000000000002 No such file ..."
//     }
//
// Everything here may be called from any thread; only the function for the desktop main thread is meant to be installed
// at start, before other threads ask.

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

#include <qvxsys/Platform.h>

class TPathCore;
class TStringCore;

/// What the library tells of process and machine.
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

    /// The machine's memory; amounts in bytes. Swap space is not counted: its three fields stay 0, and what is combined
    /// is physical memory alone.
    struct MemoryInfo
    {
        unsigned long long availablePhysical = 0; ///< can be had without swapping: free, or a cache that is given back
        unsigned long long usedPhysical = 0;      ///< the total without what is available, at least 1
        unsigned long long totalPhysical = 0;     ///< bytes
        unsigned int pageSize = 0;                ///< bytes of a page
        unsigned int load = 0;                    ///< percent in use
        unsigned long long availableSwap = 0;     ///< stays 0
        unsigned long long usedSwap = 0;          ///< stays 0
        unsigned long long totalSwap = 0;         ///< stays 0
        unsigned long long availableCombined = 0; ///< physical and swap
        unsigned long long usedCombined = 0;      ///< the combined total without what is available; can be 0
        unsigned long long totalCombined = 0;     ///< physical and swap
    };
    /// The memory that this process can have. On Linux that of the machine (/proc/meminfo) or, where that is less, of
    /// the control groups that the process lives in, such as a container: the least total and the least available
    /// amount of any of them, up to the outermost that can be seen. Files in a group's cache count as available.
    /// Allocates nothing and costs some tens of microseconds, most of them the kernel's own counting.
    [[nodiscard]] static MemoryInfo Memory() noexcept;
    /// The memory of the whole machine, whatever this process may have of it.
    [[nodiscard]] static MemoryInfo HostMemory() noexcept;

    /// What processors there are.
    struct ProcessorInfo
    {
        unsigned int usable = 1;  ///< how many this process can keep busy: those allowed, or the quota rounded up
        unsigned int allowed = 1; ///< by the affinity of the process's first thread
        unsigned int host = 1;    ///< of the machine, online
        double quota = 0;         ///< processors' worth of time that the control groups grant; 0: without a limit
    };
    /// The machine's logical processors. Read anew by each call: they can change while the process runs.
    [[nodiscard]] static ProcessorInfo Processors() noexcept;

    /// How far the machine's processors are held back. On Linux a processor that idles slowly is not; one is that is
    /// not allowed to run as fast as it can. On Windows one that runs slower at this moment.
    struct ThrottlingInfo
    {
        unsigned int known = 0;        ///< processors that tell; 0 where none does, as on many virtual machines
        unsigned int capped = 0;       ///< of those, the ones held below their full frequency
        unsigned long long events = 0; ///< times that heat has slowed one down since the machine was started
    };
    /// Costs the reading of some small files for each processor.
    [[nodiscard]] static ThrottlingInfo Throttling() noexcept;

    /// Where the figures come from: a file of the kernel's or the name of a system function.
    struct FigureSources
    {
        std::string hostMemory;      ///< all of HostMemory()
        std::string totalMemory;     ///< the total of Memory()
        std::string availableMemory; ///< what Memory() says to be available
        std::string processorQuota;  ///< empty without a quota
    };
    /// Where the figures of this machine come from.
    [[nodiscard]] static FigureSources Sources();

    /// The name of the encoding that the process's 8-bit text is in, such as "UTF-8", "windows-1252" or "iso-8859-15",
    /// in up to 19 characters. Found out by the first call; always the same pointer. On Windows that of the active code
    /// page by a list of 55, and "UTF-8" for any other; elsewhere that of the locale that the program has set, or,
    /// while it has not, of the one that the environment names, in the list's spelling if it has the encoding. To
    /// convert, use TTextDecoder: the conversions of strings are UTF-8 on Linux in every locale.
    [[nodiscard]] static char const* Local8BitEncoding() noexcept;

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
static_assert(offsetof(TSystem::MemoryInfo, availablePhysical) == 0 &&
              offsetof(TSystem::MemoryInfo, usedPhysical) == 8 && offsetof(TSystem::MemoryInfo, totalPhysical) == 16 &&
              offsetof(TSystem::MemoryInfo, pageSize) == 24 && offsetof(TSystem::MemoryInfo, load) == 28 &&
              offsetof(TSystem::MemoryInfo, availableSwap) == 32 && offsetof(TSystem::MemoryInfo, usedSwap) == 40 &&
              offsetof(TSystem::MemoryInfo, totalSwap) == 48 &&
              offsetof(TSystem::MemoryInfo, availableCombined) == 56 &&
              offsetof(TSystem::MemoryInfo, usedCombined) == 64 && offsetof(TSystem::MemoryInfo, totalCombined) == 72 &&
              sizeof(TSystem::MemoryInfo) == 80);

/// "last error : 0x", the code as sixteen lower-case hexadecimal digits, a blank and the platform's text for it exactly
/// as the platform has it: on Linux the C library's description of an errno value, always in English and without a line
/// break, on Windows the system's message in the user's language, as UTF-8, line break included. For a code that the
/// platform does not know nothing follows the blank. Changes neither errno nor the last error. Throws std::bad_alloc
/// only.
[[nodiscard]] QVXSYS_API std::string GetLastErrorString(unsigned long code);
/// The same for the calling thread's last error code (errno, GetLastError()), which is read before anything else
/// happens.
[[nodiscard]] QVXSYS_API std::string GetLastErrorString();
