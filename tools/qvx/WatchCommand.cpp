// The command line of `qvx watch`.

#include <algorithm>
#include <iterator>
#include <memory>

#include <CLI/CLI.hpp>

#include <qvxsys/ResourceManager.h>

#include "Arguments.h"
#include "Units.h"
#include "Watch.h"

namespace qvx {
namespace {

constexpr char const* kNotes =
    "Runs COMMAND as if it had been started without this, with the same input, output and working folder, and counts "
    "the\n"
    "memory and the CPU time of all the processes that it consists of. Watched commands on one machine know of one "
    "another:\n"
    "each reports once per interval on the port. When a limit is exceeded, CMD is run; if it is still exceeded an "
    "interval\n"
    "later, all processes of the command are asked to end (SIGTERM) and after the grace time killed, and one paragraph "
    "on\n"
    "stderr says why.\n"
    "\n"
    "Limits:\n"
    "  --max-memory  of this command. Without it, all of the machine's memory.\n"
    "  --all-memory  in use on the whole machine, by whatever: 80% of it, or a size. When it is exceeded, only the "
    "watched\n"
    "                command with the largest share of its own --max-memory has to go.\n"
    "  --max-cpu     percent of all processors, of all watched commands together. When it is exceeded for --sustain, "
    "only\n"
    "                the one that uses the most has to go. With --average the average over that time is compared, "
    "instead\n"
    "                of each sample.\n"
    "Memory is private memory, swapped out or not. Where a control group has less of it than the machine, the group is "
    "meant.\n"
    "Sizes take K, M, G and T (powers of 1024), times ms, s, m and h; the interval and --sustain are whole seconds.\n"
    "\n"
    "CMD is run by the shell, with QVX_PID (the process id of COMMAND) and QVX_LIMIT (memory or cpu) in its "
    "environment "
    "and\n"
    "its output on stderr. It has the grace time, too, and is killed after it.\n"
    "\n"
    "--dry-run says what would be ended and ends nothing; CMD is not run either. --verbose and --log have every line "
    "of "
    "the\n"
    "monitor; several commands may share one log.\n"
    "\n"
    "SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2, SIGTSTP, SIGCONT and SIGWINCH are handed on to COMMAND. If "
    "this\n"
    "program is killed, so is COMMAND, though not what that has started. What COMMAND leaves running when it ends goes "
    "on\n"
    "without limits, which is said on stderr.\n"
    "On Windows, Ctrl-C and what asks COMMAND to end reach it as Ctrl-Break; if this program is killed, so is all "
    "that\n"
    "COMMAND has started.\n"
    "\n"
    "Exit status: that of COMMAND; if a signal has ended it, this program ends by the same one. 124 if a limit has "
    "ended "
    "it,\n"
    "125 if it could not be watched, 126 if COMMAND could not be run, 127 if there is no such program, 2 if the "
    "command "
    "line\n"
    "is wrong.";

// An option of which the text is read by `parse`.
template<class Parse, class Set>
void AddParsed(CLI::App& app, char const* name, char const* type, char const* expected, char const* help, Parse parse,
               Set set)
{
    app.add_option_function<std::string>(
           name,
           [=](std::string const& text) {
               auto const value = parse(text);
               if (!value || !set(*value)) {
                   throw CLI::ValidationError(name, text + " is not " + expected);
               }
           },
           help)
        ->type_name(type);
}

// No program runs in less than a mebibyte; who says so has left out a unit or a percent sign.
std::optional<std::uint64_t> ParseLimit(std::string const& text)
{
    auto const size = ParseSize(text);
    return size && *size >= std::uint64_t{1024} * 1024 ? size : std::nullopt;
}

struct WatchCommand
{
    WatchOptions options;
    std::optional<double> allMemory; // as a part of the machine's
};

void AddLimits(CLI::App& app, std::shared_ptr<WatchCommand> const& command)
{
    WatchOptions& options = command->options;
    AddParsed(app, "--max-memory", "SIZE", "a size of 1M or more", "Memory that the command may use", ParseLimit,
              [&options](std::uint64_t size) { return options.maxMemory = size, true; });
    AddParsed(
        app, "--all-memory", "PERCENT%|SIZE", "a percentage or a size of 1M or more",
        "Memory that may be in use on the machine",
        [](std::string const& text) -> std::optional<std::string> {
            return ParseLimit(text) || ParsePercentage(text) ? std::optional(text) : std::nullopt;
        },
        [command](std::string const& text) {
            command->options.allMemory = ParseLimit(text);
            command->allMemory = ParsePercentage(text);
            return true;
        });
    app.add_option("--max-cpu", options.maxCpu, "CPU that all watched commands together may use, in percent")
        ->check(CLI::Range(1u, 99u))
        ->type_name("PERCENT");
}

void AddTimes(CLI::App& app, WatchOptions& options)
{
    auto const wholeSeconds = [](std::chrono::seconds& to, std::chrono::seconds least) {
        return [&to, least](std::chrono::milliseconds time) {
            to = std::chrono::duration_cast<std::chrono::seconds>(time);
            return to == time && to >= least;
        };
    };
    using std::chrono::seconds;
    AddParsed(app, "--sustain", "TIME", "a time in whole seconds", "How long before CPU use counts as exceeded [10s]",
              ParseDuration, wholeSeconds(options.sustain, seconds(0)));
    app.add_flag("--average", options.average, "Compare the average of the CPU use over that time");
    AddParsed(app, "--interval", "TIME", "a time in whole seconds", "Between two checks [1s]", ParseDuration,
              wholeSeconds(options.interval, seconds(1)));
    AddParsed(app, "--grace", "TIME", "a time", "For what is asked to end, and for CMD [5s]", ParseDuration,
              [&options](std::chrono::milliseconds time) { return options.grace = time, true; });
}

} // namespace

Command AddWatch(CLI::App& app)
{
    auto const command = std::make_shared<WatchCommand>();
    WatchOptions& options = command->options;
    CLI::App* const watch = app.add_subcommand("watch", "Run a command within limits of memory and CPU time");
    watch->add_option("COMMAND", options.command, "The command and its arguments; behind --")
        ->required()
        ->type_name("");
    AddLimits(*watch, command);
    AddTimes(*watch, options);
    watch->add_option("--on-limit", options.onLimit, "What to run before the command has to go")->type_name("CMD");
    watch->add_option("--port", options.port, "Where watched commands find one another")
        ->check(CLI::Range(1, 65535))
        ->type_name("PORT")
        ->capture_default_str();
    watch->add_flag("--verbose", options.isVerbose, "Print what the monitor has to say on stderr");
    watch->add_option("--log", options.logFile, "And append it to a file")->type_name("FILE");
    watch->add_flag("--dry-run", options.isDryRun, "Only say what would be done");
    watch->footer(kNotes);
    return {watch, [command] {
                WatchOptions ready = command->options;
                std::ranges::transform(ready.command, ready.command.begin(), Unguarded);
                ready.onLimit = Unguarded(ready.onLimit);
                ready.logFile = Unguarded(ready.logFile);
                if (command->allMemory) {
                    ready.allMemory = ResourceManager::AdjustMemoryLimit(0, 0, *command->allMemory, false);
                }
                return Watch(ready);
            }};
}

} // namespace qvx
