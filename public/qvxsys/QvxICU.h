#pragma once
// The forwarding layer over ICU's flat functions, as far as the text classes stand on it: one function for each, named
// t_ plus ICU's name, with the library's own enumerations and opaque handles in place of ICU's, so that no ICU header
// is needed to use it. All others are in <qvxsys/IcuFunctions.h>.
//
//     QvxICU::ICUErrorCode status = QvxICU::ICUErrorCode::ZeroError;
//     QvxICU::ICUConverter* converter = QvxICU::t_ucnv_open("windows-1252", &status);
//     if (QvxICU::ICU_SUCCESS(status)) { ... }
//     QvxICU::t_ucnv_close(converter);
//
// Arguments, results, statuses and thread-safety are those of the ICU function of that name (the installed ICU's); the
// tests for a property return bool instead of ICU's integer. Failures are reported through ICUErrorCode, never thrown;
// as in ICU a function that is given a failed status does nothing.

#include <cstddef>
#include <cstdint>
#include <string>

#include <qvxsys/ICUTypes.h>
#include <qvxsys/IcuDeclare.h>
#include <qvxsys/IcuProperties.h>
#include <qvxsys/Platform.h>

class TStringCore;

namespace QvxICU {

/// @name Character properties
/// @{
[[nodiscard]] QVX_ICU(ICUCharCategory, u_charType, (char32_t, c));
[[nodiscard]] QVX_ICU(char32_t, u_foldCase, (char32_t, c), (std::uint32_t, options));
[[nodiscard]] QVX_ICU(bool, u_hasBinaryProperty, (char32_t, c), (ICUProperty, which));
[[nodiscard]] QVX_ICU(bool, u_isUAlphabetic, (char32_t, c));
[[nodiscard]] QVX_ICU(bool, u_isULowercase, (char32_t, c));
[[nodiscard]] QVX_ICU(bool, u_isUUppercase, (char32_t, c));
[[nodiscard]] QVX_ICU(bool, u_isUWhiteSpace, (char32_t, c));
[[nodiscard]] QVX_ICU(bool, u_isWhitespace, (char32_t, c));
[[nodiscard]] QVX_ICU(bool, u_isblank, (char32_t, c));
[[nodiscard]] QVX_ICU(bool, u_isdigit, (char32_t, c));
[[nodiscard]] QVX_ICU(bool, u_ispunct, (char32_t, c));
[[nodiscard]] QVX_ICU(bool, u_isxdigit, (char32_t, c));
[[nodiscard]] QVX_ICU(char32_t, u_tolower, (char32_t, c));
[[nodiscard]] QVX_ICU(char32_t, u_toupper, (char32_t, c));
/// @}

/// @name Strings (lengths in units; -1 where ICU takes it means terminated)
/// @{
QVX_ICU(std::int32_t, u_strFoldCase, (char16_t*, dest), (std::int32_t, capacity), (char16_t const*, src),
        (std::int32_t, length), (std::uint32_t, options), (ICUErrorCode*, status));
QVX_ICU(char16_t*, u_strFromUTF32, (char16_t*, dest), (std::int32_t, capacity), (std::int32_t*, destLength),
        (char32_t const*, src), (std::int32_t, length), (ICUErrorCode*, status));
QVX_ICU(char16_t*, u_strFromUTF32WithSub, (char16_t*, dest), (std::int32_t, capacity), (std::int32_t*, destLength),
        (char32_t const*, src), (std::int32_t, length), (char32_t, substitution), (std::int32_t*, substitutions),
        (ICUErrorCode*, status));
QVX_ICU(char16_t*, u_strFromUTF8, (char16_t*, dest), (std::int32_t, capacity), (std::int32_t*, destLength),
        (char const*, src), (std::int32_t, length), (ICUErrorCode*, status));
QVX_ICU(char16_t*, u_strFromUTF8WithSub, (char16_t*, dest), (std::int32_t, capacity), (std::int32_t*, destLength),
        (char const*, src), (std::int32_t, length), (char32_t, substitution), (std::int32_t*, substitutions),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, u_strToLower, (char16_t*, dest), (std::int32_t, capacity), (char16_t const*, src),
        (std::int32_t, length), (char const*, locale), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, u_strToTitle, (char16_t*, dest), (std::int32_t, capacity), (char16_t const*, src),
        (std::int32_t, length), (ICUBreakIterator*, titleIterator), (char const*, locale), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, u_strToUpper, (char16_t*, dest), (std::int32_t, capacity), (char16_t const*, src),
        (std::int32_t, length), (char const*, locale), (ICUErrorCode*, status));
QVX_ICU(char32_t*, u_strToUTF32, (char32_t*, dest), (std::int32_t, capacity), (std::int32_t*, destLength),
        (char16_t const*, src), (std::int32_t, length), (ICUErrorCode*, status));
QVX_ICU(char32_t*, u_strToUTF32WithSub, (char32_t*, dest), (std::int32_t, capacity), (std::int32_t*, destLength),
        (char16_t const*, src), (std::int32_t, length), (char32_t, substitution), (std::int32_t*, substitutions),
        (ICUErrorCode*, status));
QVX_ICU(char*, u_strToUTF8, (char*, dest), (std::int32_t, capacity), (std::int32_t*, destLength),
        (char16_t const*, src), (std::int32_t, length), (ICUErrorCode*, status));
QVX_ICU(char*, u_strToUTF8WithSub, (char*, dest), (std::int32_t, capacity), (std::int32_t*, destLength),
        (char16_t const*, src), (std::int32_t, length), (char32_t, substitution), (std::int32_t*, substitutions),
        (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(std::int32_t, u_strcasecmp, (char16_t const*, a), (char16_t const*, b), (std::uint32_t, options));
[[nodiscard]] QVX_ICU(std::int32_t, u_strcmp, (char16_t const*, a), (char16_t const*, b));
[[nodiscard]] QVX_ICU(std::int32_t, u_strncasecmp, (char16_t const*, a), (char16_t const*, b), (std::int32_t, n),
                      (std::uint32_t, options));
[[nodiscard]] QVX_ICU(std::int32_t, u_strncmp, (char16_t const*, a), (char16_t const*, b), (std::int32_t, n));
/// @}

/// @name The library itself
/// @{
/// The name of ICU's default locale, "en_US".
[[nodiscard]] QVX_ICU_0(char const*, uloc_getDefault);
/// Frees ICU's caches, and before them what the library keeps of ICU's. Not thread-safe: no other ICU call may run, and
/// nothing that ICU opened may be open, neither handles nor wrappers, comparators and ranges of pieces.
QVXSYS_API void t_u_cleanup() noexcept;
/// The code's name as ICU spells it, "U_BUFFER_OVERFLOW_ERROR" for instance.
[[nodiscard]] QVX_ICU(char const*, u_errorName, (ICUErrorCode, code));
/// @}

/// @name Converters
/// A converter must not be used from two threads at once. On Linux the default converter is always UTF-8.
/// @{
using ICUToUnicodeCallback = void (*)(void const* context, ICUToUnicodeArgs* args, char const* bytes,
                                      std::int32_t length, ICUConverterCallbackReason reason, ICUErrorCode* status);
using ICUFromUnicodeCallback = void (*)(void const* context, ICUFromUnicodeArgs* args, char16_t const* units,
                                        std::int32_t length, char32_t codePoint, ICUConverterCallbackReason reason,
                                        ICUErrorCode* status);

/// Opens a converter by name, the default one for null. The status may be a warning: test it with ICU_FAILURE.
[[nodiscard]] QVX_ICU(ICUConverter*, ucnv_open, (char const*, name), (ICUErrorCode*, status));
QVX_ICU(void, ucnv_close, (ICUConverter*, converter));
[[nodiscard]] QVX_ICU(char const*, ucnv_getName, (ICUConverter const*, converter), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU_0(char const*, ucnv_getDefaultName);
[[nodiscard]] QVX_ICU(std::int8_t, ucnv_getMaxCharSize, (ICUConverter const*, converter));
QVX_ICU(void, ucnv_reset, (ICUConverter*, converter));
QVX_ICU(char32_t, ucnv_getNextUChar, (ICUConverter*, converter), (char const**, source), (char const*, limit),
        (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucnv_fromUChars, (ICUConverter*, converter), (char*, dest), (std::int32_t, capacity),
        (char16_t const*, src), (std::int32_t, length), (ICUErrorCode*, status));
QVX_ICU(std::int32_t, ucnv_toUChars, (ICUConverter*, converter), (char16_t*, dest), (std::int32_t, capacity),
        (char const*, src), (std::int32_t, length), (ICUErrorCode*, status));
QVX_ICU(void, ucnv_toUnicode, (ICUConverter*, converter), (char16_t**, target), (char16_t const*, targetLimit),
        (char const**, source), (char const*, sourceLimit), (std::int32_t*, offsets), (bool, flush),
        (ICUErrorCode*, status));
/// Installs what is called for bytes that cannot be decoded. The callback either substitutes
/// (t_UCNV_TO_U_CALLBACK_SUBSTITUTE) or leaves the failed status as it is. The
/// previous callback and context are stored where the pointers given are not null.
QVX_ICU(void, ucnv_setToUCallBack, (ICUConverter*, converter), (ICUToUnicodeCallback, newAction),
        (void const*, newContext), (ICUToUnicodeCallback*, oldAction), (void const**, oldContext),
        (ICUErrorCode*, status));
/// Installs what is called for code points that cannot be encoded.
QVX_ICU(void, ucnv_setFromUCallBack, (ICUConverter*, converter), (ICUFromUnicodeCallback, newAction),
        (void const*, newContext), (ICUFromUnicodeCallback*, oldAction), (void const**, oldContext),
        (ICUErrorCode*, status));
QVX_ICU(void, UCNV_TO_U_CALLBACK_SUBSTITUTE, (void const*, context), (ICUToUnicodeArgs*, args), (char const*, bytes),
        (std::int32_t, length), (ICUConverterCallbackReason, reason), (ICUErrorCode*, status));
QVX_ICU(void, UCNV_FROM_U_CALLBACK_SUBSTITUTE, (void const*, context), (ICUFromUnicodeArgs*, args),
        (char16_t const*, units), (std::int32_t, length), (char32_t, codePoint), (ICUConverterCallbackReason, reason),
        (ICUErrorCode*, status));
/// @}

/// @name Charset detection
/// @{
[[nodiscard]] QVX_ICU(ICUCharsetDetector*, ucsdet_open, (ICUErrorCode*, status));
QVX_ICU(void, ucsdet_close, (ICUCharsetDetector*, detector));
/// The text is not copied: it must outlive the matches.
QVX_ICU(void, ucsdet_setText, (ICUCharsetDetector*, detector), (char const*, text), (std::int32_t, length),
        (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(ICUCharsetMatch const*, ucsdet_detect, (ICUCharsetDetector*, detector), (ICUErrorCode*, status));
[[nodiscard]] QVX_ICU(char const*, ucsdet_getName, (ICUCharsetMatch const*, match), (ICUErrorCode*, status));
/// 0 to 100.
[[nodiscard]] QVX_ICU(std::int32_t, ucsdet_getConfidence, (ICUCharsetMatch const*, match), (ICUErrorCode*, status));
/// @}

/// @name Stepping by code point
/// ICU's U16_FWD_1, U16_BACK_1, U8_FWD_1 and U8_BACK_1: `i` moves over one code point; malformed text counts unit by
/// unit (UTF-16) or by maximal subpart (UTF-8). Forward: i < length on entry (a length of -1 means terminated text).
/// Back: start < i on entry. Nothing outside [start, length) is read.
/// @{
QVXSYS_API void ICU16_FWD_1(char16_t const* s, int& i, int length) noexcept;
QVXSYS_API void ICU16_FWD_1(char16_t const* s, std::size_t& i, std::size_t length) noexcept;
QVXSYS_API void ICU16_BACK_1(char16_t const* s, int start, int& i) noexcept;
QVXSYS_API void ICU16_BACK_1(char16_t const* s, std::size_t start, std::size_t& i) noexcept;
QVXSYS_API void ICU8_FWD_1(char const* s, int& i, int length) noexcept;
QVXSYS_API void ICU8_FWD_1(char const* s, std::size_t& i, std::size_t length) noexcept;
QVXSYS_API void ICU8_BACK_1(char const* s, int start, int& i) noexcept;
QVXSYS_API void ICU8_BACK_1(char const* s, std::size_t start, std::size_t& i) noexcept;
/// @}

/// A stored integer, initially 4: the ICU version whose rule syntax callers expect. Thread-safe.
[[nodiscard]] QVXSYS_API int getIcuVersion() noexcept;
QVXSYS_API void setIcuVersion(int version) noexcept;

/// The versions of the ICU in use ("72.1") and of the Unicode Standard that its data follow ("15.0").
[[nodiscard]] QVXSYS_API std::string installedVersion();
[[nodiscard]] QVXSYS_API std::string unicodeVersion();

/// A collation tailoring that sorts the ten ASCII digits as equal. For version 4 (getIcuVersion) the rule
/// "&'0'='1'='2'='3'='4'='5'='6'='7'='8'='9'<[variable top]"; for any other version the seven units '&', U+0000, '=',
/// '*', '0', '-', '9'. Each is built once, thread-safely, and lives as long as the process.
[[nodiscard]] QVXSYS_API TStringCore const& t_getIgnoreDigitsRule();

} // namespace QvxICU
