#pragma once
// Where the parts of a path begin and end, found on its generic text. Nothing here fails or allocates.
//
// All positions are code units. The rules of paths look for '/', ':', '.', '?', letters of "UNC" and for nothing beyond
// ASCII but the letter of a drive, which is one unit. In UTF-16 no unit of a pair equals an ASCII character, so every
// position that a rule finds begins a code point, one position is before another in units exactly when it is in code
// points, and "the next code point" behind a separator is the next unit. A lone surrogate is a code point of its own.

#include <qvxsys/TStringView.h>

namespace qvxsys::path {

inline constexpr int kNone = -1;

/// The root path: a name of so many units, and whether a '/' follows.
struct Root
{
    int name;
    bool directory;

    [[nodiscard]] int Length() const noexcept { return name + (directory ? 1 : 0); }
};
[[nodiscard]] Root RootOf(TStringView text) noexcept;

/// Begins with "//?/".
[[nodiscard]] bool IsExtended(TStringView text) noexcept;
[[nodiscard]] bool IsUnc(TStringView text) noexcept;

/// Where the file name begins, which goes on to the end; kNone without one.
[[nodiscard]] int FilenameStart(TStringView text) noexcept;
/// Where the extension begins, behind its dot; kNone without one.
[[nodiscard]] int ExtensionStart(TStringView text) noexcept;
/// What RemoveFilename leaves: the length for a path without a file name.
[[nodiscard]] int ParentLength(TStringView text) noexcept;

/// The first '/' at or after `from`; the length when there is none.
[[nodiscard]] int FindSeparator(TStringView text, int from) noexcept;
/// The first unit other than '/' at or after `from`; the length when there is none.
[[nodiscard]] int SkipSeparators(TStringView text, int from) noexcept;

/// @name Elements
/// They begin at 0 and where NextElement says. See TPathCore::begin().
/// @{
/// The end of the element that begins at `start`, 0 <= start < length.
[[nodiscard]] int ElementEnd(TStringView text, Root root, int start) noexcept;
/// Where the element after [start, end) begins; the length when it is the last one.
[[nodiscard]] int NextElement(TStringView text, Root root, int start, int end) noexcept;
/// Where the element before the one at `start` (or before the end: the length) begins; 0 < start <= length.
[[nodiscard]] int PreviousElement(TStringView text, Root root, int start) noexcept;
/// @}

[[nodiscard]] inline char16_t At(TStringView text, int i) noexcept
{
    return text[static_cast<std::size_t>(i)];
}

} // namespace qvxsys::path
