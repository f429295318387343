#include "DumpStreams_linux.h"

#include <algorithm>
#include <cerrno>
#include <cpuid.h>

#include <sys/utsname.h>

#include <qvxsys/CharacterUtils.h>
#include <qvxsys/CrashDump.h>

#include "KernelText.h"

namespace qvxsys::dump {
namespace {

using namespace qvxsys::minidump;

constexpr std::size_t kMostText = 1 << 20;   // of a text file
constexpr std::uint64_t kTicks = 100;        // in a second, whatever the kernel's own clock (USER_HZ of x86-64)
constexpr std::uint64_t kUnits = 10'000'000; // of 100 ns in a second

std::uint64_t TakeNumber(std::string_view& text) noexcept
{
    std::uint64_t number = 0;
    while (!text.empty() && text.front() >= '0' && text.front() <= '9') {
        number = number * 10 + static_cast<std::uint64_t>(text.front() - '0');
        text.remove_prefix(1);
    }
    return number;
}

std::uint32_t ProtectionOf(Mapping const& mapping) noexcept
{
    if (mapping.executable) {
        return mapping.writable ? PAGE_EXECUTE_READWRITE : mapping.readable ? PAGE_EXECUTE_READ : PAGE_EXECUTE;
    }
    if (mapping.writable) {
        return !mapping.shared && mapping.inode != 0 ? PAGE_WRITECOPY : PAGE_READWRITE;
    }
    return mapping.readable ? PAGE_READONLY : PAGE_NOACCESS;
}

} // namespace

DumpStreams::DumpStreams(Arena& arena, DumpRequest const& request, DumpContents const& contents) noexcept
    : m_request(request), m_contents(contents), m_arena(arena), m_bytes(arena), m_contexts(arena), m_places(arena)
{
    std::size_t at = sizeof(MINIDUMP_HEADER) + sizeof m_directory;
    for (MemoryBlock const& block : contents.blocks) {
        m_places.Add(static_cast<RVA>(at));
        at += (block.size + 15) & ~std::size_t{15};
    }
    m_base = static_cast<RVA>(at);
}

RVA DumpStreams::Here() const noexcept
{
    return m_base + static_cast<RVA>(m_bytes.Size());
}

/// What was put at this offset. Puts after it may move it. Without memory it is a scrap that nobody reads.
template<class T>
T& DumpStreams::At(std::size_t offset) noexcept
{
    static T scrap;
    return offset + sizeof(T) <= m_bytes.Size() ? *reinterpret_cast<T*>(m_bytes.Data() + offset) : scrap;
}

template<class T>
void DumpStreams::Put(T const& value) noexcept
{
    m_bytes.Append(reinterpret_cast<char const*>(&value), sizeof value);
}

/// MINIDUMP_STRING: the length in bytes, UTF-16, a 0.
RVA DumpStreams::PutString(std::string_view utf8) noexcept
{
    RVA const place = Here();
    std::size_t const start = m_bytes.Size();
    Put(std::uint32_t{0});
    while (!utf8.empty()) {
        char32_t c = 0;
        int const used = CharacterUtils::DecodeUtf8(utf8.data(), static_cast<int>(std::min(utf8.size(), kMostText)), c);
        utf8.remove_prefix(static_cast<std::size_t>(std::max(used, 1)));
        bool const valid = c <= 0x10FFFF && !CharacterUtils::IsSurrogate(c);
        c = valid ? c : CharacterUtils::kReplacement;
        if (c >= 0x10000) {
            Put(CharacterUtils::HighSurrogate(c));
            Put(CharacterUtils::LowSurrogate(c));
        } else {
            Put(static_cast<char16_t>(c));
        }
    }
    At<std::uint32_t>(start) = static_cast<std::uint32_t>(m_bytes.Size() - start - sizeof(std::uint32_t));
    Put(char16_t{0});
    m_bytes.Append(nullptr, (4 - m_bytes.Size() % 4) % 4);
    return place;
}

void DumpStreams::Begin(MINIDUMP_STREAM_TYPE type) noexcept
{
    m_bytes.Append(nullptr, (8 - m_bytes.Size() % 8) % 8);
    m_directory[m_streams] = {type, {0, Here()}};
}

void DumpStreams::End() noexcept
{
    MINIDUMP_LOCATION_DESCRIPTOR& location = m_directory[m_streams].Location;
    location.DataSize = Here() - location.Rva;
    ++m_streams;
}

MINIDUMP_LOCATION_DESCRIPTOR DumpStreams::PlaceOf(std::size_t block) const noexcept
{
    if (block >= m_contents.blocks.Size()) {
        return {};
    }
    return {static_cast<std::uint32_t>(m_contents.blocks[block].size), m_places[block]};
}

DumpStreams::StatFields DumpStreams::ReadStat(char const* path) const noexcept
{
    constexpr int kState = 3, kUser = 14, kKernel = 15, kNice = 19, kStart = 22; // numbered as in proc(5)
    StatFields fields{};
    ArenaBytes bytes(m_arena);
    ReadFile(path, bytes, 4096);
    std::string_view line(bytes.Data(), bytes.Size());
    std::size_t const open = line.find('(');
    std::size_t const close = line.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
        return fields;
    }
    std::size_t const length = std::min(close - open - 1, sizeof fields.name - 1);
    std::memcpy(fields.name, line.data() + open + 1, length);
    line.remove_prefix(close + 1);
    for (int field = kState; field <= kStart; ++field) {
        std::string_view word = system::TakeWord(line);
        bool const negative = word.starts_with('-');
        word.remove_prefix(negative ? 1 : 0);
        std::uint64_t const number = system::ParseNumber(word).value_or(0);
        auto const sign = negative ? std::int64_t{-1} : std::int64_t{1};
        fields.user = field == kUser ? number : fields.user;
        fields.kernel = field == kKernel ? number : fields.kernel;
        fields.nice = field == kNice ? sign * static_cast<std::int64_t>(number) : fields.nice;
        fields.start = field == kStart ? number : fields.start;
    }
    return fields;
}

void DumpStreams::MakeSystemInfo() noexcept
{
    MINIDUMP_SYSTEM_INFO info{};
    info.ProcessorArchitecture = PROCESSOR_ARCHITECTURE_AMD64;
    info.PlatformId = VER_PLATFORM_LINUX;
    unsigned int a = 0;
    unsigned int b = 0;
    unsigned int c = 0;
    unsigned int d = 0;
    if (__get_cpuid(0, &a, &b, &c, &d) != 0) {
        info.X86CpuInfo.VendorId[0] = b;
        info.X86CpuInfo.VendorId[1] = d;
        info.X86CpuInfo.VendorId[2] = c;
    }
    if (__get_cpuid(1, &a, &b, &c, &d) != 0) {
        info.X86CpuInfo.VersionInformation = a;
        info.X86CpuInfo.FeatureInformation = d;
        unsigned int const family = (a >> 8 & 0xF) + ((a >> 8 & 0xF) == 0xF ? a >> 20 & 0xFF : 0);
        info.ProcessorLevel = static_cast<std::uint16_t>(family);
        info.ProcessorRevision = static_cast<std::uint16_t>(((a >> 4 & 0xF) | (a >> 12 & 0xF0)) << 8 | (a & 0xF));
    }
    if (__get_cpuid(0x80000001, &a, &b, &c, &d) != 0) {
        info.X86CpuInfo.AMDExtendedCpuFeatures = d;
    }
    std::uint8_t affinity[128] = {};
    long const size = kernel::Call(SYS_sched_getaffinity, 0, sizeof affinity, kernel::Word(affinity));
    int processors = 0;
    for (long i = 0; i < size; ++i) {
        processors += __builtin_popcount(affinity[i]);
    }
    info.NumberOfProcessors = static_cast<std::uint8_t>(std::min(processors, 255));

    utsname system{};
    kernel::Call(SYS_uname, kernel::Word(&system));
    std::string_view release = system.release;
    for (std::uint32_t* const part : {&info.MajorVersion, &info.MinorVersion, &info.BuildNumber}) {
        *part = static_cast<std::uint32_t>(TakeNumber(release));
        release.remove_prefix(release.starts_with('.') ? 1 : 0);
    }
    Begin(SystemInfoStream);
    std::size_t const at = m_bytes.Size();
    Put(info);
    End();
    ShortPath const description = ShortPath() << system.sysname << " " << system.release << " " << system.version << " "
                                              << system.machine;
    RVA const text = PutString(static_cast<char const*>(description));
    At<MINIDUMP_SYSTEM_INFO>(at).CSDVersionRva = text;
}

void DumpStreams::MakeMiscInfo() noexcept
{
    StatFields const stat = ReadStat(ShortPath() << "/proc/" << static_cast<unsigned>(m_request.process) << "/stat");
    timespec sinceBoot{};
    kernel::Call(SYS_clock_gettime, CLOCK_BOOTTIME, kernel::Word(&sinceBoot));
    MINIDUMP_MISC_INFO info{};
    info.SizeOfInfo = sizeof info;
    info.Flags1 = MINIDUMP_MISC1_PROCESS_ID;
    info.ProcessId = static_cast<std::uint32_t>(m_request.process);
    if (stat.start != 0) {
        info.Flags1 |= MINIDUMP_MISC1_PROCESS_TIMES;
        std::uint64_t const age = static_cast<std::uint64_t>(sinceBoot.tv_sec) - stat.start / kTicks;
        info.ProcessCreateTime = static_cast<std::uint32_t>(kernel::SecondsSinceEpoch() - age);
        info.ProcessUserTime = static_cast<std::uint32_t>(stat.user / kTicks);
        info.ProcessKernelTime = static_cast<std::uint32_t>(stat.kernel / kTicks);
    }
    Begin(MiscInfoStream);
    Put(info);
    End();
}

void DumpStreams::MakeThreads() noexcept
{
    std::uint32_t const count = static_cast<std::uint32_t>(m_contents.threads.Size());
    ArenaArray<StatFields> stats(m_arena);
    for (DumpedThread const& thread : m_contents.threads) {
        stats.Add(ReadStat(ShortPath() << "/proc/" << static_cast<unsigned>(m_request.process) << "/task/"
                                       << static_cast<unsigned>(thread.id) << "/stat"));
        m_contexts.Add({sizeof thread.context, Here()});
        Put(thread.context);
    }
    if (m_arena.Failed()) {
        return;
    }
    Begin(ThreadListStream);
    Put(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        DumpedThread const& thread = m_contents.threads[i];
        MINIDUMP_THREAD entry{};
        entry.ThreadId = static_cast<std::uint32_t>(thread.id);
        entry.Priority = static_cast<std::uint32_t>(-stats[i].nice);
        entry.Teb = thread.threadPointer;
        if (thread.stack != SIZE_MAX) {
            entry.Stack = {m_contents.blocks[thread.stack].address, PlaceOf(thread.stack)};
        }
        entry.ThreadContext = m_contexts[i];
        Put(entry);
    }
    End();
    Begin(ThreadNamesStream);
    std::size_t const names = m_bytes.Size() + sizeof count;
    Put(count);
    m_bytes.Append(nullptr, count * sizeof(MINIDUMP_THREAD_NAME));
    End();
    for (std::uint32_t i = 0; i < count; ++i) {
        RVA const name = PutString(stats[i].name);
        At<MINIDUMP_THREAD_NAME>(names + i * sizeof(MINIDUMP_THREAD_NAME)) = {
            static_cast<std::uint32_t>(m_contents.threads[i].id), name};
    }
    if (m_contents.Has(MiniDumpWithThreadInfo)) {
        Begin(ThreadInfoListStream);
        Put(MINIDUMP_THREAD_INFO_LIST{sizeof(MINIDUMP_THREAD_INFO_LIST), sizeof(MINIDUMP_THREAD_INFO), count});
        for (std::uint32_t i = 0; i < count; ++i) {
            MINIDUMP_THREAD_INFO info{};
            info.ThreadId = static_cast<std::uint32_t>(m_contents.threads[i].id);
            info.KernelTime = stats[i].kernel * (kUnits / kTicks);
            info.UserTime = stats[i].user * (kUnits / kTicks);
            Put(info);
        }
        End();
    }
}

/// As readers of dumps from Linux expect it: the signal's number is the code, its si_code the flags.
void DumpStreams::MakeException() noexcept
{
    auto const thread = std::find_if(m_contents.threads.begin(), m_contents.threads.end(),
                                     [this](DumpedThread const& t) { return t.id == m_request.thread; });
    if (!m_request.crashed || thread == m_contents.threads.end() || m_contexts.Size() == 0) {
        return;
    }
    siginfo_t const& signal = m_request.signal;
    bool const fault = signal.si_signo == SIGSEGV || signal.si_signo == SIGBUS || signal.si_signo == SIGFPE ||
                       signal.si_signo == SIGILL || signal.si_signo == SIGTRAP;
    MINIDUMP_EXCEPTION_STREAM stream{};
    stream.ThreadId = static_cast<std::uint32_t>(m_request.thread);
    MINIDUMP_EXCEPTION& record = stream.ExceptionRecord;
    record.ExceptionCode = static_cast<std::uint32_t>(signal.si_signo);
    record.ExceptionFlags = static_cast<std::uint32_t>(signal.si_code);
    record.ExceptionAddress =
        fault && signal.si_code > 0 ? reinterpret_cast<std::uintptr_t>(signal.si_addr) : thread->context.Rip;
    // What the processor said: the number of its exception, and its error code.
    record.NumberParameters = 2;
    record.ExceptionInformation[0] = static_cast<std::uint64_t>(m_request.context.uc_mcontext.gregs[REG_TRAPNO]);
    record.ExceptionInformation[1] = static_cast<std::uint64_t>(m_request.context.uc_mcontext.gregs[REG_ERR]);
    stream.ThreadContext = m_contexts[static_cast<std::size_t>(thread - m_contents.threads.begin())];
    Begin(ExceptionStream);
    Put(stream);
    End();
}

void DumpStreams::MakeModules() noexcept
{
    Begin(ModuleListStream);
    std::uint32_t const count = static_cast<std::uint32_t>(m_contents.modules.Size());
    Put(count);
    std::size_t const list = m_bytes.Size();
    m_bytes.Append(nullptr, count * sizeof(MINIDUMP_MODULE));
    End();
    for (std::uint32_t i = 0; i < count; ++i) {
        DumpedModule const& module = m_contents.modules[i];
        MINIDUMP_MODULE entry{};
        entry.BaseOfImage = module.start;
        entry.SizeOfImage = static_cast<std::uint32_t>(std::min<std::uint64_t>(module.end - module.start, UINT32_MAX));
        entry.VersionInfo.dwSignature = VS_FFI_SIGNATURE;
        entry.VersionInfo.dwStrucVersion = VS_FFI_STRUCVERSION;
        entry.ModuleNameRva = PutString(module.name);
        if (module.id.size != 0) {
            entry.CvRecord = {static_cast<std::uint32_t>(sizeof CV_SIGNATURE_ELF_BUILD_ID + module.id.size), Here()};
            Put(CV_SIGNATURE_ELF_BUILD_ID);
            m_bytes.Append(reinterpret_cast<char const*>(module.id.bytes), module.id.size);
            m_bytes.Append(nullptr, (4 - m_bytes.Size() % 4) % 4);
        }
        At<MINIDUMP_MODULE>(list + i * sizeof entry) = entry;
    }
}

void DumpStreams::MakeMemoryLists() noexcept
{
    Begin(MemoryListStream);
    Put(static_cast<std::uint32_t>(m_contents.blocks.Size()));
    for (std::size_t i = 0; i < m_contents.blocks.Size(); ++i) {
        Put(MINIDUMP_MEMORY_DESCRIPTOR{m_contents.blocks[i].address, PlaceOf(i)});
    }
    End();
    if (m_contents.ranges.Size() != 0) {
        Begin(Memory64ListStream);
        m_rangesBase = m_bytes.Size() + sizeof(std::uint64_t);
        Put(MINIDUMP_MEMORY64_LIST{m_contents.ranges.Size(), 0});
        for (MemoryRange const& range : m_contents.ranges) {
            Put(MINIDUMP_MEMORY_DESCRIPTOR64{range.address, range.size});
        }
        End();
    }
}

void DumpStreams::MakeMemoryInfo() noexcept
{
    Begin(MemoryInfoListStream);
    Put(MINIDUMP_MEMORY_INFO_LIST{sizeof(MINIDUMP_MEMORY_INFO_LIST), sizeof(MINIDUMP_MEMORY_INFO),
                                  m_contents.mappings.Size()});
    std::uint64_t base = 0;
    std::string_view name;
    for (Mapping const& mapping : m_contents.mappings) {
        base = mapping.IsFile() && mapping.name == name && mapping.offset != 0 ? base : mapping.start;
        name = mapping.name;
        MINIDUMP_MEMORY_INFO info{};
        info.BaseAddress = mapping.start;
        info.AllocationBase = base;
        info.AllocationProtect = ProtectionOf(mapping);
        info.RegionSize = mapping.Size();
        info.State = MEM_COMMIT;
        info.Protect = ProtectionOf(mapping);
        bool const image = std::any_of(m_contents.modules.begin(), m_contents.modules.end(), [&](auto const& module) {
            return mapping.start >= module.start && mapping.start < module.end;
        });
        info.Type = image ? MEM_IMAGE : mapping.inode != 0 || mapping.shared ? MEM_MAPPED : MEM_PRIVATE;
        Put(info);
    }
    End();
}

void DumpStreams::PutFile(MINIDUMP_STREAM_TYPE type, char const* path) noexcept
{
    Begin(type);
    if (ReadFile(path, m_bytes, kMostText)) {
        End();
    }
}

void DumpStreams::MakeFiles() noexcept
{
    ShortPath const process = ShortPath() << "/proc/" << static_cast<unsigned>(m_contents.threads[0].id);
    auto const of = [&](char const* name) { return ShortPath(process) << name; };
    PutFile(LinuxCpuInfo, "/proc/cpuinfo");
    PutFile(LinuxProcStatus, of("/status"));
    std::uint32_t const before = m_streams;
    PutFile(LinuxLsbRelease, "/etc/lsb-release");
    if (m_streams == before) {
        PutFile(LinuxLsbRelease, "/etc/os-release");
    }
    PutFile(LinuxAuxv, of("/auxv"));
    if (!m_contents.Has(MiniDumpFilterModulePaths | MiniDumpFilterMemory | MiniDumpFilterTriage)) {
        PutFile(LinuxCmdLine, of("/cmdline"));
        PutFile(LinuxEnviron, of("/environ"));
    }
    if (!m_contents.Has(MiniDumpFilterModulePaths | MiniDumpFilterTriage)) {
        PutFile(LinuxMaps, of("/maps"));
    }
}

void DumpStreams::MakeLinker() noexcept
{
    if (m_contents.linker.version == 0) {
        return;
    }
    Begin(LinuxDsoDebug);
    LinuxDebug64 linker = m_contents.linker;
    linker.dso_count = static_cast<std::uint32_t>(m_contents.linkMaps.Size());
    linker.map = Here() + static_cast<RVA>(sizeof linker);
    Put(linker);
    std::size_t const list = m_bytes.Size();
    m_bytes.Append(nullptr, linker.dso_count * sizeof(LinuxLinkMap64));
    End();
    for (std::uint32_t i = 0; i < linker.dso_count; ++i) {
        LinkMap const& link = m_contents.linkMaps[i];
        RVA const name = PutString(link.name);
        At<LinuxLinkMap64>(list + i * sizeof(LinuxLinkMap64)) = {link.address, name, link.dynamic};
    }
}

void DumpStreams::Make() noexcept
{
    MakeSystemInfo();
    MakeMiscInfo();
    MakeThreads();
    MakeException();
    MakeModules();
    MakeMemoryLists();
    if (!m_contents.Has(MiniDumpWithoutOptionalData) || m_contents.Has(MiniDumpWithFullMemoryInfo)) {
        MakeMemoryInfo();
    }
    if (!m_contents.Has(MiniDumpWithoutOptionalData)) {
        MakeFiles();
        MakeLinker();
    }
    m_bytes.Append(nullptr, (16 - m_bytes.Size() % 16) % 16);
    if (m_rangesBase != SIZE_MAX) {
        At<RVA64>(m_rangesBase) = Here();
    }
}

int DumpStreams::Write(DumpFile& file, TracedProcess& process, std::uint64_t& unreadablePages) noexcept
{
    constexpr std::size_t kPiece = 1 << 20;
    std::byte* const piece = m_contents.ranges.Size() != 0 ? static_cast<std::byte*>(m_arena.Take(kPiece)) : nullptr;
    if (m_arena.Failed()) {
        return ENOMEM;
    }
    MINIDUMP_HEADER const header{MINIDUMP_SIGNATURE,          MINIDUMP_VERSION, m_streams, sizeof(MINIDUMP_HEADER), 0,
                                 kernel::SecondsSinceEpoch(), m_request.type};
    int error = file.Write(&header, sizeof header);
    error = error != 0 ? error : file.Write(m_directory, sizeof m_directory);
    for (std::size_t i = 0; error == 0 && i < m_contents.blocks.Size(); ++i) {
        // Memory of the arena, so the bytes up to the next multiple of 16 are there.
        error = file.Write(m_contents.blocks[i].data, (m_contents.blocks[i].size + 15) & ~std::size_t{15});
    }
    error = error != 0 ? error : file.Write(m_bytes.Data(), m_bytes.Size());
    for (MemoryRange const& range : m_contents.ranges) {
        for (std::uint64_t at = 0; error == 0 && at < range.size; at += kPiece) {
            std::size_t const size = static_cast<std::size_t>(std::min<std::uint64_t>(kPiece, range.size - at));
            std::size_t const missing = process.ReadPatched(range.address + at, piece, size);
            unreadablePages += missing;
            error = missing != 0 && process.HasEnded() ? ESRCH : file.Write(piece, size);
        }
    }
    return error;
}

} // namespace qvxsys::dump
