#pragma once
// Whole texts decoded by ICU's converters, to compare decoders with.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

namespace icu_reference {

struct Decoded
{
    std::u16string text;
    std::size_t malformed = 0;

    bool operator==(Decoded const&) const = default;
};

// ICU's own substitution writes U+001A for a single byte in some encodings; this one always writes U+FFFD.
inline void CountAndReplace(void const* context, UConverterToUnicodeArgs* args, char const*, std::int32_t,
                            UConverterCallbackReason reason, UErrorCode* status)
{
    if (reason > UCNV_IRREGULAR) {
        return;
    }
    UChar const replacement = 0xFFFD;
    ++*static_cast<std::size_t*>(const_cast<void*>(context));
    *status = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(args, &replacement, 1, 0, status);
}

/// `encoding` as ucnv_open takes it: null for the default converter.
inline Decoded Decode(char const* encoding, std::string_view bytes)
{
    Decoded result;
    UErrorCode status = U_ZERO_ERROR;
    UConverter* const converter = ucnv_open(encoding, &status);
    ucnv_setToUCallBack(converter, CountAndReplace, &result.malformed, nullptr, nullptr, &status);
    result.text.resize(bytes.size() * 4 + 16);
    char const* source = bytes.data();
    char16_t* target = result.text.data();
    ucnv_toUnicode(converter, &target, target + result.text.size(), &source, source + bytes.size(), nullptr, true,
                   &status);
    ucnv_close(converter);
    if (U_FAILURE(status)) {
        throw std::runtime_error(u_errorName(status));
    }
    result.text.resize(static_cast<std::size_t>(target - result.text.data()));
    return result;
}

inline std::string Encode(char const* encoding, std::u16string_view text)
{
    UErrorCode status = U_ZERO_ERROR;
    UConverter* const converter = ucnv_open(encoding, &status);
    std::string bytes(text.size() * 8 + 32, '\0');
    int const length = ucnv_fromUChars(converter, bytes.data(), static_cast<int>(bytes.size()), text.data(),
                                       static_cast<int>(text.size()), &status);
    ucnv_close(converter);
    if (U_FAILURE(status)) {
        throw std::runtime_error(u_errorName(status));
    }
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

} // namespace icu_reference
