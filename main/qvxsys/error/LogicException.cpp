#include <qvxsys/LogicException.h>

#include <atomic>
#include <string>

#include <qvxsys/TFormatStringCore.h>

#include "ErrorPlatform.h"
#include "ThrowSite.h"

using qvxsys::error::ThrowSite;
using TError::ErrorInfo;

namespace {

std::atomic<AssertHooks::Hook> g_logicAssertHook = nullptr;
std::atomic<AssertHooks::Hook> g_debugAssertHook = nullptr;
std::atomic<unsigned int> g_logicExceptionMessageId = 0;

using Lookup = std::function<TStringCore(unsigned int)>;
// Null stands for the initial function. Never destroyed: threads may still fail a check while the process ends.
Lookup* g_lookup = nullptr;

TStringCore UserText()
{
    return g_lookup != nullptr ? (*g_lookup)(g_logicExceptionMessageId) : TStringCore(u"Internal error.");
}

TStringCore WithoutLineFeeds(TStringCore const& details)
{
    TStringView text = details.view();
    while (!text.empty() && text.data()[text.size() - 1] == u'\n') {
        text.truncate(text.length() - 1);
    }
    return text.length() == details.length() ? details : TStringCore(text);
}

} // namespace

namespace AssertHooks {

void SetLogicAssertHook(Hook hook) noexcept
{
    g_logicAssertHook = hook;
}

Hook GetLogicAssertHook() noexcept
{
    return g_logicAssertHook;
}

void SetDebugAssertHook(Hook hook) noexcept
{
    g_debugAssertHook = hook;
}

Hook GetDebugAssertHook() noexcept
{
    return g_debugAssertHook;
}

} // namespace AssertHooks

void ThrowLogicException(char const* file, int line, char const* condition)
{
    if (AssertHooks::Hook const hook = g_logicAssertHook) {
        hook(file, line, condition);
        return;
    }
    std::string text = "LogicAssert failed (but no hook has been set) at ";
    text.append(file != nullptr ? file : "").append(" line ").append(std::to_string(line)).append(": ");
    text.append(condition != nullptr ? condition : "");
    qvxsys::error::platform::DebugOutput(text.c_str());
    throw LogicException(TStringCore::fromStdString(text), ThrowSite(0xA2BCBC42));
}

void InjectLookupTStr(std::function<TStringCore(unsigned int)> lookup)
{
    auto const* const previous = g_lookup;
    g_lookup = new Lookup(static_cast<Lookup&&>(lookup));
    delete previous;
}

LogicException::LogicException(TStringCore const& details, ErrorInfo const& info)
    : QuorvexException(UserText(), info), m_internalMessage(WithoutLineFeeds(details))
{
    if (m_internalMessage.empty()) {
        m_internalMessage = u"No details given";
    }
}

LogicException::LogicException(TStringCore const& details, QuorvexError const& error)
    : LogicException(details, ErrorInfo(error, TError::SourceLibrary))
{}

LogicException::LogicException(TFormatStringCore const& details, ErrorInfo const& info)
    : LogicException(details.result(), info)
{}

LogicException::LogicException(TFormatStringCore const& details, QuorvexError const& error)
    : LogicException(details.result(), error)
{}

LogicException::LogicException(std::list<TStringCore> const& messages, TStringCore const& details)
    : QuorvexException(messages), m_internalMessage(WithoutLineFeeds(details))
{
    StackMessageFront(UserText());
}

LogicException::~LogicException() = default;

QuorvexException* LogicException::Clone() const
{
    return new LogicException(*this);
}

void LogicException::Throw() const
{
    throw LogicException(*this);
}

TStringCore LogicException::CollateMessagesForLog() const
{
    return TFormatStringCore(u"%1\nLogicException details: %2\n")
        .arg(GetConcatenatedMessages(), m_internalMessage)
        .result();
}

void LogicException::SetLogicExceptionMessageId(unsigned int id)
{
    unsigned int none = 0;
    if (!g_logicExceptionMessageId.compare_exchange_strong(none, id)) {
        throw LogicException(u"Cannot set the logic exception message id twice.", ErrorInfo::NoError());
    }
}
