// The system's debug-help library. It knows PDB files, exported names and COFF symbols; programs made by GCC have their
// line information in a form that Microsoft's library does not read (Wine's does).

#include "SymbolReader.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>

#include <cxxabi.h>

#include "DebugHelp.h"
#include "WindowsApi.h"

#include <dbghelp.h>
#include <tlhelp32.h>

namespace qvxsys::stack {
namespace {

using quorvex::symbols::LoadedModule;
using quorvex::symbols::SymbolSource;

std::string Narrow(wchar_t const* text)
{
    int const units = static_cast<int>(::wcslen(text));
    int const bytes = ::WideCharToMultiByte(CP_UTF8, 0, text, units, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(std::max(bytes, 0)), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text, units, result.data(), bytes, nullptr, nullptr);
    return result;
}

std::wstring Wide(std::string const& text)
{
    int const bytes = static_cast<int>(text.size());
    int const units = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, nullptr, 0);
    std::wstring result(static_cast<std::size_t>(std::max(units, 0)), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, text.data(), bytes, result.data(), units);
    return result;
}

/// What a function writes into a buffer of its caller's.
template<class Write>
std::wstring Written(Write write)
{
    wchar_t buffer[1024];
    DWORD const length = write(buffer, static_cast<DWORD>(std::size(buffer)));
    return {buffer, length < std::size(buffer) ? length : 0};
}

std::wstring FolderOf(std::wstring const& path)
{
    auto const slash = path.find_last_of(L"\\/");
    return slash == std::wstring::npos ? std::wstring() : path.substr(0, slash);
}

std::wstring SearchPathOf(std::string const& user)
{
    std::wstring path = user.empty() ? L"" : Wide(user) + L';';
    path += L".;";
    path += Written([](wchar_t* to, DWORD n) { return ::GetCurrentDirectoryW(n, to); }) + L';';
    path += FolderOf(Written([](wchar_t* to, DWORD n) { return ::GetModuleFileNameW(nullptr, to, n); })) + L';';
    path += Written([](wchar_t* to, DWORD n) { return ::GetWindowsDirectoryW(to, n); }) + L';';
    path += Written([](wchar_t* to, DWORD n) { return ::GetSystemDirectoryW(to, n); }) + L';';
    return path;
}

std::string Demangled(std::string name)
{
    if (name.starts_with("_Z")) {
        int status = 0;
        std::unique_ptr<char, void (*)(void*)> const text(abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status),
                                                          std::free);
        if (text && status == 0) {
            return text.get();
        }
    }
    return name;
}

std::atomic<std::uint64_t> g_generation{1};

void CALLBACK CountModules(ULONG, void const*, void*)
{
    g_generation.fetch_add(1, std::memory_order_acq_rel);
}

/// The loader calls CountModules from now on, so this library stays loaded.
bool WatchModules() noexcept
{
    using Register = LONG(WINAPI*)(ULONG, void(CALLBACK*)(ULONG, void const*, void*), void*, void**);
    HMODULE self = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                         reinterpret_cast<wchar_t const*>(&CountModules), &self);
    auto const watch = reinterpret_cast<Register>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "LdrRegisterDllNotification")));
    void* cookie = nullptr;
    return watch != nullptr && watch(0, &CountModules, nullptr, &cookie) == 0;
}

struct Known
{
    DWORD64 base;
    DWORD size;
    std::wstring path;
    std::wstring name;
    [[nodiscard]] friend bool operator==(Known const&, Known const&) = default;
};

std::vector<Known> Snapshot()
{
    std::vector<Known> modules;
    HANDLE const snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, ::GetCurrentProcessId());
    if (snapshot == INVALID_HANDLE_VALUE) {
        return modules;
    }
    MODULEENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = ::Module32FirstW(snapshot, &entry); more; more = ::Module32NextW(snapshot, &entry)) {
        modules.push_back(
            {reinterpret_cast<DWORD64>(entry.modBaseAddr), entry.modBaseSize, entry.szExePath, entry.szModule});
    }
    ::CloseHandle(snapshot);
    return modules;
}

/// The library's turn, with the caller's last error as it was.
class Turn
{
    platform::KeepLastError m_before;
    std::lock_guard<std::mutex> m_lock{DebugHelpTurn()};
};

SymbolSource SourceOf(IMAGEHLP_MODULEW64 const& info) noexcept
{
    if (info.LineNumbers) {
        return SymbolSource::LineInformation;
    }
    switch (info.SymType) {
    case SymNone:
    case SymDeferred:
        return SymbolSource::None;
    case SymExport:
        return SymbolSource::DynamicSymbols;
    default:
        return SymbolSource::SymbolTable;
    }
}

} // namespace

std::string ExportedName(std::uintptr_t)
{
    return {}; // dbghelp has said it all
}

void AtFork(void (*)(), void (*)(), void (*)()) noexcept
{}

std::uint64_t ModuleGeneration() noexcept
{
    static bool const isWatched = WatchModules();
    // Without it every lookup looks for itself.
    return isWatched ? g_generation.load(std::memory_order_acquire)
                     : g_generation.fetch_add(1, std::memory_order_acq_rel);
}

struct SymbolReader::State
{
    HANDLE process = nullptr; ///< of our own, so that the program's own use of the library is apart from ours
    bool initialised = false;
    std::string searchPath;
    std::vector<Known> modules;

    void Initialise()
    {
        if (initialised) {
            ::SymRefreshModuleList(process);
        } else {
            constexpr DWORD kOptions = SYMOPT_DEFERRED_LOADS | SYMOPT_LOAD_LINES | SYMOPT_FAIL_CRITICAL_ERRORS |
                                       SYMOPT_NO_PROMPTS | SYMOPT_UNDNAME;
            ::SymSetOptions(::SymGetOptions() | kOptions);
            initialised = ::SymInitializeW(process, SearchPathOf(searchPath).c_str(), TRUE) != FALSE;
        }
        std::vector<Known> now = Snapshot();
        for (Known const& before : modules) {
            if (std::find(now.begin(), now.end(), before) == now.end()) {
                ::SymUnloadModule64(process, before.base);
            }
        }
        for (Known const& module : now) {
            ::SymLoadModuleExW(process, nullptr, module.path.c_str(), module.name.c_str(), module.base, module.size,
                               nullptr, 0);
        }
        modules = std::move(now);
    }

    void CleanUp() noexcept
    {
        if (initialised) {
            ::SymCleanup(process);
            initialised = false;
        }
    }

    bool Info(DWORD64 address, IMAGEHLP_MODULEW64& info) const noexcept
    {
        std::memset(&info, 0, sizeof info);
        info.SizeOfStruct = sizeof info;
        return ::SymGetModuleInfoW64(process, address, &info) != FALSE;
    }

    std::string Symbol(DWORD64 address) const
    {
        alignas(SYMBOL_INFOW) char buffer[sizeof(SYMBOL_INFOW) + kSymbolNameLength * sizeof(wchar_t)] = {};
        auto& symbol = *reinterpret_cast<SYMBOL_INFOW*>(buffer);
        symbol.SizeOfStruct = sizeof symbol;
        symbol.MaxNameLen = static_cast<ULONG>(kSymbolNameLength);
        DWORD64 displacement = 0;
        return ::SymFromAddrW(process, address, &displacement, &symbol) ? Demangled(Narrow(symbol.Name))
                                                                        : std::string();
    }
};

SymbolReader::SymbolReader() : m_state(std::make_unique<State>())
{
    HANDLE const self = ::GetCurrentProcess();
    if (!::DuplicateHandle(self, self, self, &m_state->process, 0, FALSE, DUPLICATE_SAME_ACCESS)) {
        m_state->process = self;
    }
}

SymbolReader::~SymbolReader() = default;

void SymbolReader::Refresh(std::string const& searchPath)
{
    Turn const turn;
    if (searchPath != m_state->searchPath) {
        m_state->CleanUp();
        m_state->searchPath = searchPath;
    }
    m_state->Initialise();
}

SymbolPieces SymbolReader::Read(std::uintptr_t address, bool wantLine)
{
    Turn const turn;
    State& state = *m_state;
    if (!state.initialised) {
        state.Initialise();
    }
    SymbolPieces pieces;
    pieces.symbol = state.Symbol(address);
    if (wantLine) {
        IMAGEHLP_LINEW64 line{};
        line.SizeOfStruct = sizeof line;
        DWORD displacement = 0;
        if (::SymGetLineFromAddrW64(state.process, address, &displacement, &line) && line.FileName != nullptr) {
            pieces.file = Narrow(line.FileName);
            pieces.line = static_cast<int>(line.LineNumber);
        }
    }
    IMAGEHLP_MODULEW64 info;
    if (state.Info(address, info)) {
        pieces.module = Narrow(info.ModuleName);
    }
    return pieces;
}

std::vector<LoadedModule> SymbolReader::Modules()
{
    Turn const turn;
    State& state = *m_state;
    if (!state.initialised) {
        state.Initialise();
    }
    std::vector<LoadedModule> reports;
    for (Known const& module : state.modules) {
        LoadedModule report;
        report.path = Narrow(module.path.c_str());
        report.base = module.base;
        report.size = module.size;
        static_cast<void>(state.Symbol(module.base)); // symbols are loaded when they are asked for
        IMAGEHLP_MODULEW64 info;
        if (state.Info(module.base, info)) {
            report.source = SourceOf(info);
            report.debugFile = Narrow(info.LoadedPdbName);
        }
        reports.push_back(std::move(report));
    }
    return reports;
}

void SymbolReader::Forget() noexcept
{
    Turn const turn;
    m_state->CleanUp();
}

} // namespace qvxsys::stack
