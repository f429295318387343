#pragma once
// The comparison under the string classes, for texts whose lengths are known.

#include <cstddef>

#include <emmintrin.h>

#include <qvxsys/Platform.h>

namespace qvxsys::detail {

/// How many units are looked at without a call. Every string has room for so many, whatever its length.
inline constexpr unsigned kFirstUnits = 16;

/// Where eight units differ or both are 0, two bits a unit.
inline unsigned StopsInEight(char16_t const* a, char16_t const* b) noexcept
{
    __m128i const left = _mm_loadu_si128(reinterpret_cast<__m128i const*>(a));
    __m128i const right = _mm_loadu_si128(reinterpret_cast<__m128i const*>(b));
    // A 0 unit that is not common is a difference.
    __m128i const goesOn = _mm_and_si128(_mm_cmpeq_epi16(left, right), left);
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(goesOn, _mm_setzero_si128())));
}

/// The first of kFirstUnits units in which the texts differ or both have a 0 unit; kFirstUnits if there is none.
inline unsigned FirstStop(char16_t const* a, char16_t const* b) noexcept
{
    if (unsigned const stops = StopsInEight(a, b)) {
        return static_cast<unsigned>(__builtin_ctz(stops)) / 2;
    }
    unsigned const stops = StopsInEight(a + 8, b + 8);
    return stops != 0 ? 8 + static_cast<unsigned>(__builtin_ctz(stops)) / 2 : kFirstUnits;
}

/// Terminated texts of these lengths, by unit: -1, 0 or 1. A common 0 unit ends the comparison as equal. Several times
/// as fast as comparing terminated texts of unknown length.
[[nodiscard]] QVXSYS_API int CompareStrings(char16_t const* a, std::size_t lengthA, char16_t const* b,
                                            std::size_t lengthB) noexcept;
/// The same, each unit folded first (TCType::FoldCase).
[[nodiscard]] QVXSYS_API int CompareStringsFolded(char16_t const* a, std::size_t lengthA, char16_t const* b,
                                                  std::size_t lengthB) noexcept;

} // namespace qvxsys::detail
