// The examples of TLocks.h, TSemaphore.h, TEvent.h and ThreadAnnotations.h.

#include <iostream>
#include <map>
#include <thread>

#include <qvxsys/qvxsys.h>

namespace {

TReadWriteLock g_lock;
std::map<int, TStringCore> g_names QVXSYS_GUARDED_BY(g_lock) = {{1, u"one"}};

TStringCore NameOf(int id)
{
    TReadLockScope const lock(g_lock);
    auto const found = g_names.find(id);
    return found != g_names.end() ? found->second : TStringCore();
}

class Account
{
public:
    void Deposit(long amount)
    {
        TLockScope const lock(m_mutex); // without it: warning under Clang
        m_balance += amount;
    }
    long Balance()
    {
        TLockScope const lock(m_mutex);
        return m_balance;
    }

private:
    TRecursiveMutex m_mutex;
    long m_balance QVXSYS_GUARDED_BY(m_mutex) = 0;
};

/// At most two threads at a time deposit; the last one of three tells.
long Deposits()
{
    Account account;
    TCountdownEvent all(3);
    RefCntPtr<TSemaphore> const tellers = TSemaphore::Construct(2);
    std::jthread threads[3];
    for (auto& thread : threads) {
        thread = std::jthread([&] {
            {
                auto const scope = MakeRefCnt<TSemaphoreScope>(tellers);
                account.Deposit(100);
            }
            all.Signal();
        });
    }
    all.Wait();
    return account.Balance();
}

/// Cancelling a whole reaches its parts, and whoever waits for several events learns which it was.
bool CancelReachesWorker()
{
    RefCntPtr<TCancelEvent> const all = MakeRefCnt<TCancelEvent>();
    RefCntPtr<TCancelEvent> const one = MakeRefCnt<TCancelEvent>();
    all->Add(one);
    TAutoResetEvent work;
    unsigned int which = 0;
    std::jthread const worker([&] { WaitForAny({&work, one.get()}, std::chrono::seconds(60), which); });
    all->Signal();
    return one->Wait(std::chrono::seconds(60));
}

} // namespace

int main()
{
    long const balance = Deposits();
    std::cout << NameOf(1).toStdString() << ' ' << balance << '\n';
    return NameOf(1) == u"one" && NameOf(2).isEmpty() && balance == 300 && CancelReachesWorker() ? 0 : 1;
}
