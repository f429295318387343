#pragma once
// Unit-by-unit comparison under the string classes. Results are -1, 0 or 1; a common 0 unit ends the comparison as
// equal.

#include <cstddef>
#include <limits>

#include <qvxsys/TCType.h>

namespace qvxsys::text {

struct SameUnit
{
    char16_t operator()(char16_t c) const noexcept { return c; }
};

struct FoldedUnit
{
    char16_t operator()(char16_t c) const noexcept { return TCType::FoldCase(c); }
};

template<class Fold>
int CompareUnits(char16_t const* a, char16_t const* b, std::size_t n, Fold fold) noexcept
{
    for (std::size_t i = 0; i < n; ++i) {
        if (a[i] != b[i]) {
            char16_t const left = fold(a[i]);
            char16_t const right = fold(b[i]);
            if (left != right) {
                return left < right ? -1 : 1;
            }
        } else if (a[i] == 0) {
            return 0;
        }
    }
    return 0;
}

/// At most n units.
inline int CompareUnits(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    return CompareUnits(a, b, n, SameUnit());
}
inline int CompareUnitsFolded(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    return CompareUnits(a, b, n, FoldedUnit());
}

/// Terminated texts.
inline int CompareTerminated(char16_t const* a, char16_t const* b) noexcept
{
    return CompareUnits(a, b, std::numeric_limits<std::size_t>::max());
}
inline int CompareTerminatedFolded(char16_t const* a, char16_t const* b) noexcept
{
    return CompareUnitsFolded(a, b, std::numeric_limits<std::size_t>::max());
}

} // namespace qvxsys::text
