#pragma once
// Failed internal checks: where they go (AssertHooks, ThrowLogicException) and the exception they become
// (LogicException).
//
//     InjectLookupTStr([](unsigned int id) { return Translated(id); });          // at start, each optional
//     LogicException::SetLogicExceptionMessageId(4711);
//     AssertHooks::SetLogicAssertHook(&WriteDumpAndEnd);
//     ...
//     } catch (LogicException const& e) {
//         Show(e.GetMessagesFront());                          // "Internal error.", or what the lookup returned
//         Log(e.CollateMessagesForLog());                      // with file, line and condition
//     }
//
// The library's checks stay active in release builds. The file of a check is the source's path in the tree,
// "qvxsys/main/...".
//
// Hooks, message id and lookup are for the whole process and are not locked: set them before other threads use the
// library. Everything else may be called from any thread.

#include <functional>
#include <list>

#include <qvxsys/Platform.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/TStringCore.h>

namespace AssertHooks {

using Hook = void (*)(char const* file, int line, char const* condition);

/// Takes the place of throwing a LogicException. Should throw or end the process: when it returns, the code behind the
/// failed check runs on. Null removes it.
QVXSYS_API void SetLogicAssertHook(Hook hook) noexcept;
[[nodiscard]] QVXSYS_API Hook GetLogicAssertHook() noexcept;

/// Kept for the program's own debug assertions; the library never calls it.
QVXSYS_API void SetDebugAssertHook(Hook hook) noexcept;
[[nodiscard]] QVXSYS_API Hook GetDebugAssertHook() noexcept;

} // namespace AssertHooks

/// Every failed check ends here. With a logic-assert hook: calls it, and returns when it returns. Without one: writes
/// "LogicAssert failed (but no hook has been set) at FILE line LINE: CONDITION" to the debugger output (Windows) or the
/// standard error stream (elsewhere) and throws a LogicException with that text as its internal message, code
/// 0xA2BCBC42, source 4. File and condition are UTF-8; null counts as "".
QVXSYS_API void ThrowLogicException(char const* file, int line, char const* condition);

/// Replaces the function that finds the user's text for the message id. Initially "Internal error." for every id. With
/// an empty function, making a LogicException throws std::bad_function_call.
QVXSYS_API void InjectLookupTStr(std::function<TStringCore(unsigned int)> lookup);

/// A failed check. The user sees a generic message from the lookup function, which is the first of the messages; the
/// details go to logs only.
class QVXSYS_API LogicException : public QuorvexException
{
public:
    /// Details without the line feeds at their end; "No details given" when nothing is left. A QuorvexError comes with
    /// source 4.
    LogicException(TStringCore const& details, TError::ErrorInfo const& info);
    LogicException(TStringCore const& details, QuorvexError const& error);
    /// Throw what TFormatStringCore::result() throws.
    LogicException(TFormatStringCore const& details, TError::ErrorInfo const& info);
    LogicException(TFormatStringCore const& details, QuorvexError const& error);
    template<qvxsys::detail::MessageText P>
    LogicException(P const& details, TError::ErrorInfo const& info) : LogicException(TStringCore(details), info)
    {}
    template<qvxsys::detail::MessageText P>
    LogicException(P const& details, QuorvexError const& error) : LogicException(TStringCore(details), error)
    {}
    /// The looked-up message in front of the given ones; no error. Empty details stay empty here.
    LogicException(std::list<TStringCore> const& messages, TStringCore const& details);
    LogicException(LogicException const&) = default;
    LogicException& operator=(LogicException const&) = default;
    ~LogicException() override;

    [[nodiscard]] QuorvexException* Clone() const override;
    [[noreturn]] void Throw() const override;
    /// The concatenated messages, a line feed, "LogicException details: ", the details and a line feed.
    [[nodiscard]] TStringCore CollateMessagesForLog() const override;

    /// The details.
    [[nodiscard]] TStringCore const& GetInternalMessage() const noexcept QVXSYS_LIFETIME_BOUND
    {
        return m_internalMessage;
    }

    /// The id that the lookup function is called with; 0 before it is set. Can be set once to another value than 0:
    /// after that, throws a LogicException with the details "Cannot set the logic exception message id twice.".
    static void SetLogicExceptionMessageId(unsigned int id);

private:
    TStringCore m_internalMessage;
};
static_assert(sizeof(LogicException) == 72);
