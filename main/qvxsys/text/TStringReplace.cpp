// Replacing in strings.
//
// Where nothing moves towards the end, the text is ours alone and the arguments lie elsewhere, a text is replaced in
// place while it is searched: writing never comes before the search. Otherwise in two steps: first all places are
// found, then the result, whose length is known by then, is made by copying the stretches between them. Either way
// nothing is changed before all room is there.

#include <qvxsys/TStringEditing.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <vector>

#include <emmintrin.h>

#include <qvxsys/TStringCore.h>

#include "StringLimits.h"
#include "UnitSearch.h"
#include "UnitSet.h"

namespace text = qvxsys::text;

namespace {

// Overwrites `before` by `after`, eight units at a time; returns how many there were.
int BlendUnits(char16_t* at, char16_t const* end, char16_t before, char16_t after) noexcept
{
    __m128i const wanted = _mm_set1_epi16(static_cast<short>(before));
    __m128i const change = _mm_set1_epi16(static_cast<short>(before ^ after));
    int replaced = 0;
    while (end - at >= 8) {
        // Each lane counts down by one at a match: stop before it could wrap.
        __m128i counts = _mm_setzero_si128();
#pragma GCC unroll 4
        for (int steps = static_cast<int>(std::min<std::ptrdiff_t>((end - at) / 8, 0x7FFF)); steps > 0; --steps) {
            auto* const units = reinterpret_cast<__m128i*>(at);
            __m128i const old = _mm_loadu_si128(units);
            __m128i const match = _mm_cmpeq_epi16(old, wanted);
            _mm_storeu_si128(units, _mm_xor_si128(old, _mm_and_si128(match, change)));
            counts = _mm_sub_epi16(counts, match);
            at += 8;
        }
        alignas(16) std::uint16_t lanes[8];
        _mm_store_si128(reinterpret_cast<__m128i*>(lanes), counts);
        for (std::uint16_t const lane : lanes) {
            replaced += lane;
        }
    }
    for (; at != end; ++at) {
        if (*at == before) {
            *at = after;
            ++replaced;
        }
    }
    return replaced;
}

} // namespace

int TStringEditing::ReplaceUnit(char16_t before, char16_t after, bool folded)
{
    // Looking first costs less than writing, and a shared block without the unit stays shared.
    int const first = qvxsys::detail::FindText(Self(), {&before, 1}, 0, folded);
    if (first < 0) {
        return 0;
    }
    if (!folded && before == after) {
        return Self().count(before);
    }
    char16_t* const text = data();
    char16_t* const end = text + length();
    if (!folded) {
        return BlendUnits(text + first, end, before, after);
    }
    char16_t const wanted = TCType::FoldCase(before);
    int replaced = 0;
    for (char16_t* at = text + first; at != end; ++at) {
        if (TCType::FoldCase(*at) == wanted) {
            *at = after;
            ++replaced;
        }
    }
    return replaced;
}

TStringCore& TStringEditing::ReplaceRange(int pos, int n, TStringView v)
{
    int const old = length();
    int const count = pos < 0 || pos > old ? -1 : std::clamp(n, 0, old - pos);
    if (count < 0 || (count == 0 && v.empty())) {
        return Self();
    }
    if (v.empty()) {
        return removeAt(pos, count);
    }
    int const units = text::CheckedUnits(v.size());
    if (inSelf(v.data())) {
        TStringCore const copy(v);
        return ReplaceRange(pos, n, copy);
    }
    ReplaceUnits(pos, count, v.data(), units);
    return Self();
}

namespace {

// A stretch of the text that is to be replaced; count is 0 when there is no more.
struct Place
{
    std::size_t at;
    std::size_t count;
};

// Where a text occurs, the occurrences not overlapping.
class Occurrences
{
public:
    Occurrences(TStringView text, TStringView needle, bool folded) noexcept
        : m_matches(text.data(), text.size(), needle.data(), needle.size(), folded), m_count(needle.size())
    {}
    Place Next()
    {
        std::size_t const at = m_matches.Next(m_from);
        m_from = at + m_count;
        return at == text::kNotFound ? Place{} : Place{at, m_count};
    }

private:
    text::UnitMatches m_matches;
    std::size_t const m_count;
    std::size_t m_from = 0;
};

// The code points that are in a set.
class Members
{
public:
    Members(TStringView text, text::UnitSet const& set) noexcept : m_text(text), m_set(set), m_at(text.begin()) {}
    Place Next() noexcept
    {
        while (m_at != m_text.end()) {
            char16_t const* const at = m_at;
            int const units = m_set.Match(at, m_text.end());
            m_at += text::UnitSet::UnitsAt(at, m_text.end());
            if (units != 0) {
                return {static_cast<std::size_t>(at - m_text.begin()), static_cast<std::size_t>(units)};
            }
        }
        return {};
    }

private:
    TStringView const m_text;
    text::UnitSet const& m_set;
    char16_t const* m_at;
};

// Copies a text with its places replaced to `to`, which may be the text itself if no place grows. Every stretch is
// written when all before it has been read.
class Rewriter
{
public:
    Rewriter(TStringView text, TStringView after, char16_t* to) noexcept
        : m_begin(text.begin()), m_from(text.begin()), m_end(text.end()), m_after(after), m_start(to), m_to(to)
    {}
    void Replace(Place place) noexcept
    {
        char16_t const* const at = m_begin + place.at;
        Put(m_from, at);
        Put(m_after.begin(), m_after.end());
        m_from = at + place.count;
    }
    // The rest; returns the length of the result.
    int Finish() noexcept
    {
        Put(m_from, m_end);
        return static_cast<int>(m_to - m_start);
    }

private:
    void Put(char16_t const* begin, char16_t const* end) noexcept
    {
        // An empty replacement may be null, and up to the first place the text is where it belongs.
        if (begin != end && begin != m_to) {
            text::MoveUnits(m_to, begin, static_cast<int>(end - begin));
        }
        m_to += end - begin;
    }

    char16_t const* const m_begin;
    char16_t const* m_from;
    char16_t const* const m_end;
    TStringView const m_after;
    char16_t* const m_start;
    char16_t* m_to;
};

} // namespace

// Each of the places by `after`; returns how many there were. `streaming`: no place grows, finding places does not fail
// and looks at nothing else in this string.
template<class Places>
int TStringEditing::ReplacePlaces(Places places, TStringView after, bool streaming)
try {
    TStringView const whole = Self().view();
    Place place = places.Next();
    if (place.count == 0) {
        return 0;
    }
    if (streaming && !inSelf(after.data()) && (!IsBlock() || !IsShared(Block()))) {
        Rewriter rewriter(whole, after, data());
        int replaced = 0;
        for (; place.count != 0; place = places.Next()) {
            rewriter.Replace(place);
            ++replaced;
        }
        StoreLength(rewriter.Finish());
        return replaced;
    }
    auto const n = static_cast<std::uint64_t>(text::CheckedUnits(after.size()));
    std::uint64_t total = whole.size();
    std::vector<Place> found;
    for (; place.count != 0; place = places.Next()) {
        found.push_back(place);
        total += n - place.count;
    }
    int const length = text::CheckedUnits(total);
    TStringCore fresh = Fresh(length);
    Rewriter rewriter(whole, after, fresh.SetLength(length));
    for (Place const& each : found) {
        rewriter.Replace(each);
    }
    rewriter.Finish();
    swap(fresh);
    return static_cast<int>(found.size());
} catch (std::bad_alloc const&) {
    text::Throw("Out of memory");
}

int TStringEditing::ReplaceText(TStringView before, TStringView after, CaseSensitivity cs)
{
    bool const folded = cs != CaseSensitive;
    if (before.empty()) {
        return 0;
    }
    if (before.size() == 1 && after.size() == 1) {
        return ReplaceUnit(before[0], after[0], folded);
    }
    if (!folded && before == after) {
        text::UnitMatches matches(constData(), size(), before.data(), before.size(), folded);
        int found = 0;
        for (std::size_t at = matches.Next(); at != text::kNotFound; at = matches.Next(at + before.size())) {
            ++found;
        }
        return found;
    }
    bool const streaming =
        after.size() <= before.size() && text::UnitMatches::NeverFails(before.size()) && !inSelf(before.data());
    return ReplacePlaces(Occurrences(Self(), before, folded), after, streaming);
}

TStringCore& TStringEditing::ReplaceEach(TStringView before, TStringView after, CaseSensitivity cs)
{
    ReplaceText(before, after, cs);
    return Self();
}

TStringCore& TStringEditing::RemoveText(TStringView v, CaseSensitivity cs)
{
    return ReplaceEach(v, {}, cs);
}

TStringCore& TStringEditing::RemoveMembers(TStringView set)
{
    return ReplaceMembers(set, {});
}

TStringCore& TStringEditing::ReplaceMembers(TStringView set, TStringView after)
{
    text::UnitSet const members(set);
    ReplacePlaces(Members(Self(), members), after, after.size() <= 1 && !inSelf(set.data()));
    return Self();
}
