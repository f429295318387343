// What a dump reads of other processes: the lines of /proc/PID/maps, and ELF files in memory that may be anything.
// Lines are checked by writing the mapping as the kernel would and reading it again.

#include <cstdio>

#include "ElfImage.h"
#include "Fuzz.h"
#include "ProcMaps.h"

using namespace qvxsys::dump;

namespace {

class FuzzedMemory final : public MemoryReader
{
public:
    explicit FuzzedMemory(std::string_view bytes) : m_bytes(bytes) {}

    bool Read(std::uint64_t address, void* to, std::size_t size) noexcept override
    {
        std::uint64_t const at = address - kBase;
        bool const inside = address >= kBase && at <= m_bytes.size() && size <= m_bytes.size() - at;
        return inside && m_bytes.substr(at).copy(static_cast<char*>(to), size) == size;
    }

    static constexpr std::uint64_t kBase = 0x400000;

private:
    std::string_view m_bytes;
};

void CheckMapping(Mapping const& mapping)
{
    char name[64];
    Require(mapping.start < mapping.end);
    Require(FileNameOf(mapping, name, sizeof name) <= std::min(sizeof name, mapping.name.size()));
    char line[128];
    int const length = std::snprintf(
        line, sizeof line, "%llx-%llx %c%c%c%c %llx 08:01 %llu ", static_cast<unsigned long long>(mapping.start),
        static_cast<unsigned long long>(mapping.end), mapping.readable ? 'r' : '-', mapping.writable ? 'w' : '-',
        mapping.executable ? 'x' : '-', mapping.shared ? 's' : 'p', static_cast<unsigned long long>(mapping.offset),
        static_cast<unsigned long long>(mapping.inode));
    std::string const text = std::string(line, static_cast<std::size_t>(length)) + std::string(mapping.name);
    Mapping again;
    Require(ParseMapping(text, again) && again == mapping);
}

} // namespace

void Fuzz(std::uint8_t const* data, std::size_t size)
{
    ForEachMapping(Bytes(data, size), CheckMapping);
    FuzzedMemory memory(Bytes(data, size));
    Require(FindBuildId(memory, FuzzedMemory::kBase).size <= sizeof(BuildId::bytes));
    // The same with a beginning that is taken for that of a file: its class, and the size of a program header.
    std::string image(Bytes(data, size));
    image.resize(std::max<std::size_t>(size, 64));
    image.replace(0, 5, {0x7F, 'E', 'L', 'F', 2});
    image[54] = 56;
    image[55] = 0;
    FuzzedMemory elf(image);
    Require(FindBuildId(elf, FuzzedMemory::kBase).size <= sizeof(BuildId::bytes));
    std::uint64_t dynamic = 0;
    FindDynamicLinkerRecord(memory, FuzzedMemory::kBase, size / 56, &dynamic);
}
