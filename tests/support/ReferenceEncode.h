#pragma once
// Conversions from UTF-16 and UTF-32 written for being read, one code point at a time, as an oracle for the kernels.

#include <cstddef>
#include <string>
#include <string_view>

namespace qvxsys::test {

template<class String>
struct Converted
{
    String text;
    std::size_t substitutions = 0;
};

inline bool IsHigh(char32_t c)
{
    return c >= 0xD800 && c <= 0xDBFF;
}

inline bool IsLow(char32_t c)
{
    return c >= 0xDC00 && c <= 0xDFFF;
}

/// The code points of UTF-16 text (The Unicode Standard 15.0, table 3-5), lone surrogates as U+FFFD.
inline Converted<std::u32string> ReferenceUtf32(std::u16string_view text)
{
    Converted<std::u32string> result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t const c = text[i];
        if (IsHigh(c) && i + 1 < text.size() && IsLow(text[i + 1])) {
            result.text += 0x10000 + (c - 0xD800) * 0x400 + (text[i + 1] - char32_t{0xDC00});
            ++i;
        } else if (IsHigh(c) || IsLow(c)) {
            result.text += U'\uFFFD';
            ++result.substitutions;
        } else {
            result.text += c;
        }
    }
    return result;
}

/// UTF-8 by the bit distribution of table 3-6 of the Standard, also for values up to 0x1FFFFF; U+FFFD above.
inline std::string ReferenceUtf8Raw(std::u32string_view text)
{
    std::string result;
    for (char32_t c : text) {
        c = c > 0x1FFFFF ? 0xFFFD : c;
        unsigned const trailing = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        unsigned const tags[] = {0x00, 0xC0, 0xE0, 0xF0};
        result += static_cast<char>(tags[trailing] | (c >> (6 * trailing)));
        for (unsigned k = trailing; k-- > 0;)
            result += static_cast<char>(0x80 | ((c >> (6 * k)) & 0x3F));
    }
    return result;
}

/// UTF-16; what it cannot hold becomes U+FFFD. `raw` lets surrogate values through.
inline Converted<std::u16string> ReferenceUtf16(std::u32string_view text, bool raw)
{
    Converted<std::u16string> result;
    for (char32_t const c : text) {
        if (c > 0x10FFFF || (!raw && (IsHigh(c) || IsLow(c)))) {
            result.text += u'\uFFFD';
            ++result.substitutions;
        } else if (c > 0xFFFF) {
            result.text += static_cast<char16_t>(0xD800 + (c - 0x10000) / 0x400);
            result.text += static_cast<char16_t>(0xDC00 + (c - 0x10000) % 0x400);
        } else {
            result.text += static_cast<char16_t>(c);
        }
    }
    return result;
}

} // namespace qvxsys::test
