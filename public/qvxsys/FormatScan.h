#pragma once
// How a format string is read, at run time and at compile time alike.

#include <cstddef>
#include <cstdint>

namespace qvxsys::detail {

/// A marker in a format string.
struct FormatMarker
{
    std::int32_t position; ///< index of its '%'
    std::int32_t length;   ///< units: 2, or 3 for a number of two digits
    std::int32_t number;   ///< 1 to 99, or 0 for the escape "%%"
};
static_assert(offsetof(FormatMarker, position) == 0 && offsetof(FormatMarker, length) == 4 &&
              offsetof(FormatMarker, number) == 8 && sizeof(FormatMarker) == 12);

/// What is wrong with a format string.
enum class FormatFault { None, Numberless, LeadingZero, Above99, NotPositive, IncompleteEnd, NotPositiveEnd };

/// The BMP characters of the Unicode class Nd (Unicode 15.0, DerivedGeneralCategory.txt) by the digit 0 of each row of
/// ten; all lie behind ASCII but the first.
inline constexpr char16_t kDigitRows[] = {
    0x0030, 0x0660, 0x06F0, 0x07C0, 0x0966, 0x09E6, 0x0A66, 0x0AE6, 0x0B66, 0x0BE6, 0x0C66, 0x0CE6, 0x0D66,
    0x0DE6, 0x0E50, 0x0ED0, 0x0F20, 0x1040, 0x1090, 0x17E0, 0x1810, 0x1946, 0x19D0, 0x1A80, 0x1A90, 0x1B50,
    0x1BB0, 0x1C40, 0x1C50, 0xA620, 0xA8D0, 0xA900, 0xA9D0, 0xA9F0, 0xAA50, 0xABF0, 0xFF10};

/// TCType::isDigit of a unit, for constant expressions.
[[nodiscard]] constexpr bool IsDigitUnit(std::uint32_t c) noexcept
{
    for (std::uint32_t const zero : kDigitRows) {
        if (c >= zero && c - zero < 10) {
            return true;
        }
    }
    return false;
}

/// Reads the marker whose '%' is at marker.position of a format of n units. A digit counts as its unit minus 0x30,
/// whatever script it is of; only U+0030 is a leading zero. So a single digit of another script makes a number that no
/// argument list reaches.
template<class Unit, class IsDigit>
constexpr FormatFault ReadMarker(Unit const* format, std::int32_t n, FormatMarker& marker, IsDigit isDigit)
{
    std::int32_t i = marker.position + 1;
    marker.length = 2;
    marker.number = 0;
    if (i == n) {
        return FormatFault::IncompleteEnd;
    }
    auto const first = static_cast<std::uint32_t>(format[i]);
    if (first == '%') {
        return FormatFault::None;
    }
    if (!isDigit(first)) {
        return FormatFault::Numberless;
    }
    if (first == '0') {
        return FormatFault::LeadingZero;
    }
    marker.number = static_cast<std::int32_t>(first) - '0';
    for (++i; i < n && isDigit(static_cast<std::uint32_t>(format[i])); ++i) {
        marker.number = marker.number * 10 + (static_cast<std::int32_t>(format[i]) - '0');
        ++marker.length;
        if (marker.number > 99) {
            return FormatFault::Above99;
        }
    }
    if (marker.number < 1) {
        return i < n ? FormatFault::NotPositive : FormatFault::NotPositiveEnd;
    }
    return FormatFault::None;
}

} // namespace qvxsys::detail
