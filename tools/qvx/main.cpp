// qvx: what the library is good for, as a program.

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include <qvxsys/ErrorOrigin.h>
#include <qvxsys/Format.h>
#include <qvxsys/TTextDecoder.h>
#include <qvxsys/Version.h>
#include <qvxsys/std.h>

#include "Arguments.h"
#include "Failures.h"
#include "Host.h"
#include "Progress.h"
#include "Scan.h"
#include "ScanReport.h"

namespace {

constexpr int kSuccess = 0;
constexpr int kSomeFailed = 1;
constexpr int kUsageError = 2;
constexpr int kInterrupted = 130; // as shells have it for SIGINT

constexpr char const* kScanNotes =
    "Columns:\n"
    "  found by     how the encoding is known: given; bom, by the byte order mark; utf-8, as the text is well-formed;\n"
    "               detected, with a confidence in percent and a question mark when it is below 50\n"
    "  bytes        of the file\n"
    "  units        UTF-16 code units of the text\n"
    "  code points  of the text\n"
    "  lines        line feeds (U+000A) in the text\n"
    "  malformed    sequences that are wrong in the encoding; each counts as one U+FFFD of the text\n"
    "A byte order mark counts among the bytes only: it is not text.\n"
    "\n"
    "With --encoding auto a byte order mark tells the encoding; else the file is taken for UTF-8 if it looks like it, "
    "else\n"
    "the encoding is guessed by what the bytes would mean in each. Where a file begins with ASCII, the first other "
    "byte\n"
    "decides, however far behind it is. A file with NUL bytes that are not those of UTF-16 or UTF-32 is a binary file "
    "and\n"
    "not counted; name the encoding to have it counted.\n"
    "\n"
    "Folders are walked in the order of the names, hidden files included. Symbolic links to folders are followed only "
    "when\n"
    "they are a PATH themselves. What cannot be scanned is reported on stderr and does not stop the others.\n"
    "\n"
    "--find counts the matches in each file, that do not overlap, and shows the first ones with their line and "
    "column.\n"
    "TEXT must lie within one line. --ignore-case folds every character by Unicode's simple case folding. Long lines "
    "are\n"
    "cut, which an ellipsis shows.\n"
    "\n"
    "--print prints a line for each file instead of the table. Its format has the markers %1 path, %2 encoding, %3 "
    "bytes,\n"
    "%4 units, %5 code points, %6 lines, %7 malformed, %8 matches, %9 lines with matches, %10 how the encoding is "
    "known,\n"
    "and %% for a percent sign. With\n"
    "--find it prints a line for each match (the first N of a file with --show N): %1 path, %2 line, %3 column, %4 the "
    "line,\n"
    "up to 1000 units on either side of the match, %5 the match.\n"
    "\n"
    "--hash prints a line for each file instead of the table, with its digest and its path, as sha256sum and its "
    "sisters "
    "do;\n"
    "with -c they check it: qvx scan --hash sha256 FOLDER | sha256sum -c. The files may be of any kind and are not "
    "counted.\n"
    "With --json they are, and digests stand beside the counts, and beside the error of a binary file.\n"
    "\n"
    "Files are read on several threads; whatever is printed keeps the order of the files. Ctrl-C ends the scan: what "
    "was\n"
    "scanned until then is printed. A second Ctrl-C ends the program at once.\n"
    "\n"
    "Exit status: 0 if all was scanned, 1 if something was not, 2 if the command line is wrong, 130 after Ctrl-C.";

struct ScanCommand
{
    ScanCommand() { options.jobs = std::clamp(std::thread::hardware_concurrency(), 1u, 64u); }

    std::vector<std::string> paths;
    qvx::ScanOptions options;
    std::string find;
    std::optional<std::string> print;
    CLI::Option* show = nullptr;
    std::string hash;
    bool asJson = false;
    bool traces = false;
};

constexpr std::pair<char const*, sha2::SHA_TYPE> kHashes[] = {{"sha1", sha2::SHA160},
                                                              {"sha224", sha2::SHA224},
                                                              {"sha256", sha2::SHA256},
                                                              {"sha384", sha2::SHA384},
                                                              {"sha512", sha2::SHA512}};

void AddScan(CLI::App& app, ScanCommand& command)
{
    CLI::App* const scan = app.add_subcommand("scan", "Count the text in files and folders");
    scan->add_option("PATH", command.paths, "Files and folders")->required()->type_name("");
    auto const known = [](std::string const& name) {
        bool const isKnown = name == "auto" || TTextDecoder::IsKnownEncoding(name.c_str());
        return isKnown ? std::string() : "unknown encoding: " + qvx::Unguarded(name);
    };
    scan->add_option("--encoding", command.options.encoding, "auto, or the encoding of all files")
        ->check(CLI::Validator(known, ""))
        ->type_name("NAME")
        ->capture_default_str();
    auto const isFindable = [](std::string const& text) {
        std::string const plain = qvx::Unguarded(text);
        if (plain.empty() || plain.find('\n') != std::string::npos) {
            return std::string("the text must not be empty, nor have line feeds");
        }
        bool const isUtf8 = TStringCore::fromStdString(plain).toStdString() == plain;
        return isUtf8 ? std::string() : std::string("the text is not UTF-8");
    };
    CLI::Option* const find = scan->add_option("--find", command.find, "Look for a text")
                                  ->check(CLI::Validator(isFindable, ""))
                                  ->type_name("TEXT");
    scan->add_flag("--ignore-case", command.options.find.ignoreCase, "Find it whatever its case")->needs(find);
    command.show = scan->add_option("--show", command.options.find.shown, "How many matches of a file to show")
                       ->needs(find)
                       ->check(CLI::Range(std::int64_t{0}, std::int64_t{1'000'000'000}))
                       ->type_name("N")
                       ->capture_default_str();
    CLI::Option* const json = scan->add_flag("--json", command.asJson, "Print JSON instead of a table");
    CLI::Option* const print =
        scan->add_option("--print", command.print, "Print a line of this format for each file or match")
            ->excludes(json)
            ->type_name("FORMAT");
    std::vector<std::string> hashes;
    std::transform(std::begin(kHashes), std::end(kHashes), std::back_inserter(hashes),
                   [](auto const& hash) { return hash.first; });
    scan->add_option("--hash", command.hash, "Print digests that sha256sum -c and the like take")
        ->check(CLI::IsMember(hashes))
        ->excludes(print)
        ->type_name("ALGORITHM");
    scan->add_flag("--trace", command.traces, "Print with each error the calls that led to it");
    scan->add_option("--jobs", command.options.jobs, "How many files to read at a time")
        ->check(CLI::Range(1u, 1024u))
        ->type_name("N")
        ->capture_default_str();
    scan->footer(kScanNotes);
}

// The format, tried out: what is wrong with it shows before anything is scanned.
std::optional<TFormatStringCore> RecordFormat(ScanCommand const& command)
{
    if (!command.print) {
        return std::nullopt;
    }
    try {
        TFormatStringCore format(TStringCore::fromStdString(qvx::Unguarded(*command.print)));
        std::ostringstream nowhere;
        qvx::ScannedFile const file{{}, {}, {}, {}, {}, {}};
        if (command.find.empty()) {
            qvx::PrintRecord(file, format, nowhere);
        } else {
            qvx::PrintMatchRecord({}, {}, format, nowhere);
        }
        return format;
    } catch (...) {
        StackExceptionAndRethrow("in the format of --print");
    }
}

// False when there are both digest lines and matches to print.
bool SetHash(ScanCommand& command)
{
    auto const* const hash = std::find_if(std::begin(kHashes), std::end(kHashes),
                                          [&](auto const& entry) { return entry.first == command.hash; });
    if (hash != std::end(kHashes)) {
        command.options.hash = hash->second;
        command.options.countsText = command.asJson;
    }
    return command.hash.empty() || command.find.empty() || command.asJson;
}

int RunScan(ScanCommand command)
{
    qvx::FindOptions& find = command.options.find;
    find.text = TStringCore::fromStdString(qvx::Unguarded(command.find));
    std::optional<TFormatStringCore> format;
    try {
        format = RecordFormat(command);
    } catch (QuorvexException const& error) {
        std::cerr << qvxsys::Format(u"qvx: %1\n", qvx::Describe(error));
        return kUsageError;
    }
    if (!SetHash(command)) {
        std::cerr << "qvx: --hash and --find together need --json\n";
        return kUsageError;
    }
    if (format) {
        find.context = 1000;
        find.shown = command.show->count() != 0 ? find.shown : std::numeric_limits<std::size_t>::max();
    }

    if (command.traces) {
        TError::SetOriginHook(TError::RecordTrace);
    }
    bool const showsProgress = qvx::host::StderrIsTerminal();
    bool const highlights = qvx::host::StdoutHasColours();
    qvx::Progress progress(showsProgress, showsProgress ? qvx::host::StderrWidth() : 0);
    qvx::ScanListener listener;
    listener.onError = [&](qvx::ScanError const& error) {
        progress.Erase();
        qvx::PrintError(error, std::cerr);
    };
    // A disk is full, or nobody reads any more: the rest would be scanned for nothing.
    auto const stopIfNotWritten = [&] {
        if (!std::cout) {
            command.options.stop->Signal();
        }
    };
    listener.onWait = [&] {
        std::cout.flush();
        stopIfNotWritten();
    };
    listener.onFile = [&](qvx::ScannedFile& file) {
        if (command.asJson) {
            return;
        }
        if (command.options.hash) {
            progress.Erase();
            qvx::PrintDigest(file, std::cout);
        } else if (format && find.text.empty()) {
            progress.Erase();
            qvx::PrintRecord(file, *format, std::cout);
        } else if (!format && file.found.matches != 0) {
            progress.Erase();
            qvx::PrintMatches(file, highlights, std::cout);
            file.found.kept.clear();
        }
        stopIfNotWritten();
    };
    if (format && !find.text.empty()) {
        listener.onMatch = [&](std::filesystem::path const& path, qvx::Match const& match) {
            progress.Erase();
            qvx::PrintMatchRecord(path, match, *format, std::cout);
            stopIfNotWritten();
        };
    }
    std::vector<std::filesystem::path> paths;
    std::transform(command.paths.begin(), command.paths.end(), std::back_inserter(paths),
                   [](std::string const& argument) { return qvx::host::PathOf(qvx::Unguarded(argument)); });
    qvx::host::OnInterrupt([stop = command.options.stop] { stop->Signal(); });
    qvx::ScanResult const result = qvx::Scan(paths, command.options, progress, listener);
    progress.Erase();
    if (command.asJson) {
        qvx::PrintJson(result, !command.find.empty(), command.hash, std::cout);
    } else if (!format && !command.options.hash) {
        qvx::PrintTable(result, !command.find.empty(), std::cout);
    }
    std::cout.flush();
    if (!std::cout) {
        std::cerr << "qvx: cannot write the result\n";
        return kSomeFailed;
    }
    if (result.stopped) {
        std::cerr << "qvx: interrupted: not all was scanned\n";
        return kInterrupted;
    }
    return result.errors.empty() ? kSuccess : kSomeFailed;
}

int Run(std::vector<std::string> const& arguments)
{
    qvx::host::Prepare();
    CLI::App app("Scans text files, and keeps programs within limits.", "qvx");
    app.set_version_flag("--version",
                         std::string("qvx " QVXSYS_VERSION_STRING " (qvxsys ") + qvxsys::LoadedVersionText() + ")");
    app.require_subcommand(1);
    app.failure_message([](CLI::App const*, CLI::Error const& error) {
        return "qvx: " + std::string(error.what()) + "\nTry \"qvx --help\" or \"qvx COMMAND --help\".\n";
    });
    ScanCommand scan;
    AddScan(app, scan);
    qvx::Command const commands[] = {qvx::AddWatch(app), qvx::AddTop(app), qvx::AddDoctor(app), qvx::AddLocale(app)};
    try {
        app.parse(qvx::Guarded(arguments));
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? kSuccess : kUsageError;
    }
    for (qvx::Command const& command : commands) {
        if (command.app->parsed()) {
            return command.run();
        }
    }
    return RunScan(scan);
}

} // namespace

int qvx::Main(std::vector<std::string> const& arguments)
{
    try {
        return Run(arguments);
    } catch (QuorvexException const& exception) {
        std::cerr << qvxsys::Format(u"qvx: %1\n", qvx::Describe(exception));
    } catch (TStringCore::Exception const& exception) {
        std::cerr << "qvx: " << exception.toStdString() << '\n';
    } catch (std::exception const& exception) {
        std::cerr << "qvx: " << exception.what() << '\n';
    }
    return kSomeFailed;
}
