#include "Scan.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <ios>
#include <memory>
#include <system_error>
#include <utility>

#include <qvxsys/TFormatStringCore.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TTextDecoder.h>

#include "Failures.h"
#include "Host.h"
#include "Progress.h"

namespace fs = std::filesystem;

namespace qvx {
namespace {

struct FoundFile
{
    fs::path path;
    std::uint64_t size;
};

char const* KindOf(fs::file_type type) noexcept
{
    switch (type) {
    case fs::file_type::fifo:
        return "is a FIFO";
    case fs::file_type::socket:
        return "is a socket";
    case fs::file_type::block:
    case fs::file_type::character:
        return "is a device";
    default:
        return "is not a regular file";
    }
}

// In the words of the C library where it has them, which are the same on every system and in ASCII.
TStringCore Reason(std::error_code error)
{
    std::error_condition const condition = error.default_error_condition();
    bool const isGeneric = condition.category() == std::generic_category();
    return isGeneric ? TStringCore::fromStdString(condition.message())
                     : TStringCore::fromLocal8Bit(error.message().c_str());
}

class Scanner
{
public:
    Scanner(ScanOptions const& options, Progress& progress, ScanListener const& listener)
        : m_options(options), m_progress(progress), m_listener(listener), m_chunk(new char[kChunk])
    {}

    void Find(fs::path const& path, bool isNamed);
    ScanResult ScanAll();

private:
    void AddFile(fs::path const& path);
    void FindInFolder(fs::path const& folder);
    void ScanFile(ScannedFile& result);
    void Decode(std::filebuf& file, ScannedFile& result);
    void Count(std::filebuf& file, std::size_t n, ScannedFile& result);
    std::size_t Read(std::filebuf& file);
    void Digest(std::filebuf& file, ScannedFile& result);
    void Fail(fs::path const& path, QuorvexException const& error, std::string const& digest = {});

    // Small enough for chunk and decoded text to stay in the second-level cache.
    static constexpr std::size_t kChunk = std::size_t{256} * 1024;

    ScanOptions const& m_options;
    Progress& m_progress;
    ScanListener const& m_listener;
    std::unique_ptr<char[]> m_chunk;
    sha2 m_hash;          // of what was read of the current file
    bool m_atEnd = false; // it was read to its end
    std::vector<FoundFile> m_found;
    ScanResult m_result;
};

void Scanner::Fail(fs::path const& path, QuorvexException const& error, std::string const& digest)
{
    m_result.errors.push_back({path, error, digest});
    m_listener.onError(m_result.errors.back());
}

// Only what is a regular file is ever opened: opening a FIFO would wait for a writer. A symbolic link to a folder is
// followed when it is named by the user and only then, so that no walk can run in circles.
void Scanner::Find(fs::path const& path, bool isNamed)
{
    std::error_code error;
    fs::file_status const status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found && !error) {
        error = std::make_error_code(std::errc::no_such_file_or_directory);
    }
    if (error) {
        Fail(path, MakeFailure(Failure::CannotAccess, Reason(error)));
    } else if (fs::is_directory(status)) {
        if (isNamed || !host::IsLink(path)) {
            FindInFolder(path);
        }
    } else if (fs::is_regular_file(status)) {
        AddFile(path);
    } else {
        Fail(path, MakeFailure(Failure::NotAFile, KindOf(status.type())));
    }
}

// The size is for the progress bar only.
void Scanner::AddFile(fs::path const& path)
{
    std::error_code error;
    std::uintmax_t const size = m_progress.IsShown() ? fs::file_size(path, error) : 0;
    m_found.push_back({path, error ? 0 : size});
}

void Scanner::FindInFolder(fs::path const& folder)
{
    std::error_code error;
    std::vector<host::Entry> entries = host::EntriesOf(folder, error);
    if (error) {
        Fail(folder, MakeFailure(Failure::CannotAccess, Reason(error)));
    }
    std::sort(entries.begin(), entries.end(),
              [](host::Entry const& a, host::Entry const& b) { return host::ComesBefore(a.path, b.path); });
    for (host::Entry const& entry : entries) {
        if (entry.isFile) {
            AddFile(entry.path);
        } else {
            Find(entry.path, false);
        }
    }
}

ScanResult Scanner::ScanAll()
{
    std::uint64_t bytes = 0;
    for (FoundFile const& file : m_found) {
        bytes += file.size;
    }
    m_progress.SetTotal(bytes);
    for (FoundFile const& file : m_found) {
        ScannedFile result{file.path, m_options.encoding, {}, {}, {}};
        try {
            ScanFile(result);
            m_result.total += result.counts;
            m_result.matches += result.found.matches;
            m_result.matchingLines += result.found.lines;
            m_listener.onFile(result);
            m_result.files.push_back(std::move(result));
        } catch (QuorvexException const& error) {
            Fail(file.path, error, result.digest);
        }
    }
    return std::move(m_result);
}

void Scanner::ScanFile(ScannedFile& result)
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
            Decode(file, result);
        } catch (QuorvexException const& error) {
            if (error.GetErrorCode() != static_cast<unsigned>(Failure::CannotRead)) {
                Digest(file, result); // what cannot be counted has a digest nevertheless
            }
            throw;
        }
    }
    Digest(file, result);
}

void Scanner::Decode(std::filebuf& file, ScannedFile& result)
{
    std::size_t const n = Read(file);
    if (result.encoding == "auto") {
        TTextDecoder::Detection const detection = TTextDecoder::Detect(m_chunk.get(), n);
        if (detection.looksBinary) {
            throw MakeFailure(Failure::NotText, u"is a binary file");
        }
        result.encoding = detection.encoding;
    }
    try {
        Count(file, n, result);
    } catch (...) {
        StackExceptionAndRethrow(TFormatStringCore(u"in %1 text, behind %2 bytes")
                                     .arg(TStringCore::fromStdString(result.encoding))
                                     .arg(result.counts.bytes));
    }
}

// Reads what nobody has read yet: every byte of a file is read once, for the counts and the digest.
void Scanner::Digest(std::filebuf& file, ScannedFile& result)
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

std::size_t Scanner::Read(std::filebuf& file)
{
    try {
        auto const n = static_cast<std::size_t>(file.sgetn(m_chunk.get(), kChunk));
        m_atEnd = n < kChunk;
        if (m_options.hash) {
            m_hash.Update(static_cast<unsigned char const*>(static_cast<void const*>(m_chunk.get())), n);
        }
        m_progress.Add(n);
        return n;
    } catch (std::ios_base::failure const& failure) {
        throw MakeFailure(Failure::CannotRead, Reason(failure.code()));
    }
}

// The first n bytes of the file are in the chunk.
void Scanner::Count(std::filebuf& file, std::size_t n, ScannedFile& result)
{
    TTextDecoder decoder(result.encoding.c_str());
    result.encoding = decoder.Encoding();
    Counts& counts = result.counts;
    auto const tell = [&](Match const& match) { m_listener.onMatch(result.path, match); };
    Finder finder(m_options.find, m_listener.onMatch ? std::function<void(Match const&)>(tell) : nullptr);
    try {
        for (bool last = false; !last; n = last ? 0 : Read(file)) {
            last = m_atEnd;
            TStringView text = decoder.Decode(m_chunk.get(), n, last);
            if (counts.units == 0 && text.startsWith(char32_t{0xFEFF})) {
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
    result.found = std::move(finder).Result();
}

} // namespace

Counts& Counts::operator+=(Counts const& other) noexcept
{
    bytes += other.bytes;
    units += other.units;
    codePoints += other.codePoints;
    lines += other.lines;
    malformed += other.malformed;
    return *this;
}

ScanResult Scan(std::vector<fs::path> const& paths, ScanOptions const& options, Progress& progress,
                ScanListener const& listener)
{
    Scanner scanner(options, progress, listener);
    for (fs::path const& path : paths) {
        scanner.Find(path, true);
    }
    return scanner.ScanAll();
}

} // namespace qvx
