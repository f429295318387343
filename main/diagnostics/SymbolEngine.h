#pragma once
// The process's one symbol engine: a reader under a mutex, and what was read of single addresses, remembered.

#include <atomic>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include "SymbolReader.h"

namespace qvxsys::detail {

/// What is known of an address, as the text behind the thread's id in a line of TStackWalker's:
/// " FILE" "(LINE): " "MODULE" "!" "SYMBOL". Pieces that are unknown have their substitutes in it.
struct SymbolRecord
{
    std::string text;
    std::uint32_t fileEnd = 0; ///< 0: no file
    std::uint32_t lineEnd = 0;
    std::uint32_t moduleEnd = 0; ///< the position of '!'
    int line = -1;
    bool linesRead = false; ///< whether a file was looked for
    bool hasModule = false;
    bool hasSymbol = false;
    bool isOwnMachinery = false; ///< of a source file that traces leave out

    [[nodiscard]] std::size_t Bytes() const noexcept;
};

} // namespace qvxsys::detail

namespace qvxsys::stack {

using Record = std::shared_ptr<detail::SymbolRecord const>;

/// While it lives its thread is inside the engine, whose mutex is not to be taken again. It gets there again by
/// allocation functions that want a trace, and by handlers of faults in reading.
class Inside
{
public:
    Inside() noexcept : m_isAgain(s_inside) { s_inside = true; }
    ~Inside() { s_inside = m_isAgain; }
    Inside(Inside const&) = delete;
    Inside& operator=(Inside const&) = delete;

    [[nodiscard]] bool IsAgain() const noexcept { return m_isAgain; }
    [[nodiscard]] static bool Now() noexcept { return s_inside; }

private:
    static constinit thread_local bool s_inside;
    bool const m_isAgain;
};

class SymbolEngine
{
public:
    /// Made at the first call; never destroyed.
    static SymbolEngine& Get();

    /// Calls `visit(i, Record const&)` for each address, in order. With `step` 1 the instruction before each is meant.
    /// When the thread is inside already, nothing is known of any.
    template<class Visit>
    void ForEach(std::span<void* const> addresses, std::uintptr_t step, bool wantLines, Visit visit)
    {
        Inside const inside;
        if (inside.IsAgain()) {
            for (std::size_t i = 0; i < addresses.size(); ++i) {
                visit(i, m_nothing);
            }
            return;
        }
        // The linker's list is looked at under one of our locks always: a child that is forked meanwhile could never
        // look at it again (glibc leaves that lock of its own as it was).
        std::shared_lock lock(m_cacheMutex);
        if (ModuleGeneration() != m_generation.load(std::memory_order_acquire)) {
            lock.unlock();
            Refresh();
            lock.lock();
        }
        for (std::size_t i = 0; i < addresses.size(); ++i) {
            std::uintptr_t const key = reinterpret_cast<std::uintptr_t>(addresses[i]) - step;
            auto const found = m_recent.find(key);
            if (found != m_recent.end() && (found->second->linesRead || !wantLines)) {
                visit(i, found->second);
                continue;
            }
            lock.unlock();
            Record const record = Load(key, wantLines);
            visit(i, record);
            lock.lock();
        }
    }

    std::vector<quorvex::symbols::LoadedModule> Modules();
    void SetSearchPath(std::string path);
    std::string GetSearchPath();
    void SetCacheLimit(std::size_t bytes);
    quorvex::symbols::CacheUse CacheUse();
    void Forget();

private:
    /// An address and its record in a map take about this much besides the record's own bytes.
    static constexpr std::size_t kEntryOverhead = 80;
    static constexpr std::size_t kDefaultLimit = std::size_t{4} << 20;

    using Map = std::unordered_map<std::uintptr_t, Record>;

    SymbolEngine();

    /// Takes in modules that were loaded or unloaded meanwhile.
    void Refresh();
    /// With m_mutex held.
    void RefreshLocked();
    Record Load(std::uintptr_t key, bool wantLines);
    Record Remembered(std::uintptr_t key, bool wantLines);
    void Remember(std::uintptr_t key, Record const& record);
    void ClearAddresses();
    void BeforeFork();
    void AfterFork(bool inChild);

    Record const m_nothing;
    std::mutex m_mutex; ///< the reader, and who may add to the maps
    SymbolReader m_reader;
    std::string m_searchPath;
    std::atomic<std::uint64_t> m_generation{0};
    std::uint64_t m_clearings = 0;

    // Addresses move from the older map to the recent one when they are asked for. When the recent one has half of what
    // is allowed, it becomes the older one, whose addresses are forgotten.
    std::shared_mutex m_cacheMutex; ///< taken inside m_mutex
    Map m_recent;
    Map m_older;
    std::size_t m_recentBytes = 0;
    std::size_t m_olderBytes = 0;
    std::size_t m_limit = kDefaultLimit;
};

} // namespace qvxsys::stack
