// The examples of the headers of paths, and of docs/guides/paths.md.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <set>

#include <qvxsys/qvxsys.h>

namespace {

bool Parts()
{
    TPathCore const file = u"C:\\docs\\notes.txt";
    for (TStringView const name : file.Elements()) {
        std::cout << name << '\n'; // "C:", "/", "docs", "notes.txt"
    }
    return file.GenericString() == u"C:/docs/notes.txt" && file.NativeString() == u"C:\\docs\\notes.txt" &&
           file.Parent() / u"other" / u"list.csv" == u"C:/docs/other/list.csv" &&
           TPathCore(file).ReplaceExtension(u"bak") == u"C:/docs/notes.bak";
}

bool Names()
{
    TPathCore const file = u"C:\\docs\\notes.txt";
    TPathCore const backup = file.Parent() / u"old" / file.Filename().ReplaceExtension(u"bak");
    std::cout << backup << ", on Windows " << backup.NativeString() << '\n'; // C:/docs/old/notes.bak
    return backup == u"C:/docs/old/notes.bak";
}

/// The file that somebody asks for below a folder; empty where it would lie elsewhere, or be a name that Windows does
/// not take.
TPathCore Resolved(TPathCore const& folder, TStringCore const& asked)
{
    TPathCore const file = folder / asked;
    if (!file.IsWithin(folder) || file.CheckNames() != TPathCore::NameFault::None) {
        return {};
    }
    return file.LexicallyNormal();
}

bool FromOutside()
{
    TPathCore const folder = u"C:/www";
    return Resolved(folder, u"a/./b.html") == u"C:/www/a/b.html" && Resolved(folder, u"..\\users.txt").empty() &&
           Resolved(folder, u"D:/x").empty() && Resolved(folder, u"nul.txt").empty();
}

bool Containers()
{
    std::map<TPathCore, int> opened; // by the rules of Windows: "A.txt" is "a.TXT"
    ++opened[u"docs/A.txt"];
    ++opened[u"docs\\a.TXT"];
    std::set<TPathCore, qvxsys::ExactPathLess> exact = {u"docs/A.txt", u"docs/a.TXT"}; // these are two
    return opened.size() == 1 && exact.size() == 2;
}

bool Lexical()
{
    TPathCore const file = u"C:/docs/../archive/./notes.txt";
    return file.LexicallyNormal() == u"C:/archive/notes.txt" &&
           file.LexicallyRelative(u"C:/docs") == u"../archive/notes.txt" && !file.IsWithin(u"C:/docs") &&
           TPathCore(u"logs/aux.txt").CheckNames() == TPathCore::NameFault::Device;
}

bool FileSystem()
{
    auto const folder = std::filesystem::temp_directory_path() / "qvx-path-example";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "notes.txt") << "read me";
    std::string text;
    for (auto const& entry : std::filesystem::directory_iterator(folder)) {
        TPathCore const file = qvxsys::FromFileSystem(entry.path());
        if (file.Extension() == u"txt") {
            std::ifstream in(qvxsys::ToFileSystem(file)); // opens it, whatever its name
            std::getline(in, text);
        }
    }
    std::filesystem::remove_all(folder);
    return text == "read me";
}

bool Program()
{
    std::cout << TSystem::ExecutableFilename() << '\n';
    TPathCore const settings = TSystem::ExecutablePath() / u"settings.ini";
    return TSystem::ExecutableFilename().IsWithin(TSystem::ExecutablePath()) && settings.IsWithin(settings.Parent());
}

} // namespace

int main()
{
    bool const ok = Parts() && Names() && FromOutside() && Containers() && Lexical() && FileSystem() && Program();
    std::cout << (ok ? "ok\n" : "not as documented\n");
    return ok ? 0 : 1;
}
