#pragma once
// Allocation functions with optional accounting per thread and scope.
//
// TMalloc, TCalloc, TRealloc and TFree wrap the runtime heap. While accounting is on they also charge each call to the
// calling thread's current counter record; a MemoryScope opens such a record and folds it into a MemoryCounter:
//
//     quorvex::memory::SetMemoryTrackingMode(quorvex::memory::MemoryTrackingMode::Full);
//     quorvex::memory::MemoryCounter counter;
//     {
//         quorvex::memory::MemoryScope scope(counter);
//         TStringCore text(u'x', 1000);                  // every string block comes from TRealloc
//     }
//     std::cout << counter.Allocated() << " bytes in " << counter.AllocatedCount() << " blocks\n";
//
// Switch the mode while no accounted work runs. All sizes are bytes.

#include <cstddef>
#include <cstdint>
#include <memory>

#include <qvxsys/Platform.h>

extern "C" {

/// Allocates `size` bytes as std::malloc does. Null when memory is exhausted; the request is then charged all the same.
/// Thread-safe. With accounting off it costs one global read more than the runtime's function.
[[nodiscard]] QVXSYS_API void* TMalloc(std::size_t size) noexcept;

/// Allocates `count * size` bytes exactly as TMalloc does. Unlike std::calloc it neither checks the product for
/// overflow nor clears the memory. Thread-safe.
[[nodiscard]] QVXSYS_API void* TCalloc(std::size_t count, std::size_t size) noexcept;

/// Resizes a block as std::realloc does: a null `ptr` allocates, a null result leaves the old block as it was.
/// Thread-safe. With full accounting the old block's usable size is taken back out of the allocated bytes (it does not
/// count as released) and the new request is charged, also when the result is null.
[[nodiscard]] QVXSYS_API void* TRealloc(void* ptr, std::size_t size) noexcept;

/// Frees a block of the three functions above; a null pointer is ignored. Thread-safe. With full accounting the block's
/// usable size counts as released.
QVXSYS_API void TFree(void* ptr) noexcept;

} // extern "C"

namespace quorvex::memory {

/// How much is counted, for the whole process.
enum class MemoryTrackingMode : std::uint32_t {
    Off = 0,         ///< nothing
    Allocations = 1, ///< TMalloc and TCalloc; releases and reallocations are not, Accumulate folds allocations only
    Full = 2,        ///< allocations, reallocations and releases; Accumulate folds everything
};

/// Sets the mode and returns the previous one. Thread-safe, but meant to be called while no accounted work runs.
QVXSYS_API MemoryTrackingMode SetMemoryTrackingMode(MemoryTrackingMode mode) noexcept;
/// The current mode. Thread-safe.
[[nodiscard]] QVXSYS_API MemoryTrackingMode GetMemoryTrackingMode() noexcept;

/// The usable size of a heap block as the runtime tells it; it can be larger than what was asked for. 0 for null.
[[nodiscard]] QVXSYS_API std::size_t GetPointerSize(void* ptr) noexcept;

/// Fault injection for tests: on the calling thread the `nth` call of TRealloc from now on (1 = the next) fails, that
/// is returns null and leaves the block alone; later calls work again. 0 cancels. Returns the calls that were still to
/// go of an earlier request. Needs no accounting mode and costs other threads nothing but a test behind the mode's
/// read.
QVXSYS_API unsigned FailNthReallocation(unsigned nth) noexcept;

/// What one scope of one thread has allocated and released. The client owns the record (typically on its stack or in a
/// MemoryScope) and must keep it alive until it is popped. Written by the owning thread only.
struct ThreadMemoryCounters
{
    ThreadMemoryCounters* next = nullptr; ///< the enclosing record: what was current when this one was pushed
    std::uint64_t clientData = 0;         ///< for the client; the library does not touch it
    std::uint64_t allocated = 0;          ///< bytes allocated
    std::uint64_t deallocated = 0;        ///< bytes released
    std::int64_t used = 0;                ///< bytes in use, never below 0
    std::uint64_t peakUsed = 0;           ///< the highest `used` seen
    std::uint32_t allocatedCount = 0;     ///< calls that allocated
    std::uint32_t deallocatedCount = 0;   ///< calls that released
    std::uint64_t orderingId = 0;         ///< from GetNextOrderingId() when the scope opens
};
static_assert(offsetof(ThreadMemoryCounters, next) == 0 && offsetof(ThreadMemoryCounters, clientData) == 8 &&
              offsetof(ThreadMemoryCounters, allocated) == 16 && offsetof(ThreadMemoryCounters, deallocated) == 24 &&
              offsetof(ThreadMemoryCounters, used) == 32 && offsetof(ThreadMemoryCounters, peakUsed) == 40 &&
              offsetof(ThreadMemoryCounters, allocatedCount) == 48 &&
              offsetof(ThreadMemoryCounters, deallocatedCount) == 52 &&
              offsetof(ThreadMemoryCounters, orderingId) == 56 && sizeof(ThreadMemoryCounters) == 64);

/// Increments the calling thread's ordering counter and returns it: 1 on a thread's first call.
QVXSYS_API std::uint64_t GetNextOrderingId() noexcept;

/// Makes `record` (which may be null) the calling thread's current record and returns the previous one, which the
/// caller stores in `record->next`.
QVXSYS_API ThreadMemoryCounters* SwapPushMemoryCounters(ThreadMemoryCounters* record) noexcept;

/// Closes a scope on the calling thread. `record` is what was current before that scope, that is the `next` of the
/// closing scope's record. Returns the closed record. Scopes may close out of order: then the closing record is looked
/// for by ordering id and unlinked, and the current record stays current. Null when no scope is open, or none that is
/// newer than `record`.
QVXSYS_API ThreadMemoryCounters* SwapPopMemoryCounters(ThreadMemoryCounters* record) noexcept;

/// Where scopes deliver their counts.
class QVXSYS_API IMemoryCounter
{
public:
    /// Folds a closed scope's record in. `extraPeak`: bytes in use in the enclosing scope when this one opened.
    virtual void Accumulate(ThreadMemoryCounters const& counters, unsigned long long extraPeak) = 0;
    virtual ~IMemoryCounter();

protected:
    IMemoryCounter() = default;
    IMemoryCounter(IMemoryCounter const&) = default;
    IMemoryCounter& operator=(IMemoryCounter const&) = default;
};

/// Totals over any number of scopes. Not thread-safe: accumulate from one thread.
class QVXSYS_API MemoryCounter : public IMemoryCounter
{
public:
    MemoryCounter() noexcept = default;
    MemoryCounter(MemoryCounter const&) noexcept = default;
    MemoryCounter& operator=(MemoryCounter const&) noexcept = default;
    ~MemoryCounter() override;

    /// With mode Off nothing is folded, with Allocations the allocated bytes and calls, with Full also the released
    /// ones and the peak: the larger of the peak so far and `counters.peakUsed + extraPeak`.
    void Accumulate(ThreadMemoryCounters const& counters, unsigned long long extraPeak) override;

    /// Bytes that were allocated.
    [[nodiscard]] std::uint64_t Allocated() const noexcept { return m_allocated; }
    /// Bytes that were released.
    [[nodiscard]] std::uint64_t Deallocated() const noexcept { return m_deallocated; }
    /// The most bytes that were in use at one time.
    [[nodiscard]] std::uint64_t AllocatedPeakUsed() const noexcept { return m_allocatedPeakUsed; }
    /// Blocks that were allocated.
    [[nodiscard]] std::uint32_t AllocatedCount() const noexcept { return m_allocatedCount; }
    /// Blocks that were released.
    [[nodiscard]] std::uint32_t DeallocatedCount() const noexcept { return m_deallocatedCount; }

    /// Sets all five totals to 0.
    void Reset() noexcept;

    /// Writes the totals to standard output: "\n===\n", then a line with allocated, allocatedCount and
    /// allocatedPeakUsed, then one with deallocated and deallocatedCount, each number padded to 8 digits.
    void PrintToConsole() const;

private:
    std::uint64_t m_allocated = 0;
    std::uint64_t m_deallocated = 0;
    std::uint64_t m_allocatedPeakUsed = 0;
    std::uint32_t m_allocatedCount = 0;
    std::uint32_t m_deallocatedCount = 0;
};
static_assert(sizeof(IMemoryCounter) == 8 && sizeof(MemoryCounter) == 40);

/// Counts what its thread allocates while it lives and folds that into a counter at its end. Scopes nest; each counts
/// what was charged while it was the current one, so an inner scope's allocations are not in the outer scope's totals.
/// Scopes of one thread may end in any order. Destroy a scope on the thread that made it: on another one its counts are
/// dropped and its record is left to the first thread for good (a leak of 64 bytes rather than a dangling record).
class MemoryScope
{
public:
    /// `counter` must outlive the scope.
    explicit MemoryScope(IMemoryCounter& counter)
        : m_counter(counter), m_record(std::make_unique<ThreadMemoryCounters>()), m_threadId(GetCurrentThreadId())
    {
        m_record->orderingId = GetNextOrderingId();
        m_record->next = SwapPushMemoryCounters(m_record.get());
        if (m_record->next != nullptr) {
            m_extraPeak = static_cast<unsigned long long>(m_record->next->used);
        }
    }

    MemoryScope(MemoryScope const&) = delete;
    MemoryScope& operator=(MemoryScope const&) = delete;

    ~MemoryScope()
    {
        if (GetCurrentThreadId() != m_threadId) {
            static_cast<void>(m_record.release());
            return;
        }
        if (ThreadMemoryCounters const* closed = SwapPopMemoryCounters(m_record->next)) {
            m_counter.Accumulate(*closed, m_extraPeak);
        }
    }

private:
    /// The calling thread's id as the platform gives it.
    QVXSYS_API static std::uint32_t GetCurrentThreadId() noexcept;

    IMemoryCounter& m_counter;
    std::unique_ptr<ThreadMemoryCounters> m_record;
    std::uint32_t m_threadId;
    unsigned long long m_extraPeak = 0;
};

} // namespace quorvex::memory
