// qvx doctor beside what other programs say of the machine, and traces of errors.

#include <set>
#include <string>

#include <unicode/uchar.h>

#include "ScanFixture.h"

namespace {

using namespace scan_test;

json Doctor()
{
    ChildResult const result = Qvx({"doctor", "--json"});
    EXPECT_EQ(result.status, 0) << result.err << result.out;
    return json::parse(result.out);
}

TEST(Doctor, SaysWhatOthersSay)
{
    json const found = Doctor();
    EXPECT_EQ(found["library"]["icu"], U_ICU_VERSION);
    EXPECT_EQ(found["library"]["unicode"], U_UNICODE_VERSION);
    EXPECT_EQ(found["complaints"], json::array());
    json const& memory = found["memory"];
    EXPECT_GE(memory["total"], memory["available"]);
    EXPECT_GE(memory["hostTotal"], memory["total"]);
    json const& processors = found["processors"];
    EXPECT_GE(processors["usable"], 1);
    EXPECT_GE(processors["host"], processors["usable"]);
    for (char const* const listener : {"first", "second"}) {
        EXPECT_EQ(found["exchange"][listener]["once"], found["exchange"]["sent"]);
    }
    EXPECT_TRUE(fs::equivalent(FromUtf8(found["program"]["executable"]), QVX_PROGRAM)) << found["program"];
    EXPECT_TRUE(fs::exists(FromUtf8(found["program"]["library"]))) << found["program"];
    EXPECT_NE(found["program"]["library"], found["program"]["executable"]);
    std::set<std::string> modules;
    for (json const& module : found["modules"]) {
        modules.insert(FromUtf8(module["path"]).filename().string());
    }
    EXPECT_TRUE(modules.contains(fs::path(QVX_PROGRAM).filename().string())) << found["modules"];

    // The page has the same facts, and says where they are from.
    ChildResult const page = Qvx({"doctor", "--no-exchange"});
    EXPECT_EQ(page.status, 0);
    for (std::string const text : {"Library", "Program", "Encodings", "Processors", "Memory", "Modules"}) {
        EXPECT_NE(page.out.find('\n' + text), page.out.find(text) == 0 ? 0 : std::string::npos) << page.out;
    }
    EXPECT_NE(page.out.find(memory["hostTotalFrom"].get<std::string>()), std::string::npos) << page.out;
    EXPECT_EQ(page.out.find("Exchange"), std::string::npos);
    EXPECT_EQ(Qvx({"doctor", "--bad"}).status, 2);
}

TEST_F(Scan, TracesOfErrors)
{
    std::string const missing = Utf8(Folder() / "missing");
    ChildResult const plain = Qvx({"scan", missing});
    ChildResult const traced = Qvx({"scan", "--trace", missing});
    EXPECT_EQ(plain.status, 1);
    EXPECT_EQ(traced.status, 1);
    EXPECT_TRUE(traced.err.starts_with(plain.err)) << traced.err;
    // From the library's exception down to the program; there are names of functions where the system has them.
    EXPECT_LT(traced.err.find("qvxsys"), traced.err.rfind("qvx!")) << traced.err;
    EXPECT_NE(traced.err.rfind("qvx!"), std::string::npos) << traced.err;
    json const trace = json::parse(Qvx({"scan", "--json", "--trace", missing}).out)["errors"][0]["trace"];
    EXPECT_EQ(static_cast<std::size_t>(std::count(traced.err.begin(), traced.err.end(), '\n')), 1 + trace.size());
}

} // namespace
