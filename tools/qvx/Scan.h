#pragma once
// Walks files and folders and counts the text in them.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <qvxsys/QuorvexException.h>
#include <qvxsys/ReferenceCount.h>
#include <qvxsys/TEvent.h>
#include <qvxsys/TTextDecoder.h>
#include <qvxsys/sha2.h>

#include "Find.h"

namespace qvx {

class Progress;

struct Counts
{
    std::uint64_t bytes = 0;      ///< of the file, the byte order mark included
    std::uint64_t units = 0;      ///< UTF-16 code units of the text
    std::uint64_t codePoints = 0; ///< of the text
    std::uint64_t lines = 0;      ///< U+000A in the text
    std::uint64_t malformed = 0;  ///< sequences that could not be decoded; each is one U+FFFD of the text

    Counts& operator+=(Counts const& other) noexcept;
};

struct ScannedFile
{
    std::filesystem::path path;
    std::string encoding;
    Counts counts;
    FindResult found;
    std::string digest;                ///< in hexadecimal digits; empty when none was asked for
    TTextDecoder::Detection detection; ///< how `encoding` is known
};

struct ScanError
{
    std::filesystem::path path;
    QuorvexException error; ///< with what was being done as further messages
    std::string digest;     ///< of a file that could be read, but not decoded or is binary; else empty
};

struct ScanResult
{
    std::vector<ScannedFile> files;
    std::vector<ScanError> errors;
    Counts total;
    std::uint64_t matches = 0;
    std::uint64_t matchingLines = 0;
    bool stopped = false; ///< before its end: some files are missing
};

struct ScanOptions
{
    std::string encoding = "auto"; ///< or a name that TTextDecoder knows
    FindOptions find;
    std::optional<sha2::SHA_TYPE> hash;
    bool countsText = true; ///< else the files are only digested, so any file will do
    unsigned int jobs = 1;  ///< how many files are read at a time
    RefCntPtr<TCancelEvent> stop = MakeRefCnt<TCancelEvent>(); ///< ends the scan
};

/// What is told as soon as it is known, in the order of the files, on the thread that calls Scan.
struct ScanListener
{
    std::function<void(ScanError const&)> onError;
    std::function<void(ScannedFile&)> onFile; ///< may take out what is not needed later
    /// When it is set, matches are told as they are found, before onFile, and not kept.
    std::function<void(std::filesystem::path const&, Match const&)> onMatch;
    std::function<void()> onWait; ///< nothing more to tell for the moment
};

/// Scans files, and folders with all below them in the order of the names' code points. Whatever cannot be scanned is
/// an entry of `errors`, is told to `onError`, and does not keep the others from being scanned. Files are read in
/// pieces: the memory needed grows with their number, not their size. Reading and counting runs on the process's thread
/// pool, which must not be there yet. A stop takes effect within one piece; files that were read by then are in the
/// result.
[[nodiscard]] ScanResult Scan(std::vector<std::filesystem::path> const& paths, ScanOptions const& options,
                              Progress& progress, ScanListener const& listener);

} // namespace qvx
