#pragma once
// The minidump file as Microsoft documents it (minidumpapiset.h, winnt.h), under the documented names, without
// <windows.h>: the file is the same on every system. The ids and records for Linux are those that its readers agreed
// on.

#include <cstdint>

namespace qvxsys::dump {

inline constexpr std::uint32_t MINIDUMP_SIGNATURE = 0x504D444D; // "MDMP"
inline constexpr std::uint32_t MINIDUMP_VERSION = 0xA793;

enum MINIDUMP_STREAM_TYPE : std::uint32_t {
    ThreadListStream = 3,
    ModuleListStream = 4,
    MemoryListStream = 5,
    ExceptionStream = 6,
    SystemInfoStream = 7,
    Memory64ListStream = 9,
    MiscInfoStream = 15,
    MemoryInfoListStream = 16,
    ThreadInfoListStream = 17,
    ThreadNamesStream = 24,
    // Files of /proc and /etc as they are.
    LinuxCpuInfo = 0x47670003,
    LinuxProcStatus = 0x47670004,
    LinuxLsbRelease = 0x47670005,
    LinuxCmdLine = 0x47670006,
    LinuxEnviron = 0x47670007,
    LinuxAuxv = 0x47670008,
    LinuxMaps = 0x47670009,
    LinuxDsoDebug = 0x4767000A,
};

inline constexpr std::uint16_t PROCESSOR_ARCHITECTURE_AMD64 = 9;
inline constexpr std::uint32_t VER_PLATFORM_LINUX = 0x8201;
inline constexpr std::uint32_t MINIDUMP_MISC1_PROCESS_ID = 1;
inline constexpr std::uint32_t MINIDUMP_MISC1_PROCESS_TIMES = 2;
inline constexpr std::uint32_t VS_FFI_SIGNATURE = 0xFEEF04BD;
inline constexpr std::uint32_t VS_FFI_STRUCVERSION = 0x00010000;
/// A CodeView record that is an ELF build id: this, then the id's bytes to the record's end.
inline constexpr std::uint32_t CV_SIGNATURE_ELF_BUILD_ID = 0x4270454C; // "LEpB"

inline constexpr std::uint32_t CONTEXT_AMD64 = 0x100000;
inline constexpr std::uint32_t CONTEXT_CONTROL = CONTEXT_AMD64 | 1;
inline constexpr std::uint32_t CONTEXT_INTEGER = CONTEXT_AMD64 | 2;
inline constexpr std::uint32_t CONTEXT_SEGMENTS = CONTEXT_AMD64 | 4;
inline constexpr std::uint32_t CONTEXT_FLOATING_POINT = CONTEXT_AMD64 | 8;

inline constexpr std::uint32_t MEM_COMMIT = 0x1000;
inline constexpr std::uint32_t MEM_PRIVATE = 0x20000;
inline constexpr std::uint32_t MEM_MAPPED = 0x40000;
inline constexpr std::uint32_t MEM_IMAGE = 0x1000000;
inline constexpr std::uint32_t PAGE_NOACCESS = 0x01;
inline constexpr std::uint32_t PAGE_READONLY = 0x02;
inline constexpr std::uint32_t PAGE_READWRITE = 0x04;
inline constexpr std::uint32_t PAGE_WRITECOPY = 0x08;
inline constexpr std::uint32_t PAGE_EXECUTE = 0x10;
inline constexpr std::uint32_t PAGE_EXECUTE_READ = 0x20;
inline constexpr std::uint32_t PAGE_EXECUTE_READWRITE = 0x40;
inline constexpr std::uint32_t PAGE_EXECUTE_WRITECOPY = 0x80;

#pragma pack(push, 4)

using RVA = std::uint32_t;
using RVA64 = std::uint64_t;

struct MINIDUMP_HEADER
{
    std::uint32_t Signature;
    std::uint32_t Version;
    std::uint32_t NumberOfStreams;
    RVA StreamDirectoryRva;
    std::uint32_t CheckSum;
    std::uint32_t TimeDateStamp;
    std::uint64_t Flags;
};
static_assert(sizeof(MINIDUMP_HEADER) == 32);

struct MINIDUMP_LOCATION_DESCRIPTOR
{
    std::uint32_t DataSize;
    RVA Rva;
};

struct MINIDUMP_DIRECTORY
{
    std::uint32_t StreamType;
    MINIDUMP_LOCATION_DESCRIPTOR Location;
};
static_assert(sizeof(MINIDUMP_DIRECTORY) == 12);

struct MINIDUMP_MEMORY_DESCRIPTOR
{
    std::uint64_t StartOfMemoryRange;
    MINIDUMP_LOCATION_DESCRIPTOR Memory;
};
static_assert(sizeof(MINIDUMP_MEMORY_DESCRIPTOR) == 16);

struct MINIDUMP_MEMORY_DESCRIPTOR64
{
    std::uint64_t StartOfMemoryRange;
    std::uint64_t DataSize;
};

/// The descriptors follow; the memory of all stands in their order from BaseRva on.
struct MINIDUMP_MEMORY64_LIST
{
    std::uint64_t NumberOfMemoryRanges;
    RVA64 BaseRva;
};

struct MINIDUMP_SYSTEM_INFO
{
    std::uint16_t ProcessorArchitecture;
    std::uint16_t ProcessorLevel;
    std::uint16_t ProcessorRevision;
    std::uint8_t NumberOfProcessors;
    std::uint8_t ProductType;
    std::uint32_t MajorVersion;
    std::uint32_t MinorVersion;
    std::uint32_t BuildNumber;
    std::uint32_t PlatformId;
    RVA CSDVersionRva;
    std::uint16_t SuiteMask;
    std::uint16_t Reserved2;
    struct
    {
        std::uint32_t VendorId[3];
        std::uint32_t VersionInformation;
        std::uint32_t FeatureInformation;
        std::uint32_t AMDExtendedCpuFeatures;
    } X86CpuInfo;
};
static_assert(sizeof(MINIDUMP_SYSTEM_INFO) == 56);

struct MINIDUMP_MISC_INFO
{
    std::uint32_t SizeOfInfo;
    std::uint32_t Flags1;
    std::uint32_t ProcessId;
    std::uint32_t ProcessCreateTime; ///< seconds since 1970
    std::uint32_t ProcessUserTime;   ///< seconds
    std::uint32_t ProcessKernelTime;
};

struct MINIDUMP_THREAD
{
    std::uint32_t ThreadId;
    std::uint32_t SuspendCount;
    std::uint32_t PriorityClass;
    std::uint32_t Priority;
    std::uint64_t Teb;
    MINIDUMP_MEMORY_DESCRIPTOR Stack;
    MINIDUMP_LOCATION_DESCRIPTOR ThreadContext;
};
static_assert(sizeof(MINIDUMP_THREAD) == 48);

struct MINIDUMP_THREAD_NAME
{
    std::uint32_t ThreadId;
    RVA64 RvaOfThreadName;
};
static_assert(sizeof(MINIDUMP_THREAD_NAME) == 12);

struct MINIDUMP_THREAD_INFO_LIST
{
    std::uint32_t SizeOfHeader;
    std::uint32_t SizeOfEntry;
    std::uint32_t NumberOfEntries;
};

struct MINIDUMP_THREAD_INFO
{
    std::uint32_t ThreadId;
    std::uint32_t DumpFlags;
    std::uint32_t DumpError;
    std::uint32_t ExitStatus;
    std::uint64_t CreateTime;
    std::uint64_t ExitTime;
    std::uint64_t KernelTime; ///< in units of 100 ns
    std::uint64_t UserTime;
    std::uint64_t StartAddress;
    std::uint64_t Affinity;
};
static_assert(sizeof(MINIDUMP_THREAD_INFO) == 64);

struct VS_FIXEDFILEINFO
{
    std::uint32_t dwSignature;
    std::uint32_t dwStrucVersion;
    std::uint32_t dwFileVersionMS;
    std::uint32_t dwFileVersionLS;
    std::uint32_t dwProductVersionMS;
    std::uint32_t dwProductVersionLS;
    std::uint32_t dwFileFlagsMask;
    std::uint32_t dwFileFlags;
    std::uint32_t dwFileOS;
    std::uint32_t dwFileType;
    std::uint32_t dwFileSubtype;
    std::uint32_t dwFileDateMS;
    std::uint32_t dwFileDateLS;
};

struct MINIDUMP_MODULE
{
    std::uint64_t BaseOfImage;
    std::uint32_t SizeOfImage;
    std::uint32_t CheckSum;
    std::uint32_t TimeDateStamp;
    RVA ModuleNameRva;
    VS_FIXEDFILEINFO VersionInfo;
    MINIDUMP_LOCATION_DESCRIPTOR CvRecord;
    MINIDUMP_LOCATION_DESCRIPTOR MiscRecord;
    std::uint64_t Reserved0;
    std::uint64_t Reserved1;
};
static_assert(sizeof(MINIDUMP_MODULE) == 108);

struct MINIDUMP_EXCEPTION
{
    std::uint32_t ExceptionCode;
    std::uint32_t ExceptionFlags;
    std::uint64_t ExceptionRecord;
    std::uint64_t ExceptionAddress;
    std::uint32_t NumberParameters;
    std::uint32_t unusedAlignment;
    std::uint64_t ExceptionInformation[15];
};

struct MINIDUMP_EXCEPTION_STREAM
{
    std::uint32_t ThreadId;
    std::uint32_t alignment;
    MINIDUMP_EXCEPTION ExceptionRecord;
    MINIDUMP_LOCATION_DESCRIPTOR ThreadContext;
};
static_assert(sizeof(MINIDUMP_EXCEPTION_STREAM) == 168);

struct MINIDUMP_MEMORY_INFO_LIST
{
    std::uint32_t SizeOfHeader;
    std::uint32_t SizeOfEntry;
    std::uint64_t NumberOfEntries;
};

struct MINIDUMP_MEMORY_INFO
{
    std::uint64_t BaseAddress;
    std::uint64_t AllocationBase;
    std::uint32_t AllocationProtect;
    std::uint32_t alignment1;
    std::uint64_t RegionSize;
    std::uint32_t State;
    std::uint32_t Protect;
    std::uint32_t Type;
    std::uint32_t alignment2;
};
static_assert(sizeof(MINIDUMP_MEMORY_INFO) == 48);

#pragma pack(pop)

/// CONTEXT of x86-64.
struct CONTEXT
{
    std::uint64_t PHome[6];
    std::uint32_t ContextFlags;
    std::uint32_t MxCsr;
    std::uint16_t SegCs, SegDs, SegEs, SegFs, SegGs, SegSs;
    std::uint32_t EFlags;
    std::uint64_t Dr0, Dr1, Dr2, Dr3, Dr6, Dr7;
    std::uint64_t Rax, Rcx, Rdx, Rbx, Rsp, Rbp, Rsi, Rdi;
    std::uint64_t R8, R9, R10, R11, R12, R13, R14, R15;
    std::uint64_t Rip;
    std::uint8_t FltSave[512]; ///< as FXSAVE stores it
    std::uint64_t VectorRegister[26][2];
    std::uint64_t VectorControl;
    std::uint64_t DebugControl;
    std::uint64_t LastBranchToRip, LastBranchFromRip;
    std::uint64_t LastExceptionToRip, LastExceptionFromRip;
};
static_assert(sizeof(CONTEXT) == 1232);

#pragma pack(push, 4)

/// LinuxDsoDebug: what the dynamic linker tells debuggers. The list of dso_count link maps stands at `map`.
struct LinuxDebug64
{
    std::uint32_t version;
    RVA map;
    std::uint32_t dso_count;
    std::uint64_t brk;
    std::uint64_t ldbase;
    std::uint64_t dynamic;
};

struct LinuxLinkMap64
{
    std::uint64_t addr;
    RVA name;
    std::uint64_t ld;
};

#pragma pack(pop)

} // namespace qvxsys::dump
