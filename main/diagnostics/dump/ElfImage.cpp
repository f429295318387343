#include "ElfImage.h"

#include <algorithm>
#include <cstring>

namespace qvxsys::dump {
namespace {

// ELF-64 records (System V ABI, chapters 4 and 5), as far as they are needed.
struct FileHeader
{
    std::uint8_t ident[16];
    std::uint16_t type, machine;
    std::uint32_t version;
    std::uint64_t entry, programHeaders, sectionHeaders;
    std::uint32_t flags;
    std::uint16_t headerSize, programHeaderSize, programHeaderCount;
    std::uint16_t sectionHeaderSize, sectionHeaderCount, sectionNames;
};
static_assert(sizeof(FileHeader) == 64);

struct ProgramHeader
{
    std::uint32_t type, flags;
    std::uint64_t offset, address, physicalAddress, fileSize, memorySize, alignment;
};
static_assert(sizeof(ProgramHeader) == 56);

struct NoteHeader
{
    std::uint32_t nameSize, size, type;
};

struct DynamicEntry
{
    std::uint64_t tag, value;
};

constexpr std::uint32_t kLoad = 1;
constexpr std::uint32_t kDynamic = 2;
constexpr std::uint32_t kNote = 4;
constexpr std::uint32_t kHeaders = 6;
constexpr std::uint32_t kGnuBuildId = 3;
constexpr std::uint64_t kDebugTag = 21;
constexpr std::size_t kMostProgramHeaders = 64;
constexpr std::size_t kMostDynamicEntries = 512;

/// Looks through one segment of notes.
bool FindInNotes(std::uint8_t const* notes, std::size_t size, std::size_t alignment, BuildId& id) noexcept
{
    std::uint64_t const mask = alignment == 8 ? 7 : 3;
    while (size >= sizeof(NoteHeader)) {
        NoteHeader header;
        std::memcpy(&header, notes, sizeof header);
        std::uint64_t const content = (sizeof header + std::uint64_t{header.nameSize} + mask) & ~mask;
        std::uint64_t const end = content + header.size;
        if (end > size) {
            return false;
        }
        if (header.type == kGnuBuildId && header.nameSize == 4 && std::memcmp(notes + sizeof header, "GNU", 4) == 0 &&
            header.size != 0) {
            id.size = std::min<std::size_t>(header.size, sizeof id.bytes);
            std::memcpy(id.bytes, notes + content, id.size);
            return true;
        }
        std::size_t const step = static_cast<std::size_t>(std::min<std::uint64_t>((end + mask) & ~mask, size));
        notes += step;
        size -= step;
    }
    return false;
}

} // namespace

BuildId FindBuildId(MemoryReader& memory, std::uint64_t base) noexcept
{
    BuildId id{};
    FileHeader file;
    if (!memory.Read(base, &file, sizeof file) ||
        std::memcmp(file.ident,
                    "\x7F"
                    "ELF\x02",
                    5) != 0 ||
        file.programHeaderSize != sizeof(ProgramHeader)) {
        return id;
    }
    ProgramHeader headers[kMostProgramHeaders];
    std::size_t const count = std::min<std::size_t>(file.programHeaderCount, kMostProgramHeaders);
    if (count == 0 || !memory.Read(base + file.programHeaders, headers, count * sizeof(ProgramHeader))) {
        return id;
    }
    // The file's addresses are moved by what the segment at its beginning was moved.
    auto const first =
        std::find_if(headers, headers + count, [](ProgramHeader const& h) { return h.type == kLoad && h.offset == 0; });
    std::uint64_t const bias = first != headers + count ? base - first->address : base;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint8_t notes[2048];
        std::size_t const size = static_cast<std::size_t>(std::min<std::uint64_t>(headers[i].memorySize, sizeof notes));
        if (headers[i].type == kNote && memory.Read(bias + headers[i].address, notes, size) &&
            FindInNotes(notes, size, static_cast<std::size_t>(headers[i].alignment), id)) {
            break;
        }
    }
    return id;
}

std::uint64_t FindDynamicLinkerRecord(MemoryReader& memory, std::uint64_t headers, std::size_t count,
                                      std::uint64_t* dynamic) noexcept
{
    std::uint64_t bias = 0;
    std::uint64_t table = 0;
    for (std::size_t i = 0; i < std::min(count, kMostProgramHeaders); ++i) {
        ProgramHeader header;
        if (!memory.Read(headers + i * sizeof header, &header, sizeof header)) {
            return 0;
        }
        if (header.type == kHeaders) {
            bias = headers - header.address;
        } else if (header.type == kDynamic) {
            table = header.address;
        }
    }
    if (table == 0) {
        return 0;
    }
    *dynamic = table + bias;
    for (std::size_t i = 0; i < kMostDynamicEntries; ++i) {
        DynamicEntry entry;
        if (!memory.Read(*dynamic + i * sizeof entry, &entry, sizeof entry) || entry.tag == 0) {
            return 0;
        }
        if (entry.tag == kDebugTag) {
            return entry.value;
        }
    }
    return 0;
}

} // namespace qvxsys::dump
