#pragma once
// The tool run as a program on files made for the test.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unicode/ustring.h>

#include "support/ChildProcess.h"
#include "support/IcuDecode.h"
#include "support/TemporaryFolder.h"

namespace scan_test {

namespace fs = std::filesystem;
using nlohmann::json;

/// A path in the system's spelling, in UTF-8, and back.
inline std::string Utf8(fs::path path)
{
    std::u8string const name = path.make_preferred().u8string();
    return {name.begin(), name.end()};
}
inline fs::path FromUtf8(std::string const& name)
{
    return fs::path(std::u8string(name.begin(), name.end()));
}

inline ChildResult Qvx(std::vector<std::string> arguments, ChildOptions const& options = {})
{
    arguments.insert(arguments.begin(), Utf8(fs::absolute(QVX_PROGRAM)));
    return RunChild(arguments, options);
}

inline std::vector<std::string> Lines(std::string const& text)
{
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// What the tool should count in a file with these bytes.
inline json Expected(char const* encoding, std::string const& bytes)
{
    icu_reference::Decoded decoded = icu_reference::Decode(encoding, bytes);
    if (decoded.text.starts_with(u'\uFEFF')) {
        decoded.text.erase(0, 1);
    }
    return {{"bytes", bytes.size()},
            {"units", decoded.text.size()},
            {"codePoints", u_countChar32(decoded.text.data(), static_cast<int>(decoded.text.size()))},
            {"lines", std::count(decoded.text.begin(), decoded.text.end(), u'\n')},
            {"malformed", decoded.malformed}};
}

inline json CountsOf(json const& entry)
{
    json counts;
    for (char const* const key : {"bytes", "units", "codePoints", "lines", "malformed"}) {
        counts[key] = entry.at(key);
    }
    return counts;
}

inline std::vector<std::string> Paths(json const& entries)
{
    std::vector<std::string> paths;
    for (json const& entry : entries) {
        paths.push_back(entry.at("path"));
    }
    return paths;
}

/// The reason for each path that was not scanned. Checks that stderr has a line for each.
inline std::map<std::string, std::string> Errors(ChildResult const& run)
{
    std::map<std::string, std::string> found;
    std::string lines;
    json const result = json::parse(run.out);
    for (json const& error : result["errors"]) {
        EXPECT_FALSE(found.contains(error["path"])) << error["path"];
        found[error["path"]] = error["reason"];
        std::string messages = error["reason"];
        for (std::string const context : error["context"]) {
            messages += "; " + context;
        }
        lines += "qvx: " + error["path"].get<std::string>() + ": " + messages + " (" +
                 error["name"].get<std::string>() + ")\n";
    }
    EXPECT_EQ(run.err, lines);
    return found;
}

class Scan : public testing::Test
{
protected:
    fs::path const& Folder() const { return m_folder.Path(); }
    ChildOptions InFolder() const
    {
        ChildOptions options;
        options.folder = Utf8(Folder());
        return options;
    }
    std::string In(std::string const& name) const { return Utf8(Folder() / FromUtf8(name)); }
    std::string Write(std::string const& name, std::string const& bytes) const
    {
        std::ofstream(Folder() / FromUtf8(name), std::ios::binary) << bytes;
        return In(name);
    }

private:
    TemporaryFolder m_folder;
};

} // namespace scan_test
