#pragma once
// Unit-by-unit comparison under the string classes. Results are -1, 0 or 1; a common 0 unit ends the comparison as
// equal. "Folded" is by TCType::FoldCase, unit by unit.

#include <cstddef>
#include <limits>

namespace qvxsys::text {

/// Texts of n units, all of which may be read.
[[nodiscard]] int CompareUnits(char16_t const* a, char16_t const* b, std::size_t n) noexcept;
[[nodiscard]] int CompareUnitsFolded(char16_t const* a, char16_t const* b, std::size_t n) noexcept;

/// Terminated texts, at most so many units of them. Where the lengths are known, it is faster to compare as many units
/// as the shorter one has, terminator included.
[[nodiscard]] int CompareTerminated(char16_t const* a, char16_t const* b,
                                    std::size_t most = std::numeric_limits<std::size_t>::max()) noexcept;
[[nodiscard]] int CompareTerminatedFolded(char16_t const* a, char16_t const* b,
                                          std::size_t most = std::numeric_limits<std::size_t>::max()) noexcept;

/// Whether n units are equal, 0 units being as good as any other.
[[nodiscard]] bool EqualUnits(char16_t const* a, char16_t const* b, std::size_t n) noexcept;
[[nodiscard]] bool EqualUnitsFolded(char16_t const* a, char16_t const* b, std::size_t n) noexcept;

} // namespace qvxsys::text
