#include "Spinning.h"

#include <atomic>

#include "Parking.h"

namespace qvxsys::sync {

namespace {

/// 3 to 10 microseconds.
constexpr std::uint64_t kMostCycles = 10'000;
/// Spins in vain, in a row, after which a thread stops: a new one, and one that was successful all the time. The latter
/// gets many, because the two who answer each other within a microsecond fall out of step whenever one of them is
/// interrupted, and then need some tries to get back: as long as both sleep, each needs longer to wake than the other
/// spins.
constexpr int kFirstConfidence = 16;
constexpr int kFullConfidence = 32;
/// A thread that has stopped tries once in so many waits: in twice as many each time that it is in vain.
constexpr unsigned int kRetryAfter = 32;
constexpr unsigned int kRetryAfterAtMost = 1024;

struct SpinRecord
{
    int confidence = kFirstConfidence;
    unsigned int retryAfter = kRetryAfter;
    unsigned int skipped = 0;
    bool askedForProcessors = false;
};

QVXSYS_TLS_INITIAL_EXEC thread_local constinit SpinRecord t_record;

std::atomic<bool> g_severalProcessors = false;

/// Whether the process has more processors than one. A thread that is bound to one may be the first to ask, so "no" is
/// its own answer only, while "yes" is everybody's. No thread asks twice.
bool HasSeveralProcessors() noexcept
{
    if (g_severalProcessors.load(std::memory_order_relaxed)) [[likely]] {
        return true;
    }
    if (!t_record.askedForProcessors) {
        t_record.askedForProcessors = true;
        if (UsableProcessors() > 1) {
            g_severalProcessors.store(true, std::memory_order_relaxed);
            return true;
        }
    }
    return false;
}

} // namespace

std::uint64_t SpinBudget() noexcept
{
    if (!HasSeveralProcessors()) {
        return 0;
    }
    if (t_record.confidence > 0) {
        return kMostCycles;
    }
    if (++t_record.skipped < t_record.retryAfter) {
        return 0;
    }
    t_record.skipped = 0;
    t_record.retryAfter = std::min(2 * t_record.retryAfter, kRetryAfterAtMost);
    return kMostCycles;
}

void RecordSpin(bool paid) noexcept
{
    // One success earns several tries, up to full confidence; one failure costs one.
    if (paid) {
        t_record.confidence = std::min(kFullConfidence, t_record.confidence + 4);
        t_record.retryAfter = kRetryAfter;
    } else {
        t_record.confidence = std::max(0, t_record.confidence - 1);
    }
}

} // namespace qvxsys::sync
