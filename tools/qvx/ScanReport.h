#pragma once
// Prints what a scan found.

#include <iosfwd>

#include "Scan.h"

namespace qvx {

/// A line for each file under a line of headings, and a line of totals; columns aligned as a terminal shows them.
void PrintTable(ScanResult const& result, std::ostream& out);

/// An object with `files`, `errors` and `total`. Names that are not valid UTF-8 have their bytes as `pathBytes`, too,
/// in hexadecimal digits.
void PrintJson(ScanResult const& result, std::ostream& out);

/// "qvx: PATH: REASON"
void PrintError(ScanError const& error, std::ostream& out);

} // namespace qvx
