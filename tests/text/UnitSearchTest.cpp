// Comparison, search and sets on texts that lead every instruction set through all its paths.

#include "UnitFolding.h"

#include "support/SearchChecks.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>

#include <qvxsys/TStringCore.h>

namespace {

using qvxsys::text::CasesOf;
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

class UnitSearchTest : public testing::Test, protected SearchChecks
{
protected:
    std::size_t Below(std::size_t n) { return m_random() % n; }

    std::u16string const& AnyAlphabet() { return kAlphabets[Below(std::size(kAlphabets))]; }
    std::u16string RandomText(std::u16string const& alphabet, std::size_t length)
    {
        std::u16string text(length, u' ');
        std::ranges::generate(text, [&] { return alphabet[Below(alphabet.size())]; });
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
    /// Now and then jumping ahead.
    void Search(Text text, Text needle, bool folded)
    {
        SearchChecks::Search(text, needle, folded, [this](std::size_t n) { return Below(3) == 0 ? Below(2 * n) : 0; });
    }

    std::mt19937 m_random{20240229};
};

TEST_F(UnitSearchTest, Compares)
{
    for (int round = 0; round < 4000; ++round) {
        std::u16string const& alphabet = AnyAlphabet();
        std::size_t const n = Below(round % 8 == 0 ? 2500 : 90);
        std::u16string const a = RandomText(alphabet, n);
        std::u16string b = Below(2) == 0 ? a : OtherCases(a, alphabet);
        if (n != 0 && Below(2) == 0) {
            b[Below(n)] = alphabet[Below(alphabet.size())];
        }
        std::u16string const c = b.substr(0, n - Below(n / 2 + 1));
        Compare(a, b);
        Compare(a, c);
        // As strings, one of them with the rest of a longer text behind its terminator.
        TStringCore const ours(a);
        TStringCore theirs(b);
        theirs.reserve(40);
        theirs.truncate(static_cast<int>(c.size()));
        Text const left(a.c_str(), n + 1);
        Text const right(c.c_str(), c.size() + 1);
        ASSERT_EQ(ours.compare(theirs), reference::Compare(left, right, false));
        ASSERT_EQ(theirs.compare(ours, TStringCore::CaseInsensitive), reference::Compare(right, left, true));
    }
}

// Every unit with its neighbours at the distances that cases have. Runs of cases are learned on the way.
TEST_F(UnitSearchTest, FoldsEveryUnitLikeIcu)
{
    using qvxsys::text::CompareUnitsFolded;
    OnEverySet([] {
        for (unsigned c = 1; c < 0x10000; ++c) {
            std::u16string const text(40, static_cast<char16_t>(c));
            unsigned const folded = reference::Fold(text[0], true);
            for (unsigned const distance : {folded - c, 1u, 8u, 0x20u, 0x30u, 0x50u}) {
                std::u16string const other(40, static_cast<char16_t>(c + distance));
                int const expected = reference::Compare(text.substr(0, 1), other.substr(0, 1), true);
                ASSERT_EQ(CompareUnitsFolded(text.data(), other.data(), 40), expected) << c << " and " << c + distance;
                ASSERT_EQ(CompareUnitsFolded(other.data(), text.data(), 40), -expected) << c + distance << " and " << c;
            }
        }
    });
}

TEST_F(UnitSearchTest, ComparesTextAtOddAddresses)
{
    using namespace qvxsys::text;
    GuardedMemory const memory(3 * 4096);
    auto* const bytes = memory.Last(2 * 4096 + 1) + 1; // across pages, ending with the last
    std::u16string const text(2 * 2048 - 1, u'x');
    std::memcpy(bytes, text.c_str(), (text.size() + 1) * sizeof(char16_t));
    char16_t const* const odd = reinterpret_cast<char16_t const*>(bytes);
    OnEverySet([&] {
        EXPECT_EQ(CompareTerminated(odd, text.c_str()), 0);
        EXPECT_EQ(CompareTerminatedFolded(text.c_str(), odd), 0);
        EXPECT_EQ(FindFirst(odd, text.size() + 1, u"\0", 1, false), text.size());
        EXPECT_EQ(CompareUnits(odd, text.data(), text.size()), 0);
    });
}

TEST_F(UnitSearchTest, FindsWhatTheReferenceFinds)
{
    for (int round = 0; round < 6000; ++round) {
        std::u16string const& alphabet = AnyAlphabet();
        std::u16string const text = RandomText(alphabet, Below(round % 8 == 0 ? 1500 : 150));
        std::size_t const n = 1 + Below(Below(4) == 0 ? 80 : 10);
        std::u16string needle = RandomText(alphabet, n);
        if (text.size() >= n && Below(2) == 0) {
            needle = OtherCases(text.substr(Below(text.size() - n + 1), n), alphabet);
        }
        Search(text, needle, (round & 1) != 0);
    }
}

TEST_F(UnitSearchTest, FindsANeedleAtEveryOffset)
{
    for (std::size_t const n : {1u, 2u, 3u, 5u, 8u, 9u, 20u}) {
        std::u16string const needle = u"kSearchedForInTheText"s.substr(0, n);
        std::u16string const written = u"\u212AsEaRcHeDfOrInThEtExT"s.substr(0, n);
        for (std::size_t length = n; length <= 200; length += length < 100 ? 7 : 33) {
            for (std::size_t at = 0; at + n <= length; ++at) {
                std::u16string text(length, u'.');
                Search(text.replace(at, n, needle), needle, false);
                Search(text.replace(at, n, written), needle, true);
            }
        }
    }
}

// Texts full of near matches, which make the search change to borders: repetitions of the needle, each with one unit
// changed or none.
TEST_F(UnitSearchTest, FindsNeedlesThatTheTextNearlyMatchesEverywhere)
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
        Search(text, needle, true);
        Search(text, needle, false);
        std::size_t const half = 1 + Below(100);
        std::u16string uniform(4000, u'a');
        uniform[Below(uniform.size())] = u'b';
        uniform[Below(uniform.size())] = u'c';
        std::u16string const middle = std::u16string(half, u'a') + u'b' + std::u16string(half, u'a');
        Search(uniform, middle, (round & 1) != 0);
        Search(uniform, std::u16string(half, u'a'), (round & 1) != 0);
    }
}

// Needles of many periods, one of them changed, in texts of such periods: what is known of the needle's borders
// decides.
TEST_F(UnitSearchTest, FindsPeriodicNeedlesInPeriodicTexts)
{
    auto const repeated = [](std::u16string const& period, std::size_t times) {
        std::u16string text;
        while (times-- > 0) {
            text += period;
        }
        return text;
    };
    for (int round = 0; round < 200; ++round) {
        bool const folded = (round & 1) != 0;
        std::u16string const period = RandomText(u"ab", 1 + Below(5)) + u'b';
        std::u16string changed = period;
        changed[Below(period.size())] = Below(2) == 0 ? u'c' : u'a';
        std::size_t const half = 8 + Below(40);
        std::u16string const needle = repeated(period, half) + changed + repeated(period, Below(2) * half);
        std::u16string text;
        while (text.size() < 5000) {
            text += Below(8) == 0 ? needle : Below(8) == 0 ? changed : repeated(period, Below(3 * half));
        }
        Search(folded ? OtherCases(text, u"aAbBcC") : text, needle, folded);
    }
}

// The change to borders comes some blocks from where the search began; matches just there and around must not be lost.
TEST_F(UnitSearchTest, FindsMatchesWhereTheSearchChanges)
{
    using namespace qvxsys::text;
    std::u16string const needle(100, u'a');
    OnEverySet([&] {
        for (std::size_t const bridged : {2u, 15u}) {
            std::u16string text;
            for (std::size_t i = 0; i < 20; ++i) {
                text += std::u16string(99, u'a') + (i == bridged ? u'a' : u'b');
            }
            for (std::size_t cut = 0; cut < 300; ++cut) {
                Text const front = Text(text).substr(cut);
                Text const back = Text(text).substr(0, text.size() - cut);
                bool const folded = (cut & 1) != 0;
                ASSERT_EQ(FindFirst(front.data(), front.size(), needle.data(), 100, folded), front.find(needle));
                ASSERT_EQ(FindLast(back.data(), back.size(), needle.data(), 100, folded), back.rfind(needle));
            }
        }
    });
}

TEST_F(UnitSearchTest, FindsMembersOfSetsLikeTheStandardLibrary)
{
    for (int round = 0; round < 3000; ++round) {
        std::u16string const& alphabet = AnyAlphabet();
        std::u16string const text =
            RandomText(Below(2) == 0 ? alphabet : u"-", Below(100)) + RandomText(alphabet, Below(9));
        std::u16string set = RandomText(alphabet, Below(4));
        set += std::u16string(u"01234567\u0130\u0161\u3042").substr(Below(12)); // low bytes that meet others', too
        if (round % 3 == 0) {
            for (char16_t c = 0x4E00; c < 0x4E10; ++c) {
                set += c; // enough for a table
            }
        }
        Sets(text, set);
    }
}

TEST(UnitFolding, CasesAreAllUnitsThatIcuFoldsAlike)
{
    std::map<char16_t, std::u16string> classes;
    for (unsigned c = 0; c < 0x10000; ++c) {
        classes[reference::Fold(static_cast<char16_t>(c), true)] += static_cast<char16_t>(c);
    }
    for (unsigned c = 0; c < 0x10000; ++c) {
        char16_t found[qvxsys::text::kMostCases];
        unsigned const count = CasesOf(static_cast<char16_t>(c), found);
        ASSERT_EQ(found[0], c);
        std::u16string units(found, found + count);
        std::sort(units.begin(), units.end());
        ASSERT_EQ(units, classes[reference::Fold(static_cast<char16_t>(c), true)]) << std::hex << c;
    }
}

} // namespace
