#pragma once
// The name of the encoding that the process's 8-bit text is in.

#include <string_view>

namespace qvxsys::system {

/// The name of a code page by the library's list. For one that is not in it, the last name that was found, and "UTF-8"
/// before the first.
char const* NameOfCodePage(unsigned int codePage) noexcept;

/// The list's spelling of a character set that is known by this name: compared without regard to case and to anything
/// but letters and digits; "CP1252", "IBM437" and "windows-31J" are code pages by their number. Null when it is not in
/// it.
char const* NameOfCharset(std::string_view charset) noexcept;

namespace platform {

/// Writes the name into `name`, cut to fit, with its terminator. Windows: that of the active code page. Elsewhere: of
/// the locale that the program has set; as long as it has set none, of the one that the environment names.
void LocalEncodingName(char (&name)[20]) noexcept;

} // namespace platform
} // namespace qvxsys::system
