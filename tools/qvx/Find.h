#pragma once
// Finds a text in the lines of a longer one that comes in pieces.

#include <cstddef>
#include <cstdint>
#include <vector>

#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace qvx {

struct FindOptions
{
    TStringCore text; ///< without line feeds; nothing is searched for when it is empty
    bool ignoreCase = false;
    std::size_t kept = 3; ///< how many matches are kept with their lines
};

struct Match
{
    std::uint64_t line = 0;   ///< from 1
    std::uint64_t column = 0; ///< in code points, from 1
    TStringCore before;       ///< what stands in the line before the match, cut to kContext units
    TStringCore text;         ///< as it stands in the line
    TStringCore behind;       ///< the rest of the line, cut as well

    static constexpr int kContext = 120;
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
    explicit Finder(FindOptions const& options) : m_options(options) {}

    /// The next piece; the text ends with the one that is `last`. Lines longer than kLongestLine are searched in parts:
    /// every match is found, but what is kept of its line may begin or end at a part's border.
    void Feed(TStringView piece, bool last);

    [[nodiscard]] FindResult Result() && { return std::move(m_result); }

    static constexpr int kLongestLine = 1 << 20;

private:
    void Search(TStringView text);
    void Keep(TStringView text, int lineStart, int at);

    FindOptions const& m_options;
    TStringCore m_rest;                  // a line of which the end has not come yet
    std::uint64_t m_line = 1;            // the number of the line that the searched text has come to,
    std::uint64_t m_columnsBefore = 0;   // how many code points of it were dropped,
    bool m_lineCounted = false;          // and whether a match was found in it
    FindResult m_result;
};

} // namespace qvx
