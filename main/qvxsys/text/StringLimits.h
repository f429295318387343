#pragma once
// What the string sources share about units and lengths.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "TextErrors.h"

namespace qvxsys::text {

inline constexpr int kMaxLength = std::numeric_limits<int>::max();

/// A length as an int; throws the overflow where none holds it.
inline int CheckedUnits(std::uint64_t n)
{
    if (n > static_cast<std::uint64_t>(kMaxLength)) {
        ThrowOverflow();
    }
    return static_cast<int>(n);
}

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
