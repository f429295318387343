#include "Failures.h"

#include <span>

#include <qvxsys/ErrorOrigin.h>
#include <qvxsys/Format.h>
#include <qvxsys/Symbols.h>

namespace qvx {
namespace {

char16_t const* NameOf(Failure failure) noexcept
{
    switch (failure) {
    case Failure::CannotAccess:
        return u"Qvx_CannotAccess";
    case Failure::CannotRead:
        return u"Qvx_CannotRead";
    case Failure::NotAFile:
        return u"Qvx_NotAFile";
    case Failure::NotText:
        return u"Qvx_NotText";
    case Failure::CannotDecode:
        return u"Qvx_CannotDecode";
    case Failure::CommandNotFound:
        return u"Qvx_CommandNotFound";
    case Failure::CannotRun:
        return u"Qvx_CannotRun";
    case Failure::CannotListen:
        return u"Qvx_CannotListen";
    case Failure::NoTerminal:
        break;
    }
    return u"Qvx_NoTerminal";
}

} // namespace

QuorvexUserErrorException MakeFailure(Failure failure, TStringCore const& message)
{
    constexpr auto source = static_cast<TError::ErrorSource>(6);
    QuorvexError const error = QuorvexError::MakeError(static_cast<unsigned>(failure), NameOf(failure));
    return {message, TError::ErrorInfo(error, source)};
}

TStringCore Describe(QuorvexException const& error)
{
    TStringCore const messages = TStringCore::join(error.GetMessagesVector(), u"; ");
    return error.GetErrorName().empty() ? messages : qvxsys::Format(u"%1 (%2)", messages, error.GetErrorName());
}

std::list<std::string> TraceOf(QuorvexException const& error)
{
    TError::ErrorOrigin const* const origin = TError::GetOrigin(error.GetErrorInfo());
    if (origin == nullptr) {
        return {};
    }
    StackWalkerConfig config;
    config.includeThreadInfo = 0;
    std::span<void* const> const frames(origin->frames, static_cast<std::size_t>(origin->frameCount));
    return quorvex::symbols::Format(frames, config, 0);
}

} // namespace qvx
