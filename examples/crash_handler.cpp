// The crash handler of a server, as docs/guides/crash-reports.md has it.

#include <iostream>

#include <qvxsys/qvxsys.h>

int main()
{
    if (!quorvex::crash::InstallHandler(u"server-%p.dmp")) {
        std::cerr << "no crash dumps: " << GetLastErrorString() << '\n';
    }
    TThreadPool::Configure(8, [] { quorvex::crash::PrepareThread(); }, nullptr, nullptr);
    TEvent served;
    TThreadPool::Get().AddWork([&served] { served.Signal(); }, TThreadPoolWork::Queue);
    bool const ok = served.Wait(std::chrono::minutes(1));
    return TThreadPool::Shutdown(std::chrono::seconds(5)) && ok ? 0 : 1;
}
