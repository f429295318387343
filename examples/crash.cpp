// A crash report: the example of <qvxsys/CrashHandler.h> and <qvxsys/CrashDump.h>.
//
//     example_crash                 writes a dump of itself as it runs, looks at it and deletes it
//     example_crash FILE            crashes; the dump is FILE, in which %p stands for the process id
//
// and then, on Linux:
//
//     lldb -c FILE -o "bt all"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include <qvxsys/CrashDump.h>
#include <qvxsys/CrashHandler.h>
#include <qvxsys/TStringCore.h>
#include <qvxsys/TSystem.h>

namespace {

// As dbghelp.h names it; where there is no such header the name is global, too.
constexpr auto kNormal = qvxsys::minidump::MiniDumpNormal;

struct Account
{
    int balance;
};

int Total(Account const* const* accounts, int count)
{
    return count == 0 ? 0 : accounts[0]->balance + Total(accounts + 1, count - 1);
}

int Crash(char const* file)
{
    quorvex::crash::HandlerOptions options;
    options.announce = true;
    if (!quorvex::crash::InstallHandler(TStringCore(file), options)) {
        std::cerr << GetLastErrorString() << '\n';
        return 1;
    }
    Account const first{1};
    Account const* volatile none = nullptr;
    Account const* const accounts[] = {&first, none};
    return Total(accounts, 2);
}

bool DumpsItself()
{
    namespace fs = std::filesystem;
    fs::path const file = fs::temp_directory_path() / ("example-" + std::to_string(TSystem::ProcessID()) + ".dmp");
    if (WriteCrashDump(nullptr, TSystem::ProcessID(), file.u16string().c_str(), kNormal) == 0) {
        std::cerr << GetLastErrorString() << '\n';
        return false;
    }
    std::string start(4, ' ');
    std::ifstream(file, std::ios::binary).read(start.data(), 4);
    std::cout << file.string() << ": " << start << ", " << fs::file_size(file) << " bytes\n";
    fs::remove(file);
    return start == "MDMP";
}

} // namespace

int main(int count, char** arguments)
{
    if (count > 1) {
        return Crash(arguments[1]);
    }
    return DumpsItself() ? 0 : 1;
}
