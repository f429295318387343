#include <qvxsys/TLocks.h>

#include <mutex>

#include <qvxsys/LogicException.h>

#include "Parking.h"
#include "Waiting.h"

using qvxsys::sync::Parked;
using qvxsys::sync::SystemParking;

namespace {

constexpr char const* kFile = "qvxsys/main/synchronize/TLocks";
constexpr int kSleepLine = 161;
constexpr int kWriterLine = 228;
constexpr int kReaderLine = 249;

} // namespace

void TRecursiveMutex::LockContended() noexcept
{
    qvxsys::sync::LockContended<SystemParking>(m_word);
}

void TRecursiveMutex::Wake(void const* address) noexcept
{
    SystemParking::WakeOne(address);
}

void TReadWriteLock::Lock()
{
    m_mutex.Lock();
    if (!m_counts.IsIdle() || !m_counts.TryWriting(Word::kWriter)) {
        std::unique_lock held(m_mutex, std::adopt_lock);
        if (Word::Writers(m_counts.Load()) >= kMostWriters) {
            ThrowLogicException(kFile, kWriterLine,
                                "m_writerCount < std::numeric_limits<decltype(m_writerCount)>::max()");
        }
        m_counts.EnterAsWriter();
        // Who writes already waits for nobody: readers that it finds are its own, or are about to be turned away, and
        // neither wake it when they leave.
        while (m_entries == 0 && !m_counts.TryWriting()) {
            WaitForReaders();
        }
        held.release();
    }
    ++m_entries;
}

/// Called and left with the mutex held, which is free meanwhile: readers and writers come in. Counts the writer out
/// when it throws.
void TReadWriteLock::WaitForReaders()
{
    std::uint64_t const seen = m_counts.Load();
    if (Word::Readers(seen) == 0) {
        return;
    }
    m_mutex.Unlock();
    Parked const parked = SystemParking::Park(m_counts.Address(), static_cast<std::uint32_t>(seen >> 32), {});
    m_mutex.Lock();
    if (parked == Parked::Refused) {
        try {
            ThrowLogicException(kFile, kSleepLine, "SleepConditionVariableCS(&m_cv, mutex.native_handle(), INFINITE)");
        } catch (...) {
            static_cast<void>(m_counts.LeaveAsWriter(false));
            throw;
        }
    }
}

void TReadWriteLock::Unlock() noexcept
{
    --m_entries;
    bool const last = m_entries == 0;
    bool const wake = m_counts.LeaveAsWriter(last) && last;
    void const* const address = m_counts.Address();
    m_mutex.Unlock();
    if (wake) {
        WakeWriter(address);
    }
}

bool TReadWriteLock::TryLock()
{
    if (!m_mutex.TryLock()) {
        return false;
    }
    std::unique_lock held(m_mutex, std::adopt_lock);
    if (Word::Writers(m_counts.Load()) >= kMostWriters) {
        return false;
    }
    if (m_entries != 0) {
        m_counts.EnterAsWriter();
    } else if (!m_counts.TryWriting(Word::kWriter)) {
        return false;
    }
    held.release();
    ++m_entries;
    return true;
}

void TReadWriteLock::LockReadSlowly()
{
    UnlockRead(); // the attempt
    std::lock_guard const lock(m_mutex);
    // Nobody else writes now.
    if (Word::Readers(m_counts.Load()) >= kMostReaders) {
        ThrowLogicException(kFile, kReaderLine, "m_readerCount < std::numeric_limits<decltype(m_readerCount)>::max()");
    }
    m_counts.EnterAsReader();
}

bool TReadWriteLock::TryLockRead()
{
    if (m_counts.TryEnterAsReader(kMostReaders)) {
        return true;
    }
    if (!m_mutex.IsHeldByThisThread() || Word::Readers(m_counts.Load()) >= kMostReaders) {
        return false;
    }
    m_counts.EnterAsReader();
    return true;
}

void TReadWriteLock::WakeWriter(void const* address) noexcept
{
    SystemParking::WakeOne(address);
}
