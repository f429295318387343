// How `qvx scan` finds out encodings. The files are made by iconv, which also tells what text is in them.

#include "qvx/ScanFixture.h"

#include <qvxsys/TTextDecoder.h>

#include "support/Samples.h"

using namespace scan_test;

namespace {

// A sample without its byte order mark, in the encoding; what that has not is left out.
std::string Encoded(samples::Row const& sample, std::string const& encoding)
{
    std::string const from = sample.Encoding().starts_with("UTF-16") ? "UTF-16" : sample.Encoding();
    std::string const utf8 = RunChild({"/usr/bin/iconv", "-f", from, "-t", "UTF-8", Utf8(sample.path)}).out;
    TemporaryFolder const folder;
    std::string const path = Utf8(folder.Path() / "utf8");
    std::ofstream(path, std::ios::binary) << (utf8.starts_with("\xEF\xBB\xBF") ? utf8.substr(3) : utf8);
    return RunChild({"/usr/bin/iconv", "-c", "-f", "UTF-8", "-t", encoding, path}).out;
}

std::string DecodedByIconv(std::string const& path, std::string const& encoding)
{
    return RunChild({"/usr/bin/iconv", "-f", encoding, "-t", "UTF-8", path}).out;
}

std::string Decoded(TTextDecoder& decoder, std::string_view bytes, std::size_t chunk)
{
    TStringCore text;
    for (std::size_t at = 0;; at += chunk) {
        std::string const piece(bytes.substr(std::min(at, bytes.size()), chunk));
        bool const last = at + chunk >= bytes.size();
        decoder.Decode(piece.data(), piece.size(), text, last);
        if (last) {
            return text.toStdString();
        }
    }
}

constexpr struct
{
    char const* encoding; // by iconv's name
    char const* samples;  // beginnings of their names
} kTable[] = {
    {"UTF-8", "bg de ja ka"},
    {"UTF-16LE", "ar de el hi ja ko ru th zh-hans zh-hant"},
    {"UTF-16BE", "am bg en fr he ja ka ko zh-hans zh-hant"},
    {"UTF-32LE", "de ja ru xx-emoji"},
    {"UTF-32BE", "bn ko xx-emoji zh-hans"},
    {"WINDOWS-1250", "cs hu pl"},
    {"WINDOWS-1251", "bg ru"},
    {"WINDOWS-1252", "de es fr nl pt sv"},
    {"WINDOWS-1253", "el"},
    {"WINDOWS-1254", "tr"},
    {"WINDOWS-1255", "he"},
    {"WINDOWS-1256", "ar"},
    {"ISO-8859-1", "de es it sv"},
    {"ISO-8859-2", "cs hu pl"},
    {"ISO-8859-5", "bg ru"},
    {"ISO-8859-6", "ar"},
    {"ISO-8859-7", "el"},
    {"ISO-8859-8", "he"},
    {"ISO-8859-9", "tr"},
    {"KOI8-R", "ru"},
    {"SHIFT_JIS", "ja"},
    {"EUC-JP", "ja"},
    {"ISO-2022-JP", "ja"},
    {"EUC-KR", "ko"},
    {"ISO-2022-KR", "ko"},
    {"GB18030", "zh-hans"},
    {"BIG5", "zh-hant"},
    {"ISO-2022-CN", "zh-hans"},
};

} // namespace

TEST_F(Scan, DetectsEncodings)
{
    std::vector<samples::Row> const all = samples::Table();
    std::string const ascii(300'000, '-'); // more than one read of the tool
    std::map<std::string, std::string> foundBy;
    std::map<std::string, json> counts;
    TTextDecoder decoder = TTextDecoder::Detecting();
    for (auto const& [encoding, names] : kTable) {
        std::istringstream in(names);
        for (std::string name; in >> name;) {
            SCOPED_TRACE(encoding + (" of " + name));
            auto const sample = std::find_if(all.begin(), all.end(), [&](samples::Row const& row) {
                std::string const file = row.path.filename().string();
                return file.starts_with(name + "-") || file == name + ".txt";
            });
            ASSERT_NE(sample, all.end());
            bool const hasAscii = std::string_view(encoding).find("UTF-") == std::string_view::npos;
            std::string const bytes = Encoded(*sample, encoding);
            for (std::string const& before : {std::string(), hasAscii ? ascii : std::string()}) {
                std::string const path = Write(encoding + name + std::to_string(before.size()), before + bytes);
                std::string const text = DecodedByIconv(path, encoding);
                ASSERT_GT(text.size(), before.size() + 500);
                EXPECT_TRUE(Decoded(decoder, before + bytes, 1'000'000) == text);
                foundBy[path] = encoding == std::string("UTF-8") ? "utf-8" : "detected";
                counts[path] = Expected(encoding, before + bytes);
                EXPECT_GE(decoder.Found().confidence, 30) << decoder.Encoding();
            }
        }
    }
    EXPECT_EQ(decoder.Malformed(), 0u);
    json const result = json::parse(Qvx({"scan", "--json", Utf8(Folder())}).out);
    for (json const& file : result["files"]) {
        std::string const path = file["path"];
        EXPECT_EQ(file["encodingFoundBy"], foundBy[path]) << path;
        EXPECT_EQ(CountsOf(file), counts[path]) << path;
        counts.erase(path);
    }
    EXPECT_TRUE(counts.empty());
}

TEST_F(Scan, TellsHowTheEncodingWasFound)
{
    std::string const german = Encoded({samples::Folder() / "texts/de-chess.txt", false, 0, 0}, "UTF-16BE");
    std::pair<std::string, char const*> const table[] = {
        {"", "UTF-8 0 utf-8"},
        {"\xE9", "ISO-8859-1 1 detected 0%?"},
        {"\xEF\xBB\xBF\xEF\xBB\xBFg\xFF", "UTF-8 3 bom"}, // a second mark is text
        {"\xC3\xBC\xC3\x9F\xE2\x82\xAC\xFF", "UTF-8 4 detected 75%"},
        {german.substr(0, 400) + "\xD8", "UTF-16BE 201 detected 99%"},
    };
    for (auto const& [bytes, shown] : table) {
        EXPECT_EQ(Qvx({"scan", "--print", "%2 %4 %10", Write("x", bytes)}).out, shown + std::string("\n"));
    }
}
