#include "TextTable.h"

#include <algorithm>

#include "DisplayText.h"

namespace qvx {

std::vector<TStringCore> AlignedLines(std::vector<TableRow> const& rows, std::string_view alignment)
{
    std::vector<int> widths(rows.empty() ? 0 : rows.front().size());
    for (TableRow const& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(row[i]));
        }
    }
    std::vector<TStringCore> lines;
    for (TableRow const& row : rows) {
        TStringCore& line = lines.emplace_back();
        for (std::size_t i = 0; i < row.size(); ++i) {
            bool const isLeft = alignment[std::min(i, alignment.size() - 1)] == 'l';
            bool const isLast = i + 1 == row.size();
            TStringCore const padding(u' ', isLeft && isLast ? 0 : widths[i] - DisplayWidth(row[i]));
            line.append(i == 0 ? u"" : u"  ").append(isLeft ? row[i] + padding : padding + row[i]);
        }
    }
    return lines;
}

} // namespace qvx
