#include <qvxsys/TStringView.h>

#include <algorithm>

#include <qvxsys/StringUtils.h>
#include <qvxsys/TStringCore.h>

#include "TextErrors.h"
#include "kernels/Kernels.h"

namespace text = qvxsys::text;

namespace {

int PositionOf(TStringView of, TStringView::code_point_iterator const& it)
{
    return qvxsys::detail::PositionOf(of, it.text(), it.codeUnitIndex(), "TStringView");
}

// A count of units cut to [0, length].
std::size_t Clamped(int n, std::size_t length) noexcept
{
    return n < 1 ? 0 : std::min(static_cast<std::size_t>(n), length);
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
