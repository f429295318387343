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

#include <cxxabi.h>
#include <dlfcn.h>
#include <link.h>
#include <pthread.h>

#include "BuildIdNote.h"
#include "ElfFile.h"
#include "KeepErrno.h"
#include "LineTables.h"
#include "LinkedName_linux.h"
#include "MappedFile_linux.h"

namespace qvxsys::stack {
namespace {

using platform::KeepErrno;
using quorvex::symbols::LoadedModule;
using quorvex::symbols::SymbolSource;

/// Rows of line tables that are kept, some 80 bytes each.
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

Loaded Describe(dl_phdr_info const& info)
{
    Loaded module;
    module.path = platform::LinkedName(info);
    module.bias = info.dlpi_addr;
    module.begin = UINTPTR_MAX;
    for (ElfW(Half) i = 0; i < info.dlpi_phnum; ++i) {
        ElfW(Phdr) const& segment = info.dlpi_phdr[i];
        std::uintptr_t const begin = info.dlpi_addr + segment.p_vaddr;
        if (segment.p_type == PT_LOAD) {
            module.begin = std::min(module.begin, begin);
            module.end = std::max(module.end, begin + segment.p_memsz);
        } else if (segment.p_type == PT_NOTE && module.buildId.empty()) {
            auto const id =
                unwind::BuildIdIn({reinterpret_cast<unsigned char const*>(begin), segment.p_memsz}, segment.p_align);
            module.buildId.assign(id.begin(), id.end());
        }
    }
    return module;
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
            std::string path = platform::MappedFile(module.begin);
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
        auto const function = Functions().Find(inFile);
        char const* name = function.name;
        LineTables* const lines = wantLine || !function.isExact ? Lines(folders) : nullptr;
        if (!function.isExact && lines != nullptr) {
            char const* const described = lines->FunctionName(inFile);
            name = described != nullptr ? described : name;
        }
        // The module is there, its file is not: the dynamic linker knows at least what it exports.
        pieces.askLinker = name == nullptr && !m_file;
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
        // A program that the dynamic linker was told to run is not what /proc/self/exe names.
        for (std::string const& path : {FilePath(), m_loaded.path}) {
            m_file = ElfFile::Open(path);
            if (m_file && m_file->BuildId() == m_loaded.buildId) {
                break;
            }
            m_file.reset(); // another one, put in its place since
        }
        bool const complete = m_file && m_file->SectionOfType(SHT_SYMTAB) != nullptr && m_file->HasLineInformation();
        if (m_file && !complete) {
            m_debug = FindDebugFile(*m_file, m_loaded.path, folders);
        } else if (!m_file) {
            m_debug = FindByBuildId(m_loaded.buildId, folders);
        }
        m_isOpen = true;
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

std::vector<std::string> FoldersIn(std::string const& searchPath)
{
    std::vector<std::string> folders;
    for (std::size_t begin = 0; begin <= searchPath.size();) {
        auto const end = std::min(searchPath.find(':', begin), searchPath.size());
        if (end != begin) {
            folders.push_back(searchPath.substr(begin, end - begin));
        }
        begin = end + 1;
    }
    folders.emplace_back("/usr/lib/debug");
    return folders;
}

} // namespace

std::string ExportedName(std::uintptr_t address)
{
    Dl_info info{};
    bool const isKnown = ::dladdr(reinterpret_cast<void*>(address), &info) != 0 && info.dli_sname != nullptr;
    return isKnown ? Demangled(info.dli_sname) : std::string();
}

void AtFork(void (*before)(), void (*inParent)(), void (*inChild)()) noexcept
{
    static_cast<void>(::pthread_atfork(before, inParent, inChild));
}

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
    std::vector<std::string> folders = FoldersIn({});
    std::size_t rows = 0;

    [[nodiscard]] Module* Find(std::uintptr_t address) const noexcept
    {
        auto const behind = std::upper_bound(byAddress.begin(), byAddress.end(), address,
                                             [](std::uintptr_t a, Module* m) { return a < m->At().begin; });
        return behind != byAddress.begin() && address < (*std::prev(behind))->At().end ? *std::prev(behind) : nullptr;
    }
};

SymbolReader::SymbolReader() : m_state(std::make_unique<State>())
{}

SymbolReader::~SymbolReader() = default;

void SymbolReader::Refresh(std::string const& searchPath)
{
    KeepErrno const keep;
    State& state = *m_state;
    std::string path = searchPath;
    std::vector<std::string> folders = FoldersIn(path);
    std::vector<Loaded> now = LoadedNow();
    std::vector<std::unique_ptr<Module>> modules(now.size()); // new ones; null: one of before
    std::vector<Module*> byAddress(now.size());
    for (std::size_t i = 0; i < now.size(); ++i) {
        auto const before = std::find_if(state.inLoadOrder.begin(), state.inLoadOrder.end(),
                                         [&](auto const& m) { return m->Is(now[i]); });
        if (before == state.inLoadOrder.end()) {
            modules[i] = std::make_unique<Module>(std::move(now[i]), i == 0);
        }
        byAddress[i] = modules[i] ? modules[i].get() : before->get();
    }
    // Nothing fails from here on.
    for (auto& before : state.inLoadOrder) {
        auto const place = std::find(byAddress.begin(), byAddress.end(), before.get());
        if (place != byAddress.end()) {
            modules[static_cast<std::size_t>(place - byAddress.begin())] = std::move(before);
        }
    }
    std::sort(byAddress.begin(), byAddress.end(),
              [](Module const* a, Module const* b) { return a->At().begin < b->At().begin; });
    state.inLoadOrder = std::move(modules);
    state.byAddress = std::move(byAddress);
    if (path != state.searchPath) {
        state.searchPath = std::move(path);
        state.folders = std::move(folders);
        Forget();
    }
}

SymbolPieces SymbolReader::Read(std::uintptr_t address, bool wantLine)
{
    KeepErrno const keep;
    State& state = *m_state;
    SymbolPieces pieces;
    if (Module* const module = state.Find(address)) {
        // What libelf and libdw did not find they do not look for again; want of means does not last as long as that.
        errno = 0;
        try {
            module->Read(address, wantLine, state.folders, pieces, state.rows);
        } catch (...) {
            module->Close();
            throw;
        }
        if (errno == ENOMEM || errno == EMFILE || errno == ENFILE) {
            module->Close();
            pieces.isFinal = false;
        }
    }
    if (state.rows > kMostRows) {
        Forget(); // libdw cannot forget a part of a file
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
