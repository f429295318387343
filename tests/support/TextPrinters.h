#pragma once
// Expectations on the exceptions that carry a message, and on the allocation of strings. (How GoogleTest shows our texts
// is the library's own business: <qvxsys/std.h>.)

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <qvxsys/qvxsys.h>

namespace testing_support {

/// The message of the TStringCore::Exception that `f` throws; "" when it throws none.
template<class F>
std::string TextError(F f)
{
    try {
        f();
    } catch (TStringCore::Exception const& e) {
        return e.toStdString();
    }
    return "";
}

/// The message of the std::runtime_error that `f` throws; "" when it throws none.
template<class F>
std::string RuntimeError(F f)
{
    try {
        f();
    } catch (std::runtime_error const& e) {
        return e.what();
    }
    return "";
}

/// Makes the n-th TRealloc of this thread fail while it lives.
class FailingReallocation
{
public:
    explicit FailingReallocation(unsigned nth) { quorvex::memory::FailNthReallocation(nth); }
    ~FailingReallocation() { quorvex::memory::FailNthReallocation(0); }
    FailingReallocation(FailingReallocation const&) = delete;
    FailingReallocation& operator=(FailingReallocation const&) = delete;
};

/// Counts the blocks that string code allocates and releases on this thread while it lives.
class LeakCheck
{
public:
    LeakCheck() : m_previous(quorvex::memory::SetMemoryTrackingMode(quorvex::memory::MemoryTrackingMode::Full))
    {
        m_record.orderingId = quorvex::memory::GetNextOrderingId();
        m_record.next = quorvex::memory::SwapPushMemoryCounters(&m_record);
    }
    ~LeakCheck()
    {
        quorvex::memory::SwapPopMemoryCounters(m_record.next);
        quorvex::memory::SetMemoryTrackingMode(m_previous);
    }
    LeakCheck(LeakCheck const&) = delete;
    LeakCheck& operator=(LeakCheck const&) = delete;

    /// Allocating calls so far.
    [[nodiscard]] unsigned Allocations() const noexcept { return m_record.allocatedCount; }
    /// Every block that was allocated has been released again.
    [[nodiscard]] bool Balanced() const noexcept { return m_record.allocatedCount == m_record.deallocatedCount; }

private:
    quorvex::memory::MemoryTrackingMode m_previous;
    quorvex::memory::ThreadMemoryCounters m_record;
};

} // namespace testing_support
