// Replacing in strings.
//
// A text is replaced in two steps: first all places are found, then the result, whose length is known by then, is made
// by copying the stretches between them. Nothing is changed before all room is there.

#include <qvxsys/TStringEditing.h>

#include <algorithm>
#include <cstdint>
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

// Each place by `after`. In place where nothing moves towards the end and the block is ours alone, else into a new one.
void TStringEditing::ReplacePlaces(std::vector<Place> const& places, TStringView after)
{
    int const n = text::CheckedUnits(after.size());
    std::int64_t result = length();
    bool grows = false;
    for (Place const& place : places) {
        result += n - place.count;
        grows = grows || n > place.count;
    }
    int const total = text::CheckedUnits(static_cast<std::uint64_t>(result));
    bool const inPlace = !grows && !inSelf(after.data()) && (!IsBlock() || !IsShared(Block()));
    TStringCore fresh = inPlace ? TStringCore() : Fresh(total);
    char16_t const* from = constData();
    char16_t const* const begin = from;
    char16_t const* const end = from + length();
    char16_t* to = inPlace ? data() : fresh.SetLength(total);
    auto const put = [&to](char16_t const* units, std::ptrdiff_t count) {
        if (count != 0) { // an empty replacement may be null
            text::MoveUnits(to, units, static_cast<int>(count));
            to += count;
        }
    };
    for (Place const& place : places) {
        put(from, begin + place.at - from);
        put(after.data(), n);
        from = begin + place.at + place.count;
    }
    put(from, end - from);
    if (inPlace) {
        StoreLength(total);
    } else {
        swap(fresh);
    }
}

int TStringEditing::ReplaceText(TStringView before, TStringView after, CaseSensitivity cs)
{
    bool const folded = cs != CaseSensitive;
    if (before.size() == 1 && after.size() == 1) {
        return ReplaceUnit(before[0], after[0], folded);
    }
    TStringView const whole = Self().view();
    std::vector<Place> places;
    if (!before.empty()) {
        text::UnitMatches matches(whole.data(), whole.size(), before.data(), before.size(), folded);
        for (std::size_t at = matches.Next(); at != text::kNotFound; at = matches.Next(at + before.size())) {
            places.push_back({static_cast<int>(at), before.length()});
        }
    }
    if (!places.empty() && (folded || before != after)) {
        ReplacePlaces(places, after);
    }
    return static_cast<int>(places.size());
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
    TStringView const whole = Self().view();
    text::UnitSet const members(set);
    std::vector<Place> places;
    for (char16_t const* at = whole.begin(); at != whole.end();) {
        int const units = members.Match(at, whole.end());
        if (units != 0) {
            places.push_back({static_cast<int>(at - whole.begin()), units});
        }
        at += text::UnitSet::UnitsAt(at, whole.end());
    }
    if (!places.empty()) {
        ReplacePlaces(places, after);
    }
    return Self();
}
