#include "Scan.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <ios>
#include <memory>
#include <system_error>
#include <utility>

#include <qvxsys/TStringCore.h>
#include <qvxsys/TTextDecoder.h>

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
std::string Reason(std::error_code error)
{
    std::error_condition const condition = error.default_error_condition();
    return condition.category() == std::generic_category() ? condition.message() : error.message();
}

class Scanner
{
public:
    Scanner(ScanOptions const& options, Progress& progress, std::function<void(ScanError const&)> const& onError)
        : m_options(options), m_progress(progress), m_onError(onError), m_chunk(new char[kChunk])
    {}

    void Find(fs::path const& path, bool isNamed);
    ScanResult ScanAll();

private:
    void FindInFolder(fs::path const& folder);
    void ScanFile(fs::path const& path);
    bool Count(std::filebuf& file, ScannedFile& result);
    void Fail(fs::path const& path, std::string reason);

    // Small enough for chunk and decoded text to stay in the second-level cache.
    static constexpr std::size_t kChunk = std::size_t{256} * 1024;

    ScanOptions const& m_options;
    Progress& m_progress;
    std::function<void(ScanError const&)> const& m_onError;
    std::unique_ptr<char[]> m_chunk;
    std::vector<FoundFile> m_found;
    ScanResult m_result;
};

void Scanner::Fail(fs::path const& path, std::string reason)
{
    m_result.errors.push_back({path, std::move(reason)});
    m_onError(m_result.errors.back());
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
        Fail(path, Reason(error));
    } else if (fs::is_directory(status)) {
        if (isNamed || !host::IsLink(path)) {
            FindInFolder(path);
        }
    } else if (fs::is_regular_file(status)) {
        std::uintmax_t const size = fs::file_size(path, error);
        m_found.push_back({path, error ? 0 : size});
    } else {
        Fail(path, KindOf(status.type()));
    }
}

void Scanner::FindInFolder(fs::path const& folder)
{
    std::error_code error;
    std::vector<fs::path> entries;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        entries.push_back(at->path());
    }
    if (error) {
        Fail(folder, Reason(error));
    }
    std::sort(entries.begin(), entries.end(), host::ComesBefore);
    for (fs::path const& entry : entries) {
        Find(entry, false);
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
        ScanFile(file.path);
    }
    return std::move(m_result);
}

void Scanner::ScanFile(fs::path const& path)
{
    std::filebuf file;
    file.pubsetbuf(nullptr, 0); // reads go straight to the chunk
    errno = 0;
    if (file.open(path, std::ios::in | std::ios::binary) == nullptr) {
        Fail(path, std::generic_category().message(errno));
        return;
    }
    try {
        ScannedFile result{path, m_options.encoding, {}};
        if (Count(file, result)) {
            m_result.total += result.counts;
            m_result.files.push_back(std::move(result));
        } else {
            Fail(path, "is a binary file");
        }
    } catch (std::ios_base::failure const& failure) {
        Fail(path, failure.code().message());
    } catch (TStringCore::Exception const& exception) {
        Fail(path, exception.toStdString());
    }
}

// False when the encoding is to be found out and the file turns out to be none of text.
bool Scanner::Count(std::filebuf& file, ScannedFile& result)
{
    auto const read = [&] { return static_cast<std::size_t>(file.sgetn(m_chunk.get(), kChunk)); };
    std::size_t n = read();
    if (result.encoding == "auto") {
        TTextDecoder::Detection const detection = TTextDecoder::Detect(m_chunk.get(), n);
        if (detection.looksBinary) {
            return false;
        }
        result.encoding = detection.encoding;
    }
    TTextDecoder decoder(result.encoding.c_str());
    result.encoding = decoder.Encoding();
    Counts& counts = result.counts;
    for (bool last = false; !last; n = last ? 0 : read()) {
        last = n < kChunk;
        TStringView text = decoder.Decode(m_chunk.get(), n, last);
        if (counts.units == 0 && text.startsWith(char32_t{0xFEFF})) {
            text = text.mid(1);
        }
        counts.bytes += n;
        counts.units += text.size();
        counts.codePoints += static_cast<std::uint64_t>(text.lengthInCodePoints());
        counts.lines += static_cast<std::uint64_t>(text.count(u'\n'));
        m_progress.Add(n);
    }
    counts.malformed = decoder.Malformed();
    return true;
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
                std::function<void(ScanError const&)> const& onError)
{
    Scanner scanner(options, progress, onError);
    for (fs::path const& path : paths) {
        scanner.Find(path, true);
    }
    return scanner.ScanAll();
}

} // namespace qvx
