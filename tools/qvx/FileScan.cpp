#include "FileScan.h"

#include <cerrno>
#include <fstream>
#include <ios>
#include <utility>

#include <qvxsys/TFormatStringCore.h>
#include <qvxsys/TTextDecoder.h>

#include "Failures.h"

namespace qvx {

// In the words of the C library where it has them, which are the same on every system and in ASCII.
TStringCore Reason(std::error_code error)
{
    std::error_condition const condition = error.default_error_condition();
    bool const isGeneric = condition.category() == std::generic_category();
    return isGeneric ? TStringCore::fromStdString(condition.message())
                     : TStringCore::fromLocal8Bit(error.message().c_str());
}

FileScanner::FileScanner(ScanOptions const& options, std::function<void(std::size_t)> onRead)
    : m_options(options), m_onRead(std::move(onRead)), m_chunk(new char[kChunk])
{}

void FileScanner::Scan(ScannedFile& result, std::function<void(Match const&)> const& onMatch)
{
    std::filebuf file;
    file.pubsetbuf(nullptr, 0); // reads go straight to the chunk
    errno = 0;
    if (file.open(result.path, std::ios::in | std::ios::binary) == nullptr) {
        throw MakeFailure(Failure::CannotAccess, Reason(std::error_code(errno, std::generic_category())));
    }
    m_atEnd = false;
    if (m_options.hash) {
        m_hash.Init(*m_options.hash);
    }
    if (m_options.countsText) {
        try {
            Decode(file, result, onMatch);
        } catch (QuorvexException const& error) {
            if (error.GetErrorCode() != static_cast<unsigned>(Failure::CannotRead)) {
                Digest(file, result); // what cannot be counted has a digest nevertheless
            }
            throw;
        }
    }
    Digest(file, result);
}

void FileScanner::Decode(std::filebuf& file, ScannedFile& result, std::function<void(Match const&)> const& onMatch)
{
    std::size_t const n = Read(file);
    bool isText = true;
    try {
        isText = Count(file, n, result, onMatch);
    } catch (...) {
        StackExceptionAndRethrow(TFormatStringCore(u"in %1 text, behind %2 bytes")
                                     .arg(TStringCore::fromStdString(result.encoding))
                                     .arg(result.counts.bytes));
    }
    if (!isText) {
        throw MakeFailure(Failure::NotText, u"is a binary file");
    }
}

// Reads what nobody has read yet: every byte of a file is read once, for the counts and the digest.
void FileScanner::Digest(std::filebuf& file, ScannedFile& result)
{
    if (!m_options.hash) {
        return;
    }
    while (!m_atEnd) {
        Read(file);
    }
    m_hash.End();
    result.digest = m_hash.StringHash();
}

std::size_t FileScanner::Read(std::filebuf& file)
{
    try {
        auto const n = static_cast<std::size_t>(file.sgetn(m_chunk.get(), kChunk));
        m_atEnd = n < kChunk;
        if (m_options.hash) {
            m_hash.Update(static_cast<unsigned char const*>(static_cast<void const*>(m_chunk.get())), n);
        }
        m_onRead(n);
        return n;
    } catch (std::ios_base::failure const& failure) {
        throw MakeFailure(Failure::CannotRead, Reason(failure.code()));
    }
}

// The first n bytes of the file are in the chunk. False when they are not text.
bool FileScanner::Count(std::filebuf& file, std::size_t n, ScannedFile& result,
                        std::function<void(Match const&)> const& onMatch)
{
    bool const detects = result.encoding == "auto";
    TTextDecoder decoder = detects ? TTextDecoder::Detecting() : TTextDecoder(result.encoding.c_str());
    Counts& counts = result.counts;
    Finder finder(m_options.find, onMatch);
    try {
        for (bool last = false; !last; n = last ? 0 : Read(file)) {
            last = m_atEnd;
            TStringView text = decoder.Decode(m_chunk.get(), n, last);
            result.encoding = decoder.Encoding();
            if (decoder.Found().looksBinary) {
                return false;
            }
            if (!detects && counts.units == 0 && text.startsWith(char32_t{0xFEFF})) {
                text = text.mid(1);
            }
            counts.bytes += n;
            counts.units += text.size();
            counts.codePoints += static_cast<std::uint64_t>(text.lengthInCodePoints());
            counts.lines += static_cast<std::uint64_t>(text.count(u'\n'));
            if (!m_options.find.text.empty()) {
                finder.Feed(text, last);
            }
        }
    } catch (TStringCore::Exception const& error) {
        throw MakeFailure(Failure::CannotDecode, error);
    }
    counts.malformed = decoder.Malformed();
    result.detection = decoder.Found();
    result.found = std::move(finder).Result();
    return true;
}

} // namespace qvx
