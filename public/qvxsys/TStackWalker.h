#pragma once
// The calling thread's call stack as lines of text, one for each function, for error reports.
//
//     TStackWalker::InitSym(true);                               // once, at start: walking is off until then
//     ...
//     TStackWalker walker;
//     if (walker.GenerateCallstack()) {
//         for (std::string const& line : walker.GetCollected()) {
//             log << line << '\n';
//         }
//     }
//
// A line, with everything switched on:
//
//     0x0000000000001a2b /src/load.cpp(42): loader!Load(char const*)        where the source line is known
//     0x0000000000001a2b 0x00007F3F1C2D3E4F libc.so.6!__libc_start_main     where it is not
//
// Four switches, common to the whole process and all on at start, decide what of it is there; module and symbol always
// are. To keep a trace now and turn it into text later, if at all, see Symbols.h.
//
// The statics may be called from any thread at any time; a walker object belongs to one thread at a time. The first
// trace reads symbol tables and line tables (milliseconds to tenths of seconds, by the size of the program); what has
// been seen before is remembered (Symbols.h: SetCacheLimit).

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>

#include <qvxsys/Platform.h>

/// What a trace shows. One byte each; every value but 0 is on.
struct StackWalkerConfig
{
    /// The most frames that are captured.
    static constexpr int numberOfStackWalks = 200;

    std::uint8_t active = 0;                       ///< whether stacks are walked at all
    std::uint8_t includeThreadInfo = 1;            ///< the thread's id
    std::uint8_t includeSystemMemoryAddresses = 1; ///< the address, where there is no source file
    std::uint8_t includeFileLineNumber = 1;        ///< whether lines of the source are told
    std::uint8_t includeFileName = 1;              ///< whether files of the source are told
};
static_assert(offsetof(StackWalkerConfig, active) == 0 && offsetof(StackWalkerConfig, includeThreadInfo) == 1 &&
              offsetof(StackWalkerConfig, includeSystemMemoryAddresses) == 2 &&
              offsetof(StackWalkerConfig, includeFileLineNumber) == 3 &&
              offsetof(StackWalkerConfig, includeFileName) == 4 && sizeof(StackWalkerConfig) == 5);

/// Call stacks as text; settings are the process's.
class QVXSYS_API TStackWalker
{
public:
    TStackWalker();
    TStackWalker(TStackWalker const&);
    TStackWalker(TStackWalker&&) noexcept;
    TStackWalker& operator=(TStackWalker const&);
    TStackWalker& operator=(TStackWalker&&) noexcept;
    virtual ~TStackWalker();

    /// Switches walking on or off; returns what it was. Off at start.
    static bool InitSym(bool active) noexcept;
    /// Whether stacks are walked at all.
    [[nodiscard]] static bool IsActive() noexcept;

    /// Whether the thread is told.
    static void IncludeThreadInfo(bool include) noexcept;
    /// Whether addresses are told.
    static void IncludeSystemMemoryAddresses(bool include) noexcept;
    /// Whether lines of the source are told.
    static void IncludeFileLineNumber(bool include) noexcept;
    /// Whether files of the source are told.
    static void IncludeFileName(bool include) noexcept;

    /// Captures the calling thread's stack, innermost function first, and keeps it as lines; at most 200 functions, and
    /// without those of the sources of stack walking and memory accounting (see GenerateCallstackImpl). True when there
    /// is at least one line. When walking is off or anything fails, it returns false and the lines of before stay.
    /// Never throws.
    bool GenerateCallstack() noexcept;

    /// The lines of the last GenerateCallstack that did not fail; empty at first.
    [[nodiscard]] std::list<std::string> const& GetCollected() const noexcept QVXSYS_LIFETIME_BOUND;

protected:
    /// Captures and formats with these settings, whether they are active or not. A line is, without blanks between:
    /// - with thread info: "0x" and the thread's id as sixteen hexadecimal digits;
    /// - where the source file is known, a blank and its name (with file names) and "(", the line, "): " (with lines);
    ///   where it is not, " 0x", the address as sixteen hexadecimal digits, letters upper-case (as the standard streams
    ///   of Visual C++ print a pointer), and a blank (with addresses);
    /// - the module's name (its file name; on Windows without the extension, as debuggers show it), or "(module name
    ///   not available)"; "!"; the function's name, at most 2,047 bytes of it, or "(symbol not available)".
    ///
    /// Files are looked up only when file names or lines are on. Functions whose file's name ends in "stackwalker.cpp",
    /// "memorytrackingcommunication.cpp" or "tmemory.cpp", in any case of the letters, are left out: with both switches
    /// off, or in a library without line information, no file is known, and all functions are shown.
    ///
    /// An override is called by GenerateCallstack; what it throws makes that return false.
    virtual std::list<std::string> GenerateCallstackImpl(StackWalkerConfig const& config);

private:
    std::list<std::string> m_collected;
};
