#include <qvxsys/TError.h>

#include <atomic>

#include <qvxsys/ErrorOrigin.h>
#include <qvxsys/QuorvexException.h>

#include "ErrorRecord.h"
#include "StackCapture.h"
#include "ThrowSite.h"

QuorvexError::QuorvexError(unsigned int code, TStringCore&& name) noexcept
    : m_code(code), m_codeName(static_cast<TStringCore&&>(name))
{}

QuorvexError QuorvexError::MakeError(unsigned int code, TStringCore name)
{
    return QuorvexError(code, static_cast<TStringCore&&>(name));
}

QuorvexError QuorvexError::NoError()
{
    return QuorvexError(0, TStringCore());
}

namespace TError {
namespace {

std::atomic<OriginHook> g_originHook = nullptr;

/// An ErrorInfo with what the hook recorded. Never seen by users as such, so that nothing depends on whether a hook is
/// set.
struct RecordedErrorInfo final : ErrorInfo
{
    explicit RecordedErrorInfo(ErrorInfo const& info) : ErrorInfo(info) {}

    ErrorOrigin origin;
};

} // namespace

ErrorInfo::ErrorInfo() : error(QuorvexError::NoError()), source(SourceNone)
{}

ErrorInfo::ErrorInfo(QuorvexError const& anError, ErrorSource aSource) : error(anError), source(aSource)
{}

ErrorInfo::ErrorInfo(QuorvexError const& anError, QuorvexException const& cause)
    : ErrorInfo(anError, cause, cause.GetErrorSource())
{}

ErrorInfo::ErrorInfo(QuorvexError const& anError, QuorvexException const& cause, ErrorSource aSource)
    : error(anError), source(aSource), inner(qvxsys::error::CopyRecord(cause.GetErrorInfo()))
{}

ErrorInfo::~ErrorInfo() = default;

ErrorInfo ErrorInfo::NoError()
{
    return ErrorInfo();
}

ErrorInfo ErrorInfo::TestError()
{
    return ErrorInfo(QuorvexError::NoError(), SourceTest);
}

LocatedErrorInfo::LocatedErrorInfo(ErrorInfo const& info, SourceLocation const& aLocation)
    : ErrorInfo(info), location(aLocation)
{}

LocatedErrorInfo::~LocatedErrorInfo() = default;

OriginHook SetOriginHook(OriginHook hook) noexcept
{
    return g_originHook.exchange(hook);
}

OriginHook GetOriginHook() noexcept
{
    return g_originHook.load(std::memory_order_acquire);
}

void RecordLocation(ErrorInfo const&, ErrorOrigin&) noexcept
{}

void RecordTrace(ErrorInfo const&, ErrorOrigin& origin) noexcept
{
    origin.frameCount = qvxsys::unwind::CaptureStack(origin.frames, ErrorOrigin::kMaxFrames, 1);
}

ErrorOrigin const* GetOrigin(ErrorInfo const& info) noexcept
{
    auto const* const recorded = dynamic_cast<RecordedErrorInfo const*>(&info);
    return recorded != nullptr ? &recorded->origin : nullptr;
}

} // namespace TError

namespace qvxsys::error {

TError::LocatedErrorInfo ThrowSite(std::uint32_t identifier, TError::ErrorSource source,
                                   TError::SourceLocation const& location)
{
    TStringCore name = u"QuorvexException_AutoGen_0x";
    for (int shift = 28; shift >= 0; shift -= 4) {
        name.append(u"0123456789ABCDEF"[(identifier >> shift) & 0xF]);
    }
    return TError::LocatedErrorInfo(
        TError::ErrorInfo(QuorvexError::MakeError(identifier, static_cast<TStringCore&&>(name)), source), location);
}

std::shared_ptr<TError::ErrorInfo> CopyRecord(TError::ErrorInfo const& info)
{
    if (auto const* const recorded = dynamic_cast<TError::RecordedErrorInfo const*>(&info)) {
        return std::make_shared<TError::RecordedErrorInfo>(*recorded);
    }
    return std::make_shared<TError::ErrorInfo>(info);
}

std::shared_ptr<TError::ErrorInfo> NewRecord(TError::ErrorInfo const& info)
{
    TError::OriginHook const hook = TError::GetOriginHook();
    if (hook == nullptr || TError::GetOrigin(info) != nullptr) {
        return CopyRecord(info);
    }
    auto record = std::make_shared<TError::RecordedErrorInfo>(info);
    if (auto const* const located = dynamic_cast<TError::LocatedErrorInfo const*>(&info)) {
        record->origin.location = located->location;
    }
    hook(*record, record->origin);
    return record;
}

} // namespace qvxsys::error
