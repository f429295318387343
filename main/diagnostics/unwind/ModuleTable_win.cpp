#include "ModuleTable.h"

#include <cstring>

#include "WindowsApi.h"

namespace qvxsys::unwind::platform {
namespace {

IMAGE_NT_HEADERS const* Headers(std::uintptr_t image) noexcept
{
    auto const* const dos = reinterpret_cast<IMAGE_DOS_HEADER const*>(image);
    if (dos->e_magic != IMAGE_DOS_SIGNATURE) {
        return nullptr;
    }
    auto const* const headers =
        reinterpret_cast<IMAGE_NT_HEADERS const*>(image + static_cast<std::uintptr_t>(dos->e_lfanew));
    return headers->Signature == IMAGE_NT_SIGNATURE ? headers : nullptr;
}

/// A CodeView record as linkers write it: "RSDS", GUID, age, path.
struct PdbReference
{
    char magic[4];
    unsigned char guidAndAge[20];
};

void ReadBuildId(IMAGE_NT_HEADERS const& headers, ModuleRecord& record) noexcept
{
    auto const& directory = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_DEBUG];
    auto const* const entries = reinterpret_cast<IMAGE_DEBUG_DIRECTORY const*>(record.begin + directory.VirtualAddress);
    for (std::size_t i = 0; directory.VirtualAddress != 0 && i < directory.Size / sizeof *entries; ++i) {
        if (entries[i].Type == IMAGE_DEBUG_TYPE_CODEVIEW && entries[i].AddressOfRawData != 0) {
            auto const* const pdb = reinterpret_cast<PdbReference const*>(record.begin + entries[i].AddressOfRawData);
            if (std::memcmp(pdb->magic, "RSDS", sizeof pdb->magic) == 0) {
                std::memcpy(record.buildId, pdb->guidAndAge, sizeof pdb->guidAndAge);
                record.buildIdLength = sizeof pdb->guidAndAge;
                return;
            }
        }
    }
    DWORD const parts[] = {headers.FileHeader.TimeDateStamp, headers.OptionalHeader.SizeOfImage};
    std::memcpy(record.buildId, parts, sizeof parts);
    record.buildIdLength = sizeof parts;
}

} // namespace

bool FindRange(std::uintptr_t address, std::uintptr_t& begin, std::uintptr_t& end) noexcept
{
    void* image = nullptr;
    if (::RtlPcToFileHeader(reinterpret_cast<void*>(address), &image) == nullptr) {
        return false;
    }
    begin = reinterpret_cast<std::uintptr_t>(image);
    auto const* const headers = Headers(begin);
    end = begin + (headers != nullptr ? headers->OptionalHeader.SizeOfImage : 0);
    return headers != nullptr;
}

void Describe(std::uintptr_t, ModuleRecord& record) noexcept
{
    record.bias = record.begin;
    ReadBuildId(*Headers(record.begin), record);
    wchar_t path[MAX_PATH];
    DWORD const length = ::GetModuleFileNameW(reinterpret_cast<HMODULE>(record.begin), path, MAX_PATH);
    // UTF-8 may need three bytes for a unit: what is too long loses its beginning.
    constexpr int kUnits = (sizeof record.name - 1) / 3;
    int const units = length < kUnits ? static_cast<int>(length) : kUnits;
    ::WideCharToMultiByte(CP_UTF8, 0, path + (static_cast<int>(length) - units), units, record.name,
                          sizeof record.name - 1, nullptr, nullptr);
}

bool IsSame(ModuleRecord const& record) noexcept
{
    auto const* const headers = Headers(record.begin);
    ModuleRecord now;
    now.begin = record.begin;
    if (headers == nullptr) {
        return false;
    }
    ReadBuildId(*headers, now);
    return now.buildIdLength == record.buildIdLength &&
           std::memcmp(now.buildId, record.buildId, record.buildIdLength) == 0;
}

} // namespace qvxsys::unwind::platform
