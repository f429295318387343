#pragma once
// What a dump wants to know of an ELF file as it lies in the memory of another process, which may have been
// overwritten: every number found there is checked before it is used.

#include <cstddef>
#include <cstdint>

namespace qvxsys::dump {

/// Memory of some process.
class MemoryReader
{
public:
    /// Reads exactly `size` bytes, or returns false.
    virtual bool Read(std::uint64_t address, void* to, std::size_t size) noexcept = 0;

protected:
    ~MemoryReader() = default;
};

struct BuildId
{
    std::uint8_t bytes[64];
    std::size_t size; ///< 0: none
};

/// The id in the notes of the file whose first page lies at `base`.
BuildId FindBuildId(MemoryReader& memory, std::uint64_t base) noexcept;

/// The address of the linker's `r_debug` record of a program whose `count` program headers lie at `headers`. 0: none.
std::uint64_t FindDynamicLinkerRecord(MemoryReader& memory, std::uint64_t headers, std::size_t count,
                                      std::uint64_t* dynamic) noexcept;

} // namespace qvxsys::dump
