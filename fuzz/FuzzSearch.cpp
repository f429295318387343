// Comparison, search, sets and the search table on arbitrary units, in every instruction set, against the slow, obvious
// way with ICU's folding. Texts are copied into heap blocks of their exact size, so that reading past an end is found.

#include "UnitCompare.h"
#include "UnitSearch.h"

#include "support/SearchReference.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include <qvxsys/KMP.h>
#include <qvxsys/Processor.h>

namespace {

using namespace qvxsys::text;
using reference::Text;

void Require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

struct Block
{
    explicit Block(Text units) : size(units.size()), data(new char16_t[size])
    {
        std::copy(units.begin(), units.end(), data.get());
    }
    operator Text() const { return {data.get(), size}; }

    std::size_t size;
    std::unique_ptr<char16_t[]> data;
};

void CheckCompare(Block const& a, Block const& b, bool folded)
{
    std::size_t const n = std::min(a.size, b.size);
    auto const compare = folded ? CompareUnitsFolded : CompareUnits;
    auto const terminated = folded ? CompareTerminatedFolded : CompareTerminated;
    int const expected = reference::Compare(a, b, folded);
    Require(compare(a.data.get(), b.data.get(), n) == expected);
    Require(terminated(a.data.get(), b.data.get(), n) == expected);
    bool const equal = (folded ? EqualUnitsFolded : EqualUnits)(a.data.get(), b.data.get(), n);
    Require(equal == (reference::Compare(Text(a).substr(0, n), Text(b).substr(0, n), folded, false) == 0));
}

void CheckSearch(Block const& text, Block const& needle, bool folded)
{
    auto const expected = reference::Positions(text, needle, folded);
    char16_t const* const p = text.data.get();
    char16_t const* const sought = needle.data.get();
    std::size_t const none = kNotFound;
    Require(FindFirst(p, text.size, sought, needle.size, folded) == (expected.empty() ? none : expected.front()));
    Require(FindLast(p, text.size, sought, needle.size, folded) == (expected.empty() ? none : expected.back()));
    Require(CountMatches(p, text.size, sought, needle.size, folded) == expected.size());
    UnitMatches matches(p, text.size, sought, needle.size, folded);
    std::size_t from = 0;
    for (;;) {
        auto const it = std::lower_bound(expected.begin(), expected.end(), from);
        std::size_t const at = matches.Next(from);
        Require(at == (it == expected.end() ? none : *it));
        if (at == none) {
            break;
        }
        from = at + needle.size;
    }
    // By code point the same, as long as no surrogates are about.
    auto const isSurrogate = [](char16_t c) { return CharacterUtils::IsSurrogate(c); };
    bool const plain =
        std::none_of(p, p + text.size, isSurrogate) && std::none_of(sought, sought + needle.size, isSurrogate);
    KMP::StringTable const table(TStringView(sought, needle.size),
                                 folded ? CaseCompare::Insensitive : CaseCompare::Sensitive);
    int const at = KMP::searchString(TStringView(p, text.size), table);
    Require(at < static_cast<int>(text.size));
    Require(!plain || at == (expected.empty() ? -1 : static_cast<int>(expected.front())));
}

void CheckSets(Block const& text, Block const& set)
{
    char16_t const* const p = text.data.get();
    for (bool const member : {true, false}) {
        Text const all = text;
        Require(FindFirstOf(p, text.size, set.data.get(), set.size, member) ==
                (member ? all.find_first_of(set) : all.find_first_not_of(set)));
        Require(FindLastOf(p, text.size, set.data.get(), set.size, member) ==
                (member ? all.find_last_of(set) : all.find_last_not_of(set)));
    }
}

// The units that bytes stand for when matches are to be frequent: several letters each with all their cases, and
// others.
constexpr char16_t kFrequent[16] = {u'a',      u'A',      u'b',      u'k',      u'K',  u'\u212A', u's', u'\u017F',
                                    u'\u0434', u'\u0414', u'\u03B8', u'\u03F4', u'\0', u'\xD83D', u' ', u'\xFFFF'};

} // namespace

// The first byte: folded or not, and whether the rest are units as they are or choose from the frequent ones; the
// second: how many units the needle has; then needle and text.
extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size < 4) {
        return 0;
    }
    bool const folded = (data[0] & 1) != 0;
    std::u16string units;
    if ((data[0] & 2) != 0) {
        units.resize((size - 2) / 2);
        std::memcpy(units.data(), data + 2, units.size() * 2);
    } else {
        for (std::size_t i = 2; i < size; ++i) {
            units += kFrequent[data[i] & (data[0] >> 4)];
        }
    }
    std::size_t const n = 1 + data[1] % units.size();
    Block const needle(Text(units).substr(0, n));
    Block const text(Text(units).substr(n));
    Block const moved(Text(units).substr(n / 2));
    for (int set = 0; set < 3; ++set) {
        quorvex::cpu::LimitInstructionSet(static_cast<quorvex::cpu::InstructionSet>(set));
        CheckCompare(needle, text, folded);
        CheckCompare(text, moved, folded);
        CheckSearch(text, needle, folded);
        CheckSets(text, needle);
    }
    return 0;
}
