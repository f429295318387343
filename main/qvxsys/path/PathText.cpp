#include "PathText.h"

#include <qvxsys/TCType.h>

namespace qvxsys::path {
namespace {

// "/UNC/" in any case behind the first three units of at least eight.
bool HasUncMarker(TStringView text) noexcept
{
    auto const is = [text](int i, char16_t upper) { return (At(text, i) & ~0x20) == upper; };
    return text.length() >= 8 && At(text, 3) == u'/' && is(4, u'U') && is(5, u'N') && is(6, u'C') &&
           At(text, 7) == u'/';
}

bool HasDriveAt(TStringView text, int i) noexcept
{
    return text.length() > i + 1 && At(text, i + 1) == u':' && TCType::isAlpha(At(text, i));
}

bool StartsWithTwoSeparators(TStringView text) noexcept
{
    return text.length() >= 3 && At(text, 0) == u'/' && At(text, 1) == u'/';
}

int RootNameLength(TStringView text) noexcept
{
    if (HasDriveAt(text, 0)) {
        return 2;
    }
    if (!StartsWithTwoSeparators(text)) {
        return 0;
    }
    if (IsExtended(text)) {
        return HasDriveAt(text, 4) ? 6 : HasUncMarker(text) ? FindSeparator(text, 8) : 0;
    }
    return At(text, 2) != u'?' ? FindSeparator(text, 2) : 0;
}

} // namespace

Root RootOf(TStringView text) noexcept
{
    int const name = RootNameLength(text);
    return {name, name < text.length() && At(text, name) == u'/'};
}

bool IsExtended(TStringView text) noexcept
{
    return StartsWithTwoSeparators(text) && text.length() >= 4 && At(text, 2) == u'?' && At(text, 3) == u'/';
}

bool IsUnc(TStringView text) noexcept
{
    return StartsWithTwoSeparators(text) && (At(text, 2) != u'?' || HasUncMarker(text));
}

// The rule: with S behind the first ':' (or 0), F the first unit from S on that is not '/', and L the last '/', the
// file name begins behind L when L >= F, and else at F; it is none when nothing is there.
//
// Looked at from the end: when no ':' stands behind L, S <= L + 1. Either F < L, and the name begins behind L; or all
// from S to L are '/', and F, if any, is just there, too. When a ':' stands behind L, another one before L makes S <= L
// again, with the same result. So the beginning of the text matters only when the last part has a ':', and then only
// whether it has one, too.
int FilenameStart(TStringView text) noexcept
{
    int const length = text.length();
    int start = length;
    int colon = kNone;
    while (start > 0 && At(text, start - 1) != u'/') {
        --start;
        if (At(text, start) == u':') {
            colon = start;
        }
    }
    if (colon != kNone) {
        int before = start;
        while (before > 0 && At(text, before - 1) != u':') {
            --before;
        }
        if (before == 0) {
            start = colon + 1;
        }
    }
    return start < length ? start : kNone;
}

int ExtensionStart(TStringView text) noexcept
{
    int const start = FilenameStart(text);
    if (start == kNone) {
        return kNone;
    }
    int dot = text.length() - 1;
    while (dot > start && At(text, dot) != u'.') {
        --dot;
    }
    if (dot == start) {
        return kNone;
    }
    // A name of nothing but dots has none; of others, it is enough that one unit differs.
    for (int i = start; i < text.length(); ++i) {
        if (At(text, i) != u'.') {
            return dot + 1;
        }
    }
    return kNone;
}

int ParentLength(TStringView text) noexcept
{
    int const name = FilenameStart(text);
    if (name == kNone) {
        return text.length();
    }
    Root const root = RootOf(text);
    bool const withSeparator = root.directory ? name > root.name + 1 : name > 0;
    return withSeparator ? name - 1 : name;
}

int FindSeparator(TStringView text, int from) noexcept
{
    while (from < text.length() && At(text, from) != u'/') {
        ++from;
    }
    return from;
}

int SkipSeparators(TStringView text, int from) noexcept
{
    while (from < text.length() && At(text, from) == u'/') {
        ++from;
    }
    return from;
}

int ElementEnd(TStringView text, Root root, int start) noexcept
{
    if (start == 0 && root.name > 0) {
        return root.name;
    }
    return root.directory && start == root.name ? start + 1 : FindSeparator(text, start);
}

int NextElement(TStringView text, Root root, int start, int end) noexcept
{
    if (end >= text.length() || start == root.name || end == root.name) {
        return end;
    }
    return SkipSeparators(text, end + 1);
}

// Back over separators to the end of a name, and back to its beginning: this is the element before, unless
// - it is part of the root path;
// - separators alone lie between the root directory and `start`: the empty element behind that;
// - the name is the first one behind a root name without a root directory, or of all, and separators were passed:
// between
//   the two is the empty element at the name's end.
int PreviousElement(TStringView text, Root root, int start) noexcept
{
    int const first = root.Length();
    if (start <= first) {
        return root.directory && start > root.name ? root.name : 0;
    }
    int end = start;
    while (end > first && At(text, end - 1) == u'/') {
        --end;
    }
    int name = end;
    while (name > first && At(text, name - 1) != u'/') {
        --name;
    }
    return !root.directory && name == first && end < start ? end : name;
}

} // namespace qvxsys::path
