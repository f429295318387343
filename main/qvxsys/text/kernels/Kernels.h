#pragma once
// The kernels: bulk conversion between UTF-8, UTF-16 and UTF-32 on raw memory, and the scans under comparison and
// search, one set per instruction set, chosen at run time. This is where long text is converted and scanned quickly
// (short vector loops for what is no kernel stand where they are used); the functions of StringUtils and the string
// class add lengths, capacities, terminators and messages around it, UnitCompare and UnitSearch the meaning of folding
// and of a match.
//
// Rules that hold for every kernel:
// - Source and destination do not overlap. A null source is allowed only with a length of 0.
// - Nothing is read outside [src, src + n).
// - Nothing is written at or behind dst + (the room stated at the function), whatever the input. Between the returned
//   length and that room a kernel may leave arbitrary units behind.
// - A unit of value 0 is text like any other unless the function says otherwise.
// - `substitutions` is increased by the number of U+FFFD written for malformed input (a U+FFFD that stands in the
//   source is not counted).
// - No allocation, no exceptions, no state; safe from any thread.
//
// Malformed UTF-8 becomes one U+FFFD per maximal subpart (The Unicode Standard 15.0, section 3.9, "U+FFFD Substitution
// of Maximal Subparts"), which is what ICU does since version 60. Every implementation agrees with ICU and with each
// other on every input.

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace qvxsys::text {

/// Neighbouring pairs of units that fold alike: c and c + distance for each c in [low, low + count).
struct CaseRun
{
    char16_t low;
    char16_t count;
    char16_t distance;
};

inline constexpr CaseRun kAsciiLetters{u'A', 26, u'a' - u'A'};

/// What a scan looks for at a position p: one of the units `first` at p and, if it is a pair, one of `second` at
/// p + gap. Alternatives that are not needed repeat another one.
struct Anchors
{
    static constexpr unsigned kMost = 4;

    char16_t first[kMost];
    char16_t second[kMost];
    std::size_t gap;
    unsigned alternatives; ///< how many to look at: 1, 2 or 4
    bool pair;
};

/// Where a scan is. It yields up to 64 positions at a time, as bits: bit k stands for the position at + k.
struct ScanBlock
{
    std::size_t at = 0;
    std::size_t next =
        0; ///< where the next call goes on; the positions still to be scanned begin (backwards: end) here
};

struct Kernels
{
    /// UTF-8 to UTF-16, malformed parts substituted. Room: n units. Returns the units written.
    std::size_t (*utf8ToUtf16)(char const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept;

    /// The length utf8ToUtf16 would return.
    std::size_t (*utf16LengthOfUtf8)(char const* src, std::size_t n) noexcept;

    /// Converts a prefix of src that is well-formed UTF-8 and holds no byte 0, whole code points only, and sets
    /// `consumed` to its length in bytes. It may stop anywhere at a code point boundary from 0 up to the first byte
    /// that is 0 or begins a malformed part, but it stops short of that byte only within the last 64 bytes before it.
    /// Room: n code points. Returns the code points written.
    std::size_t (*utf8PrefixToUtf32)(char const* src, std::size_t n, char32_t* dst, std::size_t& consumed) noexcept;

    /// UTF-16 to UTF-8, each lone surrogate written as EF BF BD. Room: 3n bytes. Returns the bytes written.
    std::size_t (*utf16ToUtf8)(char16_t const* src, std::size_t n, char* dst, std::size_t& substitutions) noexcept;

    /// The length utf16ToUtf8 would return.
    std::size_t (*utf8LengthOfUtf16)(char16_t const* src, std::size_t n) noexcept;

    /// UTF-16 to UTF-32, each lone surrogate written as U+FFFD. Room: n. Returns the code points written.
    std::size_t (*utf16ToUtf32)(char16_t const* src, std::size_t n, char32_t* dst, std::size_t& substitutions) noexcept;

    /// UTF-32 to UTF-16, surrogate values and values above U+10FFFF written as U+FFFD. Room: 2n. Returns the units.
    std::size_t (*utf32ToUtf16)(char32_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept;

    /// As utf32ToUtf16, but surrogate values are written as they are and not counted.
    std::size_t (*utf32ToUtf16Raw)(char32_t const* src, std::size_t n, char16_t* dst,
                                   std::size_t& substitutions) noexcept;

    /// UTF-32 to UTF-8: values up to 0x1FFFFF by the plain 1 to 4 byte rule (surrogate values as 3 bytes, 0x110000 and
    /// up as 4), larger ones as EF BF BD. Room: 4n bytes. Returns the bytes written.
    std::size_t (*utf32ToUtf8Raw)(char32_t const* src, std::size_t n, char* dst) noexcept;

    /// Copies UTF-16 with each lone surrogate replaced by U+FFFD. Room: n units (exactly n are written).
    void (*copyWellFormed)(char16_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept;

    /// The number of code points: a high surrogate followed by a low one counts once, anything else once a unit.
    std::size_t (*countCodePoints)(char16_t const* src, std::size_t n) noexcept;

    /// The number of units equal to `unit`.
    std::size_t (*countUnit)(char16_t const* src, std::size_t n, char16_t unit) noexcept;

    /// The first index at which the texts differ or both have a 0 unit, n if there is none.
    std::size_t (*firstStop)(char16_t const* a, char16_t const* b, std::size_t n) noexcept;

    /// The same, but units that fold alike by kAsciiLetters or by `run` do not differ.
    std::size_t (*firstStopFolded)(char16_t const* a, char16_t const* b, std::size_t n, CaseRun run) noexcept;

    /// The next positions in [block.next, count) with the anchors; 0 if there are none up to the end. Reads units up
    /// to count, and from gap to gap + count for a pair.
    std::uint64_t (*nextHits)(char16_t const* text, std::size_t count, Anchors const& anchors,
                              ScanBlock& block) noexcept;

    /// The same from the end: the last positions in [0, block.next), where block.next is at most count.
    std::uint64_t (*previousHits)(char16_t const* text, std::size_t count, Anchors const& anchors,
                                  ScanBlock& block) noexcept;
};

extern std::atomic<Kernels const*> g_kernels; ///< null until chosen
Kernels const& ChooseKernels() noexcept;

/// The kernels for this processor: the best set it has, or the one set by LimitInstructionSet (Processor.h).
/// Thread-safe; costs one load once chosen. Not for kernels: see docs/architecture.md.
inline Kernels const& kernels() noexcept
{
    Kernels const* const chosen = g_kernels.load(std::memory_order_relaxed);
    return chosen != nullptr ? *chosen : ChooseKernels();
}

// What each instruction set provides. Decoding, encoding and scanning are separate files; KernelDispatch.cpp builds the
// tables from them.
#define QVX_DECLARE_KERNELS                                                                                            \
    std::size_t Utf8ToUtf16(char const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept;       \
    std::size_t Utf16LengthOfUtf8(char const* src, std::size_t n) noexcept;                                            \
    std::size_t Utf8PrefixToUtf32(char const* src, std::size_t n, char32_t* dst, std::size_t& consumed) noexcept;      \
    std::size_t Utf16ToUtf8(char16_t const* src, std::size_t n, char* dst, std::size_t& substitutions) noexcept;       \
    std::size_t Utf8LengthOfUtf16(char16_t const* src, std::size_t n) noexcept;                                        \
    std::size_t Utf16ToUtf32(char16_t const* src, std::size_t n, char32_t* dst, std::size_t& substitutions) noexcept;  \
    std::size_t Utf32ToUtf16(char32_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept;  \
    std::size_t Utf32ToUtf16Raw(char32_t const* src, std::size_t n, char16_t* dst,                                     \
                                std::size_t& substitutions) noexcept;                                                  \
    std::size_t Utf32ToUtf8Raw(char32_t const* src, std::size_t n, char* dst) noexcept;                                \
    void CopyWellFormed(char16_t const* src, std::size_t n, char16_t* dst, std::size_t& substitutions) noexcept;       \
    std::size_t CountCodePoints(char16_t const* src, std::size_t n) noexcept;                                          \
    std::size_t CountUnit(char16_t const* src, std::size_t n, char16_t unit) noexcept;                                 \
    std::size_t FirstStop(char16_t const* a, char16_t const* b, std::size_t n) noexcept;                               \
    std::size_t FirstStopFolded(char16_t const* a, char16_t const* b, std::size_t n, CaseRun run) noexcept;            \
    std::uint64_t NextHits(char16_t const* text, std::size_t count, Anchors const& anchors,                            \
                           ScanBlock& block) noexcept;                                                                 \
    std::uint64_t PreviousHits(char16_t const* text, std::size_t count, Anchors const& anchors,                        \
                               ScanBlock& block) noexcept;

/// Any x86-64 (SSE2): no run-time test needed.
namespace portable {
QVX_DECLARE_KERNELS
}
/// AVX2, BMI1/2, LZCNT, POPCNT.
namespace avx2 {
QVX_DECLARE_KERNELS
}
/// AVX-512 F, BW, VL, DQ, VBMI, VBMI2.
namespace avx512 {
QVX_DECLARE_KERNELS
}

#undef QVX_DECLARE_KERNELS

} // namespace qvxsys::text
