// The conversion kernels of every instruction set against ICU, on texts that lead them through all their paths.

#include "support/KernelChecks.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>

namespace {

using namespace std::string_literals;

class KernelTest : public testing::Test, protected KernelChecks
{
protected:
    std::size_t Below(std::size_t n) { return m_random() % n; }

    /// Runs of code points of one of the kinds, so that fast paths start and end anywhere.
    std::u32string RandomPoints(std::size_t length, std::vector<std::pair<char32_t, char32_t>> const& kinds)
    {
        std::u32string text;
        while (text.size() < length) {
            auto const& [first, last] = kinds[Below(kinds.size())];
            for (std::size_t run = 1 + Below(Below(4) == 0 ? 80 : 6); run > 0 && text.size() < length; --run) {
                text += static_cast<char32_t>(first + m_random() % (std::uint64_t{last} - first + 1));
            }
        }
        return text;
    }

    std::mt19937 m_random{20240229};
};

template<class Text>
Text Repeat(Text const& piece, std::size_t times)
{
    Text text;
    while (times-- > 0) {
        text += piece;
    }
    return text;
}

// With the surrogates: malformed in UTF-8; lone in UTF-16 but for DBFF DC00; and values behind the last one.
TEST_F(KernelTest, AllCodePoints)
{
    for (char32_t first = 0; first <= 0x110000; first += 0xD000) {
        std::u32string points;
        for (char32_t c = first; c < first + 0xD010; ++c) {
            points += c;
        }
        Check(icu_reference::ToUtf8Raw(points));
        Check(icu_reference::ToUtf16Raw(points).text);
        Check(points);
    }
}

// Every string of three bytes that begins above ASCII (of which two bytes stand for all), at changing distances.
TEST_F(KernelTest, AllShortByteStrings)
{
    for (unsigned first = 0x80; first < 0x100; ++first) {
        std::string source;
        for (unsigned second = 0x7E; second < 0x100; ++second) {
            for (unsigned third = 0x7E; third < 0x100; ++third) {
                source += {static_cast<char>(first), static_cast<char>(second), static_cast<char>(third)};
                source.append(third % 3, 'a');
            }
        }
        Check(source);
    }
}

// Something wrong (or 0, or only unusual) at every position of blocks of every script, and at the end.
TEST_F(KernelTest, OddBytesAtEveryPosition)
{
    std::string const scripts[] = {"a", "\xD0\xB6", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80"};
    std::string const odds[] = {
        "\0"s,          "\x80",         "\xFF",      "\xC2",         "\xC1\xBF",         "\xE0\x9F\x80",
        "\xE4\xB8",     "\xED\xA0\x80", "\xF0",      "\xF0\x9F\x98", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80",
        "\xF5\x80\x80", "\x80\x80\x80", "\xDF\xBFz", "\xE1\x80zz",   "\xF4\x8F\xBF\xBF", "\xEF\xBF\xBD\xBF"};
    for (std::string const& script : scripts) {
        for (std::string const& odd : odds) {
            for (std::size_t before = 0; before <= 140; ++before) {
                std::string const front =
                    std::string(before % script.size(), 'x') + Repeat(script, before / script.size()) + odd;
                Check(front);
                Check(front + Repeat(script, 80 / script.size()));
            }
        }
    }
}

std::u16string const kFillers[] = {u"a", u"\u00E9", u"\u6F22", u"\U0001F600", u"\xD801"};

// A stretch of all pairs of edge values, five units apart, is shifted through all positions in the largest block (64),
// so that every pair stands at every place of a block and across every border.
TEST_F(KernelTest, EdgePairsAtEveryPosition)
{
    constexpr char16_t kEdges[] = {0,      u'a',   0x7F,   0x80,   0x7FF,  0x800,  0xD7FF,
                                   0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFD, 0xFFFF};
    for (std::u16string const& filler : kFillers) {
        std::u16string pairs;
        for (char16_t const first : kEdges) {
            for (char16_t const second : kEdges) {
                pairs += std::u16string{first, second} + Repeat(filler, filler.size() == 1 ? 3 : 2) + u"b";
            }
        }
        for (std::size_t shift = 0; shift < 64; ++shift) {
            Check(std::u16string(shift % 2, u'c') + Repeat(filler, shift / filler.size()) + pairs);
        }
    }
}

// Texts of one kind that end in an edge, at each length (pairs also one unit off): the paths for the last units, and
// what may follow a block.
TEST_F(KernelTest, EdgesAtTheEnd)
{
    for (std::u16string const& filler : kFillers) {
        for (std::size_t length = 0; length < 70; ++length) {
            for (std::u16string const& end : {u"\U0001F600"s, u"\xDC00"s, u"\xD800"s, u"\u00E9\xD800"s, u"\u00E9"s}) {
                Check(std::u16string(length % filler.size(), u'c') + Repeat(filler, length / filler.size()) + end);
            }
        }
    }
}

// The counting kernels add up in narrow lanes and must empty them before they overflow; long ASCII has loops of its
// own.
TEST_F(KernelTest, LongUniformTexts)
{
    for (std::u16string const& filler : kFillers) {
        Check(Repeat(filler, 140'000));
    }
    std::string bytes;
    while (bytes.size() < 1400) {
        bytes += static_cast<char>(1 + bytes.size() * 31 % 127);
        if (bytes.size() > 500) {
            Check(bytes);
            Check(bytes + "\xD0\xB6\xFF" + bytes.substr(0, bytes.size() % 128));
        }
    }
}

// Runs of one script or several, of which some bytes and units are lost or changed.
TEST_F(KernelTest, RandomTextsOfEveryLength)
{
    std::pair<char32_t, char32_t> const kinds[] = {
        {0, 0x7F},           {0x80, 0x7FF},        {0x800, 0xFFFF},       {0xD800, 0xDFFF},
        {0x10000, 0x10FFFF}, {0x110000, 0x1FFFFF}, {0x200000, 0xFFFFFFFF}};
    constexpr unsigned char kBytes[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1,
                                        0xC2, 0xDF, 0xE0, 0xE1, 0xED, 0xEF, 0xF0, 0xF1, 0xF4, 0xF5, 0xFF};
    for (std::size_t length = 0; length <= 300; ++length) {
        for (unsigned chosen : {1u, 2u, 3u, 4u, 9u, 11u, 17u, 23u, 31u, 127u}) {
            std::vector<std::pair<char32_t, char32_t>> some;
            for (std::size_t i = 0; i < std::size(kinds); ++i) {
                if ((chosen >> i & 1) != 0) {
                    some.push_back(kinds[i]);
                }
            }
            std::u32string const points = RandomPoints(length, some);
            Check(points);
            std::u16string const units = icu_reference::ToUtf16Raw(points).text;
            Check(units.substr(0, length)); // which may cut a pair
            std::string bytes = icu_reference::ToUtf8(units).text.substr(0, length);
            for (std::size_t errors = length == 0 ? 0 : Below(1 + length / (1 + Below(64))); errors > 0; --errors) {
                bytes[Below(bytes.size())] = static_cast<char>(kBytes[Below(sizeof kBytes)]);
            }
            Check(bytes);
        }
    }
}

} // namespace
