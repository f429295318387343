#pragma once
// Thread pools with one face: a number of threads, Post(f), and a name. What `f` is must be copyable.

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include <qvxsys/TThreadPool.h>

#ifdef QVXSYS_BENCH_TBB
#include <tbb/concurrent_queue.h>
#include <tbb/global_control.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>
#endif
#ifdef QVXSYS_BENCH_QT
#include <QThreadPool>
#endif
#ifdef QVXSYS_BENCH_ASIO
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#endif

namespace bench {

class OwnPool
{
public:
    static constexpr char const* kName = "own";
    explicit OwnPool(unsigned int threads) : m_pool(threads, nullptr, nullptr) {}
    template<class F>
    void Post(F f)
    {
        m_pool.AddWork(std::move(f), TThreadPoolWork::Queue);
    }

private:
    TThreadPool m_pool;
};

/// What one writes in an afternoon.
class DequePool
{
public:
    static constexpr char const* kName = "mutex, deque, condition variable";
    explicit DequePool(unsigned int threads)
    {
        for (unsigned int i = 0; i < threads; ++i) {
            m_threads.emplace_back([this] { Run(); });
        }
    }
    ~DequePool()
    {
        {
            std::lock_guard const lock(m_mutex);
            m_closed = true;
        }
        m_changed.notify_all();
    }
    template<class F>
    void Post(F f)
    {
        {
            std::lock_guard const lock(m_mutex);
            m_items.emplace_back(std::move(f));
        }
        m_changed.notify_one();
    }

private:
    void Run()
    {
        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [this] { return m_closed || !m_items.empty(); });
            if (m_items.empty()) {
                return;
            }
            auto item = std::move(m_items.front());
            m_items.pop_front();
            lock.unlock();
            item();
            lock.lock();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_items;
    bool m_closed = false;
    std::vector<std::jthread> m_threads;
};

#ifdef QVXSYS_BENCH_TBB
/// Its worker threads are shared by all arenas; one slot is for the caller, who does not join in.
class ArenaPool
{
public:
    static constexpr char const* kName = "TBB task_arena";
    explicit ArenaPool(unsigned int threads)
        : m_most(tbb::global_control::max_allowed_parallelism, threads + 1), m_arena(static_cast<int>(threads), 0)
    {
        m_arena.initialize();
    }
    template<class F>
    void Post(F f)
    {
        m_arena.enqueue(std::move(f));
    }

private:
    tbb::global_control m_most;
    tbb::task_arena m_arena;
};

class TaskGroupPool
{
public:
    static constexpr char const* kName = "TBB task_group";
    explicit TaskGroupPool(unsigned int threads)
        : m_most(tbb::global_control::max_allowed_parallelism, threads + 1), m_arena(static_cast<int>(threads + 1))
    {}
    ~TaskGroupPool()
    {
        m_arena.execute([this] { m_group.wait(); });
    }
    template<class F>
    void Post(F f)
    {
        m_arena.execute([this, &f] { m_group.run(std::move(f)); });
    }

private:
    tbb::global_control m_most;
    tbb::task_arena m_arena;
    tbb::task_group m_group;
};

class BoundedQueuePool
{
public:
    static constexpr char const* kName = "TBB concurrent_bounded_queue";
    explicit BoundedQueuePool(unsigned int threads)
    {
        for (unsigned int i = 0; i < threads; ++i) {
            m_threads.emplace_back([this] {
                std::function<void()> item;
                for (m_queue.pop(item); item; m_queue.pop(item)) {
                    item();
                }
            });
        }
    }
    ~BoundedQueuePool()
    {
        for (std::size_t i = 0; i < m_threads.size(); ++i) {
            m_queue.push(nullptr);
        }
    }
    template<class F>
    void Post(F f)
    {
        m_queue.push(std::move(f));
    }

private:
    tbb::concurrent_bounded_queue<std::function<void()>> m_queue;
    std::vector<std::jthread> m_threads;
};
#endif

#ifdef QVXSYS_BENCH_QT
class QtPool
{
public:
    static constexpr char const* kName = "QThreadPool";
    explicit QtPool(unsigned int threads) { m_pool.setMaxThreadCount(static_cast<int>(threads)); }
    template<class F>
    void Post(F f)
    {
        m_pool.start(std::move(f));
    }

private:
    QThreadPool m_pool;
};
#endif

#ifdef QVXSYS_BENCH_ASIO
class AsioPool
{
public:
    static constexpr char const* kName = "asio thread_pool";
    explicit AsioPool(unsigned int threads) : m_pool(threads) {}
    ~AsioPool() { m_pool.join(); }
    template<class F>
    void Post(F f)
    {
        boost::asio::post(m_pool, std::move(f));
    }

private:
    boost::asio::thread_pool m_pool;
};
#endif

/// Calls `f.template operator()<Pool>()` for each.
template<class F>
void ForEachPool(F const& f)
{
    f.template operator()<OwnPool>();
    f.template operator()<DequePool>();
#ifdef QVXSYS_BENCH_TBB
    f.template operator()<ArenaPool>();
    f.template operator()<TaskGroupPool>();
    f.template operator()<BoundedQueuePool>();
#endif
#ifdef QVXSYS_BENCH_QT
    f.template operator()<QtPool>();
#endif
#ifdef QVXSYS_BENCH_ASIO
    f.template operator()<AsioPool>();
#endif
}

} // namespace bench
