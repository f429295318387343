// The tool `qvx scan`, run as a program. What it counts is compared with ICU.

#include <qvxsys/Version.h>

#include "qvx/ScanFixture.h"

#include "support/Samples.h"

using namespace scan_test;

TEST_F(Scan, SamplesAgreeWithIcu)
{
    ChildResult const run = Qvx({"scan", "--json", Utf8(samples::Folder())});
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
        std::string const path = Utf8(row.path);
        std::string const encoding = row.Encoding();
        ASSERT_TRUE(found.contains(path)) << path;
        EXPECT_EQ(CountsOf(found[path]), Expected(encoding.c_str(), samples::ReadFile(row.path))) << path;
        EXPECT_EQ(found[path][row.broken ? "malformed" : "codePoints"], row.last) << path;
        EXPECT_TRUE(found[path]["encoding"] == encoding || encoding == "ISO-8859-15") << path;
    }
}

// Sequences of every length, shifted by every offset, lie across all borders of the pieces in which the file is read.
TEST_F(Scan, SequencesAcrossReads)
{
    std::pair<std::string, char const*> const table[] = {{"\xE2\x82\xAC", "UTF-8"},
                                                         {"\xF0\x9F\x98\x80", "UTF-8"},
                                                         {"\xF0\x9F\x98", "UTF-8"}, // malformed
                                                         {std::string("\x3D\xD8\0\xDE", 4), "UTF-16LE"},
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

// Also bytes that would be taken for another encoding, or for no text at all.
TEST_F(Scan, NamedEncoding)
{
    std::string bytes;
    for (int i = 0; i < 2000; ++i) {
        bytes += i % 3 == 0 ? '\0' : static_cast<char>(i * i % 251);
    }
    fs::path const binary = FromUtf8(Write("binary", bytes)); // an absolute path stands for itself
    for (char const* const encoding : {"UTF-8", "UTF-16BE", "UTF-32LE", "ISO-8859-15", "Shift_JIS", "UTF-16"}) {
        for (fs::path const& name : {binary, fs::path("broken/empty.txt"), fs::path("texts/ko-kimchi.utf8bom.txt"),
                                     fs::path("texts/ja-station.utf16le.txt")}) {
            fs::path const path = samples::Folder() / name;
            ChildResult const run = Qvx({"scan", Utf8(path), "--json", "--encoding", encoding});
            EXPECT_EQ(run.status, 0) << run.err;
            EXPECT_EQ(CountsOf(json::parse(run.out)["files"][0]), Expected(encoding, samples::ReadFile(path)))
                << encoding << ' ' << name;
        }
    }
}

TEST_F(Scan, Walk)
{
    fs::create_directories(FromUtf8(In("b/.hidden")));
    fs::create_directory(FromUtf8(In("empty")));
    Write("b/.hidden/x", "");
    Write("b/y", "");
    Write("b.txt", "");
    Write("a", "");
    ChildResult const run = Qvx({"scan", "--json", Utf8(Folder())});
    EXPECT_EQ(Paths(json::parse(run.out)["files"]),
              (std::vector<std::string>{In("a"), In("b/.hidden/x"), In("b/y"), In("b.txt")}));
    ChildResult const empty = Qvx({"scan", "--json", In("empty")});
    EXPECT_EQ(empty.status, 0);
    EXPECT_EQ(CountsOf(json::parse(empty.out)["total"]), Expected("UTF-8", ""));
}

TEST_F(Scan, Table)
{
    Write("e\u0301t\u00E9", "\u00E9\n");
    Write("\u65E5\u672C\x7F", "\xEF\xBB\xBF"
                              "\U0001F600\n\xFF");
    ChildResult const run = Qvx({"scan", "."}, InFolder());
    std::string const here = Utf8("./");
    EXPECT_EQ(run.out, "name     encoding  found by  bytes  units  code points  lines  malformed\n" + here +
                           "e\u0301t\u00E9    UTF-8     utf-8         3      2            2      1          0\n" +
                           here +
                           "\u65E5\u672C\uFFFD  UTF-8     bom           9      4            3      1          1\n"
                           "total                           12      6            5      2          1\n");
    EXPECT_EQ(run.err, ""); // no progress bar: stderr is no terminal
    EXPECT_EQ(run.status, 0);
}

TEST_F(Scan, Digests)
{
    Write("a", "abc");
    Write("b", std::string("\0\1", 2));
    std::string const ofAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    std::string const ofBinary = "b413f47d13ee2fe6c845b2ee141af81de858df4ec549a58b7970bb96645bc8d2";
    ChildResult const lines = Qvx({"scan", "--hash", "sha256", "a", "b", "missing"}, InFolder());
    EXPECT_EQ(lines.out, ofAbc + "  a\n" + ofBinary + "  b\n");
    EXPECT_EQ(lines.err, "qvx: missing: No such file or directory (Qvx_CannotAccess)\n");
    EXPECT_EQ(lines.status, 1);
    json const result = json::parse(Qvx({"scan", "--json", "--hash=sha256", "--find", "b", "a", "b"}, InFolder()).out);
    EXPECT_EQ(result["files"][0]["sha256"], ofAbc);
    EXPECT_EQ(result["files"][0]["matches"], 1);
    EXPECT_EQ(result["errors"][0]["sha256"], ofBinary);
    // Files of more than one read, counted and not.
    std::string const big = Write("big", std::string(600'000, 'a'));
    std::string const ofBig = json::parse(Qvx({"scan", "--json", "--hash", "sha1", big}).out)["files"][0]["sha1"];
    EXPECT_EQ(ofBig, "bd7ba75800ac1c237949fdacdf1443fb171bba4c");
    EXPECT_EQ(Qvx({"scan", "--hash", "sha1", "big"}, InFolder()).out, ofBig + "  big\n");
}

// Whatever is printed, and errors, in the order of the files, however many threads read them. The first file takes
// longest, and has more matches than are kept for the thread that prints.
TEST_F(Scan, JobsKeepTheOrder)
{
    std::string lines;
    for (int i = 0; i < 20'000; ++i) {
        lines += "line " + std::to_string(i) + " and more\n";
    }
    Write("a", lines);
    for (int i = 0; i < 60; ++i) {
        std::string const name = "b" + std::to_string(100 + i);
        Write(name, i % 7 == 0 ? std::string("te\0xt", 5) : lines.substr(0, static_cast<std::size_t>(i * 131)));
    }
    std::vector<std::string> const commands[] = {
        {"scan", "."},
        {"scan", "--json", "--find", "and", "."},
        {"scan", "--find", "AND", "--ignore-case", "--print", "%1:%2:%3", "."},
        {"scan", "--hash", "sha256", "."},
    };
    for (std::vector<std::string> command : commands) {
        command.insert(command.end(), {"--jobs", "1"});
        ChildResult const one = Qvx(command, InFolder());
        EXPECT_GT(one.out.size(), 1000u);
        for (char const* const jobs : {"2", "9"}) {
            command.back() = jobs;
            ChildResult const many = Qvx(command, InFolder());
            EXPECT_EQ(many.out, one.out) << jobs;
            EXPECT_EQ(many.err, one.err) << jobs;
            EXPECT_EQ(many.status, one.status) << jobs;
        }
    }
    for (char const* const jobs : {"0", "-1", "1025", "x"}) {
        EXPECT_EQ(Qvx({"scan", "--jobs", jobs, In("a")}).status, 2) << jobs;
    }
}

TEST_F(Scan, CommandLine)
{
    std::string const file = Write("a", "a");
    // What is shown on stdout, or on stderr with status 2.
    std::tuple<std::vector<std::string>, int, std::string> const table[] = {
        {{"--help"}, 0, "Usage: qvx"},
        {{"scan", "--help"}, 0, "byte order mark"},
        {{"--version"}, 0, "qvx " QVXSYS_VERSION_STRING " (qvxsys " QVXSYS_VERSION_STRING ")\n"},
        {{}, 2, "subcommand"},
        {{"scan"}, 2, "PATH"},
        {{"scna", file}, 2, "subcommand"},
        {{"scan", "--no-such", file}, 2, "--no-such"},
        {{"scan", "--hash", "md5", file}, 2, "sha224"},
        {{"scan", "--hash", "sha1", "--find", "x", file}, 2, "--json"},
        {{"scan", "--hash", "sha1", "--print", "%1", file}, 2, "--print"},
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
    if (LeastPeakKiB() >= kMostKiB) {
        GTEST_SKIP() << "a child's peak begins with the size of this process, which is too large itself";
    }
    std::string const path = Write("sparse", "");
    fs::resize_file(path, 30'000'000);
    ChildResult const small = Qvx({"scan", "--json", "--encoding", "UTF-8", path});
    fs::resize_file(path, 300'000'000);
    ChildResult const run = Qvx({"scan", "--json", "--encoding", "UTF-8", path});
    EXPECT_EQ(json::parse(run.out)["total"]["codePoints"], 300'000'000);
    EXPECT_GT(small.peakKiB, 0);
    EXPECT_LT(run.peakKiB - small.peakKiB, 4 * 1024);
    // Where the libraries' own data counts as well, the program begins with more than that.
    EXPECT_LT(run.peakKiB, LeastPeakKiB() != 0 ? kMostKiB : 2 * kMostKiB);
}
