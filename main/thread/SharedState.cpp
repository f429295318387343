#include <qvxsys/SharedState.h>

#include <utility>

#include <qvxsys/LogicException.h>

#include "ExecutionHook.h"
#include "HookSlot.h"

namespace AsyncTask {

namespace {

constexpr char const* kFile = "qvxsys/main/thread/SharedState";
constexpr int kCancelLine = 66;
constexpr int kReadyLine = 135;

constinit qvxsys::task::HookSlot<std::exception_ptr(std::exception_ptr)> g_exceptionHook;
constinit qvxsys::task::HookSlot<std::function<void()>(std::function<void()>, bool)> g_executionHook;
constinit qvxsys::task::HookSlot<void(std::weak_ptr<SharedStateBase>)> g_createdHook;

} // namespace

InvalidFutureException::InvalidFutureException(TError::ErrorInfo const& info) : QuorvexException(u"InvalidFuture", info)
{}

InvalidFutureException::~InvalidFutureException() = default;

QuorvexException* InvalidFutureException::Clone() const
{
    return new InvalidFutureException(*this);
}

void InvalidFutureException::Throw() const
{
    throw InvalidFutureException(*this);
}

IWrappedFuture::~IWrappedFuture() = default;

SharedStateBase::~SharedStateBase() = default;

bool SharedStateBase::IsReady() const
{
    return m_ready.IsSet();
}

void SharedStateBase::AddOnReadyCallback(void* key, std::function<void()> callback)
{
    m_ready.AddOnSignalCallback(key, std::move(callback));
}

void SharedStateBase::RemoveOnReadyCallback(void* key)
{
    m_ready.RemoveOnSignalCallback(key);
}

void SharedStateBase::SetException(std::exception_ptr exception) noexcept
{
    TLockScope const lock(m_exceptionMutex);
    if (m_exception == nullptr) {
        m_exception = std::move(exception);
        m_hasException.store(m_exception != nullptr, std::memory_order_release);
    }
}

std::exception_ptr SharedStateBase::GetRawException() const noexcept
{
    TLockScope const lock(m_exceptionMutex);
    return m_exception;
}

void SharedStateBase::RethrowException() const
{
    std::exception_ptr const stored = GetRawException();
    std::exception_ptr const hooked = _ApplyExceptionHook(stored);
    std::rethrow_exception(hooked != nullptr ? hooked : stored);
}

void SharedStateBase::NotReady()
{
    ThrowLogicException(kFile, kReadyLine, "m_ready->IsSet()");
}

bool SharedStateBase::MarkAsCancelled() noexcept
{
    TLockScope const lock(m_cancelMutex);
    return !m_cancelled.exchange(true, std::memory_order_acq_rel);
}

void SharedStateBase::SetOnCancelFunction(std::unique_ptr<std::function<void()>> function) noexcept
{
    // The previous one is destroyed after the lock.
    TLockScope const lock(m_cancelMutex);
    m_onCancel.swap(function);
}

void SharedStateBase::CallOnCancelFunctionWithoutEvent()
{
    std::function<void()> function;
    {
        TLockScope const lock(m_cancelMutex);
        if (m_cancel == nullptr && m_onCancel != nullptr) {
            function = *m_onCancel;
        }
    }
    if (function) {
        function();
    }
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface hands handles over by value
void SharedStateBase::SetCancelEvent(RefCntPtr<TCancelEvent> event)
{
    TLockScope const lock(m_cancelMutex);
    if (m_cancel != nullptr) {
        ThrowLogicException(kFile, kCancelLine, "!m_cancel");
        return;
    }
    m_cancel = event;
    if (m_onCancel != nullptr) {
        if (TCancelEvent const* const checked = event.operator->()) {
            checked->AddOnSignalCallback(this, *m_onCancel);
        }
    }
    if (IsCancelled()) {
        if (TCancelEvent const* const checked = event.operator->()) {
            checked->Signal();
        }
    }
}

void SharedStateBase::RemoveCancelOnSignalCallback()
{
    RefCntPtr<TCancelEvent> event;
    {
        TLockScope const lock(m_cancelMutex);
        event = m_cancel;
    }
    // Not under the lock: callbacks that run on another thread are waited for, and may need it.
    if (TCancelEvent const* const checked = event.operator->()) {
        checked->RemoveOnSignalCallback(this);
    }
}

void SharedStateBase::SignalCancelEventIfSet()
{
    RefCntPtr<TCancelEvent> event;
    {
        TLockScope const lock(m_cancelMutex);
        event = m_cancel;
    }
    if (event != nullptr) {
        event->Signal();
    }
}

void SetExceptionHook(std::function<std::exception_ptr(std::exception_ptr)> hook)
{
    g_exceptionHook.Set(std::move(hook));
}

std::exception_ptr _ApplyExceptionHook(std::exception_ptr exception)
{
    auto const hook = g_exceptionHook.Get();
    return hook != nullptr ? (*hook)(std::move(exception)) : exception;
}

void SetExecutionHook(std::function<std::function<void()>(std::function<void()>, bool)> hook)
{
    g_executionHook.Set(std::move(hook));
}

std::function<void()> _ApplyExecutionHook(std::function<void()> work, bool flag)
{
    auto const hook = g_executionHook.Get();
    return hook != nullptr ? (*hook)(std::move(work), flag) : work;
}

void SetOnSharedStateCreatedHook(std::function<void(std::weak_ptr<SharedStateBase>)> hook)
{
    g_createdHook.Set(std::move(hook));
}

void _ApplyOnSharedStateCreatedHook(std::weak_ptr<SharedStateBase> state)
{
    if (auto const hook = g_createdHook.Get()) {
        (*hook)(std::move(state));
    }
}

bool _HasOnSharedStateCreatedHook() noexcept
{
    return g_createdHook.IsSet();
}

} // namespace AsyncTask

namespace qvxsys::task {

bool HasExecutionHook() noexcept
{
    return AsyncTask::g_executionHook.IsSet();
}

} // namespace qvxsys::task
