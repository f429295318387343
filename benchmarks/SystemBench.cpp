// What the resource monitor asks of the system at each check.

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <csignal>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <qvxsys/TSystem.h>

#include "BenchSupport.h"
#include "MonitoredProcess.h"

namespace {

using namespace qvxsys::monitor;

/// Processes that do nothing, until the end.
std::vector<pid_t> const& Children(std::size_t count)
{
    static struct Family
    {
        std::vector<pid_t> pids;
        ~Family()
        {
            for (pid_t const pid : pids) {
                kill(pid, SIGKILL);
                waitpid(pid, nullptr, 0);
            }
        }
    } family;
    while (family.pids.size() < count) {
        pid_t const pid = fork();
        if (pid == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            for (;;) {
                pause();
            }
        }
        family.pids.push_back(pid);
    }
    return family.pids;
}

/// One whole read of a file by plain system calls: the bound for what a figure out of it can cost.
void FileRow(std::string const& row, char const* path)
{
    bench::Row(row, std::string("[fopen, fread]"), [path] {
        char buffer[4096];
        std::FILE* const file = std::fopen(path, "r");
        benchmark::DoNotOptimize(std::fread(buffer, 1, sizeof buffer, file));
        std::fclose(file);
    });
}

void RegisterRows()
{
    bench::Row("k4 memory of the machine", "own", [] { benchmark::DoNotOptimize(TSystem::Memory()); });
    FileRow("k4 memory of the machine", "/proc/meminfo");
    bench::Row("k4 processors", "own", [] { benchmark::DoNotOptimize(TSystem::Processors()); });
    bench::Row("k4 throttling", "own", [] { benchmark::DoNotOptimize(TSystem::Throttling()); });
    bench::Row("k5 processor time of a process", "own",
               [process = std::make_shared<MonitoredProcess>(static_cast<unsigned int>(Children(1)[0]))] {
                   benchmark::DoNotOptimize(process->GetCpuUsage());
               });
    bench::Row("k5 memory of a process", "own",
               [process = std::make_shared<MonitoredProcess>(static_cast<unsigned int>(Children(1)[0]))] {
                   benchmark::DoNotOptimize(process->GetMemoryUsage());
               });
    static std::string const status = "/proc/" + std::to_string(Children(1)[0]) + "/status";
    FileRow("k5 memory of a process", status.c_str());
    bench::Row("k5 does a process run", "own", [] {
        benchmark::DoNotOptimize(MonitoredProcess::IsRunning(static_cast<unsigned int>(Children(1)[0])));
    });
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
