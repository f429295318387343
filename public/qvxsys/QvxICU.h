#pragma once
// The forwarding layer over ICU's flat functions: one function for each one the library uses, named t_ plus ICU's name,
// with the library's own enumerations and opaque handles in place of ICU's, so that no ICU header is needed to use it.
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
#include <qvxsys/Platform.h>

class TStringCore;

namespace QvxICU {

/// Binary properties, by ICU's UProperty values (those the library asks for; others can be cast).
enum class ICUProperty : int {
    Alphabetic = 0,
    Lowercase = 22,
    Uppercase = 30,
    WhiteSpace = 31,
    PosixAlnum = 44,
    PosixBlank = 45,
    PosixGraph = 46,
    PosixPrint = 47,
    PosixXDigit = 48,
};

/// General categories, by ICU's UCharCategory values.
enum class ICUCharCategory : std::int8_t {
    Unassigned = 0,
    UppercaseLetter = 1,
    LowercaseLetter = 2,
    TitlecaseLetter = 3,
    ModifierLetter = 4,
    OtherLetter = 5,
    NonSpacingMark = 6,
    EnclosingMark = 7,
    CombiningSpacingMark = 8,
    DecimalDigitNumber = 9,
    LetterNumber = 10,
    OtherNumber = 11,
    SpaceSeparator = 12,
    LineSeparator = 13,
    ParagraphSeparator = 14,
    ControlChar = 15,
    FormatChar = 16,
    PrivateUseChar = 17,
    Surrogate = 18,
    DashPunctuation = 19,
    StartPunctuation = 20,
    EndPunctuation = 21,
    ConnectorPunctuation = 22,
    OtherPunctuation = 23,
    MathSymbol = 24,
    CurrencySymbol = 25,
    ModifierSymbol = 26,
    OtherSymbol = 27,
    InitialPunctuation = 28,
    FinalPunctuation = 29,
};

/// @name Character properties
/// @{
[[nodiscard]] QVXSYS_API ICUCharCategory t_u_charType(char32_t c) noexcept;
[[nodiscard]] QVXSYS_API char32_t t_u_foldCase(char32_t c, std::uint32_t options) noexcept;
[[nodiscard]] QVXSYS_API bool t_u_hasBinaryProperty(char32_t c, ICUProperty which) noexcept;
[[nodiscard]] QVXSYS_API bool t_u_isUAlphabetic(char32_t c) noexcept;
[[nodiscard]] QVXSYS_API bool t_u_isULowercase(char32_t c) noexcept;
[[nodiscard]] QVXSYS_API bool t_u_isUUppercase(char32_t c) noexcept;
[[nodiscard]] QVXSYS_API bool t_u_isUWhiteSpace(char32_t c) noexcept;
[[nodiscard]] QVXSYS_API bool t_u_isWhitespace(char32_t c) noexcept;
[[nodiscard]] QVXSYS_API bool t_u_isblank(char32_t c) noexcept;
[[nodiscard]] QVXSYS_API bool t_u_isdigit(char32_t c) noexcept;
[[nodiscard]] QVXSYS_API bool t_u_ispunct(char32_t c) noexcept;
[[nodiscard]] QVXSYS_API bool t_u_isxdigit(char32_t c) noexcept;
[[nodiscard]] QVXSYS_API char32_t t_u_tolower(char32_t c) noexcept;
[[nodiscard]] QVXSYS_API char32_t t_u_toupper(char32_t c) noexcept;
/// @}

/// @name Strings (lengths in units; -1 where ICU takes it means terminated)
/// @{
QVXSYS_API std::int32_t t_u_strFoldCase(char16_t* dest, std::int32_t capacity, char16_t const* src, std::int32_t length,
                                        std::uint32_t options, ICUErrorCode* status) noexcept;
QVXSYS_API char16_t* t_u_strFromUTF32(char16_t* dest, std::int32_t capacity, std::int32_t* destLength,
                                      char32_t const* src, std::int32_t length, ICUErrorCode* status) noexcept;
QVXSYS_API char16_t* t_u_strFromUTF32WithSub(char16_t* dest, std::int32_t capacity, std::int32_t* destLength,
                                             char32_t const* src, std::int32_t length, char32_t substitution,
                                             std::int32_t* substitutions, ICUErrorCode* status) noexcept;
QVXSYS_API char16_t* t_u_strFromUTF8(char16_t* dest, std::int32_t capacity, std::int32_t* destLength, char const* src,
                                     std::int32_t length, ICUErrorCode* status) noexcept;
QVXSYS_API char16_t* t_u_strFromUTF8WithSub(char16_t* dest, std::int32_t capacity, std::int32_t* destLength,
                                            char const* src, std::int32_t length, char32_t substitution,
                                            std::int32_t* substitutions, ICUErrorCode* status) noexcept;
QVXSYS_API std::int32_t t_u_strToLower(char16_t* dest, std::int32_t capacity, char16_t const* src, std::int32_t length,
                                       char const* locale, ICUErrorCode* status) noexcept;
QVXSYS_API std::int32_t t_u_strToTitle(char16_t* dest, std::int32_t capacity, char16_t const* src, std::int32_t length,
                                       ICUBreakIterator* titleIterator, char const* locale,
                                       ICUErrorCode* status) noexcept;
QVXSYS_API std::int32_t t_u_strToUpper(char16_t* dest, std::int32_t capacity, char16_t const* src, std::int32_t length,
                                       char const* locale, ICUErrorCode* status) noexcept;
QVXSYS_API char32_t* t_u_strToUTF32(char32_t* dest, std::int32_t capacity, std::int32_t* destLength,
                                    char16_t const* src, std::int32_t length, ICUErrorCode* status) noexcept;
QVXSYS_API char32_t* t_u_strToUTF32WithSub(char32_t* dest, std::int32_t capacity, std::int32_t* destLength,
                                           char16_t const* src, std::int32_t length, char32_t substitution,
                                           std::int32_t* substitutions, ICUErrorCode* status) noexcept;
QVXSYS_API char* t_u_strToUTF8(char* dest, std::int32_t capacity, std::int32_t* destLength, char16_t const* src,
                               std::int32_t length, ICUErrorCode* status) noexcept;
QVXSYS_API char* t_u_strToUTF8WithSub(char* dest, std::int32_t capacity, std::int32_t* destLength, char16_t const* src,
                                      std::int32_t length, char32_t substitution, std::int32_t* substitutions,
                                      ICUErrorCode* status) noexcept;
[[nodiscard]] QVXSYS_API std::int32_t t_u_strcasecmp(char16_t const* a, char16_t const* b,
                                                     std::uint32_t options) noexcept;
[[nodiscard]] QVXSYS_API std::int32_t t_u_strcmp(char16_t const* a, char16_t const* b) noexcept;
[[nodiscard]] QVXSYS_API std::int32_t t_u_strncasecmp(char16_t const* a, char16_t const* b, std::int32_t n,
                                                      std::uint32_t options) noexcept;
[[nodiscard]] QVXSYS_API std::int32_t t_u_strncmp(char16_t const* a, char16_t const* b, std::int32_t n) noexcept;
/// @}

/// @name The library itself
/// @{
/// Frees ICU's caches. Not thread-safe: no other ICU call may run.
/// The name of ICU's default locale, "en_US".
[[nodiscard]] QVXSYS_API char const* t_uloc_getDefault() noexcept;
QVXSYS_API void t_u_cleanup() noexcept;
/// The code's name as ICU spells it, "U_BUFFER_OVERFLOW_ERROR" for instance.
[[nodiscard]] QVXSYS_API char const* t_u_errorName(ICUErrorCode code) noexcept;
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
[[nodiscard]] QVXSYS_API ICUConverter* t_ucnv_open(char const* name, ICUErrorCode* status) noexcept;
QVXSYS_API void t_ucnv_close(ICUConverter* converter) noexcept;
[[nodiscard]] QVXSYS_API char const* t_ucnv_getName(ICUConverter const* converter, ICUErrorCode* status) noexcept;
[[nodiscard]] QVXSYS_API char const* t_ucnv_getDefaultName() noexcept;
[[nodiscard]] QVXSYS_API std::int8_t t_ucnv_getMaxCharSize(ICUConverter const* converter) noexcept;
QVXSYS_API void t_ucnv_reset(ICUConverter* converter) noexcept;
QVXSYS_API char32_t t_ucnv_getNextUChar(ICUConverter* converter, char const** source, char const* limit,
                                        ICUErrorCode* status) noexcept;
QVXSYS_API std::int32_t t_ucnv_fromUChars(ICUConverter* converter, char* dest, std::int32_t capacity,
                                          char16_t const* src, std::int32_t length, ICUErrorCode* status) noexcept;
QVXSYS_API std::int32_t t_ucnv_toUChars(ICUConverter* converter, char16_t* dest, std::int32_t capacity, char const* src,
                                        std::int32_t length, ICUErrorCode* status) noexcept;
QVXSYS_API void t_ucnv_toUnicode(ICUConverter* converter, char16_t** target, char16_t const* targetLimit,
                                 char const** source, char const* sourceLimit, std::int32_t* offsets, bool flush,
                                 ICUErrorCode* status) noexcept;
/// Installs what is called for bytes that cannot be decoded. The callback either substitutes
/// (t_UCNV_TO_U_CALLBACK_SUBSTITUTE) or leaves the failed status as it is. The previous callback is not returned.
QVXSYS_API void t_ucnv_setToUCallBack(ICUConverter* converter, ICUToUnicodeCallback callback, void const* context,
                                      ICUErrorCode* status) noexcept;
/// Installs what is called for code points that cannot be encoded.
QVXSYS_API void t_ucnv_setFromUCallBack(ICUConverter* converter, ICUFromUnicodeCallback callback, void const* context,
                                        ICUErrorCode* status) noexcept;
QVXSYS_API void t_UCNV_TO_U_CALLBACK_SUBSTITUTE(void const* context, ICUToUnicodeArgs* args, char const* bytes,
                                                std::int32_t length, ICUConverterCallbackReason reason,
                                                ICUErrorCode* status) noexcept;
QVXSYS_API void t_UCNV_FROM_U_CALLBACK_SUBSTITUTE(void const* context, ICUFromUnicodeArgs* args, char16_t const* units,
                                                  std::int32_t length, char32_t codePoint,
                                                  ICUConverterCallbackReason reason, ICUErrorCode* status) noexcept;
/// @}

/// @name Charset detection
/// @{
[[nodiscard]] QVXSYS_API ICUCharsetDetector* t_ucsdet_open(ICUErrorCode* status) noexcept;
QVXSYS_API void t_ucsdet_close(ICUCharsetDetector* detector) noexcept;
/// The text is not copied: it must outlive the matches.
QVXSYS_API void t_ucsdet_setText(ICUCharsetDetector* detector, char const* text, std::int32_t length,
                                 ICUErrorCode* status) noexcept;
[[nodiscard]] QVXSYS_API ICUCharsetMatch const* t_ucsdet_detect(ICUCharsetDetector* detector,
                                                                ICUErrorCode* status) noexcept;
[[nodiscard]] QVXSYS_API char const* t_ucsdet_getName(ICUCharsetMatch const* match, ICUErrorCode* status) noexcept;
/// 0 to 100.
[[nodiscard]] QVXSYS_API std::int32_t t_ucsdet_getConfidence(ICUCharsetMatch const* match,
                                                             ICUErrorCode* status) noexcept;
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
