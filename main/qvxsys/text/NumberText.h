#pragma once
// Digits of whole numbers as UTF-16 units, on raw memory.
//
// Decimal digits are produced in pairs: the two units of a pair are one 32-bit store, and eight digits at a time are
// split off with 32-bit divisions by constants, which the compiler turns into multiplications. Sixteen digits, where
// there are more than that, are split in vectors: into halves of eight, fours, pairs and digits, each time with a
// multiplication by the inverse that is exact for values of that size.
//
// Where there is room for more digits than the number has, none of that is needed: all four or eight digits are made in
// registers, the first one lowest, and the leading zeros shifted out. Numbers of mixed lengths would make a loop's
// branches hard to predict.

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include <emmintrin.h>

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

inline void StoreSixteen(char16_t* at, std::uint64_t v) noexcept
{
    auto const high = static_cast<std::uint32_t>(v / 100000000);
    auto const low = static_cast<std::uint32_t>(v % 100000000);
    __m128i const eights = _mm_set_epi64x(low, high);
    // x / 10000 of 32 bits, x / 100 below 10000, x / 10 below 100.
    __m128i const inverse = _mm_set1_epi64x(3518437209);
    __m128i const upperFours = _mm_srli_epi64(_mm_mul_epu32(eights, inverse), 45);
    __m128i const lowerFours = _mm_sub_epi64(eights, _mm_mul_epu32(upperFours, _mm_set1_epi64x(10000)));
    __m128i const fours = _mm_or_si128(upperFours, _mm_slli_epi64(lowerFours, 32));
    __m128i const upperPairs = _mm_srli_epi16(_mm_mulhi_epu16(fours, _mm_set1_epi16(5243)), 3);
    __m128i const lowerPairs = _mm_sub_epi16(fours, _mm_mullo_epi16(upperPairs, _mm_set1_epi16(100)));
    __m128i const pairs = _mm_or_si128(upperPairs, _mm_slli_epi32(lowerPairs, 16));
    __m128i const tens = _mm_srli_epi16(_mm_mullo_epi16(pairs, _mm_set1_epi16(103)), 10);
    __m128i const ones = _mm_sub_epi16(pairs, _mm_mullo_epi16(tens, _mm_set1_epi16(10)));
    __m128i const zero = _mm_set1_epi16(u'0');
    _mm_storeu_si128(reinterpret_cast<__m128i*>(at), _mm_add_epi16(_mm_unpacklo_epi16(tens, ones), zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(at + 8), _mm_add_epi16(_mm_unpackhi_epi16(tens, ones), zero));
}

/// The four digits of v < 10000, the first one in the lowest 16 bits.
inline std::uint64_t FourDigits(std::uint32_t v) noexcept
{
    std::uint32_t const upper = v * 5243 >> 19; // v / 100
    std::uint32_t first;
    std::uint32_t last;
    std::memcpy(&first, kDecimalPairs[upper].data(), sizeof first);
    std::memcpy(&last, kDecimalPairs[v - upper * 100].data(), sizeof last);
    return first | std::uint64_t{last} << 32;
}

inline void StoreFour(char16_t* at, std::uint64_t units) noexcept
{
    std::memcpy(at, &units, sizeof units);
}

/// The bits of the leading zeros; the last digit counts as none.
inline int ZeroBits(std::uint64_t fourDigits) noexcept
{
    constexpr std::uint64_t zeros = 0x0030003000300030;
    return __builtin_ctzll((fourDigits ^ zeros) | std::uint64_t{1} << 48) & 0x30;
}

} // namespace detail

/// Every value below this can be written by WriteShortDecimal.
inline constexpr std::uint64_t kShortDecimals = 100000000;

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
    constexpr std::uint64_t kSixteen = 10000000000000000;
    char16_t* end = out + length;
    if (v >= kSixteen) [[unlikely]] {
        std::uint64_t const rest = v / kSixteen;
        end -= 16;
        detail::StoreSixteen(end, v - rest * kSixteen);
        v = rest;
    }
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

/// Writes the digits of v < kShortDecimals and returns how many they are. Eight units are written at most, 0 units
/// behind the digits.
inline int WriteShortDecimal(char16_t* out, std::uint32_t v) noexcept
{
    if (v < 10000) {
        std::uint64_t const digits = detail::FourDigits(v);
        int const zeros = detail::ZeroBits(digits);
        detail::StoreFour(out, digits >> zeros);
        return 4 - zeros / 16;
    }
    std::uint64_t const digits = detail::FourDigits(v / 10000);
    std::uint64_t const last = detail::FourDigits(v % 10000);
    int const zeros = detail::ZeroBits(digits);
    detail::StoreFour(out, digits >> zeros | last << 1 << (63 - zeros));
    detail::StoreFour(out + 4, last >> zeros);
    return 8 - zeros / 16;
}

/// Writes `length` digits of v, with leading zeros.
inline void WriteZeroPadded(char16_t* out, std::uint32_t v, int length) noexcept
{
    for (; length >= 2; length -= 2) {
        detail::StorePair(out + length - 2, v % 100);
        v /= 100;
    }
    if (length != 0) {
        out[0] = static_cast<char16_t>(u'0' + v % 10);
    }
}

/// The 16 hexadecimal digits of v.
inline void HexDigits(char16_t* out, std::uint64_t v) noexcept
{
    // The bytes in the order of the digits, then each as two bytes of four bits.
    __m128i const bytes = _mm_cvtsi64_si128(static_cast<long long>(__builtin_bswap64(v)));
    __m128i const high = _mm_and_si128(_mm_srli_epi16(bytes, 4), _mm_set1_epi8(15));
    __m128i const values = _mm_unpacklo_epi8(high, _mm_and_si128(bytes, _mm_set1_epi8(15)));
    __m128i const letters = _mm_and_si128(_mm_cmpgt_epi8(values, _mm_set1_epi8(9)), _mm_set1_epi8('a' - '0' - 10));
    __m128i const digits = _mm_add_epi8(_mm_add_epi8(values, _mm_set1_epi8('0')), letters);
    __m128i const zero = _mm_setzero_si128();
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(digits, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 8), _mm_unpackhi_epi8(digits, zero));
}

} // namespace qvxsys::text
