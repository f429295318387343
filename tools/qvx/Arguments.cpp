#include "Arguments.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace qvx {
namespace {

// CLI11 takes an argument in brackets for a list of values, one that begins with a dash for an option, an option that
// ends with "=" for one whose value follows, and it knows "--" only before a subcommand's first positional. What is to
// be taken as it stands therefore gets a NUL in front, which no argument has of itself.
constexpr char kGuard = '\0';

constexpr std::string_view kOptionsWithText[] = {"--find", "--print", "--on-limit", "--log"};

bool TakesText(std::string_view option)
{
    return std::ranges::find(kOptionsWithText, option) != std::end(kOptionsWithText);
}

} // namespace

std::vector<std::string> Guarded(std::vector<std::string> const& given)
{
    std::vector<std::string> arguments;
    bool onlyPositionals = false;
    bool valueFollows = false;
    for (std::string const& argument : given) {
        if (std::exchange(valueFollows, false)) {
            arguments.push_back(kGuard + argument);
            continue;
        }
        if (argument == "--" && !onlyPositionals) {
            onlyPositionals = true;
            continue;
        }
        std::size_t const equals = argument.find('=');
        if (!onlyPositionals && TakesText(argument.substr(0, equals))) {
            arguments.push_back(argument.substr(0, equals));
            valueFollows = equals == std::string::npos;
            if (!valueFollows) {
                arguments.push_back(kGuard + argument.substr(equals + 1));
            }
            continue;
        }
        bool const isList = argument.starts_with('[') && argument.ends_with(']');
        arguments.push_back(onlyPositionals || isList ? kGuard + argument : argument);
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

std::string Unguarded(std::string const& argument)
{
    return argument.starts_with(kGuard) ? argument.substr(1) : argument;
}

} // namespace qvx
