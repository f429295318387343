#pragma once
// Finds a text in the lines of a longer one that comes in pieces.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include <qvxsys/KMP.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace qvx {

struct FindOptions
{
    TStringCore text; ///< without line feeds; nothing is searched for when it is empty
    bool ignoreCase = false;
    std::size_t shown = 3; ///< how many matches are kept or told of
    int context = 120;     ///< the most units of the line that are given on either side of a match
};

struct Match
{
    std::uint64_t line = 0;   ///< from 1
    std::uint64_t column = 0; ///< in code points, from 1
    TStringCore before;       ///< what stands in the line before the match
    TStringCore text;         ///< as it stands in the line
    TStringCore behind;       ///< the rest of the line
    bool cutBefore = false;   ///< there is more of the line than `before` has
    bool cutBehind = false;
};

struct FindResult
{
    std::uint64_t matches = 0; ///< that do not overlap, from the left
    std::uint64_t lines = 0;   ///< with at least one
    std::vector<Match> kept;   ///< the first ones
};

class Finder
{
public:
    /// With `onMatch` the first matches are told of as they are found instead of kept.
    Finder(FindOptions const& options, std::function<void(Match const&)> onMatch);

    /// The next piece; the text ends with the one that is `last`. Lines longer than kLongestLine are searched in parts:
    /// every match is found, but what is given of its line may begin or end at a part's border.
    void Feed(TStringView piece, bool last);

    [[nodiscard]] FindResult Result() && { return std::move(m_result); }

    static constexpr int kLongestLine = 1 << 20;

private:
    [[nodiscard]] int Next(TStringView text, int from) const;
    int Search(TStringView text);
    Match MatchAt(TStringView text, int at);

    FindOptions const& m_options;
    std::function<void(Match const&)> m_onMatch;
    std::optional<KMP::StringTable> m_table; // for what can only be folded as whole code points
    TStringCore m_rest;                      // a line of which the end has not come yet

    // Where the search has come to.
    std::uint64_t m_line = 1;
    bool m_lineCounted = false;  // a match was found in it
    int m_lineStart = 0;         // in the searched text
    int m_columnAt = 0;          // up to where the line's code points are counted
    std::uint64_t m_columns = 0; // how many there are before that, those of earlier parts included
    FindResult m_result;
};

} // namespace qvx
