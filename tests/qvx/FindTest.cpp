// Looking for a text with `qvx scan --find`, and printing records by a format.

#include "qvx/ScanFixture.h"

#include <random>

#include <unicode/uchar.h>

using namespace scan_test;

namespace {

// Matches and lines with matches, by the standard library. What does not fold is compared as it is.
struct Reference
{
    int matches = 0;
    int lines = 0;
    int firstLine = 0;
    int firstColumn = 0;
};

Reference Search(std::u32string text, std::u32string needle, bool ignoreCase)
{
    for (std::u32string* const folded : {&text, &needle}) {
        std::ranges::transform(*folded, folded->begin(), [&](char32_t c) {
            return ignoreCase ? static_cast<char32_t>(u_foldCase(static_cast<UChar32>(c), U_FOLD_CASE_DEFAULT)) : c;
        });
    }
    Reference result;
    int line = 0;
    for (std::size_t start = 0; start < text.size(); ++line) {
        std::size_t const end = std::min(text.find(U'\n', start), text.size());
        std::u32string_view const all = std::u32string_view(text).substr(start, end - start);
        std::size_t at = all.find(needle);
        result.lines += at != all.npos ? 1 : 0;
        if (result.matches == 0 && at != all.npos) {
            result.firstLine = line + 1;
            result.firstColumn = static_cast<int>(at) + 1;
        }
        for (; at != all.npos; at = all.find(needle, at + needle.size())) {
            ++result.matches;
        }
        start = end + 1;
    }
    return result;
}

std::string ToUtf8(std::u32string const& text)
{
    std::string bytes;
    for (char32_t const c : text) {
        char units[4];
        int n = 0;
        U8_APPEND_UNSAFE(units, n, static_cast<UChar32>(c));
        bytes.append(units, static_cast<std::size_t>(n));
    }
    return bytes;
}

ChildResult ScanFile(std::string const& file, std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), {"scan", file});
    return Qvx(arguments);
}

} // namespace

// Texts larger than the pieces they are read in, of few different characters so that much is found, with lines short
// and long.
TEST_F(Scan, FindAgreesWithASearchOfTheWholeText)
{
    std::mt19937 random(7);
    std::u32string const alphabets[] = {U"ab",
                                        U"aAbB",
                                        U"sS\u017F\u00DF",
                                        U"\u03C3\u03C2\u03A3a",
                                        U"kK\u212A\U0001F600",
                                        U"\U00010400\U00010428\U00010401"};
    for (std::u32string const& alphabet : alphabets) {
        for (unsigned const lineLength : {7u, 5000u, 4'000'000u}) {
            std::u32string text;
            while (text.size() < 300'000) {
                text += random() % lineLength == 0 ? U'\n' : alphabet[random() % alphabet.size()];
            }
            std::string const file = Write("text", ToUtf8(text));
            for (int n = 1; n <= 6; n += 5) {
                std::u32string needle;
                for (int i = 0; i < n; ++i) {
                    needle += alphabet[random() % alphabet.size()];
                }
                bool const ignoreCase = random() % 2 == 0;
                std::vector<std::string> arguments{"scan",   "--json",       "--encoding", "UTF-8",
                                                   "--find", ToUtf8(needle), file};
                if (ignoreCase) {
                    arguments.push_back("--ignore-case");
                }
                Reference const expected = Search(text, needle, ignoreCase);
                json const found = json::parse(Qvx(arguments).out)["files"][0];
                ASSERT_EQ(found["matches"], expected.matches)
                    << ToUtf8(needle) << ' ' << lineLength << ' ' << ignoreCase;
                ASSERT_EQ(found["matchingLines"], expected.lines) << ToUtf8(needle) << ' ' << lineLength;
                if (expected.matches != 0) {
                    EXPECT_EQ(found["first"][0]["line"], expected.firstLine);
                    EXPECT_EQ(found["first"][0]["column"], expected.firstColumn);
                }
            }
        }
    }
}

// Lines of more than a part's length: matches that could overlap at a part's border, and columns across it.
TEST_F(Scan, FindInLongLines)
{
    std::tuple<std::string, std::string, int> const table[] = {
        {"aa", "a", 1500000}, {"aba", "ab", 750000}, {"x", "a", 1}, {"\U0001F600", "a", 0}};
    for (auto const& [needle, unit, matches] : table) {
        std::string text;
        while (text.size() < 3'000'000) {
            text += unit;
        }
        std::string const file = Write("long", "\n\u00E9" + text + "x\n");
        json const found =
            json::parse(Qvx({"scan", "--json", "--encoding", "UTF-8", "--find", needle, file}).out)["files"][0];
        EXPECT_EQ(found["matches"], matches) << needle;
        if (needle == "x") {
            EXPECT_EQ(found["first"][0]["line"], 2);
            EXPECT_EQ(found["first"][0]["column"], 3'000'002);
            EXPECT_EQ(found["first"][0]["before"], std::string(120, 'a'));
        }
    }
}

TEST_F(Scan, FindShowsTheFirstMatches)
{
    std::string const file = Write("a", "one\r\nTwo two\ttwo\r\n\u00E9t\u00E9 two\x1B\n");
    ChildResult const run = Qvx({"scan", "--find", "two", "--ignore-case", "--show", "2", file, Write("b", "none\n")});
    EXPECT_EQ(run.out.substr(0, run.out.find("name ")),
              file + ":2:1: Two two\ttwo\n" + file + ":2:5: Two two\ttwo\n" + file + ": 2 more\n");
    EXPECT_NE(run.out.find("matches  in lines\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("        4         2\n"), std::string::npos) << run.out;
    EXPECT_EQ(run.out.find(In("b")), std::string::npos) << "files without matches are not listed";
}

TEST_F(Scan, PrintFormats)
{
    std::string const file = Write("a", "one\ntwo \xFF\n");
    std::pair<std::vector<std::string>, std::string> const table[] = {
        {{"--print", "%1: %2 %3 %4 %5 %6 %7 100%%"}, file + ": ISO-8859-1 10 10 10 2 0 100%\n"},
        {{"--print", "%2/%4 [%5]", "--find", "o"}, "1/one [o]\n2/two \u00FF [o]\n"},
        {{"--print", "[x]"}, "[x]\n"},
        {{"--print", "", "--find", "t"}, "\n"},
        {{"--print=--%2", "--find=o", "--show", "1"}, "--1\n"},
        {{"--find", "--", "--print", "%1"}, ""},
        {{"--print=-", "--find", "-x"}, ""},
    };
    for (auto const& [arguments, out] : table) {
        ChildResult const run = ScanFile(file, arguments);
        EXPECT_EQ(run.out, out) << run.err;
        EXPECT_EQ(run.status, 0);
    }
}

// Errors of the library come with what was being done and the name of their code.
TEST_F(Scan, MistakesInFindAndPrint)
{
    std::string const file = Write("a", "a");
    std::pair<std::vector<std::string>, std::string> const table[] = {
        {{"--find", ""}, "must not be empty"},
        {{"--find="}, "must not be empty"},
        {{"--find", "a", "--show", "-1"}, "--show"},
        {{"--find", "a", "--show", "99999999999999999999"}, "--show"},
        {{"--find", "a\nb"}, "line feeds"},
        {{"--ignore-case"}, "--find"},
        {{"--print", "%1", "--json"}, "--json"},
        {{"--print", "%a"},
         "qvx: Invalid numberless marker in format string.; in the format of --print "
         "(QuorvexException_AutoGen_0xF7AF5E37)\n"},
        {{"--print", "%11"}, "(have 10, need 11: format string = \"%11\"); in the format of --print"},
        {{"--print", "%6", "--find", "a"}, "(have 5, need 6"},
    };
    for (auto const& [arguments, shown] : table) {
        ChildResult const run = ScanFile(file, arguments);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find(shown), std::string::npos) << run.err;
    }
}
