#include "ElfImage.h"

#include <algorithm>
#include <cstring>

#include "BuildIdNote.h"

namespace qvxsys::dump {
namespace {

constexpr std::size_t kMostProgramHeaders = 64;
constexpr std::size_t kMostDynamicEntries = 512;

} // namespace

BuildId FindBuildId(MemoryReader& memory, std::uint64_t base) noexcept
{
    BuildId id{};
    Elf64_Ehdr file;
    if (!memory.Read(base, &file, sizeof file) || std::memcmp(file.e_ident, ELFMAG, SELFMAG) != 0 ||
        file.e_ident[EI_CLASS] != ELFCLASS64 || file.e_phentsize != sizeof(Elf64_Phdr)) {
        return id;
    }
    Elf64_Phdr headers[kMostProgramHeaders];
    std::size_t const count = std::min<std::size_t>(file.e_phnum, kMostProgramHeaders);
    if (count == 0 || !memory.Read(base + file.e_phoff, headers, count * sizeof(Elf64_Phdr))) {
        return id;
    }
    // The file's addresses are moved by what the segment at its beginning was moved.
    auto const* const first = std::find_if(headers, headers + count,
                                           [](Elf64_Phdr const& h) { return h.p_type == PT_LOAD && h.p_offset == 0; });
    std::uint64_t const bias = first != headers + count ? base - first->p_vaddr : base;
    for (Elf64_Phdr const& header : std::span(headers, count)) {
        std::uint8_t notes[2048];
        std::size_t const size = std::min<std::size_t>(header.p_memsz, sizeof notes);
        if (header.p_type == PT_NOTE && memory.Read(bias + header.p_vaddr, notes, size)) {
            auto const found = unwind::BuildIdIn({notes, size}, header.p_align);
            if (!found.empty()) {
                id.size = std::min(found.size(), sizeof id.bytes);
                std::memcpy(id.bytes, found.data(), id.size);
                break;
            }
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
        Elf64_Phdr header;
        if (!memory.Read(headers + i * sizeof header, &header, sizeof header)) {
            return 0;
        }
        if (header.p_type == PT_PHDR) {
            bias = headers - header.p_vaddr;
        } else if (header.p_type == PT_DYNAMIC) {
            table = header.p_vaddr;
        }
    }
    if (table == 0) {
        return 0;
    }
    *dynamic = table + bias;
    for (std::size_t i = 0; i < kMostDynamicEntries; ++i) {
        Elf64_Dyn entry;
        if (!memory.Read(*dynamic + i * sizeof entry, &entry, sizeof entry) || entry.d_tag == DT_NULL) {
            return 0;
        }
        if (entry.d_tag == DT_DEBUG) {
            return entry.d_un.d_ptr;
        }
    }
    return 0;
}

} // namespace qvxsys::dump
