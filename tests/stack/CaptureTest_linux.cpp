// Stacks of all shapes, taken by the library and by the compiler's unwinder: the addresses must be the same.

#include <algorithm>
#include <cerrno>
#include <coroutine>
#include <csetjmp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <stdexcept>
#include <vector>

#include <alloca.h>
#include <ucontext.h>
#include <unwind.h>

#include <gtest/gtest.h>
#include <qvxsys/StackTrace.h>

#include "support/InChild_posix.h"
#include "support/SharedLibrary.h"
#include "support/Threads.h"

namespace {

using Trace = quorvex::StackTrace;

// Not backtrace(), which sanitizers wrap.
struct Oracle
{
    void* frames[Trace::kCapacity];
    std::size_t count = 0;
};

_Unwind_Reason_Code AddFrame(_Unwind_Context* context, void* argument)
{
    Oracle& oracle = *static_cast<Oracle*>(argument);
    auto const address = _Unwind_GetIP(context);
    if (address == 0 || oracle.count == std::size(oracle.frames)) {
        return _URC_END_OF_STACK;
    }
    oracle.frames[oracle.count++] = reinterpret_cast<void*>(address);
    return _URC_NO_REASON;
}

// What Compare found on this thread.
thread_local int t_compared;
thread_local int t_differences;
thread_local std::size_t t_frames;

/// Allocates nothing: it runs in signal handlers that may have come anywhere.
[[gnu::noinline]] void Compare()
{
    Oracle oracle;
    _Unwind_Backtrace(AddFrame, &oracle);
    errno = 77;
    Trace const trace = Trace::Current();
    auto const frames = trace.Frames();
    auto const differs =
        std::mismatch(frames.begin() + 1, frames.end(), oracle.frames + 1, oracle.frames + oracle.count);
    ++t_compared;
    t_frames = frames.size();
    if (errno != 77 || t_frames != oracle.count || differs.first != frames.end()) {
        if (t_differences++ == 0) {
            std::fprintf(stderr, "%zu frames, expected %zu; other from number %td\n", t_frames, oracle.count,
                         differs.first - frames.begin());
        }
    }
}

thread_local int volatile g_sink;
Trace g_trace;

template<std::size_t Bytes, std::size_t Alignment>
[[gnu::noinline]] void Recurse(int depth)
{
    alignas(Alignment) char volatile frame[Bytes];
    frame[0] = 1;
    depth == 0 ? Compare() : Recurse<Bytes, Alignment>(depth - 1);
    g_sink = frame[0];
}

[[gnu::noinline]] void Dynamic(int depth)
{
    auto* const frame = static_cast<char volatile*>(alloca(static_cast<std::size_t>(depth) * 40 + 1));
    frame[0] = 1;
    depth == 0 ? Compare() : Dynamic(depth - 1);
    g_sink = frame[0];
}

void Sorting()
{
    std::vector<int> values{5, 3, 9, 1};
    std::qsort(values.data(), values.size(), sizeof(int), [](void const* a, void const* b) {
        Compare();
        return *static_cast<int const*>(a) - *static_cast<int const*>(b);
    });
    std::stable_sort(values.begin(), values.end(), [](int a, int b) {
        Compare();
        return a > b;
    });
}

[[noreturn, gnu::noinline]] void Throw()
{
    struct ComparingAtEnd
    {
        ~ComparingAtEnd() { Compare(); }
    } const inFlight;
    throw std::runtime_error("expected");
}

[[gnu::noinline]] void EndsWithCall()
{
    g_sink = 1;
    Throw();
}

void Exceptions()
{
    try {
        EndsWithCall();
    } catch (std::runtime_error const&) {
        Compare();
    }
}

void WithHandler(int signal, int flags, void (*handler)(int, siginfo_t*, void*), void (*body)())
{
    struct sigaction action
    {};
    struct sigaction before;
    action.sa_flags = SA_SIGINFO | flags;
    action.sa_sigaction = handler;
    sigaction(signal, &action, &before);
    body();
    sigaction(signal, &before, nullptr);
}

sigjmp_buf g_back;

void CompareOnSignal(int signal, siginfo_t*, void*)
{
    Compare();
    if (signal != SIGUSR1) {
        siglongjmp(g_back, 1);
    }
}

alignas(4096) char g_spareStack[1 << 18];

void OnOtherStack(int signal, void (*body)())
{
    stack_t stack{};
    stack.ss_sp = g_spareStack;
    stack.ss_size = sizeof g_spareStack;
    sigaltstack(&stack, nullptr);
    WithHandler(signal, SA_ONSTACK, CompareOnSignal, body);
    stack.ss_flags = SS_DISABLE;
    sigaltstack(&stack, nullptr);
}

void AtFault()
{
    WithHandler(SIGILL, 0, CompareOnSignal, [] {
        if (sigsetjmp(g_back, 1) == 0) {
            __builtin_trap();
        }
    });
}

[[gnu::noinline]] int RecurseForEver()
{
    char volatile frame[500];
    frame[0] = 1;
    return g_sink != 0 ? RecurseForEver() + frame[0] : 0;
}

void Overflow()
{
    if (sigsetjmp(g_back, 1) == 0) {
        g_sink = 1;
        RecurseForEver();
    }
}

ucontext_t g_main;
ucontext_t g_fibre;

void Fibre()
{
    getcontext(&g_fibre);
    g_fibre.uc_stack.ss_sp = g_spareStack;
    g_fibre.uc_stack.ss_size = sizeof g_spareStack;
    g_fibre.uc_link = &g_main;
    makecontext(
        &g_fibre, [] { Recurse<100, 8>(10); }, 0);
    swapcontext(&g_main, &g_fibre);
}

struct Coroutine
{
    struct promise_type
    {
        Coroutine get_return_object() { return {std::coroutine_handle<promise_type>::from_promise(*this)}; }
        std::suspend_always initial_suspend() noexcept { return {}; }
        std::suspend_never final_suspend() noexcept { return {}; }
        void return_void() { Compare(); }
        void unhandled_exception() { std::terminate(); }
    };
    std::coroutine_handle<promise_type> handle;
};

Coroutine Suspending(int times)
{
    for (int i = 0; i < times; ++i) {
        Recurse<50, 8>(i);
        co_await std::suspend_always{};
    }
}

void Resuming()
{
    auto const handle = Suspending(3).handle;
    for (int i = 0; i < 4; ++i) {
        t_differences += Elsewhere([handle] { // its frame is on the heap, those below it on a stack that changes
            t_differences = 0;
            handle.resume();
            return t_differences;
        });
    }
    auto const again = Suspending(1).handle;
    again.resume();
    again.resume();
}

constexpr long kSteps = 20000;

/// Compares at every instruction of code that calls through linkage tables, allocates, sorts and formats.
void EveryInstruction()
{
    auto const handler = [](int, siginfo_t*, void* context) {
        Compare();
        if (t_compared > kSteps) {
            static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_EFL] &= ~0x100LL;
        }
    };
    WithHandler(SIGTRAP, 0, handler, [] {
        asm volatile("pushfq; orl $0x100, (%%rsp); popfq" ::: "cc", "memory");
        std::vector<std::string> lines;
        for (int i = 0; i < 20; ++i) {
            char text[100];
            std::snprintf(text, sizeof text, "%d %.3f", i * 7919 % 31, i / 7.0);
            lines.emplace_back(text);
        }
        std::sort(lines.begin(), lines.end());
        asm volatile("pushfq; andl $~0x100, (%%rsp); popfq" ::: "cc", "memory");
    });
}

void (*volatile g_wrong)() = nullptr;

/// Without the sanitizer's own look at what is called.
__attribute__((no_sanitize("undefined"), noinline)) void CallWrong()
{
    g_wrong();
    g_sink = 1;
}

struct Shape
{
    char const* name;
    void (*run)();
    int least; // comparisons
    std::size_t frames = 5;
};

constexpr Shape kShapes[] = {
    {"deep", [] { Recurse<10, 8>(500); }, 1, 200},
    {"dynamic", [] { Dynamic(50); }, 1, 50},
    {"aligned", [] { Recurse<10, 64>(50); }, 1, 50},
    {"big", [] { Recurse<30000, 8>(20); }, 1, 20},
    {"huge", [] { Recurse<200000, 8>(10); }, 1, 10},
    {"in library functions", Sorting, 8},
    {"exceptions", Exceptions, 2},
    {"signal", [] { WithHandler(SIGUSR1, 0, CompareOnSignal, [] { raise(SIGUSR1); }); }, 1},
    {"signal stack", [] { OnOtherStack(SIGUSR1, [] { raise(SIGUSR1); }); }, 1},
    {"fault", AtFault, 1},
    {"fibre", Fibre, 1, 11},
    {"coroutine", Resuming, 2},
};

void Check(Shape const& shape)
{
    SCOPED_TRACE(shape.name);
    for (int round = 0; round < 2; ++round) { // with rules to be read, and with known ones
        t_compared = t_differences = 0;
        shape.run();
        EXPECT_EQ(t_differences, 0);
        EXPECT_GE(t_compared, shape.least);
        EXPECT_GE(t_frames, shape.frames);
    }
}

} // namespace

TEST(Capture, SameAsTheCompilersUnwinder)
{
    for (Shape const& shape : kShapes) {
        Check(shape);
        Elsewhere([&] { Check(shape); });
    }
}

TEST(Capture, CallThroughWrongPointerTellsWhoCalled)
{
    auto const handler = [](int, siginfo_t*, void*) {
        g_trace = Trace::Current();
        siglongjmp(g_back, 1);
    };
    alignas(16) char onStack[64] = {};
    for (void* const wrong : {static_cast<void*>(nullptr), static_cast<void*>(onStack)}) {
        g_wrong = reinterpret_cast<void (*)()>(wrong);
        WithHandler(SIGSEGV, 0, handler, [] {
            if (sigsetjmp(g_back, 1) == 0) {
                CallWrong();
            }
        });
        auto const frames = g_trace.Frames();
        auto const called = std::find(frames.begin(), frames.end(), wrong);
        Compare();
        ASSERT_GE(frames.end() - called, static_cast<std::ptrdiff_t>(t_frames)) << g_trace.ToText();
        EXPECT_TRUE(std::equal(frames.rbegin(), frames.rbegin() + static_cast<std::ptrdiff_t>(t_frames) - 3,
                               Trace::Current().Frames().rbegin()));
    }
}

TEST(Capture, SameAtEveryInstruction)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "signals come later there";
#endif
    Check({"every instruction", EveryInstruction, 10000});
}

TEST(Capture, OverflowedStack)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "which has a shadow stack of its own";
#endif
    Elsewhere([] { Check({"overflow", [] { OnOtherStack(SIGSEGV, Overflow); }, 1, 200}); });
}

TEST(Capture, ManyThreads)
{
    InParallel(16, [](int number) {
        t_differences = 0;
        for (int i = 0; i < 2000 / kStressDivisor; ++i) {
            Recurse<10, 8>((number + i) % 60);
            Dynamic(i % 20);
        }
        EXPECT_EQ(t_differences, 0);
    });
}

TEST(Capture, OtherLibraryAtTheSamePlace)
{
    constexpr char const* kPaths[] = {SMALL_FRAME_PLUGIN, LARGE_FRAME_PLUGIN, UNNAMED_FRAME_PLUGIN};
    [[maybe_unused]] int repeated = 0;
    std::uintptr_t before = 0;
    t_differences = 0;
    for (int i = 0; i < 12; ++i) {
        {
            SharedLibrary const plugin(kPaths[i % 3]);
            auto* const call = plugin.Get<void(void (*)())>("CallBack");
            call(Compare);
            for (int j = 0; j < 300; ++j) { // in all, more than there is room for modules
                call([] { g_trace = Trace::Current(); });
            }
            auto const page = reinterpret_cast<std::uintptr_t>(call) & ~std::uintptr_t{4095};
            repeated += page == before ? 1 : 0;
            before = page;
        }
        EXPECT_NE(g_trace.ToText().find(kPaths[i % 3]), std::string::npos) << "told after it was unloaded";
    }
    EXPECT_EQ(t_differences, 0);
#if !defined(__SANITIZE_THREAD__) && !defined(__clang__) // sanitizers keep what was loaded
    EXPECT_GT(repeated, 5);
#endif
}

namespace {

/// Overwrites words of the callers' frames, takes the stack, and puts the words back.
[[gnu::noinline]] void CaptureOverwritten(std::mt19937_64& random, std::uintptr_t volatile* frame, std::size_t words)
{
    static std::uintptr_t saved[512];
    std::uintptr_t const here = reinterpret_cast<std::uintptr_t>(frame);
    std::uintptr_t const values[] = {random(),
                                     random() >> 17,
                                     0,
                                     here + random() % 4096,
                                     here + random() % (64 << 20),
                                     here - random() % 65536,
                                     here + 8 * (random() % 512),
                                     reinterpret_cast<std::uintptr_t>(&std::qsort) + random() % 4096};
    std::uintptr_t picks[8];
    std::generate(std::begin(picks), std::end(picks), [&] { return random(); });
    std::copy(frame, frame + words, saved);
    for (std::uintptr_t const pick : picks) {
        frame[pick % words] = values[pick >> 32 & 7];
    }
    static quorvex::StackTrace trace;
    trace = quorvex::StackTrace::Current();
    std::copy(saved, saved + words, frame);
    g_sink = static_cast<int>(trace.Frames().size());
}

[[gnu::noinline]] void Overwrite(int depth, std::mt19937_64& random)
{
    if (depth > 0) {
        Overwrite(depth - 1, random);
        g_sink = depth;
        return;
    }
    // The frames of this function's callers begin behind its own.
    auto* const above = static_cast<std::uintptr_t*>(__builtin_frame_address(0)) + 1;
    for (int i = 0; i < 20000; ++i) {
        CaptureOverwritten(random, above, 300);
    }
}

} // namespace

TEST(Capture, OverwrittenStacksEndTheWalk)
{
    EXPECT_EQ(InChild([] {
                  std::mt19937_64 random(1);
                  Overwrite(60, random);
                  return 0;
              }),
              0);
}
