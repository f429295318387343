#include <qvxsys/PathText.h>

#include <qvxsys/TCType.h>

namespace qvxsys::detail::path {
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

Root RootWithName(TStringView text) noexcept
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

int FilenameStartAtColon(TStringView text) noexcept
{
    int const length = text.length();
    int start = length;
    int colon = kNone;
    for (; start > 0 && At(text, start - 1) != u'/'; --start) {
        colon = At(text, start - 1) == u':' ? start - 1 : colon;
    }
    bool const isFirst = text.left(start).indexOf(u':') < 0;
    int const name = colon != kNone && isFirst ? colon + 1 : start;
    return name < length ? name : kNone;
}

// Back over separators to the end of a name, and back to its beginning: this is the element before, unless
// - it is part of the root path;
// - separators alone lie between the root directory and `start`: the empty element behind that;
// - the name is the first one behind a root name without a root directory, or of all, and separators were passed:
//   between the two is the empty element at the name's end.
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

int PreviousName(TStringView text, Root root, int start) noexcept
{
    int const previous = PreviousElement(text, root, start);
    return ElementEnd(text, root, previous) > previous ? previous : PreviousElement(text, root, previous);
}

} // namespace qvxsys::detail::path
