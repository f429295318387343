#include <qvxsys/CharacterUtils.h>

#include <limits>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <qvxsys/QvxICU.h>

#include "support/IcuConvert.h"

namespace {

using namespace CharacterUtils;

// What one call of a converter did.
template<class To>
struct Step
{
    int consumed;
    std::basic_string<To> written;

    bool operator==(Step const&) const = default;
};

template<class To, class From>
Step<To> Once(int (*convert)(From const*, To*, int&, int) noexcept, From const* src, int capacity = 8)
{
    To buffer[10] = {};
    int position = 1;
    int const consumed = convert(src, buffer, position, capacity + 1);
    return {consumed, std::basic_string<To>(buffer + 1, static_cast<std::size_t>(position - 1))};
}

TEST(CharacterUtils, DecodesUtf8ByTheLeadTable)
{
    std::tuple<char const*, int, char32_t> const cases[] = {
        {"A", 1, U'A'},
        {"\x80", 1, 0x80}, // passes as itself
        {"\xBF", 1, 0xFFFD},
        {"\xC3\xA9", 2, 0xE9},
        {"\xC3(", 1, 0xFFFD},
        {"\xE2\x82(", 2, 0xFFFD},
        {"\xE2\x82\xAC", 3, 0x20AC},
        {"\xED\xA0\x80", 3, 0xD800}, // surrogates and overlong forms are decoded
        {"\xC1\x81", 2, U'A'},
        {"\xF0\x9F\x98\x80", 4, 0x1F600},
        {"\xF4\x90\x80\x80", 4, 0x110000},
        {"\xF8\x88\x80\x80\x80", 5, 0x200000},
        {"\xFD\xBF\xBF\xBF\xBF\xBF", 6, 0x7FFFFFFF},
        {"\xFE\x80", 1, 0xFFFD},
        {"\xFF", 1, 0xFFFD},
        {"\xC0\x80", 2, 0},
    };
    for (auto const& [bytes, consumed, codePoint] : cases) {
        EXPECT_EQ(Once<char32_t>(Utf8ToUtf32, bytes), (Step<char32_t>{consumed, std::u32string(1, codePoint)}))
            << bytes;
        bool const large = codePoint > 0xFFFF && codePoint <= 0x10FFFF;
        std::u16string const units =
            large ? std::u16string{HighSurrogate(codePoint), LowSurrogate(codePoint)}
                  : std::u16string(1, codePoint > 0x10FFFF ? u'\uFFFD' : static_cast<char16_t>(codePoint));
        EXPECT_EQ(Once<char16_t>(Utf8ToUtf16, bytes), (Step<char16_t>{consumed, units})) << bytes;
        // Bounded: every cut of the sequence is U+FFFD and consumes what is there.
        for (int n = 1; n <= consumed; ++n) {
            char32_t c = 0;
            EXPECT_EQ(DecodeUtf8(bytes, n, c), n);
            EXPECT_EQ(c, n == consumed ? codePoint : U'\uFFFD');
        }
    }
}

// With surrogates and values above U+10FFFF, up to four bytes.
TEST(CharacterUtils, EncodesUtf8AsIcu)
{
    for (char32_t const limit : {0x7Fu, 0x7FFu, 0xD7FFu, 0xFFFFu, 0x10FFFFu, 0x1FFFFFu}) {
        for (char32_t const c : {limit, static_cast<char32_t>(limit + 1)}) {
            std::string const bytes = icu_reference::ToUtf8Raw(std::u32string(1, c));
            int const needed = c > 0x1FFFFF ? 4 : static_cast<int>(bytes.size());
            EXPECT_EQ(Once<char>(Utf32ToUtf8, &c, needed), (Step<char>{1, bytes})) << std::uint32_t{c};
            EXPECT_EQ(Once<char>(Utf32ToUtf8, &c, needed - 1), (Step<char>{0, ""})) << std::uint32_t{c};
        }
    }
}

TEST(CharacterUtils, ReadsAndWritesUtf16)
{
    EXPECT_EQ(Once<char16_t>(CopyCodePoint, u"\U0001F600", 2), (Step<char16_t>{2, u"\U0001F600"}));
    EXPECT_EQ(Once<char16_t>(CopyCodePoint, u"\U0001F600", 1), (Step<char16_t>{0, u""}));
    EXPECT_EQ(Once<char16_t>(Utf16ToUtf16, u"\xD83Dx"), (Step<char16_t>{1, u"\uFFFD"}));
    EXPECT_EQ(Once<char32_t>(Utf16ToUtf32, u"\U0001F600"), (Step<char32_t>{2, U"\U0001F600"}));
    EXPECT_EQ(Once<char32_t>(TCodeUnitToUtf32, u"\xD83D"), (Step<char32_t>{1, U"\uFFFD"}));
    EXPECT_EQ(Once<char>(Utf16ToUtf8, u"\U0001F600"), (Step<char>{2, "\xF0\x9F\x98\x80"}));
    EXPECT_EQ(Once<char>(Utf16ToUtf8, u"\U0001F600", 3), (Step<char>{0, ""}));
    EXPECT_EQ(Once<char>(Utf16ToUtf8, u"\xDE00"), (Step<char>{1, "\xEF\xBF\xBD"}));
    char32_t const surrogate = 0xD800;
    char32_t const large = 0x110000;
    EXPECT_EQ(Once<char16_t>(Utf32ToUtf16, &surrogate), (Step<char16_t>{1, std::u16string(1, 0xD800)}));
    EXPECT_EQ(Once<char16_t>(Utf32ToTCodeUnit, &large), (Step<char16_t>{1, u"\uFFFD"}));
    EXPECT_EQ(Once<char16_t>(Utf32ToTCodeUnit, U"\U0001F600", 1), (Step<char16_t>{0, u""}));
}

TEST(CharacterUtils, CopiesUtf8Sequences)
{
    EXPECT_EQ(Once<char>(Utf8ToUtf8, "\xE2\x82\xACx"), (Step<char>{3, "\xE2\x82\xAC"}));
    EXPECT_EQ(Once<char>(Utf8ToUtf8, "x"), (Step<char>{1, "x"}));
    EXPECT_EQ(Once<char>(Utf8ToUtf8, "\xE2\x82x"), (Step<char>{2, "\xEF\xBF\xBD"}));
    EXPECT_EQ(Once<char>(Utf8ToUtf8, "\x80"), (Step<char>{1, "\xEF\xBF\xBD"}));
    EXPECT_EQ(Once<char>(Utf8ToUtf8, "\xFF", 3), (Step<char>{0, ""}));
}

template<class From, class To>
void DoesNothing(int (*convert)(From const*, To*, int&, int) noexcept)
{
    From const a[] = {'a', 0};
    To out[2] = {};
    int position = 0;
    EXPECT_EQ(convert(nullptr, out, position, 2), 0);
    EXPECT_EQ(convert(a + 1, out, position, 2), 0);
    EXPECT_EQ(convert(a, nullptr, position, 2), 0);
    EXPECT_EQ(convert(a, out, position, 0), 0);
    EXPECT_EQ(convert(a, out, position, std::numeric_limits<int>::min()), 0);
    EXPECT_EQ(position, 0);
    position = -1;
    EXPECT_EQ(convert(a, out, position, 2), 0);
    EXPECT_EQ(position, -1);
}

TEST(CharacterUtils, NothingIsDoneForNullZeroOrNoRoom)
{
    DoesNothing(Utf16ToUtf16);
    DoesNothing(Utf16ToUtf32);
    DoesNothing(Utf16ToUtf8);
    DoesNothing(Utf32ToUtf16);
    DoesNothing(Utf32ToUtf8);
    DoesNothing(Utf8ToUtf16);
    DoesNothing(Utf8ToUtf32);
    DoesNothing(Utf8ToUtf8);
}

TEST(CharacterUtils, CountsAndReads)
{
    using Case = std::tuple<char16_t const*, int, char32_t, int>;
    for (auto const& [text, counted, codePoint, units] : {Case{nullptr, 0, 0, 0},
                                                          {u"", 0, 0, 0},
                                                          {u"a", 1, U'a', 1},
                                                          {u"\xDC00", 2, 0xFFFD, 1},
                                                          {u"\xD800x", 2, 0xFFFD, 1},
                                                          {u"\U0001F600", 2, 0x1F600, 2},
                                                          {u"\uE000", 1, 0xE000, 1}}) {
        int spanned = -1;
        EXPECT_EQ(CountCodeUnits(text), counted);
        EXPECT_EQ(GetCodePoint(text, &spanned), codePoint);
        EXPECT_EQ(spanned, units);
    }
    EXPECT_EQ(CountCodeUnits(char32_t{0xFFFF}), 1);
    EXPECT_EQ(CountCodeUnits(char32_t{0x10000}), 2);
    EXPECT_TRUE(IsFirstCodeUnit(u'\xD800') && !IsFirstUtf16CodeUnit(u'\xDC00'));
    EXPECT_TRUE(IsFirstUtf8CodeUnit('a') && IsFirstUtf8CodeUnit('\xC3') && !IsFirstUtf8CodeUnit('\x80'));
}

TEST(CharacterUtils, StepsThroughUtf16)
{
    char16_t text[] = u"a\U0001F600b\xDC00z"; // read-only text is another overload
    int const length = 6;
    int units = -1;
    EXPECT_EQ(GetNextCodePointPointer(text, text, length, &units), text + 1);
    EXPECT_EQ(units, 2);
    EXPECT_EQ(GetNextCodePointPointer(text, text + 1, length, &units), text + 3);
    EXPECT_EQ(units, 1);
    EXPECT_EQ(GetNextCodePointPointer(text, text + 4, length), nullptr); // two units for a lone surrogate: the end
    EXPECT_EQ(GetNextCodePointPointer(text, text + 5, length), nullptr);
    EXPECT_EQ(GetNextCodePointPointer(text, text + 6, length), nullptr);
    EXPECT_EQ(GetNextCodePointPointer(text + 1, text, length), nullptr);
    EXPECT_EQ(GetNextCodePointPointer(u"", nullptr, length), nullptr);
    EXPECT_EQ(GetPreviousCodePointPointer(text, text + 3, &units), text + 1);
    EXPECT_EQ(units, 2);
    EXPECT_EQ(GetPreviousCodePointPointer(text, text), nullptr);
    EXPECT_EQ(GetPreviousCodePointPointer(std::as_const(text) + 2, text + 3), nullptr); // only a low surrogate before
    EXPECT_EQ(GetLastCodePointPointer(text, 3, &units), text + 1);
    EXPECT_EQ(GetLastCodePointPointer(text, 0), nullptr);
    EXPECT_EQ(GetLastCodePointPointer(static_cast<char16_t const*>(nullptr), 5), nullptr);
}

// Our wrappers of ICU's stepping macros, in both index types: there and back, as one decodes.
TEST(CharacterUtils, IcuSteppingAgreesInBothIndexTypes)
{
    char const bytes[] = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\x80\xC3z";
    char16_t const units[] = u"a\U0001F600\xDC00";
    auto const check = [](auto forward, auto back, std::vector<int> const& stops) {
        int i = 0;
        std::size_t j = 0;
        for (std::size_t n = 1; n < stops.size(); ++n) {
            forward(i, stops.back());
            forward(j, static_cast<std::size_t>(stops.back()));
            EXPECT_TRUE(i == stops[n] && j == static_cast<std::size_t>(stops[n])) << n;
        }
        for (std::size_t n = stops.size() - 1; n-- > 0;) {
            back(i, 0);
            back(j, std::size_t{0});
            EXPECT_TRUE(i == stops[n] && j == static_cast<std::size_t>(stops[n])) << n;
        }
    };
    check([&](auto& i, auto end) { QvxICU::ICU8_FWD_1(bytes, i, end); },
          [&](auto& i, auto) { QvxICU::ICU8_BACK_1(bytes, 0, i); }, {0, 1, 3, 6, 10, 11, 12, 13});
    check([&](auto& i, auto end) { QvxICU::ICU16_FWD_1(units, i, end); },
          [&](auto& i, auto start) { QvxICU::ICU16_BACK_1(units, start, i); }, {0, 1, 3, 4});
}

} // namespace
