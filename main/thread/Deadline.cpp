#include <qvxsys/Deadline.h>

#include <memory>
#include <utility>

#include <qvxsys/Cancel.h>
#include <qvxsys/Timer.h>

namespace AsyncTask {

namespace {

/// Forgets a deadline as soon as its future is ready.
class DeadlineLink final : public detail::Follower
{
public:
    explicit DeadlineLink(TimerId call) noexcept : m_call(call) {}
    ~DeadlineLink() override = default;
    void OnReady() noexcept override
    {
        CancelCall(m_call);
        delete this;
    }
    [[nodiscard]] bool IsQuick() const noexcept override { return true; }

private:
    TimerId const m_call;
};

/// Keeps the link from a stop token to a future until that is ready.
class StopLink final : public detail::Follower
{
public:
    StopLink(std::weak_ptr<SharedStateBase> state, std::stop_token const& token)
        : m_callback(token, Request{std::move(state)})
    {}
    ~StopLink() override = default;
    void OnReady() noexcept override { delete this; } // perhaps within the callback, which std::stop_callback allows
    [[nodiscard]] bool IsQuick() const noexcept override { return true; }

private:
    struct Request
    {
        std::weak_ptr<SharedStateBase> state;
        void operator()() const
        {
            if (auto const target = state.lock()) {
                target->Cancel();
            }
        }
    };

    std::stop_callback<Request> m_callback;
};

} // namespace

namespace detail {

void CancelStateAfter(StatePtr const& state, std::chrono::milliseconds time)
{
    if (time.count() <= 0) {
        state->Cancel();
        return;
    }
    std::weak_ptr<SharedStateBase> const target = state;
    TimerId const call = CallAfter(time, [target] {
        if (auto const found = target.lock()) {
            found->Cancel();
        }
    });
    auto link = std::make_unique<DeadlineLink>(call);
    if (state->AddFollower(*link)) {
        static_cast<void>(link.release());
    } else {
        CancelCall(call);
    }
}

void CancelStateOnStop(StatePtr const& state, std::stop_token const& token)
{
    auto link = std::make_unique<StopLink>(state, token);
    if (state->AddFollower(*link)) {
        static_cast<void>(link.release());
    }
}

} // namespace detail

void CancelAfter(RefCntPtr<TCancelEvent> event, std::chrono::milliseconds time)
{
    TCancelEvent const* const checked = event.operator->();
    if (checked != nullptr && time.count() <= 0) {
        checked->Signal();
    } else if (checked != nullptr) {
        CallAfter(time, [event = std::move(event)] { event->Signal(); });
    }
}

StopTokenScope::StopTokenScope() : StopTokenScope(Cancel::Get())
{}

StopTokenScope::StopTokenScope(RefCntPtr<TCancelEvent> event) : m_event(std::move(event))
{
    if (m_event != nullptr) {
        m_event->AddOnSignalCallback(this, [source = m_source]() mutable { source.request_stop(); });
        if (m_event->IsSet()) {
            m_source.request_stop();
        }
    }
}

StopTokenScope::~StopTokenScope()
{
    if (m_event != nullptr) {
        m_event->RemoveOnSignalCallback(this);
    }
}

} // namespace AsyncTask
