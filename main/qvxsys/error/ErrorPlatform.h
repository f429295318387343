#pragma once
// Platform primitives under the error classes.

namespace qvxsys::error::platform {

/// Writes a text to where debuggers and developers look: to the debugger output on Windows, as a line to the standard
/// error stream elsewhere. Failures are ignored; errno is kept.
void DebugOutput(char const* text) noexcept;

/// Up to `capacity` return addresses of the calling functions, innermost first, beginning behind `skip` of them.
/// Returns how many there are. Allocates nothing.
int CaptureTrace(void** frames, int capacity, int skip) noexcept;

} // namespace qvxsys::error::platform
