#pragma once
// One code point at a time: decoding, encoding and stepping in UTF-8, UTF-16 and UTF-32.
//
//     char16_t const* text = u"a\U0001F600";
//     int units = 0;
//     char32_t const c = CharacterUtils::GetCodePoint(text + 1, &units);   // U+1F600, units == 2
//
// For whole texts use StringUtils: it is many times faster and checks lengths.
//
// The converters share one contract: (source, destination, position, capacity). They read one code point at `source`,
// write its encoding at destination[position], advance `position` by the units written and return the number of source
// units consumed. They return 0 and write nothing when the source is null, the source unit is 0, the destination is
// null, or the encoding does not fit (position + units > capacity) or `position` is negative. Nothing here throws;
// malformed input becomes U+FFFD. A surrogate is any unit D800..DFFF; high is D800..DBFF, low DC00..DFFF.
// All functions are pure and safe from any thread.
//
// A UTF-16 source is read one unit past a high surrogate, so the text must be terminated or the caller must know that a
// unit follows. A UTF-8 source is read up to the first byte that is no continuation.

#include <qvxsys/Platform.h>

namespace CharacterUtils {

/// What malformed input becomes.
inline constexpr char32_t kReplacement = 0xFFFD;

[[nodiscard]] constexpr bool IsSurrogate(char32_t c) noexcept
{
    return (c & 0xFFFFF800u) == 0xD800u;
}
[[nodiscard]] constexpr bool IsHighSurrogate(char32_t c) noexcept
{
    return (c & 0xFFFFFC00u) == 0xD800u;
}
[[nodiscard]] constexpr bool IsLowSurrogate(char32_t c) noexcept
{
    return (c & 0xFFFFFC00u) == 0xDC00u;
}

/// The code point of a surrogate pair.
[[nodiscard]] constexpr char32_t CombineSurrogates(char16_t high, char16_t low) noexcept
{
    return 0x10000u + ((static_cast<char32_t>(high) - 0xD800u) << 10) + (static_cast<char32_t>(low) - 0xDC00u);
}

/// The two units of a code point above U+FFFF.
[[nodiscard]] constexpr char16_t HighSurrogate(char32_t c) noexcept
{
    return static_cast<char16_t>(0xD800u + ((c - 0x10000u) >> 10));
}
[[nodiscard]] constexpr char16_t LowSurrogate(char32_t c) noexcept
{
    return static_cast<char16_t>(0xDC00u + (c & 0x3FFu));
}

/// The continuation bytes that a UTF-8 lead byte announces: 0 for 0x80..0xBF and 0xFE..0xFF (no leads), up to 5 for the
/// historic forms. Below 0x80: 0.
[[nodiscard]] QVXSYS_API int CountContinuationBytes(char lead) noexcept;

/// @name Converters
/// @{

/// A valid pair is copied (returns 2, needs 2 free units); a lone surrogate becomes U+FFFD (returns 1).
QVXSYS_API int Utf16ToUtf16(char16_t const* src, char16_t* dst, int& position, int capacity) noexcept;
/// The same function under its other names.
inline int CopyCodePoint(char16_t const* src, char16_t* dst, int& position, int capacity) noexcept
{
    return Utf16ToUtf16(src, dst, position, capacity);
}
inline int CopyTCharacter(char16_t const* src, char16_t* dst, int& position, int capacity) noexcept
{
    return Utf16ToUtf16(src, dst, position, capacity);
}
inline int TCodeUnitToUtf16(char16_t const* src, char16_t* dst, int& position, int capacity) noexcept
{
    return Utf16ToUtf16(src, dst, position, capacity);
}

/// A pair becomes one code point (returns 2); a lone surrogate becomes U+FFFD (returns 1).
QVXSYS_API int Utf16ToUtf32(char16_t const* src, char32_t* dst, int& position, int capacity) noexcept;
inline int TCodeUnitToUtf32(char16_t const* src, char32_t* dst, int& position, int capacity) noexcept
{
    return Utf16ToUtf32(src, dst, position, capacity);
}

/// Decodes as Utf16ToUtf32, encodes as Utf32ToUtf8. Returns 2 for a pair, 1 otherwise.
QVXSYS_API int Utf16ToUtf8(char16_t const* src, char* dst, int& position, int capacity) noexcept;

/// Below U+10000, surrogate values included, one unit as it is; up to U+10FFFF a pair; above it one U+FFFD. Returns 1.
QVXSYS_API int Utf32ToUtf16(char32_t const* src, char16_t* dst, int& position, int capacity) noexcept;
inline int Utf32ToTCodeUnit(char32_t const* src, char16_t* dst, int& position, int capacity) noexcept
{
    return Utf32ToUtf16(src, dst, position, capacity);
}

/// 1 to 4 bytes for values up to 0x1FFFFF (surrogate values as 3 bytes, 0x110000 and above as 4); larger values become
/// EF BF BD, for which 4 bytes must be free although 3 are written. Returns 1.
QVXSYS_API int Utf32ToUtf8(char32_t const* src, char* dst, int& position, int capacity) noexcept;

/// Decodes one sequence by its lead byte: a byte up to 0x80 is the code point itself; a byte that is no lead is U+FFFD;
/// else up to CountContinuationBytes(lead) continuation bytes are folded in, and the first byte that is none stops the
/// sequence, which is then U+FFFD (that byte is not consumed). Overlong forms, surrogates and forms of 5 and 6 bytes
/// are decoded; what exceeds U+10FFFF is written as U+FFFD. Returns 1 + the continuation bytes consumed.
QVXSYS_API int Utf8ToUtf16(char const* src, char16_t* dst, int& position, int capacity) noexcept;
/// As Utf8ToUtf16, but the decoded value is stored as it is, up to 0x7FFFFFFF.
QVXSYS_API int Utf8ToUtf32(char const* src, char32_t* dst, int& position, int capacity) noexcept;

/// The two decoders over a source of `length` bytes: a sequence cut short by the end is U+FFFD. A byte 0 is decoded as
/// U+0000. Returns 0 for a length below 1.
QVXSYS_API int DecodeUtf8(char const* src, int length, char32_t& codePoint) noexcept;

/// Copies one whole sequence (returns its length). For a byte that is no lead (0x80 too), or a sequence cut short by a
/// byte that is no continuation, writes EF BF BD, for which 4 bytes must be free, and returns 1 + the continuation
/// bytes inspected; the byte that cut it short is not consumed.
QVXSYS_API int Utf8ToUtf8(char const* src, char* dst, int& position, int capacity) noexcept;
/// @}

/// @name Stepping in UTF-16
/// @{

/// 0 for null or a 0 unit; 2 when the unit is any surrogate, a lone one too; else 1.
[[nodiscard]] constexpr int CountCodeUnits(char16_t const* p) noexcept
{
    return p == nullptr || *p == 0 ? 0 : (IsSurrogate(*p) ? 2 : 1);
}

/// The UTF-16 units of c: 2 from U+10000 on, else 1.
[[nodiscard]] constexpr int CountCodeUnits(char32_t c) noexcept
{
    return c < 0x10000u ? 1 : 2;
}

/// The code point at p; *units (when given) is set to the units it spans: 0 and 0 for null or a 0 unit, U+FFFD and 1
/// for a lone surrogate, the combined value and 2 for a pair.
constexpr char32_t GetCodePoint(char16_t const* p, int* units = nullptr) noexcept
{
    int count = 1;
    char32_t c = p != nullptr ? *p : 0;
    if (c == 0) {
        count = 0;
    } else if (IsSurrogate(c)) {
        bool const pair = IsHighSurrogate(c) && IsLowSurrogate(p[1]);
        c = pair ? CombineSurrogates(p[0], p[1]) : kReplacement;
        count = pair ? 2 : 1;
    }
    if (units != nullptr) {
        *units = count;
    }
    return c;
}

/// Steps over the code point at p: 2 units for any surrogate, 0 for a 0 unit, else 1. Returns null unless p lies within
/// [begin, begin + length), and when the step reaches or passes the end; else the new pointer, with *units (when given)
/// set to CountCodeUnits there.
QVXSYS_API char16_t const* GetNextCodePointPointer(char16_t const* begin, char16_t const* p, int length,
                                                   int* units = nullptr) noexcept;
QVXSYS_API char16_t* GetNextCodePointPointer(char16_t* begin, char16_t* p, int length, int* units = nullptr) noexcept;

/// Steps back from p over low surrogates to the unit that starts the code point; *units (when given) is set to the
/// units stepped over. Returns null when p is null or at `begin`, or when the walk reaches `begin` without a unit that
/// is not a low surrogate.
QVXSYS_API char16_t const* GetPreviousCodePointPointer(char16_t const* begin, char16_t const* p,
                                                       int* units = nullptr) noexcept;
QVXSYS_API char16_t* GetPreviousCodePointPointer(char16_t* begin, char16_t* p, int* units = nullptr) noexcept;

/// GetPreviousCodePointPointer from the end; null for a null `begin` or a length below 1.
QVXSYS_API char16_t const* GetLastCodePointPointer(char16_t const* begin, int length, int* units = nullptr) noexcept;
QVXSYS_API char16_t* GetLastCodePointPointer(char16_t* begin, int length, int* units = nullptr) noexcept;

/// False exactly for a low surrogate.
[[nodiscard]] constexpr bool IsFirstUtf16CodeUnit(char16_t c) noexcept
{
    return !IsLowSurrogate(c);
}
[[nodiscard]] constexpr bool IsFirstCodeUnit(char16_t c) noexcept
{
    return IsFirstUtf16CodeUnit(c);
}

/// False exactly for a continuation byte (top bits 10).
[[nodiscard]] constexpr bool IsFirstUtf8CodeUnit(char c) noexcept
{
    return (static_cast<unsigned char>(c) & 0xC0u) != 0x80u;
}
/// @}

} // namespace CharacterUtils
