#include "Scan.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <exception>
#include <memory>
#include <system_error>
#include <utility>

#include <qvxsys/Cancel.h>
#include <qvxsys/TLocks.h>
#include <qvxsys/TThreadPool.h>

#include "Failures.h"
#include "FileJob.h"
#include "FileScan.h"
#include "Host.h"
#include "Progress.h"

namespace fs = std::filesystem;

namespace qvx {
namespace {

/// What the walk comes by: a file, or what cannot be scanned and why.
struct Found
{
    fs::path path;
    std::exception_ptr error;
    std::uint64_t size = 0; ///< for the progress bar
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

    ScanResult Run(std::vector<fs::path> const& paths);

private:
    void Find(fs::path const& path, bool isNamed);
    void AddFile(fs::path path);
    void FindInFolder(fs::path const& folder);
    void AddError(fs::path const& path, QuorvexException const& error);
    void Add(Found found);
    void Start(Found found);
    void Work(FileJob& job) noexcept;
    [[nodiscard]] std::unique_ptr<FileScanner> TakeScanner();
    void FinishFirst();
    void FinishAll();
    void Report(FileJob& job);

    // How many files for each thread are read ahead of the one that is told of.
    static constexpr std::size_t kAhead = 4;
    static constexpr std::chrono::milliseconds kProgressInterval{100};
    // How many matches wait to be told, of all files together and at least of each.
    static constexpr std::size_t kMostWaiting = 8192;
    static constexpr std::size_t kLeastWaiting = 4;

    ScanOptions const& m_options;
    std::size_t const m_mostWaiting = std::max(kLeastWaiting, kMostWaiting / (m_options.jobs * kAhead));
    Progress& m_progress;
    ScanListener const& m_listener;
    std::vector<Found> m_found;                  // all of them, where the progress bar wants to know
    std::deque<std::shared_ptr<FileJob>> m_jobs; // that have been started, in their order
    ScanResult m_result;

    TRecursiveMutex m_scannersMutex;
    std::vector<std::unique_ptr<FileScanner>> m_scanners QVXSYS_GUARDED_BY(m_scannersMutex); // not in use
};

// Only what is a regular file is ever opened: opening a FIFO would wait for a writer. A symbolic link to a folder is
// followed when it is named by the user and only then, so that no walk can run in circles.
void Scanner::Find(fs::path const& path, bool isNamed)
{
    AsyncTask::Cancel::ThrowIfCancelled();
    std::error_code error;
    fs::file_status const status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found && !error) {
        error = std::make_error_code(std::errc::no_such_file_or_directory);
    }
    if (error) {
        AddError(path, MakeFailure(Failure::CannotAccess, Reason(error)));
    } else if (fs::is_directory(status)) {
        if (isNamed || !host::IsLink(path)) {
            FindInFolder(path);
        }
    } else if (fs::is_regular_file(status)) {
        AddFile(path);
    } else {
        AddError(path, MakeFailure(Failure::NotAFile, KindOf(status.type())));
    }
}

void Scanner::AddFile(fs::path path)
{
    std::error_code error;
    std::uintmax_t const size = m_progress.IsShown() ? fs::file_size(path, error) : 0;
    Add({std::move(path), nullptr, error ? 0 : size});
}

void Scanner::AddError(fs::path const& path, QuorvexException const& error)
{
    Add({path, std::make_exception_ptr(error)});
}

// Walking and scanning go on side by side, unless somebody watches who wants to know how much there is to do.
void Scanner::Add(Found found)
{
    if (m_progress.IsShown()) {
        m_found.push_back(std::move(found));
    } else {
        Start(std::move(found));
    }
}

void Scanner::FindInFolder(fs::path const& folder)
{
    std::error_code error;
    // A folder of a million files takes seconds to read and to sort.
    std::vector<host::Entry> entries = host::EntriesOf(
        folder, [&] { return !m_options.stop->IsSet(); }, error);
    AsyncTask::Cancel::ThrowIfCancelled();
    if (error) {
        AddError(folder, MakeFailure(Failure::CannotAccess, Reason(error)));
    }
    std::sort(entries.begin(), entries.end(), [](host::Entry const& a, host::Entry const& b) {
        AsyncTask::Cancel::ThrowIfCancelled();
        return host::ComesBefore(a.path, b.path);
    });
    for (host::Entry& entry : entries) {
        AsyncTask::Cancel::ThrowIfCancelled();
        if (entry.isFile) {
            AddFile(std::move(entry.path));
        } else {
            Find(entry.path, false);
        }
    }
}

ScanResult Scanner::Run(std::vector<fs::path> const& paths)
{
    TThreadPool::Configure(m_options.jobs, {}, {}, {});
    struct Pool
    {
        ~Pool() { TThreadPool::Shutdown(std::chrono::milliseconds::max()); }
    };
    Pool const pool;
    // So that walking folders can be stopped, too.
    AsyncTask::Cancel::CancelEventSetter const cancel(m_options.stop);
    try {
        for (fs::path const& path : paths) {
            Find(path, true);
        }
        std::uint64_t bytes = 0;
        for (Found const& found : m_found) {
            bytes += found.size;
        }
        m_progress.SetTotal(bytes);
        for (Found& found : m_found) {
            Start(std::move(found));
        }
        FinishAll();
    } catch (AsyncTask::CancelException const&) {
        // What has been begun is told of; of what is left there may be a lot.
        m_result.stopped = true;
        FinishAll();
    } catch (...) {
        m_options.stop->Signal(); // or the pool would finish what nobody waits for
        throw;
    }
    return std::move(m_result);
}

// The pool's threads run ahead of this one, which tells of the files in their order.
void Scanner::Start(Found found)
{
    AsyncTask::Cancel::ThrowIfCancelled();
    if (m_jobs.size() == m_options.jobs * kAhead) {
        FinishFirst();
    }
    m_jobs.push_back(std::make_shared<FileJob>(std::move(found.path), m_options.encoding, m_mostWaiting));
    if (found.error != nullptr) {
        m_jobs.back()->Fail(found.error);
    } else {
        TThreadPool::Get().AddWork([this, job = m_jobs.back()] { Work(*job); }, TThreadPoolWork::Queue);
    }
}

void Scanner::Work(FileJob& job) noexcept
{
    AsyncTask::Cancel::CancelEventSetter const cancel(m_options.stop);
    std::unique_ptr<FileScanner> scanner;
    auto const take = [&]() -> FileScanner& {
        scanner = TakeScanner();
        return *scanner;
    };
    job.Run(take, m_listener.onMatch != nullptr);
    if (scanner != nullptr) {
        TLockScope const lock(m_scannersMutex);
        m_scanners.push_back(std::move(scanner));
    }
}

std::unique_ptr<FileScanner> Scanner::TakeScanner()
{
    TLockScope const lock(m_scannersMutex);
    if (m_scanners.empty()) {
        m_scanners.reserve(m_options.jobs); // so that giving one back cannot fail
        return std::make_unique<FileScanner>(m_options, [this](std::size_t n) {
            m_progress.Add(n);
            AsyncTask::Cancel::ThrowIfCancelled();
        });
    }
    auto scanner = std::move(m_scanners.back());
    m_scanners.pop_back();
    return scanner;
}

void Scanner::FinishFirst()
{
    std::shared_ptr<FileJob> const job = std::move(m_jobs.front());
    m_jobs.pop_front();
    auto const tell = [&](Match const& match) { m_listener.onMatch(job->Result().path, match); };
    auto const interval = m_progress.IsShown() ? kProgressInterval : std::chrono::milliseconds::max();
    for (auto wait = std::chrono::milliseconds(0); !job->Tell(tell, wait); wait = interval) {
        m_listener.onWait();
        m_progress.Refresh();
    }
    m_progress.Refresh();
    Report(*job);
}

void Scanner::FinishAll()
{
    while (!m_jobs.empty()) {
        FinishFirst();
    }
}

void Scanner::Report(FileJob& job)
{
    ScannedFile& result = job.Result();
    try {
        if (job.Exception() != nullptr) {
            std::rethrow_exception(job.Exception());
        }
    } catch (AsyncTask::CancelException const&) {
        m_result.stopped = true;
        return;
    } catch (QuorvexException const& error) {
        m_result.errors.push_back({result.path, error, result.digest});
        m_listener.onError(m_result.errors.back());
        return;
    }
    m_result.total += result.counts;
    m_result.matches += result.found.matches;
    m_result.matchingLines += result.found.lines;
    m_listener.onFile(result);
    m_result.files.push_back(std::move(result));
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
    return Scanner(options, progress, listener).Run(paths);
}

} // namespace qvx
