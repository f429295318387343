#pragma once
// From addresses to names: the functions, source lines and modules of a call stack that was captured as bare addresses,
// and what symbols the modules of the process have.
//
//     auto const trace = quorvex::StackTrace::Current();         // StackTrace.h
//     ...
//     for (auto const& frame : quorvex::symbols::Resolve(trace.Frames())) {
//         std::cerr << frame.Module() << ' ' << frame.Symbol() << ' ' << frame.File() << ':' << frame.Line() << '\n';
//     }
//
// On Linux names come from the symbol table of the file that a module was loaded from, or of its separate debug
// file, or from the compressed table inside (.gnu_debugdata), else from its dynamic symbols; lines come from DWARF. A
// separate debug file is found by build-id (FOLDER/.build-id/xx/yyyy.debug) or by the name in .gnu_debuglink (beside
// the module, in .debug beside it, or as FOLDER/NAME and FOLDER/<the module's folder>/NAME), in the folders of
// SetSearchPath and in /usr/lib/debug. It must have the module's build-id, or the announced checksum where there is
// none. A file that was replaced since it was loaded is not read, if it has a build-id to tell by. Nothing is ever
// fetched from the network, whatever the environment says. On Windows the system's dbghelp library gives what it can:
// names and lines of programs with PDB files, exported names of others.
//
// A module counts from the moment it is loaded, and no longer when it is unloaded.
//
// Everything here may be called from any thread, in initialisers of libraries that are being loaded (on Windows not in
// DllMain), before main and after it, and in a forked child; but neither in signal handlers nor in callbacks of
// dl_iterate_phdr. In allocation functions, too: one that is called for a lookup gets frames without names, since that
// thread is in the midst of looking up. Lookups of addresses that are not remembered are made one after the other;
// looking up what is remembered runs in parallel and allocates nothing beyond the result.

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <qvxsys/Platform.h>
#include <qvxsys/TStackWalker.h>

namespace qvxsys::detail {
struct SymbolRecord;
}

namespace quorvex::symbols {

/// What is known of one address. The texts live as long as this object or a copy of it.
class QVXSYS_API Frame
{
public:
    Frame() noexcept;
    /// For the library's own use.
    Frame(void const* address, std::shared_ptr<qvxsys::detail::SymbolRecord const> record) noexcept;
    Frame(Frame const&) noexcept;
    Frame(Frame&&) noexcept;
    Frame& operator=(Frame const&) noexcept;
    Frame& operator=(Frame&&) noexcept;
    ~Frame();

    /// The address that was asked about.
    [[nodiscard]] void const* Address() const noexcept { return m_address; }
    /// The function's name, demangled, at most 2,047 bytes of it; empty when unknown. Of code that was inlined it is
    /// the function that it was inlined into, while File and Line are those of the inlined source.
    [[nodiscard]] std::string_view Symbol() const noexcept QVXSYS_LIFETIME_BOUND;
    /// The source file as the compiler wrote it down; empty when unknown.
    [[nodiscard]] std::string_view File() const noexcept QVXSYS_LIFETIME_BOUND;
    /// From 1; 0 for code that the compiler says belongs to no line; -1 when unknown.
    [[nodiscard]] int Line() const noexcept;
    /// The file name of the module, without its folder (and on Windows without its extension); empty when the address
    /// is in none.
    [[nodiscard]] std::string_view Module() const noexcept QVXSYS_LIFETIME_BOUND;

private:
    void const* m_address = nullptr;
    std::shared_ptr<qvxsys::detail::SymbolRecord const> m_record;
};

enum class Detail : std::uint8_t {
    Names, ///< File is empty, Line -1: line tables are not read
    NamesAndLines,
};

/// One frame for each address. They are taken as return addresses, as a captured stack has them: what is looked up is
/// the call before each, so that a call at the very end of a function or line is found where it is.
[[nodiscard]] QVXSYS_API std::vector<Frame> Resolve(std::span<void* const> returnAddresses,
                                                    Detail detail = Detail::NamesAndLines);
/// The address itself: a function's beginning, or where a signal interrupted.
[[nodiscard]] QVXSYS_API Frame ResolveAddress(void const* address, Detail detail = Detail::NamesAndLines);

/// The lines that TStackWalker makes of a stack; see its GenerateCallstackImpl for the format and what is left out.
[[nodiscard]] QVXSYS_API std::list<std::string> Format(std::span<void* const> returnAddresses,
                                                       StackWalkerConfig const& config, std::uint64_t threadId);

/// What is there to name a module's functions with, from nothing to everything.
enum class SymbolSource : std::uint8_t {
    None,
    DynamicSymbols,  ///< names of what it exports only
    SymbolTable,     ///< names of all functions
    LineInformation, ///< source lines, too
};

/// A module of this process.
struct LoadedModule
{
    std::string path;                         ///< as it was loaded; of the program its own file
    std::uintptr_t base = 0;                  ///< its lowest address
    std::size_t size = 0;                     ///< to its highest
    std::string buildId;                      ///< in hexadecimal digits, empty without one (and on Windows)
    SymbolSource source = SymbolSource::None; ///< where its symbols come from
    std::string debugFile;                    ///< the separate debug file that is used, if any
};

/// The modules of the process in the order in which they were loaded. Opens each module's file, and looks for separate
/// debug files: milliseconds.
[[nodiscard]] QVXSYS_API std::vector<LoadedModule> LoadedModules();

/// Folders in which to look for debug files first, separated as in PATH (on Linux by ":", on Windows by ";"). Empty at
/// start. What was found before is forgotten.
QVXSYS_API void SetSearchPath(std::string path);
[[nodiscard]] QVXSYS_API std::string GetSearchPath();

/// How many addresses are remembered and how many bytes they take, as far as it can be counted.
struct CacheUse
{
    std::size_t addresses = 0; ///< addresses that are remembered
    std::size_t bytes = 0;     ///< of memory, about
    std::size_t limit = 0;     ///< bytes
};

/// Bounds what is remembered of single addresses: 4 MiB at start, some 12,000 addresses. Beyond it the addresses that
/// were not asked for lately are forgotten. 0 remembers nothing.
///
/// Apart from it a module in which an address was looked up keeps an index of its functions, 24 bytes each, the
/// sections of its debug information if they are compressed, and the line tables of the compilation units that were
/// needed. At a million rows of about 80 bytes in the process all of this is dropped, and read again on demand.
QVXSYS_API void SetCacheLimit(std::size_t bytes);
[[nodiscard]] QVXSYS_API CacheUse GetCacheUse();
/// Forgets all addresses, function indexes and line tables, and closes what was opened for them.
QVXSYS_API void ClearCache();

} // namespace quorvex::symbols
