#pragma once
// Text for people to read: file names made printable, and how wide text is on a terminal.

#include <filesystem>
#include <string>

#include <qvxsys/TStringCore.h>
#include <qvxsys/TStringView.h>

namespace qvx {

/// The name as text, with U+FFFD for what is not UTF-8 (or UTF-16, where names are that).
[[nodiscard]] TStringCore NameText(std::filesystem::path const& path);

/// The name as the file system has it, its bytes in hexadecimal (a unit of UTF-16 as two, the low one first); empty
/// when NameText has lost nothing.
[[nodiscard]] std::string RawName(std::filesystem::path const& path);

/// A text with U+FFFD for control characters, which could rewrite the screen, and for those that turn the direction of
/// what follows them; tabs stay if `keepsTabs`.
[[nodiscard]] TStringCore Printable(TStringCore text, bool keepsTabs = true);

/// NameText with U+FFFD for the same characters, and for tabs.
[[nodiscard]] TStringCore DisplayName(std::filesystem::path const& path);

/// The columns that the text takes on a terminal: 2 for wide characters of East Asian scripts and emoji, 0 for
/// combining and invisible ones, else 1.
[[nodiscard]] int DisplayWidth(TStringView text);

} // namespace qvx
