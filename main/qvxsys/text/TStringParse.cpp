// Numbers out of text. Digits, signs and points are ASCII; white space is TCType::isSpace.

#include <qvxsys/TStringView.h>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>

#include <emmintrin.h>

#include <qvxsys/TCType.h>

#include "TextErrors.h"

namespace text = qvxsys::text;

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

[[gnu::noinline]] char16_t const* SkipSpaceThere(char16_t const* at, char16_t const* end) noexcept
{
    while (at != end && TCType::isSpace(*at)) {
        ++at;
    }
    return at;
}

inline char16_t const* SkipSpace(char16_t const* at, char16_t const* end) noexcept
{
    return at == end || (*at > u' ' && *at < 0x85) ? at : SkipSpaceThere(at, end);
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
        text::Throw("TStringCore::parseInteger: base out of range.");
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

struct Decimals
{
    std::uint64_t value;
    char16_t const* end;
};

// The decimal digits from `at` on; 19 of them fit.
inline Decimals LeadingDecimals(char16_t const* at, char16_t const* end) noexcept
{
    std::uint64_t value = 0;
    for (std::uint32_t eight = 0; end - at >= 8 && EightDigits(at, eight); at += 8) {
        value = value * 100000000 + eight;
    }
    for (; at != end && IsDecimal(*at); ++at) {
        value = value * 10 + static_cast<std::uint64_t>(*at - u'0');
    }
    return {value, at};
}

// The usual case: up to 19 decimal digits, perhaps with a minus sign, and nothing else. False for all others, and for
// the very largest.
inline bool PlainInteger(char16_t const* s, std::size_t n, std::int64_t& value) noexcept
{
    std::size_t const sign = n != 0 && *s == u'-' ? 1 : 0;
    if (n - sign - 1 >= 19) {
        return false;
    }
    Decimals const digits = LeadingDecimals(s + sign, s + n);
    value = static_cast<std::int64_t>(sign != 0 ? 0 - digits.value : digits.value);
    return digits.end == s + n && digits.value <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
}

// What became of a text that should be a whole number.
struct ParsedInteger
{
    std::int64_t value = 0;
    int error = 0;   ///< 0; EINVAL where there was no digit (value 0); ERANGE past the limits (value -1, or 0 below 0)
    bool ok = false; ///< a number, and nothing but white space around it
};

// Overflow is what makes a value step back: each new value, in arithmetic modulo 2^64, is compared with the one before
// it. This is what the interface promises, not the exact test: some numbers that have at least a digit too many come
// out above the value before them and pass as their remainder.
ParsedInteger ParseInteger(char16_t const* s, std::size_t n, int base)
{
    ParsedInteger result;
    char16_t const* const end = s + n;
    char16_t const* at = SkipSpace(s, end);
    int const sign = SkipSign(at, end);
    base = ResolvedBase(base, at, end);
    if (base == 16 && IsHexPrefix(at, end)) {
        at += 2;
    }
    char16_t const* const digits = at;
    std::uint64_t value = 0;
    if (base == 10) {
        // So many digits always fit.
        constexpr std::ptrdiff_t kSafe = std::numeric_limits<std::int64_t>::digits10;
        Decimals const safe = LeadingDecimals(at, end - at > kSafe ? at + kSafe : end);
        value = sign < 0 ? 0 - safe.value : safe.value;
        at = safe.end;
    }
    for (; at != end; ++at) {
        int const digit = DigitValue(*at, base);
        if (digit < 0) {
            break;
        }
        std::uint64_t const next = value * static_cast<std::uint64_t>(base) + static_cast<std::uint64_t>(digit * sign);
        auto const before = static_cast<std::int64_t>(value);
        auto const after = static_cast<std::int64_t>(next);
        if (sign > 0 ? after < before : after > before) {
            result.error = ERANGE;
            result.value = sign > 0 ? -1 : 0;
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
    if (n < 16) {
        eight(n - 8);
        eight(0);
        return;
    }
    auto const sixteen = [&](std::size_t i) {
        __m128i const first = _mm_loadu_si128(reinterpret_cast<__m128i const*>(from + i));
        __m128i const second = _mm_loadu_si128(reinterpret_cast<__m128i const*>(from + i + 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i), _mm_packus_epi16(first, second));
    };
    for (std::size_t i = 0; i + 16 < n; i += 16) {
        sixteen(i);
    }
    sixteen(n - 16);
}

// What became of a text that should be a floating-point number.
template<class Float>
struct ParsedFloat
{
    Float value = 0; ///< rounded to nearest, ties to even; infinite past the limits
    bool ok = false; ///< a number within the limits, and nothing but white space around it
};

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

// Digits and powers of ten that the type holds exactly, so that one division rounds once and thus correctly (Clinger,
// How to Read Floating Point Numbers Accurately, 1990).
template<class Float>
constexpr std::size_t kExactDigits = std::numeric_limits<Float>::digits10;
constexpr double kExactPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
static_assert(std::size(kExactPowers) > kExactDigits<double>);

// The usual case: few digits, perhaps with a minus sign and a point among them, and nothing else. False for all others.
template<class Float>
bool PlainFloat(char16_t const* s, std::size_t n, Float& value) noexcept
{
    bool const negative = n != 0 && *s == u'-';
    char16_t const* at = s + (negative ? 1 : 0);
    char16_t const* const end = s + n;
    if (static_cast<std::size_t>(end - at) - 1 > kExactDigits<Float>) {
        return false;
    }
    std::uint64_t digits = 0;
    auto count = static_cast<std::size_t>(end - at);
    auto const run = [&] {
        for (; at != end && IsDecimal(*at); ++at) {
            digits = digits * 10 + static_cast<std::uint64_t>(*at - u'0');
        }
    };
    run();
    std::size_t behind = 0;
    if (at != end && *at == u'.') {
        behind = static_cast<std::size_t>(end - ++at);
        --count;
        run();
    }
    if (at != end || count == 0 || count > kExactDigits<Float>) {
        return false;
    }
    auto const exact = static_cast<Float>(digits) / static_cast<Float>(kExactPowers[behind]);
    value = negative ? -exact : exact;
    return true;
}

constexpr std::size_t kShortNumber = 64;

template<class Float>
ParsedFloat<Float> Parse(char16_t const* s, std::size_t n)
{
    ParsedFloat<Float> result;
    if (PlainFloat(s, n, result.value)) {
        result.ok = true;
        return result;
    }
    char16_t const* const end = s + n;
    char16_t const* at = SkipSpace(s, end);
    int const sign = SkipSign(at, end);
    char16_t const* const number = at;
    if (at == end) {
        return result;
    }
    if (IsDecimal(*at) || *at == u'.') {
        // A long text is measured first: it may go on behind the number.
        auto length = static_cast<std::size_t>(end - at);
        char few[kShortNumber];
        std::unique_ptr<char[]> many;
        if (length > kShortNumber) {
            length = static_cast<std::size_t>(DecimalExtent(at, end).end - at);
            many.reset(length > kShortNumber ? new char[length] : nullptr);
        }
        char* const bytes = many != nullptr ? many.get() : few;
        Narrow(bytes, at, length);
        at += Convert(bytes, length, result);
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

// ---- the members

template<class Integer>
Integer Narrowed(TStringView view, bool* ok, int base)
{
    std::int64_t value = 0;
    bool good = base == 10 && PlainInteger(view.data(), view.size(), value);
    if (!good) [[unlikely]] {
        if (ok != nullptr) {
            *ok = false;
        }
        ParsedInteger const parsed = ParseInteger(view.data(), view.size(), base);
        good = parsed.ok;
        value = parsed.error == 0 ? parsed.value : 0;
    }
    bool const fits = std::in_range<Integer>(value);
    if (ok != nullptr) {
        *ok = good && fits;
    }
    return fits ? static_cast<Integer>(value) : Integer{0};
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
    auto const parsed = Parse<double>(m_data, m_length);
    if (ok != nullptr) {
        *ok = parsed.ok;
    }
    return parsed.value;
}

float TStringView::toFloat(bool* ok) const
{
    auto const parsed = Parse<float>(m_data, m_length);
    if (ok != nullptr) {
        *ok = parsed.ok;
    }
    return parsed.value;
}

int TStringView::leftIntegerLength(int base) const
{
    return static_cast<int>(LeftIntegerLength(m_data, m_length, base));
}

int TStringView::leftDoubleLength() const noexcept
{
    return static_cast<int>(LeftDoubleLength(m_data, m_length));
}

int TStringView::leftIntegerLength(char16_t const* s, int n, int base)
{
    return Counted(s, n).leftIntegerLength(base);
}

int TStringView::leftDoubleLength(char16_t const* s, int n) noexcept
{
    return Counted(s, n).leftDoubleLength();
}
