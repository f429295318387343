// A program that uses memory as it is told to on stdin: "N" makes it N MiB, which it touches; at the end of the input
// it ends with status 0. It answers each line with "N MiB". SIGUSR1 gives all back, "freed". With the argument
// "stubborn" it does not end for SIGTERM.

#include <csignal>
#include <cstddef>
#include <iostream>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace {

void* g_memory = nullptr;
std::size_t g_size = 0;

void Free()
{
    if (g_size != 0) {
        munmap(g_memory, g_size);
        g_size = 0;
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 1 && std::string(argv[1]) == "stubborn") {
        std::signal(SIGTERM, SIG_IGN);
    }
    std::signal(SIGUSR1, [](int) {
        Free();
        static_cast<void>(write(STDOUT_FILENO, "freed\n", 6) != 0);
    });
    std::cout << "ready" << std::endl;
    for (std::size_t mebibytes = 0; std::cin >> mebibytes;) {
        sigset_t back; // only when there is something, and it was said
        sigemptyset(&back);
        sigaddset(&back, SIGUSR1);
        sigprocmask(SIG_BLOCK, &back, nullptr);
        Free();
        std::size_t const size = mebibytes << 20;
        g_memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
        g_size = g_memory != MAP_FAILED ? size : 0;
        std::cout << (g_size >> 20) << " MiB" << std::endl;
        sigprocmask(SIG_UNBLOCK, &back, nullptr);
    }
}
