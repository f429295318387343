#include "Scan.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "Failures.h"
#include "FileScan.h"
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

class Scanner
{
public:
    Scanner(ScanOptions const& options, Progress& progress, ScanListener const& listener)
        : m_options(options), m_progress(progress), m_listener(listener)
    {}

    void Find(fs::path const& path, bool isNamed);
    ScanResult ScanAll();

private:
    void AddFile(fs::path const& path);
    void FindInFolder(fs::path const& folder);
    void Fail(fs::path const& path, QuorvexException const& error, std::string const& digest = {});

    ScanOptions const& m_options;
    Progress& m_progress;
    ScanListener const& m_listener;
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
    FileScanner scanner(m_options, [this](std::size_t n) { m_progress.Add(n); });
    for (FoundFile const& file : m_found) {
        auto const tell = [&](Match const& match) { m_listener.onMatch(file.path, match); };
        ScannedFile result{file.path, m_options.encoding, {}, {}, {}};
        try {
            scanner.Scan(result, m_listener.onMatch ? std::function<void(Match const&)>(tell) : nullptr);
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
