// A program that uses memory as it is told to on stdin: "N" makes it grow to N MiB, all of it touched; at the end of
// the input it ends with status 0. It answers each line with "N MiB". SIGUSR1 gives all back, "freed". With the
// argument "stubborn" it does not end for SIGTERM, and its first thread ends before all else.

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

std::vector<std::pair<void*, std::size_t>> g_pieces;
std::size_t g_size = 0;

void GrowTo(std::size_t size)
{
    if (size > g_size) {
        std::size_t const more = size - g_size;
        void* const piece =
            mmap(nullptr, more, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
        if (piece != MAP_FAILED) {
            g_pieces.emplace_back(piece, more);
            g_size = size;
        }
    }
}

// Only while nothing grows.
void Free(int)
{
    for (auto const& [piece, size] : g_pieces) {
        munmap(piece, size);
    }
    g_pieces.clear();
    g_size = 0;
    static_cast<void>(write(STDOUT_FILENO, "freed\n", 6) != 0);
}

[[noreturn]] void Serve()
{
    sigset_t back;
    sigemptyset(&back);
    sigaddset(&back, SIGUSR1);
    std::cout << "ready" << std::endl;
    for (std::size_t mebibytes = 0; std::cin >> mebibytes;) {
        pthread_sigmask(SIG_BLOCK, &back, nullptr);
        GrowTo(mebibytes << 20);
        std::cout << (g_size >> 20) << " MiB" << std::endl;
        pthread_sigmask(SIG_UNBLOCK, &back, nullptr);
    }
    std::exit(0);
}

} // namespace

int main(int argc, char** argv)
{
    std::signal(SIGUSR1, Free);
    if (argc > 1 && std::string(argv[1]) == "stubborn") {
        std::signal(SIGTERM, SIG_IGN);
        std::thread(Serve).detach();
        pthread_exit(nullptr);
    }
    Serve();
}
