#include "Units.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <system_error>

namespace qvx {
namespace {

struct Number
{
    double value;
    std::string_view unit;
};

// Digits, perhaps with a fraction, and what stands behind them.
std::optional<Number> ParseNumber(std::string_view text)
{
    Number number{};
    char const* const end = text.data() + text.size();
    auto const [behind, error] = std::from_chars(text.data(), end, number.value, std::chars_format::fixed);
    bool const isNumber = error == std::errc() && text.front() >= '0' && text.front() <= '9'; // not "-1", not "inf"
    number.unit = isNumber ? text.substr(static_cast<std::size_t>(behind - text.data())) : std::string_view();
    return isNumber ? std::optional(number) : std::nullopt;
}

TStringCore Decimal(double value, int digits)
{
    char text[64];
    char* const end = std::to_chars(text, std::end(text), value, std::chars_format::fixed, digits).ptr;
    return {text, static_cast<int>(end - text)};
}

} // namespace

std::optional<std::uint64_t> ParseSize(std::string_view text)
{
    constexpr std::string_view kUnits = "KMGT";
    std::optional<Number> const number = ParseNumber(text);
    if (!number) {
        return std::nullopt;
    }
    double bytes = number->value;
    if (std::string_view const unit = number->unit; !unit.empty()) {
        char const letter = unit[0] >= 'a' && unit[0] <= 'z' ? static_cast<char>(unit[0] - 'a' + 'A') : unit[0];
        std::size_t const power = kUnits.find(letter);
        if (power == std::string_view::npos || (unit.size() != 1 && unit.substr(1) != "iB")) {
            return std::nullopt;
        }
        bytes = std::ldexp(bytes, 10 * (static_cast<int>(power) + 1));
    }
    bool const fits = bytes >= 1 && bytes < 0x1p63;
    return fits ? std::optional(static_cast<std::uint64_t>(bytes)) : std::nullopt;
}

std::optional<double> ParsePercentage(std::string_view text)
{
    std::optional<Number> const number = ParseNumber(text);
    bool const isPercentage = number && number->unit == "%" && number->value > 0 && number->value <= 100;
    return isPercentage ? std::optional(number->value / 100) : std::nullopt;
}

std::optional<std::chrono::milliseconds> ParseDuration(std::string_view text)
{
    constexpr struct
    {
        std::string_view name;
        double milliseconds;
    } kUnits[] = {{"", 1000}, {"ms", 1}, {"s", 1000}, {"m", 60'000}, {"min", 60'000}, {"h", 3'600'000}};
    constexpr double kLongest = 10'000 * 3'600'000.0;
    std::optional<Number> const number = ParseNumber(text);
    if (!number) {
        return std::nullopt;
    }
    auto const* const unit = std::find_if(std::begin(kUnits), std::end(kUnits),
                                          [&](auto const& entry) { return entry.name == number->unit; });
    if (unit == std::end(kUnits) || number->value * unit->milliseconds > kLongest) {
        return std::nullopt;
    }
    return std::chrono::milliseconds(std::llround(number->value * unit->milliseconds));
}

TStringCore SizeText(std::uint64_t bytes)
{
    constexpr char16_t const* kNames[] = {u" B", u" KiB", u" MiB", u" GiB", u" TiB", u" PiB", u" EiB"};
    int power = 0;
    while (power < 6 && bytes >> (10 * (power + 1)) != 0) {
        ++power;
    }
    // Rounding must not make 1024.00 of it.
    double const value = std::ldexp(static_cast<double>(bytes), -10 * power);
    return Decimal(power == 0 ? value : std::min(value, 1023.99), power == 0 ? 0 : 2) + kNames[power];
}

TStringCore TimeText(std::chrono::nanoseconds time)
{
    double const seconds = std::chrono::duration<double>(time).count();
    if (seconds < 59.95) {
        return Decimal(seconds, 1) + u" s";
    }
    return seconds < 5400 ? Decimal(seconds / 60, 0) + u" min" : Decimal(seconds / 3600, 0) + u" h";
}

} // namespace qvx
