// toLower and toUpper: ICU's full case mapping, with tables for what is simple.
//
// Most characters map to one unit whatever stands around them and whatever the language. For those a table of 64 K
// entries per direction, filled from ICU entry by entry at first use, has the result; ASCII is mapped in vectors. All
// else makes the whole text go through ICU:
// - characters whose mapping in the root locale is not one unit (U+00DF, U+0130, ligatures ...),
// - U+03A3, whose small form depends on what stands around it,
// - high surrogates of a block with cased letters (Deseret and others); the surrogates of all other blocks map to
//   themselves, so that emoji need no ICU,
// - text with cased characters where the locale has mappings of its own: Turkish, Azerbaijani, Lithuanian, Greek,
//   Armenian (ICU's ucase.h). The locale, ICU's default one if none was given, is looked at when the first character
//   turns up that one of these maps in its own way: ICU locks a mutex to tell its default, which any code may change at
//   any time, so the answer cannot be kept. ASCII without the letter i or I needs none; a long text looks at once,
//   which costs less than watching out for that letter.

#include <qvxsys/TTextReading.h>

#include <algorithm>
#include <atomic>
#include <string_view>

#include <emmintrin.h>

#include <qvxsys/QvxICU.h>
#include <qvxsys/TStringCore.h>

#include "StringLimits.h"

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

// Whether a locale's name has this language.
bool HasLanguage(char const* name, std::string_view language) noexcept
{
    for (char const c : language) {
        if (*name++ != c) {
            return false;
        }
    }
    return *name == '\0' || *name == '_' || *name == '-' || *name == '@' || *name == '.';
}

// True when the locale (null is ICU's default one) maps case in its own way.
bool IsSpecial(char const* locale) noexcept
{
    char const* const name = locale != nullptr ? locale : t_uloc_getDefault();
    switch (name[0] == '\0' ? 0 : name[0] << 8 | name[1]) {
    case 't' << 8 | 'r':
    case 'a' << 8 | 'z':
    case 'l' << 8 | 't':
    case 'e' << 8 | 'l':
    case 'h' << 8 | 'y':
    case 't' << 8 | 'u':
    case 'l' << 8 | 'i':
        break;
    default:
        return false;
    }
    auto const is = [name](std::string_view language) { return HasLanguage(name, language); };
    return is("tr") || is("tur") || is("az") || is("aze") || is("lt") || is("lit") || is("el") || is("ell") ||
           is("hy") || is("hye");
}

enum class Outcome { Mapped, NeedsLocale, NotAscii };

// Maps Vectors x 8 units, the vectors `stride` units apart, when all of them are ASCII and, until the locale is known,
// none is the letter that depends on it; else writes nothing.
template<class Direction, int Vectors>
[[gnu::always_inline]] inline Outcome MapAscii(char16_t const* from, char16_t* to, std::size_t stride,
                                               bool localeIsKnown) noexcept
{
    __m128i units[Vectors];
    __m128i all = _mm_setzero_si128();
    __m128i locale = _mm_setzero_si128();
#pragma GCC unroll 4
    for (unsigned i = 0; i < Vectors; ++i) {
        units[i] = _mm_loadu_si128(reinterpret_cast<__m128i const*>(from + i * stride));
        all = _mm_or_si128(all, units[i]);
        locale = _mm_or_si128(locale, _mm_cmpeq_epi16(units[i], _mm_set1_epi16(Direction::kLocaleLetter)));
    }
    __m128i const high = _mm_and_si128(all, _mm_set1_epi16(static_cast<short>(0xFF80)));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(high, _mm_setzero_si128())) != 0xFFFF) {
        return Outcome::NotAscii;
    }
    if (!localeIsKnown && _mm_movemask_epi8(locale) != 0) {
        return Outcome::NeedsLocale;
    }
#pragma GCC unroll 4
    for (unsigned i = 0; i < Vectors; ++i) {
        // The last 26 values of the signed range.
        __m128i const place = _mm_add_epi16(units[i], _mm_set1_epi16(0x7FFF - 25 - Direction::kFirst));
        __m128i const isLetter = _mm_cmpgt_epi16(place, _mm_set1_epi16(0x7FFF - 26));
        __m128i const mapped = _mm_xor_si128(units[i], _mm_and_si128(isLetter, _mm_set1_epi16(0x20)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i * stride), mapped);
    }
    return Outcome::Mapped;
}

char16_t Load(std::atomic<char16_t> const* table, char16_t c) noexcept
{
    return static_cast<char16_t>(table[c].load(std::memory_order_relaxed) - 1);
}

// Maps units one by one, filling in what the table does not know; false when one is special.
template<class Direction>
[[gnu::noinline]] bool MapByFilling(char16_t const* from, std::size_t n, char16_t* to) noexcept
{
    std::atomic<char16_t>* const table = Direction::Table();
    for (std::size_t i = 0; i < n; ++i) {
        if (Load(table, from[i]) >= 0xFFFE) {
            // Threads that fill an entry at once write the same value, and nothing else is published by it.
            char16_t const entry = Mapped<Direction>(from[i]);
            table[from[i]].store(entry, std::memory_order_relaxed);
            if (entry == kSpecial) {
                return false;
            }
        }
        to[i] = Load(table, from[i]);
    }
    return true;
}

// Maps Vectors x 8 units by the table, as if it knew them all; false when it did not, or one is special.
template<class Direction, int Vectors>
[[gnu::always_inline]] inline bool MapByTable(char16_t const* from, char16_t* to, std::size_t stride) noexcept
{
    std::atomic<char16_t> const* const table = Direction::Table();
    __m128i failed = _mm_setzero_si128();
    for (unsigned i = 0; i < Vectors; ++i) {
        char16_t const* const p = from + i * stride;
        auto const entry = [=](unsigned k) { return static_cast<short>(table[p[k]].load(std::memory_order_relaxed)); };
        __m128i const entries =
            _mm_setr_epi16(entry(0), entry(1), entry(2), entry(3), entry(4), entry(5), entry(6), entry(7));
        __m128i const mapped = _mm_sub_epi16(entries, _mm_set1_epi16(1));
        // At least 0xFFFE: all that exceeds 0xFFFD.
        failed = _mm_or_si128(failed, _mm_subs_epu16(mapped, _mm_set1_epi16(static_cast<short>(0xFFFD))));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i * stride), mapped);
    }
    return _mm_movemask_epi8(_mm_cmpeq_epi16(failed, _mm_setzero_si128())) == 0xFFFF;
}

// Where the text is mapped one unit to one; false when it needs ICU, `to` has been written to then.
template<class Direction>
class SimpleMapping
{
public:
    explicit SimpleMapping(char const* locale) noexcept : m_locale(locale) {}

    bool Map(char16_t const* from, std::size_t n, char16_t* to) noexcept
    {
        if (n < 8) {
            return Few(from, n, to);
        }
        if (n >= kLong) {
            static_cast<void>(LearnLocale());
        }
        std::size_t i = 0;
        for (; n - i >= 32; i += 32) {
            if (!Block<4>(from + i, to + i, 8)) {
                return false;
            }
        }
        // The rest: two vectors that overlap where they must, with the units before where there are not as many.
        for (; n - i > 16; i += 16) {
            if (!Block<2>(from + i, to + i, 8)) {
                return false;
            }
        }
        std::size_t const start = std::min(i, n - 8);
        return i == n || Block<2>(from + start, to + start, n - 8 - start);
    }

private:
    static constexpr std::size_t kLong = 2048;

    template<int Vectors>
    [[gnu::always_inline]] bool Block(char16_t const* from, char16_t* to, std::size_t stride) noexcept
    {
        auto const outcome = MapAscii<Direction, Vectors>(from, to, stride, m_localeIsKnown);
        return outcome == Outcome::Mapped || Other<Vectors>(outcome, from, to, stride);
    }
    template<int Vectors>
    [[gnu::noinline]] bool Other(Outcome outcome, char16_t const* from, char16_t* to, std::size_t stride) noexcept
    {
        if (!LearnLocale()) {
            return false;
        }
        if (outcome == Outcome::NeedsLocale) {
            return MapAscii<Direction, Vectors>(from, to, stride, true) == Outcome::Mapped;
        }
        return MapByTable<Direction, Vectors>(from, to, stride) ||
               MapByFilling<Direction>(from, 8 + (Vectors - 1) * stride, to);
    }
    bool Few(char16_t const* from, std::size_t n, char16_t* to) noexcept
    {
        auto const needsLocale = [](char16_t c) { return c >= 0x80 || c == Direction::kLocaleLetter; };
        return (!std::any_of(from, from + n, needsLocale) || LearnLocale()) && MapByFilling<Direction>(from, n, to);
    }
    bool LearnLocale() noexcept
    {
        m_localeIsKnown = m_localeIsKnown || !IsSpecial(m_locale);
        return m_localeIsKnown;
    }

    char const* m_locale;
    bool m_localeIsKnown = false; // and has no mappings of its own
};

// A string as long as the text, to be written over.
[[gnu::always_inline]] inline TStringCore RoomFor(TStringView text, int length)
{
    if (length <= TStringCore::kInlineLength) {
        return TStringCore(text.data(), length); // copied by two moves, without a call
    }
    TStringCore result;
    result.reserve(length);
    result.resize(length);
    return result;
}

template<class Direction>
TStringCore MapCase(TStringView text, char const* locale)
{
    int const length = qvxsys::text::CheckedUnits(text.size());
    TStringCore result = RoomFor(text, length);
    if (SimpleMapping<Direction>(locale).Map(text.data(), text.size(), result.data())) {
        return result;
    }
    auto status = ICUErrorCode::ZeroError;
    int mapped = Direction::kMap(result.data(), result.capacity(), text.data(), length, locale, &status);
    if (mapped >= result.capacity()) {
        result.reserve(mapped);
        status = ICUErrorCode::ZeroError;
        mapped = Direction::kMap(result.data(), result.capacity(), text.data(), length, locale, &status);
    }
    result.resize(mapped);
    return result;
}

} // namespace

namespace qvxsys::detail {

TStringCore ToLower(TStringView text, char const* locale)
{
    return MapCase<Lower>(text, locale);
}

TStringCore ToUpper(TStringView text, char const* locale)
{
    return MapCase<Upper>(text, locale);
}

} // namespace qvxsys::detail
