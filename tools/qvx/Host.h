#pragma once
// What the tool asks of the operating system. One source file for each system; each has the program's entry point, too,
// which calls Main.

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

namespace qvx {

/// The program, with its arguments without the program's name. Where arguments are UTF-16 they come as UTF-8, lone
/// surrogates as U+FFFD. Returns the exit status.
int Main(std::vector<std::string> const& arguments);

namespace host {

/// Call once, before anything is printed. std::cout and std::cerr take UTF-8; where a console's own encoding can be
/// another one, they are made to write to a console in UTF-16 instead. Files and pipes get UTF-8 everywhere.
void Prepare();

/// Has `function` called on a thread of its own when the user asks the program to end for the first time (Ctrl-C). The
/// second time it ends at once, as it would without this. Call once, before other threads are started. Does nothing
/// where the program was started to ignore it.
void OnInterrupt(std::function<void()> function);

[[nodiscard]] bool StderrIsTerminal() noexcept;

/// True when stdout is a terminal that understands the escape sequences for colours, and the user has not said no to
/// colours (a variable NO_COLOR that is not empty).
[[nodiscard]] bool StdoutHasColours() noexcept;

/// In columns; 80 when the terminal does not tell.
[[nodiscard]] int StderrWidth() noexcept;

/// True when the user can be shown a screen and asked for keys: stdin and stdout are terminals.
[[nodiscard]] bool IsInteractive() noexcept;

/// A file to write behind what is in it, made if it is not there, which commands that are run do not get. Null, with
/// errno set, when that cannot be.
[[nodiscard]] std::FILE* OpenToAppend(std::filesystem::path const& path) noexcept;

/// The path that an argument names, in the system's own spelling.
[[nodiscard]] std::filesystem::path PathOf(std::string const& argument);

struct Entry
{
    std::filesystem::path path; ///< begins with the folder's
    bool isFile;                ///< a regular file, or a link to one; else it has to be asked what it is
};

/// What is in a folder, in no order. On an error what was found before it, and when `goesOn`, which is asked for each
/// entry, returns false.
[[nodiscard]] std::vector<Entry> EntriesOf(std::filesystem::path const& folder, std::function<bool()> const& goesOn,
                                           std::error_code& error);

/// A symbolic link, or whatever else on this system makes one folder appear inside another.
[[nodiscard]] bool IsLink(std::filesystem::path const& path) noexcept;

/// The path for a program that reads it: the bytes of its name; in UTF-8 with slashes where names are UTF-16.
[[nodiscard]] std::string PathBytes(std::filesystem::path const& path);

/// The order of the names' code points.
[[nodiscard]] bool ComesBefore(std::filesystem::path const& a, std::filesystem::path const& b) noexcept;

} // namespace host
} // namespace qvx
