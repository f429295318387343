#pragma once
// ELF files, read through libelf. Linux only.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <libelf.h>

namespace qvxsys::stack {

/// What tells one file from another under the same name.
struct FileIdentity
{
    std::uint64_t device = 0;
    std::uint64_t node = 0;
    std::uint64_t size = 0;
    std::int64_t seconds = 0; ///< of its last change
    std::int64_t nanoseconds = 0;
    [[nodiscard]] friend bool operator==(FileIdentity const&, FileIdentity const&) noexcept = default;
};
/// All 0 when there is no such file.
FileIdentity IdentityOf(std::string const& path) noexcept;

/// A 64-bit ELF file in memory. No descriptor is kept open.
class ElfFile
{
public:
    /// Null when it cannot be read or is no such file.
    static std::unique_ptr<ElfFile> Open(std::string const& path);
    /// The file that another has in its section .gnu_debugdata, compressed: a table of functions that are not exported.
    static std::unique_ptr<ElfFile> OpenEmbedded(ElfFile const& file);
    ~ElfFile();
    ElfFile(ElfFile const&) = delete;
    ElfFile& operator=(ElfFile const&) = delete;

    [[nodiscard]] Elf* Handle() const noexcept { return m_elf; }
    [[nodiscard]] std::string const& Path() const noexcept { return m_path; }
    [[nodiscard]] FileIdentity const& Identity() const noexcept { return m_identity; }
    /// Raw bytes; empty without one.
    [[nodiscard]] std::string BuildId() const;
    /// A section that has content, by its name; null without.
    [[nodiscard]] Elf_Scn* Section(std::string_view name) const noexcept;
    /// The first section of that type that has content.
    [[nodiscard]] Elf_Scn* SectionOfType(std::uint32_t type) const noexcept;
    [[nodiscard]] bool HasLineInformation() const noexcept;
    /// The whole file; empty of an embedded one.
    [[nodiscard]] std::span<unsigned char const> Bytes() const noexcept { return {m_bytes, m_size}; }

private:
    ElfFile() = default;

    std::string m_path;
    FileIdentity m_identity;
    unsigned char* m_bytes = nullptr;
    std::size_t m_size = 0;
    Elf* m_elf = nullptr;
};

/// The separate debug file of a module, looked for as Symbols.h says; null when there is none. `path` is the module's.
std::unique_ptr<ElfFile> FindDebugFile(ElfFile const& file, std::string const& path,
                                       std::vector<std::string> const& folders);
/// FOLDER/.build-id/xx/yyyy.debug, if its build-id is that one.
std::unique_ptr<ElfFile> FindByBuildId(std::string_view buildId, std::vector<std::string> const& folders);

/// Two lower-case digits for each byte.
std::string HexText(std::string_view bytes);

/// The functions of a module by their addresses, with names that point into its files.
class FunctionTable
{
public:
    /// Takes in a symbol table, of type SHT_SYMTAB or SHT_DYNSYM, if the file has one.
    void Add(ElfFile const& file, std::uint32_t type);
    /// To be called after the last Add.
    void Finish();
    /// The mangled name of the function at an address (of the file, not of memory); null when there is none.
    [[nodiscard]] char const* Find(std::uint64_t address) const noexcept;

private:
    struct Function
    {
        std::uint64_t begin;
        char const* name;
        std::uint32_t size;
        std::uint32_t rank; ///< of several with one beginning the highest is taken
    };

    void DropRivals();
    void StretchLabels();

    std::vector<Function> m_functions;
    std::uint64_t m_codeEnd = 0;
};

} // namespace qvxsys::stack
