#include <qvxsys/TSemaphore.h>

#include <qvxsys/LogicException.h>
#include <qvxsys/QuorvexException.h>
#include <qvxsys/TFormatStringCore.h>

#include "Deadlines.h"
#include "Parking.h"
#include "SystemPlatform.h"
#include "ThrowSite.h"
#include "Waiting.h"

namespace {

using namespace qvxsys::sync;
using qvxsys::error::ThrowSite;
using qvxsys::system::platform::LastError;

TStringCore Message(TStringView text, unsigned long code)
{
    return TFormatStringCore(text).arg(code).result();
}

class WordSemaphore final : public TSemaphore
{
public:
    explicit WordSemaphore(std::uint32_t units) noexcept : m_word(units) {}

    bool TryAcquire() override { return m_word.TryAcquire(); }

    bool TryAcquire(unsigned int timeoutMs) override
    {
        return m_word.TryAcquire() || (timeoutMs != 0 && Wait(DeadlineIn(timeoutMs)) == Waited::Success);
    }

    void Acquire() override
    {
        if (!m_word.TryAcquire() && Wait({}) == Waited::Refused) {
            throw QuorvexException(Message(u"TSemaphore::Acquire: error=%1", LastError()), ThrowSite(0x4B4D16D1));
        }
    }

    void Release() override
    {
        // The object may be gone once the unit is there.
        void const* const address = m_word.Address();
        switch (m_word.Release()) {
        case SemaphoreWord::Released::Quietly:
            return;
        case SemaphoreWord::Released::WakeOne:
            if (!SystemParking::WakeOne(address)) {
                ThrowNotReleased(LastError());
            }
            return;
        case SemaphoreWord::Released::AtMaximum:
            ThrowNotReleased(CodeOf(SystemError::SemaphoreOverflow));
        }
    }

private:
    Waited Wait(Deadline const& deadline) noexcept { return AcquireSlowly<SystemParking>(m_word, deadline); }

    [[noreturn]] static void ThrowNotReleased(unsigned long code)
    {
        throw QuorvexException(Message(u"TSemaphore::Release: error=%1", code), ThrowSite(0x26B5EE1F));
    }

    SemaphoreWord m_word;
};

static_assert(sizeof(WordSemaphore) == 24);

} // namespace

RefCntPtr<TSemaphore> TSemaphore::Construct(unsigned int initialCount)
{
    if (initialCount > SemaphoreWord::kMaximum) {
        throw QuorvexException(Message(u"TSemaphore::Construct: error=%1", CodeOf(SystemError::InvalidArgument)),
                               ThrowSite(0x0D655B98));
    }
    return MakeRefCnt<WordSemaphore>(initialCount);
}

TSemaphore::~TSemaphore() = default;

TSemaphoreScope::TSemaphoreScope(RefCntPtr<TSemaphore> semaphore) : m_semaphore(std::move(semaphore))
{
    if (TSemaphore* const held = m_semaphore.operator->()) {
        held->Acquire();
    }
}

TSemaphoreScope::TSemaphoreScope(RefCntPtr<TSemaphore> semaphore, unsigned int timeoutMs)
{
    TSemaphore* const wanted = semaphore.operator->();
    if (wanted != nullptr && wanted->TryAcquire(timeoutMs)) {
        m_semaphore = std::move(semaphore);
    }
}

TSemaphoreScope::~TSemaphoreScope()
{
    if (m_semaphore != nullptr) {
        m_semaphore->Release();
    }
}
