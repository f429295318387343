#pragma once
// The command line: its subcommands, and arguments that the parser must take as they stand.

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace qvx {

/// Exit statuses.
inline constexpr int kSuccess = 0;
inline constexpr int kSomeFailed = 1;
inline constexpr int kUsageError = 2;

/// A subcommand, and what runs it once the command line was read. Returns the exit status.
struct Command
{
    CLI::App* app;
    std::function<int()> run;
};

/// Arguments for CLI11, in the order in which it wants them: the last one first.
[[nodiscard]] std::vector<std::string> Guarded(std::vector<std::string> const& given);
/// An argument that comes back, as it was given.
[[nodiscard]] std::string Unguarded(std::string const& argument);

[[nodiscard]] Command AddScan(CLI::App& app);
[[nodiscard]] Command AddWatch(CLI::App& app);
[[nodiscard]] Command AddTop(CLI::App& app);
[[nodiscard]] Command AddDoctor(CLI::App& app);
[[nodiscard]] Command AddLocale(CLI::App& app);

} // namespace qvx
