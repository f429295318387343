#pragma once
// Text in columns.

#include <string_view>
#include <vector>

#include <qvxsys/TStringCore.h>

namespace qvx {

using TableRow = std::vector<TStringCore>;

/// A line for each row, without a line feed: columns two blanks apart, as wide as the widest text in them takes on a
/// terminal. `alignment` has an 'l' (left) or an 'r' (right) for each column, its last one is for all that follow; rows
/// have no more columns than the first. A left-aligned last column has no blanks behind it.
[[nodiscard]] std::vector<TStringCore> AlignedLines(std::vector<TableRow> const& rows, std::string_view alignment);

} // namespace qvx
