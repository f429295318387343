#pragma once
// What numbers and texts ought to become, by the C++ library or written down the slow way from the documentation; and
// checks against that, for tests and fuzzers. What differs is thrown.

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include <qvxsys/qvxsys.h>

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

/// Throws what was being checked if something does not hold.
inline auto Requirement(std::string const& what)
{
    return [what](bool holds) {
        if (!holds) {
            throw std::logic_error(what);
        }
    };
}

inline TStringCore Text(std::string const& latin1)
{
    return TStringCore::fromLatin1(latin1.data(), static_cast<int>(latin1.size()));
}

/// A text read as a whole number, and how much of it is one.
inline void CheckInteger(std::string const& bytes, int base)
{
    TStringCore const text = Text(bytes);
    auto const require = Requirement(bytes);
    bool ok = false;
    long long const value = text.toLongLong(&ok, base);
    int const left = text.leftIntegerLength(base);
    require(left >= 0 && left <= text.length());
    bool narrow = false;
    int const asInt = text.toInt(&narrow, base);
    require(narrow == (ok && value == asInt) && (asInt == 0 || asInt == value));
    // What from_chars reads to its end must be read alike, and what it refuses for its size never passes as exact.
    long long exact = 0;
    auto const [end, error] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), exact, base);
    if (!bytes.empty() && end == bytes.data() + bytes.size()) {
        Accumulated const expected(bytes, base);
        require(ok == expected.ok && value == expected.value);
        require(error != std::errc() || (ok && value == exact));
        require(left == text.length());
    }
    // The measured start is a number by itself, unless it is too large.
    if (left > 0) {
        bool whole = false;
        static_cast<void>(text.view().left(left).toLongLong(&whole, base));
        std::string const start =
            bytes.substr(bytes[0] == '+' ? 1 : 0, static_cast<std::size_t>(left) - (bytes[0] == '+' ? 1 : 0));
        bool const prefixed = base == 16 && start.find_first_of("xX") != std::string::npos;
        require(prefixed || whole == Accumulated(start, base).ok);
    }
}

/// A text read as a floating-point number; what follows changes nothing.
template<class Float>
void CheckFloat(std::string const& bytes)
{
    auto const require = Requirement(bytes);
    TStringCore const text = Text(bytes);
    auto const read = [](TStringCore const& from, bool& ok) {
        if constexpr (sizeof(Float) == sizeof(float)) {
            return from.toFloat(&ok);
        } else {
            return from.toDouble(&ok);
        }
    };
    bool ok = false;
    Float const value = read(text, ok);
    int const left = text.leftDoubleLength();
    require(left >= 0 && left <= text.length());
    std::string const start = bytes.substr(0, static_cast<std::size_t>(left));
    if (start.find_first_of("nN") == std::string::npos && left > 0) {
        Float const expected = Read<Float>(start);
        bool whole = false;
        require(read(text.view().left(left), whole) == expected);
        bool const zero = start.find_first_of("123456789") >= std::min(start.find_first_of("eE"), start.size());
        require(whole == (std::isfinite(expected) && (expected != 0 || zero)));
        require(value == expected);
    }
    require(!ok || left > 0 || TCType::isSpace(text.front()));
}

/// Bits as a whole number, a double and a float, written and read back.
inline void CheckValue(std::uint64_t bits, int base, int width, char16_t fill)
{
    auto const require = Requirement(std::to_string(bits));
    std::string const digits = Digits(bits, base);
    TStringCore const text = TStringCore::number(bits, base, width, fill);
    require(text.length() == std::max(static_cast<int>(digits.size()), width));
    require(text.view().right(static_cast<int>(digits.size())) == TStringCore(digits.c_str()).view());
    auto const value = static_cast<long long>(bits);
    bool ok = false;
    require(TStringCore::number(value).toLongLong(&ok) == value && ok);

    auto const number = std::bit_cast<double>(bits);
    auto const single = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
    if (std::isfinite(number)) {
        require(TStringCore::numberShortest(number).toDouble(&ok) == number && ok);
        require(TStringCore::number(number, 'e', 16).toDouble() == number);
        int const precision = width - 3;
        for (char const format : {'e', 'f', 'G'}) {
            require(TStringCore::number(number, format, precision).toStdString() ==
                    Printed(number, format, precision < 0 ? 6 : precision));
        }
    }
    if (std::isfinite(single)) {
        require(TStringCore::numberShortest(single).toFloat(&ok) == single && ok);
    }
}

} // namespace number_reference
