#pragma once
// One file on its way through a scan: read by a thread of the pool, told of by the thread that prints.

#include <chrono>
#include <exception>
#include <functional>
#include <vector>

#include <qvxsys/TEvent.h>
#include <qvxsys/TLocks.h>
#include <qvxsys/ThreadAnnotations.h>

#include "FileScan.h"
#include "Scan.h"

namespace qvx {

class FileJob
{
public:
    using OnMatch = std::function<void(Match const&)>;

    FileJob(std::filesystem::path const& path, std::string const& encoding) : m_result{path, encoding, {}, {}, {}} {}

    /// For the pool. The thread's current cancellation event ends it. With `tells`, matches wait to be told; a thread
    /// that is too far ahead of the one that prints waits for it.
    void Run(FileScanner& scanner, bool tells) noexcept;

    /// For the thread that prints: tells matches as they come, until there are no more (true) or the time is over.
    bool Tell(OnMatch const& onMatch, std::chrono::milliseconds timeout);

    /// What came of it, once Tell was true.
    [[nodiscard]] ScannedFile& Result() noexcept { return m_result; }
    [[nodiscard]] std::exception_ptr const& Exception() const noexcept { return m_exception; }

private:
    static constexpr std::size_t kMostWaiting = 1024;

    void Add(Match const& match);

    ScannedFile m_result;
    std::exception_ptr m_exception;
    TRecursiveMutex m_mutex;
    std::vector<Match> m_waiting QVXSYS_GUARDED_BY(m_mutex);
    bool m_done QVXSYS_GUARDED_BY(m_mutex) = false;
    TAutoResetEvent m_news;
    TAutoResetEvent m_room;
};

} // namespace qvx
