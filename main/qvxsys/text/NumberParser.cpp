#include "NumberParser.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>

#include <emmintrin.h>

#include <qvxsys/TCType.h>

#include "TextErrors.h"

namespace qvxsys::text {
namespace {

bool IsDecimal(char16_t c) noexcept
{
    return static_cast<unsigned>(c - u'0') < 10;
}

// Setting bit 0x20 makes no other unit an ASCII letter.
char16_t Lowered(char16_t c) noexcept
{
    return static_cast<char16_t>(c | 0x20);
}

char16_t const* SkipSpace(char16_t const* at, char16_t const* end) noexcept
{
    while (at != end && TCType::isSpace(*at)) {
        ++at;
    }
    return at;
}

int SkipSign(char16_t const*& at, char16_t const* end) noexcept
{
    if (at == end || (*at != u'-' && *at != u'+')) {
        return 1;
    }
    return *at++ == u'-' ? -1 : 1;
}

bool IsHexPrefix(char16_t const* at, char16_t const* end) noexcept
{
    return end - at >= 2 && at[0] == u'0' && Lowered(at[1]) == u'x';
}

// ---- whole numbers

// What a unit counts in a base; negative where it ends the number. "0".."9" count in every base.
int DigitValue(char16_t c, int base) noexcept
{
    if (IsDecimal(c)) {
        return c - u'0';
    }
    int const value = Lowered(c) - u'a' + 10;
    return value >= 10 && value < base ? value : -1;
}

// Checks a base; 0 is what the text at `at` begins like.
int ResolvedBase(int base, char16_t const* at, char16_t const* end)
{
    if (base == 0) {
        base = at == end || *at != u'0' ? 10 : IsHexPrefix(at, end) ? 16 : 8;
    }
    if (base < 2 || base > 36) {
        Throw("TStringCore::parseInteger: base out of range.");
    }
    return base;
}

// Eight decimal digits; false when one of the units is none. Pairs, then fours, are put together by multiply-and-add.
bool EightDigits(char16_t const* s, std::uint32_t& value) noexcept
{
    __m128i const digits =
        _mm_sub_epi16(_mm_loadu_si128(reinterpret_cast<__m128i const*>(s)), _mm_set1_epi16(static_cast<short>(u'0')));
    __m128i const above = _mm_subs_epu16(digits, _mm_set1_epi16(9));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(above, _mm_setzero_si128())) != 0xFFFF) {
        return false;
    }
    __m128i const pairs = _mm_madd_epi16(digits, _mm_set1_epi32(1 << 16 | 10));
    __m128i const fours = _mm_madd_epi16(_mm_packs_epi32(pairs, pairs), _mm_set1_epi32(1 << 16 | 100));
    auto const both = static_cast<std::uint64_t>(_mm_cvtsi128_si64(fours));
    value = static_cast<std::uint32_t>(both) * 10000 + static_cast<std::uint32_t>(both >> 32);
    return true;
}

// The decimal digits from `at` on, 18 at most, so that no overflow is possible.
std::uint64_t LeadingDecimals(char16_t const*& at, char16_t const* end) noexcept
{
    constexpr std::ptrdiff_t kSafeDigits = std::numeric_limits<std::int64_t>::digits10;
    end = end - at > kSafeDigits ? at + kSafeDigits : end;
    std::uint64_t value = 0;
    for (std::uint32_t eight = 0; end - at >= 8 && EightDigits(at, eight); at += 8) {
        value = value * 100000000 + eight;
    }
    for (; at != end && IsDecimal(*at); ++at) {
        value = value * 10 + static_cast<std::uint64_t>(*at - u'0');
    }
    return value;
}

} // namespace

// Overflow is what makes a value step back: each new value, in arithmetic modulo 2^64, is compared with the one before
// it. This is what the interface promises, not the exact test: some numbers that have at least a digit too many come
// out above the value before them and pass as their remainder.
ParsedInteger ParseInteger(char16_t const* s, std::size_t n, int base)
{
    ParsedInteger result;
    char16_t const* const end = s + n;
    char16_t const* at = SkipSpace(s, end);
    result.sign = SkipSign(at, end);
    base = ResolvedBase(base, at, end);
    if (base == 16 && IsHexPrefix(at, end)) {
        at += 2;
    }
    char16_t const* const digits = at;
    auto const sign = static_cast<std::uint64_t>(static_cast<std::int64_t>(result.sign));
    std::uint64_t value = base == 10 ? LeadingDecimals(at, end) * sign : 0;
    for (; at != end; ++at) {
        int const digit = DigitValue(*at, base);
        if (digit < 0) {
            break;
        }
        std::uint64_t const next = value * static_cast<std::uint64_t>(base) + static_cast<std::uint64_t>(digit) * sign;
        auto const before = static_cast<std::int64_t>(value);
        auto const after = static_cast<std::int64_t>(next);
        if (result.sign > 0 ? after < before : after > before) {
            result.error = ERANGE;
            result.value = result.sign > 0 ? -1 : 0;
            return result;
        }
        value = next;
    }
    if (at == digits) {
        result.error = EINVAL;
        return result;
    }
    result.value = static_cast<std::int64_t>(value);
    result.ok = SkipSpace(at, end) == end;
    return result;
}

std::size_t LeftIntegerLength(char16_t const* s, std::size_t n, int base)
{
    char16_t const* const end = s + n;
    char16_t const* at = s;
    SkipSign(at, end);
    base = ResolvedBase(base, at, end);
    char16_t const* const zero = base == 16 && IsHexPrefix(at, end) ? at : nullptr;
    at += zero != nullptr ? 2 : 0;
    char16_t const* const digits = at;
    while (at != end && DigitValue(*at, base) >= 0) {
        ++at;
    }
    if (at == digits) {
        // A prefix without digits behind it is the number 0.
        return zero != nullptr ? static_cast<std::size_t>(zero + 1 - s) : 0;
    }
    return static_cast<std::size_t>(at - s);
}

// ---- floating-point numbers

namespace {

char16_t const* SkipDecimals(char16_t const* at, char16_t const* end) noexcept
{
    while (at != end && IsDecimal(*at)) {
        ++at;
    }
    return at;
}

// Past a word in any case, or null.
char16_t const* SkipWord(char16_t const* at, char16_t const* end, char const* word) noexcept
{
    for (; *word != 0; ++word, ++at) {
        if (at == end || Lowered(*at) != static_cast<char16_t>(*word)) {
            return nullptr;
        }
    }
    return at;
}

// The parts of "digits.digits e digits" behind the sign.
struct DecimalExtent
{
    char16_t const* begin;
    char16_t const* end; // begin where there is no digit

    DecimalExtent(char16_t const* at, char16_t const* limit) noexcept : begin(at), end(at)
    {
        char16_t const* whole = SkipDecimals(at, limit);
        bool any = whole != at;
        if (whole != limit && *whole == u'.') {
            char16_t const* const fraction = SkipDecimals(whole + 1, limit);
            any = any || fraction != whole + 1;
            whole = fraction;
        }
        if (!any) {
            return;
        }
        end = whole;
        if (whole != limit && Lowered(*whole) == u'e') {
            char16_t const* exponent = whole + 1;
            SkipSign(exponent, limit);
            char16_t const* const last = SkipDecimals(exponent, limit);
            end = last != exponent ? last : end;
        }
    }
};

// inf, infinity or nan: the value, and past the word; null where there is none.
template<class Float>
char16_t const* ParseWord(char16_t const* at, char16_t const* end, Float& value) noexcept
{
    if (char16_t const* const inf = SkipWord(at, end, "inf")) {
        value = std::numeric_limits<Float>::infinity();
        char16_t const* const infinity = SkipWord(inf, end, "inity");
        return infinity != nullptr ? infinity : inf;
    }
    value = std::numeric_limits<Float>::quiet_NaN();
    return SkipWord(at, end, "nan");
}

// Units to bytes; what is no Latin-1 becomes 0 or 0xFF, neither of which is part of a number.
void Narrow(char* to, char16_t const* from, std::size_t n) noexcept
{
    auto const eight = [&](std::size_t i) {
        __m128i const units = _mm_loadu_si128(reinterpret_cast<__m128i const*>(from + i));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to + i), _mm_packus_epi16(units, units));
    };
    if (n < 8) {
        for (std::size_t i = 0; i < n; ++i) {
            to[i] = from[i] < 0x80 ? static_cast<char>(from[i]) : '\0';
        }
        return;
    }
    for (std::size_t i = 0; i + 8 < n; i += 8) {
        eight(i);
    }
    eight(n - 8);
}

// The decimal exponent's sign of a number that is neither 0 nor near 1: whether it is too large rather than too small.
bool IsLarge(char const* at, char const* end) noexcept
{
    std::int64_t exponent = 0; // of the first digit that is not 0
    bool point = false;
    bool found = false;
    for (; at != end && (*at | 0x20) != 'e'; ++at) {
        if (*at == '.') {
            point = true;
            continue;
        }
        found = found || *at != '0';
        exponent += found && !point ? 1 : !found && point ? -1 : 0;
    }
    std::int64_t written = 0;
    if (at != end) {
        at += at[1] == '+' ? 2 : 1;
        if (std::from_chars(at, end, written).ec != std::errc()) {
            return *at != '-';
        }
    }
    return written > -exponent;
}

// Converts bytes that begin with a digit or a point; returns how many belong to the number.
template<class Float>
std::size_t Convert(char const* bytes, std::size_t n, ParsedFloat<Float>& result) noexcept
{
    auto const [last, error] = std::from_chars(bytes, bytes + n, result.value, std::chars_format::general);
    result.ok = error == std::errc();
    if (error == std::errc::result_out_of_range) {
        result.value = IsLarge(bytes, last) ? std::numeric_limits<Float>::infinity() : Float{0};
    }
    return static_cast<std::size_t>(last - bytes);
}

constexpr std::size_t kShortNumber = 64;

template<class Float>
ParsedFloat<Float> Parse(char16_t const* s, std::size_t n)
{
    ParsedFloat<Float> result;
    char16_t const* const end = s + n;
    char16_t const* at = SkipSpace(s, end);
    int const sign = SkipSign(at, end);
    char16_t const* const number = at;
    if (at == end) {
        return result;
    }
    if (IsDecimal(*at) || *at == u'.') {
        auto const left = static_cast<std::size_t>(end - at);
        if (left <= kShortNumber) {
            char bytes[kShortNumber];
            Narrow(bytes, at, left);
            at += Convert(bytes, left, result);
        } else {
            DecimalExtent const extent(at, end);
            auto const length = static_cast<std::size_t>(extent.end - at);
            std::unique_ptr<char[]> const bytes(new char[length + 1]);
            Narrow(bytes.get(), at, length);
            at += Convert(bytes.get(), length, result);
        }
    } else if (char16_t const* const behind = ParseWord(at, end, result.value)) {
        at = behind;
        result.ok = true;
    }
    if (at == number) {
        return {};
    }
    result.ok = result.ok && SkipSpace(at, end) == end;
    result.value = std::copysign(result.value, static_cast<Float>(sign));
    return result;
}

} // namespace

ParsedFloat<double> ParseDouble(char16_t const* s, std::size_t n)
{
    return Parse<double>(s, n);
}

ParsedFloat<float> ParseFloat(char16_t const* s, std::size_t n)
{
    return Parse<float>(s, n);
}

std::size_t LeftDoubleLength(char16_t const* s, std::size_t n) noexcept
{
    char16_t const* const end = s + n;
    char16_t const* at = s;
    SkipSign(at, end);
    double ignored = 0;
    char16_t const* last = ParseWord(at, end, ignored);
    if (last == nullptr) {
        DecimalExtent const extent(at, end);
        last = extent.end != extent.begin ? extent.end : s;
    }
    return static_cast<std::size_t>(last - s);
}

} // namespace qvxsys::text
