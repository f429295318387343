#pragma once
// The sample texts that come with the sources, and the tables of their README, which were made with other software.

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
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
    std::vector<Row> rows;
    bool broken = false;
    for (std::string line; std::getline(in, line);) {
        broken = broken || line == "## broken";
        if (line.starts_with("| `")) {
            std::vector<std::string> cells;
            std::istringstream text(line);
            for (std::string cell; std::getline(text, cell, '|');) {
                cells.push_back(cell);
            }
            std::string const name = cells[1].substr(2, cells[1].size() - 4); // without spaces and backticks
            rows.push_back({Folder() / (broken ? "broken" : "texts") / name, broken,
                            std::stoul(cells[cells.size() - 2]), std::stoul(cells.back())});
        }
    }
    return rows;
}

} // namespace samples
