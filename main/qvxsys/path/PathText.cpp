#include <qvxsys/PathText.h>

#include <algorithm>

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

// Which of the 64 units from `from` on, 0 <= from < length, are separators, a bit each; those behind the end count as
// such. A path's own text has room for 16 units, however short it is.
[[gnu::always_inline]] inline std::uint64_t SeparatorsFrom(TStringView text, int from) noexcept
{
    auto const sixteen = [text](int at) -> std::uint64_t {
        auto const* const s = reinterpret_cast<__m128i const*>(text.data() + at);
        __m128i const separator = _mm_set1_epi16(u'/');
        __m128i const first = _mm_cmpeq_epi16(_mm_loadu_si128(s), separator);
        __m128i const second = _mm_cmpeq_epi16(_mm_loadu_si128(s + 1), separator);
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(first, second)));
    };
    int const rest = text.length() - from;
    if (rest >= 64) {
        return sixteen(from) | sixteen(from + 16) << 16 | sixteen(from + 32) << 32 | sixteen(from + 48) << 48;
    }
    std::uint64_t found = ~std::uint64_t(0) << rest;
    int i = 0;
    for (; i + 16 <= rest; i += 16) {
        found |= sixteen(from + i) << i;
    }
    // The last sixteen units, but for those that have been looked at.
    int const last = std::max(text.length() - 16, 0);
    return i < rest ? found | sixteen(last) >> (from + i - last) << i : found;
}

// Where separators begin or end, when the unit before is one itself (1) or not (0).
std::uint64_t BordersOf(std::uint64_t separators, unsigned before) noexcept
{
    return separators ^ (separators << 1 | before);
}

// The first 64 units' borders behind `end`, where an element ends. What it consists of counts as separators.
std::uint64_t BordersBehind(TStringView text, int end) noexcept
{
    if (end >= text.length()) {
        return 0;
    }
    std::uint64_t const before = (std::uint64_t(1) << (end & 63)) - 1;
    return BordersOf(SeparatorsFrom(text, end & ~63) | before, 1);
}

// The next element, of which one border at most is known: of the 64 units from `first` on.
[[gnu::noinline]] Element FarElement(TStringView text, int first, std::uint64_t borders) noexcept
{
    auto const take = [&, length = text.length()](unsigned before) {
        while (borders == 0) {
            first += 64;
            if (first >= length) {
                return length;
            }
            borders = BordersOf(SeparatorsFrom(text, first), before);
        }
        int const border = first + std::countr_zero(borders);
        borders &= borders - 1;
        return border;
    };
    // Units without a border are separators alone, or of one name.
    int const start = take(1);
    int const end = take(0);
    return {borders, start, end};
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

Element ElementBehind(TStringView text, int end) noexcept
{
    Root const root = RootOf(text);
    bool const isOfRoot = end < root.Length();
    int const known = isOfRoot ? ElementEnd(text, root, end) : end;
    std::uint64_t const begins = known < root.Length() ? 0 : BordersBehind(text, known);
    if (isOfRoot) {
        return {begins, end, known};
    }
    std::uint64_t const ends = begins & (begins - 1);
    int const first = end & ~63;
    return ends != 0 ? Element{ends & (ends - 1), first + std::countr_zero(begins), first + std::countr_zero(ends)}
                     : FarElement(text, first, begins);
}

} // namespace qvxsys::detail::path
