// What it costs to turn a stack of some 35 addresses into names and lines: when all was seen before, and at first.
//
// The stack is captured once, through functions that are all different, up to the C library's start code. Peers get the
// call before each return address, as the library takes it. "own" is what Resolve gives; "own, as lines" is the text of
// TStackWalker, and is to be compared with those peers that make text, too.

#include <span>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <execinfo.h>
#include <unistd.h>

#include <elfutils/libdwfl.h>

#include <qvxsys/Symbols.h>

#include "BenchSupport.h"

#if defined(QVXSYS_BENCH_BACKTRACE)
#include <backtrace.h>
#define BOOST_STACKTRACE_USE_BACKTRACE
#include <boost/stacktrace.hpp>
#endif

namespace {

namespace symbols = quorvex::symbols;

std::vector<void*> g_frames;

template<int Depth>
struct Deep
{
    [[gnu::noinline]] static int Call()
    {
        int const result = Deep<Depth - 1>::Call();
        asm volatile(""); // no tail call
        return result + 1;
    }
};
template<>
struct Deep<0>
{
    [[gnu::noinline]] static int Call()
    {
        void* frames[64];
        g_frames.assign(frames, frames + ::backtrace(frames, 64));
        return 0;
    }
};

std::uintptr_t CallBefore(void* returnAddress)
{
    return reinterpret_cast<std::uintptr_t>(returnAddress) - 1;
}

/// What comes first is not timed: rows that begin with everything cleared run in between.
template<class Op>
void WarmRow(std::string const& row, std::string const& who, Op op)
{
    bench::Register(row + "/" + who, [op = std::move(op)](benchmark::State& state) mutable {
        op();
        for ([[maybe_unused]] auto _ : state) {
            op();
        }
    });
}

void NameRows()
{
    std::string const row = "j2 names of 35 frames";
    WarmRow(row, "own", [] { benchmark::DoNotOptimize(symbols::Resolve(g_frames, symbols::Detail::Names)); });
    WarmRow(row, "dladdr", [] {
        for (void* const frame : g_frames) {
            Dl_info info;
            benchmark::DoNotOptimize(::dladdr(reinterpret_cast<void*>(CallBefore(frame)), &info));
        }
    });
    WarmRow(row, "backtrace_symbols", [] {
        char** const texts = ::backtrace_symbols(g_frames.data(), static_cast<int>(g_frames.size()));
        benchmark::DoNotOptimize(texts);
        std::free(texts);
    });
}

class Reader
{
public:
    Reader()
    {
        static Dwfl_Callbacks const callbacks{dwfl_linux_proc_find_elf, dwfl_standard_find_debuginfo, nullptr, nullptr};
        m_dwfl = ::dwfl_begin(&callbacks);
        ::dwfl_linux_proc_report(m_dwfl, ::getpid());
        ::dwfl_report_end(m_dwfl, nullptr, nullptr);
    }
    ~Reader() { ::dwfl_end(m_dwfl); }
    Reader(Reader const&) = delete;
    Reader& operator=(Reader const&) = delete;

    void Resolve() const
    {
        for (void* const frame : g_frames) {
            Dwfl_Module* const module = ::dwfl_addrmodule(m_dwfl, CallBefore(frame));
            benchmark::DoNotOptimize(::dwfl_module_addrname(module, CallBefore(frame)));
            int line = 0;
            Dwfl_Line* const place = ::dwfl_module_getsrc(module, CallBefore(frame));
            if (place != nullptr) {
                benchmark::DoNotOptimize(::dwfl_lineinfo(place, nullptr, &line, nullptr, nullptr, nullptr));
            }
        }
    }

private:
    Dwfl* m_dwfl;
};

#if defined(QVXSYS_BENCH_BACKTRACE)
void ResolveWith(backtrace_state* state)
{
    for (void* const frame : g_frames) {
        ::backtrace_pcinfo(
            state, CallBefore(frame),
            [](void*, std::uintptr_t, char const* file, int line, char const* function) {
                benchmark::DoNotOptimize(file);
                benchmark::DoNotOptimize(line);
                benchmark::DoNotOptimize(function);
                return 0;
            },
            [](void*, char const*, int) {}, nullptr);
    }
}

backtrace_state* NewState()
{
    return ::backtrace_create_state(
        nullptr, 1, [](void*, char const*, int) {}, nullptr);
}
#endif

void WarmRows()
{
    std::string const row = "j3 names and lines of 35 frames";
    WarmRow(row, "own", [] { benchmark::DoNotOptimize(symbols::Resolve(g_frames)); });
    WarmRow(row, "own, as lines",
            [] { benchmark::DoNotOptimize(symbols::Format(g_frames, StackWalkerConfig{}, 0x1234)); });
    WarmRow(row, "libdwfl", [dwfl = new Reader] { dwfl->Resolve(); });
#if defined(QVXSYS_BENCH_BACKTRACE)
    WarmRow(row, "libbacktrace", [state = NewState()] { ResolveWith(state); });
    WarmRow(row, "boost::stacktrace", [] {
        std::vector<boost::stacktrace::frame> frames;
        for (void* const frame : g_frames) {
            frames.emplace_back(reinterpret_cast<void*>(CallBefore(frame)));
        }
        benchmark::DoNotOptimize(boost::stacktrace::detail::to_string(frames.data(), frames.size()));
    });
#endif
}

/// Everything is opened and read anew each time; the files are in the system's cache.
void ColdRows()
{
    std::string const row = "j3 names and lines of 35 frames, at first";
    bench::Row(row, "own", [] {
        symbols::ClearCache();
        benchmark::DoNotOptimize(symbols::Resolve(g_frames));
    });
    bench::Row(row, "libdwfl", [] { Reader().Resolve(); });
#if defined(QVXSYS_BENCH_BACKTRACE)
    bench::Row(row, "libbacktrace", [] { ResolveWith(NewState()); }); // its states cannot be freed
#endif
}

void RegisterRows()
{
    Deep<30>::Call();
    NameRows();
    WarmRows();
    ColdRows();
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
