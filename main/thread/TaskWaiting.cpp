// How futures are waited for.

#include <algorithm>
#include <optional>
#include <utility>

#include <qvxsys/AsyncTaskTls.h>
#include <qvxsys/Cancel.h>
#include <qvxsys/TaskState.h>

#include "FollowerList.h"
#include "WaitCycles.h"

namespace AsyncTask::detail {

namespace {

/// While the thread waits for a state that is its own, a cancellation of the thread is one of the state.
class CancelLink
{
public:
    CancelLink(StatePtr const& state, bool owner) : CancelLink(owner)
    {
        if (m_event != nullptr) {
            m_event->AddOnSignalCallback(this, [state] { state->Cancel(); });
            if (m_event->IsSet()) {
                state->Cancel();
            }
        }
    }
    CancelLink(CancelLink const&) = delete;
    CancelLink& operator=(CancelLink const&) = delete;
    ~CancelLink()
    {
        if (m_event != nullptr) {
            m_event->RemoveOnSignalCallback(this);
        }
    }

private:
    /// Behind this, the destructor is called although the constructor has been left by an exception.
    explicit CancelLink(bool owner) : m_event(owner ? AsyncTask::Cancel::Get() : nullptr) {}

    RefCntPtr<TCancelEvent> const m_event;
};

/// The thread blocks during the scope.
class BlockingScope
{
public:
    explicit BlockingScope(SharedStateBase const& state) noexcept
        : m_state(state), m_handler(TLS::Get().GetWaitHandler())
    {
        if (m_handler != nullptr) {
            m_handler->BeforeBlocking(m_state);
        }
    }
    BlockingScope(BlockingScope const&) = delete;
    BlockingScope& operator=(BlockingScope const&) = delete;
    ~BlockingScope()
    {
        if (m_handler != nullptr) {
            m_handler->AfterBlocking(m_state);
        }
    }

private:
    SharedStateBase const& m_state;
    IWaitHandler* const m_handler;
};

/// A state, what it needs, what that needs, and so on, down to what is to be done first.
using Way = std::vector<StatePtr>;

/// Of a long way, so many states at each end are watched.
constexpr std::size_t kWatchedAtEachEnd = 32;

/// Sleeps until the last state on the way is ready, or has got an input, or another one is ready without it, by
/// cancellation for instance; or until something has happened to the alternatives that a group on the way has.
class WayWatch
{
public:
    explicit WayWatch(Way& way) : WayWatch(way, 0)
    {
        for (StatePtr const& state : m_watched) {
            if (ChangingInput const* const changing = state->GetChangingInput()) {
                changing->AddWatcher(m_event);
            }
            state->AddOnReadyCallback(this, [this] { m_event.Signal(); });
            if (state->IsReady()) {
                m_event.Signal();
            }
        }
        // What has changed since it was last looked at.
        TaskState const& last = *m_way.back();
        bool const elsewhere = m_kept < m_way.size() && m_way[m_kept - 1]->PendingInput() != m_way[m_kept];
        if (elsewhere || last.PendingInput() != nullptr || (last.IsLazy() && last.HasInputs() && last.MayRunHere())) {
            m_event.Signal();
        }
    }
    WayWatch(WayWatch const&) = delete;
    WayWatch& operator=(WayWatch const&) = delete;
    /// Leaves of the way what need not be found anew.
    ~WayWatch()
    {
        for (StatePtr const& state : m_watched) {
            state->RemoveOnReadyCallback(this);
            if (ChangingInput const* const changing = state->GetChangingInput()) {
                changing->RemoveWatcher(m_event);
            }
        }
        m_way.resize(m_kept);
    }
    void Wait() const { m_event.Wait(); }

private:
    /// Behind this, the destructor is called although the constructor has been left by an exception.
    WayWatch(Way& way, int) : m_way(way), m_kept(way.size())
    {
        for (std::size_t i = 0; i < way.size(); ++i) {
            if (i < kWatchedAtEachEnd || i + kWatchedAtEachEnd >= way.size()) {
                m_watched.push_back(way[i]);
                std::size_t const before = m_watched.size();
                way[i]->AddWatched(m_watched);
                if (m_watched.size() != before && m_kept == way.size()) {
                    m_kept = i + 1; // the way goes on from the group to another member, perhaps
                }
            }
        }
    }

    Way& m_way;
    std::size_t m_kept;
    std::vector<StatePtr> m_watched;
    TEvent m_event;
};

void Block(Way& way)
{
    StatePtr const last = way.back();
    qvxsys::task::WaitScope const cycles(last);
    BlockingScope const blocking(*last);
    if (std::vector<StatePtr> alternatives; way.size() == 1 && last->GetChangingInput() == nullptr) {
        last->AddWatched(alternatives);
        if (alternatives.empty() && !last->IsLazy()) {
            // There may be something to help with by now that is not to be watched any more.
            if (last->PendingInput() == nullptr) {
                last->SharedStateBase::Wait();
            }
            return;
        }
    }
    WayWatch(way).Wait();
}

} // namespace

void WaitHelping(StatePtr const& state, bool owner)
{
    if (state->IsReady()) {
        return;
    }
    CancelLink const link(state, owner);
    Way way{state};
    while (!state->IsReady()) {
        TaskState& top = *way.back();
        if (top.IsReady()) {
            way.pop_back();
        } else if (StatePtr input = top.PendingInput()) {
            way.push_back(std::move(input));
        } else if (top.MayRunHere() && top.HasInputs() && top.TryTakingDeferredOwnership()) {
            RunTaken(top);
        } else if (!top.IsReady() && !qvxsys::task::TellBeforeBlocking()) {
            Block(way);
            // What lies above a state that is ready is not needed any more.
            way.erase(std::find_if(way.begin() + 1, way.end(), [](StatePtr const& s) { return s->IsReady(); }),
                      way.end());
        }
    }
}

bool WaitIdly(StatePtr const& state, bool owner, std::chrono::milliseconds timeout)
{
    if (state->IsReady() || timeout.count() <= 0) {
        return state->WaitFor(timeout);
    }
    auto const begin = std::chrono::steady_clock::now();
    CancelLink const link(state, owner);
    while (!state->IsReady() && qvxsys::task::TellBeforeBlocking()) {
    }
    if (state->IsReady()) {
        return true;
    }
    auto const spent = std::chrono::floor<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
    BlockingScope const blocking(*state);
    return state->WaitFor(std::max(timeout - spent, std::chrono::milliseconds(0)));
}

void RunLazy(StatePtr const& state) noexcept
{
    try {
        WaitHelping(state, false);
    } catch (...) {
        state->Fail(std::current_exception());
    }
}

} // namespace AsyncTask::detail
