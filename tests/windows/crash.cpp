// Ends as its argument says. Every way but "none" must be reported as a failure by whoever runs it.

#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <thread>

#include <qvxsys/qvxsys.h>

namespace {

int volatile* volatile g_nowhere = nullptr;

// Never ends: the depth is only known at run time.
int Recurse(int volatile* above, int deeper)
{
    int volatile here[1024] = {};
    here[0] = above != nullptr ? *above : 0;
    return deeper != 0 ? Recurse(here, deeper) + here[0] : 0;
}

int End(std::string_view how)
{
    if (how == "write") {
        *g_nowhere = 1;
    } else if (how == "abort") {
        std::abort();
    } else if (how == "throw") {
        throw std::runtime_error("not caught");
    } else if (how == "throw-from-library") {
        static_cast<void>(TStringCore(u"short").at(static_cast<int>(how.size()) * 100));
    } else if (how == "stack") {
        return Recurse(nullptr, static_cast<int>(how.size()));
    } else if (how == "thread") {
        std::thread([] { *g_nowhere = 1; }).join();
    } else if (how == "trap") {
        __builtin_trap();
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    return argc == 2 ? End(argv[1]) : 2;
}
