#include "ElfFile.h"

#include <array>
#include <utility>

#include <elfutils/libdwelf.h>
#include <fcntl.h>
#include <gelf.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Descriptor_posix.h"

namespace qvxsys::stack {
namespace {

using platform::Descriptor;

FileIdentity IdentityOf(struct stat const& status) noexcept
{
    return {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size), status.st_mtim.tv_sec,
            status.st_mtim.tv_nsec};
}

/// CRC-32 as in IEEE 802.3, which is what .gnu_debuglink has.
std::uint32_t Checksum(std::span<unsigned char const> bytes) noexcept
{
    static constexpr auto kTable = [] {
        std::array<std::uint32_t, 256> table{};
        for (std::uint32_t i = 0; i < 256; ++i) {
            std::uint32_t value = i;
            for (int bit = 0; bit < 8; ++bit) {
                value = (value >> 1) ^ ((value & 1) != 0 ? 0xEDB88320u : 0u);
            }
            table[i] = value;
        }
        return table;
    }();
    std::uint32_t sum = ~0u;
    for (unsigned char const byte : bytes) {
        sum = kTable[(sum ^ byte) & 0xFF] ^ (sum >> 8);
    }
    return ~sum;
}

/// With sections: without them there is nothing to read.
bool IsReadable(Elf* elf) noexcept
{
    GElf_Shdr header;
    std::size_t names = 0;
    return elf != nullptr && ::gelf_getclass(elf) == ELFCLASS64 && ::elf_getshdrstrndx(elf, &names) == 0 &&
           ::gelf_getshdr(::elf_getscn(elf, names), &header) != nullptr && header.sh_type == SHT_STRTAB;
}

std::string FolderOf(std::string const& path)
{
    auto const slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

} // namespace

FileIdentity IdentityOf(std::string const& path) noexcept
{
    struct stat status
    {};
    return ::stat(path.c_str(), &status) == 0 ? IdentityOf(status) : FileIdentity{};
}

std::unique_ptr<ElfFile> ElfFile::Open(std::string const& path)
{
    // Non-blocking, so that a FIFO of that name does not stop us; it is refused below.
    Descriptor const file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status
    {};
    if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0) {
        return nullptr;
    }
    std::unique_ptr<ElfFile> elf(new ElfFile);
    elf->m_path = path;
    elf->m_identity = IdentityOf(status);
    auto const size = static_cast<std::size_t>(status.st_size);
    // Writable, because libelf may put bytes in order in place; a private mapping never changes the file.
    void* const bytes = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE, file.Get(), 0);
    if (bytes == MAP_FAILED) {
        return nullptr;
    }
    elf->m_bytes = static_cast<unsigned char*>(bytes);
    elf->m_size = size;
    ::elf_version(EV_CURRENT);
    elf->m_elf = ::elf_memory(static_cast<char*>(bytes), size);
    return IsReadable(elf->m_elf) ? std::move(elf) : nullptr;
}

std::unique_ptr<ElfFile> ElfFile::OpenEmbedded(ElfFile const& file)
{
    Elf_Scn* const section = file.Section(".gnu_debugdata");
    Elf_Data* const data = section != nullptr ? ::elf_rawdata(section, nullptr) : nullptr;
    if (data == nullptr || data->d_buf == nullptr) {
        return nullptr;
    }
    // libdw decompresses whole files only.
    Descriptor const copy(::memfd_create("debugdata", MFD_CLOEXEC));
    if (!copy.IsOpen() || ::write(copy.Get(), data->d_buf, data->d_size) != static_cast<ssize_t>(data->d_size)) {
        return nullptr;
    }
    std::unique_ptr<ElfFile> elf(new ElfFile);
    elf->m_elf = ::dwelf_elf_begin(copy.Get());
    return IsReadable(elf->m_elf) ? std::move(elf) : nullptr;
}

ElfFile::~ElfFile()
{
    ::elf_end(m_elf);
    if (m_bytes != nullptr) {
        ::munmap(m_bytes, m_size);
    }
}

std::string ElfFile::BuildId() const
{
    void const* id = nullptr;
    ssize_t const size = ::dwelf_elf_gnu_build_id(m_elf, &id);
    return size > 0 ? std::string(static_cast<char const*>(id), static_cast<std::size_t>(size)) : std::string();
}

Elf_Scn* ElfFile::Section(std::string_view name) const noexcept
{
    std::size_t names = 0;
    if (::elf_getshdrstrndx(m_elf, &names) != 0) {
        return nullptr;
    }
    for (Elf_Scn* section = nullptr; (section = ::elf_nextscn(m_elf, section)) != nullptr;) {
        GElf_Shdr header;
        if (::gelf_getshdr(section, &header) == nullptr || header.sh_type == SHT_NOBITS) {
            continue;
        }
        char const* const text = ::elf_strptr(m_elf, names, header.sh_name);
        if (text != nullptr && text == name) {
            return section;
        }
    }
    return nullptr;
}

Elf_Scn* ElfFile::SectionOfType(std::uint32_t type) const noexcept
{
    for (Elf_Scn* section = nullptr; (section = ::elf_nextscn(m_elf, section)) != nullptr;) {
        GElf_Shdr header;
        if (::gelf_getshdr(section, &header) != nullptr && header.sh_type == type) {
            return section;
        }
    }
    return nullptr;
}

bool ElfFile::HasLineInformation() const noexcept
{
    return Section(".debug_line") != nullptr || Section(".zdebug_line") != nullptr;
}

std::string HexText(std::string_view bytes)
{
    std::string text;
    for (char const c : bytes) {
        auto const byte = static_cast<unsigned char>(c);
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 0xF];
    }
    return text;
}

std::unique_ptr<ElfFile> FindByBuildId(std::string_view buildId, std::vector<std::string> const& folders)
{
    if (buildId.size() < 2) {
        return nullptr;
    }
    std::string const digits = HexText(buildId);
    for (std::string const& folder : folders) {
        auto file = ElfFile::Open(folder + "/.build-id/" + digits.substr(0, 2) + '/' + digits.substr(2) + ".debug");
        if (file && file->BuildId() == buildId) {
            return file;
        }
    }
    return nullptr;
}

std::unique_ptr<ElfFile> FindDebugFile(ElfFile const& file, std::string const& path,
                                       std::vector<std::string> const& folders)
{
    std::string const buildId = file.BuildId();
    if (auto found = FindByBuildId(buildId, folders)) {
        return found;
    }
    GElf_Word checksum = 0;
    char const* const name = ::dwelf_elf_gnu_debuglink(file.Handle(), &checksum);
    if (name == nullptr || *name == 0) {
        return nullptr;
    }
    std::string const own = FolderOf(path);
    std::vector<std::string> places{own, own + "/.debug"};
    for (std::string const& folder : folders) {
        places.push_back(folder);
        places.push_back(folder + own);
    }
    for (std::string const& place : places) {
        auto found = ElfFile::Open(place + '/' + name);
        if (!found || found->Identity() == file.Identity()) {
            continue;
        }
        if (buildId.empty() ? Checksum(found->Bytes()) == checksum : found->BuildId() == buildId) {
            return found;
        }
    }
    return nullptr;
}

} // namespace qvxsys::stack
