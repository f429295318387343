// The examples of the headers of paths.

#include <filesystem>
#include <fstream>
#include <iostream>

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
    return TSystem::ExecutableFilename().IsWithin(TSystem::ExecutablePath());
}

} // namespace

int main()
{
    bool const ok = Parts() && Lexical() && FileSystem() && Program();
    std::cout << (ok ? "ok\n" : "not as documented\n");
    return ok ? 0 : 1;
}
