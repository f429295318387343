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

/// How far a conversion has come; `in` is always at the beginning of a part. (Two members go in registers; a third one
/// would send all of them through memory, which costs more than a short conversion.)
struct Progress
{
    std::size_t in = 0;
    std::size_t out = 0;
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

/// The well-formed sequence of two bytes that begins at s, or 0 if there is none.
inline char16_t DecodeTwo(unsigned char const* s, std::size_t n) noexcept
{
    bool const wellFormed = n > 1 && s[0] >= 0xC2 && s[0] < 0xE0 && IsContinuation(s[1]);
    return wellFormed ? static_cast<char16_t>((s[0] & 0x1Fu) << 6 | (s[1] & 0x3Fu)) : u'\0';
}

/// The same of three bytes.
inline char16_t DecodeThree(unsigned char const* s, std::size_t n) noexcept
{
    if (n < 3 || (s[0] & 0xF0) != 0xE0 || !IsContinuation(s[1]) || !IsContinuation(s[2])) {
        return 0;
    }
    unsigned const value = (s[0] & 0x0Fu) << 12 | (s[1] & 0x3Fu) << 6 | (s[2] & 0x3Fu);
    return static_cast<char16_t>(value < 0x800 || (value >= 0xD800 && value < 0xE000) ? 0 : value);
}

template<bool kWrite>
inline void PutUnit(char16_t* dst, std::size_t at, char32_t unit) noexcept
{
    if constexpr (kWrite) {
        dst[at] = static_cast<char16_t>(unit);
    }
}

/// Decodes parts as UTF-16 until `in` is at or past `end` and counts the malformed ones; the units are only counted,
/// too, if kWrite is not set. The common lengths have branches of their own, so that where the next part begins is
/// predicted and not computed.
template<bool kWrite>
inline Progress DecodeByParts(unsigned char const* s, std::size_t n, char16_t* dst, Progress progress, std::size_t end,
                              std::size_t& malformed) noexcept
{
    std::size_t in = progress.in;
    std::size_t out = progress.out;
    while (in < end) {
        unsigned const lead = s[in];
        if (lead < 0x80) {
            PutUnit<kWrite>(dst, out++, lead);
            ++in;
        } else if (char16_t const unitOfTwo = DecodeTwo(s + in, n - in)) {
            PutUnit<kWrite>(dst, out++, unitOfTwo);
            in += 2;
        } else if (char16_t const unitOfThree = DecodeThree(s + in, n - in)) {
            PutUnit<kWrite>(dst, out++, unitOfThree);
            in += 3;
        } else {
            DecodedPart const part = DecodePart(s + in, n - in);
            if (part.value > 0xFFFF) {
                PutUnit<kWrite>(dst, out++, 0xD7C0 + (part.value >> 10));
                PutUnit<kWrite>(dst, out++, 0xDC00 + (part.value & 0x3FF));
            } else {
                PutUnit<kWrite>(dst, out++, part.value);
            }
            malformed += part.malformed;
            in += part.length;
        }
    }
    return {in, out};
}

} // namespace
} // namespace qvxsys::text
