#pragma once
// ISO 8859-15: how it differs from ISO 8859-1 (ISO/IEC 8859-15:1999), and all of it as a table for decoding.

#include <array>
#include <cstddef>
#include <utility>

namespace qvxsys::text {

inline constexpr std::pair<unsigned char, char16_t> kLatin9[] = {
    {0xA4, 0x20AC}, {0xA6, 0x0160}, {0xA8, 0x0161}, {0xB4, 0x017D},
    {0xB8, 0x017E}, {0xBC, 0x0152}, {0xBD, 0x0153}, {0xBE, 0x0178},
};

inline constexpr std::array<char16_t, 256> kLatin9Units = [] {
    std::array<char16_t, 256> units{};
    for (std::size_t byte = 0; byte < units.size(); ++byte) {
        units[byte] = static_cast<char16_t>(byte);
    }
    for (auto const& [byte, unit] : kLatin9) {
        units[byte] = unit;
    }
    return units;
}();

constexpr char16_t FromLatin9(unsigned char byte) noexcept
{
    return kLatin9Units[byte];
}

} // namespace qvxsys::text
