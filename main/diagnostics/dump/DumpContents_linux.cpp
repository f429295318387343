#include "DumpContents_linux.h"

#include <algorithm>
#include <cerrno>

#include <elf.h>

#include <qvxsys/CrashDump.h>

namespace qvxsys::dump {
namespace {

using namespace qvxsys::minidump;

constexpr std::size_t kMostFile = 64 << 20;    // of /proc/PID/maps
constexpr std::size_t kRedZone = 128;          // below the stack pointer (System V ABI)
constexpr std::uint64_t kGuard = 1 << 20;      // how far a stack may have run over
constexpr std::size_t kMostStack = 16 << 20;   // of one thread
constexpr std::size_t kMostStacks = 256 << 20; // of all; beyond, threads have kLeastStack each
constexpr std::size_t kLeastStack = 64 << 10;
constexpr std::size_t kCodeBefore = 128; // around the instruction pointer
constexpr std::size_t kCodeAfter = 128;
constexpr std::uint64_t kReferenced = 1024;                    // around what a pointer on a stack points to
constexpr std::size_t kMostReferenced = 64 << 10;              // such places
constexpr std::uint64_t kReservation = std::uint64_t{1} << 40; // mappings from this size on are address space, not data

void FillContext(user_regs_struct const& from, CONTEXT& to) noexcept
{
    to.Rax = from.rax, to.Rbx = from.rbx, to.Rcx = from.rcx, to.Rdx = from.rdx;
    to.Rsi = from.rsi, to.Rdi = from.rdi, to.Rbp = from.rbp, to.Rsp = from.rsp;
    to.R8 = from.r8, to.R9 = from.r9, to.R10 = from.r10, to.R11 = from.r11;
    to.R12 = from.r12, to.R13 = from.r13, to.R14 = from.r14, to.R15 = from.r15;
    to.Rip = from.rip;
    to.EFlags = static_cast<std::uint32_t>(from.eflags);
    to.SegCs = static_cast<std::uint16_t>(from.cs), to.SegSs = static_cast<std::uint16_t>(from.ss);
    to.SegDs = static_cast<std::uint16_t>(from.ds), to.SegEs = static_cast<std::uint16_t>(from.es);
    to.SegFs = static_cast<std::uint16_t>(from.fs), to.SegGs = static_cast<std::uint16_t>(from.gs);
}

void FillContext(ucontext_t const& from, CONTEXT& to) noexcept
{
    auto const reg = [&](int which) { return static_cast<std::uint64_t>(from.uc_mcontext.gregs[which]); };
    to.Rax = reg(REG_RAX), to.Rbx = reg(REG_RBX), to.Rcx = reg(REG_RCX), to.Rdx = reg(REG_RDX);
    to.Rsi = reg(REG_RSI), to.Rdi = reg(REG_RDI), to.Rbp = reg(REG_RBP), to.Rsp = reg(REG_RSP);
    to.R8 = reg(REG_R8), to.R9 = reg(REG_R9), to.R10 = reg(REG_R10), to.R11 = reg(REG_R11);
    to.R12 = reg(REG_R12), to.R13 = reg(REG_R13), to.R14 = reg(REG_R14), to.R15 = reg(REG_R15);
    to.Rip = reg(REG_RIP);
    to.EFlags = static_cast<std::uint32_t>(reg(REG_EFL));
}

bool IsKernelData(Mapping const& mapping) noexcept
{
    return mapping.name.starts_with("[vvar") || mapping.name == "[vsyscall]";
}

/// Pages that exist only where somebody wrote: memory, not a file on a disk. A program or library that was replaced
/// while it ran is a deleted file, too, but a private one.
bool IsMemory(Mapping const& mapping) noexcept
{
    return mapping.inode == 0 || (mapping.shared && mapping.name.ends_with(" (deleted)")) ||
           mapping.name.starts_with("/dev/") || mapping.name.starts_with("/memfd:");
}

} // namespace

DumpContents::DumpContents(Arena& arena, TracedProcess& process, DumpRequest const& request) noexcept
    : mappings(arena), threads(arena), modules(arena), blocks(arena), ranges(arena), linkMaps(arena), m_arena(arena),
      m_process(process), m_request(request), m_mapsText(arena)
{}

int DumpContents::Collect() noexcept
{
    ReadMappings();
    CollectThreads();
    CollectModules();
    if (!Has(MiniDumpWithoutOptionalData)) {
        CollectCode();
    }
    if (Has(MiniDumpWithIndirectlyReferencedMemory)) {
        CollectReferenced();
    }
    int const error = CollectRanges();
    return m_arena.Failed() ? ENOMEM : error;
}

void DumpContents::ReadMappings() noexcept
{
    ReadFile(ShortPath() << "/proc/" << m_process.LivingId() << "/maps", m_mapsText, kMostFile);
    ForEachMapping({m_mapsText.Data(), m_mapsText.Size()}, [this](Mapping const& mapping) { mappings.Add(mapping); });
}

/// The mapping that the address lies in, or else the next one above; null when there is none.
Mapping const* DumpContents::FindMapping(std::uint64_t address) const noexcept
{
    Mapping const* const found = std::upper_bound(mappings.begin(), mappings.end(), address,
                                                  [](std::uint64_t a, Mapping const& m) { return a < m.end; });
    return found == mappings.end() ? nullptr : found;
}

std::size_t DumpContents::AddBlock(std::uint64_t address, std::size_t size) noexcept
{
    std::byte* const data = static_cast<std::byte*>(m_arena.Take(size));
    if (data == nullptr || size == 0) {
        return SIZE_MAX;
    }
    unreadablePages += m_process.ReadPatched(address, data, size);
    blocks.Add({address, size, data});
    return blocks.Size() - 1;
}

void DumpContents::CollectThreads() noexcept
{
    for (TracedThread const& found : m_process.Threads()) {
        DumpedThread* const thread = threads.Add();
        if (thread == nullptr) {
            return;
        }
        thread->id = found.id;
        thread->threadPointer = found.registers.fs_base;
        thread->stack = SIZE_MAX;
        thread->context.ContextFlags = CONTEXT_CONTROL | CONTEXT_INTEGER | CONTEXT_SEGMENTS | CONTEXT_FLOATING_POINT;
        FillContext(found.registers, thread->context);
        bool const given = found.id == m_request.thread;
        if (given) {
            FillContext(m_request.context, thread->context);
        }
        user_fpregs_struct const& floats = given && m_request.hasFloats ? m_request.floats : found.floats;
        static_assert(sizeof floats == sizeof thread->context.FltSave);
        std::memcpy(thread->context.FltSave, &floats, sizeof floats);
        thread->context.MxCsr = floats.mxcsr;
        CollectStack(*thread);
    }
}

/// From the stack pointer up to the end of the mapping. A pointer that has run over the stack's end lies below it, in
/// a guard page or in nothing.
void DumpContents::CollectStack(DumpedThread& thread) noexcept
{
    std::uint64_t const pointer = thread.context.Rsp;
    Mapping const* mapping = FindMapping(pointer);
    while (mapping != nullptr && !mapping->readable && mapping->end - pointer <= kGuard) {
        mapping = FindMapping(mapping->end);
    }
    if (mapping == nullptr || !mapping->readable || (pointer < mapping->start && mapping->start - pointer > kGuard)) {
        return;
    }
    std::uint64_t const start =
        std::max(mapping->start, pointer < kRedZone ? 0 : pointer - kRedZone) & ~std::uint64_t{15};
    std::size_t const most = m_stackBytes < kMostStacks ? kMostStack : kLeastStack;
    thread.stack = AddBlock(start, static_cast<std::size_t>(std::min<std::uint64_t>(mapping->end - start, most)));
    if (thread.stack == SIZE_MAX) {
        return;
    }
    m_stackBytes += blocks[thread.stack].size;
    if (Has(MiniDumpFilterMemory | MiniDumpFilterTriage)) {
        FilterStack(blocks[thread.stack]);
    }
}

/// Leaves what is needed to walk the stack: return addresses and addresses within the stack. All else may be data.
void DumpContents::FilterStack(MemoryBlock const& block) noexcept
{
    for (std::size_t at = 0; at + 8 <= block.size; at += 8) {
        std::uint64_t word;
        std::memcpy(&word, block.data + at, sizeof word);
        Mapping const* const mapping = FindMapping(word);
        bool const code = mapping != nullptr && mapping->executable && word >= mapping->start;
        if (!code && (word < block.address || word >= block.address + block.size)) {
            std::memset(block.data + at, 0, sizeof word);
        }
    }
}

void DumpContents::AddModule(Mapping const& mapping) noexcept
{
    char name[4096];
    std::size_t size = FileNameOf(mapping, name, sizeof name);
    std::string_view text(name, size);
    if (mapping.name == "[vdso]") {
        text = "linux-gate.so";
    } else if (Has(MiniDumpFilterModulePaths | MiniDumpFilterTriage)) {
        text.remove_prefix(text.rfind('/') + 1);
    }
    ArenaBytes kept(m_arena);
    DumpedModule* const module = modules.Add();
    char const* const data = kept.Append(text.data(), text.size());
    if (module != nullptr && data != nullptr) {
        *module = {mapping.start, mapping.end, {data, text.size()}, {}};
    }
}

/// A module is a run of mappings of one file, at least one of them executable, from its first page on.
void DumpContents::CollectModules() noexcept
{
    std::string_view current;
    bool code = false;
    auto const endModule = [&] {
        if (!current.empty() && !code) {
            modules.Shrink(modules.Size() - 1);
        }
        current = {};
        code = false;
    };
    for (Mapping const& mapping : mappings) {
        bool const kernel = mapping.name == "[vdso]";
        if (!mapping.IsFile() && !kernel) {
            continue;
        }
        if (mapping.name != current || mapping.offset == 0) {
            endModule();
            std::size_t const before = modules.Size();
            AddModule(mapping);
            current = modules.Size() != before ? mapping.name : std::string_view{};
        } else {
            modules[modules.Size() - 1].end = mapping.end;
        }
        code = code || mapping.executable;
    }
    endModule();
    for (DumpedModule& module : modules) {
        module.id = FindBuildId(m_process, module.start);
    }

    ArenaBytes auxiliary(m_arena);
    ReadFile(ShortPath() << "/proc/" << m_process.LivingId() << "/auxv", auxiliary, kPage);
    std::uint64_t headers = 0;
    std::uint64_t count = 0;
    for (std::size_t at = 0; at + sizeof(Elf64_auxv_t) <= auxiliary.Size(); at += sizeof(Elf64_auxv_t)) {
        Elf64_auxv_t entry;
        std::memcpy(&entry, auxiliary.Data() + at, sizeof entry);
        if (entry.a_type == AT_ENTRY) {
            MoveProgramToFront(entry.a_un.a_val);
        } else if (entry.a_type == AT_PHDR) {
            headers = entry.a_un.a_val;
        } else if (entry.a_type == AT_PHNUM) {
            count = entry.a_un.a_val;
        }
    }
    if (!Has(MiniDumpWithoutOptionalData | MiniDumpFilterModulePaths | MiniDumpFilterTriage) && headers != 0) {
        CollectLinker(headers, static_cast<std::size_t>(count));
    }
}

void DumpContents::MoveProgramToFront(std::uint64_t entry) noexcept
{
    auto const program = std::find_if(modules.begin(), modules.end(), [entry](DumpedModule const& module) {
        return entry >= module.start && entry < module.end;
    });
    if (program != modules.end()) {
        std::rotate(modules.begin(), program, program + 1);
    }
}

void DumpContents::CollectLinker(std::uint64_t headers, std::size_t count) noexcept
{
    struct // r_debug and link_map of <link.h>
    {
        std::int32_t version, pad;
        std::uint64_t map, brk, state, base;
    } record;
    struct
    {
        std::uint64_t address, name, dynamic, next, previous;
    } link;
    constexpr std::size_t kMostLinks = 4096;
    std::uint64_t dynamic = 0;
    std::uint64_t const where = FindDynamicLinkerRecord(m_process, headers, count, &dynamic);
    if (where == 0 || !m_process.Read(where, &record, sizeof record)) {
        return;
    }
    linker.version = static_cast<std::uint32_t>(record.version);
    linker.brk = record.brk;
    linker.ldbase = record.base;
    linker.dynamic = dynamic;
    for (std::uint64_t at = record.map; at != 0 && linkMaps.Size() < kMostLinks; at = link.next) {
        if (!m_process.Read(at, &link, sizeof link)) {
            return;
        }
        char name[1024];
        Mapping const* const mapping = FindMapping(link.name);
        std::uint64_t const room = mapping != nullptr && link.name >= mapping->start ? mapping->end - link.name : 0;
        std::size_t size = static_cast<std::size_t>(std::min<std::uint64_t>(room, sizeof name));
        size = m_process.Read(link.name, name, size) ? strnlen(name, size) : 0;
        ArenaBytes kept(m_arena);
        linkMaps.Add({link.address, link.dynamic, {kept.Append(name, size), size}});
    }
}

/// The code around each thread's instruction pointer, once where threads stand at the same place; and on demand the
/// first pages of modules and what lies at the threads' own pointers.
void DumpContents::CollectCode() noexcept
{
    ArenaArray<std::uint64_t> places(m_arena);
    for (DumpedThread const& thread : threads) {
        places.Add(thread.context.Rip);
    }
    std::sort(places.begin(), places.end());
    std::uint64_t done = 0;
    for (std::uint64_t const place : places) {
        Mapping const* const mapping = FindMapping(place);
        if (mapping == nullptr || place < mapping->start || !mapping->executable || IsKernelData(*mapping)) {
            continue;
        }
        std::uint64_t const start = std::max({mapping->start, place - kCodeBefore, done});
        std::uint64_t const end = std::min(mapping->end, place + kCodeAfter);
        if (start < end) {
            AddBlock(start, static_cast<std::size_t>(end - start));
            done = end;
        }
    }
    if (Has(MiniDumpWithModuleHeaders)) {
        for (DumpedModule const& module : modules) {
            AddBlock(module.start, kPage);
        }
    }
    if (Has(MiniDumpWithProcessThreadData)) {
        for (DumpedThread const& thread : threads) {
            Mapping const* const mapping = FindMapping(thread.threadPointer);
            if (mapping != nullptr && mapping->start <= thread.threadPointer && mapping->readable) {
                std::uint64_t const start = std::max(mapping->start, thread.threadPointer - kPage);
                AddBlock(start, static_cast<std::size_t>(std::min(mapping->end, start + 2 * kPage) - start));
            }
        }
    }
}

/// A kilobyte around everything that registers and stacks point to in memory that can be written.
void DumpContents::CollectReferenced() noexcept
{
    ArenaArray<std::uint64_t> places(m_arena);
    auto const consider = [&](std::uint64_t pointer) {
        Mapping const* const mapping = FindMapping(pointer);
        if (mapping != nullptr && pointer >= mapping->start && mapping->readable && mapping->writable) {
            places.Add(pointer & ~(kReferenced - 1));
        }
    };
    for (DumpedThread const& thread : threads) {
        CONTEXT const& c = thread.context;
        for (std::uint64_t const word :
             {c.Rax, c.Rbx, c.Rcx, c.Rdx, c.Rsi, c.Rdi, c.Rbp, c.R8, c.R9, c.R10, c.R11, c.R12, c.R13, c.R14, c.R15}) {
            consider(word);
        }
        if (thread.stack == SIZE_MAX) {
            continue;
        }
        MemoryBlock const& stack = blocks[thread.stack];
        for (std::size_t at = 0; at + 8 <= stack.size; at += 8) {
            std::uint64_t word;
            std::memcpy(&word, stack.data + at, sizeof word);
            if (word < stack.address || word >= stack.address + stack.size) {
                consider(word);
            }
        }
    }
    std::sort(places.begin(), places.end());
    std::size_t const count = static_cast<std::size_t>(std::unique(places.begin(), places.end()) - places.begin());
    for (std::size_t i = 0; i < std::min(count, kMostReferenced);) {
        std::size_t last = i + 1;
        while (last < count && places[last] == places[last - 1] + kReferenced) {
            ++last;
        }
        AddBlock(places[i], static_cast<std::size_t>(places[last - 1] + kReferenced - places[i]));
        i = last;
    }
}

bool DumpContents::IsWanted(Mapping const& mapping, bool inModule) const noexcept
{
    bool const data = mapping.writable && !mapping.shared;
    return Has(MiniDumpWithFullMemory) || (data && mapping.inode == 0 && Has(MiniDumpWithPrivateReadWriteMemory)) ||
           (data && mapping.inode != 0 && Has(MiniDumpWithPrivateWriteCopyMemory)) ||
           (data && inModule && Has(MiniDumpWithDataSegs)) ||
           (mapping.executable && inModule && Has(MiniDumpWithCodeSegs));
}

int DumpContents::CollectRanges() noexcept
{
    if (!Has(MiniDumpWithFullMemory | MiniDumpWithPrivateReadWriteMemory | MiniDumpWithPrivateWriteCopyMemory |
             MiniDumpWithDataSegs | MiniDumpWithCodeSegs)) {
        return 0;
    }
    PageMap pages(m_process.LivingId());
    std::uint64_t moduleEnd = 0; // of the mapping before, if a module's: zeroed data follows without a file
    for (Mapping const& mapping : mappings) {
        bool const inModule = mapping.IsFile() || (moduleEnd == mapping.start && mapping.name.empty());
        moduleEnd = mapping.IsFile() ? mapping.end : 0;
        if (!mapping.readable || IsKernelData(mapping) || mapping.Size() >= kReservation ||
            !IsWanted(mapping, inModule)) {
            continue;
        }
        if (!IsMemory(mapping)) {
            ranges.Add({mapping.start, mapping.Size()});
        } else if (!pages.AddRuns(mapping.start, mapping.end, ranges)) {
            return m_process.HasEnded() ? ESRCH : ENOTSUP;
        }
    }
    return 0;
}

} // namespace qvxsys::dump
