#include "ProcMaps.h"

#include <charconv>

namespace qvxsys::dump {
namespace {

/// Takes a number and the separator behind it off the line.
bool TakeNumber(std::string_view& line, int base, char separator, std::uint64_t& number) noexcept
{
    auto const [end, error] = std::from_chars(line.data(), line.data() + line.size(), number, base);
    if (error != std::errc{}) {
        return false;
    }
    line.remove_prefix(static_cast<std::size_t>(end - line.data()));
    if (line.empty() || line.front() != separator) {
        return line.empty() && separator == ' ';
    }
    line.remove_prefix(1);
    return true;
}

bool TakeAccess(std::string_view& line, Mapping& mapping) noexcept
{
    if (line.size() < 5 || line[4] != ' ') {
        return false;
    }
    mapping.readable = line[0] == 'r';
    mapping.writable = line[1] == 'w';
    mapping.executable = line[2] == 'x';
    mapping.shared = line[3] == 's';
    line.remove_prefix(5);
    return true;
}

} // namespace

bool ParseMapping(std::string_view line, Mapping& mapping) noexcept
{
    std::uint64_t device;
    if (!TakeNumber(line, 16, '-', mapping.start) || !TakeNumber(line, 16, ' ', mapping.end) ||
        !TakeAccess(line, mapping) || !TakeNumber(line, 16, ' ', mapping.offset) ||
        !TakeNumber(line, 16, ':', device) || !TakeNumber(line, 16, ' ', device) ||
        !TakeNumber(line, 10, ' ', mapping.inode) || mapping.end <= mapping.start) {
        return false;
    }
    std::size_t const name = line.find_first_not_of(' ');
    mapping.name = name == std::string_view::npos ? std::string_view{} : line.substr(name);
    return true;
}

std::size_t FileNameOf(Mapping const& mapping, char* name, std::size_t capacity) noexcept
{
    constexpr std::string_view kDeleted = " (deleted)";
    std::string_view from = mapping.name;
    if (from.ends_with(kDeleted)) {
        from.remove_suffix(kDeleted.size());
    }
    std::size_t size = 0;
    for (std::size_t i = 0; i < from.size() && size < capacity; ++size) {
        // The kernel escapes line feeds only, and not backslashes, so this one sequence alone is undone.
        bool const escape = from.substr(i).starts_with("\\012");
        name[size] = escape ? '\n' : from[i];
        i += escape ? 4 : 1;
    }
    return size;
}

} // namespace qvxsys::dump
