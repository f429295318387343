#pragma once
// What numbers and texts ought to become, by the C++ library or written down the slow way from the documentation.

#include <cerrno>
#include <charconv>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace number_reference {

/// The digits of v in base 2..36, by std::to_chars.
inline std::string Digits(std::uint64_t v, int base)
{
    char buffer[64];
    return {buffer, std::to_chars(buffer, buffer + sizeof buffer, v, base).ptr};
}

/// v printed by the C library; it must be in the "C" locale.
inline std::string Printed(double v, char format, int precision)
{
    char const pattern[] = {'%', '.', '*', format, 0};
    std::string text(2048, '\0');
    int const length = std::snprintf(text.data(), text.size(), pattern, precision, v);
    text.resize(length > 0 && length < 1024 ? static_cast<std::size_t>(length) : 0);
    return text;
}

/// A whole number with digits only (a sign apart), as the documented parser accumulates it: ok is false from the first
/// digit on that makes the value step back.
struct Accumulated
{
    Accumulated(std::string const& text, int base)
    {
        __extension__ using Wide = __int128;
        bool const negative = text[0] == '-';
        for (char const c : text.substr(negative ? 1 : 0)) {
            int const digit = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
            // Exactly, then brought into the range of 64 bits.
            Wide const exact = Wide{value} * base + (negative ? -digit : digit);
            auto const next = static_cast<std::int64_t>(static_cast<std::uint64_t>(exact));
            ok = negative ? next <= value : next >= value;
            if (!ok) {
                value = 0;
                return;
            }
            value = next;
        }
    }
    std::int64_t value = 0;
    bool ok = true;
};

/// The decimal text of a double (float) by strtod (strtof), which glibc rounds correctly.
template<class Float>
Float Read(std::string const& text)
{
    if constexpr (sizeof(Float) == sizeof(float)) {
        return std::strtof(text.c_str(), nullptr);
    } else {
        return std::strtod(text.c_str(), nullptr);
    }
}

} // namespace number_reference
