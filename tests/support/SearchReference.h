#pragma once
// Comparison and search done the slow, obvious way, with ICU's folding: the oracle for the fast ones.

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include <unicode/uchar.h>

namespace reference {

using Text = std::u16string_view;

inline char16_t Fold(char16_t c, bool folded)
{
    return folded ? static_cast<char16_t>(u_foldCase(c, U_FOLD_CASE_DEFAULT)) : c;
}

/// -1, 0 or 1; a common 0 unit ends the comparison as equal if `zeroEnds`.
inline int Compare(Text a, Text b, bool folded, bool zeroEnds = true)
{
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        char16_t const left = Fold(a[i], folded);
        char16_t const right = Fold(b[i], folded);
        if (left != right) {
            return left < right ? -1 : 1;
        }
        if (zeroEnds && left == 0) {
            return 0;
        }
    }
    return 0;
}

/// All positions of a needle, overlapping ones included.
inline std::vector<std::size_t> Positions(Text text, Text needle, bool folded)
{
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i + needle.size() <= text.size(); ++i) {
        if (Compare(text.substr(i, needle.size()), needle, folded, false) == 0) {
            found.push_back(i);
        }
    }
    return found;
}

} // namespace reference
