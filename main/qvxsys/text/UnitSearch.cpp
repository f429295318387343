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

#include <qvxsys/TCType.h>

#include "UnitCompare.h"
#include "UnitFolding.h"

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

// border[i] is the length of the longest proper border of needle[0..i].
template<class NeedleAt>
void FillBorders(std::size_t n, NeedleAt needleAt, std::size_t* border)
{
    border[0] = 0;
    for (std::size_t i = 1, k = 0; i < n; ++i) {
        while (k != 0 && needleAt(i) != needleAt(k)) {
            k = border[k - 1];
        }
        k += needleAt(i) == needleAt(k) ? 1u : 0u;
        border[i] = k;
    }
}

// Goes on from the unit at(i) with k units matched; true at a match, whose last unit is at(i - 1) then.
template<class At, class NeedleAt>
bool MatchByBorders(std::size_t& i, std::size_t length, At at, std::size_t& k, std::size_t n, NeedleAt needleAt,
                    std::size_t const* border)
{
    while (i < length) {
        char16_t const c = at(i++);
        while (k != 0 && c != needleAt(k)) {
            k = border[k - 1];
        }
        k += c == needleAt(k) ? 1u : 0u;
        if (k == n) {
            k = border[n - 1];
            return true;
        }
    }
    return false;
}

// ---- anchors

struct AnchorChoice
{
    std::size_t first;
    std::size_t second;
};

UnitClass ClassFor(char16_t c, bool folded) noexcept
{
    return folded ? ClassOf(c) : UnitClass{{c, c, c, c}, 1};
}

bool IsCheap(char16_t c, bool folded) noexcept
{
    unsigned const units = ClassFor(c, folded).count;
    return units == 1 || units == 2;
}

// The first and the last unit, or others near them: if possible such as have no more than two cases, and the second
// such as differs from the first. For n >= 2.
AnchorChoice ChooseAnchors(char16_t const* needle, std::size_t n, bool folded) noexcept
{
    std::size_t first = 0;
    while (folded && first < n - 1 && !IsCheap(needle[first], folded)) {
        ++first;
    }
    first = first < n - 1 ? first : 0;
    char16_t const unit = folded ? TCType::FoldCase(needle[first]) : needle[first];
    std::size_t second = n - 1;
    std::size_t differing = first;
    for (; second > first; --second) {
        char16_t const other = folded ? TCType::FoldCase(needle[second]) : needle[second];
        if (other == unit) {
            continue;
        }
        if (!folded || IsCheap(other, folded)) {
            return {first, second};
        }
        differing = differing == first ? second : differing;
    }
    return {first, differing != first ? differing : n - 1};
}

// The units of a class, the last one repeated to fill up.
void SetUnits(char16_t (&units)[Anchors::kMost], UnitClass const& all) noexcept
{
    for (unsigned i = 0; i < Anchors::kMost; ++i) {
        units[i] = all.units[std::min(i, all.count - 1)];
    }
}

struct AnchorPlan
{
    Anchors anchors;
    std::size_t offset;
    bool usable; // unless a class is larger than a scan can look for
};

AnchorPlan PlanAnchors(char16_t const* needle, std::size_t n, bool folded) noexcept
{
    static_assert(UnitClass::kMost == Anchors::kMost);
    AnchorChoice const choice = n > 1 ? ChooseAnchors(needle, n, folded) : AnchorChoice{0, 0};
    UnitClass const first = ClassFor(needle[choice.first], folded);
    UnitClass const second = ClassFor(needle[choice.second], folded);
    AnchorPlan plan{{}, choice.first, first.count != 0 && second.count != 0};
    if (plan.usable) {
        SetUnits(plan.anchors.first, first);
        SetUnits(plan.anchors.second, second);
        unsigned const most = std::max(first.count, second.count);
        plan.anchors.alternatives = most > 2 ? 4 : most;
        plan.anchors.gap = choice.second - choice.first;
        plan.anchors.pair = n > 1;
    }
    return plan;
}

// ---- hits

// Whether the needle is at p; adds to the work what counts.
bool IsMatch(char16_t const* p, char16_t const* needle, std::size_t n, bool folded, std::size_t& work) noexcept
{
    if (n == 1) {
        return true; // the anchor is all of it
    }
    std::size_t const glance = std::min(n, kGlance);
    if (folded) {
        for (std::size_t i = 0; i < glance; ++i) {
            if (TCType::FoldCase(p[i]) != TCType::FoldCase(needle[i])) {
                return false;
            }
        }
        if (n > glance) {
            work += 4 + n / 4;
            return EqualUnitsFolded(p + glance, needle + glance, n - glance);
        }
        return true;
    }
    if (!EqualUnits(p, needle, glance)) {
        return false;
    }
    if (n > glance) {
        work += 2 + n / 32;
        return EqualUnits(p + glance, needle + glance, n - glance);
    }
    return true;
}

bool IsTooMuch(std::size_t work, std::size_t passed) noexcept
{
    return work > kFreeWork + kWorkPerUnit * passed;
}

// FindLast by borders, both texts read backwards.
template<class Fold>
std::size_t FindLastByBorders(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n,
                              Fold fold)
{
    auto const at = [=](std::size_t i) { return fold(text[length - 1 - i]); };
    auto const needleAt = [=](std::size_t i) { return fold(needle[n - 1 - i]); };
    std::unique_ptr<std::size_t[]> const border(new std::size_t[n]);
    FillBorders(n, needleAt, border.get());
    std::size_t i = 0;
    std::size_t k = 0;
    return MatchByBorders(i, length, at, k, n, needleAt, border.get()) ? length - i : kNotFound;
}

// ---- sets

// Anchors for a set of so few units that a scan can look for them all.
Anchors AnchorsOf(char16_t const* set, std::size_t n) noexcept
{
    UnitClass all{{}, static_cast<unsigned>(n)};
    std::copy_n(set, n, all.units);
    Anchors anchors{};
    SetUnits(anchors.first, all);
    anchors.alternatives = n > 2 ? 4 : static_cast<unsigned>(n);
    return anchors;
}

// Membership in a set of units: a table by the lower eight bits, and a look at the set where that does not decide.
class UnitSet
{
public:
    UnitSet(char16_t const* units, std::size_t n) noexcept : m_units(units), m_n(n)
    {
        for (std::size_t i = 0; i < n; ++i) {
            m_table[units[i] & 0xFF] = true;
            m_high |= units[i] > 0xFF;
        }
    }

    bool Has(char16_t c) const noexcept
    {
        if (!m_table[c & 0xFF]) {
            return false;
        }
        ScanBlock block;
        return m_high ? kernels().nextHits(m_units, m_n, AnchorsOf(&c, 1), block) != 0 : c <= 0xFF;
    }

private:
    char16_t const* m_units;
    std::size_t m_n;
    bool m_high = false; // units above U+00FF are in the set
    bool m_table[256] = {};
};

std::size_t LowestHit(std::uint64_t hits, ScanBlock const& block) noexcept
{
    return block.at + static_cast<std::size_t>(std::countr_zero(hits));
}

std::size_t HighestHit(std::uint64_t hits, ScanBlock const& block) noexcept
{
    return block.at + 63 - static_cast<std::size_t>(std::countl_zero(hits));
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
    AnchorPlan const plan = PlanAnchors(needle, n, folded);
    m_positions = length - n + 1;
    m_anchors = plan.anchors;
    m_offset = plan.offset;
    m_work = plan.usable ? 0 : kNotFound;
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
            if (IsMatch(m_text + at, m_needle, m_n, m_folded, m_work)) {
                return at;
            }
        }
        if (m_block.next >= m_positions) {
            return kNotFound;
        }
        if (m_work == kNotFound) {
            StartByBorders(m_block.next);
            return NextByBorders(m_block.next);
        }
        m_hits = m_kernels.nextHits(m_text + m_offset, m_positions, m_anchors, m_block);
    }
}

void UnitMatches::StartByBorders(std::size_t from)
{
    if (m_n > kSmallNeedle) {
        m_large.reset(new std::size_t[m_n]);
    }
    std::size_t* const border = m_large != nullptr ? m_large.get() : m_small;
    if (m_folded) {
        FillBorders(
            m_n, [this](std::size_t i) { return Folded()(m_needle[i]); }, border);
    } else {
        FillBorders(
            m_n, [this](std::size_t i) { return m_needle[i]; }, border);
    }
    m_at = from;
    m_matched = 0;
    m_byBorders = true;
}

std::size_t UnitMatches::NextByBorders(std::size_t from)
{
    if (from > m_at - m_matched) {
        m_at = from;
        m_matched = 0;
    }
    std::size_t const* const border = m_large != nullptr ? m_large.get() : m_small;
    auto const next = [&](auto fold) {
        return MatchByBorders(
            m_at, m_length, [&](std::size_t i) { return fold(m_text[i]); }, m_matched, m_n,
            [&](std::size_t i) { return fold(m_needle[i]); }, border);
    };
    return (m_folded ? next(Folded()) : next(Exact())) ? m_at - m_n : kNotFound;
}

// ---- single searches

std::size_t FindFirst(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n, bool folded)
{
    return UnitMatches(text, length, needle, n, folded).Next();
}

std::size_t FindLast(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n, bool folded)
{
    if (n > length) {
        return kNotFound;
    }
    std::size_t const positions = length - n + 1;
    AnchorPlan const plan = PlanAnchors(needle, n, folded);
    ScanBlock block{positions, positions};
    std::size_t work = plan.usable ? 0 : kNotFound;
    while (block.next != 0 && !IsTooMuch(work, positions - block.next)) {
        std::uint64_t hits = kernels().previousHits(text + plan.offset, positions, plan.anchors, block);
        while (hits != 0) {
            std::size_t const at = HighestHit(hits, block);
            hits &= ~(std::uint64_t{1} << (at - block.at));
            if (IsMatch(text + at, needle, n, folded, work)) {
                return at;
            }
        }
    }
    if (block.next == 0) {
        return kNotFound;
    }
    std::size_t const rest = block.next - 1 + n; // matches that begin before block.next end here at the latest
    return folded ? FindLastByBorders(text, rest, needle, n, Folded())
                  : FindLastByBorders(text, rest, needle, n, Exact());
}

std::size_t CountMatches(char16_t const* text, std::size_t length, char16_t const* needle, std::size_t n, bool folded)
{
    if (n == 1) {
        UnitClass const all = ClassFor(*needle, folded);
        std::size_t found = 0;
        for (unsigned i = 0; i < all.count; ++i) {
            found += kernels().countUnit(text, length, all.units[i]);
        }
        if (all.count != 0) {
            return found;
        }
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
    UnitSet const units(set, n);
    for (std::size_t i = 0; i < length; ++i) {
        if (units.Has(text[i]) == member) {
            return i;
        }
    }
    return kNotFound;
}

std::size_t FindLastOf(char16_t const* text, std::size_t length, char16_t const* set, std::size_t n,
                       bool member) noexcept
{
    if (member && n <= Anchors::kMost) {
        ScanBlock block{length, length};
        std::uint64_t const hits = n == 0 ? 0 : kernels().previousHits(text, length, AnchorsOf(set, n), block);
        return hits != 0 ? HighestHit(hits, block) : kNotFound;
    }
    UnitSet const units(set, n);
    for (std::size_t i = length; i-- > 0;) {
        if (units.Has(text[i]) == member) {
            return i;
        }
    }
    return kNotFound;
}

} // namespace qvxsys::text
