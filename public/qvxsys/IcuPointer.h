#pragma once
// The template behind the owners of IcuHandles.h, for code that takes along one family of functions only.

#include <utility>

namespace QvxICU {

/// Owns one Handle, or none, and ends it with Close. The named forms below are meant to be used. Not thread-safe, as
/// what it owns is not.
template<class Handle, auto Close>
class ICULocalPointer
{
public:
    /// Owns it; null for none.
    explicit ICULocalPointer(Handle* handle = nullptr) noexcept : m_handle(handle) {}
    /// Takes over what the other owns.
    ICULocalPointer(ICULocalPointer&& other) noexcept : m_handle(other.orphan()) {}
    /// Closes what it owns, and takes over what the other owns.
    ICULocalPointer& operator=(ICULocalPointer&& other) noexcept
    {
        adoptInstead(other.orphan());
        return *this;
    }
    ~ICULocalPointer() { adoptInstead(nullptr); }

    /// What it owns, still owned; null if nothing.
    [[nodiscard]] Handle* getAlias() const noexcept { return m_handle; }
    /// Whether it owns something.
    [[nodiscard]] explicit operator bool() const noexcept { return m_handle != nullptr; }

    /// Gives what it owns to the caller, who closes it.
    [[nodiscard]] Handle* orphan() noexcept { return std::exchange(m_handle, nullptr); }

    /// Closes what it owns and owns `handle` instead.
    void adoptInstead(Handle* handle) noexcept
    {
        if (Handle* const old = std::exchange(m_handle, handle); old != nullptr && old != handle) {
            static_cast<void>(Close(old));
        }
    }

private:
    Handle* m_handle;
};

} // namespace QvxICU
