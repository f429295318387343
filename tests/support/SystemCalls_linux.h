#pragma once
// A system that refuses: seccomp filters, for child processes, which cannot be taken off again.

#include <cstddef>
#include <iterator>
#include <optional>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "support/InChild_posix.h"

/// The exit status when filters are not to be had; also for what else cannot be tested here.
inline constexpr int kNotPossible = 77;

/// From now on `action` (SECCOMP_RET_...) is what becomes of this system call on this thread and its children; if
/// `second` is given, only where that is the second argument.
inline void Filter(long call, unsigned int action, std::optional<unsigned int> second = std::nullopt)
{
    auto const statement = [](unsigned int code, std::size_t k) {
        return sock_filter{static_cast<unsigned short>(code), 0, 0, static_cast<unsigned int>(k)};
    };
    auto const skipUnless = [](long value, unsigned char statements) {
        return sock_filter{BPF_JMP | BPF_JEQ | BPF_K, 0, statements, static_cast<unsigned int>(value)};
    };
    std::size_t const looked = second ? offsetof(seccomp_data, args[1]) : offsetof(seccomp_data, nr);
    sock_filter filter[] = {
        statement(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        skipUnless(call, 3),
        statement(BPF_LD | BPF_W | BPF_ABS, looked),
        skipUnless(second ? static_cast<long>(*second) : call, 1),
        statement(BPF_RET | BPF_K, action),
        statement(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog const program = {std::size(filter), filter};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
        _exit(kNotPossible);
    }
}

/// From now on this system call fails with this error.
inline void Refuse(long call, int error, std::optional<unsigned int> second = std::nullopt)
{
    Filter(call, SECCOMP_RET_ERRNO | static_cast<unsigned int>(error), second);
}
