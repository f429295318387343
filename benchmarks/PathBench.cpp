// Paths beside the standard library's and Qt's: making one, taking it apart, putting it together, comparing. A short
// one, whose text is in the string itself here, and one of usual length.

#include <filesystem>
#include <string>
#include <vector>

#include <qvxsys/TPathCore.h>

#ifdef QVXSYS_BENCH_QT
#include <QDir>
#include <QFileInfo>
#include <QString>
#endif

#include "BenchSupport.h"

namespace {

struct Text
{
    std::string name;
    std::string text;
    std::string other; // differs at its end
};
Text const g_texts[] = {{"12", "src/main.cpp", "src/main.hpp"},
                        {"50", "/home/someone/projects/library/sources/PathText.cpp",
                         "/home/someone/projects/library/sources/PathText.hpp"},
                        {"61", "/home/someone/projects/library/sources/FileSystemPathTest.cpp",
                         "/home/someone/projects/library/sources/FileSystemPathTest.hpp"}};

struct Own
{
    using String = TStringCore;
    using Path = TPathCore;
    static constexpr char const* kName = "own";
    static Path Make(String const& s) { return Path(s); }
    static auto Filename(Path const& p) { return p.Filename(); }
    static auto Extension(Path const& p) { return p.Extension(); }
    static auto Stem(Path const& p) { return p.Stem(); }
    static auto Parent(Path const& p) { return p.Parent(); }
    static auto Root(Path const& p) { return p.RootPath(); }
    static auto Join(Path const& p, Path const& q) { return p / q; }
    static auto Normal(Path const& p) { return p.LexicallyNormal(); }
    static std::size_t Hash(Path const& p) { return std::hash<Path>()(p); }
    static std::size_t Iterate(Path const& p)
    {
        std::size_t n = 0;
        for (TStringView const element : p.Elements()) {
            n += element.size();
        }
        return n;
    }
    static std::size_t IterateTexts(Path const& p)
    {
        std::size_t n = 0;
        for (TStringCore const& element : p) {
            n += element.size();
        }
        return n;
    }
};

struct Standard
{
    using String = std::string;
    using Path = std::filesystem::path;
    static constexpr char const* kName = "std::filesystem::path";
    static Path Make(String const& s) { return Path(s); }
    static auto Filename(Path const& p) { return p.filename(); }
    static auto Extension(Path const& p) { return p.extension(); }
    static auto Stem(Path const& p) { return p.stem(); }
    static auto Parent(Path const& p) { return p.parent_path(); }
    static auto Root(Path const& p) { return p.root_path(); }
    static auto Join(Path const& p, Path const& q) { return p / q; }
    static auto Normal(Path const& p) { return p.lexically_normal(); }
    static std::size_t Hash(Path const& p) { return std::filesystem::hash_value(p); }
    static std::size_t Iterate(Path const& p)
    {
        std::size_t n = 0;
        for (Path const& element : p) {
            n += element.native().size();
        }
        return n;
    }
    static std::size_t IterateTexts(Path const& p)
    {
        std::size_t n = 0;
        for (Path const& element : p) {
            std::string const text = element.native();
            benchmark::DoNotOptimize(text.data());
            n += text.size();
        }
        return n;
    }
};

template<class T>
void Rows(Text const& text)
{
    using Path = typename T::Path;
    auto const row = [&text](char const* name, auto op) { bench::Row(name + (", " + text.name), T::kName, op); };
    auto const part = [&row, path = Path(text.text)](char const* name, auto cut) {
        row(name, [path, cut] {
            auto result = cut(path);
            benchmark::DoNotOptimize(result);
        });
    };
    part("p1 make", [source = typename T::String(text.text)](Path const&) { return T::Make(source); });
    part("p2 file name", [](Path const& p) { return T::Filename(p); });
    part("p2 extension", [](Path const& p) { return T::Extension(p); });
    part("p2 stem", [](Path const& p) { return T::Stem(p); });
    part("p2 parent", [](Path const& p) { return T::Parent(p); });
    part("p2 root path", [](Path const& p) { return T::Root(p); });
    part("p3 elements", [](Path const& p) { return T::Iterate(p); });
    part("p3 elements as texts", [](Path const& p) { return T::IterateTexts(p); });
    part("p3 make, elements",
         [source = typename T::String(text.text)](Path const&) { return T::Iterate(T::Make(source)); });
    part("p4 join", [name = Path("name.txt")](Path const& p) { return T::Join(p, name); });
    part("p4 normal form", [](Path const& p) { return T::Normal(p); });
    bench::Row("p4 normal form of dots, " + text.name, T::kName, [path = Path("x/../" + text.text + "/./y/..")] {
        auto result = T::Normal(path);
        benchmark::DoNotOptimize(result);
    });
    part("p5 equal", [same = Path(text.text.c_str())](Path const& p) { return p == same; });
    part("p5 less", [other = Path(text.other)](Path const& p) { return p < other; });
    part("p5 hash", [](Path const& p) { return T::Hash(p); });
}

#ifdef QVXSYS_BENCH_QT
void QtRows(Text const& text)
{
    QString const source = QString::fromStdString(text.text);
    auto const row = [&text](char const* name, auto op) {
        bench::Row(name + (", " + text.name), "QFileInfo", [op] {
            auto result = op();
            benchmark::DoNotOptimize(result);
        });
    };
    // Parts are found at the first question and remembered.
    QFileInfo const info(source);
    QDir const dir(source);
    row("p1 make", [source] { return QFileInfo(source); });
    row("p2 file name", [info] { return info.fileName(); });
    row("p2 extension", [info] { return info.suffix(); });
    row("p2 stem", [info] { return info.completeBaseName(); });
    row("p2 parent", [info] { return info.path(); });
    row("p4 join", [dir, name = QString("name.txt")] { return dir.filePath(name); });
    row("p4 normal form", [source] { return QDir::cleanPath(source); });
    row("p4 normal form of dots", [dots = "x/../" + source + "/./y/.."] { return QDir::cleanPath(dots); });
}
#endif

void RegisterRows()
{
    for (Text const& text : g_texts) {
        Rows<Own>(text);
        Rows<Standard>(text);
#ifdef QVXSYS_BENCH_QT
        QtRows(text);
#endif
    }
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
