#pragma once
// The comparison under the string classes, for texts whose lengths are known.

#include <cstddef>

#include <qvxsys/Platform.h>

namespace qvxsys::detail {

/// Terminated texts of these lengths, by unit, each unit folded first if `folded` (TCType::FoldCase): -1, 0 or 1. A
/// common 0 unit ends the comparison as equal. Several times as fast as comparing terminated texts of unknown length.
[[nodiscard]] QVXSYS_API int CompareStrings(char16_t const* a, std::size_t lengthA, char16_t const* b,
                                            std::size_t lengthB, bool folded) noexcept;

} // namespace qvxsys::detail
