#include "TracedProcess_linux.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <elf.h>

#include <sys/ptrace.h>
#include <sys/uio.h>

namespace qvxsys::dump {
namespace {

constexpr std::uint64_t kStopTimeout = 2'000'000'000; // ns, for threads that sit in the kernel

long Trace(int request, int thread, void* address = nullptr, void* data = nullptr) noexcept
{
    return kernel::Call(SYS_ptrace, request, thread, kernel::Word(address), kernel::Word(data));
}

void* AsPointer(int number) noexcept
{
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(number));
}

int ParseId(char const* name) noexcept
{
    int id = 0;
    for (; *name >= '0' && *name <= '9'; ++name) {
        id = id * 10 + (*name - '0');
    }
    return *name == 0 ? id : 0;
}

} // namespace

TracedProcess::~TracedProcess()
{
    Resume();
    if (m_memory >= 0) {
        kernel::Close(m_memory);
    }
}

std::uint64_t TracedProcess::StoppedFor() const noexcept
{
    return m_stopped == 0 ? 0 : (m_resumed != 0 ? m_resumed : kernel::Nanoseconds()) - m_stopped;
}

/// R, S, D, T, t, Z, X of /proc/PID/task/TID/stat; 0 when there is no such thread.
char TracedProcess::StateOf(int thread) const noexcept
{
    char text[128];
    int const file = kernel::Open(ShortPath() << "/proc/" << static_cast<unsigned>(m_process) << "/task/"
                                              << static_cast<unsigned>(thread) << "/stat",
                                  O_RDONLY);
    if (file < 0) {
        return 0;
    }
    long const size = kernel::Read(file, text, sizeof text);
    kernel::Close(file);
    // "12 (name) S ...": the name may have parentheses, too, and has 15 bytes at most.
    std::string_view const line(text, size > 0 ? static_cast<std::size_t>(size) : 0);
    std::size_t const end = line.rfind(')');
    return end != std::string_view::npos && end + 2 < line.size() ? line[end + 2] : '\0';
}

TracedThread* TracedProcess::Find(int id) noexcept
{
    std::size_t const count = m_threads.Size();
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t const at = (m_cursor + i) % count;
        if (m_threads[at].id == id) {
            m_cursor = at + 1;
            return &m_threads[at];
        }
    }
    return nullptr;
}

/// 0: it is ours and on its way to stop; ESRCH: it is no more.
int TracedProcess::Seize(int id) noexcept
{
    long const result = Trace(PTRACE_SEIZE, id);
    if (kernel::Failed(result)) {
        // A thread that has ended and only waits to be reaped is refused as if it were forbidden.
        char const state = StateOf(id);
        return state == 0 || state == 'Z' || state == 'X' ? ESRCH : static_cast<int>(-result);
    }
    if (m_stopped == 0) {
        m_stopped = kernel::Nanoseconds();
    }
    Trace(PTRACE_INTERRUPT, id);
    return 0;
}

int TracedProcess::SeizeNew(int folder, std::size_t* added) noexcept
{
    struct Entry // linux_dirent64
    {
        std::uint64_t inode;
        std::int64_t offset;
        unsigned short size;
        unsigned char type;
        char name[1];
    };
    *added = 0;
    kernel::Call(SYS_lseek, folder, 0, SEEK_SET);
    alignas(8) char entries[8192];
    for (;;) {
        long const size = kernel::Call(SYS_getdents64, folder, kernel::Word(entries), sizeof entries);
        if (size <= 0) {
            return static_cast<int>(-size);
        }
        for (long at = 0; at < size;) {
            Entry const* const entry = reinterpret_cast<Entry const*>(entries + at);
            at += entry->size;
            int const id = ParseId(entry->name);
            if (id == 0 || Find(id) != nullptr) {
                continue;
            }
            int const error = Seize(id);
            if (error == ESRCH) {
                continue;
            }
            if (error != 0) {
                return error;
            }
            TracedThread* const thread = m_threads.Add();
            if (thread == nullptr) {
                Trace(PTRACE_DETACH, id);
                return ENOMEM;
            }
            thread->id = id;
            ++*added;
        }
    }
}

bool TracedProcess::ReadRegisters(TracedThread& thread) noexcept
{
    iovec registers{&thread.registers, sizeof thread.registers};
    iovec floats{&thread.floats, sizeof thread.floats};
    if (kernel::Failed(Trace(PTRACE_GETREGSET, thread.id, AsPointer(NT_PRSTATUS), &registers))) {
        return false;
    }
    Trace(PTRACE_GETREGSET, thread.id, AsPointer(NT_PRFPREG), &floats);
    m_foreign = m_foreign || registers.iov_len != sizeof thread.registers; // less for a 32-bit program
    return true;
}

/// Nothing is waited for by wait(): that would take news from others in this process who wait for any child, as they
/// would take them from here. Registers can be read of a thread that has stopped and of no other, so that tells.
bool TracedProcess::HasStopped(TracedThread& thread) noexcept
{
    if (!ReadRegisters(thread)) {
        return false;
    }
    thread.stopped = true;
    // An event stop is this tracer's doing, or the whole process is stopped. Any other is a signal on its way.
    siginfo_t info{};
    if (!kernel::Failed(Trace(PTRACE_GETSIGINFO, thread.id, nullptr, &info)) &&
        (info.si_code >> 8) != PTRACE_EVENT_STOP) {
        thread.signal = info.si_signo;
    }
    return true;
}

/// Waits for the threads from the `first` on: all have been told, and stop as they get a processor.
void TracedProcess::AwaitStops(std::size_t first) noexcept
{
    constexpr int kLookEvery = 16;
    std::uint64_t const deadline = kernel::Nanoseconds() + kStopTimeout;
    bool waiting = true;
    for (int round = 1; waiting && kernel::Nanoseconds() < deadline; ++round) {
        waiting = false;
        for (std::size_t i = first; i < m_threads.Size(); ++i) {
            TracedThread& thread = m_threads[i];
            if (thread.stopped || thread.gone || HasStopped(thread)) {
                continue;
            }
            char const state = round % kLookEvery == 0 ? StateOf(thread.id) : 'R';
            thread.gone = state == 0 || state == 'Z' || state == 'X';
            waiting = waiting || !thread.gone;
        }
        if (waiting) {
            kernel::Sleep(20'000);
        }
    }
}

int TracedProcess::StopAll(std::uint64_t patience) noexcept
{
    std::uint64_t const begin = kernel::Nanoseconds();
    int const folder =
        kernel::Open(ShortPath() << "/proc/" << static_cast<unsigned>(m_process) << "/task", O_RDONLY | O_DIRECTORY);
    if (folder < 0) {
        return folder == -ENOENT ? ESRCH : -folder;
    }
    int error = 0;
    std::size_t known = 0;
    for (std::size_t added = 1; error == 0 && added != 0;) {
        error = SeizeNew(folder, &added);
        if (error == EPERM && m_threads.Size() == 0 && kernel::Nanoseconds() - begin < patience) {
            kernel::Sleep(5'000'000);
            error = 0;
            added = 1;
        }
        AwaitStops(known);
        known = m_threads.Size();
    }
    kernel::Close(folder);
    std::size_t kept = 0;
    for (TracedThread& thread : m_threads) {
        if (!thread.gone) {
            m_threads[kept++] = thread;
        }
    }
    m_threads.Shrink(kept);
    if (error == 0 && (kept == 0 || m_foreign)) {
        error = kept == 0 ? ESRCH : ENOTSUP;
    }
    return error != 0 ? error : OpenMemory();
}

int TracedProcess::OpenMemory() noexcept
{
    TracedThread const* const living =
        std::find_if(m_threads.begin(), m_threads.end(), [](TracedThread const& thread) { return thread.stopped; });
    if (living == m_threads.end()) {
        return ETIMEDOUT;
    }
    m_living = living->id;
    m_memory = kernel::Open(ShortPath() << "/proc/" << LivingId() << "/mem", O_RDONLY);
    return m_memory >= 0 ? 0 : HasEnded() ? ESRCH : -m_memory;
}

/// A stopped thread answers until it is let go or killed.
bool TracedProcess::HasEnded() const noexcept
{
    siginfo_t info{};
    return Trace(PTRACE_GETSIGINFO, m_living, nullptr, &info) == -ESRCH;
}

int TracedProcess::Resume() noexcept
{
    if (m_resumed != 0 || m_stopped == 0) {
        return 0;
    }
    bool any = false;
    for (TracedThread const& thread : m_threads) {
        long const result = Trace(PTRACE_DETACH, thread.id, nullptr, AsPointer(thread.signal));
        any = any || !kernel::Failed(result);
    }
    m_resumed = kernel::Nanoseconds();
    return any ? 0 : ESRCH;
}

bool TracedProcess::Read(std::uint64_t address, void* to, std::size_t size) noexcept
{
    std::byte* at = static_cast<std::byte*>(to);
    while (size != 0) {
        long const count = kernel::ReadAt(m_memory, at, size, address);
        if (count <= 0) {
            return false;
        }
        at += count;
        address += static_cast<std::uint64_t>(count);
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

std::size_t TracedProcess::ReadPatched(std::uint64_t address, std::byte* to, std::size_t size) noexcept
{
    std::size_t missing = 0;
    while (size != 0) {
        long count = kernel::ReadAt(m_memory, to, size, address);
        if (count <= 0) {
            count = static_cast<long>(std::min<std::uint64_t>(kPage - address % kPage, size));
            std::memset(to, 0, static_cast<std::size_t>(count));
            ++missing;
        }
        to += count;
        address += static_cast<std::uint64_t>(count);
        size -= static_cast<std::size_t>(count);
    }
    return missing;
}

} // namespace qvxsys::dump
