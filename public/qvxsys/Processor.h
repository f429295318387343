#pragma once
// Which processor instructions the library's fast paths use. Chosen by itself at first use; this interface is for tests
// and for looking into a difference between machines:
//
//     auto const before = quorvex::cpu::LimitInstructionSet(quorvex::cpu::InstructionSet::Portable);
//     ...                                                    // text is now converted by the portable code
//     quorvex::cpu::LimitInstructionSet(before);

#include <qvxsys/Platform.h>

namespace quorvex::cpu {

enum class InstructionSet : int {
    Portable = 0, ///< any x86-64
    Avx2 = 1,     ///< AVX2, BMI1, BMI2, LZCNT, POPCNT
    Avx512 = 2,   ///< the above and AVX-512 F, BW, VL, DQ, VBMI, VBMI2
};

/// The best set that processor and operating system support.
[[nodiscard]] QVXSYS_API InstructionSet DetectedInstructionSet() noexcept;

/// The set in use.
[[nodiscard]] QVXSYS_API InstructionSet CurrentInstructionSet() noexcept;

/// Uses no set above `limit` from now on, in the whole process; a limit above the detected set means the detected one.
/// Returns the set that was in use. Thread-safe: every set gives the same results.
QVXSYS_API InstructionSet LimitInstructionSet(InstructionSet limit) noexcept;

/// "portable", "avx2" or "avx512".
[[nodiscard]] QVXSYS_API char const* InstructionSetName(InstructionSet set) noexcept;

} // namespace quorvex::cpu
