#include <qvxsys/TMemory.h>

#include <array>
#include <cstring>
#include <limits>
#include <thread>

#include <gtest/gtest.h>

#include "support/Threads.h"

// Requests that no heap can satisfy are part of these tests; the sanitizers' allocators then return null as malloc
// does.
extern "C" __attribute__((visibility("default"))) char const* __asan_default_options()
{
    return "allocator_may_return_null=1";
}
extern "C" __attribute__((visibility("default"))) char const* __tsan_default_options()
{
    return "allocator_may_return_null=1";
}

namespace {

using namespace quorvex::memory;

// Sets a mode for one test, and a record that is current while the test runs.
class MemoryTest : public testing::Test
{
protected:
    ~MemoryTest() override
    {
        SwapPushMemoryCounters(nullptr);
        FailNthReallocation(0);
        SetMemoryTrackingMode(MemoryTrackingMode::Off);
    }

    void Track(MemoryTrackingMode mode)
    {
        SetMemoryTrackingMode(mode);
        m_record.orderingId = GetNextOrderingId();
        m_record.next = SwapPushMemoryCounters(&m_record);
    }

    ThreadMemoryCounters m_record;
};

TEST_F(MemoryTest, AllocationsModeCountsRequestedSizesOnlyAndOffNothing)
{
    Track(MemoryTrackingMode::Off);
    TFree(TRealloc(TMalloc(100), 300));
    EXPECT_EQ(m_record.allocated + m_record.allocatedCount + m_record.deallocatedCount, 0u);
    SetMemoryTrackingMode(MemoryTrackingMode::Allocations);
    TFree(TMalloc(100));
    EXPECT_EQ(m_record.deallocated, 0u);
    EXPECT_EQ(m_record.used, 100);
    EXPECT_EQ(m_record.peakUsed, 100u);
    TFree(TRealloc(TCalloc(3, 7), 50)); // the reallocation is not counted
    EXPECT_EQ(m_record.allocated, 121u);
    EXPECT_EQ(m_record.allocatedCount, 2u);
}

TEST_F(MemoryTest, FullModeTakesTheOldBlockBackOutOfAllocated)
{
    Track(MemoryTrackingMode::Full);
    void* block = TMalloc(100);
    std::uint64_t const usable = GetPointerSize(block);
    ASSERT_GE(usable, 100u);
    block = TRealloc(block, 300);
    EXPECT_EQ(m_record.allocated, 100 - usable + 300);
    EXPECT_EQ(m_record.deallocated, 0u);
    EXPECT_EQ(m_record.used, 300);
    std::uint64_t const grown = GetPointerSize(block);
    TFree(block);
    EXPECT_EQ(m_record.deallocated, grown);
    EXPECT_EQ(m_record.allocatedCount, 2u);
    EXPECT_EQ(m_record.deallocatedCount, 2u);
    EXPECT_EQ(m_record.used, 0);
    EXPECT_EQ(m_record.peakUsed, 300u);
    TFree(nullptr);
    EXPECT_EQ(m_record.deallocatedCount, 2u);
}

TEST_F(MemoryTest, UsedNeverFallsBelowZeroAndHoldsTheLargestRequests)
{
    void* const before = TMalloc(1000);
    Track(MemoryTrackingMode::Full);
    TFree(before);
    EXPECT_EQ(m_record.used, 0);
    // Requests that fail are charged all the same.
    std::size_t volatile huge = std::numeric_limits<std::size_t>::max() - 100;
    EXPECT_EQ(TMalloc(huge), nullptr);
    EXPECT_EQ(m_record.used, std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(m_record.allocated, huge);
    EXPECT_EQ(m_record.allocatedCount, 1u);
}

TEST_F(MemoryTest, InjectedFailureHitsTheNthReallocationOfThisThreadOnly)
{
    void* block = TMalloc(10);
    std::memcpy(block, "123456789", 10);
    EXPECT_EQ(FailNthReallocation(2), 0u);
    std::thread([] { TFree(TRealloc(TRealloc(nullptr, 5), 6)); }).join();
    block = TRealloc(block, 20);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(TRealloc(block, 1 << 20), nullptr);
    EXPECT_STREQ(static_cast<char*>(block), "123456789");
    block = TRealloc(block, 1 << 20);
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(FailNthReallocation(5), 0u);
    EXPECT_EQ(FailNthReallocation(0), 5u);
    TFree(block);
}

TEST_F(MemoryTest, AccumulateFoldsWhatTheModeSays)
{
    ThreadMemoryCounters counts;
    counts.allocated = 10;
    counts.allocatedCount = 2;
    counts.deallocated = 7;
    counts.deallocatedCount = 1;
    counts.peakUsed = 9;
    MemoryCounter counter;
    using Totals = std::array<std::uint64_t, 5>;
    auto const totals = [](MemoryCounter const& of) {
        return Totals{of.Allocated(), of.AllocatedCount(), of.Deallocated(), of.DeallocatedCount(),
                      of.AllocatedPeakUsed()};
    };
    counter.Accumulate(counts, 100);
    EXPECT_EQ(totals(counter), Totals{});
    SetMemoryTrackingMode(MemoryTrackingMode::Allocations);
    counter.Accumulate(counts, 100);
    EXPECT_EQ(totals(counter), (Totals{10, 2, 0, 0, 0}));
    SetMemoryTrackingMode(MemoryTrackingMode::Full);
    counter.Accumulate(counts, 100);
    counter.Accumulate(counts, 1);
    EXPECT_EQ(totals(counter), (Totals{30, 6, 14, 2, 109}));
    MemoryCounter const copy(counter);
    counter.Reset();
    EXPECT_EQ(totals(counter), Totals{});
    EXPECT_EQ(totals(copy), (Totals{30, 6, 14, 2, 109}));
}

TEST_F(MemoryTest, PrintsPaddedTotals)
{
    MemoryCounter const counter;
    testing::internal::CaptureStdout();
    counter.PrintToConsole();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\n===\n  allocated=00000000,   allocatedCount=00000000,  allocatedPeakUsed=00000000\n"
              "deallocated=00000000, deallocatedCount=00000000\n");
}

// Three records pushed in order; each closes by popping with its own `next`, in every order there is.
TEST_F(MemoryTest, ScopesCloseInAnyOrder)
{
    for (auto const order : {"012", "021", "102", "120", "201", "210"}) {
        ThreadMemoryCounters records[3];
        for (auto& record : records) {
            record.orderingId = GetNextOrderingId();
            record.next = SwapPushMemoryCounters(&record);
        }
        for (char const* which = order; *which != 0; ++which) {
            ThreadMemoryCounters* const closing = &records[*which - '0'];
            EXPECT_EQ(SwapPopMemoryCounters(closing->next), closing) << order;
        }
        EXPECT_EQ(SwapPushMemoryCounters(nullptr), nullptr) << order;
    }
}

TEST_F(MemoryTest, OutOfOrderCloseUnlinksTheOuterRecord)
{
    ThreadMemoryCounters p, a, b;
    for (auto* record : {&p, &a, &b}) {
        record->orderingId = GetNextOrderingId();
        record->next = SwapPushMemoryCounters(record);
    }
    EXPECT_EQ(SwapPopMemoryCounters(&p), &a);
    EXPECT_EQ(b.next, &p);
    EXPECT_EQ(SwapPushMemoryCounters(&b), &b); // b stayed current
    EXPECT_EQ(SwapPopMemoryCounters(&p), &b);
    EXPECT_EQ(SwapPopMemoryCounters(nullptr), &p);
    EXPECT_EQ(SwapPopMemoryCounters(nullptr), nullptr);
}

TEST_F(MemoryTest, ScopesFoldWhatTheyChargedAndThePeakAboveTheEnclosingOne)
{
    SetMemoryTrackingMode(MemoryTrackingMode::Full);
    MemoryCounter outer;
    MemoryCounter inner;
    void* kept = nullptr;
    {
        MemoryScope const outerScope(outer);
        kept = TMalloc(1000);
        {
            MemoryScope const innerScope(inner);
            TFree(TMalloc(50));
        }
        TFree(TMalloc(10));
    }
    EXPECT_EQ(outer.Allocated(), 1010u);
    EXPECT_EQ(outer.AllocatedCount(), 2u);
    EXPECT_EQ(inner.Allocated(), 50u);
    EXPECT_EQ(inner.AllocatedPeakUsed(), 1050u);
    TFree(kept);
}

TEST_F(MemoryTest, ScopeEndedOnAnotherThreadLeavesBothThreadsUsable)
{
    SetMemoryTrackingMode(MemoryTrackingMode::Full);
    MemoryCounter counter;
    auto scope = std::make_unique<MemoryScope>(counter);
    std::thread([&] { scope.reset(); }).join();
    EXPECT_EQ(counter.AllocatedCount(), 0u);
    TFree(TMalloc(5)); // goes to the record that was left behind
    delete SwapPushMemoryCounters(nullptr);
}

TEST_F(MemoryTest, OrderingIdsAndRecordsArePerThread)
{
    SetMemoryTrackingMode(MemoryTrackingMode::Full);
    InParallel(4, [](int) {
        EXPECT_EQ(GetNextOrderingId(), 1u);
        EXPECT_EQ(GetNextOrderingId(), 2u);
        MemoryCounter counter;
        {
            MemoryScope const scope(counter);
            for (int n = 0; n < 1000; ++n) {
                TFree(TMalloc(16));
            }
        }
        EXPECT_EQ(counter.Allocated(), 16000u);
        EXPECT_EQ(counter.DeallocatedCount(), 1000u);
    });
}

} // namespace
