// The examples of the headers of thread pools, loops, executors and timers.

#include <atomic>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <vector>

#include <qvxsys/qvxsys.h>

namespace {

std::atomic<int> g_indexed = 0;

void Index(int /*file*/)
{
    ++g_indexed;
}

bool Pool()
{
    constexpr int kFiles = 100;
    for (int file = 0; file < kFiles; ++file) {
        if (!TThreadPool::Get().AddWork([file] { Index(file); }, TThreadPoolWork::IfIdle)) {
            Index(file); // every thread is busy: here, then
        }
    }
    TEvent tidied;
    TThreadPool::Get().AddWork([&tidied] { tidied.Signal(); }, TThreadPoolWork::Queue);
    tidied.Wait();
    NonThreadPoolWorkerManager::Get().RunTask([] { Index(kFiles); });
    bool const joined =
        TThreadPool::Shutdown(std::chrono::seconds(5)) && NonThreadPoolWorkerManager::Shutdown(std::chrono::seconds(5));
    return joined && g_indexed == kFiles + 1;
}

bool Loops()
{
    std::vector<int> results(10'000);
    AsyncTask::ParallelFor(std::size_t(0), results.size(),
                           [&](std::size_t i) { results[i] = std::abs(5000 - int(i)); });
    long long const total = AsyncTask::ParallelReduce(
        std::size_t(0), results.size(), 0LL, [&](std::size_t i) { return static_cast<long long>(results[i]); },
        std::plus<>());
    return total == 25'000'000;
}

/// A program's own, to be tested without threads and without waiting.
class Service
{
public:
    void LoadInBackground()
    {
        AsyncTask::ScheduleOnThreadPool([this] { m_loaded = true; }, AsyncTask::Launch::PoolQueued);
    }
    void StartWithDeadline(std::chrono::milliseconds time)
    {
        AsyncTask::CallAfter(time, [this] { m_givenUp = !m_loaded; });
    }
    [[nodiscard]] bool IsLoaded() const { return m_loaded; }
    [[nodiscard]] bool HasGivenUp() const { return m_givenUp; }

private:
    bool m_loaded = false;
    bool m_givenUp = false;
};

bool Test()
{
    AsyncTask::ManualExecutor executor; // in place of pool and threads, while it lives
    AsyncTask::ManualClock clock;
    Service service;
    service.StartWithDeadline(std::chrono::seconds(30));
    clock.Advance(std::chrono::seconds(30));
    bool const gaveUp = service.HasGivenUp();
    service.LoadInBackground();
    bool const early = service.IsLoaded();
    executor.RunAll();
    return gaveUp && !early && service.IsLoaded();
}

} // namespace

int main()
{
    TThreadPool::Configure(4, nullptr, nullptr,
                           [](TStringCore const& line) { std::cout << line.toStdString() << '\n'; });
    return Pool() && Loops() && Test() && TThreadPool::Shutdown(std::chrono::seconds(5)) ? 0 : 1;
}
