// toLower and toUpper: ICU's full case mapping, with tables for what is simple.
//
// Most characters map to one unit whatever stands around them and whatever the language. For those a table of 64 K
// entries per direction, filled from ICU entry by entry at first use, has the result; ASCII is mapped in vectors. All
// else makes the whole text go through ICU:
// - characters whose mapping in the root locale is not one unit (U+00DF, U+0130, ligatures ...),
// - U+03A3, whose small form depends on what stands around it,
// - high surrogates of a block with cased letters (Deseret and others); the surrogates of all other blocks map to
//   themselves, so that emoji need no ICU,
// - text with cased characters where ICU's default locale has mappings of its own: Turkish, Azerbaijani, Lithuanian,
//   Greek, Armenian (ICU's ucase.h). The default locale is looked at when the first character turns up that one of
//   these maps in its own way; ASCII without the letter i or I never needs it.

#include <qvxsys/TTextReading.h>

#include <algorithm>
#include <atomic>
#include <cstring>

#include <emmintrin.h>

#include <qvxsys/QvxICU.h>
#include <qvxsys/TStringCore.h>

namespace {

using namespace QvxICU;

using MapFunction = std::int32_t (*)(char16_t*, std::int32_t, char16_t const*, std::int32_t, char const*,
                                     ICUErrorCode*) noexcept;

// An entry is the mapped unit plus one; 0 is not known yet. Less one, those two and U+FFFF, which therefore takes the
// long way, are the two highest values.
constexpr char16_t kSpecial = 0xFFFF;
constinit std::atomic<char16_t> s_lower[0x10000] = {};
constinit std::atomic<char16_t> s_upper[0x10000] = {};

struct Lower
{
    static constexpr char16_t kFirst = u'A';        // of the ASCII letters that change
    static constexpr char16_t kLocaleLetter = u'I'; // whose mapping depends on the locale
    static constexpr MapFunction kMap = t_u_strToLower;
    static std::atomic<char16_t>* Table() noexcept { return s_lower; }
    static bool DependsOnContext(char16_t c) noexcept { return c == 0x03A3; }
};

struct Upper
{
    static constexpr char16_t kFirst = u'a';
    static constexpr char16_t kLocaleLetter = u'i';
    static constexpr MapFunction kMap = t_u_strToUpper;
    static std::atomic<char16_t>* Table() noexcept { return s_upper; }
    static bool DependsOnContext(char16_t) noexcept { return false; }
};

// Whether the root locale maps a text to itself.
template<class Direction>
bool MapsToItself(char16_t const* units, int n) noexcept
{
    char16_t mapped[8];
    auto status = ICUErrorCode::ZeroError;
    int const length = Direction::kMap(mapped, 8, units, n, "", &status);
    return length == n && std::equal(units, units + n, mapped);
}

template<class Direction>
char16_t Mapped(char16_t c) noexcept
{
    if (CharacterUtils::IsHighSurrogate(c)) {
        for (int low = 0xDC00; low < 0xE000; ++low) {
            char16_t const pair[] = {c, static_cast<char16_t>(low)};
            if (!MapsToItself<Direction>(pair, 2)) {
                return kSpecial;
            }
        }
        return static_cast<char16_t>(c + 1);
    }
    char16_t mapped[8];
    auto status = ICUErrorCode::ZeroError;
    int const length = Direction::kMap(mapped, 8, &c, 1, "", &status);
    bool const simple = length == 1 && ICU_SUCCESS(status) && !Direction::DependsOnContext(c) && mapped[0] < 0xFFFE;
    return simple ? static_cast<char16_t>(mapped[0] + 1) : kSpecial;
}

// True when ICU's default locale maps case in its own way.
bool DefaultLocaleIsSpecial() noexcept
{
    char const* const name = t_uloc_getDefault();
    std::size_t const length = std::strcspn(name, "_-@.");
    for (char const* const language : {"tr", "tur", "az", "aze", "lt", "lit", "el", "ell", "hy", "hye"}) {
        if (std::strlen(language) == length && std::strncmp(name, language, length) == 0) {
            return true;
        }
    }
    return false;
}

// Maps eight ASCII units; false, with nothing written, when some are not ASCII or need the locale.
template<class Direction>
bool MapAscii(char16_t const* from, char16_t* to, bool localeIsKnown) noexcept
{
    __m128i const c = _mm_loadu_si128(reinterpret_cast<__m128i const*>(from));
    __m128i const high = _mm_and_si128(c, _mm_set1_epi16(static_cast<short>(0xFF80)));
    __m128i const locale =
        localeIsKnown ? _mm_setzero_si128() : _mm_cmpeq_epi16(c, _mm_set1_epi16(Direction::kLocaleLetter));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_or_si128(high, locale), _mm_setzero_si128())) != 0xFFFF) {
        return false;
    }
    __m128i const fromFirst = _mm_sub_epi16(c, _mm_set1_epi16(Direction::kFirst));
    __m128i const isLetter = _mm_cmpeq_epi16(_mm_subs_epu16(fromFirst, _mm_set1_epi16(25)), _mm_setzero_si128());
    __m128i const mapped = _mm_xor_si128(c, _mm_and_si128(isLetter, _mm_set1_epi16(0x20)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), mapped);
    return true;
}

// Maps one unit by the table; false when it is special.
template<class Direction>
bool MapUnit(char16_t from, char16_t* to) noexcept
{
    std::atomic<char16_t>& entry = Direction::Table()[from];
    auto mapped = static_cast<char16_t>(entry.load(std::memory_order_relaxed) - 1);
    if (mapped >= 0xFFFE) [[unlikely]] {
        char16_t const known = Mapped<Direction>(from);
        // Threads that fill an entry at once write the same value, and nothing else is published by it.
        entry.store(known, std::memory_order_relaxed);
        mapped = static_cast<char16_t>(known - 1);
        if (known == kSpecial) {
            return false;
        }
    }
    *to = mapped;
    return true;
}

// False when the text needs ICU; `to` has then been written to.
template<class Direction>
bool MapSimple(char16_t const* from, std::size_t n, char16_t* to) noexcept
{
    constexpr std::size_t kStep = 8;
    bool localeIsKnown = false;
    for (std::size_t i = 0; i < n;) {
        if (n - i >= kStep && MapAscii<Direction>(from + i, to + i, localeIsKnown)) {
            i += kStep;
            continue;
        }
        if (n >= kStep && n - i < kStep && MapAscii<Direction>(from + n - kStep, to + n - kStep, localeIsKnown)) {
            return true; // the rest, and some units before it once more
        }
        std::size_t const end = std::min(i + kStep, n);
        for (; i < end; ++i) {
            if (!localeIsKnown && (from[i] >= 0x80 || from[i] == Direction::kLocaleLetter)) {
                if (DefaultLocaleIsSpecial()) {
                    return false;
                }
                localeIsKnown = true;
            }
            if (!MapUnit<Direction>(from[i], to + i)) {
                return false;
            }
        }
    }
    return true;
}

template<class Direction>
TStringCore MapCase(TStringView text)
{
    int const length = text.length();
    TStringCore result;
    result.resize(length);
    if (MapSimple<Direction>(text.data(), text.size(), result.data())) {
        return result;
    }
    auto status = ICUErrorCode::ZeroError;
    int mapped = Direction::kMap(result.data(), result.capacity(), text.data(), length, nullptr, &status);
    if (mapped >= result.capacity()) {
        result.resize(mapped);
        status = ICUErrorCode::ZeroError;
        mapped = Direction::kMap(result.data(), result.capacity(), text.data(), length, nullptr, &status);
    }
    result.resize(mapped);
    return result;
}

} // namespace

namespace qvxsys::detail {

TStringCore ToLower(TStringView text)
{
    return MapCase<Lower>(text);
}

TStringCore ToUpper(TStringView text)
{
    return MapCase<Upper>(text);
}

} // namespace qvxsys::detail
