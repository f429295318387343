#pragma once
// ISO 8859-15 where it differs from ISO 8859-1 (ISO/IEC 8859-15:1999).

#include <utility>

namespace qvxsys::text {

inline constexpr std::pair<unsigned char, char16_t> kLatin9[] = {
    {0xA4, 0x20AC}, {0xA6, 0x0160}, {0xA8, 0x0161}, {0xB4, 0x017D},
    {0xB8, 0x017E}, {0xBC, 0x0152}, {0xBD, 0x0153}, {0xBE, 0x0178},
};

/// Without branches, so that a loop over it runs in vector registers.
constexpr char16_t FromLatin9(unsigned char byte) noexcept
{
    char16_t unit = byte;
    for (auto const& [latin9, own] : kLatin9) {
        unit = byte == latin9 ? own : unit;
    }
    return unit;
}

} // namespace qvxsys::text
