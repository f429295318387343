// Search in two gears.
//
// A vector scan looks for two units of the needle, the anchors, at their distance; in folded search for any of the
// units that fold to the same as those. Positions that have both are hits, and looked at one by one. Anchors that
// differ from each other make hits rare even in texts that the needle nearly matches everywhere, as one anchor alone
// would not.
//
// Looking at hits may still take time of the order of text times needle. So the work is counted, and when it gets out
// of proportion to the text passed so far, the search goes on by borders (Knuth, Morris and Pratt, SIAM J. Comput. 6,
// 1977), which looks at each unit of the text twice at most.

#include "UnitSearch.h"

#include <algorithm>
#include <bit>
#include <type_traits>

#include <qvxsys/TCType.h>

#include "UnitCompare.h"
#include "UnitFolding.h"
#include "UnitSet.h"

namespace qvxsys::text {
namespace {

// Work that is always granted, and for each unit of the text passed.
constexpr std::size_t kFreeWork = 256;
constexpr std::size_t kWorkPerUnit = 2;

// What is looked at first of a hit: as cheap as finding it, so that is not counted.
constexpr std::size_t kGlance = 8;

struct Exact
{
    char16_t operator()(char16_t c) const noexcept { return c; }
};

struct Folded
{
    char16_t operator()(char16_t c) const noexcept { return TCType::FoldCase(c); }
};

// Where to go on in the needle, as a number of units matched, when unit k does not match: the length of the longest
// proper border of the k units before it that is not followed by that same unit, which would not match either. One more
// than kNone is 0. next[n] is the length of the needle's own longest border, for overlapping matches.
constexpr std::size_t kNone = kNotFound;

template<class NeedleAt>
void FillBorders(std::size_t n, NeedleAt needleAt, std::size_t* next)
{
    next[0] = kNone;
    std::size_t border = 0; // of the i units before
    for (std::size_t i = 1; i < n; ++i) {
        char16_t const c = needleAt(i);
        next[i] = c == needleAt(border) ? next[border] : border;
        while (border != kNone && c != needleAt(border)) {
            border = next[border];
        }
        ++border;
    }
    next[n] = border;
}

// A search at some place of a text: the unit to look at next, and how many of the needle's units match those before it.
struct BorderSearch
{
    std::size_t at;
    std::size_t matched;

    // Goes on to the end of the next match, which is `at` then; false if there is none.
    template<class At, class NeedleAt>
    bool Next(std::size_t length, At textAt, std::size_t n, NeedleAt needleAt, std::size_t const* next)
    {
        std::size_t k = matched;
        for (std::size_t i = at; i < length; ++i) {
            char16_t const c = textAt(i);
            while (k != kNone && c != needleAt(k)) {
                k = next[k];
            }
            if (++k == n) {
                *this = {i + 1, next[n]};
                return true;
            }
        }
        *this = {length, k};
        return false;
    }
};

// ---- anchors

static_assert(kMostCases == Anchors::kMost);

// Puts the units that match c into `units`; returns how many they are, 0 if too many.
template<class Fold>
unsigned MatchesOf(char16_t c, char16_t (&units)[Anchors::kMost]) noexcept
{
    if constexpr (std::is_same_v<Fold, Folded>) {
        return CasesOf(c, units);
    } else {
        units[0] = c;
        return 1;
    }
}

bool IsCheap(unsigned cases) noexcept
{
    return cases == 1 || cases == 2;
}

// The first anchor: the first unit, or one behind it if that has more than two cases. Sets `cases`.
template<class Fold>
std::size_t ChooseFirst(Anchors& anchors, char16_t const* needle, std::size_t n, unsigned& cases) noexcept
{
    std::size_t first = 0;
    for (; first + 1 < n; ++first) {
        cases = MatchesOf<Fold>(needle[first], anchors.first);
        if (IsCheap(cases)) {
            return first;
        }
    }
    cases = MatchesOf<Fold>(*needle, anchors.first);
    return 0;
}

// The second anchor, for n >= 2: the last unit, or if possible one before it that differs from the first anchor and has
// no more than two cases. Sets `cases`.
template<class Fold>
std::size_t ChooseSecond(Anchors& anchors, char16_t const* needle, std::size_t n, std::size_t first,
                         unsigned& cases) noexcept
{
    constexpr Fold fold;
    char16_t const unit = fold(needle[first]);
    std::size_t differing = n - 1;
    for (std::size_t second = n - 1; second > first; --second) {
        if (fold(needle[second]) == unit) {
            continue;
        }
        cases = MatchesOf<Fold>(needle[second], anchors.second);
        if (IsCheap(cases)) {
            return second;
        }
        differing = second;
    }
    cases = MatchesOf<Fold>(needle[differing], anchors.second);
    return differing;
}

// Fills in the anchors and returns the place of the first one in the needle; kNotFound if a scan cannot look for so
// many cases. Only what a scan reads is written: this is part of the price of every short search.
template<class Fold>
std::size_t ChooseAnchors(Anchors& anchors, char16_t const* needle, std::size_t n) noexcept
{
    unsigned firstCases = 0;
    unsigned secondCases = 1;
    std::size_t const first = ChooseFirst<Fold>(anchors, needle, n, firstCases);
    anchors.pair = n > 1;
    if (anchors.pair) {
        anchors.gap = ChooseSecond<Fold>(anchors, needle, n, first, secondCases) - first;
    }
    unsigned const most = std::max(firstCases, secondCases);
    anchors.alternatives = most > 2 ? Anchors::kMost : most;
    return firstCases != 0 && secondCases != 0 ? first : kNotFound;
}

// ---- hits

// Whether the needle is at p; adds to the work what counts.
template<class Fold>
[[gnu::always_inline]] inline bool IsMatch(char16_t const* p, char16_t const* needle, std::size_t n,
                                           std::size_t& work) noexcept
{
    if (n == 1) {
        return true; // the anchor is all of it
    }
    std::size_t const glance = std::min(n, kGlance);
    if constexpr (std::is_same_v<Fold, Folded>) {
        // Most hits that are no match end with the first unit between the anchors.
        if (TCType::FoldCase(p[1]) != TCType::FoldCase(needle[1]) || !EqualUnitsFolded(p, needle, glance)) {
            return false;
        }
        if (n == glance) {
            return true;
        }
        work += 4 + n / 4;
        return EqualUnitsFolded(p + glance, needle + glance, n - glance);
    } else {
        if (!EqualUnits(p, needle, glance)) {
            return false;
        }
        if (n == glance) {
            return true;
        }
        work += 2 + n / 32;
        return EqualUnits(p + glance, needle + glance, n - glance);
    }
}

bool IsTooMuch(std::size_t work, std::size_t passed) noexcept
{
    return work > kFreeWork + kWorkPerUnit * passed;
}

// The first match by borders, in texts read through functions.
template<class At, class NeedleAt>
std::size_t FindByBorders(std::size_t length, At at, std::size_t n, NeedleAt needleAt)
{
    constexpr std::size_t smallNeedle = 64;
    std::size_t small[smallNeedle];
    std::unique_ptr<std::size_t[]> const large(n < smallNeedle ? nullptr : new std::size_t[n + 1]);
    std::size_t* const next = large ? large.get() : small;
    FillBorders(n, needleAt, next);
    BorderSearch search{0, 0};
    return search.Next(length, at, n, needleAt, next) ? search.at - n : kNotFound;
}

template<class Fold>
std::size_t FindFirstByBorders(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n)
{
    constexpr Fold fold;
    return FindByBorders(
        length, [=](std::size_t i) { return fold(text[i]); }, n, [=](std::size_t i) { return fold(needle[i]); });
}

// Both texts read backwards.
template<class Fold>
std::size_t FindLastByBorders(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n)
{
    constexpr Fold fold;
    std::size_t const fromEnd = FindByBorders(
        length, [=](std::size_t i) { return fold(text[length - 1 - i]); }, n,
        [=](std::size_t i) { return fold(needle[n - 1 - i]); });
    return fromEnd == kNotFound ? kNotFound : length - n - fromEnd;
}

// ---- sets

// Anchors for a set of so few units that a scan can look for them all.
Anchors AnchorsOf(char16_t const* set, std::size_t n) noexcept
{
    Anchors anchors{};
    for (std::size_t i = 0; i < Anchors::kMost; ++i) {
        anchors.first[i] = set[std::min(i, n - 1)];
    }
    anchors.alternatives = n > 2 ? Anchors::kMost : static_cast<unsigned>(n);
    return anchors;
}

std::size_t LowestHit(std::uint64_t hits, ScanBlock const& block) noexcept
{
    return block.at + static_cast<std::size_t>(std::countr_zero(hits));
}

std::size_t HighestHit(std::uint64_t hits, ScanBlock const& block) noexcept
{
    return block.at + 63 - static_cast<std::size_t>(std::countl_zero(hits));
}

// ---- single searches

template<class Fold>
std::size_t First(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n)
{
    if (n > length) {
        return kNotFound;
    }
    std::size_t const positions = length - n + 1;
    Anchors anchors;
    std::size_t const offset = ChooseAnchors<Fold>(anchors, needle, n);
    ScanBlock block;
    std::size_t work = offset == kNotFound ? kNotFound : 0;
    while (!IsTooMuch(work, block.next)) {
        std::uint64_t hits = kernels().nextHits(text + offset, positions, anchors, block);
        for (; hits != 0; hits &= hits - 1) {
            std::size_t const at = LowestHit(hits, block);
            if (IsMatch<Fold>(text + at, needle, n, work)) {
                return at;
            }
        }
        if (block.next == positions) {
            return kNotFound;
        }
    }
    std::size_t const from = block.next;
    std::size_t const found = FindFirstByBorders<Fold>(text + from, length - from, needle, n);
    return found == kNotFound ? kNotFound : from + found;
}

template<class Fold>
std::size_t Last(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n)
{
    if (n > length) {
        return kNotFound;
    }
    std::size_t const positions = length - n + 1;
    Anchors anchors;
    std::size_t const offset = ChooseAnchors<Fold>(anchors, needle, n);
    ScanBlock block{positions, positions};
    std::size_t work = offset == kNotFound ? kNotFound : 0;
    while (!IsTooMuch(work, positions - block.next)) {
        std::uint64_t hits = kernels().previousHits(text + offset, positions, anchors, block);
        while (hits != 0) {
            std::size_t const at = HighestHit(hits, block);
            hits &= ~(std::uint64_t{1} << (at - block.at));
            if (IsMatch<Fold>(text + at, needle, n, work)) {
                return at;
            }
        }
        if (block.next == 0) {
            return kNotFound;
        }
    }
    std::size_t const rest = block.next - 1 + n; // matches that begin before block.next end here at the latest
    return FindLastByBorders<Fold>(text, rest, needle, n);
}

} // namespace

// ---- all matches

UnitMatches::UnitMatches(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n,
                         bool folded) noexcept
    : m_text(text), m_length(length), m_needle(needle), m_n(n), m_folded(folded), m_kernels(kernels())
{
    if (n > length) {
        return;
    }
    m_positions = length - n + 1;
    m_offset = folded ? ChooseAnchors<Folded>(m_anchors, needle, n) : ChooseAnchors<Exact>(m_anchors, needle, n);
}

std::size_t UnitMatches::Next(std::size_t from)
{
    if (from >= m_positions) {
        m_hits = 0;
        m_block.next = m_positions;
        return kNotFound;
    }
    if (m_byBorders) {
        return NextByBorders(from);
    }
    if (from > m_block.at) {
        std::size_t const passed = from - m_block.at;
        m_hits = passed < 64 ? m_hits & (~std::uint64_t{0} << passed) : 0;
        m_block.next = std::max(m_block.next, from);
    }
    for (;;) {
        while (m_hits != 0) {
            std::size_t const at = LowestHit(m_hits, m_block);
            if (IsTooMuch(m_work, at)) {
                StartByBorders(at);
                return NextByBorders(at);
            }
            m_hits &= m_hits - 1;
            if (m_folded ? IsMatch<Folded>(m_text + at, m_needle, m_n, m_work)
                         : IsMatch<Exact>(m_text + at, m_needle, m_n, m_work)) {
                return at;
            }
        }
        if (m_block.next >= m_positions) {
            return kNotFound;
        }
        if (m_offset == kNotFound) {
            StartByBorders(m_block.next);
            return NextByBorders(m_block.next);
        }
        m_hits = m_kernels.nextHits(m_text + m_offset, m_positions, m_anchors, m_block);
    }
}

void UnitMatches::StartByBorders(std::size_t from)
{
    if (m_n >= kSmallNeedle) {
        m_large.reset(new std::size_t[m_n + 1]);
    }
    auto const fill = [this](auto fold) {
        FillBorders(
            m_n, [=, this](std::size_t i) { return fold(m_needle[i]); }, m_large ? m_large.get() : m_small);
    };
    m_folded ? fill(Folded()) : fill(Exact());
    m_at = from;
    m_matched = 0;
    m_byBorders = true;
}

std::size_t UnitMatches::NextByBorders(std::size_t from)
{
    BorderSearch search{m_at, m_matched};
    if (from > m_at - m_matched) {
        search = {from, 0};
    }
    auto const next = [&](auto fold) {
        return search.Next(
            m_length, [=, text = m_text](std::size_t i) { return fold(text[i]); }, m_n,
            [=, needle = m_needle](std::size_t i) { return fold(needle[i]); }, m_large ? m_large.get() : m_small);
    };
    bool const found = m_folded ? next(Folded()) : next(Exact());
    m_at = search.at;
    m_matched = search.matched;
    return found ? m_at - m_n : kNotFound;
}

// ---- single searches

std::size_t FindFirst(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n, bool folded)
{
    return folded ? First<Folded>(text, length, needle, n) : First<Exact>(text, length, needle, n);
}

std::size_t FindLast(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n, bool folded)
{
    return folded ? Last<Folded>(text, length, needle, n) : Last<Exact>(text, length, needle, n);
}

std::size_t CountMatches(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n, bool folded)
{
    char16_t units[Anchors::kMost];
    unsigned const cases = n != 1 ? 0 : folded ? MatchesOf<Folded>(*needle, units) : MatchesOf<Exact>(*needle, units);
    if (cases != 0) {
        std::size_t found = 0;
        for (unsigned i = 0; i < cases; ++i) {
            found += kernels().countUnit(text, length, units[i]);
        }
        return found;
    }
    UnitMatches matches(text, length, needle, n, folded);
    std::size_t found = 0;
    while (matches.Next() != kNotFound) {
        ++found;
    }
    return found;
}

std::size_t FindFirstOf(char16_t const* text, std::size_t length, char16_t const* set, std::size_t n,
                        bool member) noexcept
{
    if (member && n <= Anchors::kMost) {
        ScanBlock block;
        std::uint64_t const hits = n == 0 ? 0 : kernels().nextHits(text, length, AnchorsOf(set, n), block);
        return hits != 0 ? LowestHit(hits, block) : kNotFound;
    }
    UnitSet const units({set, n});
    for (std::size_t i = 0; i < length; ++i) {
        if (units.Contains(text[i]) == member) {
            return i;
        }
    }
    return kNotFound;
}

} // namespace qvxsys::text
