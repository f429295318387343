#pragma once
// Conversions written for being obviously right, to compare the kernels with.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace reference {

/// What becomes one code point: a well-formed sequence or a maximal subpart of an ill-formed one.
struct Part
{
    std::size_t begin;
    std::size_t length;
    char32_t value; // U+FFFD if malformed
    bool malformed;
};

/// The Unicode Standard 15.0, Table 3-7: the ranges of the bytes of well-formed sequences.
struct ByteRange
{
    unsigned first, last;
};
struct SequenceRow
{
    std::size_t length;
    ByteRange bytes[4];
};
inline constexpr SequenceRow kTable3_7[] = {
    {1, {{0x00, 0x7F}, {}, {}, {}}},
    {2, {{0xC2, 0xDF}, {0x80, 0xBF}, {}, {}}},
    {3, {{0xE0, 0xE0}, {0xA0, 0xBF}, {0x80, 0xBF}, {}}},
    {3, {{0xE1, 0xEC}, {0x80, 0xBF}, {0x80, 0xBF}, {}}},
    {3, {{0xED, 0xED}, {0x80, 0x9F}, {0x80, 0xBF}, {}}},
    {3, {{0xEE, 0xEF}, {0x80, 0xBF}, {0x80, 0xBF}, {}}},
    {4, {{0xF0, 0xF0}, {0x90, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {4, {{0xF1, 0xF3}, {0x80, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {4, {{0xF4, 0xF4}, {0x80, 0x8F}, {0x80, 0xBF}, {0x80, 0xBF}}},
};

inline Part DecodePart(std::string_view text, std::size_t begin)
{
    Part longest{begin, 1, 0xFFFD, true};
    for (SequenceRow const& row : kTable3_7) {
        char32_t value = 0;
        std::size_t matched = 0;
        while (matched < row.length && begin + matched < text.size()) {
            unsigned const byte = static_cast<unsigned char>(text[begin + matched]);
            if (byte < row.bytes[matched].first || byte > row.bytes[matched].last) {
                break;
            }
            unsigned const leadBits = row.length == 1 ? 0x7F : 0x7Fu >> row.length;
            value = value * 64 + (byte & (matched == 0 ? leadBits : 0x3F));
            ++matched;
        }
        if (matched == row.length) {
            return {begin, matched, value, false};
        }
        longest.length = matched > longest.length ? matched : longest.length;
    }
    return longest;
}

inline std::vector<Part> DecodeUtf8(std::string_view text)
{
    std::vector<Part> parts;
    for (std::size_t i = 0; i < text.size(); i += parts.back().length) {
        parts.push_back(DecodePart(text, i));
    }
    return parts;
}

inline std::u16string ToUtf16(std::vector<Part> const& parts)
{
    std::u16string text;
    for (Part const& part : parts) {
        if (part.value < 0x10000) {
            text += static_cast<char16_t>(part.value);
        } else {
            text += static_cast<char16_t>(0xD800 + (part.value - 0x10000) / 0x400);
            text += static_cast<char16_t>(0xDC00 + (part.value - 0x10000) % 0x400);
        }
    }
    return text;
}

/// UTF-8 of a code point by the plain 1 to 4 byte rule, surrogate values included.
inline std::string ToUtf8(char32_t value)
{
    auto const tail = [value](unsigned shift) { return static_cast<char>(0x80 | (value >> shift & 0x3F)); };
    if (value < 0x80) {
        return {static_cast<char>(value)};
    }
    if (value < 0x800) {
        return {static_cast<char>(0xC0 | value >> 6), tail(0)};
    }
    if (value < 0x10000) {
        return {static_cast<char>(0xE0 | value >> 12), tail(6), tail(0)};
    }
    return {static_cast<char>(0xF0 | value >> 18), tail(12), tail(6), tail(0)};
}

} // namespace reference
