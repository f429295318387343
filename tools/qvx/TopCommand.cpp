// The command line of `qvx top`.

#include <algorithm>
#include <iterator>
#include <memory>

#include <CLI/CLI.hpp>

#include "Arguments.h"
#include "Top.h"
#include "Units.h"

namespace qvx {
namespace {

constexpr char const* kNotes =
    "A line for each process that reports on the port: every command under qvx watch, and every program whose "
    "resource\n"
    "manager uses it. They report once per check interval; this program only listens.\n"
    "\n"
    "Columns:\n"
    "  PID      of the process that reports; of a watched command, that of qvx watch\n"
    "  CPU      percent of all processors, with all that it counts as its own\n"
    "  MEMORY   private memory of the same\n"
    "  SHARE    that memory in percent of the process's own limit\n"
    "  AGE      time since it has last reported\n"
    "  COMMAND  its arguments, with U+FFFD for what is no text\n"
    "Below them the sums, and the memory in use on the machine.\n"
    "\n"
    "Keys: p, c, m, s and a sort by a column, the left and right arrows by the one beside it; up and down scroll; q "
    "quits.\n"
    "\n"
    "--once and --json listen for one and a half intervals, so that everyone who reports at least once per interval is "
    "heard,\n"
    "print what they know, and end. For slower ones give a longer interval.\n"
    "\n"
    "Exit status: 0, 1 if the port or the terminal cannot be used, 2 if the command line is wrong.";

} // namespace

Command AddTop(CLI::App& app)
{
    auto const options = std::make_shared<TopOptions>();
    CLI::App* const top = app.add_subcommand("top", "Show the processes that report what they use");
    CLI::Option* const once = top->add_flag("--once", options->once, "Print the table once, as plain text");
    top->add_flag("--json", options->asJson, "Print JSON instead of a table, once")->excludes(once);
    top->add_option("--port", options->port, "Where to listen")
        ->check(CLI::Range(1, 65535))
        ->type_name("PORT")
        ->capture_default_str();
    top->add_option_function<std::string>(
           "--sort",
           [options](std::string const& name) {
               auto const* const found = std::ranges::find(kTopColumnNames, name);
               options->sort = static_cast<TopColumn>(found - std::begin(kTopColumnNames));
           },
           "cpu, memory, share, pid or age; all but pid with the greatest first [share]")
        ->check(CLI::IsMember(std::vector<std::string>(std::begin(kTopColumnNames), std::end(kTopColumnNames))))
        ->type_name("COLUMN");
    top->add_option_function<std::string>(
           "--interval",
           [options](std::string const& text) {
               auto const time = ParseDuration(text);
               if (!time || *time < std::chrono::milliseconds(100)) {
                   throw CLI::ValidationError("--interval", text + " is not a time of at least 100ms");
               }
               options->interval = *time;
           },
           "Between two looks [1s]")
        ->type_name("TIME");
    top->footer(kNotes);
    return {top, [options] { return Top(*options); }};
}

} // namespace qvx
