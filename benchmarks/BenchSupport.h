#pragma once
// What the benchmark programs share: how rows are registered and named.
//
// A benchmark's name is "<row>/<who>". Rows are what the table in docs/performance.md has; of the names behind the
// slash "own" is this library, "own, portable" and the like are this library held to a smaller instruction set, a name
// in brackets such as "[memcpy]" is a bound rather than a peer, and all others are peers. benchmarks/report relies on this.
//
// A row's operation is a function object that lives on the heap, behind a virtual call. Everything it captures
// (sources, lengths, strings) is therefore memory whose contents the compiler does not know, and must be read anew
// after each benchmark::DoNotOptimize or ClobberMemory.

#include <cstdlib>
#include <string>
#include <utility>

#include <benchmark/benchmark.h>

#include <qvxsys/Processor.h>

namespace bench {

/// Registers a benchmark under its full name. The environment variable QVXSYS_BENCH_ITERATIONS fixes the number of
/// iterations, for counting instructions (benchmarks/profile); times are then worth nothing.
template<class Body>
void Register(std::string const& name, Body body)
{
    auto* const benchmark = benchmark::RegisterBenchmark(name.c_str(), std::move(body));
    if (char const* const iterations = std::getenv("QVXSYS_BENCH_ITERATIONS")) {
        benchmark->Iterations(std::atoll(iterations));
    }
}

template<class Op>
void Row(std::string const& row, std::string const& who, Op op)
{
    Register(row + "/" + who, [op = std::move(op)](benchmark::State& state) mutable {
        for ([[maybe_unused]] auto _ : state) {
            op();
        }
    });
}

/// The library's own row once for each instruction set that this processor has.
template<class Op>
void OwnRows(std::string const& row, Op const& op)
{
    using quorvex::cpu::InstructionSet;
    auto const best = quorvex::cpu::DetectedInstructionSet();
    for (auto const set : {InstructionSet::Portable, InstructionSet::Avx2, InstructionSet::Avx512}) {
        if (set > best) {
            break;
        }
        auto const who = set == best ? std::string("own") : std::string("own, ") + InstructionSetName(set);
        Register(row + "/" + who, [op, set](benchmark::State& state) mutable {
            auto const before = quorvex::cpu::LimitInstructionSet(set);
            for ([[maybe_unused]] auto _ : state) {
                op();
            }
            quorvex::cpu::LimitInstructionSet(before);
        });
    }
}

inline int Main(int argc, char** argv, void (*registerRows)())
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    registerRows();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

} // namespace bench
