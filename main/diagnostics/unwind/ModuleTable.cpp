#include "ModuleTable.h"

#include <atomic>

namespace qvxsys::unwind {

constinit ModuleRecord g_modules[kMaxModules];

namespace {

// Records are claimed by number, filled in by the claimer alone and then shown, so nobody ever waits: a signal handler
// may come in between. Two threads that meet a module at the same time may record it twice, which only costs the room.
struct Table
{
    std::atomic<unsigned> claimed{0};                  // the highest number so far
    std::atomic<std::uintptr_t> begins[kMaxModules]{}; // 0 until the record is complete
};

constinit Table g_table;

std::uint16_t Record(std::uintptr_t address, std::uintptr_t begin, std::uintptr_t end) noexcept
{
    unsigned number = g_table.claimed.load(std::memory_order_relaxed);
    do {
        if (number + 1 >= kMaxModules) {
            return 0;
        }
    } while (!g_table.claimed.compare_exchange_weak(number, number + 1, std::memory_order_relaxed));
    ++number;
    ModuleRecord& record = g_modules[number];
    record.begin = begin;
    record.end = end;
    platform::Describe(address, record);
    g_table.begins[number].store(begin, std::memory_order_release);
    return static_cast<std::uint16_t>(number);
}

} // namespace

std::uint16_t ModuleAt(std::uintptr_t address) noexcept
{
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    if (!platform::FindRange(address, begin, end)) {
        return 0;
    }
    unsigned const claimed = g_table.claimed.load(std::memory_order_relaxed);
    for (unsigned number = 1; number <= claimed; ++number) {
        if (g_table.begins[number].load(std::memory_order_acquire) == begin) {
            ModuleRecord const& record = g_modules[number];
            if (record.end == end && platform::IsSame(record)) {
                return static_cast<std::uint16_t>(number);
            }
        }
    }
    return Record(address, begin, end);
}

bool IsStill(std::uint16_t number, std::uintptr_t address) noexcept
{
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    ModuleRecord const& record = g_modules[number];
    return platform::FindRange(address, begin, end) && begin == record.begin && end == record.end &&
           (record.isPermanent || record.buildIdInMemory != nullptr) && platform::IsSame(record);
}

} // namespace qvxsys::unwind
