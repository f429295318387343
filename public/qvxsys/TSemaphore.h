#pragma once
// A counting semaphore (TSemaphore) and the scope that holds one of its units (TSemaphoreScope).
//
//     RefCntPtr<TSemaphore> const connections = TSemaphore::Construct(4);
//     ...
//     auto const scope = MakeRefCnt<TSemaphoreScope>(connections, 100);          // waits 100 ms at most
//     if (scope->IsAcquired()) {
//         Query();                                                               // one of four at a time
//     }
//
// All operations may be called from any thread, and a unit may be returned by another thread than the one that took it.
// Without waiting, taking and returning a unit is one atomic instruction each. A thread that finds no unit spins for a
// few microseconds at most (see TLocks.h) and then sleeps. Who comes at the right moment is first.

#include <qvxsys/Platform.h>
#include <qvxsys/ReferenceCount.h>

/// At most 2,147,483,647 units. The object is 24 bytes and no system object; the last RefCntPtr deletes it, which is
/// safe as soon as Acquire has returned, even while the Release that it answers is still on its way out.
class QVXSYS_API TSemaphore : public RefCntObject
{
public:
    /// A semaphore with `initialCount` free units. Throws a QuorvexException, code 0x0D655B98, source 4, "TSemaphore::
    /// Construct: error=%1" (in one line) with the system's error code for an invalid argument (EINVAL, 22; on Windows
    /// ERROR_INVALID_PARAMETER, 87) when the count is above the maximum.
    [[nodiscard]] static RefCntPtr<TSemaphore> Construct(unsigned int initialCount);

    /// Takes a unit if one is free, without waiting.
    [[nodiscard]] virtual bool TryAcquire() = 0;
    /// Takes a unit, waiting `timeoutMs` milliseconds at most, never less; 0xFFFFFFFF waits without limit. False when
    /// there was none, or when the system refused to let the thread sleep.
    [[nodiscard]] virtual bool TryAcquire(unsigned int timeoutMs) = 0;
    /// Takes a unit, waiting without limit. Throws a QuorvexException, code 0x4B4D16D1, source 4, "TSemaphore::Acquire:
    /// error=%1" with the system's error code, when the system refuses to let the thread sleep.
    virtual void Acquire() = 0;
    /// Returns a unit. Throws a QuorvexException, code 0x26B5EE1F, source 4, "TSemaphore::Release: error=%1", when the
    /// semaphore has its maximum of units (EOVERFLOW, 75; on Windows ERROR_TOO_MANY_POSTS, 298), which does not change
    /// it, or when the system refuses to wake the thread that waits for the unit, with its error code.
    virtual void Release() = 0;

protected:
    TSemaphore() noexcept = default;
    ~TSemaphore() override;
};

/// Holds a unit from construction until the last RefCntPtr to the scope goes.
class QVXSYS_API TSemaphoreScope : public RefCntObject
{
public:
    /// Waits for a unit without limit. Throws what Acquire throws. A null pointer raises the logic assertion "m_ptr";
    /// if its hook returns, no unit is held.
    explicit TSemaphoreScope(RefCntPtr<TSemaphore> semaphore);
    /// Waits `timeoutMs` milliseconds at most. A null pointer as above.
    TSemaphoreScope(RefCntPtr<TSemaphore> semaphore, unsigned int timeoutMs);

    /// Whether a unit is held.
    [[nodiscard]] bool IsAcquired() const noexcept { return m_semaphore != nullptr; }

private:
    ~TSemaphoreScope() override;

    RefCntPtr<TSemaphore> m_semaphore;
};
