#pragma once
// Reads one file: decodes, counts, searches and digests it.

#include <cstddef>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <memory>
#include <system_error>

#include <qvxsys/TStringCore.h>
#include <qvxsys/sha2.h>

#include "Scan.h"

namespace qvx {

/// A system's error in words.
[[nodiscard]] TStringCore Reason(std::error_code error);

/// Scans file after file with the same buffers. Not for several threads at a time.
class FileScanner
{
public:
    /// `onRead` is called with the size of each piece that was read, and may throw to end the scan.
    FileScanner(ScanOptions const& options, std::function<void(std::size_t)> onRead);

    /// Fills in the result for the file at its path. Where it throws, the digest may be there nevertheless. Matches are
    /// told as they are found when `onMatch` is not empty, and kept otherwise.
    void Scan(ScannedFile& result, std::function<void(Match const&)> const& onMatch);

private:
    void Decode(std::filebuf& file, ScannedFile& result, std::function<void(Match const&)> const& onMatch);
    bool Count(std::filebuf& file, std::size_t n, ScannedFile& result,
               std::function<void(Match const&)> const& onMatch);
    std::size_t Read(std::filebuf& file);
    void Digest(std::filebuf& file, ScannedFile& result);

    // Small enough for chunk and decoded text to stay in the second-level cache.
    static constexpr std::size_t kChunk = std::size_t{256} * 1024;

    ScanOptions const& m_options;
    std::function<void(std::size_t)> const m_onRead;
    std::unique_ptr<char[]> const m_chunk;
    sha2 m_hash;          // of what was read of the current file
    bool m_atEnd = false; // it was read to its end
};

} // namespace qvx
