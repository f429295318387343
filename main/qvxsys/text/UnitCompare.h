#pragma once
// Unit-by-unit comparison under the string classes. Results are -1, 0 or 1; a common 0 unit ends the comparison as
// equal. "Folded" is by TCType::FoldCase, unit by unit.

#include <cstddef>
#include <cstdint>
#include <cstring>
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

namespace detail {

/// Two loads of a whole T that overlap where they must.
template<class T>
bool EqualEnds(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    auto const at = [](char16_t const* p) {
        T value;
        std::memcpy(&value, p, sizeof value);
        return value;
    };
    std::size_t const last = n - sizeof(T) / sizeof(char16_t);
    return ((at(a) ^ at(b)) | (at(a + last) ^ at(b + last))) == 0;
}

} // namespace detail

/// Whether n units are equal, 0 units being as good as any other.
[[nodiscard]] inline bool EqualUnits(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    if (n > 8) {
        return std::memcmp(a, b, n * sizeof(char16_t)) == 0;
    }
    if (n >= 4) {
        return detail::EqualEnds<std::uint64_t>(a, b, n);
    }
    return n == 0 || (n == 1 ? *a == *b : detail::EqualEnds<std::uint32_t>(a, b, n));
}
[[nodiscard]] bool EqualUnitsFolded(char16_t const* a, char16_t const* b, std::size_t n) noexcept;

/// -1, 0 or 1 for texts in which a 0 unit is as good as any other: a text comes before those that begin with it. A
/// strict order.
[[nodiscard]] int OrderUnits(char16_t const* a, std::size_t lengthA, char16_t const* b, std::size_t lengthB,
                             bool folded) noexcept;

} // namespace qvxsys::text
