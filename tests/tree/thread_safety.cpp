// What Clang's analysis makes of the annotations: compiled with SCOPE it is right, without it an error.
#include <qvxsys/TLocks.h>

class Account
{
public:
    void Deposit(long amount)
    {
#if defined(SCOPE)
        TLockScope const lock(m_mutex);
        TReadLockScope const reading(m_lock);
#endif
        m_balance += amount * m_factor;
    }

private:
    TRecursiveMutex m_mutex;
    TReadWriteLock m_lock;
    long m_balance QVXSYS_GUARDED_BY(m_mutex) = 0;
    long m_factor QVXSYS_GUARDED_BY(m_lock) = 1;
};

void Use()
{
    Account().Deposit(1);
}
