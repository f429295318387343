#include "Spinning.h"

#include <atomic>

#include "Parking.h"

namespace qvxsys::sync {

namespace {

/// 3 to 10 microseconds.
constexpr std::uint64_t kMostCycles = 10'000;
/// Spins in vain, in a row, after which a thread stops, when it was successful before.
constexpr int kFullConfidence = 8;
/// A thread that has stopped tries once in so many waits.
constexpr unsigned int kRetryAfter = 64;

struct SpinRecord
{
    int confidence = kFullConfidence;
    unsigned int skipped = 0;
};

QVXSYS_TLS_INITIAL_EXEC thread_local constinit SpinRecord t_record;

/// 0: not known yet.
std::atomic<unsigned int> g_processors = 0;

} // namespace

std::uint64_t SpinBudget() noexcept
{
    unsigned int processors = g_processors.load(std::memory_order_relaxed);
    if (processors == 0) [[unlikely]] {
        processors = UsableProcessors();
        g_processors.store(processors, std::memory_order_relaxed);
    }
    if (processors == 1) {
        return 0;
    }
    if (t_record.confidence > 0) {
        return kMostCycles;
    }
    t_record.skipped = (t_record.skipped + 1) % kRetryAfter;
    return t_record.skipped == 0 ? kMostCycles : 0;
}

void RecordSpin(bool paid) noexcept
{
    // One success earns several tries, up to full confidence; one failure costs one.
    t_record.confidence =
        paid ? std::min(kFullConfidence, t_record.confidence + 4) : std::max(0, t_record.confidence - 1);
}

} // namespace qvxsys::sync
