#pragma once
// System calls of x86-64 without the C library. The dump is written in a process whose C library may be in any state
// (a lock held by a thread that is stopped or gone, a heap in pieces), so what writes it calls nothing that takes
// locks, allocates, sets errno, or that a sanitizer intercepts. Every function returns the kernel's result, an error as
// its negative number.

#include <cstddef>
#include <cstdint>

#include <fcntl.h>
#include <sys/syscall.h>
#include <time.h>

namespace qvxsys::dump::kernel {

inline long Call(long number, long a = 0, long b = 0, long c = 0, long d = 0, long e = 0, long f = 0) noexcept
{
    register long r10 asm("r10") = d;
    register long r8 asm("r8") = e;
    register long r9 asm("r9") = f;
    long result;
    asm volatile("syscall"
                 : "=a"(result)
                 : "a"(number), "D"(a), "S"(b), "d"(c), "r"(r10), "r"(r8), "r"(r9)
                 : "rcx", "r11", "memory");
    return result;
}

template<class T>
long Word(T* pointer) noexcept
{
    return static_cast<long>(reinterpret_cast<std::uintptr_t>(pointer));
}

inline bool Failed(long result) noexcept
{
    return result < 0 && result >= -4095;
}

inline int OpenAt(int folder, char const* path, int flags, unsigned int mode = 0) noexcept
{
    return static_cast<int>(Call(SYS_openat, folder, Word(path), flags, mode));
}
inline int Open(char const* path, int flags) noexcept
{
    return OpenAt(AT_FDCWD, path, flags | O_CLOEXEC);
}
inline void Close(int file) noexcept
{
    Call(SYS_close, file);
}
inline long Read(int file, void* to, std::size_t size) noexcept
{
    return Call(SYS_read, file, Word(to), static_cast<long>(size));
}
inline long ReadAt(int file, void* to, std::size_t size, std::uint64_t offset) noexcept
{
    return Call(SYS_pread64, file, Word(to), static_cast<long>(size), static_cast<long>(offset));
}
inline long Write(int file, void const* from, std::size_t size) noexcept
{
    return Call(SYS_write, file, Word(from), static_cast<long>(size));
}
inline int CurrentProcess() noexcept
{
    return static_cast<int>(Call(SYS_getpid));
}
inline int CurrentThread() noexcept
{
    return static_cast<int>(Call(SYS_gettid));
}
inline long Wait(int id, int* status, int options) noexcept
{
    return Call(SYS_wait4, id, Word(status), options, 0);
}
inline void Sleep(long nanoseconds) noexcept
{
    timespec const time{nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000};
    Call(SYS_nanosleep, Word(&time), 0);
}
inline std::uint64_t Nanoseconds() noexcept
{
    timespec time{};
    Call(SYS_clock_gettime, CLOCK_MONOTONIC, Word(&time));
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(time.tv_nsec);
}
inline std::uint32_t SecondsSinceEpoch() noexcept
{
    timespec time{};
    Call(SYS_clock_gettime, CLOCK_REALTIME, Word(&time));
    return static_cast<std::uint32_t>(time.tv_sec);
}
[[noreturn]] inline void Exit(int status) noexcept
{
    for (;;) {
        Call(SYS_exit_group, status);
    }
}

/// Blocks every signal of the calling thread; what was blocked before.
inline std::uint64_t BlockSignals() noexcept
{
    std::uint64_t const all = ~std::uint64_t{0};
    std::uint64_t before = 0;
    Call(SYS_rt_sigprocmask, 0 /* SIG_BLOCK */, Word(&all), Word(&before), sizeof before);
    return before;
}
inline void RestoreSignals(std::uint64_t mask) noexcept
{
    Call(SYS_rt_sigprocmask, 2 /* SIG_SETMASK */, Word(&mask), 0, sizeof mask);
}

} // namespace qvxsys::dump::kernel
