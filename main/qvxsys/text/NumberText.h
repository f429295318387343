#pragma once
// Digits of whole numbers as UTF-16 units, on raw memory.
//
// Decimal digits are produced in pairs: the two units of a pair are one 32-bit store, and eight digits at a time are
// split off with 32-bit divisions by constants, which the compiler turns into multiplications.

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace qvxsys::text {

/// The most digits a 64-bit value has, in base 2.
inline constexpr int kMaxDigits = 64;

namespace detail {

inline constexpr std::array<std::array<char16_t, 2>, 100> kDecimalPairs = [] {
    std::array<std::array<char16_t, 2>, 100> pairs{};
    for (unsigned i = 0; i < 100; ++i) {
        pairs[i] = {static_cast<char16_t>(u'0' + i / 10), static_cast<char16_t>(u'0' + i % 10)};
    }
    return pairs;
}();

inline constexpr std::array<std::uint64_t, 20> kPowersOfTen = [] {
    std::array<std::uint64_t, 20> powers{};
    std::uint64_t power = 1;
    for (auto& p : powers) {
        p = power;
        power *= 10;
    }
    return powers;
}();

inline void StorePair(char16_t* at, std::uint32_t pair) noexcept
{
    std::memcpy(at, kDecimalPairs[pair].data(), 2 * sizeof(char16_t));
}

inline void StoreEight(char16_t* at, std::uint32_t v) noexcept
{
    std::uint32_t const high = v / 10000;
    std::uint32_t const low = v % 10000;
    StorePair(at, high / 100);
    StorePair(at + 2, high % 100);
    StorePair(at + 4, low / 100);
    StorePair(at + 6, low % 100);
}

} // namespace detail

/// The decimal digits of v, 1 for 0.
inline int DecimalLength(std::uint64_t v) noexcept
{
    // log10(2) is a little below 1233 / 4096; the estimate is right or one too small. (An odd v has as many digits.)
    v |= 1;
    auto const estimate = static_cast<unsigned>(std::bit_width(v) * 1233) >> 12;
    return static_cast<int>(estimate) + (v >= detail::kPowersOfTen[estimate] ? 1 : 0);
}

/// Writes the `length` == DecimalLength(v) digits of v.
inline void WriteDecimal(char16_t* out, std::uint64_t v, int length) noexcept
{
    char16_t* end = out + length;
    while (v >= 100000000) {
        std::uint64_t const rest = v / 100000000;
        end -= 8;
        detail::StoreEight(end, static_cast<std::uint32_t>(v - rest * 100000000));
        v = rest;
    }
    auto small = static_cast<std::uint32_t>(v);
    while (small >= 100) {
        end -= 2;
        detail::StorePair(end, small % 100);
        small /= 100;
    }
    if (small >= 10) {
        detail::StorePair(end - 2, small);
    } else {
        end[-1] = static_cast<char16_t>(u'0' + small);
    }
}

} // namespace qvxsys::text
