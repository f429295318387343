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

    ScanResult Run(std::vector<fs::path> const& paths);

private:
    using Jobs = std::deque<std::shared_ptr<FileJob>>;

    void Find(fs::path const& path, bool isNamed);
    void AddFile(fs::path const& path);
    void FindInFolder(fs::path const& folder);
    void Fail(fs::path const& path, QuorvexException const& error, std::string const& digest = {});
    void ScanAll();
    void Start(Jobs& jobs, FoundFile const& file);
    void Work(FileJob& job) noexcept;
    void Finish(FileJob& job);
    void Report(FileJob& job);

    // How many files for each thread are read ahead of the one that is told of.
    static constexpr std::size_t kAhead = 4;
    static constexpr std::chrono::milliseconds kProgressInterval{100};

    ScanOptions const& m_options;
    Progress& m_progress;
    ScanListener const& m_listener;
    std::vector<FoundFile> m_found;
    ScanResult m_result;

    TRecursiveMutex m_scannersMutex;
    std::vector<std::unique_ptr<FileScanner>> m_scanners QVXSYS_GUARDED_BY(m_scannersMutex); // not in use
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
    AsyncTask::Cancel::ThrowIfCancelled();
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
        AsyncTask::Cancel::ThrowIfCancelled();
        if (entry.isFile) {
            AddFile(entry.path);
        } else {
            Find(entry.path, false);
        }
    }
}

ScanResult Scanner::Run(std::vector<fs::path> const& paths)
{
    // So that walking folders can be stopped, too.
    AsyncTask::Cancel::CancelEventSetter const cancel(m_options.stop);
    try {
        for (fs::path const& path : paths) {
            Find(path, true);
        }
        ScanAll();
    } catch (AsyncTask::CancelException const&) {
        m_result.stopped = true;
    }
    return std::move(m_result);
}

// The pool's threads run ahead of this one, which tells of the files in their order.
void Scanner::ScanAll()
{
    std::uint64_t bytes = 0;
    for (FoundFile const& file : m_found) {
        bytes += file.size;
    }
    m_progress.SetTotal(bytes);
    TThreadPool::Configure(m_options.jobs, {}, {}, {});
    struct Pool
    {
        ~Pool() { TThreadPool::Shutdown(std::chrono::milliseconds::max()); }
    };
    Pool const pool;
    try {
        Jobs jobs;
        for (FoundFile const& file : m_found) {
            if (jobs.size() == m_options.jobs * kAhead) {
                Finish(*jobs.front());
                jobs.pop_front();
            }
            Start(jobs, file);
        }
        for (; !jobs.empty(); jobs.pop_front()) {
            Finish(*jobs.front());
        }
    } catch (...) {
        m_options.stop->Signal(); // or the pool would finish what nobody waits for
        throw;
    }
}

void Scanner::Start(Jobs& jobs, FoundFile const& file)
{
    jobs.push_back(std::make_shared<FileJob>(file.path, m_options.encoding));
    TThreadPool::Get().AddWork([this, job = jobs.back()] { Work(*job); }, TThreadPoolWork::Queue);
}

void Scanner::Work(FileJob& job) noexcept
{
    AsyncTask::Cancel::CancelEventSetter const cancel(m_options.stop);
    std::unique_ptr<FileScanner> scanner;
    {
        TLockScope const lock(m_scannersMutex);
        if (!m_scanners.empty()) {
            scanner = std::move(m_scanners.back());
            m_scanners.pop_back();
        }
    }
    if (scanner == nullptr) {
        scanner = std::make_unique<FileScanner>(m_options, [this](std::size_t n) {
            m_progress.Add(n);
            AsyncTask::Cancel::ThrowIfCancelled();
        });
    }
    job.Run(*scanner, m_listener.onMatch != nullptr);
    TLockScope const lock(m_scannersMutex);
    m_scanners.push_back(std::move(scanner));
}

void Scanner::Finish(FileJob& job)
{
    auto const tell = [&](Match const& match) { m_listener.onMatch(job.Result().path, match); };
    auto const interval = m_progress.IsShown() ? kProgressInterval : std::chrono::milliseconds::max();
    for (auto wait = std::chrono::milliseconds(0); !job.Tell(tell, wait); wait = interval) {
        m_listener.onWait();
        m_progress.Refresh();
    }
    m_progress.Refresh();
    try {
        Report(job);
    } catch (AsyncTask::CancelException const&) {
        m_result.stopped = true;
    } catch (QuorvexException const& error) {
        Fail(job.Result().path, error, job.Result().digest);
    }
}

void Scanner::Report(FileJob& job)
{
    if (job.Exception() != nullptr) {
        std::rethrow_exception(job.Exception());
    }
    ScannedFile& result = job.Result();
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
