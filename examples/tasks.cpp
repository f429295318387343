// The examples of the headers of tasks: a pipeline whose errors carry their context, cancellation, a coroutine.

#include <iostream>
#include <vector>

#include <qvxsys/qvxsys.h>

using namespace AsyncTask;

namespace {

// A pipeline: each file is loaded and counted on the pool; a broken one ends as an error with what was being done.

TStringCore Load(TStringCore const& name)
{
    if (name.endsWith(u".broken")) {
        throw QuorvexException(u"unexpected end of file");
    }
    return name + u"\none line\nanother\n";
}

int CountLines(TStringCore const& text)
{
    return text.count(u'\n');
}

Future<int> LinesOf(TStringCore name)
{
    return Run(Launch::PoolQueued,
               [name] {
                   try {
                       return Load(name);
                   } catch (...) {
                       StackExceptionAndRethrow(TFormatStringCore(u"while loading \"%1\"").arg(name));
                   }
               })
        .Then(CountLines);
}

bool Pipeline()
{
    std::vector<Future<int>> counts;
    for (TStringCore const& name : {TStringCore(u"a.txt"), TStringCore(u"b.broken"), TStringCore(u"c.txt")}) {
        counts.push_back(LinesOf(name));
    }
    int lines = 0;
    TStringCore log;
    for (Future<int>& count : WhenAll(std::move(counts)).Get()) {
        try {
            lines += count.Get();
        } catch (QuorvexException const& e) {
            log += e.CollateMessagesForLog();
        }
    }
    std::cout << lines << " lines\n" << log.toStdString();
    return lines == 6 && log == u"unexpected end of file\nwhile loading \"b.broken\"\n";
}

// Cancellation: by the user, by a deadline.

int SumSlowly(TEvent const& begun)
{
    int result = 0;
    for (int i = 0;; ++i) {
        Cancel::ThrowIfCancelled(); // leaves by a CancelException
        result ^= i;
        begun.Signal();
    }
}

bool Cancellation()
{
    TEvent begun;
    Future<int> sum = Run({.launch = Launch::PoolQueued, .name = u"sum"}, SumSlowly, std::cref(begun));
    begun.Wait();
    sum.Cancel();
    Future<int> late = Run(Launch::Dedicated, SumSlowly, std::cref(begun));
    CancelAfter(late, std::chrono::milliseconds(20));
    int cancelled = 0;
    for (Future<int>* const future : {&sum, &late}) {
        try {
            future->Get();
        } catch (CancelException const& e) {
            cancelled += e.GetMessagesFront() == u"Canceled";
        }
    }
    return cancelled == 2;
}

// A coroutine that goes on on the pool and waits for other tasks without blocking a thread.

Future<int> CountLater(TStringCore name)
{
    co_await SwitchTo(Launch::PoolQueued); // on the pool from here on
    TStringCore const text = co_await Run(Launch::PoolQueued, Load, name);
    Cancel::ThrowIfCancelled();
    co_return CountLines(text);
}

bool Coroutine()
{
    return CountLater(u"d.txt").Get() == 3;
}

// A promise, for results that come from elsewhere.

bool Promised()
{
    Promise<int> promise;
    Future<TStringCore> text = promise.GetFuture().Then([](int value) { return qvxsys::Format(u"%1 files", value); });
    promise.SetValue(42);
    return text.Get() == u"42 files";
}

} // namespace

int main()
{
    TThreadPool::Configure(2, nullptr, nullptr, nullptr);
    bool const ok = Pipeline() && Cancellation() && Coroutine() && Promised();
    std::cout << (ok ? "ok\n" : "not as documented\n");
    TThreadPool::Shutdown(std::chrono::seconds(5));
    NonThreadPoolWorkerManager::Shutdown(std::chrono::seconds(5));
    return ok ? 0 : 1;
}
