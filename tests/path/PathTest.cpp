#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <set>
#include <unordered_set>

#include <gtest/gtest.h>
#include <qvxsys/qvxsys.h>

#include "support/PathModel.h"
#include "support/TemporaryFolder.h"
#include "support/TextPrinters.h"

namespace {

using namespace qvxsys::literals;
using testing_support::PathCheck;
namespace fs = std::filesystem;

std::string Cell(TStringCore const& text, char const* empty = "-")
{
    return text.empty() ? empty : "`" + text.toStdString() + "`";
}

std::string PartsRow(TStringCore const& text)
{
    TPathCore const path = text;
    std::string elements;
    for (TStringCore const& element : path) {
        elements += (elements.empty() ? "" : " ") + Cell(element, "(empty)");
    }
    std::string const extension = path.HasExtension() ? Cell(path.Extension(), "(empty)") : "-";
    return "| " + Cell(text) + " | " + Cell(path) + " | " + Cell(path.RootName()) + " | " + Cell(path.Parent()) +
           (path.HasParentPath() ? "" : " (no)") + " | " + Cell(path.Filename()) + " | " + Cell(path.Stem()) + " | " +
           extension + " | " + (elements.empty() ? "-" : elements) + " |";
}

std::string RootsRow(TStringCore const& text)
{
    TPathCore const path = text;
    std::string const kind = path.IsAbsolute() ? "absolute" : path.IsRelative() ? "relative" : "neither";
    std::string const share = Cell(path.UNCShareName()) + (path.IsAdminShare() ? " (admin)" : "");
    return "| " + Cell(text) + " | " + kind + " | " + (path.IsUNC() ? "UNC" : "-") +
           (path.IsExtendedLength() ? " extended" : "") + " | " + share + " | " + Cell(path.UNCObjectName()) + " | " +
           Cell(path.NativeLongPath()) + " | " + Cell(path.NativeShortPath()) + " | " + Cell(path.LexicallyNormal()) +
           " |";
}

// Each row of the page's two tables is what the operations make of its first cell.
TEST(PathPage, TablesAreTrue)
{
    std::ifstream page(QVXSYS_PATHS_PAGE, std::ios::binary);
    std::string (*row)(TStringCore const&) = nullptr;
    int rows = 0;
    for (std::string line; std::getline(page, line);) {
        row = line.starts_with("## Parts") ? PartsRow : line.starts_with("## Roots") ? RootsRow : row;
        if (row != nullptr && line.starts_with("| `")) {
            EXPECT_EQ(line, row(TStringCore(line.substr(3, line.find('`', 3) - 3))));
            ++rows;
        }
    }
    EXPECT_GT(rows, 40);
}

TEST(PathRules, EveryShortText)
{
    constexpr TStringView kUnits = u"/:?.c";
    for (TStringView const prefix : {u"", u"//?/", u"//?/uNc/", u"//s", u"C:", u"\xD83D\xDE00/", u"\xDC00\xD800"}) {
        int const most = prefix.empty() ? 6 : 4;
        for (int length = 0; length <= most; ++length) {
            for (int n = 0, end = static_cast<int>(std::pow(5, length)); n < end; ++n) {
                TStringCore text = prefix;
                for (int digits = n, i = 0; i < length; ++i, digits /= 5) {
                    text.append(kUnits[static_cast<std::size_t>(digits % 5)]);
                }
                ASSERT_EQ(PathCheck().Run(text, u"a/../b"), "");
            }
        }
    }
}

TEST(PathRules, RandomTexts)
{
    std::mt19937 random(41);
    constexpr TStringView kUnits(u"///\\\\:?..cCunUN$ \u00E9\xD83D\xDE00\xD800\xDC5C\0", 22);
    auto const text = [&] {
        TStringCore result;
        for (auto n = random() % 24; n > 0; --n) {
            result.append(kUnits[random() % kUnits.size()]);
        }
        return result;
    };
    for (int i = 0; i < 20'000; ++i) {
        ASSERT_EQ(PathCheck().Run(text(), text()), "");
    }
}

// The names of POSIX are the simplest paths: for those the standard library has the same rules on every system.
TEST(PathRules, AsTheStandardLibrary)
{
    std::mt19937 random(42);
    auto const text = [&random](bool rooted) {
        std::string result = rooted ? "/" : "";
        for (auto n = 1 + random() % 7; n > 0; --n) {
            static constexpr char const* kNames[] = {"a", "b", ".", "..", "c.d.e", ".f", "g.", "..."};
            result += std::string(kNames[random() % 8]) + (n > 1 ? "/" : "");
        }
        return result;
    };
    auto const own = [](fs::path const& path) {
        std::string generic = path.generic_string(); // with a '/' at the end where something was taken back
        return TPathCore(generic.size() > 1 && generic.ends_with('/') ? generic.substr(0, generic.size() - 1)
                                                                      : generic);
    };
    for (int i = 0; i < 20'000; ++i) {
        bool const rooted = random() % 2 != 0;
        std::string const some = text(rooted), other = text(rooted);
        fs::path const theirs = some;
        TPathCore const ours = some;
        ASSERT_EQ(ours.Filename(), TPathCore(theirs.filename().generic_string())) << some;
        ASSERT_EQ(ours.Parent(), own(theirs.parent_path())) << some;
        bool const dots = ours.Filename() == u"...";
        ASSERT_EQ(ours.HasExtension() ? u'.' + ours.Extension() : TStringCore(),
                  dots ? TStringCore() : TStringCore(theirs.extension().generic_string()))
            << some;
        ASSERT_EQ(ours.LexicallyNormal(), own(theirs.lexically_normal())) << some;
        TPathCore const base = TPathCore(other).LexicallyNormal();
        if (!base.GenericString().startsWith(u"..")) { // where the standard's answer does not lead back
            auto const standard = [](TPathCore const& path) { return fs::path(path.GenericString().toStdString()); };
            fs::path const relative = standard(ours.LexicallyNormal()).lexically_relative(standard(base));
            ASSERT_EQ(ours.LexicallyRelative(base), own(relative.lexically_normal())) << some << ' ' << other;
        }
    }
}

unsigned CodeOf(void (*misuse)(TPathCore& path), TStringView message)
{
    TPathCore path = u"C:/dir/file";
    try {
        misuse(path);
    } catch (TPathCore::Exception const& e) {
        EXPECT_EQ(e.GetErrorSource(), 2);
        EXPECT_EQ(e.GetMessagesVector(), std::vector<TStringCore>{message});
        std::unique_ptr<QuorvexException> const clone(e.Clone());
        EXPECT_THROW(clone->Throw(), TPathCore::Exception);
        return e.GetErrorCode();
    }
    return 0;
}

TEST(PathIterator, Misuse)
{
    struct Case
    {
        unsigned code;
        char16_t const* message;
        void (*misuse)(TPathCore& path);
    };
    constexpr char16_t kEnd[] = u"TPathCore::iterator::locateElementEnd element starting position is out of range, or "
                                u"not valid for current path.";
    constexpr char16_t kChanged[] = u"TPathCore::iterator::locateNextElement element end position is out of range, or "
                                    u"not valid for this path.";
    constexpr char16_t kPosition[] = u"Invalid position in TPathCore::iterator::nextElement.";
    constexpr char16_t kSync[] = u"TPathCore::iterator out of sync in prev.";
    Case const cases[] = {
        {0x4E3E0D3F, u"Invalid TPathCore::iterator asignment of from one TPathCore to different TPathCore.",
         [](TPathCore& path) {
             TPathCore const same = path;
             auto it = path.begin();
             it = same.begin();
         }},
        {0x24209A38, u"TPathCore::iterator trying to increment beyond end.", [](TPathCore& path) { ++path.end(); }},
        {0x6C884971, u"TPathCore::iterator trying to decrement beyond beginning.",
         [](TPathCore& path) { --path.begin(); }},
        {0x6C884971, u"TPathCore::iterator trying to decrement beyond beginning.",
         [](TPathCore&) { --TPathCore().end(); }},
        {0x9E82DC54, kEnd, [](TPathCore& path) { (void)*path.end(); }},
        {0x9E82DC54, kEnd,
         [](TPathCore& path) {
             auto const it = --path.end();
             path.RemoveFilename();
             (void)it->length();
         }},
        {0x9E82DC54, kEnd,
         [](TPathCore& path) {
             auto const it = std::next(path.begin(), 2);
             path = u"aa\xD83D\xDE00";
             (void)*it;
         }},
        {0xA22179A7, kPosition, [](TPathCore&) { ++TPathCore::iterator(); }},
        {0xA22179A7, kPosition,
         [](TPathCore& path) {
             auto it = --path.end();
             path.Clear();
             ++it;
         }},
        {0x38CA4808, kChanged,
         [](TPathCore& path) {
             auto it = --path.end();
             path += u"name";
             ++it;
         }},
        {0x38CA4808, kChanged,
         [](TPathCore& path) {
             auto it = path.begin();
             path = u"//server";
             ++it;
         }},
        {0x2BC6B9CE, kSync,
         [](TPathCore& path) {
             auto it = --path.end();
             path = u"C:/directory/file";
             --it;
         }},
        {0x2BC6B9CE, kSync,
         [](TPathCore& path) {
             auto it = --path.end();
             path.Clear();
             --it;
         }},
    };
    for (Case const& c : cases) {
        EXPECT_EQ(CodeOf(c.misuse, c.message), c.code) << TStringCore(c.message);
    }
}

TEST(PathIterator, EqualityLooksAtTextAndPosition)
{
    TPathCore const path = u"C:/dir/file", copy = u"c:/DIR/file", other = u"C:/dir/file2";
    EXPECT_EQ(path.begin(), copy.begin());
    EXPECT_EQ(--path.end(), std::next(copy.begin(), 3));
    EXPECT_NE(path.begin(), other.begin());
    EXPECT_NE(path.begin(), path.end());
    auto it = path.begin();
    EXPECT_EQ(*it++, u"C:");
    EXPECT_EQ(it->length(), 1);
    EXPECT_EQ(*it--, u"/");
    TPathCore::iterator none;
    none = it;
    EXPECT_EQ(none, path.begin());
}

TEST(Path, ArgumentsOfEveryKind)
{
    TPathCore const path = u"a/\u00E9";
    for (TPathCore const& made :
         {TPathCore("a\\\xC3\xA9"), TPathCore(L"a\\\u00E9"), TPathCore(u"a\\\u00E9\\"_qs), TPathCore(u"a/\u00E9/"_qv),
          TPathCore(std::string("a/\xC3\xA9")), TPathCore(std::wstring(L"a/\u00E9")), TPathCore(u8"a/\u00E9"),
          TPathCore::fromWindows(u"a\\\u00E9"), TPathCore::fromVector({u"a\\"_qs, u""_qs, u"\u00E9/"_qs}),
          TPathCore(u"a") / L"\u00E9", u"a"_qs / TPathCore(u"\u00E9"), TPathCore(u"a/") + u'\\' + U'\u00E9',
          TPathCore(u"a") + u"/" + u"\u00E9/"_qs}) {
        EXPECT_EQ(made.GenericString(), path.GenericString());
    }
    EXPECT_TRUE(path == u"A\\\u00C9" && u"A/\u00C9/"_qs == path && path != "a" && path < L"b" && u"\u00E9"_qv > path);
    TStringCore const text = path;
    EXPECT_EQ(text + path, u"a/\u00E9a/\u00E9");
    EXPECT_TRUE(TPathCore(static_cast<char16_t const*>(nullptr)).empty());
    TPathCore self = u"dir/a.b";
    self.Append(self) += self;
    EXPECT_EQ(self.GenericString(), u"dir/a.b/dir/a.bdir/a.b/dir/a.b");
    EXPECT_EQ(self.ReplaceExtension(self.GenericString()).Extension(), u"b");
    EXPECT_EQ(TPathCore(u"a.b").ReplaceExtension(L".c\\d").GenericString(), u"a..c/d");
    EXPECT_EQ(TPathCore(u"a.b").ReplaceExtension(u"").GenericString(), u"a");
    TPathCore other;
    swap(self, other);
    EXPECT_TRUE(self.empty() && !other.empty() && !other.HasUNCObjectName() && other.AdminShareDriveLetter() == 0);
    EXPECT_EQ(TPathCore(u"//server/c$/x").AdminShareDriveLetter(), u'c');
}

TEST(Path, SharesOrCopiesWithoutAllocating)
{
    TStringCore const text = u"C:/some/where/out there/name.extension";
    testing_support::LeakCheck const check;
    TPathCore const path = text;
    TPathCore const copy = path;
    EXPECT_EQ(copy.GenericString().constData(), text.constData());
    std::size_t length = 0;
    for (TStringView const element : path.Elements()) {
        length += element.size();
    }
    EXPECT_EQ(length + 3, text.size());
    EXPECT_EQ(path.Filename().RemoveExtension().front(), u"name");
    EXPECT_TRUE(path.RootPath() == path.RootName() + path.RootDirectory() && path.Extension() == u"extension");
    EXPECT_EQ(check.Allocations(), 0u);
}

TEST(Path, ContainersFoldedAndExact)
{
    std::unordered_set<TPathCore> const folded{u"a/B", u"A\\b", u"c"};
    std::set<TPathCore> const ordered{u"a/B", u"A\\b", u"c"};
    std::unordered_set<TPathCore, qvxsys::ExactPathHash, qvxsys::ExactPathEqual> const exact{u"a/B", u"A\\b", u"a\\B"};
    std::set<TPathCore, qvxsys::ExactPathLess> const exactOrdered{u"a/B", u"A\\b", u"a\\B"};
    EXPECT_TRUE(folded.size() == 2 && ordered.size() == 2 && exact.size() == 2 && exactOrdered.size() == 2);
    // Comparing ends at an embedded 0, and so does the hash.
    TPathCore const longer = TStringView(u"a\0b", 3);
    EXPECT_TRUE(longer == u"A" && std::hash<TPathCore>()(longer) == std::hash<TPathCore>()(u"A"));
}

TEST(PathLexical, Within)
{
    struct Case
    {
        char16_t const* path;
        char16_t const* folder;
        bool within;
    };
    Case const cases[] = {
        {u"C:/a/b", u"c:\\A", true},
        {u"C:/a/../b", u"C:/a", false},
        {u"C:/ab", u"C:/a", false},
        {u"C:/a", u"D:/a", false},
        {u"C:/a", u"C:/", true},
        {u"/a", u"a", false},
        {u"a", u"", true},
        {u"..", u".", false},
        {u"../a", u"..", true},
        {u"../..", u"..", false},
        {u"..a", u".", true},
        {u"//s/x/../../y", u"//s/x", true},
        {u"//s/y/a", u"//s/x", false},
        {u"//s/y", u"//s/", true},
        {u"//?/C:/a/b", u"//?/C:/a", true},
        {u"./C:/x", u"C:/", false},
        {u"//?/Volume{1}/a", u"//?/", false},
        {u"C:a", u"C:/", false},
    };
    for (Case const& c : cases) {
        EXPECT_EQ(TPathCore(c.path).IsWithin(c.folder), c.within) << TPathCore(c.path) << " in " << TPathCore(c.folder);
    }
    EXPECT_EQ(TPathCore(u"//s/y/a").LexicallyRelative(u"//s/x"), u"");
    EXPECT_EQ(TPathCore(u"./C:").LexicallyRelative(u"").GenericString(), u"./C:");
}

TEST(PathNames, WindowsRules)
{
    using enum TPathCore::NameFault;
    std::pair<TStringCore, TPathCore::NameFault> const cases[] = {
        {u"", Empty},
        {u"a b.c", None},
        {u".profile", None},
        {u"a?", Character},
        {u"a\tb", Character},
        {u"a:b", Character},
        {u"a\\b", Character},
        {u"a.", TrailingDotOrSpace},
        {u"..", TrailingDotOrSpace},
        {u"a ", TrailingDotOrSpace},
        {u"CON", Device},
        {u"nul.tar.gz", Device},
        {u"Aux .x", Device},
        {u"prn", Device},
        {u"com\u00B9", Device},
        {u"LPT9.txt", Device},
        {u"COM0", None},
        {u"COM10", None},
        {u"COM\u2074", None},
        {u"conin$", Device},
        {u"CONSOLE", None},
        {u"a.CON", None},
        {TStringCore(u'n', 255), None},
        {TStringCore(u'n', 256), TooLong},
        {u"\xD800", None},
    };
    for (auto const& [name, fault] : cases) {
        EXPECT_EQ(TPathCore::CheckName(name), fault) << name;
    }
    EXPECT_EQ(TPathCore(u"C:/a/../b/./c.txt").CheckNames(), None);
    EXPECT_EQ(TPathCore(u"C:/a/nul/c.txt").CheckNames(), Device);
    EXPECT_EQ(TPathCore(u"dir/C:").CheckNames(), Character);
}

TEST(PathBridge, BytesAndBack)
{
    struct Case
    {
        std::string bytes;
        std::u16string text;
    };
    Case const cases[] = {
        {"a/b", u"a/b"},
        {"dir/", u"dir/"},
        {"//a//", u"//a//"},
        {"C:/x", u"C:/x"},
        {"//?/c:", u"//?/c:"},
        {"C:x", {u'C', 0xDC3A, u'x'}},
        {"x/a:b", {u'x', u'/', u'a', 0xDC3A, u'b'}},
        {"a\\b", {u'a', 0xDC5C, u'b'}},
        {"\xC3\xA9\xF0\x9F\x98\x80", u"\u00E9\U0001F600"},
        {"\xFF\xC3", {0xDCFF, 0xDCC3}},
        {"\xED\xA0\x80", {0xDCED, 0xDCA0, 0xDC80}},                         // a surrogate
        {"\xC0\xAF\xE0\x80\xAF", {0xDCC0, 0xDCAF, 0xDCE0, 0xDC80, 0xDCAF}}, // '/' in too many bytes
        {"\xF4\x90\x80\x80", {0xDCF4, 0xDC90, 0xDC80, 0xDC80}},
        {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
    };
    for (Case const& c : cases) {
        TPathCore const path = qvxsys::detail::PathFromBytes(c.bytes);
        EXPECT_EQ(path.GenericString(), TStringView(c.text));
        EXPECT_EQ(qvxsys::detail::PathToBytes(path), c.bytes);
    }
    EXPECT_EQ(qvxsys::detail::PathToBytes(std::u16string{0xD800, 0xDC3A, 0xDFFF}), "\xF0\x90\x80\xBA\xED\xBF\xBF");
    std::mt19937 random(43);
    for (int i = 0; i < 20'000; ++i) {
        std::string bytes(random() % 12, '\0');
        std::generate(bytes.begin(), bytes.end(),
                      [&] { return "\\:/C\xED\xA0\xB2\x80\xF0\x9F\xC3\xA9"[random() % 12]; });
        ASSERT_EQ(qvxsys::detail::PathToBytes(qvxsys::detail::PathFromBytes(bytes)), bytes);
    }
    EXPECT_EQ(qvxsys::detail::PathFromUnits(u"C:\\a//b\\").GenericString(), u"C:/a//b/");
}

// The file system itself: files with names that only it understands are found and opened again.
TEST(PathBridge, FilesOfThisSystem)
{
    TemporaryFolder const folder;
    std::set<fs::path> names{u8"\u00E9\U0001F600.txt", "plain"};
    if constexpr (sizeof(fs::path::value_type) == 1) {
        names.merge(
            std::set<fs::path>{"back\\slash", "12:30", "C:", "\xFF\xFE.txt", " trailing. ", "nul", "\xED\xA0\x80"});
    }
    for (fs::path const& name : names) {
        std::ofstream(folder.Path() / name) << 'x';
    }
    std::set<fs::path> found;
    for (auto const& entry : fs::directory_iterator(folder.Path())) {
        TPathCore const file = qvxsys::FromFileSystem(entry.path());
        EXPECT_EQ(qvxsys::ToFileSystem(file), entry.path());
        EXPECT_EQ(std::ifstream(qvxsys::ToFileSystem(file)).get(), 'x');
        EXPECT_EQ(file.Parent(), qvxsys::FromFileSystem(folder.Path()));
        found.insert(qvxsys::ToFileSystem(file.Filename()));
    }
    EXPECT_EQ(found, names);
}

} // namespace
