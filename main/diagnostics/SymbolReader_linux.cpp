// Modules come from the dynamic linker's list, their symbols from the files, read through libelf and libdw. libdwfl,
// which offers all this at a higher level, is not used: it looks through a module's whole symbol table for each
// address, and asks debuginfod servers for missing files where DEBUGINFOD_URLS is set. libelf and libdw know nothing of
// the network.

#include "SymbolReader.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>

#include <cxxabi.h>
#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include "ElfFile.h"
#include "LineTables.h"

namespace qvxsys::stack {
namespace {

using quorvex::symbols::LoadedModule;
using quorvex::symbols::SymbolSource;

/// Rows of line tables that are kept, some 40 bytes each.
constexpr std::size_t kMostRows = 1'000'000;
constexpr char const* kProgram = "/proc/self/exe";

/// As the dynamic linker has it in memory.
struct Loaded
{
    std::string path;
    std::uintptr_t bias = 0; ///< memory address less file address
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    std::string buildId;
};

/// The build-id in a segment of notes; empty when there is none.
std::string BuildIdIn(unsigned char const* notes, std::size_t size)
{
    auto const aligned = [](std::size_t n) { return (n + 3) & ~std::size_t{3}; };
    for (std::size_t at = 0; size - at >= sizeof(ElfW(Nhdr));) {
        ElfW(Nhdr) note;
        std::memcpy(&note, notes + at, sizeof note);
        std::size_t const name = at + sizeof note;
        if (note.n_namesz > size || note.n_descsz > size || name + aligned(note.n_namesz) > size ||
            name + aligned(note.n_namesz) + note.n_descsz > size) {
            break;
        }
        if (note.n_type == NT_GNU_BUILD_ID && note.n_namesz == 4 && std::memcmp(notes + name, "GNU", 4) == 0) {
            return {reinterpret_cast<char const*>(notes) + name + 4, note.n_descsz};
        }
        at = std::min(size, name + aligned(note.n_namesz) + aligned(note.n_descsz));
    }
    return {};
}

Loaded Describe(dl_phdr_info const& info)
{
    Loaded module;
    module.path = info.dlpi_name != nullptr ? info.dlpi_name : "";
    module.bias = info.dlpi_addr;
    module.begin = UINTPTR_MAX;
    for (ElfW(Half) i = 0; i < info.dlpi_phnum; ++i) {
        ElfW(Phdr) const& segment = info.dlpi_phdr[i];
        std::uintptr_t const begin = info.dlpi_addr + segment.p_vaddr;
        if (segment.p_type == PT_LOAD) {
            module.begin = std::min(module.begin, begin);
            module.end = std::max(module.end, begin + segment.p_memsz);
        } else if (segment.p_type == PT_NOTE && module.buildId.empty()) {
            module.buildId = BuildIdIn(reinterpret_cast<unsigned char const*>(begin), segment.p_memsz);
        }
    }
    return module;
}

/// The file that is mapped at an address, whatever name it was loaded by.
std::string MappedFileAt(std::uintptr_t address)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        char* end = nullptr;
        std::uintptr_t const begin = std::strtoull(line.c_str(), &end, 16);
        if (*end == '-' && address >= begin && address < std::strtoull(end + 1, nullptr, 16)) {
            auto const slash = line.find('/');
            return slash != std::string::npos ? line.substr(slash) : std::string();
        }
    }
    return {};
}

std::vector<Loaded> LoadedNow()
{
    struct Walk
    {
        std::vector<Loaded> modules;
        std::exception_ptr failure;
    } walk;
    // The C library's frames are no place for exceptions to pass.
    ::dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* data) {
            Walk& w = *static_cast<Walk*>(data);
            try {
                w.modules.push_back(Describe(*info));
            } catch (...) {
                w.failure = std::current_exception();
                return 1;
            }
            return 0;
        },
        &walk);
    if (walk.failure) {
        std::rethrow_exception(walk.failure);
    }
    for (Loaded& module : walk.modules) {
        if (module.path.empty() || module.path.front() != '/') {
            std::string path = MappedFileAt(module.begin);
            module.path = path.empty() ? module.path : std::move(path);
        }
    }
    if (!walk.modules.empty() && walk.modules.front().path.empty()) {
        walk.modules.front().path = kProgram;
    }
    return std::move(walk.modules);
}

/// Without the version that tables of shared libraries have behind names: "name@@VERSION".
std::string Demangled(char const* text)
{
    std::string mangled(text, std::strcspn(text, "@"));
    if (mangled.starts_with("_Z")) {
        std::unique_ptr<char, void (*)(void*)> const plain(
            abi::__cxa_demangle(mangled.c_str(), nullptr, nullptr, nullptr), std::free);
        return plain ? plain.get() : mangled;
    }
    return mangled;
}

class Module
{
public:
    Module(Loaded loaded, bool isProgram) : m_loaded(std::move(loaded)), m_isProgram(isProgram) {}

    [[nodiscard]] Loaded const& At() const noexcept { return m_loaded; }

    /// Whether this is the module that the linker now lists: same place, same contents.
    [[nodiscard]] bool Is(Loaded const& now) const
    {
        return now.begin == m_loaded.begin && now.end == m_loaded.end && now.path == m_loaded.path &&
               now.buildId == m_loaded.buildId &&
               (!now.buildId.empty() || !m_file || m_file->Identity() == IdentityOf(FilePath()));
    }

    void Read(std::uintptr_t address, bool wantLine, std::vector<std::string> const& folders, SymbolPieces& pieces,
              std::size_t& rows)
    {
        auto const slash = m_loaded.path.rfind('/');
        pieces.module = slash == std::string::npos ? m_loaded.path : m_loaded.path.substr(slash + 1);
        Open(folders);
        std::uint64_t const inFile = address - m_loaded.bias;
        char const* name = Functions().Find(inFile);
        LineTables* const lines = wantLine || name == nullptr ? Lines(folders) : nullptr;
        if (name == nullptr && lines != nullptr) {
            name = lines->FunctionName(inFile);
        }
        if (name == nullptr && !m_file) {
            // The module is there, its file is not: the dynamic linker knows at least what it exports.
            Dl_info info{};
            name = ::dladdr(reinterpret_cast<void*>(address), &info) != 0 ? info.dli_sname : nullptr;
        }
        pieces.symbol = name != nullptr ? Demangled(name) : std::string();
        if (wantLine && lines != nullptr) {
            auto const place = lines->Find(inFile, rows);
            if (place.file != nullptr) {
                pieces.file = place.file;
                pieces.line = place.line;
            }
        }
    }

    LoadedModule Report(std::vector<std::string> const& folders)
    {
        Open(folders);
        LoadedModule report;
        report.path = m_loaded.path;
        report.base = m_loaded.begin;
        report.size = m_loaded.end - m_loaded.begin;
        report.buildId = HexText(m_loaded.buildId);
        report.debugFile = m_debug ? m_debug->Path() : std::string();
        auto const has = [this](auto const& test) { return (m_file && test(*m_file)) || (m_debug && test(*m_debug)); };
        if (has([](ElfFile const& file) { return file.HasLineInformation(); })) {
            report.source = SymbolSource::LineInformation;
        } else if (has([](ElfFile const& file) {
                       return file.SectionOfType(SHT_SYMTAB) != nullptr || file.Section(".gnu_debugdata") != nullptr;
                   })) {
            report.source = SymbolSource::SymbolTable;
        } else if (!m_file || m_file->SectionOfType(SHT_DYNSYM) != nullptr) {
            report.source = SymbolSource::DynamicSymbols;
        }
        return report;
    }

    void DropLines() noexcept { m_lines.reset(); }

    void Close() noexcept
    {
        m_lines.reset();
        m_functions.reset();
        m_embedded.reset();
        m_debug.reset();
        m_file.reset();
        m_isOpen = false;
    }

private:
    [[nodiscard]] std::string FilePath() const { return m_isProgram ? kProgram : m_loaded.path; }

    void Open(std::vector<std::string> const& folders)
    {
        if (m_isOpen) {
            return;
        }
        m_isOpen = true;
        m_file = ElfFile::Open(FilePath());
        if (m_file && m_file->BuildId() != m_loaded.buildId) {
            m_file.reset(); // another one, put in its place since
        }
        bool const complete = m_file && m_file->SectionOfType(SHT_SYMTAB) != nullptr && m_file->HasLineInformation();
        if (m_file && !complete) {
            m_debug = FindDebugFile(*m_file, m_loaded.path, folders);
        } else if (!m_file) {
            m_debug = FindByBuildId(m_loaded.buildId, folders);
        }
    }

    FunctionTable const& Functions()
    {
        if (!m_functions) {
            auto table = std::make_unique<FunctionTable>();
            if (m_file && m_file->SectionOfType(SHT_SYMTAB) != nullptr) {
                table->Add(*m_file, SHT_SYMTAB);
            } else if (m_debug && m_debug->SectionOfType(SHT_SYMTAB) != nullptr) {
                table->Add(*m_debug, SHT_SYMTAB);
            } else if (m_file) {
                table->Add(*m_file, SHT_DYNSYM);
                m_embedded = ElfFile::OpenEmbedded(*m_file);
                if (m_embedded) {
                    table->Add(*m_embedded, SHT_SYMTAB);
                }
            }
            table->Finish();
            m_functions = std::move(table);
        }
        return *m_functions;
    }

    /// Null when the module has no line information.
    LineTables* Lines(std::vector<std::string> const& folders)
    {
        if (!m_lines) {
            ElfFile const* const file = m_file && m_file->HasLineInformation()     ? m_file.get()
                                        : m_debug && m_debug->HasLineInformation() ? m_debug.get()
                                                                                   : nullptr;
            if (file == nullptr) {
                return nullptr;
            }
            m_lines = std::make_unique<LineTables>(*file, folders);
        }
        return m_lines.get();
    }

    Loaded m_loaded;
    bool m_isProgram;
    bool m_isOpen = false;
    std::unique_ptr<ElfFile> m_file;
    std::unique_ptr<ElfFile> m_debug;
    std::unique_ptr<ElfFile> m_embedded;
    std::unique_ptr<FunctionTable> m_functions;
    std::unique_ptr<LineTables> m_lines; ///< goes before the files
};

class KeepErrno
{
public:
    KeepErrno() noexcept : m_before(errno) {}
    ~KeepErrno() { errno = m_before; }
    KeepErrno(KeepErrno const&) = delete;
    KeepErrno& operator=(KeepErrno const&) = delete;

private:
    int m_before;
};

} // namespace

std::uint64_t ModuleGeneration() noexcept
{
    std::uint64_t generation = 0;
    ::dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* data) {
            // Only ever growing, both; together they change with any load or unload.
            *static_cast<std::uint64_t*>(data) = (info->dlpi_subs << 32) + info->dlpi_adds;
            return 1;
        },
        &generation);
    return generation;
}

struct SymbolReader::State
{
    std::vector<std::unique_ptr<Module>> inLoadOrder;
    std::vector<Module*> byAddress;
    std::string searchPath;
    std::vector<std::string> folders;
    std::size_t rows = 0;

    void SetSearchPath(std::string const& path)
    {
        searchPath = path;
        folders.clear();
        for (std::size_t begin = 0; begin <= path.size();) {
            auto const end = std::min(path.find(':', begin), path.size());
            if (end != begin) {
                folders.push_back(path.substr(begin, end - begin));
            }
            begin = end + 1;
        }
        folders.emplace_back("/usr/lib/debug");
    }

    [[nodiscard]] Module* Find(std::uintptr_t address) const noexcept
    {
        auto const behind = std::upper_bound(byAddress.begin(), byAddress.end(), address,
                                             [](std::uintptr_t a, Module* m) { return a < m->At().begin; });
        return behind != byAddress.begin() && address < (*std::prev(behind))->At().end ? *std::prev(behind) : nullptr;
    }
};

SymbolReader::SymbolReader() : m_state(std::make_unique<State>())
{
    m_state->SetSearchPath({});
}

SymbolReader::~SymbolReader() = default;

void SymbolReader::Refresh(std::string const& searchPath)
{
    KeepErrno const keep;
    State& state = *m_state;
    if (searchPath != state.searchPath) {
        state.SetSearchPath(searchPath);
        Forget();
    }
    std::vector<std::unique_ptr<Module>> modules;
    std::vector<Module*> byAddress;
    for (Loaded& loaded : LoadedNow()) {
        auto const before = std::find_if(state.inLoadOrder.begin(), state.inLoadOrder.end(),
                                         [&](auto const& module) { return module && module->Is(loaded); });
        modules.push_back(before != state.inLoadOrder.end()
                              ? std::move(*before)
                              : std::make_unique<Module>(std::move(loaded), modules.empty()));
        byAddress.push_back(modules.back().get());
    }
    std::sort(byAddress.begin(), byAddress.end(),
              [](Module const* a, Module const* b) { return a->At().begin < b->At().begin; });
    state.inLoadOrder = std::move(modules);
    state.byAddress = std::move(byAddress);
}

SymbolPieces SymbolReader::Read(std::uintptr_t address, bool wantLine)
{
    KeepErrno const keep;
    State& state = *m_state;
    SymbolPieces pieces;
    if (Module* const module = state.Find(address)) {
        module->Read(address, wantLine, state.folders, pieces, state.rows);
    }
    if (state.rows > kMostRows) {
        for (auto const& module : state.inLoadOrder) {
            module->DropLines();
        }
        state.rows = 0;
    }
    return pieces;
}

std::vector<LoadedModule> SymbolReader::Modules()
{
    KeepErrno const keep;
    std::vector<LoadedModule> reports;
    for (auto const& module : m_state->inLoadOrder) {
        reports.push_back(module->Report(m_state->folders));
    }
    return reports;
}

void SymbolReader::Forget() noexcept
{
    for (auto& module : m_state->inLoadOrder) {
        module->Close();
    }
    m_state->rows = 0;
}

} // namespace qvxsys::stack
