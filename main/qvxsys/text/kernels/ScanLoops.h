#pragma once
// The scans under comparison and search, written once for vectors of any width. A source of each instruction set
// describes its vector (see OneUnit for what is wanted) and instantiates the loops. Internal linkage, as for all that
// kernels share.
//
// The end of a text is scanned by a vector that overlaps with the one before; only texts shorter than a vector go on to
// the next narrower one. So short texts cost few steps and no set-up, and nothing outside the text is read.

#include "kernels/Kernels.h"

#include <emmintrin.h>

namespace qvxsys::text {
namespace {

/// A "vector" of one unit: the last resort for texts of less than eight.
struct OneUnit
{
    using Vector = char16_t;
    using Hits = bool;
    static constexpr std::size_t kUnits = 1;

    static Vector Load(char16_t const* p) noexcept { return *p; }
    static Vector All(char16_t unit) noexcept { return unit; }
    static Hits Equal(Vector a, Vector b) noexcept { return a == b; }
    static Hits And(Hits a, Hits b) noexcept { return a && b; }
    static Hits Or(Hits a, Hits b) noexcept { return a || b; }
    static bool None(Hits hits) noexcept { return !hits; }
    /// One bit a unit.
    static std::uint64_t Bits(Hits hits) noexcept { return hits ? 1 : 0; }
    /// Where there is no hit, or a is 0.
    static Hits NotOrZero(Hits hits, Vector a) noexcept { return !hits || a == 0; }
    /// Where a and b are as far apart as the pairs of the run, and the lower one is in it.
    static Hits Pairs(Vector a, Vector b, CaseRun run) noexcept
    {
        unsigned const low = a < b ? a : b;
        unsigned const high = a < b ? b : a;
        return high - low == run.distance && low - run.low < run.count;
    }
};

struct Sse2
{
    using Vector = __m128i;
    using Hits = __m128i;
    using Narrower = OneUnit;
    static constexpr std::size_t kUnits = 8;
    static constexpr std::size_t kVectors = 4; // scanned in one step; not needed for what is only a Narrower

    static Vector Load(char16_t const* p) noexcept
    {
        return _mm_loadu_si128(static_cast<__m128i const*>(static_cast<void const*>(p)));
    }
    static Vector All(unsigned unit) noexcept { return _mm_set1_epi16(static_cast<short>(unit)); }
    static Hits Equal(Vector a, Vector b) noexcept { return _mm_cmpeq_epi16(a, b); }
    static Hits And(Hits a, Hits b) noexcept { return _mm_and_si128(a, b); }
    static Hits Or(Hits a, Hits b) noexcept { return _mm_or_si128(a, b); }
    static bool None(Hits hits) noexcept { return _mm_movemask_epi8(hits) == 0; }
    static std::uint64_t Bits(Hits hits) noexcept
    {
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(hits, _mm_setzero_si128())));
    }
    static Hits Pairs(Vector a, Vector b, CaseRun run) noexcept
    {
        __m128i const above = _mm_subs_epu16(a, b);
        __m128i const distance = _mm_or_si128(above, _mm_subs_epu16(b, a));
        // Moved to the bottom of the signed range, where signed comparison serves.
        __m128i const low = _mm_add_epi16(_mm_sub_epi16(a, above), All(0x8000u - run.low));
        return _mm_and_si128(_mm_cmpeq_epi16(distance, All(run.distance)),
                             _mm_cmplt_epi16(low, All(0x8000u + run.count)));
    }
    static Hits NotOrZero(Hits hits, Vector a) noexcept
    {
        return _mm_cmpeq_epi16(_mm_and_si128(hits, a), _mm_setzero_si128());
    }
};

// ---- what is tested at a position

struct StopTest
{
    char16_t const* a;
    char16_t const* b;

    template<class V>
    [[gnu::always_inline]] typename V::Hits At(std::size_t i) const noexcept
    {
        auto const left = V::Load(a + i);
        return V::NotOrZero(V::Equal(left, V::Load(b + i)), left);
    }
    char16_t const* Address(std::size_t i) const noexcept { return a + i; }
};

struct FoldedStopTest
{
    char16_t const* a;
    char16_t const* b;
    CaseRun run;

    template<class V>
    [[gnu::always_inline]] typename V::Hits At(std::size_t i) const noexcept
    {
        auto const left = V::Load(a + i);
        auto const right = V::Load(b + i);
        auto const alike = V::Or(V::Pairs(left, right, kAsciiLetters), V::Pairs(left, right, run));
        return V::NotOrZero(V::Or(alike, V::Equal(left, right)), left);
    }
    /// A cheaper test that has a hit wherever this one has, and often none.
    StopTest Cheaper() const noexcept { return {a, b}; }
    char16_t const* Address(std::size_t i) const noexcept { return a + i; }
};

template<unsigned Alternatives, bool Pair>
struct AnchorTest
{
    char16_t const* text;
    Anchors const& anchors;

    template<class V>
    [[gnu::always_inline]] static typename V::Hits OneOf(char16_t const* p, char16_t const* units) noexcept
    {
        auto const v = V::Load(p);
        auto hits = V::Equal(v, V::All(units[0]));
        if constexpr (Alternatives > 1) {
            hits = V::Or(hits, V::Equal(v, V::All(units[1])));
        }
        if constexpr (Alternatives > 2) {
            hits = V::Or(hits, V::Or(V::Equal(v, V::All(units[2])), V::Equal(v, V::All(units[3]))));
        }
        return hits;
    }

    template<class V>
    [[gnu::always_inline]] typename V::Hits At(std::size_t i) const noexcept
    {
        auto const hits = OneOf<V>(text + i, anchors.first);
        if constexpr (Pair) {
            return V::And(hits, OneOf<V>(text + i + anchors.gap, anchors.second));
        } else {
            return hits;
        }
    }
    char16_t const* Address(std::size_t i) const noexcept { return text + i; }
};

// ---- the loops

template<class V>
constexpr std::size_t kStep = V::kUnits* V::kVectors;

/// The hits of one step as bits; the vectors are tested together.
template<class V, class Test>
[[gnu::always_inline]] inline std::uint64_t StepBits(Test const& test, std::size_t i) noexcept
{
    constexpr std::size_t n = V::kUnits;
    if constexpr (requires { test.Cheaper(); }) {
        if (StepBits<V>(test.Cheaper(), i) == 0) {
            return 0;
        }
    }
    auto const h0 = test.template At<V>(i);
    auto const h1 = test.template At<V>(i + n);
    if constexpr (V::kVectors == 2) {
        return V::None(V::Or(h0, h1)) ? 0 : V::Bits(h0) | V::Bits(h1) << n;
    } else {
        auto const h2 = test.template At<V>(i + 2 * n);
        auto const h3 = test.template At<V>(i + 3 * n);
        if (V::None(V::Or(V::Or(h0, h1), V::Or(h2, h3)))) {
            return 0;
        }
        return V::Bits(h0) | V::Bits(h1) << n | V::Bits(h2) << 2 * n | V::Bits(h3) << 3 * n;
    }
}

/// [begin, count), less than a step. Positions before `begin` may be tested again, but are not reported.
template<class V, class Test>
[[gnu::always_inline]] inline std::uint64_t ScanRest(Test const& test, std::size_t begin, std::size_t count,
                                                     ScanBlock& block) noexcept
{
    for (; count - begin >= V::kUnits; begin += V::kUnits) {
        if (std::uint64_t const bits = V::Bits(test.template At<V>(begin)); bits != 0) {
            block = {begin, begin + V::kUnits};
            return bits;
        }
    }
    block = {begin, count};
    if (begin == count) {
        return 0;
    }
    if constexpr (V::kUnits > 1) {
        if (count < V::kUnits) {
            return ScanRest<typename V::Narrower>(test, begin, count, block);
        }
        return V::Bits(test.template At<V>(count - V::kUnits)) >> (V::kUnits - (count - begin));
    } else {
        return 0;
    }
}

template<class V, class Test>
[[gnu::always_inline]] inline std::uint64_t Scan(Test const& test, std::size_t count, ScanBlock& block) noexcept
{
    std::size_t i = block.next;
    if (count - i >= 8 * kStep<V>) {
        if (std::uint64_t const bits = StepBits<V>(test, i); bits != 0) {
            block = {i, i + kStep<V>};
            return bits;
        }
        i += kStep<V>;
        // Go on at the start of a cache line: no load reaches over two of them.
        i -= reinterpret_cast<std::uintptr_t>(test.Address(i)) % 64 / sizeof(char16_t);
    }
    for (; count - i >= kStep<V>; i += kStep<V>) {
        if (std::uint64_t const bits = StepBits<V>(test, i); bits != 0) {
            block = {i, i + kStep<V>};
            return bits;
        }
    }
    return ScanRest<V>(test, i, count, block);
}

/// [0, end), less than a step, backwards.
template<class V, class Test>
[[gnu::always_inline]] inline std::uint64_t ScanRestBackwards(Test const& test, std::size_t end, std::size_t count,
                                                              ScanBlock& block) noexcept
{
    while (end >= V::kUnits) {
        end -= V::kUnits;
        if (std::uint64_t const bits = V::Bits(test.template At<V>(end)); bits != 0) {
            block = {end, end};
            return bits;
        }
    }
    block = {0, 0};
    if (end == 0) {
        return 0;
    }
    if constexpr (V::kUnits > 1) {
        if (count < V::kUnits) {
            return ScanRestBackwards<typename V::Narrower>(test, end, count, block);
        }
        return V::Bits(test.template At<V>(0)) & ((std::uint64_t{1} << end) - 1);
    } else {
        return 0;
    }
}

template<class V, class Test>
[[gnu::always_inline]] inline std::uint64_t ScanBackwards(Test const& test, std::size_t count,
                                                          ScanBlock& block) noexcept
{
    std::size_t end = block.next;
    while (end >= kStep<V>) {
        end -= kStep<V>;
        if (std::uint64_t const bits = StepBits<V>(test, end); bits != 0) {
            block = {end, end};
            return bits;
        }
    }
    return ScanRestBackwards<V>(test, end, count, block);
}

template<class V, class Test>
[[gnu::always_inline]] inline std::size_t FirstHit(Test const& test, std::size_t n) noexcept
{
    ScanBlock block;
    std::uint64_t const bits = Scan<V>(test, n, block);
    return bits != 0 ? block.at + static_cast<std::size_t>(__builtin_ctzll(bits)) : n;
}

// Each of these is a function of its own, lest all be burdened with the registers of the largest.

template<class V, unsigned Alternatives, bool Pair>
[[gnu::noinline]] std::uint64_t NextOf(char16_t const* text, std::size_t count, Anchors const& anchors,
                                       ScanBlock& block) noexcept
{
    return Scan<V>(AnchorTest<Alternatives, Pair>{text, anchors}, count, block);
}

template<class V, unsigned Alternatives, bool Pair>
[[gnu::noinline]] std::uint64_t PreviousOf(char16_t const* text, std::size_t count, Anchors const& anchors,
                                           ScanBlock& block) noexcept
{
    return ScanBackwards<V>(AnchorTest<Alternatives, Pair>{text, anchors}, count, block);
}

template<class V>
[[gnu::always_inline]] inline std::uint64_t NextAnchors(char16_t const* text, std::size_t count, Anchors const& anchors,
                                                        ScanBlock& block) noexcept
{
    switch (anchors.alternatives) {
    case 1:
        return anchors.pair ? NextOf<V, 1, true>(text, count, anchors, block)
                            : NextOf<V, 1, false>(text, count, anchors, block);
    case 2:
        return anchors.pair ? NextOf<V, 2, true>(text, count, anchors, block)
                            : NextOf<V, 2, false>(text, count, anchors, block);
    default:
        return anchors.pair ? NextOf<V, 4, true>(text, count, anchors, block)
                            : NextOf<V, 4, false>(text, count, anchors, block);
    }
}

template<class V>
[[gnu::always_inline]] inline std::uint64_t PreviousAnchors(char16_t const* text, std::size_t count,
                                                            Anchors const& anchors, ScanBlock& block) noexcept
{
    switch (anchors.alternatives) {
    case 1:
        return anchors.pair ? PreviousOf<V, 1, true>(text, count, anchors, block)
                            : PreviousOf<V, 1, false>(text, count, anchors, block);
    case 2:
        return anchors.pair ? PreviousOf<V, 2, true>(text, count, anchors, block)
                            : PreviousOf<V, 2, false>(text, count, anchors, block);
    default:
        return anchors.pair ? PreviousOf<V, 4, true>(text, count, anchors, block)
                            : PreviousOf<V, 4, false>(text, count, anchors, block);
    }
}

} // namespace
} // namespace qvxsys::text

// The four kernels of an instruction set whose vector is V.
#define QVX_DEFINE_SCANS(V)                                                                                            \
    std::size_t FirstStop(char16_t const* a, char16_t const* b, std::size_t n) noexcept                                \
    {                                                                                                                  \
        return FirstHit<V>(StopTest{a, b}, n);                                                                         \
    }                                                                                                                  \
    std::size_t FirstStopFolded(char16_t const* a, char16_t const* b, std::size_t n, CaseRun run) noexcept             \
    {                                                                                                                  \
        return FirstHit<V>(FoldedStopTest{a, b, run}, n);                                                              \
    }                                                                                                                  \
    std::uint64_t NextHits(char16_t const* text, std::size_t count, Anchors const& anchors, ScanBlock& block) noexcept \
    {                                                                                                                  \
        return NextAnchors<V>(text, count, anchors, block);                                                            \
    }                                                                                                                  \
    std::uint64_t PreviousHits(char16_t const* text, std::size_t count, Anchors const& anchors,                        \
                               ScanBlock& block) noexcept                                                              \
    {                                                                                                                  \
        return PreviousAnchors<V>(text, count, anchors, block);                                                        \
    }
