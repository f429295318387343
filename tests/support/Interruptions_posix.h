#pragma once
// Threads that get one signal after another, for what must neither end early nor fail by them.

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

#include <pthread.h>

#include "support/Threads.h"

/// While it lives, SIGUSR1 does nothing but interrupt system calls.
class Interruptions
{
public:
    Interruptions()
    {
        struct sigaction action = {}; // without SA_RESTART
        action.sa_handler = [](int) { ++s_count; };
        sigaction(SIGUSR1, &action, &m_before);
    }
    ~Interruptions() { sigaction(SIGUSR1, &m_before, nullptr); }
    Interruptions(Interruptions const&) = delete;
    Interruptions& operator=(Interruptions const&) = delete;

    [[nodiscard]] static int Count() { return s_count; }

    /// Runs `wait` on a thread that is interrupted all the time; after some interruptions calls `end`.
    static void Run(std::function<void()> const& wait, std::function<void()> const& end)
    {
        std::atomic<bool> done = false;
        std::atomic<bool> begun = false;
        int const before = s_count;
        std::thread waiter([&] {
            begun = true;
            wait();
            done = true;
        });
        YieldUntil([&] { return begun.load(); });
        for (bool ended = false; !done;) {
            pthread_kill(waiter.native_handle(), SIGUSR1);
            std::this_thread::yield();
            if (!ended && s_count - before >= 100) {
                ended = true;
                end();
            }
        }
        waiter.join();
    }

private:
    static inline std::atomic<int> s_count = 0;
    struct sigaction m_before = {};
};
