#pragma once
// What Linux writes of a process in /proc (proc(5)), where a text may be cut off and a name may have anything in it.

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace qvx {

/// The numbers of a text, up to the first thing that is none.
template<class Number>
std::vector<Number> Numbers(std::string_view text)
{
    std::vector<Number> numbers;
    for (Number number{};;) {
        text.remove_prefix(std::min(text.find_first_not_of(" \n"), text.size()));
        auto const [behind, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc()) {
            return numbers;
        }
        numbers.push_back(number);
        text.remove_prefix(static_cast<std::size_t>(behind - text.data()));
    }
}

/// Of /proc/PID/stat: when the process was started, in ticks since the machine was. Nothing when it only waits for its
/// parent to notice its end, or when the text is none of this kind. A process whose first thread alone has ended runs
/// on, though its state is Z, too.
inline std::optional<unsigned long long> StartTime(std::string_view stat)
{
    constexpr std::size_t kThreads = 20 - 4, kStart = 22 - 4; // numbered from behind name and state
    std::size_t const name = stat.rfind(") ");
    if (name == std::string_view::npos || name + 4 > stat.size()) {
        return std::nullopt;
    }
    char const state = stat[name + 2];
    std::vector<long long> const fields = Numbers<long long>(stat.substr(name + 3));
    if (fields.size() <= kStart || fields[kStart] < 0 || ((state == 'Z' || state == 'X') && fields[kThreads] <= 1)) {
        return std::nullopt;
    }
    return static_cast<unsigned long long>(fields[kStart]);
}

/// Of /proc/PID/cmdline and /proc/PID/comm: the arguments as one line, or the name when there are none.
inline std::string CommandText(std::string line, std::string const& name)
{
    line.resize(line.find_last_not_of('\0') + 1);
    std::replace(line.begin(), line.end(), '\0', ' ');
    return line.empty() ? name.substr(0, name.find('\n')) : line;
}

} // namespace qvx
