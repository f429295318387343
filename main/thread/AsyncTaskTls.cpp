#include <qvxsys/AsyncTaskTls.h>

#include <utility>

#include <qvxsys/LogicException.h>

#include "ThreadPlatform.h"
#include "ThreadRecord.h"

namespace {

constexpr char const* kFile = "qvxsys/main/thread/AsyncTaskTls";
constexpr int kDepthLine = 96;

void Release(void* event)
{
    static_cast<TCancelEvent const*>(event)->RemoveReference();
}

} // namespace

namespace AsyncTask {

IWaitHandler::~IWaitHandler() = default;

TLS TLS::Get() noexcept
{
    QVXSYS_TLS_INITIAL_EXEC static constinit thread_local Record t_record;
    return TLS(t_record);
}

unsigned long long TLS::GetDepth() const noexcept
{
    return m_record->depth;
}

void TLS::SetDepth(unsigned long long depth) noexcept
{
    m_record->depth = depth;
}

void TLS::IncrementDepth() noexcept
{
    ++m_record->depth;
}

void TLS::DecrementDepth()
{
    if (m_record->depth == 0) {
        ThrowLogicException(kFile, kDepthLine, "depth > 0");
        return;
    }
    --m_record->depth;
}

TCancelEvent* TLS::GetCancelEvent() const noexcept
{
    return m_record->cancel;
}

void TLS::SetCancelEvent(TCancelEvent const* event) noexcept
{
    m_record->cancel = const_cast<TCancelEvent*>(event);
    if (m_record->releasesAtEnd) {
        qvxsys::task::platform::ReleaseAtThreadEnd(m_record->cancel, &Release);
    }
}

void TLS::ReleaseAtThreadEnd() noexcept
{
    m_record->releasesAtEnd = true;
}

void (*TLS::GetThreadCleanupFunc() const noexcept)()
{
    return m_record->cleanup;
}

void TLS::SetThreadCleanupFunc(void (*function)()) noexcept
{
    m_record->cleanup = function;
}

IWaitHandler* TLS::GetWaitHandler() const noexcept
{
    return m_record->waitHandler;
}

void TLS::SetWaitHandler(IWaitHandler const* handler) noexcept
{
    m_record->waitHandler = const_cast<IWaitHandler*>(handler);
}

WaitHandlerScopeGuard::WaitHandlerScopeGuard(IWaitHandler* handler) noexcept : m_previous(TLS::Get().GetWaitHandler())
{
    TLS::Get().SetWaitHandler(handler);
}

WaitHandlerScopeGuard::~WaitHandlerScopeGuard()
{
    TLS::Get().SetWaitHandler(m_previous);
}

OwningWaitHandlerScopeGuard::OwningWaitHandlerScopeGuard(std::unique_ptr<IWaitHandler> handler) noexcept
    : m_handler(std::move(handler)), m_previous(TLS::Get().GetWaitHandler())
{
    TLS::Get().SetWaitHandler(m_handler.get());
}

OwningWaitHandlerScopeGuard::~OwningWaitHandlerScopeGuard()
{
    TLS::Get().SetWaitHandler(m_previous);
}

} // namespace AsyncTask

namespace qvxsys::task {

namespace {

QVXSYS_TLS_INITIAL_EXEC constinit thread_local bool t_poolThread = false;

} // namespace

void MarkPoolThread() noexcept
{
    t_poolThread = true;
}

bool IsMarkedPoolThread() noexcept
{
    return t_poolThread;
}

} // namespace qvxsys::task
