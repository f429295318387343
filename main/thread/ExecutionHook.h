#pragma once
// Spares the moving about of work that AsyncTask::_ApplyExecutionHook costs, where there is no hook.

namespace qvxsys::task {

[[nodiscard]] bool HasExecutionHook() noexcept;

} // namespace qvxsys::task
