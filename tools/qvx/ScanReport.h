#pragma once
// Prints what a scan found.

#include <iosfwd>
#include <string>

#include <qvxsys/TFormatStringCore.h>

#include "Scan.h"

namespace qvx {

/// A line for each file under a line of headings, and a line of totals; columns aligned as a terminal shows them. When
/// a text was looked for, the files with matches only, and their matches in two columns more; the totals are always
/// those of all files.
void PrintTable(ScanResult const& result, bool withMatches, std::ostream& out);

/// An object with `files`, `errors` and `total`, and `interrupted` (true) when the scan was stopped. Names that are not
/// valid UTF-8 have their bytes as `pathBytes`, too, in hexadecimal digits. Digests are members of the algorithm's
/// name.
void PrintJson(ScanResult const& result, bool withMatches, std::string const& hashName, std::ostream& out);

/// "DIGEST  PATH", as sha256sum and its sisters print it and take it with -c: the path byte for byte, but for
/// backslashes, line feeds and carriage returns, which are written as \\, \n and \r in a line that begins with a
/// backslash.
void PrintDigest(ScannedFile const& file, std::ostream& out);

/// "PATH:LINE:COLUMN: TEXT" for each match that was kept, with the match highlighted if wanted, and a line that tells
/// how many there are besides. Where a line is cut stands an ellipsis.
void PrintMatches(ScannedFile const& file, bool highlight, std::ostream& out);

/// A line made from a format for the file: %1 path, %2 encoding, %3 bytes, %4 units, %5 code points, %6 lines,
/// %7 malformed sequences, %8 matches, %9 lines with matches, %10 how the encoding is known.
void PrintRecord(ScannedFile const& file, TFormatStringCore& format, std::ostream& out);

/// A line made from a format for a match: %1 path, %2 line, %3 column, %4 the line's text as far as the match has it,
/// %5 the match.
void PrintMatchRecord(std::filesystem::path const& path, Match const& match, TFormatStringCore& format,
                      std::ostream& out);

/// "qvx: PATH: MESSAGES (NAME)", the path as this system spells it; behind it a line for each call that led there, if
/// they were recorded (TError::SetOriginHook).
void PrintError(ScanError const& error, std::ostream& out);

} // namespace qvx
