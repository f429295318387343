// TTextDecoder against ICU's converters, for every way of cutting the text.

#include <qvxsys/TTextDecoder.h>

#include <numeric>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "support/IcuDecode.h"
#include "support/TextPrinters.h"

using icu_reference::Decoded;

namespace {

constexpr char const* kEncodings[] = {"UTF-8",        "UTF-16LE",    "UTF-16BE", "UTF-32LE",     "UTF-32BE",
                                      "ISO-8859-1",   "ISO-8859-15", "US-ASCII", "windows-1252", "Shift_JIS",
                                      "gb18030",      "ISO-2022-JP", "EUC-KR",   "UTF-16",       "ISO-8859-7",
                                      "windows-1255", "SCSU",        "CESU-8",   "Big5-HKSCS"};

Decoded InChunks(TTextDecoder& decoder, std::string_view bytes, std::size_t chunk)
{
    Decoded result;
    std::size_t const before = decoder.Malformed();
    for (std::size_t at = 0;; at += chunk) {
        bool const last = at + chunk >= bytes.size();
        // The chunk is copied so that reading past its end is seen by the address sanitizer.
        std::vector<char> const piece(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                                      last ? bytes.end() : bytes.begin() + static_cast<std::ptrdiff_t>(at + chunk));
        result.text += std::u16string_view(decoder.Decode(piece.data(), piece.size(), last));
        bool const pairOpen = !result.text.empty() && (result.text.back() & 0xFC00) == 0xD800;
        EXPECT_TRUE(last || piece.empty() || !pairOpen) << "a chunk's result ends inside a pair";
        if (last) {
            result.malformed = decoder.Malformed() - before;
            return result;
        }
    }
}

// Text that is mostly sound in the encoding, with one byte lost somewhere or the end cut off.
std::vector<std::string> DamagedTexts(std::mt19937& random, char const* encoding)
{
    std::u16string const text = u"A\u00E9\u20AC\u0436 \u05D0\n\u3042\u6F22\U0001F600\U00020BB7 z\uFEFF\uFFFD\uD55C";
    std::string const sound = icu_reference::Encode(encoding, text);
    std::vector<std::string> result{sound, ""};
    for (std::size_t i = 0; i < 12; ++i) {
        std::size_t const at = random() % sound.size();
        result.push_back(sound.substr(0, at));
        result.push_back(sound.substr(0, at) + sound.substr(at + 1));
    }
    return result;
}

using TextDecoder = testing::TestWithParam<char const*>;

} // namespace

TEST_P(TextDecoder, AgreesWithIcuForEveryChunkSize)
{
    std::mt19937 random(1);
    std::vector<std::string> inputs = DamagedTexts(random, GetParam());
    std::string& allBytes = inputs.emplace_back(256, '\0');
    std::iota(allBytes.begin(), allBytes.end(), '\0');
    // Bytes that often make up sequences, pairs, escapes: of UTF-8, of UTF-16 and 32, of the East Asian encodings.
    for (std::string_view const alphabet :
         {std::string_view("\xE2\x82\xAC\xF0\x9F\x98\x80\xED\xA0\xC0\xF4\x90\xC3\x41\xFF"),
          std::string_view("\0\xD8\xDC\xD9\x41\x10\xFE\xFF\0\xDF", 10),
          std::string_view("\x1B$B(J\x30\x21\x81\x8F\xA4\xA6\xFE\x0E\x0F")}) {
        for (std::size_t length = 0; length < 90; ++length) {
            std::string text(1 + length % 30, '\0');
            std::ranges::generate(text, [&] { return alphabet[random() % alphabet.size()]; });
            inputs.push_back(text);
        }
    }
    TTextDecoder decoder(GetParam());
    for (std::string const& input : inputs) {
        Decoded const expected = icu_reference::Decode(GetParam(), input);
        for (std::size_t chunk = 1; chunk <= input.size() + 1; ++chunk) {
            ASSERT_EQ(InChunks(decoder, input, chunk), expected)
                << "chunks of " << chunk << " of " << testing::PrintToString(input);
        }
    }
}

// Longer than the blocks and vectors that the work is done in; pairs and sequences lie across their borders.
TEST_P(TextDecoder, AgreesWithIcuForLongTexts)
{
    std::mt19937 random(2);
    std::u16string text;
    while (text.size() < 12000) {
        text += random() % 3 == 0 ? u"\U0001F600" : random() % 3 == 0 ? u"\u0436" : u"a";
    }
    std::string const bytes = icu_reference::Encode(GetParam(), text);
    std::string const withFault = bytes.substr(0, bytes.size() / 2) + bytes.substr(bytes.size() / 2 + 1);
    TTextDecoder decoder(GetParam());
    for (std::string const& input : {bytes, withFault}) {
        Decoded const expected = icu_reference::Decode(GetParam(), input);
        for (std::size_t const chunk : {1u, 63u, 64u, 1001u, 4095u, 4096u, 8191u, 1000000u}) {
            ASSERT_TRUE(InChunks(decoder, input, chunk) == expected) << "chunks of " << chunk;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Encodings, TextDecoder, testing::ValuesIn(kEncodings), [](auto const& parameter) {
    std::string name = parameter.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST(TextDecoderTest, Names)
{
    std::pair<char const*, char const*> const table[] = {{"utf8", "UTF-8"},
                                                         {"Utf_16le", "UTF-16LE"},
                                                         {"utf-32be", "UTF-32BE"},
                                                         {"latin1", "ISO-8859-1"},
                                                         {"Latin-9", "ISO-8859-15"},
                                                         {"local", ucnv_getDefaultName()},
                                                         {"ibm-1047", "ibm-1047"},
                                                         {"windows-1251", "windows-1251"},
                                                         {"no such encoding", nullptr},
                                                         {"", nullptr},
                                                         {nullptr, nullptr}};
    for (auto const& [given, shown] : table) {
        std::string const name = given != nullptr ? given : "";
        EXPECT_EQ(TTextDecoder::IsKnownEncoding(given), shown != nullptr) << name;
        std::string const error = testing_support::TextError(
            [given = given, shown = shown] { EXPECT_STREQ(TTextDecoder(given).Encoding(), shown); });
        EXPECT_EQ(error, shown != nullptr ? "" : "Unknown text encoding: " + name);
    }
}

TEST(TextDecoderTest, Detect)
{
    using namespace std::string_view_literals;
    using enum TTextDecoder::FoundBy;
    std::tuple<std::string_view, std::string_view, TTextDecoder::FoundBy, bool> const table[] = {
        {""sv, "UTF-8", Utf8, false},
        {"\0"sv, "UTF-8", Utf8, true},
        {"\xEF\xBB\xBF"sv, "UTF-8", ByteOrderMark, false},
        {"\xEF\xBB\xBF\0"sv, "UTF-8", ByteOrderMark, true},
        {"Caf\xE9"sv, "ISO-8859-1", Statistics, false}, // rather than UTF-8 that is cut off
        {"\xC3\xA4 \xC3"sv, "UTF-8", Statistics, false},
        {"\xFF\xFE\0"sv, "UTF-16LE", ByteOrderMark, false},
        {"\xFF\xFE\0\0"sv, "UTF-32LE", ByteOrderMark, false},
        {"\xFE\xFF\0a"sv, "UTF-16BE", ByteOrderMark, false},
        {"\0\0\xFE\xFF\0\0\0a"sv, "UTF-32BE", ByteOrderMark, false},
        {"a\0b"sv, "UTF-8", Utf8, true},
        {"\0H\0i\0\n"sv, "UTF-16BE", Statistics, false},
        {"\0\0\0H\0\0\0i"sv, "UTF-32BE", Statistics, false},
        {"\x20\x04\x43\x04\x41\x04\x41\x04\x3A\x04\x38\x04\x39\x04\x20\0\x3D\xD8\x00\xDE"sv, "UTF-16LE", Statistics,
         false},
        {"name\0and names\0in bytes\0of\0even length\0"sv, "UTF-8", Utf8, true},
        {"\x7F"
         "ELF\2\1\1\0\0\0\0\0\0\0\0\0\3\0\x3E\0\1\0\0\0\x90\x12\0\0"sv,
         "ISO-8859-1", Statistics, true},
        {"\1\0\2\0\3\0\4\0\xFF\xFF"sv, "ISO-8859-1", Statistics, true},
        {"\x1B[1mbold\x1B[0m"sv, "UTF-8", Utf8, false},
        {"\x1B$B$3$l$OF|K\\8l\x1B(B."sv, "ISO-2022-JP", Statistics, false},
        {"Gr\xC3\xBC\xC3\x9F"
         "e \xE2\x82\xAC \xFF"sv,
         "UTF-8", Statistics, false}, // three characters, one fault
        {"\x82\xB1\x82\xF1\x82\xC9\x82\xBF\x82\xCD\x81\x41\x90\xA2\x8A\x45\x81\x42\x82\xB1\x82\xEA\x82\xCD\x93\xFA"sv,
         "Shift_JIS", Statistics, false},
        {"\x93\xFA \xFF"sv, "ISO-8859-1", Statistics, false}, // too little for any verdict
    };
    for (auto const& [bytes, encoding, foundBy, binary] : table) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        TTextDecoder::Detection const found = TTextDecoder::Detect(bytes.data(), bytes.size());
        EXPECT_EQ(found.encoding, encoding);
        EXPECT_EQ(found.foundBy, foundBy);
        EXPECT_EQ(found.looksBinary, binary);
        EXPECT_EQ(found.bomLength, foundBy != ByteOrderMark ? 0u
                                   : bytes[0] == '\xEF'     ? 3u
                                   : encoding[4] == '3'     ? 4u
                                                            : 2u);
        EXPECT_TRUE(foundBy == Statistics ? found.confidence <= 100 : found.confidence == 100);
    }
    EXPECT_TRUE(TTextDecoder::Detect("\x93\xFA \xFF", 4).IsUncertain());
    EXPECT_EQ(TTextDecoder("latin1").Found().foundBy, Given);
    EXPECT_EQ(TTextDecoder("latin1").Found().encoding, "ISO-8859-1");
}

// What tells the encoding may lie far behind the beginning, and anywhere among the chunks.
TEST(TextDecoderTest, DetectsInChunks)
{
    std::string ascii(200'001, '.');
    std::u16string russian;
    for (int i = 0; i < 50; ++i) {
        russian +=
            u"\u0412 \u043D\u0430\u0447\u0430\u043B\u0435 \u0431\u044B\u043B\u043E \u0441\u043B\u043E\u0432\u043E\n";
    }
    auto const inEncoding = [&](char const* encoding) { return icu_reference::Encode(encoding, russian); };
    std::pair<std::string, char const*> const table[] = {
        {ascii, "UTF-8"},
        {ascii + inEncoding("UTF-8"), "UTF-8"},
        {ascii + inEncoding("UTF-8") + "\xFF", "UTF-8"},
        {ascii + inEncoding("windows-1251") + ascii, "windows-1251"},
        {"\x1B[1m" + ascii + inEncoding("KOI8-R"), "KOI8-R"},
        {ascii + inEncoding("ISO-2022-JP"), "ISO-2022-JP"},
        {ascii.substr(0, 131'072) + "\x1B[1m" + ascii + inEncoding("KOI8-R") + ascii, "KOI8-R"},
        {inEncoding("UTF-16BE") + inEncoding("UTF-16BE"), "UTF-16BE"},
        {"\xFF\xFE" + inEncoding("UTF-16LE"), "UTF-16LE"},
    };
    for (auto const& [bytes, encoding] : table) {
        Decoded const expected = icu_reference::Decode(encoding, bytes);
        std::size_t const bom = expected.text.starts_with(u'\xFEFF') ? 1 : 0;
        EXPECT_EQ(TTextDecoder::Detect(bytes.data(), bytes.size()).encoding, encoding);
        TTextDecoder decoder = TTextDecoder::Detecting();
        for (std::size_t const chunk : {std::size_t{777}, std::size_t{65536}, bytes.size()}) {
            SCOPED_TRACE(encoding + std::string(" in chunks of ") + std::to_string(chunk));
            Decoded const found = InChunks(decoder, bytes, chunk);
            EXPECT_TRUE(found.text == expected.text.substr(bom));
            EXPECT_EQ(found.malformed, expected.malformed);
            EXPECT_STREQ(decoder.Encoding(), encoding);
            EXPECT_EQ(decoder.Found().encoding, encoding);
        }
    }
    TTextDecoder decoder = TTextDecoder::Detecting();
    EXPECT_TRUE(decoder.Decode("\xC4", 1, false).empty());
    decoder.Reset();
    EXPECT_TRUE(decoder.Decode("\xC3\xA4", 2, true) == TStringView(u"\u00E4"));
}

TEST(TextDecoderTest, StateBetweenTexts)
{
    TTextDecoder decoder("UTF-8");
    TStringCore text = u">";
    decoder.Decode("\xE2\x82", 2, text, false);
    decoder.Decode(nullptr, 0, text, false);
    EXPECT_EQ(text, u">");
    TTextDecoder moved = std::move(decoder);
    moved.Decode("\xAC\xF0\x9F", 3, text, false);
    moved.Decode(nullptr, 0, text, true);
    EXPECT_EQ(text, u">\u20AC\uFFFD");
    EXPECT_EQ(moved.Malformed(), 1u);
    moved.Decode("\xE2\x82", 2, text, false);
    moved.Reset();
    EXPECT_EQ(moved.Malformed(), 0u);
    EXPECT_TRUE(moved.Decode("\xAC", 1, true) == TStringView(u"\uFFFD"));
    EXPECT_THROW(static_cast<void>(moved.Decode("", TTextDecoder::kMaxChunk + 1, true)), TStringCore::Exception);

    TTextDecoder converter("Shift_JIS");
    EXPECT_TRUE(converter.Decode("\x82", 1, false).empty());
    converter.Reset();
    moved = std::move(converter);
    EXPECT_TRUE(moved.Decode("\xB1", 1, true) == TStringView(u"\uFF71"));
}
