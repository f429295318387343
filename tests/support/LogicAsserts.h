#pragma once
// What failed checks say.

#include <optional>
#include <ostream>
#include <string>

#include <qvxsys/LogicException.h>

/// A failed check, its file, line and condition as given.
struct RaisedAssert
{
    std::string file;
    int line;
    std::string condition;

    bool operator==(RaisedAssert const&) const = default;
    friend std::ostream& operator<<(std::ostream& stream, RaisedAssert const& raised)
    {
        return stream << raised.file << ':' << raised.line << ": " << raised.condition;
    }
};

enum class HookThat { Throws, Returns };

/// The last check that fails in `action`, with a hook that throws or returns.
template<class Action>
std::optional<RaisedAssert> AssertRaisedBy(Action action, HookThat does = HookThat::Throws)
{
    static std::optional<RaisedAssert> raised;
    static bool throws;
    struct Unhook
    {
        ~Unhook() { AssertHooks::SetLogicAssertHook(nullptr); }
    } const unhook{};
    raised.reset();
    throws = does == HookThat::Throws;
    AssertHooks::SetLogicAssertHook([](char const* file, int line, char const* condition) {
        raised = RaisedAssert{file, line, condition};
        if (throws) {
            throw RaisedAssert(*raised);
        }
    });
    try {
        action();
    } catch (RaisedAssert const&) {
        // noted
    }
    return raised;
}
