#include <qvxsys/Cancel.h>

#include <utility>

#include <qvxsys/LogicException.h>

#include "ThrowSite.h"

using qvxsys::error::ThrowSite;

namespace AsyncTask {

namespace {

constexpr char const* kFile = "qvxsys/main/thread/Cancel";
constexpr int kCreateLine = 58;
constexpr int kSetLine = 80;
constexpr int kNonNullLine = 95;

} // namespace

CancelException::CancelException(TError::ErrorInfo const& info) : QuorvexException(u"Canceled", info)
{}

CancelException::CancelException(TStringCore const& message, TError::ErrorInfo const& info, bool isOrphanQuery)
    : QuorvexException(message, info), m_isOrphanQuery(isOrphanQuery)
{}

CancelException::CancelException(std::list<TStringCore> const& messages, TError::ErrorInfo const& info)
    : QuorvexException(messages, info)
{}

CancelException::~CancelException() = default;

QuorvexException* CancelException::Clone() const
{
    return new CancelException(*this);
}

void CancelException::Throw() const
{
    throw CancelException(*this);
}

void Cancel::Create()
{
    if (TLS::Get().GetCancelEvent() != nullptr) {
        ThrowLogicException(kFile, kCreateLine, "TLS::Get().GetCancelEvent() == nullptr");
        return;
    }
    Set(MakeRefCnt<TCancelEvent>());
}

RefCntPtr<TCancelEvent> Cancel::Get() noexcept
{
    return TLS::Get().GetCancelEvent();
}

TCancelEvent& Cancel::GetNonNull()
{
    TCancelEvent* const event = TLS::Get().GetCancelEvent();
    if (event == nullptr) {
        ThrowLogicException(kFile, kNonNullLine, "nullptr != ptr");
        static TCancelEvent& nobodys = *MakeRefCnt<TCancelEvent>().release(); // never destroyed
        return nobodys;
    }
    return *event;
}

void Cancel::Set(RefCntPtr<TCancelEvent> newCancelEvent)
{
    bool const isEvent = newCancelEvent != nullptr;
    TLS record = TLS::Get();
    if (isEvent) {
        record.ReleaseAtThreadEnd();
    }
    // Released at the end, whatever happens.
    RefCntPtr<TCancelEvent> const old(record.GetCancelEvent(), kAdoptReference);
    record.SetCancelEvent(newCancelEvent.release());
    if (old != nullptr && isEvent) {
        ThrowLogicException(kFile, kSetLine, "!newCancelEvent");
    }
}

void Cancel::ThrowIfCancelled()
{
    TCancelEvent const* event = TLS::Get().GetCancelEvent();
    if (event == nullptr) [[unlikely]] {
        event = RefCntPtr<TCancelEvent>().operator->();
    } else if (event->IsSet()) {
        throw MakeException();
    }
}

CancelException Cancel::MakeException()
{
    return CancelException(ThrowSite(0x94A93C32));
}

Cancel::CancelEventSetter::CancelEventSetter(RefCntPtr<TCancelEvent> event) : m_previous(Cancel::Get())
{
    Set(nullptr);
    Set(std::move(event));
}

Cancel::CancelEventSetter::~CancelEventSetter() noexcept(false)
{
    Set(nullptr);
    Set(m_previous);
}

Cancel::SuppressParentCancel::SuppressParentCancel() : CancelEventSetter(MakeRefCnt<TCancelEvent>())
{}

Cancel::SuppressParentCancel::~SuppressParentCancel() noexcept(false)
{
    if (TCancelEvent const* const parent = Previous().operator->()) {
        parent->Add(Cancel::Get());
    }
}

void Cancel::SuppressParentCancel::ClearPendingCancel()
{
    if (Previous() != nullptr) {
        Previous()->Reset();
    }
}

ScopedCancelImpersonation::ScopedCancelImpersonation(bool restore, RefCntPtr<TCancelEvent> outer,
                                                     std::shared_ptr<SharedStateBase> const& state)
    : m_outer(std::move(outer)), m_restore(restore)
{
    if (m_restore) {
        Cancel::Set(nullptr);
    }
    Cancel::Create();
    if (m_outer != nullptr && state != nullptr) {
        m_outer->AddOnSignalCallback(this, [state] { state->Cancel(); });
        if (m_outer->IsSet()) {
            state->Cancel();
        }
    }
}

ScopedCancelImpersonation::~ScopedCancelImpersonation()
{
    if (m_outer != nullptr) {
        m_outer->RemoveOnSignalCallback(this);
    }
    Cancel::Set(nullptr);
    if (m_restore) {
        Cancel::Set(std::move(m_outer));
    }
}

} // namespace AsyncTask
