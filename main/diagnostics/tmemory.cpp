#include <qvxsys/TMemory.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <utility>

#include "tmemory_platform.h"

namespace quorvex::memory {
namespace {

// One word decides whether a call goes straight to the runtime: the tracking mode in the low half, and a flag above it
// that is set for good once a thread has asked for fault injection. The common case is a single read and a test.
constinit std::atomic<std::uint64_t> g_state{0};
constexpr std::uint64_t kInjection = std::uint64_t{1} << 32;

constexpr auto kFull = static_cast<std::uint64_t>(MemoryTrackingMode::Full);

struct ThreadBlock
{
    ThreadMemoryCounters* current = nullptr;
    std::uint64_t orderingId = 0;
    unsigned reallocationsToFailure = 0;
};

// Initial-exec: the block is a fixed offset from the thread pointer, no call on the way to it.
QVXSYS_TLS_INITIAL_EXEC constinit thread_local ThreadBlock t_block;

std::uint64_t State() noexcept
{
    return g_state.load(std::memory_order_relaxed);
}

std::uint64_t Mode(std::uint64_t state) noexcept
{
    return state & 0xFFFFFFFFu;
}

void ChargeAllocation(ThreadMemoryCounters& record, std::size_t size) noexcept
{
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    auto const room = static_cast<std::uint64_t>(most - record.used);
    record.used = size <= room ? record.used + static_cast<std::int64_t>(size) : most;
    record.allocated += size;
    ++record.allocatedCount;
    record.peakUsed = std::max(record.peakUsed, static_cast<std::uint64_t>(record.used));
}

void ChargeRelease(ThreadMemoryCounters& record, std::size_t size) noexcept
{
    auto const used = static_cast<std::uint64_t>(record.used);
    record.used = static_cast<std::int64_t>(used > size ? used - size : 0);
    ++record.deallocatedCount;
}

void* CountedMalloc(std::size_t size, std::uint64_t state) noexcept
{
    // Charged whether it succeeds or not, so nothing is left to do behind the call.
    if (Mode(state) != 0 && t_block.current != nullptr) {
        ChargeAllocation(*t_block.current, size);
    }
    return std::malloc(size);
}

void* CountedRealloc(void* ptr, std::size_t size, std::uint64_t state) noexcept
{
    ThreadMemoryCounters* const record = Mode(state) == kFull ? t_block.current : nullptr;
    if (record != nullptr && ptr != nullptr) {
        std::size_t const old = platform::UsableSize(ptr);
        record->allocated -= old;
        ChargeRelease(*record, old);
    }
    bool const fail = t_block.reallocationsToFailure != 0 && --t_block.reallocationsToFailure == 0;
    void* const result = fail ? nullptr : std::realloc(ptr, size);
    if (record != nullptr) {
        ChargeAllocation(*record, size);
    }
    return result;
}

void CountedFree(void* ptr, std::uint64_t state) noexcept
{
    if (Mode(state) == kFull && ptr != nullptr && t_block.current != nullptr) {
        std::size_t const size = platform::UsableSize(ptr);
        t_block.current->deallocated += size;
        ChargeRelease(*t_block.current, size);
    }
    std::free(ptr);
}

} // namespace

MemoryTrackingMode SetMemoryTrackingMode(MemoryTrackingMode mode) noexcept
{
    std::uint64_t state = State();
    while (!g_state.compare_exchange_weak(state, (state & kInjection) | static_cast<std::uint32_t>(mode),
                                          std::memory_order_relaxed)) {
    }
    return static_cast<MemoryTrackingMode>(Mode(state));
}

MemoryTrackingMode GetMemoryTrackingMode() noexcept
{
    return static_cast<MemoryTrackingMode>(Mode(State()));
}

std::size_t GetPointerSize(void* ptr) noexcept
{
    return platform::UsableSize(ptr);
}

unsigned FailNthReallocation(unsigned nth) noexcept
{
    if (nth != 0) {
        g_state.fetch_or(kInjection, std::memory_order_relaxed);
    }
    return std::exchange(t_block.reallocationsToFailure, nth);
}

std::uint64_t GetNextOrderingId() noexcept
{
    return ++t_block.orderingId;
}

ThreadMemoryCounters* SwapPushMemoryCounters(ThreadMemoryCounters* record) noexcept
{
    return std::exchange(t_block.current, record);
}

ThreadMemoryCounters* SwapPopMemoryCounters(ThreadMemoryCounters* record) noexcept
{
    ThreadMemoryCounters* const current = t_block.current;
    bool const innermost = current == nullptr || current->next == nullptr ||
                           (record != nullptr && current->next->orderingId == record->orderingId);
    if (innermost) {
        t_block.current = record;
        return current;
    }
    // A scope further out closes first: it is the oldest record that is newer than `record`.
    ThreadMemoryCounters* before = nullptr;
    ThreadMemoryCounters* victim = nullptr;
    for (ThreadMemoryCounters* visited = current;
         visited != nullptr && (record == nullptr || visited->orderingId > record->orderingId);
         visited = visited->next) {
        before = victim;
        victim = visited;
    }
    if (before != nullptr) {
        before->next = victim->next;
    } else if (victim != nullptr) {
        t_block.current = victim->next;
    }
    return victim;
}

IMemoryCounter::~IMemoryCounter() = default;
MemoryCounter::~MemoryCounter() = default;

void MemoryCounter::Accumulate(ThreadMemoryCounters const& counters, unsigned long long extraPeak)
{
    MemoryTrackingMode const mode = GetMemoryTrackingMode();
    if (mode == MemoryTrackingMode::Off) {
        return;
    }
    m_allocated += counters.allocated;
    m_allocatedCount += counters.allocatedCount;
    if (mode == MemoryTrackingMode::Full) {
        m_deallocated += counters.deallocated;
        m_deallocatedCount += counters.deallocatedCount;
        m_allocatedPeakUsed = std::max<std::uint64_t>(m_allocatedPeakUsed, counters.peakUsed + extraPeak);
    }
}

void MemoryCounter::Reset() noexcept
{
    *this = MemoryCounter();
}

void MemoryCounter::PrintToConsole() const
{
    std::printf("\n===\n");
    std::printf("  allocated=%08zu,   allocatedCount=%08zu,  allocatedPeakUsed=%08zu\n", std::size_t{m_allocated},
                std::size_t{m_allocatedCount}, std::size_t{m_allocatedPeakUsed});
    std::printf("deallocated=%08zu, deallocatedCount=%08zu\n", std::size_t{m_deallocated},
                std::size_t{m_deallocatedCount});
}

std::uint32_t MemoryScope::GetCurrentThreadId() noexcept
{
    return platform::ThreadId();
}

} // namespace quorvex::memory

using namespace quorvex::memory;

void* TMalloc(std::size_t size) noexcept
{
    std::uint64_t const state = State();
    return state == 0 ? std::malloc(size) : CountedMalloc(size, state);
}

void* TCalloc(std::size_t count, std::size_t size) noexcept
{
    return TMalloc(count * size);
}

void* TRealloc(void* ptr, std::size_t size) noexcept
{
    if (std::uint64_t const state = State(); state != 0) [[unlikely]] {
        return CountedRealloc(ptr, size, state);
    }
    return ptr == nullptr ? std::malloc(size) : std::realloc(ptr, size);
}

void TFree(void* ptr) noexcept
{
    if (std::uint64_t const state = State(); state != 0) [[unlikely]] {
        CountedFree(ptr, state);
    } else {
        std::free(ptr);
    }
}
