#pragma once
// The platform's way from an address to names. One object for the process, used under the symbol engine's mutex unless
// a function says otherwise.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <qvxsys/Symbols.h>

namespace qvxsys::stack {

/// The most bytes of a symbol's name, its terminating 0 included.
inline constexpr std::size_t kSymbolNameLength = 2048;

struct SymbolPieces
{
    std::string symbol; ///< demangled; empty: unknown
    std::string file;   ///< empty: unknown
    int line = -1;
    std::string module;     ///< file name; empty: in no module
    bool askLinker = false; ///< nothing but ExportedName may know the symbol
    bool isFinal = true;    ///< false: memory or descriptors ran out, and another time there may be more to tell
};

/// What the system's own linker calls the function at an address; empty when it does not know. Not to be called with
/// the mutex held: the linker may have a lock of its own for this, under which other threads may be initialising a
/// library that has a trace taken.
std::string ExportedName(std::uintptr_t address);

/// Has functions called around each fork from now on, where there is such a thing.
void AtFork(void (*before)(), void (*inParent)(), void (*inChild)()) noexcept;

/// A number that changes whenever modules were loaded or unloaded. Without the mutex; costs tens of nanoseconds.
std::uint64_t ModuleGeneration() noexcept;

class SymbolReader
{
public:
    SymbolReader();
    ~SymbolReader();
    SymbolReader(SymbolReader const&) = delete;
    SymbolReader& operator=(SymbolReader const&) = delete;

    /// Takes in which modules there are now. To be called before anything else, and again when the generation changed.
    /// `searchPath` is the user's; a different one forgets what was found with the other. When it throws
    /// (std::bad_alloc only), all is as before.
    void Refresh(std::string const& searchPath);
    /// What is known of the instruction at an address; file and line only with `wantLine`. Throws std::bad_alloc only:
    /// a file that cannot be read, or is broken, leaves pieces empty.
    SymbolPieces Read(std::uintptr_t address, bool wantLine);
    [[nodiscard]] std::vector<quorvex::symbols::LoadedModule> Modules();
    /// Closes and frees everything but the list of modules.
    void Forget() noexcept;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace qvxsys::stack
