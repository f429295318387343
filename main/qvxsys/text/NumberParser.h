#pragma once
// Numbers out of UTF-16 text, on raw memory. Digits, signs and points are ASCII; white space is TCType::isSpace.

#include <cstddef>
#include <cstdint>

namespace qvxsys::text {

/// What became of a text that should be a whole number.
struct ParsedInteger
{
    std::int64_t value = 0;
    int error = 0;   ///< 0; EINVAL where there was no digit (value 0); ERANGE past the limits (value -1, or 0 below 0)
    int sign = 1;    ///< -1 for a number with a minus sign, zero included
    bool ok = false; ///< a number, and nothing but white space around it
};

/// The rules are documented at TStringCore::toLongLong. Throws "TStringCore::parseInteger: base out of range." for a
/// base that is neither 0 nor 2..36.
ParsedInteger ParseInteger(char16_t const* s, std::size_t n, int base);

/// The units of the longest start of the text that ParseInteger takes (out of range or not), without white space.
std::size_t LeftIntegerLength(char16_t const* s, std::size_t n, int base);

/// What became of a text that should be a floating-point number.
template<class Float>
struct ParsedFloat
{
    Float value = 0; ///< rounded to nearest, ties to even; infinite past the limits
    bool ok = false; ///< a number within the limits, and nothing but white space around it
};

/// The rules are documented at TStringCore::toDouble.
ParsedFloat<double> ParseDouble(char16_t const* s, std::size_t n);
ParsedFloat<float> ParseFloat(char16_t const* s, std::size_t n);

/// The units of the longest start of the text that ParseDouble takes (out of range or not), without white space.
std::size_t LeftDoubleLength(char16_t const* s, std::size_t n) noexcept;

} // namespace qvxsys::text
