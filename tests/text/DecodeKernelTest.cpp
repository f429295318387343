// The UTF-8 decoding kernels of every instruction set against ICU and against Table 3-7 written out.

#include "support/GuardedMemory.h"
#include "support/KernelSets.h"
#include "support/ReferenceTranscode.h"

#include <gtest/gtest.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstdio>
#include <random>

namespace text = qvxsys::text;

namespace {

struct Decoded
{
    std::u16string text;
    std::size_t substitutions;
};

Decoded DecodeWithIcu(std::string_view source)
{
    std::u16string out(source.size() + 1, u'\0');
    int32_t length = 0;
    int32_t substitutions = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8WithSub(out.data(), static_cast<int32_t>(out.size()), &length, source.data(),
                         static_cast<int32_t>(source.size()), 0xFFFD, &substitutions, &error);
    EXPECT_TRUE(U_SUCCESS(error));
    out.resize(static_cast<std::size_t>(length));
    return {out, static_cast<std::size_t>(substitutions)};
}

std::string Hex(std::string_view bytes)
{
    std::string text;
    for (char const c : bytes.substr(0, 400)) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X ", static_cast<unsigned>(static_cast<unsigned char>(c)));
        text += digits;
    }
    return text;
}

class DecodeKernelTest : public testing::TestWithParam<kernel_sets::InstructionSet>
{
protected:
    static constexpr std::size_t kMost = 1 << 19;

    void SetUp() override
    {
        kernels_ = kernel_sets::Of(GetParam());
        if (kernels_ == nullptr) {
            GTEST_SKIP() << "this processor lacks the instructions";
        }
    }

    /// The conversion to UTF-16 and its length, with the source as it stands.
    void CheckUtf16(char const* src, std::size_t n, Decoded const& expected)
    {
        char16_t* const dst = dst_.Last<char16_t>(n);
        std::size_t substitutions = 7; // has to be added to
        std::size_t const length = kernels_->utf8ToUtf16(src, n, dst, substitutions);
        ASSERT_EQ(length, expected.text.size()) << Hex({src, n});
        ASSERT_TRUE(std::equal(dst, dst + length, expected.text.begin())) << Hex({src, n});
        ASSERT_EQ(substitutions, expected.substitutions + 7) << Hex({src, n});
        ASSERT_EQ(kernels_->utf16LengthOfUtf8(src, n), length) << Hex({src, n});
    }

    void CheckPrefix(char const* src, std::size_t n, std::vector<reference::Part> const& parts)
    {
        char32_t* const dst = dst_.Last<char32_t>(n);
        std::size_t consumed = 0;
        std::size_t const length = kernels_->utf8PrefixToUtf32(src, n, dst, consumed);
        auto const stop =
            std::find_if(parts.begin(), parts.end(), [](auto const& p) { return p.malformed || p.value == 0; });
        std::size_t const limit = stop == parts.end() ? n : stop->begin;
        ASSERT_LE(length, static_cast<std::size_t>(stop - parts.begin())) << Hex({src, n});
        ASSERT_EQ(consumed, length == parts.size() ? n : parts[length].begin) << Hex({src, n});
        ASSERT_LE(limit - consumed, 64u) << Hex({src, n});
        for (std::size_t i = 0; i < length; ++i) {
            ASSERT_EQ(dst[i], parts[i].value) << Hex({src, n});
        }
    }

    /// Everything about one text, once right before and once right behind memory that must not be read.
    void Check(std::string_view source)
    {
        auto const parts = reference::DecodeUtf8(source);
        Decoded const expected = DecodeWithIcu(source);
        ASSERT_EQ(reference::ToUtf16(parts), expected.text) << Hex(source);
        for (char* const src : {src_.Begin(), src_.Last(source.size())}) {
            std::copy(source.begin(), source.end(), src);
            ASSERT_NO_FATAL_FAILURE(CheckUtf16(src, source.size(), expected));
            ASSERT_NO_FATAL_FAILURE(CheckPrefix(src, source.size(), parts));
        }
    }

    text::Kernels const* kernels_ = nullptr;
    GuardedMemory src_{kMost};
    GuardedMemory dst_{kMost * sizeof(char32_t)};
};

// The examples of The Unicode Standard 15.0, section 3.9 (Tables 3-8 to 3-11), and what ends too early.
TEST_P(DecodeKernelTest, MaximalSubparts)
{
    struct
    {
        std::string_view source;
        std::u16string_view expected;
    } const cases[] = {
        {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA"},
        {"\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA"},
        {"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA\uFFFD\uFFFDB"},
        {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", u"\uFFFD\uFFFD\uFFFD\uFFFDA"},
        {"\xC3", u"\uFFFD"},
        {"\xF0\x90\x80", u"\uFFFD"},
    };
    for (auto const& c : cases) {
        EXPECT_EQ(reference::ToUtf16(reference::DecodeUtf8(c.source)), c.expected);
        EXPECT_EQ(DecodeWithIcu(c.source).text, c.expected);
        Check(c.source);
    }
}

TEST_P(DecodeKernelTest, AllCodePoints)
{
    std::string source;
    for (char32_t value = 1; value < 0x110000; ++value) {
        source += reference::ToUtf8(value); // the surrogates are malformed
        if (source.size() > kMost - 10 || value == 0x10FFFF) {
            ASSERT_NO_FATAL_FAILURE(Check(source));
            source.clear();
        }
    }
}

// Every string of three bytes that begins above ASCII (of which two bytes stand for all), at changing distances.
TEST_P(DecodeKernelTest, AllShortStrings)
{
    for (unsigned first = 0x80; first < 0x100; ++first) {
        std::string source;
        for (unsigned second = 0x7E; second < 0x100; ++second) {
            for (unsigned third = 0x7E; third < 0x100; ++third) {
                source += {static_cast<char>(first), static_cast<char>(second), static_cast<char>(third)};
                source.append(third % 3, 'a');
            }
        }
        char* const src = src_.Last(source.size());
        std::copy(source.begin(), source.end(), src);
        ASSERT_NO_FATAL_FAILURE(CheckUtf16(src, source.size(), DecodeWithIcu(source)));
    }
}

// Something wrong (or 0, or only unusual) at every position of blocks of every script.
TEST_P(DecodeKernelTest, OddPartsAtEveryPosition)
{
    std::string_view const scripts[] = {"a", "\xD0\xB6", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80"};
    std::string_view const odds[] = {
        {"\0", 1},      "\x80",         "\xFF",      "\xC2",         "\xC1\xBF",         "\xE0\x9F\x80",
        "\xE4\xB8",     "\xED\xA0\x80", "\xF0",      "\xF0\x9F\x98", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80",
        "\xF5\x80\x80", "\x80\x80\x80", "\xDF\xBFz", "\xE1\x80zz",   "\xF4\x8F\xBF\xBF", "\xEF\xBF\xBD\xBF"};
    for (std::string_view const script : scripts) {
        for (std::string_view const odd : odds) {
            for (std::size_t before = 0; before <= 140; ++before) {
                std::string source(before % script.size(), 'x');
                while (source.size() < before) {
                    source += script;
                }
                source += odd;
                ASSERT_NO_FATAL_FAILURE(Check(source));
                while (source.size() < before + 80) {
                    source += script;
                }
                ASSERT_NO_FATAL_FAILURE(Check(source));
            }
        }
    }
}

TEST_P(DecodeKernelTest, LongRunsOfAscii)
{
    std::string source;
    while (source.size() < 1400) {
        source += static_cast<char>(1 + source.size() * 31 % 127);
        if (source.size() > 500) {
            ASSERT_NO_FATAL_FAILURE(Check(source));
            ASSERT_NO_FATAL_FAILURE(Check(source + "\xD0\xB6\xFF" + source.substr(0, source.size() % 128)));
        }
    }
}

/// Runs of one script, of which some bytes are lost or changed.
std::string RandomText(std::mt19937& random, std::size_t size)
{
    auto const below = [&random](std::size_t limit) { return random() % limit; };
    static constexpr char32_t kFirst[] = {1, 0x20, 0x80, 0x800, 0xE000, 0x10000};
    static constexpr char32_t kLast[] = {0x7F, 0x7E, 0x7FF, 0xD7FF, 0xFFFF, 0x10FFFF};
    std::string text;
    while (text.size() < size) {
        std::size_t const script = below(6);
        for (std::size_t i = below(40); i > 0; --i) {
            text +=
                reference::ToUtf8(kFirst[script] + static_cast<char32_t>(below(kLast[script] - kFirst[script] + 1)));
        }
    }
    text.resize(size); // which may end within a sequence
    if (size > 0 && below(3) != 0) {
        for (std::size_t errors = below(1 + size / (1 + below(64))); errors > 0; --errors) {
            static constexpr unsigned char kBytes[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0,
                                                       0xBF, 0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xED,
                                                       0xEF, 0xF0, 0xF1, 0xF4, 0xF5, 0xFF};
            text[below(size)] = static_cast<char>(kBytes[below(sizeof kBytes)]);
        }
    }
    return text;
}

TEST_P(DecodeKernelTest, RandomTexts)
{
    std::mt19937 random(20240229);
    for (std::size_t size = 0; size <= 300; ++size) {
        for (int i = 0; i < 12; ++i) {
            ASSERT_NO_FATAL_FAILURE(Check(RandomText(random, size)));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, DecodeKernelTest, testing::ValuesIn(kernel_sets::kAll),
                         [](auto const& test) { return kernel_sets::NameOf(test); });

} // namespace
