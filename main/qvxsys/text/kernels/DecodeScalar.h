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

inline bool IsContinuation(unsigned byte) noexcept
{
    return (byte & 0xC0) == 0x80;
}

/// The length of the maximal subpart at s, where n > 0 bytes are left and no well-formed sequence begins.
[[gnu::noinline]] inline std::size_t MaximalSubpart(unsigned char const* s, std::size_t n) noexcept
{
    unsigned const lead = s[0];
    if (lead < 0xC2 || lead > 0xF4) {
        return 1;
    }
    // Only the second byte has a range of its own; it is what keeps out overlong forms, surrogates and values above
    // U+10FFFF.
    unsigned const low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned const high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (n < 2 || s[1] < low || s[1] > high) {
        return 1;
    }
    return lead >= 0xF0 && n > 2 && IsContinuation(s[2]) ? 3 : 2;
}

/// The part that begins at s; n > 0 bytes are left there.
inline DecodedPart DecodePart(unsigned char const* s, std::size_t n) noexcept
{
    char32_t const lead = s[0];
    if (lead < 0x80) {
        return {lead, 1, false};
    }
    if (lead < 0xE0) {
        if (lead >= 0xC2 && n > 1 && IsContinuation(s[1])) {
            return {(lead & 0x1F) << 6 | (s[1] & 0x3F), 2, false};
        }
    } else if (lead < 0xF0) {
        if (n > 2 && IsContinuation(s[1]) && IsContinuation(s[2])) {
            char32_t const value = (lead & 0x0F) << 12 | static_cast<char32_t>(s[1] & 0x3F) << 6 | (s[2] & 0x3F);
            if (value >= 0x800 && (value < 0xD800 || value > 0xDFFF)) {
                return {value, 3, false};
            }
        }
    } else if (n > 3 && IsContinuation(s[1]) && IsContinuation(s[2]) && IsContinuation(s[3])) {
        char32_t const value = (lead & 0x0F) << 18 | static_cast<char32_t>(s[1] & 0x3F) << 12 |
                               static_cast<char32_t>(s[2] & 0x3F) << 6 | (s[3] & 0x3F);
        if (value >= 0x10000 && value <= 0x10FFFF) {
            return {value, 4, false};
        }
    }
    return {0xFFFD, MaximalSubpart(s, n), true};
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

/// Decodes parts as UTF-16 until `in` is at or past `end`; only counts the units if kWrite is not set.
template<bool kWrite>
inline Progress DecodeByParts(unsigned char const* s, std::size_t n, char16_t* dst, Progress progress,
                              std::size_t end) noexcept
{
    while (progress.in < end) {
        DecodedPart const part = DecodePart(s + progress.in, n - progress.in);
        bool const pair = part.value > 0xFFFF;
        if constexpr (kWrite) {
            char16_t* const to = dst + progress.out;
            if (pair) {
                to[0] = static_cast<char16_t>(0xD7C0 + (part.value >> 10));
                to[1] = static_cast<char16_t>(0xDC00 + (part.value & 0x3FF));
            } else {
                to[0] = static_cast<char16_t>(part.value);
            }
        }
        progress.out += pair ? 2u : 1u;
        progress.malformed += part.malformed;
        progress.in += part.length;
    }
    return progress;
}

} // namespace
} // namespace qvxsys::text
