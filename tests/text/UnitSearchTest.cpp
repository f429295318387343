// Comparison and search of every instruction set against the slow, obvious way with ICU's folding. Texts lie right
// against inaccessible pages, so one unit read outside them ends the test with a fault.

#include "UnitSearch.h"
#include "UnitCompare.h"
#include "UnitFolding.h"

#include "support/GuardedMemory.h"
#include "support/KernelSets.h"
#include "support/SearchReference.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>
#include <string>

#include <qvxsys/TStringCore.h>

namespace {

using namespace qvxsys::text;
using namespace std::string_literals;

// Few units, so that matches and near matches abound: plain, with zeros, cased, of three and four cases that are partly
// not of ASCII, the borders of runs of cases, without case, high and low values.
std::u16string const kAlphabets[] = {
    u"ab",
    u"a\0"s,
    u"aAb",
    u"@`AZ[az{",
    u"kK\u212A",
    u"sS\u017Fk",
    u"\u0434\u0414",
    u"\u0400\u0401\u040F\u0410\u042F\u0430\u044F\u0450\u0451\u045F",
    u"\u00C0\u00D7\u00DE\u00DF\u00E0\u00F7\u00FE\u00FF\u0178",
    u"\u13A0\u13EF\uAB6F\uAB70\uABBF",
    u"\u03B8\u0398\u03D1\u03F4x",
    u"\u4E00\u4E01",
    u"\xFFFF\x8000\x7FFF\xD800"s,
};

class UnitSearchTest : public testing::TestWithParam<kernel_sets::InstructionSet>
{
protected:
    void SetUp() override
    {
        if (kernel_sets::Of(GetParam()) == nullptr) {
            GTEST_SKIP() << "this processor lacks the instructions";
        }
        m_before = quorvex::cpu::LimitInstructionSet(GetParam());
        m_limited = true;
    }
    void TearDown() override
    {
        if (m_limited) {
            quorvex::cpu::LimitInstructionSet(m_before);
        }
    }

    std::size_t Below(std::size_t n) { return m_random() % n; }

    std::u16string RandomText(std::u16string const& alphabet, std::size_t length)
    {
        std::u16string text(length, u' ');
        for (char16_t& c : text) {
            c = alphabet[Below(alphabet.size())];
        }
        return text;
    }

    /// The text with some units exchanged for others of the alphabet that fold alike.
    std::u16string OtherCases(std::u16string text, std::u16string const& alphabet)
    {
        for (char16_t& c : text) {
            char16_t const other = alphabet[Below(alphabet.size())];
            c = reference::Fold(other, true) == reference::Fold(c, true) ? other : c;
        }
        return text;
    }

    static char16_t const* Place(GuardedMemory const& memory, std::u16string_view text, bool atEnd)
    {
        auto* const at = atEnd ? memory.Last<char16_t>(text.size()) : memory.Begin<char16_t>();
        std::copy(text.begin(), text.end(), at);
        return at;
    }

    void ExpectSearches(std::u16string const& text, std::u16string const& needle, bool folded);

    std::mt19937 m_random{20240229};
    // Odd numbers of pages, so that texts end at odd and at even ones.
    GuardedMemory m_left{3 * 4096};
    GuardedMemory m_right{3 * 4096};
    quorvex::cpu::InstructionSet m_before{};
    bool m_limited = false;
};

void UnitSearchTest::ExpectSearches(std::u16string const& text, std::u16string const& needle, bool folded)
{
    auto const expected = reference::Positions(text, needle, folded);
    std::size_t const n = needle.size();
    char16_t const* const sought = Place(m_right, needle, (text.size() & 1) != 0);
    for (bool const atEnd : {false, true}) {
        char16_t const* const p = Place(m_left, text, atEnd);
        ASSERT_EQ(FindFirst(p, text.size(), sought, n, folded), expected.empty() ? kNotFound : expected.front());
        ASSERT_EQ(FindLast(p, text.size(), sought, n, folded), expected.empty() ? kNotFound : expected.back());
        ASSERT_EQ(CountMatches(p, text.size(), sought, n, folded), expected.size());
        // Step by step, now and then jumping ahead.
        UnitMatches matches(p, text.size(), sought, n, folded);
        std::size_t from = 0;
        for (auto it = expected.begin();; ++it) {
            it = std::lower_bound(it, expected.end(), from);
            std::size_t const at = matches.Next(from);
            ASSERT_EQ(at, it == expected.end() ? kNotFound : *it) << "from " << from;
            if (at == kNotFound) {
                break;
            }
            from = Below(3) == 0 ? at + 1 + Below(2 * n) : at + 1;
        }
    }
}

TEST_P(UnitSearchTest, ComparesLikeTheReference)
{
    for (int round = 0; round < 4000; ++round) {
        std::u16string const& alphabet = kAlphabets[Below(std::size(kAlphabets))];
        std::size_t const n = Below(round % 8 == 0 ? 2500 : 90);
        std::u16string const a = RandomText(alphabet, n);
        std::u16string b = Below(2) == 0 ? a : OtherCases(a, alphabet);
        if (n != 0 && Below(2) == 0) {
            b[Below(n)] = alphabet[Below(alphabet.size())];
        }
        bool const atEnd = Below(4) != 0;
        char16_t const* const left = Place(m_left, a, atEnd);
        char16_t const* const right = Place(m_right, b, atEnd);
        ASSERT_EQ(CompareUnits(left, right, n), reference::Compare(a, b, false));
        ASSERT_EQ(CompareUnitsFolded(left, right, n), reference::Compare(a, b, true));
        ASSERT_EQ(CompareTerminated(left, right, n), reference::Compare(a, b, false));
        ASSERT_EQ(CompareTerminatedFolded(left, right, n), reference::Compare(a, b, true));
        ASSERT_EQ(EqualUnits(left, right, n), a == b);
        ASSERT_EQ(EqualUnitsFolded(left, right, n), reference::Compare(a, b, true, false) == 0);
        std::size_t const shorter = n - std::min(n, Below(3));
        for (bool const folded : {false, true}) {
            int const order = reference::Compare(a.substr(0, shorter), b.substr(0, shorter), folded, false);
            ASSERT_EQ(OrderUnits(left, shorter, right, n, folded), order == 0 && shorter < n ? -1 : order);
        }
        // Terminated texts of different lengths, each terminator the last unit before the border (or not).
        std::u16string const c = b.substr(0, n - Below(n / 2 + 1));
        char16_t const* const other = Place(m_right, std::u16string(c.c_str(), c.size() + 1), atEnd);
        char16_t const* const whole = Place(m_left, std::u16string(a.c_str(), n + 1), atEnd);
        std::u16string_view const otherText(c.c_str(), c.size() + 1);
        std::u16string_view const wholeText(a.c_str(), n + 1);
        ASSERT_EQ(CompareTerminated(whole, other), reference::Compare(wholeText, otherText, false));
        ASSERT_EQ(CompareTerminatedFolded(whole, other), reference::Compare(wholeText, otherText, true));
        // As strings, one of them with the rest of a longer text behind its terminator.
        TStringCore const ours(a.data(), static_cast<int>(n));
        TStringCore theirs(b.data(), static_cast<int>(n));
        theirs.reserve(40);
        theirs.truncate(static_cast<int>(c.size()));
        ASSERT_EQ(ours.compare(theirs), reference::Compare(wholeText, otherText, false));
        ASSERT_EQ(theirs.compare(ours, TStringCore::CaseInsensitive), reference::Compare(otherText, wholeText, true));
    }
}

// Every unit with its neighbours at the distances that cases have. Runs of cases are learned on the way.
TEST_P(UnitSearchTest, FoldsEveryUnitLikeIcu)
{
    for (unsigned c = 1; c < 0x10000; ++c) {
        std::u16string const text(40, static_cast<char16_t>(c));
        unsigned const folded = reference::Fold(text[0], true);
        for (unsigned const distance : {folded - c, 1u, 8u, 0x20u, 0x30u, 0x50u}) {
            std::u16string const other(40, static_cast<char16_t>(c + distance));
            int const expected = reference::Compare(text, other, true);
            ASSERT_EQ(CompareUnitsFolded(text.data(), other.data(), 40), expected) << c << " and " << c + distance;
            ASSERT_EQ(CompareUnitsFolded(other.data(), text.data(), 40), -expected) << c + distance << " and " << c;
        }
    }
}

TEST_P(UnitSearchTest, ComparesTextAtOddAddresses)
{
    auto* const bytes = m_left.Last(2 * 4096 + 1) + 1; // across pages, ending with the last
    std::u16string const text(2 * 2048 - 1, u'x');
    std::memcpy(bytes, text.c_str(), (text.size() + 1) * sizeof(char16_t));
    char16_t const* const odd = reinterpret_cast<char16_t const*>(bytes);
    char16_t const* const even = Place(m_right, std::u16string(text.c_str(), text.size() + 1), true);
    EXPECT_EQ(CompareTerminated(odd, even), 0);
    EXPECT_EQ(CompareTerminatedFolded(even, odd), 0);
    EXPECT_EQ(FindFirst(odd, text.size() + 1, u"\0", 1, false), text.size());
    EXPECT_EQ(CompareUnits(odd, even, text.size()), 0);
}

TEST_P(UnitSearchTest, FindsWhatTheReferenceFinds)
{
    for (int round = 0; round < 6000; ++round) {
        std::u16string const& alphabet = kAlphabets[Below(std::size(kAlphabets))];
        std::u16string const text = RandomText(alphabet, Below(round % 8 == 0 ? 1500 : 150));
        std::size_t const n = 1 + Below(Below(4) == 0 ? 80 : 10);
        std::u16string needle = RandomText(alphabet, n);
        if (text.size() >= n && Below(2) == 0) {
            needle = OtherCases(text.substr(Below(text.size() - n + 1), n), alphabet);
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSearches(text, needle, (round & 1) != 0)) << "round " << round;
    }
}

TEST_P(UnitSearchTest, FindsANeedleAtEveryOffset)
{
    for (std::size_t const n : {1u, 2u, 3u, 5u, 8u, 9u, 20u}) {
        std::u16string const needle = u"kSearchedForInTheText"s.substr(0, n);
        std::u16string const written = u"\u212AsEaRcHeDfOrInThEtExT"s.substr(0, n);
        for (std::size_t length = n; length <= 200; length += length < 100 ? 1 : 33) {
            for (std::size_t at = 0; at + n <= length; ++at) {
                std::u16string text(length, u'.');
                char16_t const* const p = Place(m_left, text.replace(at, n, needle), (at & 1) != 0);
                ASSERT_EQ(FindFirst(p, length, needle.data(), n, false), at);
                ASSERT_EQ(FindLast(p, length, needle.data(), n, false), at);
                char16_t const* const q = Place(m_right, text.replace(at, n, written), (at & 1) != 0);
                ASSERT_EQ(FindFirst(q, length, needle.data(), n, true), at);
                ASSERT_EQ(FindLast(q, length, needle.data(), n, true), at);
            }
        }
    }
}

// Texts full of near matches, which make the search change to borders: repetitions of the needle, each with one unit
// changed or none.
TEST_P(UnitSearchTest, FindsNeedlesThatTheTextNearlyMatchesEverywhere)
{
    for (int round = 0; round < 60; ++round) {
        std::u16string const alphabet = round % 2 == 0 ? u"aA" : u"abA";
        std::u16string const needle = RandomText(alphabet, 20 + Below(200));
        std::u16string text;
        while (text.size() < 5000) {
            std::u16string piece = OtherCases(needle, alphabet);
            if (Below(8) != 0) {
                piece[Below(piece.size())] = u'c';
            }
            text += piece.substr(Below(4) == 0 ? Below(piece.size()) : 0);
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSearches(text, needle, true)) << "round " << round;
        ASSERT_NO_FATAL_FAILURE(ExpectSearches(text, needle, false)) << "round " << round;
        std::size_t const half = 1 + Below(100);
        std::u16string uniform(4000, u'a');
        uniform[Below(uniform.size())] = u'b';
        uniform[Below(uniform.size())] = u'c';
        std::u16string const middle = std::u16string(half, u'a') + u'b' + std::u16string(half, u'a');
        ASSERT_NO_FATAL_FAILURE(ExpectSearches(uniform, middle, (round & 1) != 0));
        ASSERT_NO_FATAL_FAILURE(ExpectSearches(uniform, std::u16string(half, u'a'), (round & 1) != 0));
        // Both anchors of the first needle are everywhere here, but never the whole of it.
        std::u16string const other = std::u16string(half, u'a') + u'c' + std::u16string(half, u'a');
        std::u16string woven;
        while (woven.size() < 4000) {
            woven += other;
            woven += std::u16string(half, u'a') + u'b';
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSearches(woven, middle, (round & 1) != 0));
    }
}

// The change to borders comes some blocks from where the search began; matches just there and around must not be lost.
TEST_P(UnitSearchTest, FindsMatchesWhereTheSearchChanges)
{
    std::u16string const needle(100, u'a');
    for (std::size_t const bridged : {2u, 15u}) {
        std::u16string text;
        for (std::size_t i = 0; i < 20; ++i) {
            text += std::u16string(99, u'a') + (i == bridged ? u'a' : u'b');
        }
        for (std::size_t cut = 0; cut < 300; ++cut) {
            std::u16string const front = text.substr(cut);
            std::u16string const back = text.substr(0, text.size() - cut);
            ASSERT_EQ(FindFirst(front.data(), front.size(), needle.data(), 100, (cut & 1) != 0), front.find(needle));
            ASSERT_EQ(FindLast(back.data(), back.size(), needle.data(), 100, (cut & 1) != 0), back.rfind(needle));
        }
    }
}

TEST_P(UnitSearchTest, FindsMembersOfSetsLikeTheStandardLibrary)
{
    for (int round = 0; round < 3000; ++round) {
        std::u16string const& alphabet = kAlphabets[Below(std::size(kAlphabets))];
        std::u16string const text =
            RandomText(Below(2) == 0 ? alphabet : u"-", Below(100)) + RandomText(alphabet, Below(9));
        std::u16string set = RandomText(alphabet, Below(4));
        set += std::u16string(u"01234567\u0130\u0161\u3042").substr(Below(12)); // low bytes that meet others', too
        if (round % 3 == 0) {
            set +=
                u"\u4E00\u4E8C\u4E09\u56DB\u4E94\u516D\u4E03\u516B\u4E5D\u5341\u767E\u5343\u4E07\u5104\u5146\u4EAC"; // a table
        }
        char16_t const* const p = Place(m_left, text, (round & 1) != 0);
        std::size_t const none = kNotFound;
        static_assert(none == std::u16string::npos);
        ASSERT_EQ(FindFirstOf(p, text.size(), set.data(), set.size()), text.find_first_of(set));
        ASSERT_EQ(FindFirstOf(p, text.size(), set.data(), set.size(), false), text.find_first_not_of(set));
        ASSERT_EQ(FindLastOf(p, text.size(), set.data(), set.size()), text.find_last_of(set));
        ASSERT_EQ(FindLastOf(p, text.size(), set.data(), set.size(), false), text.find_last_not_of(set));
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, UnitSearchTest, testing::ValuesIn(kernel_sets::kAll),
                         kernel_sets::NameOf<testing::TestParamInfo<kernel_sets::InstructionSet>>);

TEST(UnitFolding, CasesAreAllUnitsThatIcuFoldsAlike)
{
    std::map<char16_t, std::u16string> classes;
    for (unsigned c = 0; c < 0x10000; ++c) {
        classes[reference::Fold(static_cast<char16_t>(c), true)] += static_cast<char16_t>(c);
    }
    for (unsigned c = 0; c < 0x10000; ++c) {
        char16_t found[kMostCases];
        unsigned const count = CasesOf(static_cast<char16_t>(c), found);
        ASSERT_EQ(found[0], c);
        std::u16string units(found, found + count);
        std::sort(units.begin(), units.end());
        ASSERT_EQ(units, classes[reference::Fold(static_cast<char16_t>(c), true)]) << std::hex << c;
    }
}

} // namespace
