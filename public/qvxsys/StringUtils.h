#pragma once
// Whole texts at once: conversion between UTF-8, UTF-16 and UTF-32, measuring the result, line endings, and conversion
// to the standard containers.
//
//     char buffer[64];
//     int const bytes = StringUtils::Utf16ToUtf8(u"Gr\u00FC\u00DFe", buffer, sizeof buffer);       // 7
//     int const needed = StringUtils::MeasureUtf16ToUtf8(u"Gr\u00FC\u00DFe");                      // 7
//
// Lengths are `int` units of their type; a null source is allowed with a length of 0 only (terminated forms: counts as
// empty). Malformed input is never an error: it becomes U+FFFD (UTF-8: one for each maximal subpart, as the Unicode
// Standard recommends and ICU does). Sources and destinations must not overlap. Everything is safe from any thread.
//
// Errors are TStringCore::Exception; N are decimal numbers, ROUTINE is the function's name as
// "StringUtils::Utf8ToUtf16":
//   "Nonsense string length: N encountered in ROUTINE"                                 a negative length
//   "ICU error N encountered while ROUTINE was trying to use FUNCTION"                 see each function
//   "Error insufficient destinationCapacity (N) was passed into ROUTINE."              Utf32ToUtf8
// Behind the ICU errors stand the statuses that ICU's function of that name gives: 15 when the destination is too
// small, -124 when the result fills it exactly (there must be room for a terminator), 1 for a null source or negative
// capacity. A destination that proved too small may have been written to.

#include <cstddef>
#include <string>
#include <vector>

#include <qvxsys/Platform.h>
#include <qvxsys/TStringCore.h>

namespace StringUtils {

/// @name Conversion
/// Each converts n units at src (or a terminated text) into dst, terminates the result and returns its length without
/// the terminator. `capacity` must leave room for the terminator. With a null dst nothing is written and the length the
/// result would have is returned; a result of length 0 is then the ICU error -124.
/// @{
QVXSYS_API int Utf8ToUtf16(char const* src, int n, char16_t* dst, int capacity);
QVXSYS_API int Utf8ToUtf16(char const* src, char16_t* dst, int capacity);
/// Lone surrogates become EF BF BD.
QVXSYS_API int Utf16ToUtf8(char16_t const* src, int n, char* dst, int capacity);
QVXSYS_API int Utf16ToUtf8(char16_t const* src, char* dst, int capacity);
/// Lone surrogates become U+FFFD.
QVXSYS_API int Utf16ToUtf32(char16_t const* src, int n, char32_t* dst, int capacity);
QVXSYS_API int Utf16ToUtf32(char16_t const* src, char32_t* dst, int capacity);
/// Surrogate values and values above U+10FFFF become U+FFFD.
QVXSYS_API int Utf32ToUtf16(char32_t const* src, int n, char16_t* dst, int capacity);
QVXSYS_API int Utf32ToUtf16(char32_t const* src, char16_t* dst, int capacity);
/// Encodes as CharacterUtils::Utf32ToUtf8 does: surrogate values as 3 bytes, values up to 0x1FFFFF as 4. With a null
/// dst the length is measured through UTF-16, where surrogate values and values above U+10FFFF count 3. A destination
/// without room for result and terminator is the capacity error.
QVXSYS_API int Utf32ToUtf8(char32_t const* src, int n, char* dst, int capacity);
QVXSYS_API int Utf32ToUtf8(char32_t const* src, char* dst, int capacity);
/// Decodes as CharacterUtils::Utf8ToUtf32 does (0x80 alone is U+0080; overlong forms, surrogates and forms of 5 and 6
/// bytes are decoded), unlike Utf8ToUtf16; the result is not terminated. With a null dst the length is measured through
/// UTF-16 with ICU's substitution.
/// Errors: "Error unable to process the entire source string in function StringUtils::Utf8ToUtf32" when dst is full,
/// "Error in function StringUtils::Utf8ToUtf32 converting non-ASCII characters to UTF-32; no code units were processed
/// by function CharacterUtils::Utf8ToUtf32" at a byte 0.
QVXSYS_API int Utf8ToUtf32(char const* src, int n, char32_t* dst, int capacity);
QVXSYS_API int Utf8ToUtf32(char const* src, char32_t* dst, int capacity);
/// @}

/// @name Measuring
/// The length of the converted result, 0 for a length of 0. Reads the source once.
/// @{
[[nodiscard]] QVXSYS_API int MeasureUtf8ToUtf16(char const* src);
[[nodiscard]] QVXSYS_API int MeasureUtf8ToUtf16(char const* src, int n);
[[nodiscard]] QVXSYS_API int MeasureUtf8ToUtf32(char const* src);
[[nodiscard]] QVXSYS_API int MeasureUtf8ToUtf32(char const* src, int n);
[[nodiscard]] QVXSYS_API int MeasureUtf16ToUtf8(char16_t const* src);
[[nodiscard]] QVXSYS_API int MeasureUtf16ToUtf8(char16_t const* src, int n);
[[nodiscard]] QVXSYS_API int MeasureUtf16ToUtf32(char16_t const* src);
[[nodiscard]] QVXSYS_API int MeasureUtf16ToUtf32(char16_t const* src, int n);
[[nodiscard]] QVXSYS_API int MeasureUtf32ToUtf8(char32_t const* src);
[[nodiscard]] QVXSYS_API int MeasureUtf32ToUtf8(char32_t const* src, int n);
[[nodiscard]] QVXSYS_API int MeasureUtf32ToUtf16(char32_t const* src);
[[nodiscard]] QVXSYS_API int MeasureUtf32ToUtf16(char32_t const* src, int n);
/// @}

/// @name Counting and copying UTF-16
/// @{
/// Copies n units with lone surrogates replaced by U+FFFD and returns the units written; no terminator is written.
/// Throws "Error encountered while StringUtils::StringValidateCopy was trying to use CharacterUtils::CopyTCharacter"
/// when the destination is null or full, and at a 0 unit.
QVXSYS_API int StringValidateCopy(char16_t const* src, int n, char16_t* dst, int capacity);

/// The code points from index start up to end: a pair counts once, anything else once a unit, 0 units too. A negative
/// end means up to the first 0 unit at or after start; 0, and an end at or before start, give 0. 0 for null.
[[nodiscard]] QVXSYS_API int LengthInCodePoints(char16_t const* s, int start, int end) noexcept;

/// The units that StringValidateCopy would produce for the same range as LengthInCodePoints: replacing keeps lengths,
/// so it is the length of the range.
[[nodiscard]] QVXSYS_API int CountValidatedCodeUnits(char16_t const* s, int start, int end) noexcept;

/// The units spanned by `count` code points from index start, stopping at index length and at a 0 unit; a negative
/// count gives the distance from start to the 0 unit. 0 for null and for a start outside [0, length).
[[nodiscard]] QVXSYS_API int SubStringSizeInCodeUnits(char16_t const* s, int length, int start, int count) noexcept;
/// @}

/// @name Line endings
/// normalizeLineEndings makes every line end a single LF, in place, and returns the new length: CR LF, CR CR LF and a
/// lone CR become LF, and so does LF CR behind the first of the former two. A result that is shorter than the source is
/// terminated. The form with a length takes 0 units as text; a negative length means terminated. Null gives 0.
/// @{
QVXSYS_API int normalizeLineEndings(char* s) noexcept;
QVXSYS_API int normalizeLineEndings(char* s, int length) noexcept;
QVXSYS_API int normalizeLineEndings(char16_t* s) noexcept;
QVXSYS_API int normalizeLineEndings(char16_t* s, int length) noexcept;
QVXSYS_API int normalizeLineEndings(wchar_t* s) noexcept;
QVXSYS_API int normalizeLineEndings(wchar_t* s, int length) noexcept;

/// The text with every LF written as CR LF; a LF that already follows a CR is left alone, so that a text which is in
/// this form comes out unchanged.
[[nodiscard]] QVXSYS_API TStringCore unixToDos(char16_t const* s, std::size_t length);
template<qvxsys::detail::WidePointer W>
[[nodiscard]] TStringCore unixToDos(W const& s, std::size_t length);
/// @}

/// @name Standard containers
/// As the members of TStringCore of the same names; here for views.
/// @{
/// UTF-8.
[[nodiscard]] QVXSYS_API std::string toStdString(TStringView text);
[[nodiscard]] QVXSYS_API std::u16string toStdU16String(TStringView text);
[[nodiscard]] QVXSYS_API std::wstring toStdWString(TStringView text);
/// UTF-8 with a terminating 0, as a buffer that can be written to.
[[nodiscard]] QVXSYS_API std::vector<char> toUtf8Buffer(TStringView text);
/// Writes wide text and a terminator to dst; returns the number of wchar_t before the terminator. Throws
/// "Error insufficient destinationCapacity (N) was passed into StringUtils::toWCharArray." when it does not fit. A null
/// dst gets nothing: returns the number needed.
QVXSYS_API int toWCharArray(TStringView text, wchar_t* dst, int capacity);
/// @}

template<qvxsys::detail::WidePointer W>
TStringCore unixToDos(W const& s, std::size_t length)
{
    TStringCore const units(s, length > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<int>(length));
    return unixToDos(units.constData(), units.size());
}

} // namespace StringUtils
