#include <qvxsys/CharacterUtils.h>

namespace CharacterUtils {
namespace {

// Continuation bytes by lead byte, indexed by (lead - 0x80) / 2. The 5 and 6 byte forms are those of RFC 2279.
constexpr unsigned char kContinuations[64] = {
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, // 80..BF
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,                                                 // C0..DF
    2, 2, 2, 2, 2, 2, 2, 2,                                                                         // E0..EF
    3, 3, 3, 3, 4, 4, 5, 0,                                                                         // F0..FF
};

unsigned Byte(char c) noexcept
{
    return static_cast<unsigned char>(c);
}

// One sequence. `available` bounds the bytes that may be read; -1 means that a byte which is no continuation (a
// terminator, at the latest) ends it.
int Decode(char const* src, int available, char32_t& c) noexcept
{
    c = Byte(*src);
    // 0x80 passes as itself by intent, although no other continuation byte does.
    if (c <= 0x80) {
        return 1;
    }
    int const count = CountContinuationBytes(*src);
    if (count == 0) {
        c = kReplacement;
        return 1;
    }
    c &= 0x3Fu >> count;
    for (int i = 1; i <= count; ++i) {
        if (i == available || IsFirstUtf8CodeUnit(src[i])) {
            c = kReplacement;
            return i;
        }
        c = (c << 6) | (Byte(src[i]) & 0x3Fu);
    }
    return 1 + count;
}

template<class Unit>
bool Fits(Unit const* dst, int position, int units, int capacity) noexcept
{
    return dst != nullptr && position >= 0 && units <= capacity && position <= capacity - units;
}

char16_t const* Next(char16_t const* begin, char16_t const* p, int length, int* units) noexcept
{
    if (begin == nullptr || p == nullptr || p < begin || p - begin >= length) {
        return nullptr;
    }
    int const step = CountCodeUnits(p);
    if (p - begin >= length - step) {
        return nullptr;
    }
    if (units != nullptr) {
        *units = CountCodeUnits(p + step);
    }
    return p + step;
}

char16_t const* Previous(char16_t const* begin, char16_t const* p, int* units) noexcept
{
    if (begin == nullptr || p == nullptr) {
        return nullptr;
    }
    for (char16_t const* q = p; q > begin;) {
        --q;
        if (IsFirstUtf16CodeUnit(*q)) {
            if (units != nullptr) {
                *units = static_cast<int>(p - q);
            }
            return q;
        }
    }
    return nullptr;
}

} // namespace

int CountContinuationBytes(char lead) noexcept
{
    unsigned const b = Byte(lead);
    return b < 0x80 ? 0 : kContinuations[(b - 0x80) / 2];
}

int Utf16ToUtf16(char16_t const* src, char16_t* dst, int& position, int capacity) noexcept
{
    int units = 0;
    char32_t const c = GetCodePoint(src, &units);
    if (units == 0 || !Fits(dst, position, units, capacity)) {
        return 0;
    }
    if (units == 2) {
        dst[position++] = src[0];
        dst[position++] = src[1];
    } else {
        dst[position++] = static_cast<char16_t>(c);
    }
    return units;
}

int Utf16ToUtf32(char16_t const* src, char32_t* dst, int& position, int capacity) noexcept
{
    int units = 0;
    char32_t const c = GetCodePoint(src, &units);
    if (units == 0 || !Fits(dst, position, 1, capacity)) {
        return 0;
    }
    dst[position++] = c;
    return units;
}

int Utf16ToUtf8(char16_t const* src, char* dst, int& position, int capacity) noexcept
{
    int units = 0;
    char32_t const c = GetCodePoint(src, &units);
    return units != 0 && Utf32ToUtf8(&c, dst, position, capacity) != 0 ? units : 0;
}

int Utf32ToUtf16(char32_t const* src, char16_t* dst, int& position, int capacity) noexcept
{
    if (src == nullptr || *src == 0) {
        return 0;
    }
    char32_t const c = *src <= 0x10FFFF ? *src : kReplacement;
    int const units = CountCodeUnits(c);
    if (!Fits(dst, position, units, capacity)) {
        return 0;
    }
    if (units == 2) {
        dst[position++] = HighSurrogate(c);
        dst[position++] = LowSurrogate(c);
    } else {
        dst[position++] = static_cast<char16_t>(c);
    }
    return 1;
}

int Utf32ToUtf8(char32_t const* src, char* dst, int& position, int capacity) noexcept
{
    if (src == nullptr || *src == 0) {
        return 0;
    }
    char32_t c = *src;
    int const needed = c < 0x80 ? 1 : c < 0x800 ? 2 : c < 0x10000 ? 3 : 4;
    if (!Fits(dst, position, needed, capacity)) {
        return 0;
    }
    bool const encodable = c <= 0x1FFFFF;
    int const bytes = encodable ? needed : 3;
    c = encodable ? c : kReplacement;
    char* const out = dst + position;
    for (int i = bytes - 1; i > 0; --i) {
        out[i] = static_cast<char>(0x80u | (c & 0x3Fu));
        c >>= 6;
    }
    constexpr unsigned leads[] = {0, 0, 0xC0, 0xE0, 0xF0};
    out[0] = static_cast<char>(leads[bytes] | c);
    position += bytes;
    return 1;
}

int Utf8ToUtf16(char const* src, char16_t* dst, int& position, int capacity) noexcept
{
    if (src == nullptr || *src == 0) {
        return 0;
    }
    char32_t c = 0;
    int const consumed = Decode(src, -1, c);
    if (c != 0) {
        return Utf32ToUtf16(&c, dst, position, capacity) != 0 ? consumed : 0;
    }
    // An overlong zero: its bytes are consumed and U+0000 is text.
    if (!Fits(dst, position, 1, capacity)) {
        return 0;
    }
    dst[position++] = 0;
    return consumed;
}

int Utf8ToUtf32(char const* src, char32_t* dst, int& position, int capacity) noexcept
{
    if (src == nullptr || *src == 0 || !Fits(dst, position, 1, capacity)) {
        return 0;
    }
    return Decode(src, -1, dst[position++]);
}

int DecodeUtf8(char const* src, int length, char32_t& codePoint) noexcept
{
    return src == nullptr || length < 1 ? 0 : Decode(src, length, codePoint);
}

int Utf8ToUtf8(char const* src, char* dst, int& position, int capacity) noexcept
{
    if (src == nullptr || *src == 0) {
        return 0;
    }
    int const count = CountContinuationBytes(*src);
    int length = 1;
    while (length <= count && !IsFirstUtf8CodeUnit(src[length])) {
        ++length;
    }
    bool const whole = count != 0 ? length == 1 + count : Byte(*src) < 0x80;
    if (!Fits(dst, position, whole ? length : 4, capacity)) {
        return 0;
    }
    char const* const from = whole ? src : "\xEF\xBF\xBD";
    int const bytes = whole ? length : 3;
    for (int i = 0; i < bytes; ++i) {
        dst[position++] = from[i];
    }
    return length;
}

char16_t const* GetNextCodePointPointer(char16_t const* begin, char16_t const* p, int length, int* units) noexcept
{
    return Next(begin, p, length, units);
}

char16_t* GetNextCodePointPointer(char16_t* begin, char16_t* p, int length, int* units) noexcept
{
    return const_cast<char16_t*>(Next(begin, p, length, units));
}

char16_t const* GetPreviousCodePointPointer(char16_t const* begin, char16_t const* p, int* units) noexcept
{
    return Previous(begin, p, units);
}

char16_t* GetPreviousCodePointPointer(char16_t* begin, char16_t* p, int* units) noexcept
{
    return const_cast<char16_t*>(Previous(begin, p, units));
}

char16_t const* GetLastCodePointPointer(char16_t const* begin, int length, int* units) noexcept
{
    return begin == nullptr || length < 1 ? nullptr : Previous(begin, begin + length, units);
}

char16_t* GetLastCodePointPointer(char16_t* begin, int length, int* units) noexcept
{
    return const_cast<char16_t*>(GetLastCodePointPointer(static_cast<char16_t const*>(begin), length, units));
}

} // namespace CharacterUtils
