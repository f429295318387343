// What the accounting around the heap costs: a block allocated and freed through the library and directly.

#include <cstdlib>

#include <qvxsys/TMemory.h>

#include "BenchSupport.h"

namespace {

using quorvex::memory::MemoryTrackingMode;

struct Mode
{
    MemoryTrackingMode mode;
    char const* name;
};

constexpr Mode kModes[] = {{MemoryTrackingMode::Off, "off"},
                           {MemoryTrackingMode::Allocations, "allocations"},
                           {MemoryTrackingMode::Full, "full"}};

void OwnRow(std::string const& row, MemoryTrackingMode mode, std::size_t size)
{
    bench::Register(row + "/own", [mode, size](benchmark::State& state) {
        auto const before = quorvex::memory::SetMemoryTrackingMode(mode);
        quorvex::memory::MemoryCounter counter;
        {
            // An open scope, so that there is a record to charge.
            quorvex::memory::MemoryScope const scope(counter);
            std::size_t opaqueSize = size;
            for ([[maybe_unused]] auto _ : state) {
                benchmark::DoNotOptimize(opaqueSize);
                void* block = TMalloc(opaqueSize);
                benchmark::DoNotOptimize(block);
                TFree(block);
            }
        }
        quorvex::memory::SetMemoryTrackingMode(before);
    });
}

template<class Allocate, class Free>
void PeerRow(std::string const& row, char const* who, std::size_t size, Allocate allocate, Free release)
{
    bench::Register(row + "/" + who, [=](benchmark::State& state) {
        std::size_t opaqueSize = size;
        for ([[maybe_unused]] auto _ : state) {
            benchmark::DoNotOptimize(opaqueSize);
            void* block = allocate(opaqueSize);
            benchmark::DoNotOptimize(block);
            release(block);
        }
    });
}

void RegisterRows()
{
    for (std::size_t const size : {std::size_t{32}, std::size_t{256}}) {
        for (Mode const& mode : kModes) {
            auto const row = "h1 allocate and free " + std::to_string(size) + " bytes, accounting " + mode.name;
            OwnRow(row, mode.mode, size);
            PeerRow(
                row, "malloc", size, [](std::size_t n) { return std::malloc(n); }, [](void* p) { std::free(p); });
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
