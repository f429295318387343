// What file names and files can be on POSIX systems.

#include "qvx/RunningProgram_posix.h"
#include "qvx/ScanFixture.h"

#include "support/Samples.h"

#include <sys/stat.h>

using namespace scan_test;

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
    fs::permissions(Folder(), fs::perms(0755));
    ChildOptions options;
    options.unprivileged = true;
    ChildResult const run = Qvx({"scan", "--json", "/dev/null", In("missing"), Utf8(Folder())}, options);
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
    EXPECT_EQ(Errors(run), expected);
}

// A file that can be opened but not read.
TEST_F(Scan, ReadError)
{
    if (!fs::exists("/proc/self/mem")) {
        GTEST_SKIP() << "no such file here";
    }
    ChildResult const run = Qvx({"scan", "/proc/self/mem"});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "qvx: /proc/self/mem: Input/output error (Qvx_CannotRead)\n");
}

TEST_F(Scan, NamesThatAreNotText)
{
    Write("x\xFF\xE2\x82", "a");
    Write("[1,2]", "b");
    Write("-dash", "c");
    Write("scan", "d");
    ChildResult const run =
        Qvx({"scan", "--json", "[1,2]", "--", "x\xFF\xE2\x82", "-dash", "scan", "no\xFE"}, InFolder());
    ChildResult const table = Qvx({"scan", "x\xFF\xE2\x82"}, InFolder());
    json const result = json::parse(run.out);
    EXPECT_EQ(Paths(result["files"]), (std::vector<std::string>{"[1,2]", "x\uFFFD\uFFFD", "-dash", "scan"}));
    EXPECT_EQ(result["files"][1]["pathBytes"], "78ffe282");
    EXPECT_FALSE(result["files"][0].contains("pathBytes"));
    EXPECT_EQ(result["errors"][0]["pathBytes"], "6e6ffe");
    EXPECT_EQ(run.err, "qvx: no\uFFFD: No such file or directory (Qvx_CannotAccess)\n");
    EXPECT_NE(table.out.find("\nx\uFFFD\uFFFD  "), std::string::npos) << table.out;
}

// Byte for byte what the programs for it print, which they take back.
TEST_F(Scan, DigestLinesAreThoseOfCoreutils)
{
    std::vector<std::string> names = {" a b ", "-c",         "\xFF\xE2\x82", "back\\slash",
                                      "*",     "line\nfeed", "return\r",     "tab\t"};
    std::sort(names.begin(), names.end());
    for (std::string const& name : names) {
        Write(name, name + std::string("\0", 1));
    }
    for (char const* const algorithm : {"sha1", "sha224", "sha256", "sha384", "sha512"}) {
        std::vector<std::string> theirs{"/usr/bin/env", algorithm + std::string("sum"), "--"};
        theirs.insert(theirs.end(), names.begin(), names.end());
        std::vector<std::string> ours{"scan", "--hash", algorithm, "--"};
        ours.insert(ours.end(), names.begin(), names.end());
        ChildResult const lines = Qvx(ours, InFolder());
        EXPECT_EQ(lines.out, RunChild(theirs, InFolder()).out);
        EXPECT_EQ(lines.status, 0);
        TemporaryFolder const elsewhere;
        fs::path const list = elsewhere.Path() / "list";
        std::ofstream(list, std::ios::binary) << Qvx({"scan", "--hash", algorithm, "."}, InFolder()).out;
        ChildResult const check =
            RunChild({"/usr/bin/env", theirs[1], "--check", "--strict", list.string()}, InFolder());
        EXPECT_EQ(check.status, 0) << check.out << check.err;
        EXPECT_EQ(check.err, "");
    }
}

// A file that would take hours: the scan ends because it is told to. What was scanned before is there.
TEST_F(Scan, InterruptGivesWhatIsThereAndEnds)
{
    std::string const small = Write("a", "text\n");
    fs::resize_file(Write("b", ""), std::uintmax_t(1) << 40);
    RunningProgram run(
        {Utf8(fs::absolute(QVX_PROGRAM)), "scan", "--encoding", "UTF-8", "--print", "%1 %6", Utf8(Folder())});
    EXPECT_EQ(run.ReadUntil("\n"), small + " 1\n");
    run.Send(SIGINT);
    EXPECT_EQ(run.ReadAll(), "");
    EXPECT_EQ(run.Wait(), 130);
}

// On a terminal it tells how far it has come, and takes that away at the end.
TEST_F(Scan, ProgressOnATerminal)
{
    fs::resize_file(Write("b", ""), std::uintmax_t(1) << 40);
    RunningProgram run({Utf8(fs::absolute(QVX_PROGRAM)), "scan", "--encoding", "UTF-8", Utf8(Folder())},
                       RunningProgram::Terminal);
    std::string const shown = run.ReadUntil(" / 1.1 TB");
    EXPECT_TRUE(shown.ends_with("B / 1.1 TB") && shown.find("\r[") != std::string::npos &&
                shown.find(".] 0%  ") != std::string::npos)
        << shown;
    run.Send(SIGINT);
    EXPECT_NE(run.ReadAll().find("\r" + std::string(99, ' ') + "\r"), std::string::npos);
    EXPECT_EQ(run.Wait(), 130);
}

// The same file is not read for hours either when nothing can be printed any more.
TEST_F(Scan, EndsWhenItCannotPrint)
{
    Write("a", "text\n");
    fs::resize_file(Write("b", ""), std::uintmax_t(1) << 40);
    ChildOptions options = InFolder();
    options.outTo = "/dev/full";
    ChildResult const run = Qvx({"scan", "--encoding", "UTF-8", "--print", "%1", "."}, options);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "qvx: cannot write the result\n");
}

TEST_F(Scan, Links)
{
    fs::create_directories(In("b"));
    Write("a", "");
    Write("b/y", "");
    fs::create_symlink(".", In("b/self"));
    fs::create_symlink("b", In("link"));
    fs::create_symlink("a", In("to-a"));
    auto const scan = [](std::string const& path) {
        return Paths(json::parse(Qvx({"scan", "--json", path}).out)["files"]);
    };
    EXPECT_EQ(scan(Utf8(Folder())), (std::vector<std::string>{In("a"), In("b/y"), In("to-a")}));
    EXPECT_EQ(scan(In("link")), (std::vector<std::string>{In("link/y")}));
}

// The words that both understand alike: exact text within a line.
TEST_F(Scan, FoundLinesAreThoseOfGrep)
{
    std::vector<std::string> texts;
    for (samples::Row const& row : samples::Table()) {
        if (!row.broken && row.Encoding() == "UTF-8") {
            texts.push_back(row.path.string());
        }
    }
    ASSERT_GT(texts.size(), 20u);
    for (char const* const needle :
         {"a", "e", "the", "\u00E9", "\u0438", "\u3002", "\U0001F600", ".", "[", "nowhere"}) {
        std::vector<std::string> grep{"/usr/bin/env", "LC_ALL=C", "grep", "-c", "-h", "-F", "-e", needle};
        grep.insert(grep.end(), texts.begin(), texts.end());
        std::vector<std::string> arguments{"scan", "--json", "--find", needle};
        arguments.insert(arguments.end(), texts.begin(), texts.end());
        std::string lines;
        json const result = json::parse(Qvx(arguments).out);
        for (json const& file : result["files"]) {
            lines += std::to_string(file["matchingLines"].get<int>()) + "\n";
        }
        EXPECT_EQ(lines, RunChild(grep).out) << needle;
    }
}

TEST_F(Scan, FindTakesTextOnly)
{
    ChildResult const run = Qvx({"scan", "--find", "\xFF", Write("a", "\xFF")});
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("UTF-8"), std::string::npos) << run.err;
}
