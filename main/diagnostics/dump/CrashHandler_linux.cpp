#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <string>

#include <linux/futex.h>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <unistd.h>

#include <qvxsys/StringUtils.h>

#include "CrashDumpPlatform.h"
#include "DumpProcess_linux.h"

namespace qvxsys::dump {
namespace {

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT};
constexpr std::size_t kMostPath = 4000;
constexpr std::uint64_t kOtherDump = 10'000'000'000;  // ns that a crash waits for a dump on its way
constexpr std::uint64_t kOtherTracer = 2'000'000'000; // and for another tracer to leave
constexpr std::size_t kSignalStack = 256 << 10;

/// All that a crash needs, there before it. Never given back: a thread may be in the handler at any time.
struct Handler
{
    char pattern[kMostPath + 1];
    char path[kMostPath + 256];
    unsigned int type;
    bool announce;
    DumpRequest request;
    struct sigaction before[std::size(kSignals)];
    std::atomic<std::uint64_t> crashed{0}; // the first thread that did, and in the upper half its process
    std::atomic<std::uint32_t> done{0};    // its process, when its dump is written
};

std::atomic<Handler*> g_handler{nullptr};
std::atomic<bool> g_installed{false};

std::size_t IndexOf(int signal) noexcept
{
    return static_cast<std::size_t>(std::find(std::begin(kSignals), std::end(kSignals), signal) - kSignals);
}

void ExpandPath(Handler& handler) noexcept
{
    std::size_t length = 0;
    auto const add = [&](std::string_view piece) {
        std::size_t const size = std::min(piece.size(), sizeof handler.path - 1 - length);
        std::memcpy(handler.path + length, piece.data(), size);
        length += size;
    };
    for (char const* at = handler.pattern; *at != 0; ++at) {
        if (at[0] == '%' && (at[1] == 'p' || at[1] == 't')) {
            std::uint64_t const number =
                at[1] == 'p' ? static_cast<unsigned>(kernel::CurrentProcess()) : kernel::SecondsSinceEpoch();
            add(static_cast<char const*>(ShortPath() << number));
            ++at;
        } else {
            at += at[0] == '%' && at[1] == '%' ? 1 : 0;
            add({at, 1});
        }
    }
    handler.path[length] = 0;
}

void Announce(Handler const& handler, DumpResult const& result) noexcept
{
    auto const say = [](std::string_view text) { kernel::Write(STDERR_FILENO, text.data(), text.size()); };
    say(result.error == 0 ? "crash dump: " : "no crash dump, error ");
    say(result.error == 0 ? handler.path
                          : static_cast<char const*>(ShortPath() << static_cast<unsigned>(result.error)));
    say("\n");
}

void WriteDump(Handler& handler, int thread, siginfo_t const& info, ucontext_t const& context) noexcept
{
    ExpandPath(handler);
    DumpRequest& request = handler.request;
    request.process = kernel::CurrentProcess();
    request.type = handler.type;
    request.path = handler.path;
    request.thread = thread;
    request.context.uc_mcontext = context.uc_mcontext; // the kernel's record ends before the C library's
    if (context.uc_mcontext.fpregs != nullptr) {
        static_assert(sizeof request.floats == sizeof *context.uc_mcontext.fpregs);
        std::memcpy(&request.floats, context.uc_mcontext.fpregs, sizeof request.floats);
        request.hasFloats = true;
    }
    request.crashed = true;
    request.signal = info;
    request.patience = kOtherTracer;
    request.helper = true;
    DumpResult const result = DumpByHelper(request, kOtherDump);
    if (handler.announce) {
        Announce(handler, result);
    }
}

/// Puts the handler from before in place and sends the signal again, as it was, to this thread: it arrives when the
/// handler returns (until then it is blocked), and finds everything as if this handler had never been there. An
/// instruction that is to blame would raise it again by itself; abort(), kill() and breakpoints would not.
void PassOn(Handler const& handler, int signal, siginfo_t& info) noexcept
{
    ::sigaction(signal, &handler.before[IndexOf(signal)], nullptr);
    int const process = kernel::CurrentProcess();
    int const thread = kernel::CurrentThread();
    if (kernel::Failed(kernel::Call(SYS_rt_tgsigqueueinfo, process, thread, signal, kernel::Word(&info)))) {
        kernel::Call(SYS_tgkill, process, thread, signal);
    }
}

void OnSignal(int signal, siginfo_t* info, void* context)
{
    if (IndexOf(signal) == std::size(kSignals)) {
        return; // somebody chains to this one what it did not ask for
    }
    int const error = errno;
    Handler& handler = *g_handler.load(std::memory_order_acquire);
    int const thread = kernel::CurrentThread();
    std::uint32_t const process = static_cast<std::uint32_t>(kernel::CurrentProcess());
    std::uint64_t const self = std::uint64_t{process} << 32 | static_cast<std::uint32_t>(thread);
    // What a process left there that this one was forked from, or that it shares its memory with, counts as nothing.
    std::uint64_t crashed = handler.crashed.load(std::memory_order_relaxed);
    crashed = crashed >> 32 == process ? 0 : crashed;
    if (!g_installed.load(std::memory_order_relaxed)) {
        crashed = self; // called by a handler that was installed later
    } else if (handler.crashed.compare_exchange_strong(crashed, self, std::memory_order_acq_rel)) {
        WriteDump(handler, thread, *info, *static_cast<ucontext_t const*>(context));
        handler.done.store(process, std::memory_order_release);
        kernel::Call(SYS_futex, kernel::Word(&handler.done), FUTEX_WAKE, INT_MAX);
    } else if (crashed != self) {
        for (std::uint32_t done; (done = handler.done.load(std::memory_order_acquire)) != process;) {
            kernel::Call(SYS_futex, kernel::Word(&handler.done), FUTEX_WAIT, done, 0);
        }
    }
    PassOn(handler, signal, *info);
    errno = error;
}

/// A stack for signals with a guard page below it, and its end with the thread.
class SignalStack
{
public:
    SignalStack() noexcept = default;
    SignalStack(SignalStack const&) = delete;
    SignalStack& operator=(SignalStack const&) = delete;
    ~SignalStack()
    {
        if (m_memory == MAP_FAILED) {
            return;
        }
        stack_t const none{nullptr, SS_DISABLE, 0};
        stack_t current{};
        ::sigaltstack(nullptr, &current);
        if (current.ss_sp == static_cast<std::byte*>(m_memory) + kPage && ::sigaltstack(&none, nullptr) == 0) {
            ::munmap(m_memory, m_size);
        }
    }

    bool Install() noexcept
    {
        stack_t current{};
        std::size_t const least = kSignalStack + ::getauxval(AT_MINSIGSTKSZ);
        if (::sigaltstack(nullptr, &current) != 0) {
            return false;
        }
        if ((current.ss_flags & SS_DISABLE) == 0 && current.ss_size >= least) {
            return true;
        }
        std::size_t const size = (least + 2 * kPage - 1) & ~(kPage - 1);
        void* const memory =
            ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
        if (memory == MAP_FAILED) {
            return false;
        }
        stack_t const stack{static_cast<std::byte*>(memory) + kPage, 0, size - kPage};
        if (::mprotect(memory, kPage, PROT_NONE) != 0 || ::sigaltstack(&stack, nullptr) != 0) {
            int const error = errno;
            ::munmap(memory, size);
            errno = error;
            return false;
        }
        m_memory = memory;
        m_size = size;
        return true;
    }

private:
    void* m_memory = MAP_FAILED;
    std::size_t m_size = 0;
};

} // namespace

namespace platform {

bool PrepareThread() noexcept
{
    thread_local SignalStack stack;
    return stack.Install();
}

bool InstallHandler(TStringView path, unsigned int type, bool announce)
{
    std::string pattern = StringUtils::toStdString(path);
    if (!pattern.starts_with('/')) {
        char folder[PATH_MAX];
        if (::getcwd(folder, sizeof folder) == nullptr) {
            return false;
        }
        std::string whole;
        for (char const c : std::string_view(folder)) {
            whole.append(c == '%' ? 2 : 1, c);
        }
        pattern.insert(0, whole + '/');
    }
    bool const installed = g_installed.load(std::memory_order_acquire);
    if (installed || pattern.size() > kMostPath) {
        errno = installed ? EALREADY : ENAMETOOLONG;
        return false;
    }
    if (!PrepareThread()) {
        return false;
    }
    void* const memory =
        ::mmap(nullptr, sizeof(Handler), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE, -1, 0);
    if (memory == MAP_FAILED) {
        return false;
    }
    Handler* const handler = new (memory) Handler{};
    pattern.copy(handler->pattern, kMostPath);
    handler->type = type;
    handler->announce = announce;
    g_handler.store(handler, std::memory_order_release);
    g_installed.store(true, std::memory_order_release);
    struct sigaction action
    {};
    action.sa_sigaction = OnSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigfillset(&action.sa_mask);
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
        // What was there before is known before the handler that passes signals on to it is there.
        ::sigaction(kSignals[i], nullptr, &handler->before[i]);
        ::sigaction(kSignals[i], &action, nullptr);
    }
    return true;
}

void RemoveHandler() noexcept
{
    if (!g_installed.exchange(false, std::memory_order_acq_rel)) {
        return;
    }
    Handler const* const handler = g_handler.load(std::memory_order_acquire);
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
        struct sigaction current
        {};
        ::sigaction(kSignals[i], nullptr, &current);
        if ((current.sa_flags & SA_SIGINFO) != 0 && current.sa_sigaction == OnSignal) {
            ::sigaction(kSignals[i], &handler->before[i], nullptr);
        }
    }
    // A handler that was installed later may still chain to this one, so what it uses stays.
}

} // namespace platform
} // namespace qvxsys::dump
