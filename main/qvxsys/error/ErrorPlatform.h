#pragma once
// Platform primitives under the error classes.

namespace qvxsys::error::platform {

/// Writes a text to where debuggers and developers look: to the debugger output on Windows, as a line to the standard
/// error stream elsewhere. Failures are ignored; errno is kept.
void DebugOutput(char const* text) noexcept;

} // namespace qvxsys::error::platform
