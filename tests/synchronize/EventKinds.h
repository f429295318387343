#pragma once
// The four kinds of events, for tests that hold for all of them.

#include <cstdio>
#include <memory>
#include <ostream>

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

/// In child processes that fail a check: the hook's text comes on standard error on every system.
inline void PrintFailedChecks()
{
    AssertHooks::SetLogicAssertHook([](char const* file, int line, char const* condition) {
        std::fprintf(stderr, "%s:%d: %s\n", file, line, condition);
        throw condition;
    });
}
