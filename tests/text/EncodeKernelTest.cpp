// Every instruction set's conversions from UTF-16 and UTF-32 against ICU and the reference. Source and destination lie
// right against inaccessible pages, so one unit read or written outside them ends the test with a fault.

#include "support/GuardedMemory.h"
#include "support/KernelSets.h"
#include "support/ReferenceEncode.h"

#include <gtest/gtest.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>
#include <random>

namespace {

using namespace qvxsys::text;
using namespace qvxsys::test;
using namespace std::string_literals;

enum class Place { front, back };

constexpr std::size_t longestText = 2240000; // units: every code point once, in UTF-16

class EncodeKernelTest : public testing::TestWithParam<kernel_sets::InstructionSet>
{
protected:
    void SetUp() override
    {
        m_kernels = kernel_sets::Of(GetParam());
        if (m_kernels == nullptr)
            GTEST_SKIP() << "this processor lacks the instructions";
    }

    Kernels const& Kernel() const { return *m_kernels; }

    /// Room for `count` units, touching the front or the back guard page.
    template<class Unit>
    Unit* Room(GuardedMemory const& memory, std::size_t count) const
    {
        return m_place == Place::front ? memory.Begin<Unit>() : memory.Last<Unit>(count);
    }

    template<class Unit>
    Unit const* Source(std::basic_string_view<Unit> text)
    {
        auto* const src = Room<Unit>(m_source, text.size());
        std::copy(text.begin(), text.end(), src);
        return src;
    }

    /// Runs convert(dst, substitutions) with `room` units and compares what it wrote.
    template<class Unit, class Convert>
    void ExpectOutput(char const* what, std::size_t room, std::basic_string<Unit> const& expected,
                      std::size_t expectedSubstitutions, Convert convert)
    {
        Unit* const dst = Room<Unit>(m_target, room);
        std::size_t substitutions = 5;
        std::size_t const written = convert(dst, substitutions);
        ASSERT_EQ(written, expected.size()) << what;
        auto const difference = std::mismatch(expected.begin(), expected.end(), dst).first - expected.begin();
        ASSERT_EQ(static_cast<std::size_t>(difference), written) << what << ": first difference";
        ASSERT_EQ(substitutions - 5, expectedSubstitutions) << what;
    }

    void ExpectAll(std::u16string_view text, Place place)
    {
        m_place = place;
        std::size_t const n = text.size();
        Converted<std::u32string> const points = ReferenceUtf32(text);
        std::size_t const bad = points.substitutions;
        std::string const bytes = ReferenceUtf8Raw(points.text);
        ExpectIcuAgrees(text, points, bytes);
        char16_t const* const src = Source(text);
        Kernels const& k = Kernel();
        ExpectOutput<char>("utf16ToUtf8", 3 * n, bytes, bad,
                           [&](char* dst, std::size_t& subs) { return k.utf16ToUtf8(src, n, dst, subs); });
        ExpectOutput<char32_t>("utf16ToUtf32", n, points.text, bad,
                               [&](char32_t* dst, std::size_t& subs) { return k.utf16ToUtf32(src, n, dst, subs); });
        ExpectOutput<char16_t>("copyWellFormed", n, ReferenceUtf16(points.text, false).text, bad,
                               [&](char16_t* dst, std::size_t& subs) {
                                   k.copyWellFormed(src, n, dst, subs);
                                   return n;
                               });
        ASSERT_EQ(k.utf8LengthOfUtf16(src, n), bytes.size());
        ASSERT_EQ(k.countCodePoints(src, n), points.text.size());
        for (char16_t const unit : {u'\0', u'a', n != 0 ? text[n / 2] : u'b'})
            ASSERT_EQ(k.countUnit(src, n, unit), static_cast<std::size_t>(std::count(text.begin(), text.end(), unit)));
    }

    void ExpectAll(std::u32string_view text, Place place)
    {
        m_place = place;
        std::size_t const n = text.size();
        Converted<std::u16string> const strict = ReferenceUtf16(text, false);
        Converted<std::u16string> const raw = ReferenceUtf16(text, true);
        ExpectIcuAgrees(text, strict);
        char32_t const* const src = Source(text);
        Kernels const& k = Kernel();
        ExpectOutput<char16_t>("utf32ToUtf16", 2 * n, strict.text, strict.substitutions,
                               [&](char16_t* dst, std::size_t& subs) { return k.utf32ToUtf16(src, n, dst, subs); });
        ExpectOutput<char16_t>("utf32ToUtf16Raw", 2 * n, raw.text, raw.substitutions,
                               [&](char16_t* dst, std::size_t& subs) { return k.utf32ToUtf16Raw(src, n, dst, subs); });
        ExpectOutput<char>("utf32ToUtf8Raw", 4 * n, ReferenceUtf8Raw(text), 0,
                           [&](char* dst, std::size_t&) { return k.utf32ToUtf8Raw(src, n, dst); });
    }

private:
    static void ExpectIcuAgrees(std::u16string_view text, Converted<std::u32string> const& points,
                                std::string const& bytes)
    {
        auto const n = static_cast<int32_t>(text.size());
        std::string icuBytes(3 * text.size() + 1, '\0');
        std::u32string icuPoints(text.size() + 1, U'\0');
        int32_t length = 0;
        int32_t substitutions = 0;
        UErrorCode error = U_ZERO_ERROR;
        u_strToUTF8WithSub(icuBytes.data(), static_cast<int32_t>(icuBytes.size()), &length, text.data(), n, 0xFFFD,
                           &substitutions, &error);
        icuBytes.resize(static_cast<std::size_t>(length));
        ASSERT_TRUE(icuBytes == bytes && static_cast<std::size_t>(substitutions) == points.substitutions);
        u_strToUTF32WithSub(reinterpret_cast<UChar32*>(icuPoints.data()), static_cast<int32_t>(icuPoints.size()),
                            &length, text.data(), n, 0xFFFD, &substitutions, &error);
        icuPoints.resize(static_cast<std::size_t>(length));
        ASSERT_TRUE(icuPoints == points.text && static_cast<std::size_t>(substitutions) == points.substitutions);
        ASSERT_EQ(static_cast<std::size_t>(u_countChar32(text.data(), n)), points.text.size());
        ASSERT_TRUE(U_SUCCESS(error));
    }

    static void ExpectIcuAgrees(std::u32string_view text, Converted<std::u16string> const& units)
    {
        std::u16string icuUnits(2 * text.size() + 1, u'\0');
        int32_t length = 0;
        int32_t substitutions = 0;
        UErrorCode error = U_ZERO_ERROR;
        u_strFromUTF32WithSub(icuUnits.data(), static_cast<int32_t>(icuUnits.size()), &length,
                              reinterpret_cast<UChar32 const*>(text.data()), static_cast<int32_t>(text.size()), 0xFFFD,
                              &substitutions, &error);
        icuUnits.resize(static_cast<std::size_t>(length));
        ASSERT_TRUE(U_SUCCESS(error) && icuUnits == units.text);
        ASSERT_EQ(static_cast<std::size_t>(substitutions), units.substitutions);
    }

    Kernels const* m_kernels = nullptr;
    Place m_place = Place::back;
    GuardedMemory m_source{longestText * 2};
    GuardedMemory m_target{longestText * 4};
};

std::u16string const fillers[] = {u"a", u"\u00E9", u"\u6F22", u"\U0001F600", u"\xD801"};
char16_t const edges[] = {0,      u'a',   0x7F,   0x80,   0x7FF,  0x800,  0xD7FF,
                          0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFD, 0xFFFF};

template<class Text>
Text Repeat(Text const& piece, std::size_t times)
{
    Text text;
    while (times-- > 0)
        text += piece;
    return text;
}

TEST_P(EncodeKernelTest, EveryCodePoint)
{
    std::u32string points;
    for (char32_t c = 0; c <= 0x110000; ++c)
        points += c;
    ASSERT_NO_FATAL_FAILURE(ExpectAll(points, Place::back));
    // With the surrogates: in rising order they are lone, but for DBFF DC00.
    std::u16string const units = ReferenceUtf16(points, true).text;
    ASSERT_LE(units.size(), longestText);
    ASSERT_NO_FATAL_FAILURE(ExpectAll(units, Place::back));
}

// A stretch of all pairs of edge values, five units apart, is shifted through all positions in the largest block (64),
// so that every pair stands at every place of a block and across every border.
TEST_P(EncodeKernelTest, EdgePairsAtEveryPosition)
{
    for (std::u16string const& filler : fillers) {
        std::u16string pairs;
        for (char16_t const first : edges)
            for (char16_t const second : edges)
                pairs += std::u16string{first, second} + Repeat(filler, filler.size() == 1 ? 3 : 2) + u"b";
        for (std::size_t shift = 0; shift < 64; ++shift) {
            std::u16string const text = std::u16string(shift % 2, u'c') + Repeat(filler, shift / filler.size()) + pairs;
            ASSERT_NO_FATAL_FAILURE(ExpectAll(text, Place::back)) << "shift " << shift;
        }
    }
}

// Texts of one kind that end in an edge, at each length (pairs also one unit off): the paths for the last units, and
// what may follow a block.
TEST_P(EncodeKernelTest, EdgesAtTheEnd)
{
    for (std::u16string const& filler : fillers)
        for (std::size_t length = 0; length < 70; ++length)
            for (std::u16string const& end : {u"\U0001F600"s, u"\xDC00"s, u"\xD800"s, u"\u00E9\xD800"s, u"\u00E9"s})
                for (Place const place : {Place::front, Place::back}) {
                    std::u16string const text =
                        std::u16string(length % filler.size(), u'c') + Repeat(filler, length / filler.size()) + end;
                    ASSERT_NO_FATAL_FAILURE(ExpectAll(text, place)) << "length " << text.size();
                }
}

/// A random text of runs: each run draws its values from one of the kinds, so that fast paths start and end anywhere.
template<class Text>
Text RandomText(std::mt19937& random, std::size_t length, std::vector<std::pair<char32_t, char32_t>> const& kinds)
{
    Text text;
    while (text.size() < length) {
        auto const& [first, last] = kinds[random() % kinds.size()];
        std::size_t const longest = random() % 4 == 0 ? 80 : 6;
        for (std::size_t run = 1 + random() % longest; run > 0 && text.size() < length; --run) {
            char32_t const c = static_cast<char32_t>(first + random() % (std::uint64_t{last} - first + 1));
            if (sizeof(text[0]) == 2 && c > 0xFFFF)
                text += static_cast<typename Text::value_type>(0xD7C0 + (c >> 10));
            text +=
                static_cast<typename Text::value_type>(sizeof(text[0]) == 2 && c > 0xFFFF ? 0xDC00 | (c & 0x3FF) : c);
        }
    }
    text.resize(length); // may cut a pair
    return text;
}

using Kinds = std::vector<std::pair<char32_t, char32_t>>;
Kinds const ascii{{0, 0x7F}};
Kinds const latin{{0, 0x7F}, {0x80, 0x7FF}};
Kinds const bmp{{0, 0x7F}, {0x80, 0x7FF}, {0x800, 0xD7FF}, {0xE000, 0xFFFF}};
Kinds const emoji{{0, 0x7F}, {0x10000, 0x10FFFF}};
Kinds const halves{{0, 0x7F}, {0x80, 0x7FF}, {0xD800, 0xDFFF}};
Kinds const mixed{{0, 0x7F}, {0x80, 0x7FF}, {0x800, 0xFFFF}, {0xD800, 0xDFFF}, {0x10000, 0x10FFFF}};
Kinds const wild{{0, 0x7F},
                 {0x80, 0xFFFF},
                 {0xD800, 0xDFFF},
                 {0x10000, 0x10FFFF},
                 {0x110000, 0x1FFFFF},
                 {0x200000, 0x7FFFFFFF},
                 {0x80000000, 0xFFFFFFFF}};

TEST_P(EncodeKernelTest, RandomTextOfEveryLength)
{
    std::mt19937 random(20231);
    for (std::size_t length = 0; length <= 300; ++length)
        for (Place const place : {Place::front, Place::back}) {
            for (Kinds const& kinds : {ascii, latin, bmp, emoji, halves, mixed}) {
                auto const text = RandomText<std::u16string>(random, length, kinds);
                ASSERT_NO_FATAL_FAILURE(ExpectAll(text, place)) << "length " << length;
            }
            for (Kinds const& kinds : {ascii, latin, bmp, emoji, mixed, wild}) {
                auto const text = RandomText<std::u32string>(random, length, kinds);
                ASSERT_NO_FATAL_FAILURE(ExpectAll(text, place)) << "length " << length;
            }
        }
}

// The counting kernels add up in narrow lanes and must empty them before they overflow.
TEST_P(EncodeKernelTest, LongUniformText)
{
    for (std::u16string const& filler : fillers)
        ASSERT_NO_FATAL_FAILURE(ExpectAll(Repeat(filler, longestText / 16), Place::back));
}

TEST_P(EncodeKernelTest, NullSourceOfNoLength)
{
    std::size_t substitutions = 0;
    char32_t dst[1];
    EXPECT_EQ(Kernel().utf16ToUtf8(nullptr, 0, reinterpret_cast<char*>(dst), substitutions), 0U);
    EXPECT_EQ(Kernel().utf16ToUtf32(nullptr, 0, dst, substitutions), 0U);
    EXPECT_EQ(Kernel().utf32ToUtf16(nullptr, 0, reinterpret_cast<char16_t*>(dst), substitutions), 0U);
    EXPECT_EQ(Kernel().utf32ToUtf16Raw(nullptr, 0, reinterpret_cast<char16_t*>(dst), substitutions), 0U);
    EXPECT_EQ(Kernel().utf32ToUtf8Raw(nullptr, 0, reinterpret_cast<char*>(dst)), 0U);
    Kernel().copyWellFormed(nullptr, 0, reinterpret_cast<char16_t*>(dst), substitutions);
    EXPECT_EQ(Kernel().utf8LengthOfUtf16(nullptr, 0), 0U);
    EXPECT_EQ(Kernel().countCodePoints(nullptr, 0), 0U);
    EXPECT_EQ(Kernel().countUnit(nullptr, 0, u'a'), 0U);
    EXPECT_EQ(substitutions, 0U);
}

INSTANTIATE_TEST_SUITE_P(Sets, EncodeKernelTest, testing::ValuesIn(kernel_sets::kAll),
                         [](auto const& test) { return kernel_sets::NameOf(test); });

} // namespace
