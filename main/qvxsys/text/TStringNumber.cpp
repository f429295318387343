// Text from numbers, and the members that read numbers.

#include <qvxsys/TStringCore.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <utility>

#include "NumberParser.h"
#include "NumberText.h"
#include "TextErrors.h"

namespace text = qvxsys::text;

namespace {

constexpr char16_t kBase36[] = u"0123456789abcdefghijklmnopqrstuvwxyz";
constexpr char16_t kBase64[] = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Writes the digits of v so that they end at `end`; returns how many.
int DigitsInBase(char16_t* end, std::uint64_t v, unsigned base) noexcept
{
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

// The usual case, written where it stays.
TStringCore TStringCore::DecimalText(std::uint64_t v, bool negative)
{
    int const sign = negative ? 1 : 0;
    int const digits = text::DecimalLength(v);
    TStringCore result;
    if (digits + sign <= kInlineLength) {
        result.m_units[0] = u'-';
        text::WriteDecimal(result.m_units + sign, v, digits);
        result.SetInlineLength(digits + sign);
    } else {
        char16_t* const out = result.SetLength(digits + sign);
        out[0] = u'-';
        text::WriteDecimal(out + sign, v, digits);
    }
    return result;
}

TStringCore TStringCore::PaddedText(char16_t const* digits, int n, bool negative, int width, Fill fill)
{
    int const body = n + (negative ? 1 : 0);
    int const padding = std::max(width - body, 0);
    std::int64_t const units = std::int64_t{padding} * fill.count + body;
    if (units > 0x7FFFFFFF) {
        text::ThrowOverflow();
    }
    TStringCore result;
    char16_t* out = result.SetLength(static_cast<int>(units));
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
    std::copy_n(digits, n, out);
    return result;
}

TStringCore TStringCore::SignedText(long long v, int base, int width, Fill fill)
{
    auto const bits = static_cast<std::uint64_t>(v);
    if (base != 10) {
        return UnsignedText(bits, base, width, fill);
    }
    std::uint64_t const magnitude = v < 0 ? 0 - bits : bits;
    if (width <= 1) {
        return DecimalText(magnitude, v < 0);
    }
    char16_t digits[text::kMaxDigits];
    int const n = text::DecimalLength(magnitude);
    text::WriteDecimal(digits, magnitude, n);
    return PaddedText(digits, n, v < 0, width, fill);
}

TStringCore TStringCore::UnsignedText(unsigned long long v, int base, int width, Fill fill)
{
    if (base == 10 && width <= 1) {
        return DecimalText(v, false);
    }
    if (base != 64 && (base < 2 || base > 36)) {
        text::Throw("TStringCore::number: base out of range.");
    }
    char16_t digits[text::kMaxDigits];
    char16_t* const end = digits + text::kMaxDigits;
    int const n = DigitsInBase(end, v, static_cast<unsigned>(base));
    return PaddedText(end - n, n, false, width, fill);
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

TStringCore TStringCore::DoubleText(double v, char format, int precision, bool withPoint)
{
    if (char const* const word = NoNumber(v)) {
        return word;
    }
    char const lower = static_cast<char>(format | 0x20);
    bool const general = lower == 'g';
    auto const notation = general        ? std::chars_format::general
                          : lower == 'e' ? std::chars_format::scientific
                                         : std::chars_format::fixed;
    precision = precision < 0 ? 6 : general ? std::min(precision, kMostSignificant) : precision;
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

TStringCore TStringCore::numberShortest(double value)
{
    return ShortestText(value);
}

TStringCore TStringCore::numberShortest(float value)
{
    return ShortestText(value);
}

// ---- numbers from text

namespace {

template<class Integer>
Integer Narrowed(TStringView view, bool* ok, int base)
{
    if (ok != nullptr) {
        *ok = false;
    }
    text::ParsedInteger const parsed = text::ParseInteger(view.data(), view.size(), base);
    if (parsed.error != 0 || !std::in_range<Integer>(parsed.value)) {
        return 0;
    }
    if (ok != nullptr) {
        *ok = parsed.ok;
    }
    return static_cast<Integer>(parsed.value);
}

TStringView Counted(char16_t const* s, int n) noexcept
{
    return n < 0 || s == nullptr ? TStringView(s) : TStringView(s, static_cast<std::size_t>(n));
}

} // namespace

short TStringView::toShort(bool* ok, int base) const
{
    return Narrowed<short>(*this, ok, base);
}

unsigned short TStringView::toUShort(bool* ok, int base) const
{
    return Narrowed<unsigned short>(*this, ok, base);
}

int TStringView::toInt(bool* ok, int base) const
{
    return Narrowed<int>(*this, ok, base);
}

unsigned int TStringView::toUInt(bool* ok, int base) const
{
    return Narrowed<unsigned int>(*this, ok, base);
}

long TStringView::toLong(bool* ok, int base) const
{
    return Narrowed<long>(*this, ok, base);
}

unsigned long TStringView::toULong(bool* ok, int base) const
{
    return Narrowed<unsigned long>(*this, ok, base);
}

long long TStringView::toLongLong(bool* ok, int base) const
{
    return Narrowed<long long>(*this, ok, base);
}

unsigned long long TStringView::toULongLong(bool* ok, int base) const
{
    return Narrowed<unsigned long long>(*this, ok, base);
}

double TStringView::toDouble(bool* ok) const
{
    auto const parsed = text::ParseDouble(m_data, m_length);
    if (ok != nullptr) {
        *ok = parsed.ok;
    }
    return parsed.value;
}

float TStringView::toFloat(bool* ok) const
{
    auto const parsed = text::ParseFloat(m_data, m_length);
    if (ok != nullptr) {
        *ok = parsed.ok;
    }
    return parsed.value;
}

int TStringView::leftIntegerLength(int base) const
{
    return static_cast<int>(text::LeftIntegerLength(m_data, m_length, base));
}

int TStringView::leftDoubleLength() const noexcept
{
    return static_cast<int>(text::LeftDoubleLength(m_data, m_length));
}

int TStringView::leftIntegerLength(char16_t const* s, int n, int base)
{
    return Counted(s, n).leftIntegerLength(base);
}

int TStringView::leftDoubleLength(char16_t const* s, int n) noexcept
{
    return Counted(s, n).leftDoubleLength();
}
