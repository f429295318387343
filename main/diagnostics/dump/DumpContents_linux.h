#pragma once
// What goes into a dump, as it is found in a process whose threads stand still.

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include <ucontext.h>

#include "Arena_linux.h"
#include "ElfImage.h"
#include "MinidumpFormat.h"
#include "PageMap_linux.h"
#include "ProcMaps.h"
#include "TracedProcess_linux.h"

namespace qvxsys::dump {

/// What is to be written, of which process.
struct DumpRequest
{
    int process;
    std::uint32_t type; ///< MINIDUMP_TYPE
    char const* path;   ///< UTF-8, absolute or from the current folder
    int thread;         ///< whose registers are `context` instead of those it is found with; 0: none
    ucontext_t context;
    bool hasFloats; ///< else the thread's floats are as they are found
    user_fpregs_struct floats;
    bool crashed; ///< the thread was ended by `signal`
    siginfo_t signal;
    std::uint64_t patience; ///< ns to wait for another tracer to leave
    bool helper;            ///< the dump is written by a process that was made for it
};

struct DumpResult
{
    int error;                ///< an errno value, 0: written
    std::uint64_t stoppedFor; ///< ns
    std::uint64_t size;       ///< of the file
    std::uint32_t threads;
    std::uint64_t unreadablePages;
};

struct DumpedThread
{
    int id;
    CONTEXT context;
    std::uint64_t threadPointer;
    std::size_t stack; ///< which of the blocks; SIZE_MAX: none
};

struct DumpedModule
{
    std::uint64_t start;
    std::uint64_t end;
    std::string_view name;
    BuildId id;
};

/// Memory that was copied.
struct MemoryBlock
{
    std::uint64_t address;
    std::size_t size;
    std::byte* data;
};

struct LinkMap
{
    std::uint64_t address;
    std::uint64_t dynamic;
    std::string_view name;
};

class DumpContents
{
public:
    DumpContents(Arena& arena, TracedProcess& process, DumpRequest const& request) noexcept;

    /// Reads all but the ranges, while the threads stand still. 0; ENOMEM; ESRCH if the process ended meanwhile, as far
    /// as that was noticed; ENOTSUP if the kernel does not tell which pages of the ranges were ever written.
    int Collect() noexcept;

    ArenaArray<Mapping> mappings;
    ArenaArray<DumpedThread> threads;
    ArenaArray<DumpedModule> modules; ///< the program first
    ArenaArray<MemoryBlock> blocks;
    ArenaArray<MemoryRange> ranges;
    ArenaArray<LinkMap> linkMaps;
    LinuxDebug64 linker{};
    std::uint64_t unreadablePages = 0;

    [[nodiscard]] bool Has(std::uint32_t flag) const noexcept { return (m_request.type & flag) != 0; }
    [[nodiscard]] Mapping const* FindMapping(std::uint64_t address) const noexcept;

private:
    void ReadMappings() noexcept;
    void CollectThreads() noexcept;
    void CollectStack(DumpedThread& thread) noexcept;
    void FilterStack(MemoryBlock const& block) noexcept;
    void CollectModules() noexcept;
    void AddModule(Mapping const& mapping) noexcept;
    void MoveProgramToFront(std::uint64_t entry) noexcept;
    void CollectLinker(std::uint64_t headers, std::size_t count) noexcept;
    void CollectCode() noexcept;
    void CollectReferenced() noexcept;
    int CollectRanges() noexcept;
    [[nodiscard]] bool IsWanted(Mapping const& mapping, bool inModule) const noexcept;
    std::size_t AddBlock(std::uint64_t address, std::size_t size) noexcept;

    Arena& m_arena;
    TracedProcess& m_process;
    DumpRequest const& m_request;
    ArenaBytes m_mapsText;
    std::size_t m_stackBytes = 0;
};

} // namespace qvxsys::dump
