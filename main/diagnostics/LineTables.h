#pragma once
// Source lines of one ELF file, read through libdw. Linux only.

#include <memory>

#include <elfutils/libdw.h>

#include "ElfFile.h"

namespace qvxsys::stack {

class LineTables
{
public:
    /// `file` must outlive it. `folders` are where a common part of several debug files (.gnu_debugaltlink) is looked
    /// for by its build-id.
    LineTables(ElfFile const& file, std::vector<std::string> const& folders);
    ~LineTables();
    LineTables(LineTables const&) = delete;
    LineTables& operator=(LineTables const&) = delete;

    struct Place
    {
        char const* file = nullptr; ///< null: unknown
        int line = -1;
    };
    /// The compilation unit's lines are read when the first is asked for; the number of rows is added to `rows`.
    Place Find(std::uint64_t address, std::size_t& rows);
    /// The mangled name, where there is one, of the function at an address; null when unknown.
    char const* FunctionName(std::uint64_t address);

private:
    struct Range
    {
        std::uint64_t begin;
        std::uint64_t end;
        Dwarf_Off unit;
    };

    bool FindUnit(std::uint64_t address, Dwarf_Die& unit);
    void ReadUncoveredRanges();

    std::unique_ptr<ElfFile> m_commonFile;
    Dwarf* m_common = nullptr;
    Dwarf* m_dwarf = nullptr;
    std::vector<Dwarf_Off> m_read;  ///< units whose rows are counted, in order
    std::vector<Range> m_uncovered; ///< by their beginning
    bool m_uncoveredRead = false;
};

} // namespace qvxsys::stack
