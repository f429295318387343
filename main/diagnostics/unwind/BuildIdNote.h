#pragma once
// The GNU build-id among the notes of an ELF module. Linux only.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>

#include <link.h>

namespace qvxsys::unwind {

/// The bytes of the build-id in a segment of notes; empty when it has none, or its notes make no sense. `alignment` is
/// the segment's: notes are aligned by 8 where it is, and else by 4.
[[nodiscard]] inline std::span<unsigned char const> BuildIdIn(std::span<unsigned char const> notes,
                                                              std::size_t alignment) noexcept
{
    std::size_t const mask = alignment == 8 ? 7 : 3;
    while (notes.size() >= sizeof(ElfW(Nhdr))) {
        ElfW(Nhdr) header;
        std::memcpy(&header, notes.data(), sizeof header);
        std::size_t const value = (sizeof header + std::size_t{header.n_namesz} + mask) & ~mask;
        std::size_t const end = value + header.n_descsz;
        if (end > notes.size()) {
            break;
        }
        if (header.n_type == NT_GNU_BUILD_ID && header.n_namesz == 4 &&
            std::memcmp(notes.data() + sizeof header, "GNU", 4) == 0) {
            return notes.subspan(value, header.n_descsz);
        }
        notes = notes.subspan(std::min(notes.size(), (end + mask) & ~mask)); // the last may end without padding
    }
    return {};
}

} // namespace qvxsys::unwind
