// What the accounting around the heap costs: a block allocated and freed through the library and directly, and many of
// mixed sizes, freed in another order, beside other heaps.

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>

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

/// A thousand blocks are made, then freed in another order: what a heap does once its blocks are scattered.
class MixedBlocks
{
public:
    MixedBlocks()
    {
        std::mt19937 random(42);
        for (std::size_t i = 0; i < kCount; ++i) {
            m_sizes[i] = 16 + random() % 1009;
            m_order[i] = i;
        }
        std::shuffle(m_order.begin(), m_order.end(), random);
    }

    template<class Allocate, class Free>
    void Run(Allocate allocate, Free release)
    {
        for (std::size_t i = 0; i < kCount; ++i) {
            m_blocks[i] = allocate(m_sizes[i]);
        }
        benchmark::ClobberMemory();
        for (std::size_t const i : m_order) {
            release(m_blocks[i]);
        }
    }

private:
    static constexpr std::size_t kCount = 1000;
    std::array<std::size_t, kCount> m_sizes{};
    std::array<std::size_t, kCount> m_order{};
    std::array<void*, kCount> m_blocks{};
};

template<class Allocate, class Free>
void MixedRow(char const* who, Allocate allocate, Free release)
{
    bench::Register(std::string("h2 1,000 blocks of mixed sizes, freed in another order/") + who,
                    [=](benchmark::State& state) {
                        MixedBlocks blocks;
                        for ([[maybe_unused]] auto _ : state) {
                            blocks.Run(allocate, release);
                        }
                    });
}

/// A heap that is linked takes over `malloc` itself, so those of others are opened here, where they are installed.
void OtherHeapRow(char const* who, char const* library, char const* allocate, char const* release)
{
    void* const opened = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (opened == nullptr) {
        return;
    }
    auto* const allocateFunction = reinterpret_cast<void* (*)(std::size_t)>(dlsym(opened, allocate));
    auto* const releaseFunction = reinterpret_cast<void (*)(void*)>(dlsym(opened, release));
    if (allocateFunction != nullptr && releaseFunction != nullptr) {
        MixedRow(who, allocateFunction, releaseFunction);
    }
}

void MixedRows()
{
    MixedRow(
        "own", [](std::size_t n) { return TMalloc(n); }, [](void* p) { TFree(p); });
    MixedRow(
        "malloc", [](std::size_t n) { return std::malloc(n); }, [](void* p) { std::free(p); });
    OtherHeapRow("mimalloc", "libmimalloc.so.2", "mi_malloc", "mi_free");
    OtherHeapRow("tbbmalloc", "libtbbmalloc.so.2", "scalable_malloc", "scalable_free");
}

void RegisterRows()
{
    MixedRows();
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
