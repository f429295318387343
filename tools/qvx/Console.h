#pragma once
// What the tool asks the operating system about its terminal. One source file for each system.

namespace qvx::console {

/// Call once, before anything is printed: makes the terminal show UTF-8 where it does not of itself.
void Prepare() noexcept;

[[nodiscard]] bool StderrIsTerminal() noexcept;

/// In columns; 80 when the terminal does not tell.
[[nodiscard]] int StderrWidth() noexcept;

} // namespace qvx::console
