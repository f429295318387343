#pragma once
// Short forms for tests with threads.

#include <chrono>
#include <thread>
#include <type_traits>
#include <vector>

/// Scales the rounds of stress tests down where every memory access is watched.
#if defined(__SANITIZE_THREAD__)
inline constexpr int kStressDivisor = 10;
#else
inline constexpr int kStressDivisor = 1;
#endif

/// Long enough that only a lost wake-up reaches it.
inline constexpr std::chrono::milliseconds kLost = std::chrono::seconds(60);

/// What `function` returns, if anything, on a thread of its own.
template<class Function>
auto Elsewhere(Function function)
{
    if constexpr (std::is_void_v<decltype(function())>) {
        std::thread(function).join();
    } else {
        decltype(function()) result{};
        std::thread([&] { result = function(); }).join();
        return result;
    }
}

/// Runs `function(number)` on so many threads at once, and waits for their end.
template<class Function>
void InParallel(int threads, Function function)
{
    std::vector<std::jthread> running;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([function, i] { function(i); });
    }
}

/// Waits for what another thread is about to do, where nothing tells of it.
template<class Condition>
void YieldUntil(Condition condition)
{
    while (!condition()) {
        std::this_thread::yield();
    }
}

inline std::chrono::milliseconds Since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::floor<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}
