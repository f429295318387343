// The one source of the text layer that includes ICU.

#include <atomic>
#include <type_traits>

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include "IcuForward.h"

#include <qvxsys/QvxICU.h> // its table lines are definitions from here on

#include <qvxsys/TStringCore.h>

#include "IcuCleanup.h"

static_assert(std::is_same_v<UChar, char16_t>);

namespace QvxICU {
namespace {

// A UTF-8 code point is at most four bytes, so the size_t forms run ICU's int32 macros over a window of that size.
constexpr std::size_t kWindow = 8;

// What is called before ICU's memory is freed.
constinit std::atomic<void (*)()> s_releases[8] = {};

} // namespace

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
