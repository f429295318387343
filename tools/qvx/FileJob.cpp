#include "FileJob.h"

#include <utility>

#include <qvxsys/Cancel.h>

namespace qvx {

void FileJob::Run(std::function<FileScanner&()> const& scanner, bool tells) noexcept
{
    try {
        AsyncTask::Cancel::ThrowIfCancelled();
        scanner().Scan(m_result, tells ? OnMatch([this](Match const& match) { Add(match); }) : nullptr);
    } catch (...) {
        m_exception = std::current_exception();
    }
    {
        TLockScope const lock(m_mutex);
        m_done = true;
    }
    m_news.Signal();
}

void FileJob::Fail(std::exception_ptr error) noexcept
{
    m_exception = std::move(error);
    TLockScope const lock(m_mutex);
    m_done = true;
}

void FileJob::Add(Match const& match)
{
    bool isFirst = false;
    bool isFull = false;
    {
        TLockScope const lock(m_mutex);
        isFirst = m_waiting.empty();
        m_waiting.push_back(match);
        isFull = m_waiting.size() >= m_mostWaiting;
    }
    if (isFirst) {
        m_news.Signal();
    }
    if (isFull) {
        TCancelEvent& cancelled = AsyncTask::Cancel::GetNonNull();
        // An exact wait, as the room may be there before it begins.
        IEvent* const events[] = {&m_room, &cancelled};
        static_cast<void>(WaitForAnyExact(events, std::chrono::milliseconds::max()));
        AsyncTask::Cancel::ThrowIfCancelled();
    }
}

bool FileJob::Tell(OnMatch const& onMatch, std::chrono::milliseconds timeout)
{
    static_cast<void>(m_news.Wait(timeout));
    std::vector<Match> matches;
    bool done = false;
    {
        TLockScope const lock(m_mutex);
        matches.swap(m_waiting);
        done = m_done;
    }
    if (!matches.empty()) {
        m_room.Signal();
    }
    for (Match const& match : matches) {
        onMatch(match);
    }
    return done;
}

} // namespace qvx
