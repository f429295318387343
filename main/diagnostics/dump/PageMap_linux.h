#pragma once
// Which pages of a process are in its page table. Memory that belongs to no file has nothing but zeros in all others.

#include <cstddef>
#include <cstdint>

#include "Arena_linux.h"

namespace qvxsys::dump {

/// Memory that is copied only when it is written.
struct MemoryRange
{
    std::uint64_t address;
    std::uint64_t size;
};

class PageMap
{
public:
    /// `id` is that of a living thread of the process.
    explicit PageMap(unsigned int id) noexcept;
    PageMap(PageMap const&) = delete;
    PageMap& operator=(PageMap const&) = delete;
    ~PageMap();

    /// Adds the runs of pages between two addresses, gaps of a few pages bridged. False if the map cannot be read to
    /// the end: without it, a terabyte of address space may have anything in it from nothing on. That of a process that
    /// was killed cannot be opened, has no end, or no pages.
    bool AddRuns(std::uint64_t start, std::uint64_t end, ArenaArray<MemoryRange>& runs) noexcept;

private:
    bool Scan(std::uint64_t start, std::uint64_t end, ArenaArray<MemoryRange>& runs) noexcept;
    bool Read(std::uint64_t start, std::uint64_t end, ArenaArray<MemoryRange>& runs) noexcept;
    void AddRun(std::uint64_t start, std::uint64_t end, ArenaArray<MemoryRange>& runs) const noexcept;

    int m_file;
    std::size_t m_first = 0; // of the runs of this call
};

} // namespace qvxsys::dump
