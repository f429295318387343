#pragma once
// Text for people to read: file names made printable, and how wide text is on a terminal.

#include <filesystem>
#include <string>

#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace qvx {

/// The bytes of a name as the file system has it (where names are UTF-16: in UTF-8).
[[nodiscard]] std::string NameBytes(std::filesystem::path const& path);

/// The name with U+FFFD for what is not UTF-8 and for control characters, which could rewrite the screen.
[[nodiscard]] TStringCore DisplayName(std::filesystem::path const& path);

/// The columns that the text takes on a terminal: 2 for wide characters of East Asian scripts and emoji, 0 for
/// combining and invisible ones, else 1.
[[nodiscard]] int DisplayWidth(TStringView text);

} // namespace qvx
