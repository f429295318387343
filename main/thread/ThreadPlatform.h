#pragma once
// What the task layer needs of the system's threads beyond the standard library.

namespace qvxsys::task::platform {

/// Names the calling thread for debuggers and system tools; UTF-8. Cut to what the system takes, never in the middle of
/// a code point; a failure is ignored.
void NameThisThread(char const* name) noexcept;

} // namespace qvxsys::task::platform
