#include "LineTables.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include <dwarf.h>
#include <elfutils/libdwelf.h>
#include <gelf.h>

namespace qvxsys::stack {
namespace {

/// libdw decompresses all sections that it knows at once, those with the places of variables, too, which are large. A
/// section without bits is none to it.
void HideSections(ElfFile const& file)
{
    for (char const* const name : {".debug_loc", ".debug_loclists", ".debug_macro", ".debug_macinfo", ".debug_frame"}) {
        GElf_Shdr header;
        Elf_Scn* const section = file.Section(name);
        if (section != nullptr && ::gelf_getshdr(section, &header) != nullptr) {
            header.sh_type = SHT_NOBITS;
            ::gelf_update_shdr(section, &header); // in memory only
        }
    }
}

/// libdw ends the process when memory runs out and this does not leave. Nothing but dwarf_end may be called after it.
[[gnu::noreturn]] void OutOfMemory()
{
    throw std::bad_alloc();
}

/// It does not look whether it got its small pieces of memory at all, so it is asked only while there is some.
void WantMemory()
{
    constexpr std::size_t kEnough = std::size_t{1} << 20;
    ::operator delete(::operator new(kEnough)); // not as an expression, which compilers may leave out
}

Dwarf* Begin(ElfFile const& file) noexcept
{
    Dwarf* const dwarf = ::dwarf_begin_elf(file.Handle(), DWARF_C_READ, nullptr);
    if (dwarf != nullptr) {
        ::dwarf_new_oom_handler(dwarf, OutOfMemory);
    }
    return dwarf;
}

} // namespace

LineTables::LineTables(ElfFile const& file, std::vector<std::string> const& folders)
{
    HideSections(file);
    m_dwarf = Begin(file);
    char const* name = nullptr;
    void const* id = nullptr;
    ssize_t const size = m_dwarf != nullptr ? ::dwelf_dwarf_gnu_debugaltlink(m_dwarf, &name, &id) : 0;
    if (size > 0) {
        m_commonFile = FindByBuildId({static_cast<char const*>(id), static_cast<std::size_t>(size)}, folders);
    }
    if (m_commonFile) {
        m_common = Begin(*m_commonFile);
        ::dwarf_setalt(m_dwarf, m_common);
    }
}

LineTables::~LineTables()
{
    ::dwarf_end(m_dwarf);
    ::dwarf_end(m_common);
}

LineTables::Place LineTables::Find(std::uint64_t address, std::size_t& rows)
{
    WantMemory();
    Dwarf_Die unit;
    Dwarf_Lines* lines = nullptr;
    std::size_t count = 0;
    if (!FindUnit(address, unit) || ::dwarf_getsrclines(&unit, &lines, &count) != 0) {
        return {};
    }
    Dwarf_Off const offset = ::dwarf_dieoffset(&unit);
    auto const place = std::lower_bound(m_read.begin(), m_read.end(), offset);
    if (place == m_read.end() || *place != offset) {
        m_read.insert(place, offset);
        rows += count;
    }
    Dwarf_Line* const line = ::dwarf_getsrc_die(&unit, address);
    Place result;
    if (line != nullptr && ::dwarf_lineno(line, &result.line) == 0) {
        result.file = ::dwarf_linesrc(line, nullptr, nullptr);
    }
    return result;
}

char const* LineTables::FunctionName(std::uint64_t address)
{
    WantMemory();
    Dwarf_Die unit;
    Dwarf_Die* scopes = nullptr;
    int const count = FindUnit(address, unit) ? ::dwarf_getscopes(&unit, address, &scopes) : 0;
    std::unique_ptr<Dwarf_Die, void (*)(void*)> const owner(count > 0 ? scopes : nullptr, std::free);
    for (int i = 0; i < count; ++i) {
        if (::dwarf_tag(&scopes[i]) == DW_TAG_subprogram) {
            Dwarf_Attribute attribute;
            char const* const linkage =
                ::dwarf_formstring(::dwarf_attr_integrate(&scopes[i], DW_AT_linkage_name, &attribute));
            return linkage != nullptr ? linkage : ::dwarf_diename(&scopes[i]);
        }
    }
    return nullptr;
}

/// The compilation unit with an address, from .debug_aranges, which some compilers write for all units and some for
/// none; units that it does not have are asked for their ranges.
bool LineTables::FindUnit(std::uint64_t address, Dwarf_Die& unit)
{
    if (m_dwarf == nullptr) {
        return false;
    }
    if (::dwarf_addrdie(m_dwarf, address, &unit) != nullptr) {
        return true;
    }
    ReadUncoveredRanges();
    auto const behind = std::upper_bound(m_uncovered.begin(), m_uncovered.end(), address,
                                         [](std::uint64_t a, Range const& range) { return a < range.begin; });
    if (behind == m_uncovered.begin() || address >= std::prev(behind)->end) {
        return false;
    }
    return ::dwarf_offdie(m_dwarf, std::prev(behind)->unit, &unit) != nullptr;
}

void LineTables::ReadUncoveredRanges()
{
    if (m_uncoveredRead) {
        return;
    }
    m_uncoveredRead = true;
    std::vector<Dwarf_Off> covered;
    Dwarf_Aranges* table = nullptr;
    std::size_t count = 0;
    if (::dwarf_getaranges(m_dwarf, &table, &count) == 0) {
        for (std::size_t i = 0; i < count; ++i) {
            Dwarf_Off offset = 0;
            if (::dwarf_getarangeinfo(::dwarf_onearange(table, i), nullptr, nullptr, &offset) == 0) {
                covered.push_back(offset);
            }
        }
    }
    std::sort(covered.begin(), covered.end());
    Dwarf_CU* cu = nullptr;
    Dwarf_Die die;
    while (::dwarf_get_units(m_dwarf, cu, &cu, nullptr, nullptr, &die, nullptr) == 0) {
        Dwarf_Off const offset = ::dwarf_dieoffset(&die);
        if (std::binary_search(covered.begin(), covered.end(), offset)) {
            continue;
        }
        Dwarf_Addr base = 0;
        Dwarf_Addr begin = 0;
        Dwarf_Addr end = 0;
        for (std::ptrdiff_t next = 0; (next = ::dwarf_ranges(&die, next, &base, &begin, &end)) > 0;) {
            if (begin > 1) { // of code that the linker left out the rest is at 0 or 1
                m_uncovered.push_back({begin, end, offset});
            }
        }
    }
    std::sort(m_uncovered.begin(), m_uncovered.end(), [](Range const& a, Range const& b) { return a.begin < b.begin; });
}

} // namespace qvxsys::stack
