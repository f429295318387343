#include <qvxsys/FutureCoroutine.h>

namespace AsyncTask::detail {

void AwaitedInput::Set(StatePtr input, bool owned) noexcept
{
    m_owned.store(owned, std::memory_order_relaxed);
    m_input.Set(std::move(input));
}

void AwaitedInput::Clear() noexcept
{
    m_input.Set(nullptr);
}

void AwaitedInput::AddOwned(std::vector<StatePtr>& inputs) const
{
    StatePtr input = m_input.Get();
    if (input != nullptr && m_owned.load(std::memory_order_relaxed)) {
        inputs.push_back(std::move(input));
    }
}

CoroutineCore::~CoroutineCore() = default;

void CoroutineCore::SetState(TaskState& state, AwaitedInput& awaited)
{
    m_task = &state;
    m_awaited = &awaited;
    state.SetCancelEvent(m_event);
}

void CoroutineCore::Resume(std::coroutine_handle<> body) const noexcept
{
    AsyncTask::Cancel::CancelEventSetter const scope(m_event);
    body.resume();
}

void CoroutineCore::Await(StatePtr const& input, bool owned) const
{
    m_awaited->Set(input, owned);
    if (owned && m_task->IsCancelled()) {
        input->Cancel();
    }
}

void Resumer::OnReady() noexcept
{
    if (m_coroutine != nullptr) {
        m_coroutine->Resume(m_body);
    } else {
        m_body.resume();
    }
}

bool Resumer::IsQuick() const noexcept
{
    return false;
}

Resumer::~Resumer() = default;

SwitchAwaiter::~SwitchAwaiter() = default;

void SwitchAwaiter::Begin(StatePtr const& work) noexcept
{
    // Not started, unless it has been cancelled already.
    if (!work->AddFollower(*this)) {
        OnReady();
        return;
    }
    try {
        Start(work);
    } catch (...) {
        // The work has failed with it, and the coroutine been resumed.
    }
}

void SwitchAwaiter::await_resume()
{
    Resumed();
    if (m_work != nullptr) {
        m_work->CheckForException();
    }
}

} // namespace AsyncTask::detail
