// A program to be dumped.
//
//     dump_victim wait THREADS                  writes memory, tells "ready", waits for the end of its input
//     dump_victim alone THREADS                 the same without its main thread
//     dump_victim crash KIND [PATH]             crashes, with a handler that writes to PATH

#include <atomic>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <iterator>
#include <malloc.h>
#include <string>
#include <thread>
#include <vector>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <qvxsys/CrashHandler.h>
#include <qvxsys/TStringCore.h>

#define NOT_INLINED extern "C" [[gnu::noinline]]

NOT_INLINED void WaitForTheEnd(std::atomic<int>& waiting)
{
    char byte;
    ++waiting;
    while (read(STDIN_FILENO, &byte, 1) > 0) {
    }
}

namespace {

void WriteMemory()
{
    constexpr std::size_t kSize = 16 << 20;
    auto const map = [](int flags) {
        return mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
    };
    map(MAP_POPULATE); // written by the kernel, since race detectors keep books several times that size
    void* const sparse = map(0);
    madvise(sparse, kSize, MADV_NOHUGEPAGE);
    for (std::size_t at = 0; at < kSize; at += 10 * 4096) {
        static_cast<char*>(sparse)[at] = 1;
    }
}

int Wait(int threads, bool alone)
{
    static std::atomic<int> waiting{0};
    std::vector<std::thread> others;
    for (int i = 0; i < threads; ++i) {
        others.emplace_back([] { WaitForTheEnd(waiting); });
    }
    while (waiting.load() != threads) {
        std::this_thread::yield();
    }
    WriteMemory(); // not earlier: it could become one mapping with a stack below it
    if (alone) {
        for (std::thread& thread : others) {
            thread.detach();
        }
        std::thread([main = pthread_self()] {
            pthread_join(main, nullptr);
            std::cout << "ready" << std::endl;
        }).detach();
        pthread_exit(nullptr);
    }
    std::cout << "ready" << std::endl;
    WaitForTheEnd(waiting);
    for (std::thread& thread : others) {
        thread.join();
    }
    return 0;
}

NOT_INLINED int UseTheStack(volatile char* above, int depth)
{
    volatile char here[1024];
    here[0] = above[0];
    return depth == 0 ? here[0] : UseTheStack(here, depth + 1) + here[0];
}

NOT_INLINED void CrashHere(std::string const& kind)
{
    if (kind == "write") {
        *reinterpret_cast<int volatile*>(0x1230) = 1;
    } else if (kind == "noncanonical") {
        *reinterpret_cast<int volatile*>(0x4141414141414141) = 1;
    } else if (kind == "divide") {
        int volatile zero = 0;
        zero = 100 / zero;
    } else if (kind == "illegal") {
        asm volatile("ud2");
    } else if (kind == "breakpoint") {
        asm volatile("int3");
    } else if (kind == "abort") {
        std::abort();
    } else if (kind == "terminate") {
        std::terminate();
    } else if (kind == "sent") {
        kill(getpid(), SIGSEGV);
    } else if (kind == "overflow") {
        char volatile first = 1;
        UseTheStack(&first, 1);
    } else if (kind == "malloc") {
        // The size of what is left of the heap, found wrong by malloc with its lock held.
        std::size_t* const last = static_cast<std::size_t*>(std::malloc(2000));
        last[malloc_usable_size(last) / sizeof(std::size_t)] = ~std::size_t{7};
        std::free(std::malloc(100'000));
    } else if (kind == "bus") {
        *static_cast<char volatile*>(mmap(nullptr, 1, PROT_READ, MAP_SHARED, memfd_create("empty", 0), 0));
    } else if (kind == "forbidden") {
        sock_filter code[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                              BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_getpgid, 0, 1),
                              BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP),
                              BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
        sock_fprog const filter{static_cast<unsigned short>(std::size(code)), code};
        prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter);
        getpgid(0);
    }
}

void Leave(int)
{
    _exit(42);
}

int Crash(std::string const& kind, char const* path)
{
    rlimit const none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    if (kind == "chained") {
        signal(SIGSEGV, Leave);
    }
    if (path != nullptr && !quorvex::crash::InstallHandler(TStringCore(path))) {
        return 3;
    }
    if (kind == "on a thread") {
        std::thread([] {
            static_cast<void>(quorvex::crash::PrepareThread());
            CrashHere("overflow");
        }).join();
    } else if (kind == "two at once") {
        std::thread other([] { CrashHere("write"); });
        CrashHere("write");
        other.join();
    } else {
        CrashHere(kind == "chained" ? "write" : kind);
    }
    return 0;
}

} // namespace

int main(int count, char** arguments)
{
    bool const alone = count == 3 && std::strcmp(arguments[1], "alone") == 0;
    if (count == 3 && (alone || std::strcmp(arguments[1], "wait") == 0)) {
        return Wait(std::atoi(arguments[2]), alone);
    }
    if (count >= 3 && std::strcmp(arguments[1], "crash") == 0) {
        return Crash(arguments[2], count > 3 ? arguments[3] : nullptr);
    }
    return 2;
}
