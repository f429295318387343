#pragma once
// Starting tasks (AsyncTask::Run).
//
//     AsyncTask::Future<int> f = AsyncTask::Run(AsyncTask::Launch::PoolQueued, Measure, path);
//     AsyncTask::Future<void> g = AsyncTask::Run(
//         {.launch = AsyncTask::Launch::Dedicated, .name = u"server", .whenCanceled =
//         AsyncTask::WhenCanceled::FailAtOnce},
//         [] { Serve(); });
//
// The function and its arguments are copied (or moved) into the task and given to the call as rvalues, as
// std::async does; std::ref passes references. They are destroyed before the future is ready. What the function throws
// is thrown by Get. A function that returns a future is continued by that future's result.
//
// While the function runs, its thread has a cancellation event of its own (Cancel.h), which Cancel of the future
// signals, and its depth (TLS::GetDepth) is one more.
//
// Pool and dedicated threads are those of TThreadPool.h. When they have been closed, the future fails with a
// BrokenPromiseException; what they throw, Run throws.

#include <type_traits>
#include <utility>

#include <qvxsys/Future.h>
#include <qvxsys/FutureState.h>
#include <qvxsys/Launch.h>
#include <qvxsys/TStringCore.h>

namespace AsyncTask {

/// How a task is run.
struct TaskOptions
{
    Launch launch = Launch::PoolQueued; ///< where and when it runs
    /// For messages.
    TStringCore name = {};
    /// What its future does when it is cancelled while the function runs.
    WhenCanceled whenCanceled = WhenCanceled::AwaitWork;
    /// Starts although it has been cancelled before; its cancellation event is set then.
    bool ignoreCancelBeforeStart = false;
};

namespace detail {

template<class Function, class... Arguments>
auto MakeWork(Launch launch, Function&& function, Arguments&&... arguments)
{
    using R = std::invoke_result_t<std::decay_t<Function>, std::decay_t<Arguments>...>;
    return MakeState<WorkState<R, std::decay_t<Function>, std::decay_t<Arguments>...>>(
        launch, std::forward<Function>(function), std::forward<Arguments>(arguments)...);
}

template<class R>
auto StartWork(std::shared_ptr<ValueState<R>> state)
{
    Start(state);
    if constexpr (kIsFuture<R>) {
        return Flatten(std::move(state));
    } else {
        return Future<R>(std::move(state));
    }
}

} // namespace detail

/// Has `function` called with the arguments, where and when `launch` says.
template<class Function, class... Arguments>
auto Run(Launch launch, Function&& function, Arguments&&... arguments)
{
    using R = std::invoke_result_t<std::decay_t<Function>, std::decay_t<Arguments>...>;
    return detail::StartWork<R>(
        detail::MakeWork(launch, std::forward<Function>(function), std::forward<Arguments>(arguments)...));
}

template<class Function, class... Arguments>
auto Run(TaskOptions options, Function&& function, Arguments&&... arguments)
{
    using R = std::invoke_result_t<std::decay_t<Function>, std::decay_t<Arguments>...>;
    auto state =
        detail::MakeWork(options.launch, std::forward<Function>(function), std::forward<Arguments>(arguments)...);
    if (!options.name.empty()) {
        state->SetName(std::move(options.name));
    }
    state->SetWhenCanceled(options.whenCanceled);
    state->SetIgnoreCancelBeforeStart(options.ignoreCancelBeforeStart);
    return detail::StartWork<R>(std::move(state));
}

} // namespace AsyncTask
