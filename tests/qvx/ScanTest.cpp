// The tool `qvx scan`, run as a program. What it counts is compared with ICU.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <sys/stat.h>

#include <nlohmann/json.hpp>
#include <unicode/ustring.h>

#include "support/ChildProcess.h"
#include "support/IcuDecode.h"
#include "support/Samples.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

ChildResult Qvx(std::vector<std::string> arguments, ChildOptions const& options = {})
{
    arguments.insert(arguments.begin(), QVX_PROGRAM);
    return RunChild(arguments, options);
}

// What the tool should count in a file with these bytes.
json Expected(char const* encoding, std::string const& bytes)
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

json CountsOf(json const& entry)
{
    json counts;
    for (char const* const key : {"bytes", "units", "codePoints", "lines", "malformed"}) {
        counts[key] = entry.at(key);
    }
    return counts;
}

std::vector<std::string> Paths(json const& entries)
{
    std::vector<std::string> paths;
    for (json const& entry : entries) {
        paths.push_back(entry.at("path"));
    }
    return paths;
}

// An empty folder, open to every user and removed at the end.
class Scan : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string name = (fs::temp_directory_path() / "qvx-test-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        m_folder = name;
        fs::permissions(m_folder, fs::perms(0755));
    }
    void TearDown() override { fs::remove_all(m_folder); }

    std::string In(std::string const& name) const { return (m_folder / name).string(); }
    std::string Write(std::string const& name, std::string const& bytes) const
    {
        std::ofstream(m_folder / name, std::ios::binary) << bytes;
        return In(name);
    }

    fs::path m_folder;
};

} // namespace

TEST_F(Scan, SamplesAgreeWithIcu)
{
    ChildResult const run = Qvx({"scan", "--json", samples::Folder().string()});
    json const result = json::parse(run.out);
    std::map<std::string, json> found;
    json total = CountsOf(result["total"]);
    for (json const& file : result["files"]) {
        found[file.at("path")] = file;
        json const counts = CountsOf(file);
        for (auto const& [key, value] : counts.items()) {
            total[key] = total[key].get<std::int64_t>() - value.get<std::int64_t>();
        }
    }
    EXPECT_EQ(total, Expected("UTF-8", "")) << "the total is not the sum";
    EXPECT_EQ(result["total"]["files"], found.size());
    EXPECT_EQ(result["errors"], json::array());
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);

    std::vector<samples::Row> const table = samples::Table();
    EXPECT_EQ(found.size(), table.size() + 2); // the README and .gitattributes
    for (samples::Row const& row : table) {
        std::string const path = row.path.string();
        std::string const encoding = row.Encoding();
        ASSERT_TRUE(found.contains(path)) << path;
        EXPECT_EQ(CountsOf(found[path]), Expected(encoding.c_str(), samples::ReadFile(path))) << path;
        EXPECT_TRUE(found[path]["encoding"] == encoding || encoding == "ISO-8859-15") << path;
    }
}

// Sequences of every length, shifted by every offset, lie across all borders of the pieces in which the file is read.
TEST_F(Scan, SequencesAcrossReads)
{
    struct
    {
        std::string unit;
        char const* encoding;
    } const table[] = {{"\xC3\xA9", "UTF-8"},
                       {"\xE2\x82\xAC", "UTF-8"},
                       {"\xF0\x9F\x98\x80", "UTF-8"},
                       {"\xF0\x9F\x98", "UTF-8"}, // malformed
                       {std::string("\x3D\xD8\0\xDE", 4), "UTF-16LE"},
                       {"\xD8\x3D\xDE\n", "UTF-16BE"},
                       {"\x81\x30\x81\x30", "gb18030"}};
    for (auto const& [unit, encoding] : table) {
        std::string body;
        while (body.size() < 1100000) {
            body += unit;
        }
        for (std::size_t offset = 0; offset < unit.size(); ++offset) {
            std::string const bytes = std::string(offset, '\n') + body;
            std::string const path = Write("big", bytes);
            ChildResult const run = Qvx({"scan", "--json", "--encoding", encoding, path});
            ASSERT_EQ(run.status, 0) << run.err;
            ASSERT_EQ(CountsOf(json::parse(run.out)["files"][0]), Expected(encoding, bytes))
                << encoding << ' ' << offset;
        }
    }
}

TEST_F(Scan, NamedEncoding)
{
    std::string bytes;
    for (int i = 0; i < 2000; ++i) {
        bytes += i % 3 == 0 ? '\0' : static_cast<char>(i * i % 251);
    }
    std::string const binary = Write("binary", bytes);
    for (char const* const encoding : {"UTF-8", "UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE", "ISO-8859-1",
                                       "ISO-8859-15", "windows-1252", "Shift_JIS", "UTF-16"}) {
        // An absolute path stands for itself.
        for (std::string const& name :
             {binary, std::string("broken/empty.txt"), std::string("texts/ko-kimchi.utf8bom.txt"),
              std::string("texts/ja-station.utf16le.txt")}) {
            fs::path const path = samples::Folder() / name;
            ChildResult const run = Qvx({"scan", path.string(), "--json", "--encoding", encoding});
            EXPECT_EQ(run.status, 0);
            EXPECT_EQ(run.err, "");
            EXPECT_EQ(CountsOf(json::parse(run.out)["files"][0]), Expected(encoding, samples::ReadFile(path)))
                << encoding << ' ' << name;
        }
    }
}

TEST_F(Scan, ErrorsDoNotStopIt)
{
    Write("a", "text");
    Write("b-binary", std::string("te\0xt", 5));
    ASSERT_EQ(mkfifo(In("c-fifo").c_str(), 0666), 0);
    Write("d-unreadable", "text");
    fs::permissions(In("d-unreadable"), fs::perms::none);
    fs::create_directory(In("e-folder"));
    fs::permissions(In("e-folder"), fs::perms::none);
    fs::create_symlink("f-loop", In("f-loop"));
    fs::create_symlink("nowhere", In("g-dangling"));
    Write("z", "text\n");
    ChildOptions options;
    options.unprivileged = true;
    ChildResult const run = Qvx({"scan", "--json", "/dev/null", In("missing"), m_folder.string()}, options);
    if (run.status == 127) {
        GTEST_SKIP() << "the program cannot be run by an unprivileged user here";
    }
    EXPECT_EQ(run.status, 1);
    json const result = json::parse(run.out);
    EXPECT_EQ(Paths(result["files"]), (std::vector<std::string>{In("a"), In("z")}));
    std::map<std::string, std::string> const expected = {
        {"/dev/null", "is a device"},
        {In("missing"), "No such file or directory"},
        {In("b-binary"), "is a binary file"},
        {In("c-fifo"), "is a FIFO"},
        {In("d-unreadable"), "Permission denied"},
        {In("e-folder"), "Permission denied"},
        {In("f-loop"), "Too many levels of symbolic links"},
        {In("g-dangling"), "No such file or directory"},
    };
    std::map<std::string, std::string> found;
    std::string lines;
    for (json const& error : result["errors"]) {
        found[error["path"]] = error["reason"];
        lines += "qvx: " + error["path"].get<std::string>() + ": " + error["reason"].get<std::string>() + "\n";
    }
    EXPECT_EQ(found, expected);
    EXPECT_EQ(result["errors"].size(), expected.size());
    EXPECT_EQ(run.err, lines);
}

// A file that can be opened but not read.
TEST_F(Scan, ReadError)
{
    if (!fs::exists("/proc/self/mem")) {
        GTEST_SKIP() << "no such file here";
    }
    ChildResult const run = Qvx({"scan", "/proc/self/mem"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "qvx: /proc/self/mem: Input/output error\n");
}

TEST_F(Scan, Walk)
{
    fs::create_directories(In("b/.hidden"));
    fs::create_directory(In("empty"));
    Write("b/.hidden/x", "");
    Write("b/y", "");
    Write("b.txt", "");
    Write("a", "");
    fs::create_symlink(".", In("b/self"));
    fs::create_symlink("b", In("link"));
    fs::create_symlink("a", In("to-a"));
    auto const scan = [](std::string const& path) {
        return Paths(json::parse(Qvx({"scan", "--json", path}).out)["files"]);
    };
    EXPECT_EQ(scan(m_folder.string()),
              (std::vector<std::string>{In("a"), In("b/.hidden/x"), In("b/y"), In("b.txt"), In("to-a")}));
    EXPECT_EQ(scan(In("link")), (std::vector<std::string>{In("link/.hidden/x"), In("link/y")}));
    ChildResult const empty = Qvx({"scan", "--json", In("empty")});
    EXPECT_EQ(empty.status, 0);
    EXPECT_EQ(CountsOf(json::parse(empty.out)["total"]), Expected("UTF-8", ""));
}

TEST_F(Scan, NamesThatAreNotText)
{
    fs::path const old = fs::current_path();
    fs::current_path(m_folder);
    Write("x\xFF\xE2\x82", "a");
    Write("[1,2]", "b");
    Write("-dash", "c");
    Write("scan", "d");
    ChildResult const run = Qvx({"scan", "--json", "[1,2]", "--", "x\xFF\xE2\x82", "-dash", "scan", "no\xFE"});
    ChildResult const table = Qvx({"scan", "x\xFF\xE2\x82"});
    fs::current_path(old);
    json const result = json::parse(run.out);
    EXPECT_EQ(Paths(result["files"]), (std::vector<std::string>{"[1,2]", "x\uFFFD\uFFFD", "-dash", "scan"}));
    EXPECT_EQ(result["files"][1]["pathBytes"], "78ffe282");
    EXPECT_FALSE(result["files"][0].contains("pathBytes"));
    EXPECT_EQ(result["errors"][0]["pathBytes"], "6e6ffe");
    EXPECT_EQ(run.err, "qvx: no\uFFFD: No such file or directory\n");
    EXPECT_NE(table.out.find("\nx\uFFFD\uFFFD  "), std::string::npos) << table.out;
}

TEST_F(Scan, Table)
{
    fs::path const old = fs::current_path();
    fs::current_path(m_folder);
    Write("e\u0301t\u00E9", "\u00E9\n");
    Write("\u65E5\u672C\x1B", "\xEF\xBB\xBF"
                              "\U0001F600\n\xFF");
    ChildResult const run = Qvx({"scan", "."});
    fs::current_path(old);
    EXPECT_EQ(run.out, "name     encoding  bytes  units  code points  lines  malformed\n"
                       "./e\u0301t\u00E9    UTF-8         3      2            2      1          0\n"
                       "./\u65E5\u672C\uFFFD  UTF-8         9      4            3      1          1\n"
                       "total                 12      6            5      2          1\n");
    EXPECT_EQ(run.err, ""); // no progress bar: stderr is no terminal
    EXPECT_EQ(run.status, 0);
}

TEST_F(Scan, CommandLine)
{
    std::string const file = Write("a", "a");
    struct
    {
        std::vector<std::string> arguments;
        int status;
        std::string shown; // on stdout, or on stderr with status 2
    } const table[] = {
        {{"--help"}, 0, "Usage: qvx"},
        {{"scan", "--help"}, 0, "byte order mark"},
        {{"--version"}, 0, "qvx "},
        {{}, 2, "subcommand"},
        {{"scan"}, 2, "PATH"},
        {{"scna", file}, 2, "subcommand"},
        {{"scan", "--no-such", file}, 2, "--no-such"},
        {{"scan", "--encoding", "no-such", file}, 2, "no-such"},
        {{"scan", "--encoding", "", file}, 2, "unknown encoding"},
        {{"scan", file, "--encoding=latin1"}, 0, "ISO-8859-1"},
    };
    for (auto const& [arguments, status, shown] : table) {
        ChildResult const run = Qvx(arguments);
        SCOPED_TRACE(testing::PrintToString(arguments));
        EXPECT_EQ(run.status, status);
        EXPECT_NE((status == 0 ? run.out : run.err).find(shown), std::string::npos) << run.out << run.err;
        EXPECT_EQ(status == 0 ? run.err : run.out, "");
    }
    if (fs::exists("/dev/full")) {
        ChildOptions full;
        full.outTo = "/dev/full";
        EXPECT_EQ(Qvx({"scan", file}, full).status, 1);
    }
}

TEST_F(Scan, MemoryDoesNotGrowWithTheFile)
{
    constexpr long kMostKiB = 64 * 1024;
    rusage own{};
    getrusage(RUSAGE_SELF, &own);
    if (own.ru_maxrss >= kMostKiB) {
        GTEST_SKIP() << "a child's peak begins with the size of this process, which is too large itself";
    }
    std::string const path = Write("sparse", "");
    fs::resize_file(path, 300'000'000);
    ChildResult const run = Qvx({"scan", "--json", "--encoding", "UTF-8", path});
    EXPECT_EQ(json::parse(run.out)["total"]["codePoints"], 300'000'000);
    EXPECT_LT(run.peakKiB, kMostKiB);
}
