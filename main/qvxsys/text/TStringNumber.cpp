// Text from numbers. Reading them is in TStringParse.cpp.

#include <qvxsys/TStringCore.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>

#include "NumberText.h"
#include "TextErrors.h"

namespace text = qvxsys::text;

namespace {

constexpr char16_t kBase36[] = u"0123456789abcdefghijklmnopqrstuvwxyz";
constexpr char16_t kBase64[] = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Writes the digits of v so that they end at `end`; returns how many.
int DigitsInBase(char16_t* end, std::uint64_t v, unsigned base) noexcept
{
    if (base == 10) {
        int const n = text::DecimalLength(v);
        text::WriteDecimal(end - n, v, n);
        return n;
    }
    char16_t const* const alphabet = base == 64 ? kBase64 : kBase36;
    char16_t* at = end;
    if (std::has_single_bit(base)) {
        int const bits = std::countr_zero(base);
        do {
            *--at = alphabet[v & (base - 1)];
            v >>= bits;
        } while (v != 0);
    } else {
        do {
            *--at = alphabet[v % base];
            v /= base;
        } while (v != 0);
    }
    return static_cast<int>(end - at);
}

} // namespace

// Makes the empty string n units long; its text is to be written.
char16_t* TStringCore::NewText(int n)
{
    if (n <= kInlineLength) {
        SetInlineLength(n);
        return m_units;
    }
    SetBlock(NewBlock(n));
    return Block()->Text();
}

TStringCore TStringCore::LongDecimalText(std::uint64_t v, bool negative)
{
    int const n = text::DecimalLength(v);
    TStringCore result;
    char16_t* const out = result.NewText(n + (negative ? 1 : 0));
    out[0] = u'-';
    text::WriteDecimal(out + (negative ? 1 : 0), v, n);
    return result;
}

// The usual case: written where it stays, without a call. There is room for a sign and whatever is written behind it.
// (A function with one result, which the compiler then builds where the caller wants it.)
inline TStringCore TStringCore::ShortDecimalText(std::uint64_t v, bool negative)
{
    int const sign = negative ? 1 : 0;
    TStringCore result;
    result.m_units[0] = u'-';
    int const n = text::WriteShortDecimal(result.m_units + sign, static_cast<std::uint32_t>(v));
    result.m_units[kFormSlot] = static_cast<char16_t>(n + sign);
    return result;
}

inline TStringCore TStringCore::DecimalText(std::uint64_t v, bool negative)
{
    return v < text::kShortDecimals ? ShortDecimalText(v, negative) : LongDecimalText(v, negative);
}

TStringCore TStringCore::PaddedText(std::uint64_t v, bool negative, int base, int width, Fill fill)
{
    char16_t digits[text::kMaxDigits];
    char16_t* const end = digits + text::kMaxDigits;
    int const n = DigitsInBase(end, v, static_cast<unsigned>(base));
    int const body = n + (negative ? 1 : 0);
    int const padding = width > body ? width - body : 0;
    std::int64_t const units = std::int64_t{padding} * fill.count + body;
    if (units > std::numeric_limits<int>::max()) {
        text::ThrowOverflow();
    }
    TStringCore result;
    char16_t* out = result.NewText(static_cast<int>(units));
    bool const signFirst = fill.Is(u"0", 1);
    if (negative && signFirst) {
        *out++ = u'-';
    }
    for (int i = 0; i < padding; ++i) {
        out = std::copy_n(fill.units, fill.count, out);
    }
    if (negative && !signFirst) {
        *out++ = u'-';
    }
    std::copy_n(end - n, n, out);
    return result;
}

TStringCore TStringCore::SignedText(long long v, int base, int width, Fill fill)
{
    auto const bits = static_cast<std::uint64_t>(v);
    bool const negative = v < 0;
    if (base == 10 && width <= 1) [[likely]] {
        return DecimalText(negative ? 0 - bits : bits, negative);
    }
    return base == 10 ? PaddedText(negative ? 0 - bits : bits, negative, base, width, fill)
                      : UnsignedText(bits, base, width, fill);
}

TStringCore TStringCore::UnsignedText(unsigned long long v, int base, int width, Fill fill)
{
    if (base == 10 && width <= 1) [[likely]] {
        return DecimalText(v, false);
    }
    if (base == 16 && width <= 1) {
        return HexText(v);
    }
    if (base != 64 && (base < 2 || base > 36)) {
        text::Throw("TStringCore::number: base out of range.");
    }
    return PaddedText(v, false, base, width, fill);
}

TStringCore TStringCore::HexText(std::uint64_t v)
{
    int const n = 16 - std::countl_zero(v | 1) / 4;
    // All 16 digits are written, the first one that counts first. They fill the object, whose last unit is then set.
    std::uint64_t const shifted = v << (64 - 4 * n);
    TStringCore result;
    if (n <= kInlineLength) {
        text::HexDigits(result.m_units, shifted);
        result.SetInlineLength(n);
    } else {
        text::HexDigits(result.NewText(16), shifted);
        result.StoreLength(n);
    }
    return result;
}

TStringCore TStringCore::pointer(void const* p, bool prefix, bool pad)
{
    TStringCore result = number32(reinterpret_cast<std::uintptr_t>(p), 16, pad ? 16 : 0, U'0');
    if (prefix) {
        result.prepend(u"0x");
    }
    return result;
}

// ---- floating-point numbers

namespace {

// The buffer that a printed number has to fit into, its terminator included.
constexpr int kPrinted = 1024;

// A double has no more significant digits than this, so %g prints none behind them.
constexpr int kMostSignificant = 767;

TStringCore Ascii(char const* s, char const* end)
{
    return TStringCore(s, static_cast<int>(end - s));
}

// The texts of what is no number; null for numbers.
char const* NoNumber(double v) noexcept
{
    return std::isnan(v) ? "nan" : !std::isinf(v) ? nullptr : v < 0 ? "-inf" : "inf";
}

template<class Float>
TStringCore ShortestText(Float v)
{
    if (char const* const word = NoNumber(v)) {
        return word;
    }
    // Seventeen digits, a sign, a point and an exponent, or a whole number no longer than that.
    char buffer[32];
    return Ascii(buffer, std::to_chars(buffer, std::end(buffer), v).ptr);
}

// The value times 10^precision, rounded to the nearest whole number, ties to even, for precisions up to
// kExactPrecision. It is found exactly: a double is m x 2^e, and m x 10^precision has no more than 53 + 30 bits. False
// for values of 2^63 and more, and for results that large.
constexpr int kExactPrecision = 9;

bool RoundedExactly(double v, int precision, std::uint64_t& result) noexcept
{
    __extension__ using Wide = unsigned __int128;
    auto const bits = std::bit_cast<std::uint64_t>(v);
    auto const biased = static_cast<int>(bits >> 52 & 0x7FF);
    std::uint64_t const fraction = bits & ((std::uint64_t{1} << 52) - 1);
    std::uint64_t const m = biased == 0 ? fraction : fraction | std::uint64_t{1} << 52;
    int const e = std::max(biased, 1) - 1075;
    if (e > 10) {
        return false;
    }
    Wide scaled = Wide{m} * text::detail::kPowersOfTen[static_cast<std::size_t>(precision)];
    if (e >= 0) {
        scaled <<= e;
    } else if (e < -100) {
        scaled = 0; // less than a half by far
    } else {
        Wide const unit = Wide{1} << -e;
        Wide const rest = scaled & (unit - 1);
        scaled >>= -e;
        scaled += rest > unit / 2 || (rest == unit / 2 && (scaled & 1) != 0) ? 1 : 0;
    }
    result = static_cast<std::uint64_t>(scaled);
    return scaled >> 63 == 0;
}

// Puts ".0" behind the digits where there is no point; returns the new end. The buffer has room for it.
char* AddPoint(char* begin, char* end) noexcept
{
    if (std::find(begin, end, '.') != end) {
        return end;
    }
    char* const exponent = std::find_if(begin, end, [](char c) { return c == 'e' || c == 'E'; });
    std::copy_backward(exponent, end, end + 2);
    exponent[0] = '.';
    exponent[1] = '0';
    return end + 2;
}

} // namespace

// digits / 10^precision, with a precision up to kExactPrecision.
TStringCore TStringCore::FixedText(std::uint64_t digits, int precision, bool negative)
{
    std::uint64_t const power = text::detail::kPowersOfTen[static_cast<std::size_t>(precision)];
    std::uint64_t const whole = digits / power;
    int const before = text::DecimalLength(whole);
    TStringCore result;
    char16_t* out = result.NewText((negative ? 1 : 0) + before + (precision > 0 ? 1 + precision : 0));
    if (negative) {
        *out++ = u'-';
    }
    text::WriteDecimal(out, whole, before);
    if (precision > 0) {
        out[before] = u'.';
        text::WriteZeroPadded(out + before + 1, static_cast<std::uint32_t>(digits - whole * power), precision);
    }
    return result;
}

TStringCore TStringCore::PrintedText(double v, char format, int precision, bool withPoint)
{
    bool const general = (format | 0x20) == 'g';
    auto const notation = general                  ? std::chars_format::general
                          : (format | 0x20) == 'e' ? std::chars_format::scientific
                                                   : std::chars_format::fixed;
    precision = general ? std::min(precision, kMostSignificant) : precision;
    if (precision >= kPrinted) {
        return {};
    }
    char buffer[kPrinted + 2];
    auto [end, error] = std::to_chars(buffer, buffer + kPrinted - 1, v, notation, precision);
    if (error != std::errc()) {
        return {};
    }
    if (format == 'E' || format == 'G') {
        std::replace(buffer, end, 'e', 'E');
    }
    if (withPoint) {
        end = AddPoint(buffer, end);
    }
    return Ascii(buffer, end);
}

TStringCore TStringCore::DoubleText(double v, char format, int precision, bool withPoint)
{
    if (char const* const word = NoNumber(v)) {
        return word;
    }
    precision = precision < 0 ? 6 : precision;
    char const lower = static_cast<char>(format | 0x20);
    std::uint64_t digits = 0;
    if (lower != 'e' && lower != 'g' && precision <= kExactPrecision && (precision > 0 || !withPoint) &&
        RoundedExactly(v, precision, digits)) {
        return FixedText(digits, precision, std::signbit(v));
    }
    return PrintedText(v, format, precision, withPoint);
}

TStringCore TStringCore::numberShortest(double value)
{
    return ShortestText(value);
}

TStringCore TStringCore::numberShortest(float value)
{
    return ShortestText(value);
}
