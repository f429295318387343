// Traces where memory is asked for: none for taking one; while one is looked up it may run out, or ask for a trace
// itself.

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <utility>

#include <dlfcn.h>

#include <gtest/gtest.h>

#include <qvxsys/StackTrace.h>
#include <qvxsys/Symbols.h>
#include <qvxsys/TStackWalker.h>

#include "support/SharedLibrary.h"
#include "support/Threads.h"

// Sanitizers have an allocator of their own.
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__) && !defined(__clang__)

namespace {

/// Whether an allocation is to succeed.
using Hook = bool(std::size_t size, void* caller);
constinit thread_local Hook* t_onAllocation = nullptr;
constinit thread_local long t_left = 0;

} // namespace

extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* malloc(std::size_t size)
{
    if (t_onAllocation != nullptr && !t_onAllocation(size, __builtin_return_address(0))) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_malloc(size);
}

namespace {

namespace symbols = quorvex::symbols;

TEST(Allocations, NoneForTakingATrace)
{
    quorvex::StackTrace trace;
    Elsewhere([&trace] { // on a thread of which nothing is remembered
        t_onAllocation = [](std::size_t, void*) {
            std::abort();
            return false;
        };
        trace = quorvex::StackTrace::Current();
        t_onAllocation = nullptr;
    });
    EXPECT_GT(trace.Frames().size(), 2u);
}

TEST(Allocations, MayAskForTraces)
{
    static int nested;
    nested = 0;
    TStackWalker::InitSym(true);
    symbols::ClearCache();
    TStackWalker walker;
    t_onAllocation = [](std::size_t, void*) {
        Hook* const hook = std::exchange(t_onAllocation, nullptr);
        TStackWalker inner;
        nested += nested > 20 || inner.GenerateCallstack() ? 1 : 0;
        t_onAllocation = hook;
        return true;
    };
    EXPECT_TRUE(walker.GenerateCallstack());
    t_onAllocation = nullptr;
    TStackWalker::InitSym(false);
    EXPECT_GT(nested, 20);
    // Behind the library's own functions, where those have no line information to be left out by.
    EXPECT_TRUE(std::any_of(walker.GetCollected().begin(), walker.GetCollected().end(),
                            [](std::string const& line) { return line.find("MayAskForTraces") != std::string::npos; }));
}

/// What may fail: the C++ library's, and larger ones. libdw crashes without its small ones.
bool IsChecked(std::size_t size, void* caller)
{
    dl_find_object from;
    dl_find_object standard;
    return size >= 4096 || (_dl_find_object(caller, &from) == 0 &&
                            _dl_find_object(reinterpret_cast<void*>(&std::terminate), &standard) == 0 &&
                            from.dlfo_map_start == standard.dlfo_map_start);
}

TEST(Allocations, FailOneByOne)
{
    SharedLibrary const library(SYMBOL_VARIANTS "/full.so");
    void* const address = reinterpret_cast<void*>(library.Get<void()>("PluginCall"));
    std::string const line = symbols::Format({&address, 1}, {}, 0).front();
    long failed = 0;
    for (bool more = true; more; ++failed) {
        symbols::ClearCache();
        t_left = failed;
        t_onAllocation = [](std::size_t size, void* caller) { return !IsChecked(size, caller) || t_left-- != 0; };
        try {
            symbols::SetSearchPath(failed % 2 == 0 ? "/nowhere" : "/elsewhere");
            static_cast<void>(symbols::Format({&address, 1}, {}, 0));
        } catch (std::bad_alloc const&) {
        }
        t_onAllocation = nullptr;
        more = t_left < 0;
        EXPECT_EQ(symbols::Format({&address, 1}, {}, 0).front(), line) << "after allocation " << failed;
    }
    symbols::SetSearchPath({});
    EXPECT_GT(failed, 50);
}

} // namespace

#endif
