// What file names and files can be on Windows.

#include "qvx/ScanFixture.h"

using namespace scan_test;

TEST_F(Scan, ErrorsDoNotStopIt)
{
    Write("a", "text");
    Write("b-binary", std::string("te\0xt", 5));
    Write("z", "text\n");
    ChildResult const run = Qvx({"scan", "--json", In("missing"), In("mi\u00DF\u65E5"), Utf8(Folder())});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(Paths(json::parse(run.out)["files"]), (std::vector<std::string>{In("a"), In("z")}));
    std::map<std::string, std::string> const expected = {
        {In("missing"), "No such file or directory"},
        {In("mi\u00DF\u65E5"), "No such file or directory"},
        {In("b-binary"), "is a binary file"},
    };
    EXPECT_EQ(Errors(run), expected);
}

TEST_F(Scan, NamesThatAreNotText)
{
    std::ofstream(Folder() / L"x\xD800y", std::ios::binary) << "a";
    if (fs::is_empty(Folder())) {
        GTEST_SKIP() << "this system does not store names with lone surrogates (Wine does not)";
    }
    ChildResult const run = Qvx({"scan", "--json", Utf8(Folder())});
    json const file = json::parse(run.out)["files"][0];
    EXPECT_EQ(file["path"], In("x\uFFFDy"));
    std::string const raw = file["pathBytes"];
    EXPECT_TRUE(raw.ends_with("5c00780000d87900")) << raw;
}

// Either slash separates, what is shown has back slashes.
TEST_F(Scan, Slashes)
{
    fs::create_directories(FromUtf8(In("\u00E9t\u00E9/\U0001F600")));
    std::string const file = Write("\u00E9t\u00E9/\U0001F600/\u65E5.txt", "text\n");
    std::string mixed = file;
    std::replace(mixed.begin() + static_cast<std::ptrdiff_t>(mixed.size() / 2), mixed.end(), '\\', '/');
    for (std::string const& name : {file, mixed, In("\u00E9t\u00E9"), Utf8(Folder()) + "/"}) {
        ChildResult const run = Qvx({"scan", "--json", name});
        EXPECT_EQ(Paths(json::parse(run.out)["files"]), std::vector<std::string>{file}) << name << run.err;
    }
}

// Longer than the 260 characters that many functions take.
TEST_F(Scan, LongPaths)
{
    fs::path folder = Folder();
    std::error_code error;
    for (int i = 0; i < 8 && !error; ++i) {
        folder /= std::string(60, static_cast<char>('a' + i));
        fs::create_directory(folder, error);
    }
    std::ofstream(folder / "file") << "text\n";
    if (!fs::exists(folder / "file", error)) {
        GTEST_SKIP() << "long paths are not enabled on this system";
    }
    for (fs::path const& start : {folder, Folder()}) {
        ChildResult const run = Qvx({"scan", "--json", Utf8(start)});
        EXPECT_EQ(Paths(json::parse(run.out)["files"]), std::vector<std::string>{Utf8(folder / "file")}) << run.err;
    }
}

// The shells leave it to programs to look for the files that a pattern means.
TEST_F(Scan, Patterns)
{
    Write("a.txt", "");
    Write("b.csv", "");
    Write("\u65E5.txt", "");
    ChildResult const run = Qvx({"scan", "--json", In("*.txt")});
    EXPECT_EQ(Paths(json::parse(run.out)["files"]), (std::vector<std::string>{In("a.txt"), In("\u65E5.txt")}))
        << run.err;
}

// The order of names is that of code points, although names are UTF-16 here.
TEST_F(Scan, Order)
{
    std::vector<std::string> const names{In("\u65E5"), In("\uFF21"), In("\U0001F600")};
    for (std::string const& name : names) {
        std::ofstream(FromUtf8(name)) << "";
    }
    EXPECT_EQ(Paths(json::parse(Qvx({"scan", "--json", Utf8(Folder())}).out)["files"]), names);
}
