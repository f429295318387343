// TTextDecoder against ICU's converters, for every way of cutting the text.

#include <qvxsys/TTextDecoder.h>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/IcuDecode.h"
#include "support/Samples.h"

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

std::string Random(std::mt19937& random, std::string_view alphabet, std::size_t length)
{
    std::string result(length, '\0');
    std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
    std::generate(result.begin(), result.end(), [&] { return alphabet[pick(random)]; });
    return result;
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

class TextDecoder : public testing::TestWithParam<char const*>
{};

} // namespace

TEST_P(TextDecoder, AgreesWithIcuForEveryChunkSize)
{
    std::mt19937 random(1);
    std::vector<std::string> inputs = DamagedTexts(random, GetParam());
    std::string allBytes(256, '\0');
    std::generate(allBytes.begin(), allBytes.end(), [next = '\0']() mutable { return next++; });
    inputs.push_back(allBytes);
    // Bytes that often make up sequences, pairs, escapes: of UTF-8, of UTF-16 and 32, of the East Asian encodings.
    for (std::string_view const alphabet :
         {std::string_view("\xE2\x82\xAC\xF0\x9F\x98\x80\xED\xA0\xC0\xF4\x90\xC3\x41\xFF"),
          std::string_view("\0\xD8\xDC\xD9\x41\x10\xFE\xFF\0\xDF", 10),
          std::string_view("\x1B$B(J\x30\x21\x81\x8F\xA4\xA6\xFE\x0E\x0F")}) {
        for (std::size_t length = 0; length < 90; ++length) {
            inputs.push_back(Random(random, alphabet, 1 + length % 30));
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
    struct
    {
        char const* given;
        char const* shown;
    } const table[] = {{"utf8", "UTF-8"},
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
        SCOPED_TRACE(given != nullptr ? given : "(null)");
        EXPECT_EQ(TTextDecoder::IsKnownEncoding(given), shown != nullptr);
        try {
            EXPECT_STREQ(TTextDecoder(given).Encoding(), shown);
        } catch (TStringCore::Exception const& e) {
            EXPECT_EQ(shown, nullptr);
            EXPECT_EQ(e.toStdString(), std::string("Unknown text encoding: ") + (given != nullptr ? given : ""));
        }
    }
}

TEST(TextDecoderTest, Detect)
{
    using namespace std::string_view_literals;
    struct
    {
        std::string_view bytes;
        char const* encoding;
        std::size_t bom;
        bool binary;
    } const table[] = {
        {""sv, "UTF-8", 0, false},
        {"plain"sv, "UTF-8", 0, false},
        {"\xEF\xBB\xBF"sv, "UTF-8", 3, false},
        {"\xEF\xBB\xBF\0"sv, "UTF-8", 3, true},
        {"\xEF\xBB"sv, "UTF-8", 0, false}, // cut off, not malformed
        {"\xFF\xFE"sv, "UTF-16LE", 2, false},
        {"\xFF\xFE\0"sv, "UTF-16LE", 2, false},
        {"\xFF\xFE"
         "a\0"sv,
         "UTF-16LE", 2, false},
        {"\xFF\xFE\0\0"sv, "UTF-32LE", 4, false},
        {"\xFE\xFF\0a"sv, "UTF-16BE", 2, false},
        {"\0\0\xFE\xFF\0\0\0a"sv, "UTF-32BE", 4, false},
        {"a\0b"sv, "UTF-8", 0, true},
        {"Gr\xC3\xBC\xC3\x9F"
         "e \xE2\x82\xAC \xFF"sv,
         "UTF-8", 0, false}, // three characters, one fault
        {"\x82\xB1\x82\xF1\x82\xC9\x82\xBF\x82\xCD\x81\x41\x90\xA2\x8A\x45\x81\x42\x82\xB1\x82\xEA\x82\xCD\x93\xFA"sv,
         "Shift_JIS", 0, false},
        {"\x93\xFA \xFF"sv, "ISO-8859-1", 0, false}, // too little for any verdict
    };
    for (auto const& [bytes, encoding, bom, binary] : table) {
        SCOPED_TRACE(testing::PrintToString(bytes));
        TTextDecoder::Detection const found = TTextDecoder::Detect(bytes.data(), bytes.size());
        EXPECT_EQ(found.encoding, encoding);
        EXPECT_EQ(found.bomLength, bom);
        EXPECT_EQ(found.looksBinary, binary);
    }
}

// Latin-9 cannot be told from Latin-1 by statistics. Binary data may be anything.
TEST(TextDecoderTest, Samples)
{
    std::vector<samples::Row> const table = samples::Table();
    ASSERT_GT(table.size(), 50u);
    for (samples::Row const& row : table) {
        SCOPED_TRACE(row.path);
        std::string const bytes = samples::ReadFile(row.path);
        ASSERT_EQ(bytes.size(), row.bytes);
        TTextDecoder decoder(row.Encoding().c_str());
        std::u16string const decoded = InChunks(decoder, bytes, 100).text;
        TStringView const text = decoded;
        int const bom = !text.empty() && text[0] == 0xFEFF ? 1 : 0;
        EXPECT_EQ(decoder.Malformed(), row.broken ? row.last : 0);
        EXPECT_TRUE(row.broken || static_cast<std::size_t>(text.lengthInCodePoints() - bom) == row.last);
        TTextDecoder::Detection const found = TTextDecoder::Detect(bytes.data(), bytes.size());
        bool const binary = row.path.extension() == ".dat";
        std::string const expected = row.Encoding() == "ISO-8859-15" ? "ISO-8859-1" : row.Encoding();
        EXPECT_EQ(found.looksBinary, binary);
        EXPECT_TRUE(binary || found.encoding == expected) << found.encoding;
    }
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
    EXPECT_TRUE(converter.Decode("\xB1", 1, true) == TStringView(u"\uFF71"));
}
