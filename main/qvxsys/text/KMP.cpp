#include <qvxsys/KMP.h>

#include <qvxsys/TCType.h>

namespace KMP {
namespace {

using qvxsys::detail::CodePointAt;
using qvxsys::detail::NextCodePoint;

char32_t Folded(char32_t c, bool folded) noexcept
{
    if (!folded) {
        return c;
    }
    return c < 0x10000 ? TCType::FoldCase(static_cast<char16_t>(c)) : TCType::FoldCase32(c);
}

bool IsFolded(CaseCompare cs) noexcept
{
    return cs != CaseCompare::Sensitive;
}

// A code point of the text by both its indexes.
struct Place
{
    int unit;  // -1: the end
    int point; // counted from where the search started
};

void Step(TStringView text, Place& place) noexcept
{
    place.unit = NextCodePoint(text.data(), text.length(), place.unit);
    ++place.point;
}

// The first code point of the first match from `begin` on. Beside the code point looked at, the beginning of what is
// matched so far is kept, rather than stepped back to from the match's end: backwards, malformed text falls into other
// code points. Both only ever move forward.
Place Search(TStringView text, Place begin, StringTable const& table)
{
    bool const folded = IsFolded(table.caseCompare());
    auto const count = static_cast<int>(table.size());
    Place at = begin;
    for (int j = 0; at.unit >= 0;) {
        char32_t const c = Folded(CodePointAt(text.data(), text.length(), at.unit), folded);
        while (j >= 0 && table.getFoldedCodePoint(j) != c) {
            int const kept = table.prefix(j);
            for (int dropped = j - kept; dropped > 0 && begin.unit >= 0; --dropped) {
                Step(text, begin);
            }
            j = kept;
        }
        if (++j == count) {
            return begin;
        }
        Step(text, at);
    }
    return {-1, 0};
}

bool MayMatch(TStringView text, StringTable const& table) noexcept
{
    return !text.empty() && !table.pattern().empty() && text.size() >= table.pattern().size();
}

} // namespace

StringTable::StringTable(TStringView pattern, CaseCompare cs) : m_pattern(pattern), m_caseCompare(cs)
{
    computePrefixTable();
}

StringTable::StringTable(StringTable const& other) = default;
StringTable::~StringTable() = default;

void StringTable::computePrefixTable()
{
    if (m_pattern.empty()) {
        return;
    }
    for (int unit = 0; unit >= 0; unit = NextCodePoint(m_pattern.data(), m_pattern.length(), unit)) {
        m_stringIndex.push_back(unit);
        m_folded.push_back(Folded(CodePointAt(m_pattern.data(), m_pattern.length(), unit), IsFolded(m_caseCompare)));
    }
    m_prefix.push_back(-1);
    for (std::size_t i = 0; i < m_folded.size(); ++i) {
        int k = m_prefix[i];
        while (k >= 0 && m_folded[i] != getFoldedCodePoint(k)) {
            k = prefix(k);
        }
        m_prefix.push_back(k + 1);
    }
}

TConstCodePointIterator<TStringView>
searchString(TStringView const& text, TConstCodePointIterator<TStringView> const& start, StringTable const& table)
{
    auto const end = text.codepoint_cend();
    // The comparison throws for an iterator over another text. One over a longer text with the same start passes it.
    if (!MayMatch(text, table) || !(start != end) || start.codeUnitIndex() >= text.length()) {
        return end;
    }
    Place const found = Search(text, {start.codeUnitIndex(), 0}, table);
    if (found.unit < 0) {
        return end;
    }
    int const ordinal = start.codePointIndex() < 0 ? -1 : start.codePointIndex() + found.point;
    return {ordinal, found.unit, text};
}

int searchString(TStringView text, StringTable const& table)
{
    return MayMatch(text, table) ? Search(text, {0, 0}, table).unit : -1;
}

} // namespace KMP
