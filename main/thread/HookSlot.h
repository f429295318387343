#pragma once
// One process-wide hook. Without a hook, asking is one load. A hook may be replaced at any time, by itself too.

#include <atomic>
#include <functional>
#include <memory>

#include <qvxsys/TLocks.h>

namespace qvxsys::task {

template<class Signature>
class HookSlot
{
public:
    using Function = std::function<Signature>;

    constexpr HookSlot() noexcept = default;

    void Set(Function hook)
    {
        std::shared_ptr<Function const> fresh = hook ? std::make_shared<Function const>(std::move(hook)) : nullptr;
        TLockScope const lock(m_mutex);
        if (m_hook == nullptr) {
            m_hook = new std::shared_ptr<Function const>();
        }
        m_hook->swap(fresh); // the old one goes when the lock is given up: its destructor may come back here
        m_installed.store(*m_hook != nullptr, std::memory_order_release);
    }
    [[nodiscard]] bool IsSet() const noexcept { return m_installed.load(std::memory_order_acquire); }
    /// Null when there is none.
    [[nodiscard]] std::shared_ptr<Function const> Get() const
    {
        if (!IsSet()) [[likely]] {
            return nullptr;
        }
        TLockScope const lock(m_mutex);
        return *m_hook;
    }

private:
    std::atomic<bool> m_installed = false;
    mutable TRecursiveMutex m_mutex;
    // Never destroyed: threads may still ask while the process ends.
    std::shared_ptr<Function const>* m_hook QVXSYS_GUARDED_BY(m_mutex) = nullptr;
};

} // namespace qvxsys::task
