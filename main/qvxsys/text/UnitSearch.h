#pragma once
// Searching UTF-16 units, exactly or folded (TCType::FoldCase), on raw memory. A unit of value 0 is a unit like any
// other, in texts and in needles. Every search is linear in the text and the needle, whatever they are.

#include <cstddef>
#include <cstdint>
#include <memory>

#include "kernels/Kernels.h"

namespace qvxsys::text {

inline constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

/// The first and the last position of a needle of n >= 1 units in a text of `length` units, or kNotFound. Throw
/// std::bad_alloc for a long needle that the text nearly matches in many places.
[[nodiscard]] std::size_t FindFirst(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n,
                                    bool folded);
[[nodiscard]] std::size_t FindLast(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n,
                                   bool folded);

/// The number of positions with a needle of n >= 1 units, overlapping ones included.
[[nodiscard]] std::size_t CountMatches(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n,
                                       bool folded);

/// The first unit that is (`member`) or is not in a set of units, or kNotFound.
[[nodiscard]] std::size_t FindFirstOf(char16_t const* text, std::size_t length, char16_t const* set, std::size_t n,
                                      bool member = true) noexcept;

/// All matches of a needle, one after the other:
///
///     UnitMatches matches(text, length, needle, n, folded);
///     for (std::size_t at = matches.Next(); at != kNotFound; at = matches.Next(at + n)) { ... }
///
/// All of them together cost one search over the text. Text and needle must live and stay as they are meanwhile.
class UnitMatches
{
public:
    /// n >= 1.
    UnitMatches(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n, bool folded) noexcept;
    UnitMatches(UnitMatches const&) = delete;
    UnitMatches& operator=(UnitMatches const&) = delete;

    /// The first match at or after `from`, and behind the one returned last; or kNotFound. So Next() steps through the
    /// overlapping matches too, Next(at + n) through the others.
    /// Looks at nothing before `from`.
    [[nodiscard]] std::size_t Next(std::size_t from = 0);

    /// Whether Next cannot throw for a needle of n units.
    [[nodiscard]] static constexpr bool NeverFails(std::size_t n) noexcept { return n < kSmallNeedle; }

private:
    // Needles of less units need no allocation for their table of borders.
    static constexpr std::size_t kSmallNeedle = 64;

    bool Verify(std::size_t at);
    void StartByBorders(std::size_t from);
    std::size_t NextByBorders(std::size_t from);

    char16_t const* const m_text;
    std::size_t const m_length;
    char16_t const* const m_needle;
    std::size_t const m_n;
    bool const m_folded;
    bool m_byBorders = false;

    // Scanning for anchors.
    Kernels const& m_kernels;
    Anchors m_anchors;
    std::size_t m_offset = 0;    // of the first anchor in the needle
    std::size_t m_positions = 0; // at which the needle fits
    ScanBlock m_block;
    std::uint64_t m_hits = 0;
    std::size_t m_work = 0; // done in looking at hits

    // By borders: the unit to look at next, and how many of the needle's units match those before it.
    std::size_t m_at = 0;
    std::size_t m_matched = 0;
    std::unique_ptr<std::size_t[]> m_large;
    std::size_t m_small[kSmallNeedle]; // not initialised
};

} // namespace qvxsys::text
