// A system that refuses to put threads to sleep or to wake them: a seccomp filter in a child process.

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/TSemaphore.h>

#include "EventKinds.h"
#include "support/SystemCalls_linux.h"
#include "support/Threads.h"

using std::chrono::milliseconds;

namespace {

/// 0 when what `f` throws, or "", is the text.
int Differs(char const* expected, std::function<void()> const& f)
{
    std::string text;
    try {
        f();
    } catch (LogicException const& e) {
        text = e.GetInternalMessage().toStdString();
    } catch (QuorvexException const& e) {
        text = e.GetConcatenatedMessages().toStdString();
    }
    bool const same = *expected == '\0' ? text.empty() : text.find(expected) != std::string::npos;
    if (!same) {
        std::fprintf(stderr, "expected: %s\nbut: %s\n", expected, text.c_str());
    }
    return same ? 0 : 1;
}

#define SKIP_WITHOUT_FILTERS(status)                                                                                   \
    if ((status) == kNotPossible) {                                                                                    \
        GTEST_SKIP() << "seccomp filters are not available here";                                                      \
    }

TEST(Refused, ToSleep)
{
    int const status = InChild([] {
        Refuse(SYS_futex, EPERM, FUTEX_WAIT_BITSET_PRIVATE);
        int failed = 0;
        auto const semaphore = TSemaphore::Construct(0);
        failed += Differs("TSemaphore::Acquire: error=1\n", [&] { semaphore->Acquire(); });
        failed += semaphore->TryAcquire(60000);
        failed += Differs("at qvxsys/main/synchronize/TLocks line 161: "
                          "SleepConditionVariableCS(&m_cv, mutex.native_handle(), INFINITE)",
                          [] {
                              TReadWriteLock lock;
                              lock.LockRead();
                              lock.Lock();
                          });
        for (EventKind const& kind : kEventKinds) {
            auto const event = kind.make();
            failed += event->Wait() + event->Wait(kLost) + WaitForAny({event.get()}, kLost);
            failed += Differs("", [&] { event->Signal(); });
            failed += !event->Wait();
        }
        return failed;
    });
    SKIP_WITHOUT_FILTERS(status);
    EXPECT_EQ(status, 0);
}

/// Calls `wait` on a thread of its own, and returns when that sleeps.
void Sleep(std::function<void()> wait)
{
    std::atomic<long> thread = 0;
    std::thread([&thread, wait = std::move(wait)] {
        thread = syscall(SYS_gettid);
        wait();
    }).detach();
    YieldUntil([&] {
        std::ifstream in("/proc/self/task/" + std::to_string(thread) + "/stat");
        std::string state;
        return thread != 0 && in >> state >> state >> state && state == "S";
    });
}

TEST(Refused, ToWake)
{
    int const status = InChild([] {
        auto const semaphore = TSemaphore::Construct(0);
        Sleep([semaphore] { semaphore->Acquire(); });
        std::vector<std::shared_ptr<IEvent>> events;
        for (EventKind const& kind : kEventKinds) {
            events.push_back(kind.make());
            Sleep([event = events.back()] { event->Wait(); });
        }
        // The C++ runtime's first exception wakes threads as well, and takes no refusal.
        static_cast<void>(Differs("error", [] { static_cast<void>(TSemaphore::Construct(0xFFFFFFFF)); }));
        Refuse(SYS_futex, EPERM, FUTEX_WAKE_PRIVATE);
        int failed = Differs("TSemaphore::Release: error=1\n", [&] { semaphore->Release(); });
        for (auto const& event : events) {
            bool called = false;
            event->AddOnSignalCallback(&called, [&called] { called = true; });
            failed += Differs("at qvxsys/main/synchronize/TEventBase_win line 59: "
                              "SetEvent() failed with error: last error : 0x0000000000000001 Operation not permitted",
                              [&] { event->Signal(); });
            failed += called;
            event->RemoveOnSignalCallback(&called);
        }
        return failed;
    });
    SKIP_WITHOUT_FILTERS(status);
    EXPECT_EQ(status, 0);
}

} // namespace
