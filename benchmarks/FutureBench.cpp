// Promises, futures and continuations on one thread, beside what people would use instead. All in a process that has
// had a second thread, so that reference counts are atomic for everybody, as they are in real programs.

#include <future>
#include <thread>

#include <qvxsys/Tasks.h>

#ifdef QVXSYS_BENCH_QT
#include <QFuture>
#include <QPromise>
#endif
#ifdef QVXSYS_BENCH_BOOST_THREAD
#define BOOST_THREAD_VERSION 5
#include <boost/thread/future.hpp>
#endif

#include "BenchSupport.h"

namespace {

using bench::Row;

char const* const kRound = "g6 promise and future";
char const* const kFailed = "g6 failed promise and future";
char const* const kThen = "g6 promise, future and one continuation";
char const* const kChain = "g6 promise, future and 16 continuations";
constexpr int kLinks = 16;

int AddOne(int value)
{
    return value + 1;
}

template<class MakePromise>
void RoundRow(char const* who, MakePromise make)
{
    Row(kRound, who, [make, value = 1]() mutable {
        benchmark::DoNotOptimize(value);
        auto promise = make();
        auto future = promise.get_future();
        promise.set_value(value);
        int result = future.get();
        benchmark::DoNotOptimize(result);
    });
}

template<class MakePromise>
void FailedRow(char const* who, MakePromise make)
{
    std::exception_ptr const exception = std::make_exception_ptr(1);
    Row(kFailed, who, [make, exception] {
        auto promise = make();
        auto future = promise.get_future();
        promise.set_exception(exception);
        try {
            benchmark::DoNotOptimize(future.get());
        } catch (int result) {
            benchmark::DoNotOptimize(result);
        }
    });
}

/// The standard's names for ours.
struct OwnPromise
{
    AsyncTask::Promise<int> promise;

    struct Future
    {
        AsyncTask::Future<int> future;
        int get() { return future.Get(); }
    };
    Future get_future() { return {promise.GetFuture()}; }
    void set_value(int value) { promise.SetValue(value); }
    void set_exception(std::exception_ptr exception) { promise.SetException(std::move(exception)); }
};

void OwnThen(char const* row, int links)
{
    Row(row, "own", [links, value = 1]() mutable {
        benchmark::DoNotOptimize(value);
        AsyncTask::Promise<int> promise;
        AsyncTask::Future<int> future = promise.GetFuture();
        for (int i = 0; i < links; ++i) {
            future = future.Then(AddOne);
        }
        promise.SetValue(value);
        int result = future.Get();
        benchmark::DoNotOptimize(result);
    });
}

#ifdef QVXSYS_BENCH_QT
void QtRows()
{
    Row(kRound, "QPromise", [value = 1]() mutable {
        benchmark::DoNotOptimize(value);
        QPromise<int> promise;
        promise.start();
        QFuture<int> future = promise.future();
        promise.addResult(value);
        promise.finish();
        int result = future.result();
        benchmark::DoNotOptimize(result);
    });
    for (auto const& [row, links] : {std::pair(kThen, 1), std::pair(kChain, kLinks)}) {
        Row(row, "QFuture", [links = links, value = 1]() mutable {
            benchmark::DoNotOptimize(value);
            QPromise<int> promise;
            promise.start();
            QFuture<int> future = promise.future();
            for (int i = 0; i < links; ++i) {
                future = future.then(AddOne);
            }
            promise.addResult(value);
            promise.finish();
            int result = future.result();
            benchmark::DoNotOptimize(result);
        });
    }
}
#endif

#ifdef QVXSYS_BENCH_BOOST_THREAD
void BoostRows()
{
    RoundRow("boost::promise", [] { return boost::promise<int>(); });
    for (auto const& [row, links] : {std::pair(kThen, 1), std::pair(kChain, kLinks)}) {
        Row(row, "boost::future", [links = links, value = 1]() mutable {
            benchmark::DoNotOptimize(value);
            boost::promise<int> promise;
            boost::future<int> future = promise.get_future();
            for (int i = 0; i < links; ++i) {
                future = future.then(boost::launch::sync, [](boost::future<int> f) { return AddOne(f.get()); });
            }
            promise.set_value(value);
            int result = future.get();
            benchmark::DoNotOptimize(result);
        });
    }
}
#endif

void RegisterRows()
{
    std::thread([] {}).join();
    RoundRow("own", [] { return OwnPromise(); });
    RoundRow("std::promise", [] { return std::promise<int>(); });
    FailedRow("own", [] { return OwnPromise(); });
    FailedRow("std::promise", [] { return std::promise<int>(); });
    OwnThen(kThen, 1);
    OwnThen(kChain, kLinks);
#ifdef QVXSYS_BENCH_QT
    QtRows();
#endif
#ifdef QVXSYS_BENCH_BOOST_THREAD
    BoostRows();
#endif
}

} // namespace

int main(int argc, char** argv)
{
    return bench::Main(argc, argv, RegisterRows);
}
