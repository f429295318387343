#pragma once
// The folding of units (TCType::FoldCase) for inner loops, and its inverse.

#include <qvxsys/TCType.h>

namespace qvxsys::text {

/// The most units that fold to one and the same (Unicode has no case of more).
inline constexpr unsigned kMostCases = 4;

/// Puts the units that fold to the same as `c` into `units`, c first, and fills up with c; returns how many they are, 0
/// if there are more than kMostCases. The first call of a process asks ICU for all units (a fraction of a millisecond),
/// from then on it costs a few loads.
unsigned CasesOf(char16_t c, char16_t (&units)[kMostCases]) noexcept;

} // namespace qvxsys::text
