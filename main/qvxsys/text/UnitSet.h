#pragma once
// A set of units, for asking often.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

#include <qvxsys/CharacterUtils.h>
#include <qvxsys/TStringView.h>

namespace qvxsys::text {

/// The units of a text as a set: a bit each for those below 256, a bit for the lower byte of each of the others, which
/// are looked for in the text when that bit is set. With many such there is a table of all units and one of all code
/// points instead; where no memory is to be had for these, the set is slow, but as good.
class UnitSet
{
public:
    explicit UnitSet(TStringView units) noexcept : m_units(units)
    {
        std::size_t others = 0;
        for (char16_t const c : units) {
            auto& bits = c < 256 ? m_small : m_lowBytes;
            bits[(c & 0xFF) / 64] |= std::uint64_t{1} << (c % 64);
            if (c >= 256) {
                ++others;
                m_hasSurrogates = m_hasSurrogates || CharacterUtils::IsSurrogate(c);
            }
        }
        if (others >= kMany) {
            MakeTables();
        }
    }

    [[nodiscard]] bool Contains(char16_t c) const noexcept
    {
        if (m_tables != nullptr) {
            return ((m_tables->units[c / 64] >> (c % 64)) & 1) != 0;
        }
        auto const& bits = c < 256 ? m_small : m_lowBytes;
        bool const mayBe = ((bits[(c & 0xFF) / 64] >> (c % 64)) & 1) != 0;
        return mayBe && (c < 256 || std::find(m_units.begin(), m_units.end(), c) != m_units.end());
    }

    /// The units of the code point at the front of a text that is not empty, when it is in the set; else 0. A pair
    /// counts as one code point here, in the text and in the set.
    [[nodiscard]] int Match(char16_t const* at, char16_t const* end) const noexcept
    {
        if (!CharacterUtils::IsSurrogate(*at)) {
            return Contains(*at) ? 1 : 0;
        }
        if (!m_hasSurrogates) {
            return 0;
        }
        bool const pair = IsPair(at, end);
        if (m_tables != nullptr) {
            auto const& points = m_tables->surrogates;
            return std::binary_search(points.begin(), points.end(), PointAt(at, pair)) ? (pair ? 2 : 1) : 0;
        }
        for (char16_t const* s = m_units.begin(); s != m_units.end(); ++s) {
            bool const setPair = IsPair(s, m_units.end());
            if (setPair == pair && s[0] == at[0] && (!pair || s[1] == at[1])) {
                return pair ? 2 : 1;
            }
            s += setPair ? 1 : 0;
        }
        return 0;
    }

    /// The units of the code point there: 2 for a pair.
    static int UnitsAt(char16_t const* at, char16_t const* end) noexcept { return IsPair(at, end) ? 2 : 1; }

private:
    // As many units above U+00FF are worth the tables.
    static constexpr std::size_t kMany = 16;

    struct Tables
    {
        std::uint64_t units[1024] = {};
        std::vector<char32_t> surrogates; // pairs as code points, and lone ones; sorted
    };

    static char32_t PointAt(char16_t const* at, bool pair) noexcept
    {
        return pair ? CharacterUtils::CombineSurrogates(at[0], at[1]) : at[0];
    }

    void MakeTables() noexcept
    try {
        auto tables = std::make_unique<Tables>();
        for (char16_t const* at = m_units.begin(); at != m_units.end(); ++at) {
            tables->units[*at / 64] |= std::uint64_t{1} << (*at % 64);
            if (CharacterUtils::IsSurrogate(*at)) {
                bool const pair = IsPair(at, m_units.end());
                tables->surrogates.push_back(PointAt(at, pair));
                if (pair) {
                    ++at;
                    tables->units[*at / 64] |= std::uint64_t{1} << (*at % 64);
                }
            }
        }
        std::sort(tables->surrogates.begin(), tables->surrogates.end());
        m_tables = std::move(tables);
    } catch (std::bad_alloc const&) {
        // Without them, then.
    }

    static bool IsPair(char16_t const* at, char16_t const* end) noexcept
    {
        return CharacterUtils::IsHighSurrogate(*at) && end - at > 1 && CharacterUtils::IsLowSurrogate(at[1]);
    }

    TStringView m_units;
    std::uint64_t m_small[4] = {};
    std::uint64_t m_lowBytes[4] = {};
    bool m_hasSurrogates = false;
    std::unique_ptr<Tables> m_tables;
};

} // namespace qvxsys::text
