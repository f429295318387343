// Call stacks taken raw, beside what programs take them with today. Every frame is of a function of its own, as it is
// in programs, below 120 of which all take as many as they are asked for.

#include <string>

#include <dlfcn.h>
#include <execinfo.h>
#include <unwind.h>

#include <qvxsys/StackTrace.h>

#ifdef QVXSYS_BENCH_STACKTRACE
#include <boost/stacktrace.hpp>
#endif

#include "BenchSupport.h"
#include "StackCapture.h"

namespace {

constexpr int kDepths[] = {10, 35, 100};
constexpr int kDeepest = 120;

template<int Depth, class Body>
[[gnu::noinline]] void AtDepth(Body& body)
{
    int volatile frame[Depth % 13 + 1];
    frame[0] = Depth;
    if constexpr (Depth == 0) {
        body();
    } else {
        AtDepth<Depth - 1>(body);
    }
    benchmark::DoNotOptimize(frame[0]);
}

template<class Op>
void StackRow(char const* row, int depth, char const* who, Op op)
{
    bench::Register(std::string(row) + ' ' + std::to_string(depth) + '/' + who, [=](benchmark::State& state) {
        auto loop = [&state, &op, depth] {
            void* frames[kDeepest];
            for ([[maybe_unused]] auto _ : state) {
                int count = op(frames, depth);
                benchmark::DoNotOptimize(count);
                benchmark::ClobberMemory();
                if (count != depth) {
                    state.SkipWithError("stopped early");
                }
            }
        };
        AtDepth<kDeepest>(loop);
    });
}

struct Walk
{
    void** frames;
    int capacity;
    int count;
};

int CompilersUnwinder(void** frames, int capacity)
{
    Walk walk{frames, capacity, 0};
    _Unwind_Backtrace(
        [](_Unwind_Context* context, void* argument) {
            Walk& w = *static_cast<Walk*>(argument);
            w.frames[w.count++] = reinterpret_cast<void*>(_Unwind_GetIP(context));
            return w.count == w.capacity ? _URC_END_OF_STACK : _URC_NO_REASON;
        },
        &walk);
    return walk.count;
}

int WithModules(void** frames, int capacity)
{
    std::uint16_t modules[kDeepest];
    return qvxsys::detail::CaptureTrace(frames, modules, capacity, 0);
}

void RegisterRows()
{
    // Linked in, libunwind would take the place of the functions that throw exceptions, and of backtrace.
    void* const libunwind = dlopen("libunwind.so.8", RTLD_NOW | RTLD_LOCAL);
    auto* const unwBacktrace =
        libunwind != nullptr ? reinterpret_cast<int (*)(void**, int)>(dlsym(libunwind, "unw_backtrace")) : nullptr;
    for (int const depth : kDepths) {
        StackRow("j1 capture", depth, "own",
                 [](void** frames, int capacity) { return qvxsys::unwind::CaptureStack(frames, capacity, 0); });
        StackRow("j1 capture", depth, "own, with modules", WithModules);
        if (unwBacktrace != nullptr) {
            StackRow("j1 capture", depth, "unw_backtrace", unwBacktrace);
        }
        StackRow("j1 capture", depth, "backtrace", backtrace);
        StackRow("j1 capture", depth, "_Unwind_Backtrace", CompilersUnwinder);
#ifdef QVXSYS_BENCH_STACKTRACE
        StackRow("j1 capture", depth, "boost::stacktrace", [](void**, int capacity) {
            return static_cast<int>(boost::stacktrace::stacktrace(0, static_cast<std::size_t>(capacity)).size());
        });
#endif
    }
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
