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
    CancelLink(StatePtr const& state, bool owner) : m_event(owner ? AsyncTask::Cancel::Get() : nullptr)
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
/// cancellation for instance.
class WayWatch
{
public:
    explicit WayWatch(Way const& way) : m_way(way)
    {
        if (m_changing != nullptr) {
            m_changing->AddWatcher(m_event);
            if (way.back()->PendingInput() != nullptr) {
                m_event.Signal();
            }
        }
        ForEach([this](TaskState& state) {
            state.AddOnReadyCallback(this, [this] { m_event.Signal(); });
            if (state.IsReady()) {
                m_event.Signal();
            }
        });
    }
    WayWatch(WayWatch const&) = delete;
    WayWatch& operator=(WayWatch const&) = delete;
    ~WayWatch()
    {
        ForEach([this](TaskState& state) { state.RemoveOnReadyCallback(this); });
        if (m_changing != nullptr) {
            m_changing->RemoveWatcher(m_event);
        }
    }
    void Wait() const { m_event.Wait(); }

private:
    template<class Body>
    void ForEach(Body const& body) const
    {
        for (std::size_t i = 0; i < m_way.size(); ++i) {
            if (i < kWatchedAtEachEnd || i + kWatchedAtEachEnd >= m_way.size()) {
                body(*m_way[i]);
            }
        }
    }

    Way const& m_way;
    ChangingInput const* const m_changing = m_way.back()->GetChangingInput();
    TEvent m_event;
};

void Block(Way const& way)
{
    StatePtr const& last = way.back();
    qvxsys::task::WaitScope const cycles(last);
    BlockingScope const blocking(*last);
    if (way.size() == 1 && last->GetChangingInput() == nullptr) {
        last->SharedStateBase::Wait();
    } else {
        WayWatch(way).Wait();
    }
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
        } else if (top.MayRunHere() && top.TryTakingDeferredOwnership()) {
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
