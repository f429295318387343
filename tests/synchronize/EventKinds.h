#pragma once
// The four kinds of events, for tests that hold for all of them.

#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <ostream>
#include <vector>

#include <qvxsys/LogicException.h>
#include <qvxsys/TEvent.h>

/// Makes events that one signal sets.
struct EventKind
{
    char const* name;
    bool autoReset;
    std::shared_ptr<IEvent> (*make)();

    friend std::ostream& operator<<(std::ostream& stream, EventKind const& kind) { return stream << kind.name; }
};

inline std::shared_ptr<IEvent> Shared(RefCntPtr<TCancelEvent> event)
{
    IEvent* const plain = event.get();
    return {plain, [event = std::move(event)](IEvent*) mutable { event.reset(); }};
}

inline constexpr EventKind kEventKinds[] = {
    {"TEvent", false, []() -> std::shared_ptr<IEvent> { return std::make_shared<TEvent>(); }},
    {"TAutoResetEvent", true, []() -> std::shared_ptr<IEvent> { return std::make_shared<TAutoResetEvent>(); }},
    {"TCountdownEvent", false, []() -> std::shared_ptr<IEvent> { return std::make_shared<TCountdownEvent>(1); }},
    {"TCancelEvent", false, [] { return Shared(MakeRefCnt<TCancelEvent>()); }},
};

using TimedWait = std::function<bool(std::chrono::milliseconds)>;

/// All waits for many events, the one that ends at once for none of them last.
inline std::vector<TimedWait> WaitsForMany(std::vector<IEvent*> const& events)
{
    return {[events](auto time) { return WaitForAll(events, time); },
            [events](auto time) { return WaitForAny(events, time); },
            [events, index = 0U](auto time) mutable { return WaitForAny(events, time, index); },
            [events](auto time) { return WaitForAnyExact(events, time).has_value(); },
            [events](auto time) { return WaitForAllExact(events, time); }};
}

/// In child processes that fail a check: the hook's text comes on standard error on every system.
inline void PrintFailedChecks()
{
    AssertHooks::SetLogicAssertHook([](char const* file, int line, char const* condition) {
        std::fprintf(stderr, "%s:%d: %s\n", file, line, condition);
        throw condition;
    });
}
