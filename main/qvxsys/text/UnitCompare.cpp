// Comparison in two gears. Vectors skip what is equal, or differs in nothing but case, as far as that is simple: a unit
// and its other case are a fixed distance apart in ASCII, and in most of the other scripts that have cases. Which
// distance, and from where to where, is found out from the folding table when the need arises, and remembered for the
// comparisons to come, since texts at one time tend to be of one script.
//
// Where the vectors stop, single units decide, by the table. Text that stops them all the time is given to the table
// in longer and longer stretches.

#include "UnitCompare.h"

#include <algorithm>
#include <atomic>
#include <cstdint>

#include <qvxsys/TCType.h>
#include <qvxsys/TextComparison.h>

#include "kernels/Kernels.h"

#include <emmintrin.h>

namespace qvxsys::text {
namespace {

constexpr std::size_t kBlock = 8; // units of one 128-bit vector, which every x86-64 has

// Stretches for the table, in units.
constexpr std::size_t kFirstStretch = 16;
constexpr std::size_t kLongestStretch = 512;

// A run worth remembering, and how far to look for one.
constexpr unsigned kShortestRun = 8;
constexpr unsigned kLongestRun = 64;

/// A run, its three numbers side by side: low, count, distance, from the lowest bits up. 0 is an empty one.
using PackedRun = std::uint64_t;

// The run that was found last. Whichever is read here serves: threads need not agree.
constinit std::atomic<PackedRun> s_lastRun{0};

CaseRun Unpacked(PackedRun run) noexcept
{
    return {static_cast<char16_t>(run), static_cast<char16_t>(run >> 16), static_cast<char16_t>(run >> 32)};
}

/// The run that two different units belong to which fold alike, remembered for others; 0 if it is too short to be of
/// use.
PackedRun RunAround(char16_t a, char16_t b) noexcept
{
    unsigned const distance = a < b ? b - a : a - b;
    auto const alike = [distance](unsigned c) {
        return TCType::FoldCase(static_cast<char16_t>(c)) == TCType::FoldCase(static_cast<char16_t>(c + distance));
    };
    unsigned low = std::min(a, b);
    unsigned high = low + 1;
    while (low > 1 && high - low < kLongestRun && alike(low - 1)) {
        --low;
    }
    while (high + distance <= 0xFFFF && high - low < kLongestRun && alike(high)) {
        ++high;
    }
    if (high - low < kShortestRun) {
        return 0;
    }
    PackedRun const run = low | PackedRun{high - low} << 16 | PackedRun{distance} << 32;
    s_lastRun.store(run, std::memory_order_relaxed);
    return run;
}

/// Where the units of the vectors are not equal by the mask `same`, or 0; two bits a unit.
[[gnu::always_inline]] inline unsigned NotOrZero(__m128i same, __m128i units) noexcept
{
    __m128i const stops = _mm_cmpeq_epi16(_mm_and_si128(same, units), _mm_setzero_si128());
    return static_cast<unsigned>(_mm_movemask_epi8(stops));
}

/// What counts as equal when units are skipped.
struct Same
{
    std::size_t LongStop(char16_t const* a, char16_t const* b, std::size_t n) const noexcept
    {
        return kernels().firstStop(a, b, n);
    }
    [[gnu::always_inline]] unsigned Stops(__m128i a, __m128i b) const noexcept
    {
        return NotOrZero(_mm_cmpeq_epi16(a, b), a);
    }
};

struct Alike
{
    PackedRun run;

    std::size_t LongStop(char16_t const* a, char16_t const* b, std::size_t n) const noexcept
    {
        return kernels().firstStopFolded(a, b, n, Unpacked(run));
    }
    /// One step after the other: most text is equal, or ASCII.
    [[gnu::always_inline]] unsigned Stops(__m128i a, __m128i b) const noexcept
    {
        return NotOrZero(_mm_cmpeq_epi16(a, b), a) == 0 ? 0 : StopsBeyondEqual(a, b);
    }
    [[gnu::always_inline]] unsigned StopsBeyondEqual(__m128i a, __m128i b) const noexcept
    {
        // The two cases of an ASCII letter differ in one bit.
        __m128i const bit = _mm_set1_epi16(kAsciiLetters.distance);
        __m128i const different = _mm_xor_si128(a, b);
        __m128i const equal = _mm_cmpeq_epi16(different, _mm_setzero_si128());
        __m128i const letters = _mm_and_si128(
            _mm_cmpeq_epi16(different, bit),
            InRun(_mm_andnot_si128(bit, a), _mm_set1_epi16(kAsciiLetters.low), _mm_set1_epi16(kAsciiLetters.count)));
        __m128i const ascii = _mm_or_si128(equal, letters);
        unsigned const stops = NotOrZero(ascii, a);
        if (stops == 0 || run == 0) {
            return stops;
        }
        __m128i const packed = _mm_cvtsi64_si128(static_cast<long long>(run));
        __m128i const above = _mm_subs_epu16(a, b);
        __m128i const distance = _mm_or_si128(above, _mm_subs_epu16(b, a));
        __m128i const pairs =
            _mm_and_si128(_mm_cmpeq_epi16(distance, Everywhere<2>(packed)),
                          InRun(_mm_sub_epi16(a, above), Everywhere<0>(packed), Everywhere<1>(packed)));
        return NotOrZero(_mm_or_si128(ascii, pairs), a);
    }

private:
    /// One of the lower four words in all eight.
    template<int Word>
    [[gnu::always_inline]] static __m128i Everywhere(__m128i v) noexcept
    {
        __m128i const lower = _mm_shufflelo_epi16(v, Word * 0x55);
        return _mm_unpacklo_epi64(lower, lower);
    }
    [[gnu::always_inline]] static __m128i InRun(__m128i units, __m128i low, __m128i count) noexcept
    {
        // Moved to the bottom of the signed range, where signed comparison serves.
        __m128i const bottom = _mm_set1_epi16(-0x8000);
        return _mm_cmplt_epi16(_mm_xor_si128(_mm_sub_epi16(units, low), bottom), _mm_xor_si128(count, bottom));
    }
};

[[gnu::always_inline]] inline __m128i Eight(char16_t const* p) noexcept
{
    return _mm_loadu_si128(reinterpret_cast<__m128i const*>(p));
}

/// The stops in eight units.
template<class Skipped>
[[gnu::always_inline]] inline unsigned StopsInBlock(char16_t const* a, char16_t const* b, Skipped skipped) noexcept
{
    return skipped.Stops(Eight(a), Eight(b));
}

/// Four to eight units as two halves that overlap where they must.
[[gnu::always_inline]] inline __m128i TwoHalves(char16_t const* p, std::size_t n) noexcept
{
    return _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<__m128i const*>(p)),
                              _mm_loadl_epi64(reinterpret_cast<__m128i const*>(p + n - kBlock / 2)));
}

std::size_t FirstOf(unsigned mask) noexcept
{
    return static_cast<unsigned>(__builtin_ctz(mask)) / 2;
}

/// The first stop in n units, n if there is none. Most comparisons are decided in the first block.
template<class Skipped>
[[gnu::always_inline]] inline std::size_t FirstStop(char16_t const* a, char16_t const* b, std::size_t n,
                                                    Skipped skipped) noexcept
{
    if (n >= kBlock) {
        if (unsigned const stops = StopsInBlock(a, b, skipped); stops != 0) {
            return FirstOf(stops);
        }
        if (n > 4 * kBlock) {
            return skipped.LongStop(a, b, n); // from the start, as lengths that fill whole vectors are frequent
        }
        for (std::size_t i = kBlock; i < n; i += kBlock) {
            i = std::min(i, n - kBlock);
            if (unsigned const stops = StopsInBlock(a + i, b + i, skipped); stops != 0) {
                return i + FirstOf(stops);
            }
        }
        return n;
    }
    if (n >= kBlock / 2 && skipped.Stops(TwoHalves(a, n), TwoHalves(b, n)) == 0) {
        return n;
    }
    std::size_t i = 0;
    while (i < n && a[i] == b[i] && a[i] != 0) {
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
/// the next page. The sanitizers cannot know that this is harmless, so they are told to look away here.
template<class Skipped>
__attribute__((no_sanitize("address", "thread"))) std::size_t
FirstStopTerminated(char16_t const* a, char16_t const* b, std::size_t n, Skipped skipped) noexcept
{
    for (std::size_t i = 0; i < n;) {
        std::size_t const end = i + std::min({UnitsToPageEnd(a + i), UnitsToPageEnd(b + i), n - i});
        for (; end - i >= kBlock; i += kBlock) {
            if (unsigned const stops = StopsInBlock(a + i, b + i, skipped); stops != 0) {
                return i + FirstOf(stops);
            }
        }
        // At least one unit, as one that lies across the border of two pages is in neither.
        for (std::size_t const last = std::min(std::max(end, i + 1), n); i < last; ++i) {
            if (a[i] != b[i] || a[i] == 0) {
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

/// Folded comparison of n units that has come to the stop i. skip(i, alike) is the first stop from i on, or some unit
/// before it. A 0 unit ends the comparison if ZeroEnds.
template<bool ZeroEnds, class Skip>
[[gnu::noinline]] int CompareFrom(std::size_t i, char16_t const* a, char16_t const* b, std::size_t n, Alike alike,
                                  Skip skip) noexcept
{
    bool mayLearn = true; // once, lest two runs drive each other out
    std::size_t stretch = kFirstStretch;
    for (;;) {
        for (std::size_t const end = i + std::min(stretch, n - i); i < end; ++i) {
            char16_t const left = TCType::FoldCase(a[i]);
            char16_t const right = TCType::FoldCase(b[i]);
            if (left != right) {
                return SignOf(left, right);
            }
            if (ZeroEnds && left == 0) {
                return 0;
            }
            if (mayLearn && a[i] != b[i] && a[i] >= 0x80 && n - i >= kBlock) {
                mayLearn = false;
                if (PackedRun const run = RunAround(a[i], b[i]); run != 0) {
                    alike.run = run;
                    break;
                }
            }
        }
        std::size_t const stop = skip(i, alike);
        if (stop == n) {
            return 0;
        }
        stretch = stop - i < kBlock ? std::min(2 * stretch, kLongestStretch) : kFirstStretch;
        i = stop;
    }
}

template<bool ZeroEnds, class Skip>
[[gnu::always_inline]] inline int CompareFolded(char16_t const* a, char16_t const* b, std::size_t n, Skip skip) noexcept
{
    Alike const alike{s_lastRun.load(std::memory_order_relaxed)};
    std::size_t const stop = skip(0, alike);
    if (stop == n || (ZeroEnds && (a[stop] | b[stop]) == 0)) {
        return 0;
    }
    return CompareFrom<ZeroEnds>(stop, a, b, n, alike, skip);
}

} // namespace

int CompareUnits(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    std::size_t const stop = FirstStop(a, b, n, Same());
    return stop == n ? 0 : SignOf(a[stop], b[stop]);
}

int CompareUnitsFolded(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    return CompareFolded<true>(a, b, n,
                               [=](std::size_t i, Alike alike) { return i + FirstStop(a + i, b + i, n - i, alike); });
}

int CompareTerminated(char16_t const* a, char16_t const* b, std::size_t most) noexcept
{
    std::size_t const stop = FirstStopTerminated(a, b, most, Same());
    return stop == most ? 0 : SignOf(a[stop], b[stop]);
}

int CompareTerminatedFolded(char16_t const* a, char16_t const* b, std::size_t most) noexcept
{
    return CompareFolded<true>(
        a, b, most, [=](std::size_t i, Alike alike) { return i + FirstStopTerminated(a + i, b + i, most - i, alike); });
}

bool EqualUnitsFolded(char16_t const* a, char16_t const* b, std::size_t n) noexcept
{
    // Short ones are decided here.
    Alike const known{s_lastRun.load(std::memory_order_relaxed)};
    if (n <= kBlock && n >= kBlock / 2 && known.Stops(TwoHalves(a, n), TwoHalves(b, n)) == 0) {
        return true;
    }
    return CompareFolded<false>(
               a, b, n, [=](std::size_t i, Alike alike) { return i + FirstStop(a + i, b + i, n - i, alike); }) == 0;
}

int OrderUnits(char16_t const* a, std::size_t lengthA, char16_t const* b, std::size_t lengthB, bool folded) noexcept
{
    std::size_t const n = std::min(lengthA, lengthB);
    int sign = 0;
    if (folded) {
        sign = CompareFolded<false>(
            a, b, n, [=](std::size_t i, Alike alike) { return i + FirstStop(a + i, b + i, n - i, alike); });
    } else {
        // Stops at common 0 units too; these are passed over.
        for (std::size_t i = 0; i < n && sign == 0; ++i) {
            i += FirstStop(a + i, b + i, n - i, Same());
            sign = i < n ? SignOf(a[i], b[i]) : 0;
        }
    }
    return sign != 0 ? sign : lengthA == lengthB ? 0 : lengthA < lengthB ? -1 : 1;
}

} // namespace qvxsys::text

namespace qvxsys::detail {
namespace {

/// Of texts of different lengths the shorter one's terminator decides, if nothing before does.
std::size_t UnitsThatCount(std::size_t lengthA, std::size_t lengthB) noexcept
{
    return lengthA == lengthB ? lengthA : std::min(lengthA, lengthB) + 1;
}

} // namespace

int CompareStrings(char16_t const* a, std::size_t lengthA, char16_t const* b, std::size_t lengthB) noexcept
{
    std::size_t const n = UnitsThatCount(lengthA, lengthB);
    if (n <= 4 * text::kBlock) {
        return text::CompareUnits(a, b, n);
    }
    std::size_t const stop = text::kernels().firstStop(a, b, n);
    return stop == n ? 0 : text::SignOf(a[stop], b[stop]);
}

int CompareStringsFolded(char16_t const* a, std::size_t lengthA, char16_t const* b, std::size_t lengthB) noexcept
{
    std::size_t const n = UnitsThatCount(lengthA, lengthB);
    if (n > 4 * text::kBlock) {
        return text::CompareUnitsFolded(a, b, n);
    }
    // Most comparisons are decided in the first units. There is room for them in every string.
    text::Alike const alike{text::s_lastRun.load(std::memory_order_relaxed)};
    std::size_t const stop = text::FirstOf(text::StopsInBlock(a, b, alike) | 1u << 16);
    if (stop >= n) {
        return 0;
    }
    char16_t const left = TCType::FoldCase(a[stop]);
    char16_t const right = TCType::FoldCase(b[stop]);
    return left != right || left == 0 ? text::SignOf(left, right) : text::CompareUnitsFolded(a, b, n);
}

} // namespace qvxsys::detail
