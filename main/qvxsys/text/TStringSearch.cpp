// Searching in strings and views: the cores under TTextReading.

#include <qvxsys/TTextReading.h>

#include <algorithm>
#include <cstdint>

#include <qvxsys/TStringCore.h>

#include "StringLimits.h"
#include "UnitCompare.h"
#include "UnitSearch.h"

namespace text = qvxsys::text;

namespace qvxsys::detail {
namespace {

// Where a search starts: a negative `from` counts from the end; -1 for a start outside the text.
int StartOf(int from, int length) noexcept
{
    std::int64_t const start = from < 0 ? std::int64_t{from} + length : from;
    return start < 0 || start >= length ? -1 : static_cast<int>(start);
}

// Positions are int: of a view beyond that, what its length() says is searched.
TStringView Countable(TStringView text) noexcept
{
    return text.size() <= static_cast<std::size_t>(text::kMaxLength) ? text : text.left(text.length());
}

} // namespace

int PositionOf(TStringView text, char16_t const* walked, int index, char const* of)
{
    if (walked != text.data()) {
        ThrowForeignIteratorFrom(of);
    }
    return index < 0 ? text.length() : std::min(index, text.length());
}

bool HasPrefix(TStringView text, TStringView prefix, bool folded) noexcept
{
    if (prefix.empty() || prefix.size() > text.size()) {
        return false;
    }
    return (folded ? text::CompareUnitsFolded(text.data(), prefix.data(), prefix.size())
                   : text::CompareUnits(text.data(), prefix.data(), prefix.size())) == 0;
}

bool HasSuffix(TStringView text, TStringView suffix, bool folded) noexcept
{
    return HasPrefix(text.right(suffix.length()), suffix, folded);
}

int FindText(TStringView text, TStringView needle, int from, bool folded)
{
    text = Countable(text);
    int const start = StartOf(from, text.length());
    if (start < 0 || needle.empty()) {
        return start;
    }
    auto const skipped = static_cast<std::size_t>(start);
    std::size_t const at =
        text::FindFirst(text.data() + skipped, text.size() - skipped, needle.data(), needle.size(), folded);
    return at == text::kNotFound ? -1 : static_cast<int>(skipped + at);
}

int FindTextLast(TStringView text, TStringView needle, int from, bool folded)
{
    text = Countable(text);
    int const start = StartOf(from, text.length());
    if (start < 0 || needle.empty()) {
        return start;
    }
    std::size_t const reach = std::min(static_cast<std::size_t>(start) + needle.size(), text.size());
    std::size_t const at = text::FindLast(text.data(), reach, needle.data(), needle.size(), folded);
    return at == text::kNotFound ? -1 : static_cast<int>(at);
}

int CountText(TStringView text, TStringView needle, bool folded)
{
    text = Countable(text);
    if (needle.empty()) {
        return text.length(); // found everywhere
    }
    return static_cast<int>(text::CountMatches(text.data(), text.size(), needle.data(), needle.size(), folded));
}

int FindMember(TStringView text, TStringView set, int from, bool wanted) noexcept
{
    text = Countable(text);
    int const start = StartOf(from, text.length());
    if (start < 0) {
        return -1;
    }
    TStringView const rest = text.mid(start);
    std::size_t const at = text::FindFirstOf(rest.data(), rest.size(), set.data(), set.size(), wanted);
    return at == text::kNotFound ? -1 : start + static_cast<int>(at);
}

int RunOf(TStringView text, TStringView set, bool members) noexcept
{
    int const end = FindMember(text, set, 0, !members);
    return end < 0 ? Countable(text).length() : end;
}

} // namespace qvxsys::detail

int TStringCore::findStr(char16_t const* haystack, int haystackLength, char16_t const* needle, int needleLength,
                         int from, CaseSensitivity cs)
{
    bool const isEmpty = needle == nullptr || needleLength == 0 || *needle == 0;
    if (haystackLength < 1 || (haystack == nullptr && !isEmpty)) {
        return -1;
    }
    int const wanted = isEmpty ? 0 : needleLength < 0 ? length(needle) : needleLength;
    return qvxsys::detail::FindText({haystack, static_cast<std::size_t>(haystackLength)},
                                    {needle, static_cast<std::size_t>(wanted)}, from, cs != CaseSensitive);
}
