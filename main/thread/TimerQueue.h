#pragma once
// Calls to come, in the order of their times, those of one time in the order of their coming. Not locked.

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>

#include <qvxsys/Timer.h>

namespace qvxsys::task {

class TimerQueue
{
public:
    using Time = std::chrono::nanoseconds;
    using Function = std::function<void()>;

    void Add(Time due, AsyncTask::TimerId id, Function function)
    {
        auto const place = m_byTime.emplace(std::pair(due, id), std::move(function)).first;
        try {
            m_byId.emplace(id, place);
        } catch (...) {
            m_byTime.erase(place);
            throw;
        }
    }
    /// The call that was forgotten; empty if there was none.
    Function Remove(AsyncTask::TimerId id)
    {
        auto const found = m_byId.find(id);
        return found != m_byId.end() ? Take(found->second) : Function();
    }
    [[nodiscard]] std::optional<Time> Earliest() const
    {
        return m_byTime.empty() ? std::nullopt : std::optional(m_byTime.begin()->first.first);
    }
    /// The first call if it is due, else empty.
    Function TakeDue(Time now)
    {
        auto const first = m_byTime.begin();
        return first != m_byTime.end() && first->first.first <= now ? Take(first) : Function();
    }
    [[nodiscard]] std::size_t Size() const noexcept { return m_byTime.size(); }

private:
    using ByTime = std::map<std::pair<Time, AsyncTask::TimerId>, Function>;

    Function Take(ByTime::iterator place)
    {
        Function function = std::move(place->second);
        m_byId.erase(place->first.second);
        m_byTime.erase(place);
        return function;
    }

    ByTime m_byTime;
    std::unordered_map<AsyncTask::TimerId, ByTime::iterator> m_byId;
};

} // namespace qvxsys::task
