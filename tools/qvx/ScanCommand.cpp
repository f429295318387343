// The command line of `qvx scan`.

#include <algorithm>
#include <iostream>
#include <iterator>
#include <limits>
#include <memory>
#include <sstream>
#include <thread>
#include <utility>

#include <CLI/CLI.hpp>

#include <qvxsys/ErrorOrigin.h>
#include <qvxsys/Format.h>
#include <qvxsys/TTextDecoder.h>
#include <qvxsys/std.h>

#include "Arguments.h"
#include "Failures.h"
#include "Host.h"
#include "Output.h"
#include "Progress.h"
#include "Scan.h"
#include "ScanReport.h"

namespace qvx {
namespace {

constexpr int kInterrupted = 130; // as shells have it for SIGINT

constexpr char const* kNotes =
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
    ScanOptions options;
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

// The format, tried out: what is wrong with it shows before anything is scanned.
std::optional<TFormatStringCore> RecordFormat(ScanCommand const& command)
{
    if (!command.print) {
        return std::nullopt;
    }
    try {
        TFormatStringCore format(TStringCore::fromStdString(Unguarded(*command.print)));
        std::ostringstream nowhere;
        ScannedFile const file{{}, {}, {}, {}, {}, {}};
        if (command.find.empty()) {
            PrintRecord(file, format, nowhere);
        } else {
            PrintMatchRecord({}, {}, format, nowhere);
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

// Prints what a scan finds, as it finds it.
class Printer
{
public:
    // `format` is that of --print, or null.
    Printer(ScanCommand const& command, TFormatStringCore* format) : m_command(command), m_format(format) {}

    [[nodiscard]] Progress& Bar() noexcept { return m_progress; }
    [[nodiscard]] ScanListener Listener();
    // What can be told at the end only.
    void PrintResult(ScanResult const& result);

private:
    [[nodiscard]] bool Finds() const noexcept { return !m_command.find.empty(); }
    void PrintFile(ScannedFile& file);
    void StopIfNotWritten() const;

    ScanCommand const& m_command;
    TFormatStringCore* const m_format;
    bool const m_showsProgress = host::StderrIsTerminal();
    bool const m_highlights = host::StdoutHasColours();
    Progress m_progress{m_showsProgress, m_showsProgress ? host::StderrWidth() : 0};
};

// A disk is full, or nobody reads any more: the rest would be scanned for nothing.
void Printer::StopIfNotWritten() const
{
    if (!std::cout) {
        m_command.options.stop->Signal();
    }
}

ScanListener Printer::Listener()
{
    ScanListener listener;
    listener.onError = [this](ScanError const& error) {
        m_progress.Erase();
        PrintError(error, std::cerr);
    };
    listener.onWait = [this] {
        std::cout.flush();
        StopIfNotWritten();
    };
    listener.onFile = [this](ScannedFile& file) { PrintFile(file); };
    if (m_format != nullptr && Finds()) {
        listener.onMatch = [this](std::filesystem::path const& path, Match const& match) {
            m_progress.Erase();
            PrintMatchRecord(path, match, *m_format, std::cout);
            StopIfNotWritten();
        };
    }
    return listener;
}

void Printer::PrintFile(ScannedFile& file)
{
    if (m_command.asJson) {
        return;
    }
    if (m_command.options.hash) {
        m_progress.Erase();
        PrintDigest(file, std::cout);
    } else if (m_format != nullptr && !Finds()) {
        m_progress.Erase();
        PrintRecord(file, *m_format, std::cout);
    } else if (m_format == nullptr && file.found.matches != 0) {
        m_progress.Erase();
        PrintMatches(file, m_highlights, std::cout);
        file.found.kept.clear();
    }
    StopIfNotWritten();
}

void Printer::PrintResult(ScanResult const& result)
{
    m_progress.Erase();
    if (m_command.asJson) {
        PrintJson(result, Finds(), m_command.hash, std::cout);
    } else if (m_format == nullptr && !m_command.options.hash) {
        PrintTable(result, Finds(), std::cout);
    }
}

int Run(ScanCommand command)
{
    FindOptions& find = command.options.find;
    find.text = TStringCore::fromStdString(Unguarded(command.find));
    std::optional<TFormatStringCore> format;
    try {
        format = RecordFormat(command);
    } catch (QuorvexException const& error) {
        std::cerr << qvxsys::Format(u"qvx: %1\n", Describe(error));
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
    std::vector<std::filesystem::path> paths;
    std::transform(command.paths.begin(), command.paths.end(), std::back_inserter(paths),
                   [](std::string const& argument) { return host::PathOf(Unguarded(argument)); });
    host::OnInterrupt([stop = command.options.stop] { stop->Signal(); });
    Printer printer(command, format ? &*format : nullptr);
    ScanResult const result = Scan(paths, command.options, printer.Bar(), printer.Listener());
    printer.PrintResult(result);
    if (!FinishOutput()) {
        return kSomeFailed;
    }
    if (result.stopped) {
        std::cerr << "qvx: interrupted: not all was scanned\n";
        return kInterrupted;
    }
    return result.errors.empty() ? kSuccess : kSomeFailed;
}

// An empty text, or what is wrong with it.
std::string CheckFindable(std::string const& text)
{
    std::string const plain = Unguarded(text);
    if (plain.empty() || plain.find('\n') != std::string::npos) {
        return "the text must not be empty, nor have line feeds";
    }
    bool const isUtf8 = TStringCore::fromStdString(plain).toStdString() == plain;
    return isUtf8 ? std::string() : "the text is not UTF-8";
}

std::string CheckEncoding(std::string const& name)
{
    bool const isKnown = name == "auto" || TTextDecoder::IsKnownEncoding(name.c_str());
    return isKnown ? std::string() : "unknown encoding: " + Unguarded(name);
}

} // namespace

Command AddScan(CLI::App& app)
{
    auto const made = std::make_shared<ScanCommand>();
    ScanCommand& command = *made;
    CLI::App* const scan = app.add_subcommand("scan", "Count the text in files and folders");
    scan->add_option("PATH", command.paths, "Files and folders")->required()->type_name("");
    scan->add_option("--encoding", command.options.encoding, "auto, or the encoding of all files")
        ->check(CLI::Validator(CheckEncoding, ""))
        ->type_name("NAME")
        ->capture_default_str();
    CLI::Option* const find = scan->add_option("--find", command.find, "Look for a text")
                                  ->check(CLI::Validator(CheckFindable, ""))
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
    scan->footer(kNotes);
    return {scan, [made] { return Run(*made); }};
}

} // namespace qvx
