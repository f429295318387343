#include "BenchText.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

#include <qvxsys/StringUtils.h>
#include <qvxsys/TStringCore.h>

namespace bench {
namespace {

struct Source
{
    char const* kind;
    char const* file;   // in the folder of QVXSYS_BENCH_TEXT
    char const* sample; // in the tree
    char32_t lowest;    // other code points are left out, but for spaces
    char32_t highest;
};

// The first names are those of the text collection that published figures about transcoding are usually made with.
constexpr Source kSources[] = {
    {"ASCII", "Latin-Lipsum.utf8.txt", "en-harbour.txt", 0, 0x7F},
    {"French", "french.utflatin8.txt", "fr-letter.txt", 0, 0x10FFFF},
    {"Cyrillic", "Russian-Lipsum.utf8.txt", "ru-dacha.txt", 0, 0x10FFFF},
    {"CJK", "Chinese-Lipsum.utf8.txt", "zh-hans-park.txt", 0x800, 0xFFFF},
    {"emoji", "Emoji-Lipsum.utf8.txt", "xx-emoji.txt", 0x10000, 0x10FFFF},
};

std::string ReadFile(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::cerr << "cannot read " << path << '\n';
        std::exit(1);
    }
    std::string text(std::istreambuf_iterator<char>(file), {});
    // Decoders differ on a byte order mark, which is not part of the text.
    if (text.starts_with("\xEF\xBB\xBF")) {
        text.erase(0, 3);
    }
    return text;
}

bool BeginsCodePoint(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

std::u32string Decoded(std::string const& utf8)
{
    std::u32string result(utf8.size() + 1, U'\0');
    auto const utf16 = TStringCore::fromStdString(utf8).toStdUString();
    int const n = StringUtils::Utf16ToUtf32(utf16.data(), static_cast<int>(utf16.size()), result.data(),
                                            static_cast<int>(result.size()));
    result.resize(static_cast<std::size_t>(n));
    return result;
}

std::string Encoded(std::u32string const& text)
{
    return TStringCore::fromUtf32(text.data(), static_cast<int>(text.size())).toStdString();
}

// A short text merely repeated is one that the branch predictor knows by heart: pieces of it follow each other by
// chance.
std::string Shuffled(Source const& source, std::size_t bytes)
{
    constexpr std::size_t kLongestPiece = 9;
    std::vector<std::string> pieces;
    std::u32string piece;
    for (char32_t const c : Decoded(ReadFile(std::string(QVXSYS_BENCH_SAMPLES "/") + source.sample))) {
        if (c == U' ' || (c >= source.lowest && c <= source.highest)) {
            piece += c;
        }
        if (!piece.empty() && (c == U' ' || piece.size() == kLongestPiece)) {
            pieces.push_back(Encoded(piece));
            piece.clear();
        }
    }
    std::minstd_rand random(1);
    std::string result;
    while (result.size() < bytes) {
        result += pieces[random() % pieces.size()];
    }
    return result;
}

Text Make(std::string kind, std::string utf8)
{
    Text text{std::move(kind), std::move(utf8), {}, {}};
    text.utf16 = TStringCore::fromStdString(text.utf8).toStdUString();
    text.utf32 = Decoded(text.utf8);
    return text;
}

} // namespace

std::vector<Text> WellFormedTexts(std::size_t bytes)
{
    char const* const folder = std::getenv("QVXSYS_BENCH_TEXT");
    std::vector<Text> texts;
    for (Source const& source : kSources) {
        std::string utf8;
        if (folder != nullptr) {
            std::string const file = ReadFile(std::string(folder) + "/" + source.file);
            while (utf8.size() < bytes) {
                utf8 += file;
            }
        } else {
            utf8 = Shuffled(source, bytes);
        }
        std::size_t end = bytes;
        while (end < utf8.size() && !BeginsCodePoint(utf8[end])) {
            ++end;
        }
        utf8.resize(end);
        texts.push_back(Make(source.kind, std::move(utf8)));
    }
    return texts;
}

Text Damaged(Text const& text, std::size_t distance)
{
    std::string utf8 = text.utf8;
    for (std::size_t i = distance - 1; i < utf8.size(); i += distance) {
        utf8[i] = '\xFF';
    }
    return Make(text.kind + ", 1 in " + std::to_string(distance) + " malformed", std::move(utf8));
}

} // namespace bench
