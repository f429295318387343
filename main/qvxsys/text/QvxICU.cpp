// The one source of the text layer that includes ICU.

#include <qvxsys/QvxICU.h>

#include <atomic>
#include <type_traits>

#include <unicode/uchar.h>
#include <unicode/uclean.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucsdet.h>
#include <unicode/uloc.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <qvxsys/TStringCore.h>

#include "IcuCleanup.h"

namespace QvxICU {
namespace {

static_assert(std::is_same_v<UChar, char16_t>);
static_assert(static_cast<int>(ICUProperty::PosixAlnum) == UCHAR_POSIX_ALNUM &&
              static_cast<int>(ICUProperty::PosixXDigit) == UCHAR_POSIX_XDIGIT &&
              static_cast<int>(ICUProperty::WhiteSpace) == UCHAR_WHITE_SPACE);
static_assert(static_cast<int>(ICUCharCategory::FinalPunctuation) == U_FINAL_PUNCTUATION);
static_assert(static_cast<int>(ICUErrorCode::NoWritePermission) == U_NO_WRITE_PERMISSION);
static_assert(static_cast<int>(ICUConverterCallbackReason::Clone) == UCNV_CLONE);

// Carries the caller's status through an ICU call and back; a null status stays null.
class Status
{
public:
    explicit Status(ICUErrorCode* status) noexcept
        : m_status(status), m_code(status != nullptr ? static_cast<UErrorCode>(*status) : U_ZERO_ERROR)
    {}
    Status(Status const&) = delete;
    Status& operator=(Status const&) = delete;
    ~Status()
    {
        if (m_status != nullptr) {
            *m_status = static_cast<ICUErrorCode>(m_code);
        }
    }
    operator UErrorCode*() noexcept { return m_status != nullptr ? &m_code : nullptr; }

private:
    ICUErrorCode* m_status;
    UErrorCode m_code;
};

UChar32 Icu(char32_t c) noexcept
{
    return static_cast<UChar32>(c);
}

UChar32 const* Icu(char32_t const* p) noexcept
{
    return reinterpret_cast<UChar32 const*>(p);
}

UChar32* Icu(char32_t* p) noexcept
{
    return reinterpret_cast<UChar32*>(p);
}

UConverter* Icu(ICUConverter* p) noexcept
{
    return reinterpret_cast<UConverter*>(p);
}

UConverter const* Icu(ICUConverter const* p) noexcept
{
    return reinterpret_cast<UConverter const*>(p);
}

UCharsetDetector* Icu(ICUCharsetDetector* p) noexcept
{
    return reinterpret_cast<UCharsetDetector*>(p);
}

UCharsetMatch const* Icu(ICUCharsetMatch const* p) noexcept
{
    return reinterpret_cast<UCharsetMatch const*>(p);
}

char32_t Own(UChar32 c) noexcept
{
    return static_cast<char32_t>(c);
}

// What is called before ICU's memory is freed.
constinit std::atomic<void (*)()> s_releases[8] = {};

// A UTF-8 code point is at most four bytes, so the size_t forms run ICU's int32 macros over a window of that size.
constexpr std::size_t kWindow = 8;

} // namespace

ICUCharCategory t_u_charType(char32_t c) noexcept
{
    return static_cast<ICUCharCategory>(u_charType(Icu(c)));
}

char32_t t_u_foldCase(char32_t c, std::uint32_t options) noexcept
{
    return Own(u_foldCase(Icu(c), options));
}

bool t_u_hasBinaryProperty(char32_t c, ICUProperty which) noexcept
{
    return u_hasBinaryProperty(Icu(c), static_cast<UProperty>(which)) == 1;
}

bool t_u_isUAlphabetic(char32_t c) noexcept
{
    return u_isUAlphabetic(Icu(c)) == 1;
}

bool t_u_isULowercase(char32_t c) noexcept
{
    return u_isULowercase(Icu(c)) == 1;
}

bool t_u_isUUppercase(char32_t c) noexcept
{
    return u_isUUppercase(Icu(c)) == 1;
}

bool t_u_isUWhiteSpace(char32_t c) noexcept
{
    return u_isUWhiteSpace(Icu(c)) == 1;
}

bool t_u_isWhitespace(char32_t c) noexcept
{
    return u_isWhitespace(Icu(c)) == 1;
}

bool t_u_isblank(char32_t c) noexcept
{
    return u_isblank(Icu(c)) == 1;
}

bool t_u_isdigit(char32_t c) noexcept
{
    return u_isdigit(Icu(c)) == 1;
}

bool t_u_ispunct(char32_t c) noexcept
{
    return u_ispunct(Icu(c)) == 1;
}

bool t_u_isxdigit(char32_t c) noexcept
{
    return u_isxdigit(Icu(c)) == 1;
}

char32_t t_u_tolower(char32_t c) noexcept
{
    return Own(u_tolower(Icu(c)));
}

char32_t t_u_toupper(char32_t c) noexcept
{
    return Own(u_toupper(Icu(c)));
}

std::int32_t t_u_strFoldCase(char16_t* dest, std::int32_t capacity, char16_t const* src, std::int32_t length,
                             std::uint32_t options, ICUErrorCode* status) noexcept
{
    return u_strFoldCase(dest, capacity, src, length, options, Status(status));
}

char16_t* t_u_strFromUTF32(char16_t* dest, std::int32_t capacity, std::int32_t* destLength, char32_t const* src,
                           std::int32_t length, ICUErrorCode* status) noexcept
{
    return u_strFromUTF32(dest, capacity, destLength, Icu(src), length, Status(status));
}

char16_t* t_u_strFromUTF32WithSub(char16_t* dest, std::int32_t capacity, std::int32_t* destLength, char32_t const* src,
                                  std::int32_t length, char32_t substitution, std::int32_t* substitutions,
                                  ICUErrorCode* status) noexcept
{
    return u_strFromUTF32WithSub(dest, capacity, destLength, Icu(src), length, Icu(substitution), substitutions,
                                 Status(status));
}

char16_t* t_u_strFromUTF8(char16_t* dest, std::int32_t capacity, std::int32_t* destLength, char const* src,
                          std::int32_t length, ICUErrorCode* status) noexcept
{
    return u_strFromUTF8(dest, capacity, destLength, src, length, Status(status));
}

char16_t* t_u_strFromUTF8WithSub(char16_t* dest, std::int32_t capacity, std::int32_t* destLength, char const* src,
                                 std::int32_t length, char32_t substitution, std::int32_t* substitutions,
                                 ICUErrorCode* status) noexcept
{
    return u_strFromUTF8WithSub(dest, capacity, destLength, src, length, Icu(substitution), substitutions,
                                Status(status));
}

std::int32_t t_u_strToLower(char16_t* dest, std::int32_t capacity, char16_t const* src, std::int32_t length,
                            char const* locale, ICUErrorCode* status) noexcept
{
    return u_strToLower(dest, capacity, src, length, locale, Status(status));
}

std::int32_t t_u_strToTitle(char16_t* dest, std::int32_t capacity, char16_t const* src, std::int32_t length,
                            ICUBreakIterator* titleIterator, char const* locale, ICUErrorCode* status) noexcept
{
    return u_strToTitle(dest, capacity, src, length, reinterpret_cast<UBreakIterator*>(titleIterator), locale,
                        Status(status));
}

std::int32_t t_u_strToUpper(char16_t* dest, std::int32_t capacity, char16_t const* src, std::int32_t length,
                            char const* locale, ICUErrorCode* status) noexcept
{
    return u_strToUpper(dest, capacity, src, length, locale, Status(status));
}

char32_t* t_u_strToUTF32(char32_t* dest, std::int32_t capacity, std::int32_t* destLength, char16_t const* src,
                         std::int32_t length, ICUErrorCode* status) noexcept
{
    return u_strToUTF32(Icu(dest), capacity, destLength, src, length, Status(status)) != nullptr ? dest : nullptr;
}

char32_t* t_u_strToUTF32WithSub(char32_t* dest, std::int32_t capacity, std::int32_t* destLength, char16_t const* src,
                                std::int32_t length, char32_t substitution, std::int32_t* substitutions,
                                ICUErrorCode* status) noexcept
{
    UChar32* const result = u_strToUTF32WithSub(Icu(dest), capacity, destLength, src, length, Icu(substitution),
                                                substitutions, Status(status));
    return result != nullptr ? dest : nullptr;
}

char* t_u_strToUTF8(char* dest, std::int32_t capacity, std::int32_t* destLength, char16_t const* src,
                    std::int32_t length, ICUErrorCode* status) noexcept
{
    return u_strToUTF8(dest, capacity, destLength, src, length, Status(status));
}

char* t_u_strToUTF8WithSub(char* dest, std::int32_t capacity, std::int32_t* destLength, char16_t const* src,
                           std::int32_t length, char32_t substitution, std::int32_t* substitutions,
                           ICUErrorCode* status) noexcept
{
    return u_strToUTF8WithSub(dest, capacity, destLength, src, length, Icu(substitution), substitutions,
                              Status(status));
}

std::int32_t t_u_strcasecmp(char16_t const* a, char16_t const* b, std::uint32_t options) noexcept
{
    return u_strcasecmp(a, b, options);
}

std::int32_t t_u_strcmp(char16_t const* a, char16_t const* b) noexcept
{
    return u_strcmp(a, b);
}

std::int32_t t_u_strncasecmp(char16_t const* a, char16_t const* b, std::int32_t n, std::uint32_t options) noexcept
{
    return u_strncasecmp(a, b, n, options);
}

std::int32_t t_u_strncmp(char16_t const* a, char16_t const* b, std::int32_t n) noexcept
{
    return u_strncmp(a, b, n);
}

char const* t_uloc_getDefault() noexcept
{
    return uloc_getDefault();
}

void BeforeCleanup(void (*release)()) noexcept
{
    for (std::atomic<void (*)()>& place : s_releases) {
        void (*free)() = nullptr;
        if (place.compare_exchange_strong(free, release)) {
            return;
        }
    }
}

void t_u_cleanup() noexcept
{
    for (std::atomic<void (*)()> const& place : s_releases) {
        if (void (*const release)() = place) {
            release();
        }
    }
    u_cleanup();
}

char const* t_u_errorName(ICUErrorCode code) noexcept
{
    return u_errorName(static_cast<UErrorCode>(code));
}

ICUConverter* t_ucnv_open(char const* name, ICUErrorCode* status) noexcept
{
    return reinterpret_cast<ICUConverter*>(ucnv_open(name, Status(status)));
}

void t_ucnv_close(ICUConverter* converter) noexcept
{
    ucnv_close(Icu(converter));
}

char const* t_ucnv_getName(ICUConverter const* converter, ICUErrorCode* status) noexcept
{
    return ucnv_getName(Icu(converter), Status(status));
}

char const* t_ucnv_getDefaultName() noexcept
{
    return ucnv_getDefaultName();
}

std::int8_t t_ucnv_getMaxCharSize(ICUConverter const* converter) noexcept
{
    return ucnv_getMaxCharSize(Icu(converter));
}

void t_ucnv_reset(ICUConverter* converter) noexcept
{
    ucnv_reset(Icu(converter));
}

char32_t t_ucnv_getNextUChar(ICUConverter* converter, char const** source, char const* limit,
                             ICUErrorCode* status) noexcept
{
    return Own(ucnv_getNextUChar(Icu(converter), source, limit, Status(status)));
}

std::int32_t t_ucnv_fromUChars(ICUConverter* converter, char* dest, std::int32_t capacity, char16_t const* src,
                               std::int32_t length, ICUErrorCode* status) noexcept
{
    return ucnv_fromUChars(Icu(converter), dest, capacity, src, length, Status(status));
}

std::int32_t t_ucnv_toUChars(ICUConverter* converter, char16_t* dest, std::int32_t capacity, char const* src,
                             std::int32_t length, ICUErrorCode* status) noexcept
{
    return ucnv_toUChars(Icu(converter), dest, capacity, src, length, Status(status));
}

void t_ucnv_toUnicode(ICUConverter* converter, char16_t** target, char16_t const* targetLimit, char const** source,
                      char const* sourceLimit, std::int32_t* offsets, bool flush, ICUErrorCode* status) noexcept
{
    ucnv_toUnicode(Icu(converter), target, targetLimit, source, sourceLimit, offsets, static_cast<UBool>(flush),
                   Status(status));
}

// ICU calls these function types with its own enumerations and structures. The library's ones have the same
// representation (int-sized enumerations, opaque pointers), as the static assertions above check for the values.
void t_ucnv_setToUCallBack(ICUConverter* converter, ICUToUnicodeCallback callback, void const* context,
                           ICUErrorCode* status) noexcept
{
    ucnv_setToUCallBack(Icu(converter), reinterpret_cast<UConverterToUCallback>(callback), context, nullptr, nullptr,
                        Status(status));
}

void t_ucnv_setFromUCallBack(ICUConverter* converter, ICUFromUnicodeCallback callback, void const* context,
                             ICUErrorCode* status) noexcept
{
    ucnv_setFromUCallBack(Icu(converter), reinterpret_cast<UConverterFromUCallback>(callback), context, nullptr,
                          nullptr, Status(status));
}

void t_UCNV_TO_U_CALLBACK_SUBSTITUTE(void const* context, ICUToUnicodeArgs* args, char const* bytes,
                                     std::int32_t length, ICUConverterCallbackReason reason,
                                     ICUErrorCode* status) noexcept
{
    UCNV_TO_U_CALLBACK_SUBSTITUTE(context, reinterpret_cast<UConverterToUnicodeArgs*>(args), bytes, length,
                                  static_cast<UConverterCallbackReason>(reason), Status(status));
}

void t_UCNV_FROM_U_CALLBACK_SUBSTITUTE(void const* context, ICUFromUnicodeArgs* args, char16_t const* units,
                                       std::int32_t length, char32_t codePoint, ICUConverterCallbackReason reason,
                                       ICUErrorCode* status) noexcept
{
    UCNV_FROM_U_CALLBACK_SUBSTITUTE(context, reinterpret_cast<UConverterFromUnicodeArgs*>(args), units, length,
                                    Icu(codePoint), static_cast<UConverterCallbackReason>(reason), Status(status));
}

ICUCharsetDetector* t_ucsdet_open(ICUErrorCode* status) noexcept
{
    return reinterpret_cast<ICUCharsetDetector*>(ucsdet_open(Status(status)));
}

void t_ucsdet_close(ICUCharsetDetector* detector) noexcept
{
    ucsdet_close(Icu(detector));
}

void t_ucsdet_setText(ICUCharsetDetector* detector, char const* text, std::int32_t length,
                      ICUErrorCode* status) noexcept
{
    ucsdet_setText(Icu(detector), text, length, Status(status));
}

ICUCharsetMatch const* t_ucsdet_detect(ICUCharsetDetector* detector, ICUErrorCode* status) noexcept
{
    return reinterpret_cast<ICUCharsetMatch const*>(ucsdet_detect(Icu(detector), Status(status)));
}

char const* t_ucsdet_getName(ICUCharsetMatch const* match, ICUErrorCode* status) noexcept
{
    return ucsdet_getName(Icu(match), Status(status));
}

std::int32_t t_ucsdet_getConfidence(ICUCharsetMatch const* match, ICUErrorCode* status) noexcept
{
    return ucsdet_getConfidence(Icu(match), Status(status));
}

void ICU16_FWD_1(char16_t const* s, int& i, int length) noexcept
{
    U16_FWD_1(s, i, length);
}

void ICU16_FWD_1(char16_t const* s, std::size_t& i, std::size_t length) noexcept
{
    U16_FWD_1(s, i, length);
}

void ICU16_BACK_1(char16_t const* s, int start, int& i) noexcept
{
    U16_BACK_1(s, start, i);
}

void ICU16_BACK_1(char16_t const* s, std::size_t start, std::size_t& i) noexcept
{
    U16_BACK_1(s, start, i);
}

void ICU8_FWD_1(char const* s, int& i, int length) noexcept
{
    std::int32_t at = i;
    auto const* const bytes = reinterpret_cast<std::uint8_t const*>(s);
    U8_FWD_1(bytes, at, length);
    i = at;
}

void ICU8_FWD_1(char const* s, std::size_t& i, std::size_t length) noexcept
{
    // A terminated text (length -1) wraps to a window that the terminator ends earlier.
    std::size_t const left = length - i;
    int at = 0;
    ICU8_FWD_1(s + i, at, left < kWindow ? static_cast<int>(left) : static_cast<int>(kWindow));
    i += static_cast<std::size_t>(at);
}

void ICU8_BACK_1(char const* s, int start, int& i) noexcept
{
    std::int32_t at = i;
    auto const* const bytes = reinterpret_cast<std::uint8_t const*>(s);
    U8_BACK_1(bytes, start, at);
    i = at;
}

void ICU8_BACK_1(char const* s, std::size_t start, std::size_t& i) noexcept
{
    std::size_t const window = i - start < kWindow ? i - start : kWindow;
    std::size_t const base = i - window;
    int at = static_cast<int>(window);
    ICU8_BACK_1(s + base, 0, at);
    i = base + static_cast<std::size_t>(at);
}

namespace {

constinit std::atomic<int> g_icuVersion{4};

} // namespace

int getIcuVersion() noexcept
{
    return g_icuVersion.load(std::memory_order_relaxed);
}

void setIcuVersion(int version) noexcept
{
    g_icuVersion.store(version, std::memory_order_relaxed);
}

std::string installedVersion()
{
    UVersionInfo version;
    char text[U_MAX_VERSION_STRING_LENGTH];
    u_getVersion(version);
    u_versionToString(version, text);
    return text;
}

std::string unicodeVersion()
{
    UVersionInfo version;
    char text[U_MAX_VERSION_STRING_LENGTH];
    u_getUnicodeVersion(version);
    u_versionToString(version, text);
    return text;
}

TStringCore const& t_getIgnoreDigitsRule()
{
    // Never destroyed: threads may still ask while the process ends.
    static TStringCore const& listed = *new TStringCore(u"&'0'='1'='2'='3'='4'='5'='6'='7'='8'='9'<[variable top]");
    static TStringCore const& starred = *new TStringCore(u"&\0=*0-9", 7);
    return getIcuVersion() == 4 ? listed : starred;
}

} // namespace QvxICU
