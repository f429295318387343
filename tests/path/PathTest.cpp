#include <filesystem>
#include <fstream>
#include <map>
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

using Cells = std::vector<std::string>;

Cells PartsOf(TPathCore const& path)
{
    std::string elements;
    for (TStringCore const& element : path) {
        elements += (elements.empty() ? "" : " ") + Cell(element, "(empty)");
    }
    return {Cell(path),
            Cell(path.RootName()),
            Cell(path.Parent()) + (path.HasParentPath() ? "" : " (no)"),
            Cell(path.Filename()),
            Cell(path.Stem()),
            path.HasExtension() ? Cell(path.Extension(), "(empty)") : "-",
            elements.empty() ? "-" : elements};
}

Cells RootsOf(TPathCore const& path)
{
    std::string const kind = std::string(path.IsUNC() ? "UNC" : "-") + (path.IsExtendedLength() ? " extended" : "");
    return {path.IsAbsolute()   ? "absolute"
            : path.IsRelative() ? "relative"
                                : "neither",
            kind,
            Cell(path.UNCShareName()) + (path.IsAdminShare() ? " (admin)" : ""),
            Cell(path.UNCObjectName()),
            Cell(path.NativeLongPath()),
            Cell(path.NativeShortPath()),
            Cell(path.LexicallyNormal())};
}

// Each row of the page's two tables is what the operations make of its first cell.
TEST(PathPage, TablesAreTrue)
{
    std::ifstream page(QVXSYS_PATHS_PAGE, std::ios::binary);
    Cells (*cells)(TPathCore const&) = nullptr;
    int rows = 0;
    for (std::string line; std::getline(page, line);) {
        cells = line.starts_with("## Parts") ? PartsOf : line.starts_with("## Roots") ? RootsOf : cells;
        if (cells != nullptr && line.starts_with("| `")) {
            std::string row = line.substr(0, line.find('`', 3) + 1);
            for (std::string const& cell : cells(row.substr(3, row.size() - 4))) {
                row += " | " + cell;
            }
            EXPECT_EQ(line, row + " |");
            ++rows;
        }
    }
    EXPECT_GT(rows, 40);
}

TEST(PathRules, EveryShortText)
{
    constexpr TStringView kUnits = u"/:?.c";
    for (TStringView const prefix :
         {u"", u"//?/", u"//?/uNc/", u"//s", u"C:", u"\xD83D\xDE00/", u"\xDC00\xD800", u"a\\\u00E9", u"//s/c$",
          u"/a name of 62 units, so that the next ones are the last of 64."}) {
        int const most = prefix.empty() ? 5 : 4;
        for (int length = 0; length <= most; ++length) {
            for (int n = 0, end = static_cast<int>(std::pow(5, length)); n < end; ++n) {
                TStringCore text = prefix;
                for (int digits = n, i = 0; i < length; ++i, digits /= 5) {
                    text.append(kUnits[static_cast<std::size_t>(digits % 5)]);
                }
                ASSERT_EQ(PathCheck().Run(text, u"a/../b"), "");
                TPathCore const path = text;
                ASSERT_EQ(TPathCore(path).RemoveFilename().GenericString(), path.Parent().GenericString()) << text;
            }
        }
    }
}

// The names of POSIX are the simplest paths: their lexical forms are those of the standard library on every system.
TEST(PathLexical, AsTheStandardLibrary)
{
    std::mt19937 random(42);
    auto const text = [&random](bool rooted) {
        std::string result = rooted ? "/" : "";
        for (auto n = 1 + random() % 7; n > 0; --n) {
            static std::string const kNames[] = {"a", "b", ".", "..", "c.d", "...", std::string(100, 'n')};
            result += kNames[random() % 7] + (n > 1 ? "/" : "");
        }
        return result;
    };
    // The standard's normal forms have a '/' at the end where something was taken back.
    auto const own = [](fs::path const& path) { return TPathCore(path.generic_string()); };
    auto const plain = [own](fs::path const& path) { return fs::path(own(path).GenericString().toStdString()); };
    for (int i = 0; i < 20'000; ++i) {
        bool const rooted = random() % 2 != 0;
        fs::path const path = text(rooted), base = plain(fs::path(text(rooted)).lexically_normal());
        ASSERT_EQ(own(path).LexicallyNormal(), own(path.lexically_normal())) << path;
        if (*base.begin() != "..") { // where the standard's answer does not lead back
            fs::path const relative = plain(path.lexically_normal()).lexically_relative(base);
            ASSERT_EQ(own(path).LexicallyRelative(own(base)), own(relative.lexically_normal())) << path << ' ' << base;
        }
    }
}

// What is done with an iterator of "C:/dir/file" at an element (-1: the end) after the path has changed, and its error.
TEST(PathIterator, Misuse)
{
    using Iterator = TPathCore::iterator;
    std::map<unsigned, TStringCore> const messages = {
        {0x4E3E0D3F, u"Invalid TPathCore::iterator asignment of from one TPathCore to different TPathCore."},
        {0xA22179A7, u"Invalid position in TPathCore::iterator::nextElement."},
        {0x9E82DC54, u"TPathCore::iterator::locateElementEnd element starting position is out of range, or not valid "
                     u"for current path."},
        {0x38CA4808, u"TPathCore::iterator::locateNextElement element end position is out of range, or not valid for "
                     u"this path."},
        {0x24209A38, u"TPathCore::iterator trying to increment beyond end."},
        {0x6C884971, u"TPathCore::iterator trying to decrement beyond beginning."},
        {0x2BC6B9CE, u"TPathCore::iterator out of sync in prev."}};
    constexpr char16_t kSame[] = u"C:/dir/file";
    static TPathCore const other = kSame;
    constexpr auto kUp = [](Iterator& it) { ++it; };
    constexpr auto kDown = [](Iterator& it) { --it; };
    constexpr auto kRead = [](Iterator& it) { (void)it->length(); };
    std::tuple<unsigned, int, char16_t const*, void (*)(Iterator&)> const cases[] = {
        {0x4E3E0D3F, 0, kSame, [](Iterator& it) { it = other.begin(); }},
        {0xA22179A7, 0, kSame, [](Iterator&) { ++Iterator(); }},
        {0xA22179A7, 3, u"C:/dir", kUp},
        {0x9E82DC54, -1, kSame, kRead},
        {0x9E82DC54, 3, u"C:/dir", kRead},
        {0x9E82DC54, 2, u"aa\xD83D\xDE00", kRead},
        {0x38CA4808, 3, u"C:/dir/filename", kUp},
        {0x38CA4808, 0, u"//server", kUp},
        {0x24209A38, -1, kSame, kUp},
        {0x6C884971, 0, kSame, kDown},
        {0x6C884971, -1, u"", kDown},
        {0x2BC6B9CE, 3, u"C:/directory/file", kDown},
        {0x2BC6B9CE, 3, u"", kDown}};
    TStackWalker::InitSym(true);
    for (auto const& [code, element, changed, act] : cases) {
        TPathCore path = kSame;
        Iterator it = element < 0 ? path.end() : std::next(path.begin(), element);
        path = changed;
        try {
            act(it);
            ADD_FAILURE() << messages.at(code) << " after " << path;
        } catch (TPathCore::Exception const& e) {
            EXPECT_EQ(e.GetErrorCode(), code);
            EXPECT_EQ(e.GetErrorSource(), 2);
            EXPECT_EQ(e.GetMessagesVector().front(), messages.at(code));
            EXPECT_TRUE(e.GetConcatenatedMessages().contains(u"path_test!")) << "no call stack";
            std::unique_ptr<QuorvexException> const clone(e.Clone());
            EXPECT_THROW(clone->Throw(), TPathCore::Exception);
        }
    }
    EXPECT_EQ(TPathCore::Exception(u"alone", TError::ErrorInfo::TestError(), false).GetMessagesVector().size(), 1u);
    TStackWalker::InitSym(false);
}

TEST(PathIterator, EqualityLooksAtTextAndPosition)
{
    TPathCore const path = u"C:/dir/file", copy = u"c:/DIR/file", other = u"C:/dir/file2";
    EXPECT_TRUE(path.begin() == copy.begin() && --path.end() == std::next(copy.begin(), 3));
    EXPECT_TRUE(path.begin() != other.begin() && path.begin() != path.end());
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
          TPathCore::fromWindows(u"a\\\u00E9"), TPathCore::fromVector({u"a\\"_qs, u""_qs, u"/\u00E9/"_qs}),
          TPathCore(u"a") / L"\u00E9", u"a"_qs / TPathCore(u"\u00E9"), TPathCore(u"a/") + u'\\' + U'\u00E9',
          TPathCore(u"a") + L"\\" + u"\u00E9/"_qs}) {
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
    std::initializer_list<TPathCore> const some{u"a/B", u"A\\b", u"c"};
    EXPECT_EQ(std::unordered_set<TPathCore>(some).size() + std::set<TPathCore>(some).size(), 4u);
    EXPECT_EQ((std::unordered_set<TPathCore, qvxsys::ExactPathHash, qvxsys::ExactPathEqual>(some).size()), 3u);
    EXPECT_EQ((std::set<TPathCore, qvxsys::ExactPathLess>(some).size()), 3u);
    // Comparing ends at an embedded 0, and so does the hash.
    TPathCore const longer = TStringView(u"a\0b", 3);
    EXPECT_TRUE(longer == u"A" && std::hash<TPathCore>()(longer) == std::hash<TPathCore>()(u"A"));
}

TEST(PathLexical, Within)
{
    using Pair = std::pair<TPathCore, TPathCore>;
    for (auto const& [path, folder] :
         {Pair(u"C:/a/b", u"c:\\A"), Pair(u"C:/a", u"C:/"), Pair(u"a", u""), Pair(u"../a", u".."), Pair(u"..a", u"."),
          Pair(u"//s/x/../../y", u"//s/x"), Pair(u"//s/y", u"//s/"), Pair(u"//?/C:/a/b", u"//?/C:/a")}) {
        EXPECT_TRUE(path.IsWithin(folder)) << path << " in " << folder;
    }
    for (auto const& [path, folder] :
         {Pair(u"C:/a/../b", u"C:/a"), Pair(u"C:/ab", u"C:/a"), Pair(u"C:/a", u"D:/a"), Pair(u"/a", u"a"),
          Pair(u"..", u"."), Pair(u"../..", u".."), Pair(u"//s/y/a", u"//s/x"), Pair(u"./C:/x", u"C:/"),
          Pair(u"//?/Volume{1}/a", u"//?/"), Pair(u"C:a", u"C:/")}) {
        EXPECT_FALSE(path.IsWithin(folder)) << path << " in " << folder;
    }
    EXPECT_EQ(TPathCore(u"//s/y/a").LexicallyRelative(u"//s/x"), u"");
    EXPECT_EQ(TPathCore(u"a").LexicallyRelative(u"../b"), u""); // nobody knows what is above
    EXPECT_EQ(TPathCore(u"./C:").LexicallyRelative(u"").GenericString(), u"./C:");
}

TEST(PathNames, WindowsRules)
{
    using enum TPathCore::NameFault;
    std::pair<TPathCore::NameFault, std::vector<TStringCore>> const cases[] = {
        {None, {u"a b.c", u".profile", u"COM0", u"COM10", u"COM\u2074", u"CONSOLE", u"a.CON", u"\xD800"}},
        {None, {TStringCore(u'n', 255)}},
        {Empty, {u""}},
        {Character, {u"a?", u"a\tb", u"a:b", u"a\\b"}},
        {TrailingDotOrSpace, {u"a.", u"..", u"a ", u"CON "}},
        {Device, {u"CON", u"nul.tar.gz", u"Aux .x", u"prn", u"com\u00B9", u"LPT9.txt", u"conin$"}},
        {TooLong, {TStringCore(u'n', 256)}}};
    for (auto const& [fault, names] : cases) {
        for (TStringCore const& name : names) {
            EXPECT_EQ(TPathCore::CheckName(name), fault) << name;
        }
    }
    EXPECT_EQ(TPathCore(u"C:/a/../b/./c.txt").CheckNames(), None);
    EXPECT_EQ(TPathCore(u"C:/a/nul/c.txt").CheckNames(), Device);
    EXPECT_EQ(TPathCore(u"dir/C:").CheckNames(), Character);
}

TEST(PathBridge, BytesAndBack)
{
    std::pair<std::string, std::u16string> const cases[] = {
        {"dir/", u"dir/"},
        {"C:/x", u"C:/x"},
        {"//?/c:", u"//?/c:"},
        {"C:x", {u'C', 0xDC3A, u'x'}},
        {"x/a:b", {u'x', u'/', u'a', 0xDC3A, u'b'}},
        {"//abc:/", {u'/', u'/', u'a', u'b', u'c', 0xDC3A, u'/'}},
        {"a\\b", {u'a', 0xDC5C, u'b'}},
        {"\xC3\xA9\xF0\x9F\x98\x80", u"\u00E9\U0001F600"},
        {"\xFF\xC3", {0xDCFF, 0xDCC3}},
        // A surrogate, ':' in too many bytes, and what is above U+10FFFF.
        {"\xED\xA0\x80", {0xDCED, 0xDCA0, 0xDC80}},
        {"\xE0\x80\xBA", {0xDCE0, 0xDC80, 0xDCBA}},
        {"\xF4\x90\x80\x80", {0xDCF4, 0xDC90, 0xDC80, 0xDC80}}};
    for (auto const& [bytes, text] : cases) {
        TPathCore const path = qvxsys::detail::PathFromBytes(bytes);
        EXPECT_EQ(path.GenericString(), TStringView(text));
        EXPECT_EQ(qvxsys::detail::PathToBytes(path), bytes);
    }
    constexpr std::string_view kBytes = "C/:\\?\x80\xBA\xE0\xF0";
    for (int n = 0; n < 9 * 9 * 9 * 9 * 9; ++n) {
        std::string bytes;
        for (int digits = n; digits != 0; digits /= 9) {
            bytes += kBytes[static_cast<std::size_t>(digits % 9)];
        }
        ASSERT_EQ(qvxsys::detail::PathToBytes(qvxsys::detail::PathFromBytes(bytes)), bytes);
    }
    EXPECT_EQ(qvxsys::detail::PathToBytes(std::u16string{0xD800, 0xDC3A, 0xDFFF}), "\xF0\x90\x80\xBA\xED\xBF\xBF");
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
