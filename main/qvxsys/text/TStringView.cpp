#include <qvxsys/TStringView.h>

#include <algorithm>

#include <qvxsys/StringUtils.h>
#include <qvxsys/TStringCore.h>

#include "TextErrors.h"
#include "UnitCompare.h"
#include "UnitSearch.h"
#include "kernels/Kernels.h"

namespace text = qvxsys::text;
using qvxsys::detail::UnitsOf;

namespace {

// Where a search starts: a negative `from` counts from the end; -1 for a start outside the text.
int StartOf(int from, int length) noexcept
{
    std::int64_t const start = from < 0 ? std::int64_t{from} + length : from;
    return start < 0 || start >= length ? -1 : static_cast<int>(start);
}

// A count of units cut to [0, length].
std::size_t Clamped(int n, std::size_t length) noexcept
{
    return n < 1 ? 0 : std::min(static_cast<std::size_t>(n), length);
}

bool IsFolded(CaseCompare cs) noexcept
{
    return cs != CaseCompare::Sensitive;
}

// The position of an iterator of any view over `of`'s text.
int PositionOf(TStringView of, TStringView::code_point_iterator const& it)
{
    if (it.text() != of.data()) {
        qvxsys::detail::ThrowForeignIteratorFrom("TStringView");
    }
    return it.codeUnitIndex() < 0 ? of.length() : std::min(it.codeUnitIndex(), of.length());
}

TStringView::code_point_iterator At(TStringView const& view, int position)
{
    return {position == 0 ? 0 : -1, position < view.length() ? position : -1, view};
}

bool HasPrefix(TStringView text, TStringView prefix, CaseCompare cs) noexcept
{
    if (prefix.empty() || prefix.size() > text.size()) {
        return false;
    }
    return (IsFolded(cs) ? text::CompareUnitsFolded(text.data(), prefix.data(), prefix.size())
                         : text::CompareUnits(text.data(), prefix.data(), prefix.size())) == 0;
}

char32_t LastCodePoint(TStringView view, int& units) noexcept
{
    std::size_t const n = view.size();
    bool const pair =
        n > 1 && CharacterUtils::IsLowSurrogate(view[n - 1]) && CharacterUtils::IsHighSurrogate(view[n - 2]);
    units = pair ? 2 : 1;
    return qvxsys::detail::CodePointAt(view.data(), view.length(), view.length() - units);
}

char32_t FirstCodePoint(TStringView view, int& units) noexcept
{
    char32_t const c = qvxsys::detail::CodePointAt(view.data(), view.length(), 0);
    units = CharacterUtils::CountCodeUnits(c);
    return c;
}

template<class Drop>
TStringView TrimmedLeft(TStringView view, Drop drop) noexcept
{
    int units = 0;
    while (!view.empty() && drop(FirstCodePoint(view, units))) {
        view = view.mid(units);
    }
    return view;
}

template<class Drop>
TStringView TrimmedRight(TStringView view, Drop drop) noexcept
{
    int units = 0;
    while (!view.empty() && drop(LastCodePoint(view, units))) {
        view.truncate(view.length() - units);
    }
    return view;
}

bool IsIn(TStringView set, char32_t c) noexcept
{
    int units = 0;
    for (; !set.empty(); set = set.mid(units)) {
        if (FirstCodePoint(set, units) == c) {
            return true;
        }
    }
    return false;
}

int FindMember(TStringView view, TStringView set, int from, bool wanted) noexcept
{
    int const start = StartOf(from, view.length());
    if (start < 0) {
        return -1;
    }
    TStringView const rest = view.mid(start);
    std::size_t const at = text::FindFirstOf(rest.data(), rest.size(), set.data(), set.size(), wanted);
    return at == text::kNotFound ? -1 : start + static_cast<int>(at);
}

// Cuts at what `next(rest)` finds, which is `width` units wide.
template<class Next>
std::vector<TStringView> Split(TStringView view, int width, EmptyParts empty, Next next)
{
    std::vector<TStringView> parts;
    for (int pos = 0;;) {
        TStringView const rest = view.mid(pos);
        int const at = next(rest);
        TStringView const part = at < 0 ? rest : rest.left(at);
        if (empty == EmptyParts::Keep || !part.empty()) {
            parts.push_back(part);
        }
        if (at < 0) {
            return parts;
        }
        pos += at + width;
    }
}

} // namespace

int TStringView::lengthInCodePoints() const noexcept
{
    return m_data == nullptr ? 0 : static_cast<int>(text::kernels().countCodePoints(m_data, m_length));
}

char16_t TStringView::at(int i) const
{
    if (i < 0 || static_cast<std::size_t>(i) >= m_length) {
        text::Throw("TStringView::at(int): argument out of range.");
    }
    return m_data[i];
}

char32_t TStringView::front() const noexcept
{
    int units = 0;
    return empty() ? 0 : FirstCodePoint(*this, units);
}

char32_t TStringView::back() const noexcept
{
    int units = 0;
    return empty() ? 0 : LastCodePoint(*this, units);
}

// ---- slices

TStringView TStringView::left(int n) const noexcept
{
    return {m_data, Clamped(n, m_length)};
}

TStringView TStringView::right(int n) const noexcept
{
    std::size_t const kept = Clamped(n, m_length);
    return {m_data + (m_length - kept), kept};
}

TStringView TStringView::mid(int pos) const noexcept
{
    auto const skipped = static_cast<std::size_t>(pos);
    return pos < 0 || skipped > m_length ? TStringView() : TStringView(m_data + skipped, m_length - skipped);
}

TStringView TStringView::mid(int pos, int n) const noexcept
{
    return mid(pos).left(n);
}

TStringView TStringView::mid(code_point_iterator const& first, code_point_iterator const& last) const
{
    int const begin = PositionOf(*this, first);
    return mid(begin, PositionOf(*this, last) - begin);
}

TStringView TStringView::mid(code_point_iterator const& first, int n) const
{
    int const begin = PositionOf(*this, first);
    int end = begin;
    for (; n > 0 && end < length(); --n) {
        int const next = qvxsys::detail::NextCodePoint(m_data, length(), end);
        end = next < 0 ? length() : next;
    }
    return mid(begin, end - begin);
}

TStringView& TStringView::truncate(int n) noexcept
{
    return *this = left(n);
}

// ---- code points

TStringView::code_point_iterator TStringView::codepoint_cbegin() const
{
    // Unchecked: the text may begin with a lone low surrogate, and it can be walked all the same.
    return empty() ? codepoint_cend() : code_point_iterator(0, 0, *this);
}

TStringView::code_point_iterator TStringView::codepoint_cend() const
{
    return {-1, -1, *this};
}

TCodePointRange<TStringView> TStringView::codePoints() const noexcept
{
    return TCodePointRange<TStringView>(*this);
}

TStringView::code_point_iterator TStringView::iteratorFrom(int codeUnitIndex) const
{
    return code_point_iterator::createFromIndex(*this, codeUnitIndex);
}

TStringView::code_point_iterator TStringView::iteratorFrom(code_point_iterator const& other) const
{
    int const position = PositionOf(*this, other);
    return position < length() ? code_point_iterator(other.codePointIndex(), position, *this) : codepoint_cend();
}

// ---- searching

bool TStringView::startsWith(TStringView prefix, CaseCompare cs) const noexcept
{
    return HasPrefix(*this, prefix, cs);
}

bool TStringView::endsWith(TStringView suffix, CaseCompare cs) const noexcept
{
    return HasPrefix(right(suffix.length()), suffix, cs);
}

bool TStringView::contains(TStringView needle, CaseCompare cs) const
{
    return indexOf(needle, 0, cs) >= 0;
}

int TStringView::count(TStringView needle, CaseCompare cs) const
{
    if (needle.empty()) {
        return length(); // found everywhere
    }
    return static_cast<int>(text::CountMatches(m_data, m_length, needle.data(), needle.size(), IsFolded(cs)));
}

int TStringView::count32(char32_t c, CaseCompare cs) const
{
    return count(UnitsOf(c).View(), cs);
}

int TStringView::indexOf(TStringView needle, int from, CaseCompare cs) const
{
    int const start = StartOf(from, length());
    if (start < 0 || needle.empty()) {
        return start;
    }
    auto const skipped = static_cast<std::size_t>(start);
    std::size_t const at =
        text::FindFirst(m_data + skipped, m_length - skipped, needle.data(), needle.size(), IsFolded(cs));
    return at == text::kNotFound ? -1 : static_cast<int>(skipped + at);
}

int TStringView::lastIndexOf(TStringView needle, int from, CaseCompare cs) const
{
    int const start = StartOf(from, length());
    if (start < 0 || needle.empty()) {
        return start;
    }
    std::size_t const reach = std::min(static_cast<std::size_t>(start) + needle.size(), m_length);
    std::size_t const at = text::FindLast(m_data, reach, needle.data(), needle.size(), IsFolded(cs));
    return at == text::kNotFound ? -1 : static_cast<int>(at);
}

TStringView::code_point_iterator TStringView::find(TStringView needle, CaseCompare cs) const
{
    int const at = indexOf(needle, 0, cs);
    return at < 0 ? codepoint_cend() : At(*this, at);
}

TStringView::code_point_iterator TStringView::find(TStringView needle, code_point_iterator const& from,
                                                   CaseCompare cs) const
{
    int const at = indexOf(needle, PositionOf(*this, from), cs);
    return at < 0 ? codepoint_cend() : At(*this, at);
}

TStringView::code_point_iterator TStringView::findLast(TStringView needle, CaseCompare cs) const
{
    int const at = lastIndexOf(needle, -1, cs);
    return at < 0 ? codepoint_cend() : At(*this, at);
}

TStringView::code_point_iterator TStringView::findLast(TStringView needle, code_point_iterator const& from,
                                                       CaseCompare cs) const
{
    int const position = PositionOf(*this, from);
    int const at = lastIndexOf(needle, position < length() ? position : -1, cs);
    return at < 0 ? codepoint_cend() : At(*this, at);
}

int TStringView::findOneOf(TStringView set, int from) const noexcept
{
    return FindMember(*this, set, from, true);
}

int TStringView::findOneNotOf(TStringView set, int from) const noexcept
{
    return FindMember(*this, set, from, false);
}

TStringView::code_point_iterator TStringView::findOneOf(TStringView set, code_point_iterator const& from) const
{
    int const at = findOneOf(set, PositionOf(*this, from));
    return at < 0 ? codepoint_cend() : At(*this, at);
}

TStringView::code_point_iterator TStringView::findOneNotOf(TStringView set, code_point_iterator const& from) const
{
    int const at = findOneNotOf(set, PositionOf(*this, from));
    return at < 0 ? codepoint_cend() : At(*this, at);
}

// ---- splitting

std::vector<TStringView> TStringView::split(TStringView separator, EmptyParts empty, CaseCompare cs) const
{
    if (separator.empty()) {
        return {};
    }
    return Split(*this, separator.length(), empty, [&](TStringView rest) { return rest.indexOf(separator, 0, cs); });
}

std::vector<TStringView> TStringView::splitOnAny(TStringView set, EmptyParts empty) const
{
    if (set.empty()) {
        return {};
    }
    return Split(*this, 1, empty, [&](TStringView rest) { return rest.findOneOf(set); });
}

std::vector<TStringView> TStringView::tokenize(TStringView delimiters) const
{
    return Split(*this, 1, EmptyParts::Skip, [&](TStringView rest) { return rest.findOneOf(delimiters); });
}

// ---- trimming

TStringView& TStringView::trimLeft() noexcept
{
    return *this = TrimmedLeft(*this, TCType::isSpace32);
}

TStringView& TStringView::trimRight() noexcept
{
    return *this = TrimmedRight(*this, TCType::isSpace32);
}

TStringView& TStringView::trim() noexcept
{
    return trimLeft().trimRight();
}

TStringView& TStringView::trimLeft(TStringView set) noexcept
{
    return *this = TrimmedLeft(*this, [set](char32_t c) { return IsIn(set, c); });
}

TStringView& TStringView::trimRight(TStringView set) noexcept
{
    return *this = TrimmedRight(*this, [set](char32_t c) { return IsIn(set, c); });
}

TStringView& TStringView::trim(TStringView set) noexcept
{
    return trimLeft(set).trimRight(set);
}

TStringView TStringView::trimmed() const noexcept
{
    TStringView copy = *this;
    return copy.trim();
}

TStringView TStringView::trimmed(TStringView set) const noexcept
{
    TStringView copy = *this;
    return copy.trim(set);
}
