#pragma once
// What the string sources share about units and lengths.

#include <cstddef>
#include <cstring>
#include <limits>

namespace qvxsys::text {

inline constexpr int kMaxLength = std::numeric_limits<int>::max();

inline std::size_t Bytes(int units) noexcept
{
    return static_cast<std::size_t>(units) * sizeof(char16_t);
}

inline void CopyUnits(char16_t* to, char16_t const* from, int n) noexcept
{
    std::memcpy(to, from, Bytes(n));
}

inline void MoveUnits(char16_t* to, char16_t const* from, int n) noexcept
{
    std::memmove(to, from, Bytes(n));
}

} // namespace qvxsys::text
