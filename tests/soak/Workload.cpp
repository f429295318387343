#include "Workload.h"

#include <atomic>
#include <filesystem>
#include <iterator>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include <malloc.h>

#include <qvxsys/qvxsys.h>

namespace {

using namespace std::chrono_literals;
using namespace AsyncTask;
using Random = std::mt19937_64;

constexpr unsigned kDrivers = 3; ///< threads that start work, and cancel it
constexpr auto kRound = 500ms;

class Soak
{
public:
    void Round(std::chrono::steady_clock::time_point until, std::uint64_t seed)
    {
        std::vector<std::jthread> drivers;
        for (unsigned i = 0; i < kDrivers; ++i) {
            drivers.emplace_back([this, until, random = Random(seed * kDrivers + i)]() mutable {
                do {
                    One(random);
                } while (std::chrono::steady_clock::now() < until);
            });
        }
    }

    void Expect(bool holds, char const* what, long long is = 0, long long wanted = 0)
    {
        if (holds) {
            return;
        }
        std::scoped_lock const lock(m_mutex);
        if (m_result.faults.size() < 2000) {
            m_result.faults +=
                std::string(what) + ": " + std::to_string(is) + " instead of " + std::to_string(wanted) + "\n";
        }
    }

    /// Ends the threads and returns how much of the heap is in use without them. They start again when there is work.
    std::size_t Settle()
    {
        Expect(TThreadPool::Shutdown(1min), "the pool does not end");
        Expect(NonThreadPoolWorkerManager::Shutdown(1min), "dedicated threads do not end");
        auto const heap = mallinfo2();
        return heap.uordblks + heap.hblkhd;
    }

    bool HasFailed()
    {
        std::scoped_lock const lock(m_mutex);
        return !m_result.faults.empty();
    }

    SoakResult Result()
    {
        m_result.done = m_done;
        m_result.cancelled = m_cancelled;
        return m_result;
    }

private:
    void Equal(char const* what, long long is, long long wanted)
    {
        Expect(is == wanted, what, is, wanted);
        ++m_done;
    }

    void One(Random& random)
    {
        switch (random() % 7) {
        case 0:
            return Loop(random);
        case 1:
            return Texts(random);
        case 2:
            return Cancelled(random);
        case 3:
            return Countdown(random);
        case 4:
            return Semaphore(random);
        case 5:
            return Dedicated(random);
        default:
            return Tree(random);
        }
    }

    void Loop(Random& random)
    {
        auto const n = static_cast<long long>(random() % 100000);
        Equal("sum of a loop",
              ParallelReduce(
                  0LL, n, 0LL, [](long long i) { return i; }, std::plus<>()),
              n * (n - 1) / 2);
    }

    // Copies of one text go to several tasks, which change theirs.
    void Texts(Random& random)
    {
        TStringCore const text(u'a', static_cast<int>(random() % 200));
        std::vector<Future<int>> lengths;
        for (int i = 0; i < 4; ++i) {
            lengths.push_back(Run(Launch::PoolQueued, [copy = text, i]() mutable {
                copy.append(u"\U0001F600 and more").replace(u"a", u"bc");
                copy.insert(copy.length() / 2, TStringCore::number(i));
                return copy.length();
            }));
        }
        int sum = 0;
        for (Future<int>& length : WhenAll(std::move(lengths)).Get()) {
            sum += length.Get();
        }
        Equal("units of the texts", sum, 4 * (2 * text.length() + 13));
        Expect(text == TStringCore(u'a', text.length()), "a shared text has changed");
    }

    // A task that only ends when it is cancelled, or one that may be through before.
    void Cancelled(Random& random)
    {
        bool const endless = random() % 2 != 0;
        auto const steps = random() % 2000;
        auto task = Run(random() % 8 == 0 ? Launch::Dedicated : Launch::PoolQueued, [endless, steps] {
            unsigned long long done = 0;
            while (endless || done < steps) {
                Cancel::ThrowIfCancelled();
                ++done;
            }
            return done;
        });
        auto next = std::move(task).Then([](unsigned long long n) { return n + 1; });
        for (auto spins = random() % 20000; spins != 0; --spins) {
            __builtin_ia32_pause();
        }
        if (endless || random() % 2 != 0) {
            next.Cancel();
        }
        try {
            auto const value = next.Get();
            Equal("value of a task", static_cast<long long>(value), static_cast<long long>(steps) + 1);
            Expect(!endless, "an endless task has ended");
        } catch (CancelException const&) {
            ++m_cancelled;
        }
    }

    void Countdown(Random& random)
    {
        auto const n = static_cast<int>(random() % 20) + 1;
        // The tasks may still be leaving Signal when the wait is over.
        TCountdownEvent const event(static_cast<unsigned>(n));
        std::atomic<int> sum = 0;
        for (int i = 1; i <= n; ++i) {
            TThreadPool::Get().AddWork(
                [&, i] {
                    sum += i;
                    event.Signal();
                },
                TThreadPoolWork::Queue);
        }
        Expect(event.Wait(), "a countdown has not ended");
        Equal("sum of a countdown", sum, n * (n + 1) / 2);
    }

    void Semaphore(Random& random)
    {
        auto const semaphore = TSemaphore::Construct(2);
        std::atomic<int> inside = 0;
        std::atomic<int> most = 0;
        ParallelForThread(3, 0, random() % 64, [&](unsigned long long) {
            auto const scope = MakeRefCnt<TSemaphoreScope>(semaphore);
            int const now = ++inside;
            for (int seen = most; now > seen && !most.compare_exchange_weak(seen, now);) {
            }
            --inside;
        });
        Expect(most <= 2, "threads inside a semaphore", most, 2);
        Equal("threads left inside", inside, 0);
    }

    void Dedicated(Random& random)
    {
        TEvent const begin;
        TAutoResetEvent const turn;
        int count = 0;
        auto const n = static_cast<int>(random() % 50);
        auto other = Run(Launch::Dedicated, [&] {
            begin.Wait();
            for (int i = 0; i < n; ++i) {
                ++count;
                turn.Signal();
            }
            return count;
        });
        begin.Signal();
        Equal("turns of a thread", other.Get(), n);
        Expect(n == 0 || turn.Wait(1min), "a turn got lost");
    }

    // A cancellation reaches what hangs under it, at every depth.
    void Tree(Random& random)
    {
        auto const root = MakeRefCnt<TCancelEvent>();
        std::vector<RefCntPtr<TCancelEvent>> events = {root};
        for (auto n = random() % 30; n != 0; --n) {
            auto child = MakeRefCnt<TCancelEvent>();
            events[random() % events.size()]->Add(child);
            events.push_back(std::move(child));
        }
        std::atomic<int> called = 0;
        int key = 0;
        events.back()->AddOnSignalCallback(&key, [&] { ++called; });
        auto signal = Run(Launch::PoolQueued, [root] { root->Signal(); });
        Expect(events.back()->Wait(1min), "a cancellation got lost");
        signal.Get();
        events.back()->RemoveOnSignalCallback(&key);
        Equal("calls of a callback", called, 1);
    }

    std::mutex m_mutex;
    SoakResult m_result;
    std::atomic<unsigned long long> m_done = 0;
    std::atomic<unsigned long long> m_cancelled = 0;
};

} // namespace

unsigned OpenDescriptors()
{
    namespace fs = std::filesystem;
    return static_cast<unsigned>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

unsigned Threads(unsigned most)
{
    namespace fs = std::filesystem;
    auto const until = std::chrono::steady_clock::now() + 10s;
    for (;;) {
        auto const threads =
            static_cast<unsigned>(std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator()));
        if (threads <= most || std::chrono::steady_clock::now() > until) {
            return threads;
        }
        std::this_thread::yield();
    }
}

SoakResult RunSoak(std::chrono::steady_clock::time_point deadline, std::uint64_t seed)
{
    Soak soak;
    TThreadPool::Configure(2, nullptr, nullptr, [](TStringCore const&) {});
    std::size_t settled = 0; // heap in use when everything that is made once has been made
    unsigned rounds = 0;
    do {
        soak.Round(std::chrono::steady_clock::now() + kRound, seed + rounds);
        if (++rounds == 2) {
            settled = soak.Settle();
        }
        // A fault ends the process at once: later it may be killed, and nobody would hear of it.
    } while ((std::chrono::steady_clock::now() < deadline || rounds < 2) && !soak.HasFailed());
    std::size_t const inUse = soak.Settle();
    soak.Expect(inUse < settled + 32 * 1024 || rounds < 2, "bytes on the heap", static_cast<long long>(inUse),
                static_cast<long long>(settled));
    SoakResult result = soak.Result();
    result.rounds = rounds;
    return result;
}
