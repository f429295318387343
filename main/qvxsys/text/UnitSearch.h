#pragma once
// Searching UTF-16 units, exactly or folded (TCType::FoldCase), on raw memory.

#include <cstddef>

namespace qvxsys::text {

inline constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

/// The first and the last position of a needle of n >= 1 units in a text of `length` units, or kNotFound. Linear in the
/// worst case when folded, and for FindFirst.
std::size_t FindFirst(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n, bool folded);
std::size_t FindLast(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n, bool folded);

} // namespace qvxsys::text
