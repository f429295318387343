#include "SymbolEngine.h"

#include <algorithm>
#include <array>
#include <new>

namespace qvxsys::detail {

std::size_t SymbolRecord::Bytes() const noexcept
{
    return sizeof *this + text.capacity();
}

} // namespace qvxsys::detail

namespace qvxsys::stack {
namespace {

constexpr std::string_view kNoModule = "(module name not available)";
constexpr std::string_view kNoSymbol = "(symbol not available)";

/// `ending` is in lower case.
bool EndsWithAnyCase(std::string_view text, std::string_view ending) noexcept
{
    if (text.size() < ending.size()) {
        return false;
    }
    return std::equal(ending.begin(), ending.end(), text.end() - static_cast<std::ptrdiff_t>(ending.size()),
                      [](char want, char have) {
                          return want == (have >= 'A' && have <= 'Z' ? static_cast<char>(have + ('a' - 'A')) : have);
                      });
}

bool IsOwnMachinery(std::string_view file) noexcept
{
    static constexpr std::array<std::string_view, 3> kSources{"stackwalker.cpp", "memorytrackingcommunication.cpp",
                                                              "tmemory.cpp"};
    return std::any_of(kSources.begin(), kSources.end(),
                       [file](std::string_view source) { return EndsWithAnyCase(file, source); });
}

Record MakeRecord(SymbolPieces const& pieces, bool wantLine)
{
    auto record = std::make_shared<detail::SymbolRecord>();
    detail::SymbolRecord& r = *record;
    auto const end = [&r] { return static_cast<std::uint32_t>(r.text.size()); };
    std::string const line = std::to_string(pieces.line);
    std::string_view const module = pieces.module.empty() ? kNoModule : pieces.module;
    std::string_view const symbol =
        pieces.symbol.empty() ? kNoSymbol : std::string_view(pieces.symbol).substr(0, kSymbolNameLength - 1);
    r.text.reserve(pieces.file.size() + line.size() + module.size() + symbol.size() + 6);
    if (!pieces.file.empty()) {
        r.text.append(1, ' ').append(pieces.file);
        r.fileEnd = end();
        r.text.append(1, '(').append(line).append("): ");
        r.line = pieces.line;
    }
    r.lineEnd = end();
    r.text.append(module);
    r.moduleEnd = end();
    r.text.append(1, '!').append(symbol);
    r.linesRead = wantLine;
    r.hasModule = !pieces.module.empty();
    r.hasSymbol = !pieces.symbol.empty();
    r.isOwnMachinery = IsOwnMachinery(pieces.file);
    return record;
}

} // namespace

constinit thread_local bool Inside::s_inside = false;

SymbolEngine& SymbolEngine::Get()
{
    static auto* const engine = new SymbolEngine;
    return *engine;
}

SymbolEngine::SymbolEngine() : m_nothing(MakeRecord({}, true))
{
    AtFork([] { Get().BeforeFork(); }, [] { Get().AfterFork(false); }, [] { Get().AfterFork(true); });
}

/// A child has the forking thread only: locks that others held would be held for ever, on half of a change.
void SymbolEngine::BeforeFork()
{
    if (!Inside::Now()) {
        m_mutex.lock();
        m_cacheMutex.lock();
    }
}

void SymbolEngine::AfterFork(bool inChild)
{
    if (Inside::Now()) {
        return;
    }
    if (inChild) {
        new (&m_cacheMutex) std::shared_mutex; // glibc unlocks for writers by their thread's id, which is another now
    } else {
        m_cacheMutex.unlock();
    }
    m_mutex.unlock();
}

void SymbolEngine::Refresh()
{
    std::lock_guard const lock(m_mutex);
    RefreshLocked();
}

void SymbolEngine::RefreshLocked()
{
    // Read before the list is: what changes in between is seen as a change next time.
    std::uint64_t const generation = ModuleGeneration();
    if (generation == m_generation.load(std::memory_order_relaxed)) {
        return;
    }
    m_reader.Refresh(m_searchPath);
    ClearAddresses();
    m_generation.store(generation, std::memory_order_release);
}

Record SymbolEngine::Load(std::uintptr_t key, bool wantLines)
{
    std::unique_lock lock(m_mutex);
    RefreshLocked();
    if (Record known = Remembered(key, wantLines)) {
        return known;
    }
    SymbolPieces pieces = m_reader.Read(key, wantLines);
    std::uint64_t const clearings = m_clearings;
    if (pieces.askLinker) {
        lock.unlock();
        pieces.symbol = ExportedName(key);
        lock.lock();
    }
    Record record = MakeRecord(pieces, wantLines);
    if (pieces.isFinal && clearings == m_clearings) {
        Remember(key, record);
    }
    return record;
}

/// Another thread may have read it by now, or it is one of the older addresses. With m_mutex held, which is enough for
/// reading the maps.
Record SymbolEngine::Remembered(std::uintptr_t key, bool wantLines)
{
    if (auto const recent = m_recent.find(key); recent != m_recent.end() && (recent->second->linesRead || !wantLines)) {
        return recent->second;
    }
    auto const older = m_older.find(key);
    if (older == m_older.end() || (wantLines && !older->second->linesRead)) {
        return nullptr;
    }
    Record record = older->second;
    Remember(key, record);
    return record;
}

void SymbolEngine::Remember(std::uintptr_t key, Record const& record)
{
    std::size_t const bytes = record->Bytes() + kEntryOverhead;
    std::unique_lock const lock(m_cacheMutex);
    if (m_recentBytes + bytes > m_limit / 2) {
        m_older = std::move(m_recent);
        m_olderBytes = m_recentBytes;
        m_recent = {};
        m_recentBytes = 0;
        if (bytes > m_limit / 2) {
            return;
        }
    }
    auto const [place, isNew] = m_recent.try_emplace(key, record);
    if (!isNew) {
        m_recentBytes -= place->second->Bytes() + kEntryOverhead;
        place->second = record;
    }
    m_recentBytes += bytes;
}

void SymbolEngine::ClearAddresses()
{
    ++m_clearings;
    std::unique_lock const lock(m_cacheMutex);
    m_recent = {};
    m_older = {};
    m_recentBytes = 0;
    m_olderBytes = 0;
}

std::vector<quorvex::symbols::LoadedModule> SymbolEngine::Modules()
{
    Inside const inside;
    std::lock_guard const lock(m_mutex);
    RefreshLocked();
    return m_reader.Modules();
}

void SymbolEngine::SetSearchPath(std::string path)
{
    Inside const inside;
    std::lock_guard const lock(m_mutex);
    m_reader.Refresh(path);
    m_searchPath = std::move(path);
    ClearAddresses();
}

std::string SymbolEngine::GetSearchPath()
{
    Inside const inside;
    std::lock_guard const lock(m_mutex);
    return m_searchPath;
}

void SymbolEngine::SetCacheLimit(std::size_t bytes)
{
    Inside const inside;
    std::lock_guard const lock(m_mutex);
    {
        std::unique_lock const cacheLock(m_cacheMutex);
        m_limit = bytes;
    }
    ClearAddresses();
}

quorvex::symbols::CacheUse SymbolEngine::CacheUse()
{
    std::shared_lock const lock(m_cacheMutex);
    return {m_recent.size() + m_older.size(), m_recentBytes + m_olderBytes, m_limit};
}

void SymbolEngine::Forget()
{
    Inside const inside;
    std::lock_guard const lock(m_mutex);
    m_reader.Forget();
    ClearAddresses();
}

} // namespace qvxsys::stack
