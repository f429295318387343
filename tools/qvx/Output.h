#pragma once
// What all subcommands do with what they print.

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace qvx {

/// As scripts get it: indented by two blanks, with U+FFFD for what is not UTF-8, and a line feed behind it.
[[nodiscard]] std::string JsonText(nlohmann::ordered_json const& json);

/// Flushes stdout. False, which is said on stderr, when not all could be written.
[[nodiscard]] bool FinishOutput();

} // namespace qvx
