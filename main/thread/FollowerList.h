#pragma once
// How followers are told. A thread that completes a state tells the quick ones first, and those of the states that they
// complete in turn, in one loop. The others, which run user code, are told one after the other when the outermost
// completion on this thread gets to them: what one of them completes is told right behind it, so a chain needs no
// stack.
//
// User code that is told this way may block. What it has completed before is told then, before it blocks; what was to
// be told behind it moves on to a thread of its own. So nothing that a waiter may need is stuck below it on the stack.

#include <utility>

#include <qvxsys/TaskState.h>

namespace AsyncTask::detail {

class FollowerList
{
public:
    FollowerList() noexcept = default;
    FollowerList(FollowerList const&) = delete;
    FollowerList& operator=(FollowerList const&) = delete;

    [[nodiscard]] bool IsEmpty() const noexcept { return m_first == nullptr; }
    void PushFront(Follower& follower) noexcept
    {
        follower.m_next = m_first;
        m_last = m_first == nullptr ? &follower : m_last;
        m_first = &follower;
    }
    void PushBack(Follower& follower) noexcept
    {
        follower.m_next = nullptr;
        (m_first == nullptr ? m_first : m_last->m_next) = &follower;
        m_last = &follower;
    }
    [[nodiscard]] Follower& PopFront() noexcept { return *std::exchange(m_first, m_first->m_next); }
    /// The others come first.
    void Prepend(FollowerList& others) noexcept
    {
        if (!others.IsEmpty()) {
            others.m_last->m_next = m_first;
            m_last = m_first == nullptr ? others.m_last : m_last;
            m_first = std::exchange(others.m_first, nullptr);
        }
    }
    void Swap(FollowerList& other) noexcept
    {
        std::swap(m_first, other.m_first);
        std::swap(m_last, other.m_last);
    }

private:
    Follower* m_first = nullptr;
    Follower* m_last = nullptr; ///< while there is a first
};

} // namespace AsyncTask::detail

namespace qvxsys::task {

/// Tells all in the list, now or behind what this thread is telling.
void TellFollowers(AsyncTask::detail::FollowerList& followers) noexcept;

/// To be called before the thread blocks. True: something was told, what was waited for may be ready.
[[nodiscard]] bool TellBeforeBlocking() noexcept;

} // namespace qvxsys::task
