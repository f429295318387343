#include "ModuleTable.h"

#include <cstring>
#include <exception>

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/auxv.h>
#include <unistd.h>
#include <unwind.h>

#include "BuildIdNote.h"
#include "KeepErrno.h"
#include "StackCapture.h"

namespace qvxsys::unwind::platform {
namespace {

// What is in the first page of a module can be read whatever is loaded there: its first segment begins with it.
constexpr std::uintptr_t kFirstPage = 4096;

void ReadBuildId(std::uintptr_t bias, ModuleRecord& record) noexcept
{
    ElfW(Ehdr) file;
    std::memcpy(&file, reinterpret_cast<void const*>(record.begin), sizeof file);
    std::uintptr_t const table = sizeof(ElfW(Phdr)) * file.e_phnum;
    if (std::memcmp(file.e_ident, ELFMAG, SELFMAG) != 0 || file.e_phentsize != sizeof(ElfW(Phdr)) ||
        file.e_phoff > kFirstPage || table > kFirstPage - file.e_phoff) {
        return;
    }
    for (unsigned i = 0; i < file.e_phnum; ++i) {
        ElfW(Phdr) segment;
        std::memcpy(&segment, reinterpret_cast<void const*>(record.begin + file.e_phoff + i * sizeof segment),
                    sizeof segment);
        std::uintptr_t const notes = bias + segment.p_vaddr;
        if (segment.p_type != PT_NOTE || notes < record.begin || notes - record.begin > kFirstPage ||
            segment.p_memsz > kFirstPage - (notes - record.begin)) {
            continue;
        }
        auto const id = BuildIdIn({reinterpret_cast<unsigned char const*>(notes), segment.p_memsz}, segment.p_align);
        if (!id.empty() && id.size() <= quorvex::StackModule::kMaxBuildId) {
            record.buildIdInMemory = id.data();
            record.buildIdLength = static_cast<std::uint8_t>(id.size());
            std::memcpy(record.buildId, id.data(), id.size());
            return;
        }
    }
}

/// What the linker says of a module.
struct Linked
{
    std::uintptr_t bias;
    char name[sizeof ModuleRecord::name];
};

/// ThreadSanitizer sees neither the linker's locks nor that a module was loaded before its code ran; so nothing here is
/// what it watches, and no function is called that it does.
__attribute__((no_sanitize("thread"))) bool FindLinked(std::uintptr_t address, Linked& linked) noexcept
{
    dl_find_object found;
    if (_dl_find_object(reinterpret_cast<void*>(address), &found) != 0 || found.dlfo_link_map == nullptr) {
        return false;
    }
    linked.bias = found.dlfo_link_map->l_addr;
    char const volatile* const name = found.dlfo_link_map->l_name;
    std::size_t length = 0;
    while (name[length] != 0) {
        ++length;
    }
    std::size_t const left = length < sizeof linked.name ? 0 : length - (sizeof linked.name - 1);
    for (std::size_t i = left; i <= length; ++i) {
        linked.name[i - left] = name[i];
    }
    return true;
}

bool IsProgram(ModuleRecord const& record) noexcept
{
    return record.Has(::getauxval(AT_PHDR));
}

void SetProgramName(ModuleRecord& record) noexcept
{
    char path[1024];
    qvxsys::platform::KeepErrno const keep;
    auto const length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    constexpr ssize_t kMost = sizeof record.name - 1;
    path[length > 0 ? length : 0] = 0;
    std::strcpy(record.name, length > kMost ? path + (length - kMost) : path);
}

/// The library's code is running, so the library is loaded, and what it is linked with: they go only after it.
bool StaysLoaded(ModuleRecord const& record) noexcept
{
    auto const has = [&record](auto address) { return record.Has(reinterpret_cast<std::uintptr_t>(address)); };
    return IsProgram(record) || has(&CaptureStack) || has(&std::terminate) || has(&_Unwind_Backtrace) ||
           has(&::readlink) || has(&_dl_find_object);
}

} // namespace

bool FindRange(std::uintptr_t address, std::uintptr_t& begin, std::uintptr_t& end) noexcept
{
    dl_find_object found;
    if (_dl_find_object(reinterpret_cast<void*>(address), &found) != 0) {
        return false;
    }
    begin = reinterpret_cast<std::uintptr_t>(found.dlfo_map_start);
    end = reinterpret_cast<std::uintptr_t>(found.dlfo_map_end);
    return true;
}

void Describe(std::uintptr_t address, ModuleRecord& record) noexcept
{
    Linked linked;
    if (!FindLinked(address, linked)) {
        return;
    }
    record.bias = linked.bias;
    ReadBuildId(record.bias, record);
    record.isPermanent = StaysLoaded(record);
    if (IsProgram(record)) {
        SetProgramName(record);
    } else {
        std::strcpy(record.name, linked.name);
    }
}

bool IsSame(ModuleRecord const& record) noexcept
{
    if (record.isPermanent) {
        return true;
    }
    if (record.buildIdInMemory != nullptr) {
        return std::memcmp(record.buildIdInMemory, record.buildId, record.buildIdLength) == 0;
    }
    Linked linked;
    return FindLinked(record.begin, linked) && std::strcmp(record.name, linked.name) == 0;
}

} // namespace qvxsys::unwind::platform
