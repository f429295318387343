#pragma once
// The transcoding kernels: bulk conversion between UTF-8, UTF-16 and UTF-32 on raw memory, one set per instruction
// set, chosen at run time. This is the one place that knows how text is converted quickly; the functions of
// StringUtils and the string class add lengths, capacities, terminators and messages around it.
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

#include <cstddef>

namespace qvxsys::text {

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
};

/// The kernels for this processor: the best set it has, or the one set by LimitInstructionSet (Processor.h).
/// Thread-safe; costs one load once chosen.
Kernels const& kernels() noexcept;

// What each instruction set provides. `decode...` and `encode...` are separate files; KernelDispatch.cpp builds the
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
    std::size_t CountUnit(char16_t const* src, std::size_t n, char16_t unit) noexcept;

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
