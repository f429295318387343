#pragma once
// Whole texts converted by ICU with U+FFFD for what is malformed, to compare conversions with.

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include <unicode/ustring.h>

namespace icu_reference {

template<class Unit>
struct Converted
{
    std::basic_string<Unit> text;
    std::size_t substitutions = 0;
};

template<class To, class Source, class Convert>
Converted<To> With(Source source, Convert convert)
{
    Converted<To> result{std::basic_string<To>(4 * source.size() + 1, To{})};
    std::int32_t length = 0;
    std::int32_t substitutions = 0;
    UErrorCode status = U_ZERO_ERROR;
    convert(result.text.data(), static_cast<std::int32_t>(result.text.size()), &length, source.data(),
            static_cast<std::int32_t>(source.size()), 0xFFFD, &substitutions, &status);
    if (U_FAILURE(status)) {
        throw std::runtime_error(u_errorName(status));
    }
    result.text.resize(static_cast<std::size_t>(length));
    result.substitutions = static_cast<std::size_t>(substitutions);
    return result;
}

inline Converted<char16_t> ToUtf16(std::string_view utf8)
{
    return With<char16_t>(utf8, u_strFromUTF8WithSub);
}
inline Converted<char16_t> ToUtf16(std::u32string_view utf32)
{
    return With<char16_t>(utf32, [](char16_t* dst, auto room, auto* length, char32_t const* src, auto... rest) {
        u_strFromUTF32WithSub(dst, room, length, reinterpret_cast<UChar32 const*>(src), rest...);
    });
}
inline Converted<char> ToUtf8(std::u16string_view utf16)
{
    return With<char>(utf16, u_strToUTF8WithSub);
}
inline Converted<char32_t> ToUtf32(std::u16string_view utf16)
{
    return With<char32_t>(
        utf16, [](char32_t* dst, auto... rest) { u_strToUTF32WithSub(reinterpret_cast<UChar32*>(dst), rest...); });
}

/// Full case mapping by the default locale.
inline std::u16string InCase(bool upper, std::u16string_view text)
{
    return With<char16_t>(
               text,
               [upper](UChar* dst, auto room, auto* length, UChar const* src, auto n, auto, auto*, auto* status) {
                   *length = (upper ? u_strToUpper : u_strToLower)(dst, room, src, n, nullptr, status);
               })
        .text;
}

/// Lets surrogate values through, and in UTF-8 values up to 0x1FFFFF.
inline Converted<char16_t> ToUtf16Raw(std::u32string_view utf32)
{
    Converted<char16_t> result;
    for (char32_t const c : utf32) {
        char16_t units[2];
        std::size_t n = 0;
        U16_APPEND_UNSAFE(units, n, c > 0x10FFFF ? 0xFFFD : c);
        result.text.append(units, n);
        result.substitutions += c > 0x10FFFF ? 1 : 0;
    }
    return result;
}
inline std::string ToUtf8Raw(std::u32string_view utf32)
{
    std::string result;
    for (char32_t const c : utf32) {
        char bytes[4];
        std::size_t n = 0;
        U8_APPEND_UNSAFE(bytes, n, c > 0x1FFFFF ? 0xFFFD : c);
        result.append(bytes, n);
    }
    return result;
}

} // namespace icu_reference
