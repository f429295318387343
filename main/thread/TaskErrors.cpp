// The exceptions of futures and promises.

#include <qvxsys/Promise.h>

#include "ThrowSite.h"

namespace AsyncTask {

using qvxsys::error::ThrowSite;

BrokenPromiseException::BrokenPromiseException(TStringCore const& message, TError::ErrorInfo const& info)
    : QuorvexException(message, info)
{}

BrokenPromiseException::~BrokenPromiseException() = default;

QuorvexException* BrokenPromiseException::Clone() const
{
    return new BrokenPromiseException(*this);
}

void BrokenPromiseException::Throw() const
{
    throw BrokenPromiseException(*this);
}

PromiseException::PromiseException(TStringCore const& message, TError::ErrorInfo const& info)
    : QuorvexException(message, info)
{}

PromiseException::~PromiseException() = default;

QuorvexException* PromiseException::Clone() const
{
    return new PromiseException(*this);
}

void PromiseException::Throw() const
{
    throw PromiseException(*this);
}

WaitCycleException::WaitCycleException(TStringCore const& message, TError::ErrorInfo const& info)
    : QuorvexException(message, info)
{}

WaitCycleException::~WaitCycleException() = default;

QuorvexException* WaitCycleException::Clone() const
{
    return new WaitCycleException(*this);
}

void WaitCycleException::Throw() const
{
    throw WaitCycleException(*this);
}

namespace detail {

void ThrowInvalidFuture()
{
    throw InvalidFutureException(ThrowSite(0x8B9C0847));
}

void ThrowAlreadySet()
{
    throw PromiseException(u"AsyncTask::Promise: the result has been set already.", ThrowSite(0x6D400ED8));
}

void ThrowFutureTaken()
{
    throw PromiseException(u"AsyncTask::Promise: the future has been taken already.", ThrowSite(0xE206C910));
}

void ThrowNoPromise()
{
    throw PromiseException(u"AsyncTask::Promise: no state.", ThrowSite(0x3EA69197));
}

void BreakPromise(TaskState& state) noexcept
{
    state.Fail(std::make_exception_ptr(
        BrokenPromiseException(u"AsyncTask::Promise: destroyed without a result.", ThrowSite(0x0B15A750))));
}

} // namespace detail

} // namespace AsyncTask
