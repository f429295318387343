// Functions by address. ELF symbol tables are not in the order of addresses, have several names for one function, and
// labels of assembler sources without a size.

#include "ElfFile.h"

#include <algorithm>
#include <limits>

#include <gelf.h>

namespace qvxsys::stack {
namespace {

/// Higher: the better name for an address.
std::uint32_t RankOf(Elf64_Sym const& symbol) noexcept
{
    auto const binding = ELF64_ST_BIND(symbol.st_info);
    return (symbol.st_size != 0 ? 8u : 0u) + (ELF64_ST_TYPE(symbol.st_info) != STT_NOTYPE ? 4u : 0u) +
           (binding == STB_GLOBAL ? 2u
            : binding == STB_WEAK ? 1u
                                  : 0u);
}

bool IsCode(Elf64_Sym const& symbol) noexcept
{
    auto const type = ELF64_ST_TYPE(symbol.st_info);
    return symbol.st_shndx != SHN_UNDEF && symbol.st_shndx != SHN_ABS && symbol.st_value != 0 &&
           (type == STT_FUNC || type == STT_GNU_IFUNC || type == STT_NOTYPE);
}

} // namespace

void FunctionTable::Add(ElfFile const& file, std::uint32_t type)
{
    Elf_Scn* const section = file.SectionOfType(type);
    GElf_Shdr header;
    if (section == nullptr || ::gelf_getshdr(section, &header) == nullptr) {
        return;
    }
    Elf_Scn* const nameSection = ::elf_getscn(file.Handle(), header.sh_link);
    Elf_Data const* const data = ::elf_getdata(section, nullptr);
    Elf_Data const* const names = nameSection != nullptr ? ::elf_getdata(nameSection, nullptr) : nullptr;
    if (data == nullptr || data->d_buf == nullptr || names == nullptr || names->d_buf == nullptr ||
        names->d_size == 0 || static_cast<char const*>(names->d_buf)[names->d_size - 1] != 0) {
        return;
    }
    std::span const symbols(static_cast<Elf64_Sym const*>(data->d_buf), data->d_size / sizeof(Elf64_Sym));
    for (Elf64_Sym const& symbol : symbols) {
        if (IsCode(symbol) && symbol.st_name != 0 && symbol.st_name < names->d_size) {
            constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
            m_functions.push_back({symbol.st_value, static_cast<char const*>(names->d_buf) + symbol.st_name,
                                   static_cast<std::uint32_t>(std::min<std::uint64_t>(symbol.st_size, kMost)),
                                   RankOf(symbol)});
        }
    }
    for (Elf_Scn* code = nullptr; (code = ::elf_nextscn(file.Handle(), code)) != nullptr;) {
        GElf_Shdr place;
        if (::gelf_getshdr(code, &place) != nullptr && (place.sh_flags & SHF_EXECINSTR) != 0) {
            m_codeEnd = std::max(m_codeEnd, place.sh_addr + place.sh_size);
        }
    }
}

void FunctionTable::Finish()
{
    std::stable_sort(m_functions.begin(), m_functions.end(), [](Function const& a, Function const& b) {
        return a.begin != b.begin ? a.begin < b.begin : a.rank > b.rank;
    });
    DropRivals();
    StretchLabels();
    m_functions.shrink_to_fit();
}

/// Keeps one name for each beginning, and no label inside a function.
void FunctionTable::DropRivals()
{
    std::uint64_t previous = 0;
    std::uint64_t end = 0;
    std::erase_if(m_functions, [&](Function const& f) {
        if (f.begin == previous || (f.size == 0 && f.begin < end)) {
            return true;
        }
        previous = f.begin;
        end = std::max(end, f.begin + f.size);
        return false;
    });
}

/// A label is taken to reach to the next function.
void FunctionTable::StretchLabels()
{
    std::uint64_t next = m_codeEnd;
    for (auto f = m_functions.rbegin(); f != m_functions.rend(); ++f) {
        if (f->size == 0 && next > f->begin) {
            f->size = static_cast<std::uint32_t>(
                std::min<std::uint64_t>(next - f->begin, std::numeric_limits<std::uint32_t>::max()));
        }
        next = f->begin;
    }
}

char const* FunctionTable::Find(std::uint64_t address) const noexcept
{
    auto f = std::upper_bound(m_functions.begin(), m_functions.end(), address,
                              [](std::uint64_t a, Function const& function) { return a < function.begin; });
    // Functions that lie in others are rare and few.
    for (int i = 0; i < 16 && f != m_functions.begin(); ++i) {
        --f;
        if (address - f->begin < f->size) {
            return f->name;
        }
    }
    return nullptr;
}

} // namespace qvxsys::stack
