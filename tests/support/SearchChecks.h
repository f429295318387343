#pragma once
// Comparison, search and sets of every instruction set against the slow, obvious way with ICU's folding, for tests and
// fuzzers. Texts lie right against inaccessible pages, so that one unit read outside them ends the program. What
// differs is thrown.

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <qvxsys/KMP.h>
#include <unicode/uchar.h>

#include "UnitCompare.h"
#include "UnitSearch.h"
#include "support/GuardedMemory.h"
#include "support/InstructionSets.h"

namespace reference {

using Text = std::u16string_view;

inline char16_t Fold(char16_t c, bool folded)
{
    return folded ? static_cast<char16_t>(u_foldCase(c, U_FOLD_CASE_DEFAULT)) : c;
}

/// -1, 0 or 1; a common 0 unit ends the comparison as equal if `zeroEnds`.
inline int Compare(Text a, Text b, bool folded, bool zeroEnds = true)
{
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        char16_t const left = Fold(a[i], folded);
        char16_t const right = Fold(b[i], folded);
        if (left != right) {
            return left < right ? -1 : 1;
        }
        if (zeroEnds && left == 0) {
            return 0;
        }
    }
    return 0;
}

/// All positions of a needle, overlapping ones included.
inline std::vector<std::size_t> Positions(Text text, Text needle, bool folded)
{
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i + needle.size() <= text.size(); ++i) {
        if (Compare(text.substr(i, needle.size()), needle, folded, false) == 0) {
            found.push_back(i);
        }
    }
    return found;
}

} // namespace reference

class SearchChecks
{
public:
    using Text = reference::Text;

    /// The common start of both, in every way it can be compared; terminated, each ends where a 0 is put behind it.
    void Compare(Text a, Text b) const
    {
        std::size_t const n = std::min(a.size(), b.size());
        Each(a, b, [&](char16_t const* left, char16_t const* right) {
            using namespace qvxsys::text;
            for (bool const folded : {false, true}) {
                int const expected = reference::Compare(a, b, folded);
                Require((folded ? CompareUnitsFolded : CompareUnits)(left, right, n) == expected, "CompareUnits");
                Require((folded ? CompareTerminatedFolded : CompareTerminated)(left, right, n) == expected,
                        "CompareTerminated");
                int const whole = reference::Compare(a, b, folded, false);
                Require((folded ? EqualUnitsFolded : EqualUnits)(left, right, n) == (whole == 0), "EqualUnits");
                int const longer = a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
                Require(OrderUnits(left, a.size(), right, b.size(), folded) == (whole != 0 ? whole : longer),
                        "OrderUnits");
            }
        });
        std::u16string const left = Terminated(a);
        std::u16string const right = Terminated(b);
        Each(left, right, [&](char16_t const* p, char16_t const* q) {
            using namespace qvxsys::text;
            Require(CompareTerminated(p, q) == reference::Compare(left, right, false), "CompareTerminated");
            Require(CompareTerminatedFolded(p, q) == reference::Compare(left, right, true), "CompareTerminatedFolded");
        });
    }

    /// First, last, number, and step by step with the jumps that `jump` gives.
    template<class Jump>
    void Search(Text text, Text needle, bool folded, Jump jump) const
    {
        auto const expected = reference::Positions(text, needle, folded);
        std::size_t const none = qvxsys::text::kNotFound;
        std::size_t const n = needle.size();
        Each(text, needle, [&](char16_t const* p, char16_t const* sought) {
            using namespace qvxsys::text;
            Require(FindFirst(p, text.size(), sought, n, folded) == (expected.empty() ? none : expected.front()),
                    "FindFirst");
            Require(FindLast(p, text.size(), sought, n, folded) == (expected.empty() ? none : expected.back()),
                    "FindLast");
            Require(CountMatches(p, text.size(), sought, n, folded) == expected.size(), "CountMatches");
            UnitMatches matches(p, text.size(), sought, n, folded);
            for (std::size_t from = 0;;) {
                auto const it = std::lower_bound(expected.begin(), expected.end(), from);
                std::size_t const at = matches.Next(from);
                Require(at == (it == expected.end() ? none : *it), "UnitMatches");
                if (at == none) {
                    break;
                }
                from = at + 1 + jump(n);
            }
        });
        // By code point the same, as long as no surrogates are about.
        auto const isSurrogate = [](char16_t c) { return CharacterUtils::IsSurrogate(c); };
        KMP::StringTable const table(needle, folded ? CaseCompare::Insensitive : CaseCompare::Sensitive);
        int const at = KMP::searchString(TStringView(text), table);
        Require(at < static_cast<int>(text.size()) || at == -1, "KMP");
        Require(std::ranges::any_of(text, isSurrogate) || std::ranges::any_of(needle, isSurrogate) ||
                    at == (expected.empty() ? -1 : static_cast<int>(expected.front())),
                "KMP");
    }

    void Sets(Text text, Text set) const
    {
        static_assert(qvxsys::text::kNotFound == Text::npos);
        Each(text, set, [&](char16_t const* p, char16_t const* members) {
            using namespace qvxsys::text;
            for (bool const member : {true, false}) {
                Require(FindFirstOf(p, text.size(), members, set.size(), member) ==
                            (member ? text.find_first_of(set) : text.find_first_not_of(set)),
                        "FindFirstOf");
            }
        });
    }

private:
    static std::u16string Terminated(Text text) { return std::u16string(text.substr(0, text.find(u'\0'))) + u'\0'; }

    static void Require(bool condition, char const* what)
    {
        if (!condition) {
            auto const set = quorvex::cpu::CurrentInstructionSet();
            throw std::logic_error(what + std::string(" of ") + quorvex::cpu::InstructionSetName(set));
        }
    }

    /// With both texts at the beginning, and both at the end of the memory that may be read.
    template<class F>
    void Each(Text a, Text b, F check) const
    {
        for (bool const atEnd : {false, true}) {
            auto const put = [atEnd](GuardedMemory const& memory, Text text) {
                auto* const at = atEnd ? memory.Last<char16_t>(text.size()) : memory.Begin<char16_t>();
                std::copy(text.begin(), text.end(), at);
                return at;
            };
            char16_t const* const left = put(m_left, a);
            char16_t const* const right = put(m_right, b);
            OnEverySet([&] { check(left, right); });
        }
    }

    // Odd numbers of pages, so that texts end at odd and at even ones.
    GuardedMemory m_left{3 * 4096};
    GuardedMemory m_right{3 * 4096};
};
