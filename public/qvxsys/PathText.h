#pragma once
// Where the parts of a path begin and end, found on its generic text: what TPathCore does inline. Use TPathCore.
//
// Nothing here fails or allocates. All positions are code units. The rules of paths look for '/', ':', '.', '?',
// letters of "UNC" and for nothing beyond ASCII but the letter of a drive, which is one unit. In UTF-16 no unit of a
// pair equals an ASCII character, so every position that a rule finds begins a code point, one position is before
// another in units exactly when it is in code points, and "the next code point" behind a separator is the next unit. A
// lone surrogate is a code point of its own.

#include <bit>
#include <cstdint>

#include <emmintrin.h>

#include <qvxsys/Platform.h>
#include <qvxsys/TStringView.h>

namespace qvxsys::detail::path {

inline constexpr int kNone = -1;

[[nodiscard]] inline char16_t At(TStringView text, int i) noexcept
{
    return text[static_cast<std::size_t>(i)];
}

/// Which of eight units equal `c`, two bits a unit.
[[nodiscard]] inline unsigned EqualInEight(char16_t const* s, char16_t c) noexcept
{
    __m128i const units = _mm_loadu_si128(reinterpret_cast<__m128i const*>(s));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(units, _mm_set1_epi16(static_cast<short>(c)))));
}

/// The first '/' at or after `from`, 0 <= from <= length; the length when there is none.
[[nodiscard]] inline int FindSeparator(TStringView text, int from) noexcept
{
    int const length = text.length();
    for (; from + 8 <= length; from += 8) {
        if (unsigned const found = EqualInEight(text.data() + from, u'/')) {
            return from + std::countr_zero(found) / 2;
        }
    }
    if (length >= 8) {
        unsigned const found = EqualInEight(text.data() + length - 8, u'/') >> (2 * (from - length + 8));
        return found != 0 ? from + std::countr_zero(found) / 2 : length;
    }
    while (from < length && At(text, from) != u'/') {
        ++from;
    }
    return from;
}

/// The first unit other than '/' at or after `from`; the length when there is none.
[[nodiscard]] inline int SkipSeparators(TStringView text, int from) noexcept
{
    while (from < text.length() && At(text, from) == u'/') {
        ++from;
    }
    return from;
}

/// The root path: a name of so many units, and whether a '/' follows.
struct Root
{
    int name;
    bool directory;

    [[nodiscard]] int Length() const noexcept { return name + (directory ? 1 : 0); }
};

[[nodiscard]] QVXSYS_API Root RootWithName(TStringView text) noexcept;
[[nodiscard]] inline Root RootOf(TStringView text) noexcept
{
    int const length = text.length();
    bool const isSeparated = length > 0 && At(text, 0) == u'/';
    if (length >= 2 && (At(text, 1) == u':' || (isSeparated && At(text, 1) == u'/'))) {
        return RootWithName(text);
    }
    return {0, isSeparated};
}

/// Where the file name of a text begins whose last part has a ':'.
[[nodiscard]] QVXSYS_API int FilenameStartAtColon(TStringView text) noexcept;

/// Where the file name begins, which goes on to the end; kNone without one.
///
/// The rule: with S behind the first ':' (or 0), F the first unit from S on that is not '/', and L the last '/', the
/// file name begins behind L when L >= F, and else at F; it is none when nothing is there.
///
/// Looked at from the end: when no ':' stands behind L, S <= L + 1. Either F < L, and the name begins behind L; or all
/// from S to L are '/', and F, if any, is just there, too. When a ':' stands behind L, another one before L makes
/// S <= L again, with the same result. So the beginning of the text matters only when the last part has a ':', and then
/// only whether it has one, too.
///
/// Returns whether the last part has no ':', which a name cut from the text depends on when it is looked at as a path.
[[nodiscard]] inline bool FindPlainFilename(TStringView text, int& name) noexcept
{
    int const length = text.length();
    int start = length;
    unsigned colons = 0;
    if (length >= 8) {
        for (;;) {
            // Of the first eight units, some may have been looked at before: that changes nothing.
            int const block = start >= 8 ? start - 8 : 0;
            unsigned const separators = EqualInEight(text.data() + block, u'/');
            unsigned const found = EqualInEight(text.data() + block, u':');
            if (separators != 0) {
                int const behind = 32 - std::countl_zero(separators);
                colons |= found >> behind;
                start = block + behind / 2;
                break;
            }
            colons |= found;
            start = block;
            if (block == 0) {
                break;
            }
        }
    } else {
        for (; start > 0 && At(text, start - 1) != u'/'; --start) {
            colons |= At(text, start - 1) == u':' ? 1u : 0u;
        }
    }
    if (colons != 0) [[unlikely]] {
        name = FilenameStartAtColon(text);
        return false;
    }
    name = start < length ? start : kNone;
    return true;
}
[[nodiscard]] inline int FilenameStart(TStringView text) noexcept
{
    int name;
    (void)FindPlainFilename(text, name);
    return name;
}

/// Where the extension of the file name that begins at `name` begins, behind its dot; kNone without one.
[[nodiscard]] inline int ExtensionStart(TStringView text, int name) noexcept
{
    if (name == kNone) {
        return kNone;
    }
    int dot = text.length() - 1;
    while (dot > name && At(text, dot) != u'.') {
        --dot;
    }
    // A name of nothing but dots has none; of others, it is enough that one unit differs.
    for (int i = name; dot > name && i < text.length(); ++i) {
        if (At(text, i) != u'.') {
            return dot + 1;
        }
    }
    return kNone;
}
[[nodiscard]] inline int ExtensionStart(TStringView text) noexcept
{
    return ExtensionStart(text, FilenameStart(text));
}

/// What is left without the file name; the length for a path that has none.
[[nodiscard]] inline int ParentLength(TStringView text) noexcept
{
    int const name = FilenameStart(text);
    if (name == kNone) {
        return text.length();
    }
    Root const root = RootOf(text);
    bool const withSeparator = root.directory ? name > root.name + 1 : name > 0;
    return withSeparator ? name - 1 : name;
}

/// Begins with "//?/".
[[nodiscard]] QVXSYS_API bool IsExtended(TStringView text) noexcept;
[[nodiscard]] QVXSYS_API bool IsUnc(TStringView text) noexcept;

/// @name Elements
/// They begin at 0 and where NextElement says. See TPathCore::begin().
/// @{
/// The end of the element that begins at `start`, 0 <= start < length.
[[nodiscard]] inline int ElementEnd(TStringView text, Root root, int start) noexcept
{
    if (start == 0 && root.name > 0) {
        return root.name;
    }
    return root.directory && start == root.name ? start + 1 : FindSeparator(text, start);
}
/// Where the element after [start, end) begins; the length when it is the last one.
[[nodiscard]] inline int NextElement(TStringView text, Root root, int start, int end) noexcept
{
    bool const follows = end >= text.length() || start == root.name || end == root.name;
    return follows ? end : SkipSeparators(text, end + 1);
}
/// Where the element before the one at `start` (or before the end: the length) begins; 0 < start <= length.
[[nodiscard]] QVXSYS_API int PreviousElement(TStringView text, Root root, int start) noexcept;
/// The same without empty elements.
[[nodiscard]] QVXSYS_API int PreviousName(TStringView text, Root root, int start) noexcept;
/// @}

/// An element that is not empty, and the borders behind it: where names begin and end, a bit each, in the 64 units that
/// its end is among (from a multiple of 64 on). They are found all at once, so that no step waits for the one before
/// it, as it would if each separator were searched for from the last one on. Borders of 0 mean that none are known.
struct Element
{
    std::uint64_t borders = 0;
    int start = 0;
    int end = 0;
};
/// The element behind `end`, 0 or the end of another one; [length, length) when there is none. The text is a path's
/// own.
[[nodiscard]] QVXSYS_API Element ElementBehind(TStringView text, int end) noexcept;
inline void MoveToNext(TStringView text, Element& element) noexcept
{
    std::uint64_t const ends = element.borders & (element.borders - 1);
    if (ends == 0) [[unlikely]] {
        if (element.end == text.length()) {
            element.start = element.end;
            return;
        }
        Element const next = ElementBehind(text, element.end);
        element.borders = next.borders;
        element.start = next.start;
        element.end = next.end;
        return;
    }
    int const first = element.end & ~63;
    element.start = first + std::countr_zero(element.borders);
    element.end = first + std::countr_zero(ends);
    element.borders = ends & (ends - 1);
}

} // namespace qvxsys::detail::path
