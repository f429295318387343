#pragma once
// The command line: its subcommands, and arguments that the parser must take as they stand.

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace qvx {

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

[[nodiscard]] Command AddWatch(CLI::App& app);
[[nodiscard]] Command AddTop(CLI::App& app);
[[nodiscard]] Command AddDoctor(CLI::App& app);
[[nodiscard]] Command AddLocale(CLI::App& app);

} // namespace qvx
