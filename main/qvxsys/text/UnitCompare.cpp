// Comparison in two gears. Vectors skip what is equal, or differs in nothing but the case of ASCII letters; where they
// stop, single units decide, if need be by the folding table. Text in which every letter differs in case and none is
// ASCII would stop the vectors at once every time, so the table is given longer and longer stretches.

#include "UnitCompare.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <qvxsys/TCType.h>

#include "kernels/Kernels.h"

#include <emmintrin.h>

namespace qvxsys::text {
namespace {

constexpr std::size_t kBlock = 8; // units of one 128-bit vector, which every x86-64 has

// Stretches for the table, in units.
constexpr std::size_t kFirstStretch = 16;
constexpr std::size_t kLongestStretch = 512;

template<bool Folded>
std::size_t LongStop(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    return Folded ? kernels().firstStopAsciiFolded(a, b, n) : kernels().firstStop(a, b, n);
}

template<bool Folded>
bool IsStop(char16_t a, char16_t b) noexcept
{
    unsigned const lower = a | 0x20u;
    bool const same = a == b || (Folded && (a ^ b) == 0x20 && lower - u'a' < 26);
    return !same || a == 0;
}

/// The stops in eight units, as a mask of two bits a unit.
template<bool Folded>
[[gnu::always_inline]] inline unsigned StopsInBlock(char16_t const* a, char16_t const* b) noexcept
{
    __m128i const left = _mm_loadu_si128(reinterpret_cast<__m128i const*>(a));
    __m128i const right = _mm_loadu_si128(reinterpret_cast<__m128i const*>(b));
    __m128i same = _mm_cmpeq_epi16(left, right);
    if constexpr (Folded) {
        // "a".."z" are moved to the top of the signed range.
        __m128i const caseBit = _mm_set1_epi16(0x20);
        __m128i const lower = _mm_add_epi16(_mm_or_si128(left, caseBit), _mm_set1_epi16(0x7FFF - u'z'));
        __m128i const onlyCase = _mm_cmpeq_epi16(_mm_xor_si128(left, right), caseBit);
        same = _mm_or_si128(same, _mm_and_si128(onlyCase, _mm_cmpgt_epi16(lower, _mm_set1_epi16(0x7FFF - 26))));
    }
    __m128i const stops = _mm_cmpeq_epi16(_mm_and_si128(same, left), _mm_setzero_si128());
    return static_cast<unsigned>(_mm_movemask_epi8(stops));
}

std::size_t FirstOf(unsigned mask) noexcept
{
    return static_cast<unsigned>(__builtin_ctz(mask)) / 2;
}

/// The first stop in n units, n if there is none. Most comparisons are decided in the first block.
template<bool Folded>
[[gnu::always_inline]] inline std::size_t FirstStop(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    if (n >= kBlock) {
        if (unsigned const stops = StopsInBlock<Folded>(a, b); stops != 0) {
            return FirstOf(stops);
        }
        if (n > 4 * kBlock) {
            return kBlock + LongStop<Folded>(a + kBlock, b + kBlock, n - kBlock);
        }
        for (std::size_t i = kBlock; i < n; i += kBlock) {
            i = std::min(i, n - kBlock);
            if (unsigned const stops = StopsInBlock<Folded>(a + i, b + i); stops != 0) {
                return i + FirstOf(stops);
            }
        }
        return n;
    }
    std::size_t i = 0;
    while (i < n && !IsStop<Folded>(a[i], b[i])) {
        ++i;
    }
    return i;
}

/// The units from p to the end of its page, rounded down.
std::size_t UnitsToPageEnd(char16_t const* p) noexcept
{
    constexpr std::size_t page = 4096; // the smallest there is
    return (page - reinterpret_cast<std::uintptr_t>(p) % page) / sizeof(char16_t);
}

/// The same for texts that may end, with a terminator, before n units. Blocks reach behind a terminator, but never into
/// the next page. The address sanitizer cannot know that this is harmless, so it is told to look away here.
template<bool Folded>
__attribute__((no_sanitize("address"))) std::size_t FirstStopTerminated(char16_t const* a, char16_t const* b,
                                                                        std::size_t n) noexcept
{
    for (std::size_t i = 0; i < n;) {
        std::size_t const end = i + std::min({UnitsToPageEnd(a + i), UnitsToPageEnd(b + i), n - i});
        for (; end - i >= kBlock; i += kBlock) {
            if (unsigned const stops = StopsInBlock<Folded>(a + i, b + i); stops != 0) {
                return i + FirstOf(stops);
            }
        }
        // At least one unit, as one that lies across the border of two pages is in neither.
        for (std::size_t const last = std::min(std::max(end, i + 1), n); i < last; ++i) {
            if (IsStop<Folded>(a[i], b[i])) {
                return i;
            }
        }
    }
    return n;
}

int SignOf(char16_t left, char16_t right) noexcept
{
    return left < right ? -1 : left > right ? 1 : 0;
}

/// Folded comparison of n units, where skip(i) is the first stop from i on. A 0 unit ends it if ZeroEnds.
template<bool ZeroEnds, class Skip>
[[gnu::always_inline]] inline int CompareByTable(char16_t const* a, char16_t const* b, std::size_t n,
                                                 Skip skip) noexcept
{
    std::size_t stretch = kFirstStretch;
    for (std::size_t i = 0;;) {
        std::size_t const stop = skip(i);
        if (stop == n) {
            return 0;
        }
        stretch = stop - i < kBlock ? std::min(2 * stretch, kLongestStretch) : kFirstStretch;
        i = stop;
        for (std::size_t const end = i + std::min(stretch, n - i); i < end; ++i) {
            char16_t const left = TCType::FoldCase(a[i]);
            char16_t const right = TCType::FoldCase(b[i]);
            if (left != right) {
                return SignOf(left, right);
            }
            if (ZeroEnds && left == 0) {
                return 0;
            }
        }
    }
}

/// Two loads of a whole T that overlap where they must.
template<class T>
bool EqualEnds(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    constexpr std::size_t units = sizeof(T) / sizeof(char16_t);
    auto const at = [](char16_t const* p) {
        T value;
        std::memcpy(&value, p, sizeof value);
        return value;
    };
    return ((at(a) ^ at(b)) | (at(a + n - units) ^ at(b + n - units))) == 0;
}

} // namespace

int CompareUnits(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    std::size_t const stop = FirstStop<false>(a, b, n);
    return stop == n ? 0 : SignOf(a[stop], b[stop]);
}

int CompareUnitsFolded(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    return CompareByTable<true>(a, b, n, [=](std::size_t i) { return i + FirstStop<true>(a + i, b + i, n - i); });
}

int CompareTerminated(char16_t const* a, char16_t const* b, std::size_t most) noexcept
{
    std::size_t const stop = FirstStopTerminated<false>(a, b, most);
    return stop == most ? 0 : SignOf(a[stop], b[stop]);
}

int CompareTerminatedFolded(char16_t const* a, char16_t const* b, std::size_t most) noexcept
{
    return CompareByTable<true>(a, b, most,
                                [=](std::size_t i) { return i + FirstStopTerminated<true>(a + i, b + i, most - i); });
}

bool EqualUnits(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    if (n > kBlock) {
        return std::memcmp(a, b, n * sizeof(char16_t)) == 0;
    }
    if (n >= 4) {
        return EqualEnds<std::uint64_t>(a, b, n);
    }
    return n == 0 || (n == 1 ? *a == *b : EqualEnds<std::uint32_t>(a, b, n));
}

bool EqualUnitsFolded(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    return CompareByTable<false>(a, b, n, [=](std::size_t i) { return i + FirstStop<true>(a + i, b + i, n - i); }) == 0;
}

} // namespace qvxsys::text
