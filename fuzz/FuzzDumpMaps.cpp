// What a dump reads of other processes: the lines of /proc/PID/maps, and ELF files in memory that may be anything.
// Lines are checked by writing the mapping as the kernel would and reading it again.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "ElfImage.h"
#include "ProcMaps.h"

using namespace qvxsys::dump;

namespace {

class FuzzedMemory final : public MemoryReader
{
public:
    FuzzedMemory(std::uint8_t const* data, std::size_t size) : m_data(data), m_size(size) {}

    bool Read(std::uint64_t address, void* to, std::size_t size) noexcept override
    {
        if (address < kBase || address - kBase > m_size || size > m_size - (address - kBase)) {
            return false;
        }
        std::memcpy(to, m_data + (address - kBase), size);
        return true;
    }

    static constexpr std::uint64_t kBase = 0x400000;

private:
    std::uint8_t const* m_data;
    std::size_t m_size;
};

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

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

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    ForEachMapping({reinterpret_cast<char const*>(data), size}, CheckMapping);
    FuzzedMemory memory(data, size);
    Require(FindBuildId(memory, FuzzedMemory::kBase).size <= sizeof(BuildId::bytes));
    // The same with a beginning that is taken for that of a file: its class, and the size of a program header.
    std::string image(reinterpret_cast<char const*>(data), size);
    image.resize(std::max<std::size_t>(size, 64));
    image.replace(0, 5, {0x7F, 'E', 'L', 'F', 2});
    image[54] = 56;
    image[55] = 0;
    FuzzedMemory elf(reinterpret_cast<std::uint8_t const*>(image.data()), image.size());
    Require(FindBuildId(elf, FuzzedMemory::kBase).size <= sizeof(BuildId::bytes));
    std::uint64_t dynamic = 0;
    FindDynamicLinkerRecord(memory, FuzzedMemory::kBase, size / 56, &dynamic);
    return 0;
}
