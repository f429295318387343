#pragma once
// ICU may be asked to free all that it keeps (t_u_cleanup); whatever holds ICU objects for longer than a call lets go
// of them before.

namespace QvxICU {

/// Has `release` called at the beginning of every t_u_cleanup, from now on. At most eight functions; others are
/// ignored.
void BeforeCleanup(void (*release)()) noexcept;

} // namespace QvxICU
