#include <qvxsys/StringUtils.h>

#include <algorithm>
#include <random>

#include "support/IcuConvert.h"
#include "support/InstructionSets.h"
#include "support/TextPrinters.h"

namespace {

using testing_support::TextError;
using namespace StringUtils;

// One whole-string converter beside ICU's function.
template<class From, class To>
struct Conversion
{
    char const* routine;
    char const* icuName;
    int (*convert)(From const*, int, To*, int);
    int (*terminated)(From const*, To*, int);
    int (*measure)(From const*, int);
    int (*measureTerminated)(From const*);
};

constexpr Conversion<char, char16_t> k8To16 = {
    "StringUtils::Utf8ToUtf16", "t_u_strFromUTF8WithSub", Utf8ToUtf16, Utf8ToUtf16,
    MeasureUtf8ToUtf16,         MeasureUtf8ToUtf16};
constexpr Conversion<char16_t, char> k16To8 = {
    "StringUtils::Utf16ToUtf8", "t_u_strToUTF8WithSub", Utf16ToUtf8, Utf16ToUtf8,
    MeasureUtf16ToUtf8,         MeasureUtf16ToUtf8};
constexpr Conversion<char16_t, char32_t> k16To32 = {
    "StringUtils::Utf16ToUtf32", "t_u_strToUTF32WithSub", Utf16ToUtf32, Utf16ToUtf32,
    MeasureUtf16ToUtf32,         MeasureUtf16ToUtf32};
constexpr Conversion<char32_t, char16_t> k32To16 = {
    "StringUtils::Utf32ToUtf16", "u_strFromUTF32WithSub", Utf32ToUtf16, Utf32ToUtf16,
    MeasureUtf32ToUtf16,         MeasureUtf32ToUtf16};

// Capacities around the result's length, and every error.
template<class From, class To>
void CheckContract(Conversion<From, To> const& c, std::basic_string<From> const& source,
                   std::basic_string<To> const& expected)
{
    auto const n = static_cast<int>(source.size());
    auto const length = static_cast<int>(expected.size());
    std::string const tail = std::string(" encountered while ") + c.routine + " was trying to use " + c.icuName;
    for (int const extra : {-2, -1, 0, 1, 2, 5 * length + 1}) {
        int const capacity = length + extra;
        if (capacity < 0) {
            continue;
        }
        std::basic_string<To> out(static_cast<std::size_t>(capacity) + 2, To{'?'});
        int produced = -1;
        std::string const error = TextError([&] { produced = c.convert(source.data(), n, out.data(), capacity); });
        EXPECT_EQ(error, extra > 0 ? "" : (extra == 0 ? "ICU error -124" : "ICU error 15") + tail);
        if (extra > 0) {
            EXPECT_EQ(produced, length);
            EXPECT_EQ(out.substr(0, expected.size()), expected);
            EXPECT_EQ(out[expected.size()], To{});
        }
        EXPECT_EQ(out[static_cast<std::size_t>(capacity)], To{'?'});
    }
    EXPECT_EQ(c.measure(source.data(), n), length);
    if (length > 0) {
        EXPECT_EQ(c.convert(source.data(), n, nullptr, 0), length);
    }
    if (source.find(From{}) == source.npos) {
        std::basic_string<To> out(expected.size() + 1, To{'?'});
        EXPECT_EQ(c.terminated(source.c_str(), out.data(), length + 1), length);
        EXPECT_EQ(c.measureTerminated(source.c_str()), length);
    }
}

template<class From, class To>
void CheckErrors(Conversion<From, To> const& c)
{
    From const source[] = {'a', 0};
    To out[4];
    std::string const routine = c.routine;
    std::string const measuring = "StringUtils::Measure" + routine.substr(13);
    EXPECT_EQ(TextError([&] { c.convert(source, -1, out, 4); }),
              "Nonsense string length: -1 encountered in " + routine);
    EXPECT_EQ(TextError([&] { static_cast<void>(c.measure(source, -1)); }),
              "Nonsense string length: -1 encountered in " + measuring);
    EXPECT_EQ(TextError([&] { c.convert(source, 0, nullptr, 0); }),
              "ICU error -124 encountered while " + routine + " was trying to use " + c.icuName);
    EXPECT_EQ(TextError([&] { c.convert(nullptr, 1, out, 4); }),
              "ICU error 1 encountered while " + routine + " was trying to use " + c.icuName);
    EXPECT_EQ(c.convert(source, 1, nullptr, -5), 1);
    EXPECT_EQ(c.measure(nullptr, 0), 0);
    EXPECT_EQ(c.measureTerminated(nullptr), 0);
    EXPECT_EQ(c.terminated(nullptr, out, 4), 0);
}

TEST(StringUtils, ErrorsOfTheConverters)
{
    CheckErrors(k8To16);
    CheckErrors(k16To8);
    CheckErrors(k16To32);
    CheckErrors(k32To16);
}

// Texts of every make, with the instruction sets in turn: whole conversions are ICU's, for every capacity.
TEST(StringUtils, ConversionsAreIcusForEveryCapacityAndInstructionSet)
{
    using namespace icu_reference;
    std::mt19937 random(7);
    auto const unit = [&random] {
        static constexpr char32_t kFirst[] = {0, 0, 0, 0, 0, 0x10000, 0xD800, 0};
        static constexpr std::uint64_t kCount[] = {0x80, 0x80, 0x80, 0x800, 0x10000, 0x100000, 0x800, 0x100000000};
        auto const kind = random() % 8;
        return static_cast<char32_t>(kFirst[kind] + random() % kCount[kind]);
    };
    auto const spoil = [&random](auto text) {
        for (auto& c : text) {
            c = random() % 20 == 0 ? static_cast<std::decay_t<decltype(c)>>(random()) : c;
        }
        return text;
    };
    OnEverySet([&] {
        SCOPED_TRACE(quorvex::cpu::InstructionSetName(quorvex::cpu::CurrentInstructionSet()));
        for (std::size_t const n : {0u, 1u, 2u, 3u, 7u, 16u, 33u, 64u, 100u, 257u, 700u, 3000u}) {
            for (int round = 0; round < 10; ++round) {
                std::u32string wide(n, U'\0');
                std::generate(wide.begin(), wide.end(), unit);
                std::u16string const utf16 = spoil(ToUtf16(wide).text);
                std::string const utf8 = spoil(ToUtf8(utf16).text);
                CheckContract(k8To16, utf8, ToUtf16(utf8).text);
                CheckContract(k16To8, utf16, ToUtf8(utf16).text);
                CheckContract(k16To32, utf16, ToUtf32(utf16).text);
                CheckContract(k32To16, wide, ToUtf16(wide).text);
                EXPECT_EQ(TStringCore::fromStdString(utf8).toStdUString(), ToUtf16(utf8).text);
                EXPECT_EQ(TStringCore::fromStdUString(utf16).toStdString(), ToUtf8(utf16).text);
                EXPECT_EQ(MeasureUtf8ToUtf32(utf8.data(), static_cast<int>(utf8.size())),
                          static_cast<int>(ToUtf32(ToUtf16(utf8).text).text.size()));
                EXPECT_EQ(MeasureUtf32ToUtf8(wide.data(), static_cast<int>(n)),
                          static_cast<int>(ToUtf8(ToUtf16(wide).text).text.size()));
            }
        }
    });
}

TEST(StringUtils, Utf32ToUtf8NeedsRoomForTheTerminatorAndNoMore)
{
    std::u32string const text = U"a\u00E9\u20AC\U0001F600";
    char out[16];
    EXPECT_EQ(Utf32ToUtf8(text.c_str(), out, 11), 10);
    EXPECT_STREQ(out, "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(TextError([&] { Utf32ToUtf8(text.c_str(), out, 10); }),
              "Error insufficient destinationCapacity (10) was passed into StringUtils::Utf32ToUtf8.");
    EXPECT_EQ(TextError([&] { Utf32ToUtf8(U"", out, 0); }),
              "Error insufficient destinationCapacity (0) was passed into StringUtils::Utf32ToUtf8.");
    char32_t const odd[] = {0xD800, 0x110000, 0x200000, 0};
    EXPECT_EQ(Utf32ToUtf8(odd, out, 11), 10);
    EXPECT_STREQ(out, "\xED\xA0\x80\xF4\x90\x80\x80\xEF\xBF\xBD");
    EXPECT_EQ(MeasureUtf32ToUtf8(odd), 9); // through UTF-16, where each is U+FFFD
    EXPECT_EQ(MeasureUtf8ToUtf32("a\xF0\x9F\x98\x80"), 2);
    EXPECT_EQ(TextError([&] { Utf32ToUtf8(odd, -2, out, 9); }),
              "Nonsense string length: -2 encountered in StringUtils::Utf32ToUtf8");
}

TEST(StringUtils, Utf8ToUtf32DecodesByTheLeadTable)
{
    char32_t out[100];
    EXPECT_EQ(Utf8ToUtf32("\x80\xBF\xC3(\xED\xA0\x80\xF8\x88\x80\x80\x80\xC1\x81\xE2\x82", out, 8), 8);
    EXPECT_EQ(std::u32string(out, 8), (std::u32string{0x80, 0xFFFD, 0xFFFD, U'(', 0xD800, 0x200000, U'A', 0xFFFD}));
    constexpr char const* kFull =
        "Error unable to process the entire source string in function StringUtils::Utf8ToUtf32";
    EXPECT_EQ(TextError([&] { Utf8ToUtf32("abc", out, 2); }), kFull);
    EXPECT_EQ(TextError([&] { Utf8ToUtf32("abc", out, -1); }), kFull);
    EXPECT_EQ(
        TextError([&] { Utf8ToUtf32("a\0b", 3, out, 9); }),
        "Error in function StringUtils::Utf8ToUtf32 converting non-ASCII characters to UTF-32; no code units were "
        "processed by function CharacterUtils::Utf8ToUtf32");
    std::string const mixed = std::string(70, 'x') + "\xF0\x9F\x98\x80\xFF" + std::string(9, 'y');
    EXPECT_EQ(Utf8ToUtf32(mixed.c_str(), out, 81), 81);
    EXPECT_EQ(out[70], 0x1F600u);
    EXPECT_EQ(out[71], 0xFFFDu);
    EXPECT_EQ(out[80], U'y');
}

TEST(StringUtils, ValidateCopyReplacesLoneSurrogates)
{
    constexpr char const* kError = "Error encountered while StringUtils::StringValidateCopy was trying to use "
                                   "CharacterUtils::CopyTCharacter";
    char16_t const source[] = u"a\U0001F600\xDE00\xD83D";
    char16_t out[6] = {};
    EXPECT_EQ(StringValidateCopy(source, 5, out, 5), 5);
    EXPECT_EQ(std::u16string(out), u"a\U0001F600\uFFFD\uFFFD");
    EXPECT_EQ(StringValidateCopy(source, 2, out, 5), 2);
    EXPECT_EQ(out[1], 0xFFFD); // the pair's second unit is not part of the source
    EXPECT_EQ(TextError([&] { StringValidateCopy(source, 5, out, 4); }), kError);
    EXPECT_EQ(TextError([&] { StringValidateCopy(u"a\0b", 3, out, 5); }), kError);
    EXPECT_EQ(TextError([&] { StringValidateCopy(source, 5, nullptr, 5); }), kError);
    EXPECT_EQ(StringValidateCopy(nullptr, 0, nullptr, 0), 0);
    EXPECT_EQ(TextError([&] { StringValidateCopy(source, -3, out, 5); }),
              "Nonsense string length: -3 encountered in StringUtils::StringValidateCopy");
}

TEST(StringUtils, CountsOverRanges)
{
    char16_t const* const text = u"ab\U0001F600\xDE00\0z";
    constexpr int kTable[][4] = {{0, -1, 4, 5}, {0, 0, 0, 0}, {0, 3, 3, 3}, {0, 4, 3, 4},
                                 {2, 7, 4, 5},  {3, 2, 0, 0}, {-1, 4, 0, 0}};
    for (auto const& [start, end, codePoints, units] : kTable) {
        EXPECT_EQ(LengthInCodePoints(text, start, end), codePoints) << start << ' ' << end;
        EXPECT_EQ(CountValidatedCodeUnits(text, start, end), units) << start << ' ' << end;
    }
    EXPECT_EQ(LengthInCodePoints(nullptr, 0, -1), 0);
    EXPECT_EQ(SubStringSizeInCodeUnits(text, 7, 0, 3), 4);
    EXPECT_EQ(SubStringSizeInCodeUnits(text, 7, 0, 99), 5); // ends at the 0 unit
    EXPECT_EQ(SubStringSizeInCodeUnits(text, 3, 2, 1), 1);  // the pair reaches past the length
    EXPECT_EQ(SubStringSizeInCodeUnits(text, 7, 2, -1), 3);
    EXPECT_EQ(SubStringSizeInCodeUnits(text, 7, 7, 1), 0);
    EXPECT_EQ(SubStringSizeInCodeUnits(nullptr, 7, 0, 1), 0);
}

TEST(StringUtils, LineEndings)
{
    std::pair<std::string, std::string> const cases[] = {
        {"", ""},         {"a\r\r\nb", "a\nb"},     {"a\n\rb", "a\n\nb"},          {"x\r\na\n\rb\n\n", "x\na\nb\n\n"},
        {"\r\r\r", "\n"}, {"x\r\n\r\ny", "x\n\ny"}, {"a\rb\r\nc\rd", "a\nb\nc\nd"}};
    for (auto const& [before, after] : cases) {
        auto const check = [&before = before, &after = after]<class Text>(Text text, int length) {
            EXPECT_EQ(normalizeLineEndings(text.data(), length), static_cast<int>(after.size()))
                << testing::PrintToString(before);
            EXPECT_EQ(Text(text.c_str()), Text(after.begin(), after.end())) << testing::PrintToString(before);
            EXPECT_EQ(normalizeLineEndings(text.data()), static_cast<int>(after.size())); // nothing is left to do
        };
        check(before, -1);
        check(std::u16string(before.begin(), before.end()), static_cast<int>(before.size()));
        check(std::wstring(before.begin(), before.end()), -1);
    }
    EXPECT_EQ(normalizeLineEndings(static_cast<char*>(nullptr)), 0);
    EXPECT_EQ(unixToDos(u"a\nb\r\n\nc", 7), u"a\r\nb\r\n\r\nc");
    EXPECT_EQ(unixToDos(L"\n", 1), u"\r\n");
    EXPECT_EQ(unixToDos(static_cast<char16_t const*>(nullptr), 3), u"");
}

TEST(StringUtils, StandardContainers)
{
    std::u16string const units = u"a\u00E9\U0001F600" + std::u16string(1, 0xD83D) + std::u16string(300, u'\u20AC');
    EXPECT_EQ(toStdString(units), icu_reference::ToUtf8(units).text);
    // Begins like ASCII for longer than one stretch.
    std::u16string const late = std::u16string(5000, u'x') + units + std::u16string(9000, u'y');
    EXPECT_EQ(toStdString(late), icu_reference::ToUtf8(late).text);
    EXPECT_EQ(toStdString(TStringView(late).left(5000)), std::string(5000, 'x'));
    EXPECT_EQ(toStdU16String(units), units);
    EXPECT_EQ(toUtf8Buffer(units).data(), icu_reference::ToUtf8(units).text);
    wchar_t wide[5];
    EXPECT_EQ(toWCharArray(u"a\U0001F600", wide, 5), qvxsys::kWideIsUtf16 ? 3 : 2);
    EXPECT_STREQ(wide, L"a\U0001F600");
    EXPECT_EQ(TextError([&] { toWCharArray(u"abcde", wide, 5); }),
              "Error insufficient destinationCapacity (5) was passed into StringUtils::toWCharArray.");
    EXPECT_EQ(toWCharArray(u"abcde", nullptr, 0), 5);
}

} // namespace
