#pragma once
// What the tests of tasks share.

#include <gtest/gtest.h>

#include <qvxsys/AsyncTaskTls.h>
#include <qvxsys/LogicException.h>
#include <qvxsys/TEvent.h>
#include <qvxsys/TStringCore.h>

/// The check that fails in `body`, as "FILE LINE: CONDITION"; "" when none does. By a hook that throws, or, to see what
/// the code behind the check does, one that returns.
class FailedChecks
{
public:
    enum class Hook { Throws, Returns };

    template<class Body>
    static std::string In(Body const& body, Hook kind = Hook::Throws)
    {
        Found() = "";
        AssertHooks::Hook const before = AssertHooks::GetLogicAssertHook();
        AssertHooks::SetLogicAssertHook(kind == Hook::Throws ? &Throw : &Return);
        try {
            body();
        } catch (Thrown const&) {
        }
        AssertHooks::SetLogicAssertHook(before);
        return Found();
    }

private:
    struct Thrown
    {};
    static std::string& Found()
    {
        static std::string found;
        return found;
    }
    static void Return(char const* file, int line, char const* condition)
    {
        Found() = std::string(file) + " " + std::to_string(line) + ": " + condition;
    }
    static void Throw(char const* file, int line, char const* condition)
    {
        Return(file, line, condition);
        throw Thrown();
    }
};

/// Signals an event when its thread is about to sleep.
class TellsOfBlocking : public AsyncTask::IWaitHandler
{
public:
    explicit TellsOfBlocking(TEvent& event) : m_event(event) {}
    void BeforeBlocking(AsyncTask::SharedStateBase const&) noexcept override { m_event.Signal(); }
    void AfterBlocking(AsyncTask::SharedStateBase const&) noexcept override {}

private:
    TEvent& m_event;
};

/// The text of the exception that `body` throws, "" when it throws none.
template<class Exception, class Body>
TStringCore MessageOf(Body const& body)
{
    try {
        body();
    } catch (Exception const& e) {
        return e.GetMessagesFront();
    }
    return {};
}
