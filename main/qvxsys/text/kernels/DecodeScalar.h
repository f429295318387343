#pragma once
// Decoding UTF-8 one part at a time: what every kernel set falls back on where blocks do not pay.
//
// A "part" is what becomes one code point: a well-formed sequence or a maximal subpart of an ill-formed one (The
// Unicode Standard 15.0, section 3.9, Table 3-7 and "U+FFFD Substitution of Maximal Subparts"). Everything here has
// internal linkage: this text is compiled once per instruction set, and a copy compiled for one processor must never
// be the one the linker keeps for all.

#include <cstddef>

namespace qvxsys::text {
namespace {

struct DecodedPart
{
    char32_t value;
    std::size_t length; // in bytes, at least 1
    bool malformed;     // then value is U+FFFD
};

/// The part that begins at s; n > 0 bytes are left there.
inline DecodedPart DecodePart(unsigned char const* s, std::size_t n) noexcept
{
    unsigned const lead = s[0];
    if (lead < 0x80) {
        return {lead, 1, false};
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return {0xFFFD, 1, true};
    }
    // Only the second byte has a range of its own; it is what keeps out overlong forms, surrogates and values above
    // U+10FFFF.
    unsigned low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    std::size_t const length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    char32_t value = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (i >= n || s[i] < low || s[i] > high) {
            return {0xFFFD, i, true};
        }
        value = value << 6 | (s[i] & 0x3Fu);
        low = 0x80;
        high = 0xBF;
    }
    return {value, length, false};
}

/// How far a conversion has come; `in` is always at the beginning of a part.
struct Progress
{
    std::size_t in = 0;
    std::size_t out = 0;
    std::size_t malformed = 0;
};

/// Decodes parts until `in` is at or past `end` or at a part that is malformed or 0.
inline Progress DecodePrefixByParts(unsigned char const* s, std::size_t n, char32_t* dst, Progress progress,
                                    std::size_t end) noexcept
{
    while (progress.in < end) {
        DecodedPart const part = DecodePart(s + progress.in, n - progress.in);
        if (part.malformed || part.value == 0) {
            break;
        }
        dst[progress.out++] = part.value;
        progress.in += part.length;
    }
    return progress;
}

/// Writes a code point as UTF-16 and returns the units it takes.
inline std::size_t PutUtf16(char32_t value, char16_t* dst) noexcept
{
    if (value < 0x10000) {
        dst[0] = static_cast<char16_t>(value);
        return 1;
    }
    dst[0] = static_cast<char16_t>(0xD7C0 + (value >> 10));
    dst[1] = static_cast<char16_t>(0xDC00 + (value & 0x3FF));
    return 2;
}

} // namespace
} // namespace qvxsys::text
