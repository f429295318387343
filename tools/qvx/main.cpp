// qvx: looks into text files with the library's own decoders.

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <qvxsys/TStringCore.h>
#include <qvxsys/TTextDecoder.h>

#include "Host.h"
#include "Progress.h"
#include "Scan.h"
#include "ScanReport.h"

namespace {

constexpr int kSuccess = 0;
constexpr int kSomeFailed = 1;
constexpr int kUsageError = 2;

constexpr char const* kScanNotes =
    "Columns:\n"
    "  bytes        of the file\n"
    "  units        UTF-16 code units of the text\n"
    "  code points  of the text\n"
    "  lines        line feeds (U+000A) in the text\n"
    "  malformed    sequences that are wrong in the encoding; each counts as one U+FFFD of the text\n"
    "A byte order mark counts among the bytes only: it is not text.\n"
    "\n"
    "With --encoding auto a byte order mark tells the encoding; else the file is taken for UTF-8 if it looks like it, "
    "else\n"
    "the encoding is guessed. A file with NUL bytes and no mark that explains them is a binary file and not counted; "
    "name\n"
    "the encoding to have it counted.\n"
    "\n"
    "Folders are walked in the order of the names, hidden files included. Symbolic links to folders are followed only "
    "when\n"
    "they are a PATH themselves. What cannot be scanned is reported on stderr and does not stop the others.\n"
    "\n"
    "Exit status: 0 if all was scanned, 1 if something was not, 2 if the command line is wrong.";

// CLI11 takes an argument in brackets for a list of values, and it knows "--" only before a subcommand's first
// positional. What is to be taken as it stands therefore gets a NUL in front, which no argument has of itself.
constexpr char kGuard = '\0';

std::vector<std::string> Guarded(std::vector<std::string> const& given)
{
    std::vector<std::string> arguments;
    bool onlyPaths = false;
    for (std::string const& argument : given) {
        if (argument == "--" && !onlyPaths) {
            onlyPaths = true;
            continue;
        }
        bool const isList = argument.starts_with('[') && argument.ends_with(']');
        arguments.push_back(onlyPaths || isList ? kGuard + argument : argument);
    }
    // The order in which CLI11 wants them.
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

std::string Unguarded(std::string const& argument)
{
    return argument.starts_with(kGuard) ? argument.substr(1) : argument;
}

struct ScanCommand
{
    std::vector<std::string> paths;
    qvx::ScanOptions options;
    bool asJson = false;
};

void AddScan(CLI::App& app, ScanCommand& command)
{
    CLI::App* const scan = app.add_subcommand("scan", "Count the text in files and folders");
    scan->add_option("PATH", command.paths, "Files and folders")->required()->type_name("");
    auto const known = [](std::string const& name) {
        bool const isKnown = name == "auto" || TTextDecoder::IsKnownEncoding(name.c_str());
        return isKnown ? std::string() : "unknown encoding: " + Unguarded(name);
    };
    scan->add_option("--encoding", command.options.encoding, "auto, or the encoding of all files")
        ->check(CLI::Validator(known, ""))
        ->type_name("NAME")
        ->capture_default_str();
    scan->add_flag("--json", command.asJson, "Print JSON instead of a table");
    scan->footer(kScanNotes);
}

int RunScan(ScanCommand const& command)
{
    bool const showsProgress = qvx::host::StderrIsTerminal();
    qvx::Progress progress(showsProgress, showsProgress ? qvx::host::StderrWidth() : 0);
    auto const onError = [&](qvx::ScanError const& error) {
        progress.Erase();
        qvx::PrintError(error, std::cerr);
    };
    std::vector<std::filesystem::path> paths;
    std::transform(command.paths.begin(), command.paths.end(), std::back_inserter(paths),
                   [](std::string const& argument) { return qvx::host::PathOf(Unguarded(argument)); });
    qvx::ScanResult const result = qvx::Scan(paths, command.options, progress, onError);
    progress.Erase();
    if (command.asJson) {
        qvx::PrintJson(result, std::cout);
    } else {
        qvx::PrintTable(result, std::cout);
    }
    std::cout.flush();
    if (!std::cout) {
        std::cerr << "qvx: cannot write the result\n";
        return kSomeFailed;
    }
    return result.errors.empty() ? kSuccess : kSomeFailed;
}

int Run(std::vector<std::string> const& arguments)
{
    qvx::host::Prepare();
    CLI::App app("Looks into text files.", "qvx");
    app.set_version_flag("--version", "qvx " QVX_VERSION);
    app.require_subcommand(1);
    app.failure_message([](CLI::App const*, CLI::Error const& error) {
        return "qvx: " + std::string(error.what()) + "\nTry \"qvx --help\" or \"qvx scan --help\".\n";
    });
    ScanCommand scan;
    AddScan(app, scan);
    try {
        app.parse(Guarded(arguments));
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? kSuccess : kUsageError;
    }
    return RunScan(scan);
}

} // namespace

int qvx::Main(std::vector<std::string> arguments)
{
    try {
        return Run(arguments);
    } catch (TStringCore::Exception const& exception) {
        std::cerr << "qvx: " << exception.toStdString() << '\n';
    } catch (std::exception const& exception) {
        std::cerr << "qvx: " << exception.what() << '\n';
    }
    return kSomeFailed;
}
