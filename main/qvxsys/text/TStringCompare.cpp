// Comparison: by unit, up to a difference or a common 0.

#include <qvxsys/TStringCore.h>

#include <algorithm>

#include "UnitCompare.h"

namespace text = qvxsys::text;

bool TStringCore::AgreeUpToZero(char16_t const* a, char16_t const* b) noexcept
{
    return text::CompareTerminated(a, b) == 0;
}

int TStringCore::compare(char16_t const* a, char16_t const* b, CaseSensitivity cs) noexcept
{
    a = a != nullptr ? a : u"";
    b = b != nullptr ? b : u"";
    if (a == b) {
        return 0;
    }
    return cs == CaseSensitive ? text::CompareTerminated(a, b) : text::CompareTerminatedFolded(a, b);
}

int TStringCore::compare(wchar_t const* other, CaseSensitivity cs) const
{
    qvxsys::detail::WideUnits const wide(other, -1);
    return compare(constData(), wide.Units(), cs);
}

int TStringCore::compareN(char16_t const* a, char16_t const* b, int n, CaseSensitivity cs) noexcept
{
    a = a != nullptr ? a : u"";
    b = b != nullptr ? b : u"";
    if (n < 0) {
        n = std::max(length(a), length(b));
    }
    if (a == b) {
        return 0;
    }
    auto const most = static_cast<std::size_t>(n);
    return cs == CaseSensitive ? text::CompareTerminated(a, b, most) : text::CompareTerminatedFolded(a, b, most);
}

int TStringView::Compare(TStringView other, CaseCompare cs) const noexcept
{
    return text::OrderUnits(m_data, m_length, other.m_data, other.m_length, cs != CaseCompare::Sensitive);
}

namespace qvxsys::detail {

bool ViewsEqual(TStringView a, TStringView b) noexcept
{
    return a.size() == b.size() &&
           (a.data() == b.data() || a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0);
}

int CompareCommon(TStringView a, TStringView b) noexcept
{
    return text::CompareUnits(a.data(), b.data(), std::min(a.size(), b.size()));
}

} // namespace qvxsys::detail
