#pragma once
// What the task layer needs of the system's threads beyond the standard library.

namespace qvxsys::task::platform {

/// Names the calling thread for debuggers and system tools; UTF-8. Cut to what the system takes, never in the middle of
/// a code point; a failure is ignored.
void NameThisThread(char const* name) noexcept;

/// Has `release` called with `object` when the calling thread ends; with null, not at all. One object for each thread,
/// the one that was given last; `release` is always the same function. At the thread's end what is local to it may be
/// gone already, so `release` does not look there.
void ReleaseAtThreadEnd(void* object, void (*release)(void* object)) noexcept;

} // namespace qvxsys::task::platform
