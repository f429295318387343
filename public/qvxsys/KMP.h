#pragma once
// Searching many texts for one pattern, code point by code point (Knuth, Morris and Pratt, SIAM J. Comput. 6, 1977).
//
//     KMP::StringTable const table(u"stra\U0001F600e", CaseCompare::Insensitive);
//     int const at = KMP::searchString(u"Die STRA\U0001F600E", table);            // 4, in code units
//
// The pattern is prepared once; each search is linear in the text and looks at no code point of it twice but through
// the table. Unlike TStringView::indexOf, which compares units, this folds characters above U+FFFF as well, and finds
// whole code points only. Folding is by single code point: "STRASSE" does not find "straße".
//
// To look for a text once, TStringView::indexOf is several times as fast.

#include <cstdint>
#include <vector>

#include <qvxsys/CodePointIterator.h>
#include <qvxsys/Platform.h>
#include <qvxsys/TStringView.h>

namespace KMP {

/// A pattern prepared for searching. Immutable, so it may be used from many threads at once. It keeps a view of the
/// pattern, which must outlive it.
///
/// Code points are those of the iterators (CodePointIterator.h): in malformed text a lone surrogate counts as U+FFFD
/// and takes the unit behind it along.
class QVXSYS_API StringTable
{
public:
    /// Linear in the pattern. CaseCompare::Sensitive compares code points as they are, any other value folds them.
    StringTable(TStringView pattern QVXSYS_LIFETIME_BOUND, CaseCompare cs);
    StringTable(StringTable const& other);
    StringTable& operator=(StringTable const& other) = delete;
    ~StringTable();

    /// How it was made.
    [[nodiscard]] CaseCompare caseCompare() const noexcept { return m_caseCompare; }
    /// The pattern's length in code points.
    [[nodiscard]] std::uint64_t size() const noexcept { return m_stringIndex.size(); }
    /// The pattern itself.
    [[nodiscard]] TStringView pattern() const noexcept { return m_pattern; }

    /// Where to go on in the pattern when code point i does not match, for i in [0, size()]: the length of the longest
    /// proper border of its first i code points, -1 for i == 0. For a pattern that is not empty.
    [[nodiscard]] int prefix(int i) const noexcept { return m_prefix[static_cast<std::size_t>(i)]; }
    /// The code-unit index in the pattern at which code point i begins, for i in [0, size()).
    [[nodiscard]] int stringIndex(int i) const noexcept { return m_stringIndex[static_cast<std::size_t>(i)]; }
    /// Code point i as it is compared, for i in [0, size()).
    [[nodiscard]] char32_t getFoldedCodePoint(int i) const noexcept { return m_folded[static_cast<std::size_t>(i)]; }

private:
    void computePrefixTable();

    TStringView m_pattern;
    CaseCompare m_caseCompare;
    std::vector<int> m_prefix;
    std::vector<int> m_stringIndex;
    std::vector<char32_t> m_folded; // so that a search need not decode and fold the pattern again and again
};

/// The first match at or after `start`, an iterator over `text`; text.codepoint_cend() when there is none, when the
/// pattern or the text is empty, or when the text has fewer units than the pattern. The result's code-point index is
/// known if that of `start` is. Throws std::runtime_error "TConstCodePointIterator<class TStringView>::operator !=
/// iterators do not reference the same underlying string." when `start` walks another text.
[[nodiscard]] QVXSYS_API TConstCodePointIterator<TStringView>
searchString(TStringView const& text QVXSYS_LIFETIME_BOUND, TConstCodePointIterator<TStringView> const& start,
             StringTable const& table);

/// The code-unit index of the first match in the text, or -1.
[[nodiscard]] QVXSYS_API int searchString(TStringView text, StringTable const& table);

} // namespace KMP
