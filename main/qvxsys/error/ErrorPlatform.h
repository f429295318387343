#pragma once
// Platform primitives under the error classes.

namespace qvxsys::error::platform {

/// Writes a line, without its line feed, to where debuggers and developers look: the debugger output on Windows, the
/// standard error stream elsewhere. Failures are ignored; errno is kept.
void DebugOutput(char const* line) noexcept;

/// Up to `capacity` return addresses of the calling functions, innermost first, beginning behind `skip` of them.
/// Returns how many there are. Allocates nothing.
int CaptureTrace(void** frames, int capacity, int skip) noexcept;

} // namespace qvxsys::error::platform
