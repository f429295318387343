#pragma once
// The sample texts that come with the sources, and the tables of their README, which were made with other software.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

namespace samples {

inline std::filesystem::path Folder()
{
    char const* const folder = std::getenv("QVXSYS_SAMPLES");
    return folder != nullptr ? folder : "samples";
}

inline std::string ReadFile(std::filesystem::path const& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// A row of a table: for texts/ `last` is the number of code points, for broken/ that of malformed sequences.
struct Row
{
    std::filesystem::path path;
    bool broken;
    std::size_t bytes;
    std::size_t last;

    /// By the ending, as the README explains: ".latin9" and so on; UTF-8 without one.
    [[nodiscard]] std::string Encoding() const
    {
        std::string const name = path.filename().string();
        auto const has = [&name](char const* tag) { return name.find(tag) != std::string::npos; };
        return has(".utf16le.")   ? "UTF-16LE"
               : has(".utf16be.") ? "UTF-16BE"
               : has(".latin1.")  ? "ISO-8859-1"
               : has(".latin9.")  ? "ISO-8859-15"
                                  : "UTF-8";
    }
};

inline std::vector<Row> Table()
{
    std::ifstream in(Folder() / "README.md");
    std::regex const row(R"(\| `([^`]+)` \|.*\| (\d+) \| (\d+) \|)");
    std::vector<Row> rows;
    bool broken = false;
    for (std::string line; std::getline(in, line);) {
        std::smatch match;
        broken = broken || line == "## broken";
        if (std::regex_match(line, match, row)) {
            rows.push_back({Folder() / (broken ? "broken" : "texts") / match[1].str(), broken, std::stoul(match[2]),
                            std::stoul(match[3])});
        }
    }
    return rows;
}

} // namespace samples
