#pragma once
// One file on its way through a scan: read by a thread of the pool, told of by the thread that prints.

#include <chrono>
#include <exception>
#include <functional>
#include <utility>
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

    /// No more than `mostWaiting` matches wait to be told.
    FileJob(std::filesystem::path path, std::string const& encoding, std::size_t mostWaiting)
        : m_mostWaiting(mostWaiting), m_result{std::move(path), encoding, {}, {}, {}, {}}
    {}

    /// For the pool. The thread's current cancellation event ends it; whatever is thrown, by getting a scanner too, is
    /// kept. With `tells`, matches wait to be told; a thread that is too far ahead of the one that prints waits for it.
    void Run(std::function<FileScanner&()> const& scanner, bool tells) noexcept;

    /// Instead of Run: it cannot be scanned.
    void Fail(std::exception_ptr error) noexcept;

    /// For the thread that prints: tells matches as they come, until there are no more (true) or the time is over.
    bool Tell(OnMatch const& onMatch, std::chrono::milliseconds timeout);

    /// What came of it, once Tell was true.
    [[nodiscard]] ScannedFile& Result() noexcept { return m_result; }
    [[nodiscard]] std::exception_ptr const& Exception() const noexcept { return m_exception; }

private:
    void Add(Match const& match);

    std::size_t const m_mostWaiting;
    ScannedFile m_result;
    std::exception_ptr m_exception;
    TRecursiveMutex m_mutex;
    std::vector<Match> m_waiting QVXSYS_GUARDED_BY(m_mutex);
    bool m_done QVXSYS_GUARDED_BY(m_mutex) = false;
    TAutoResetEvent m_news;
    TAutoResetEvent m_room;
};

} // namespace qvx
