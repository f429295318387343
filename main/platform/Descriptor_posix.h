#pragma once
// A file descriptor that is closed with its owner.

#include <utility>

#include <unistd.h>

namespace qvxsys::platform {

/// Takes over a descriptor; a negative one is none.
class Descriptor
{
public:
    explicit Descriptor(int value = -1) noexcept : m_value(value) {}
    Descriptor(Descriptor&& other) noexcept : m_value(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_value, other.m_value);
        return *this;
    }
    ~Descriptor()
    {
        if (IsOpen()) {
            ::close(m_value);
        }
    }

    [[nodiscard]] bool IsOpen() const noexcept { return m_value >= 0; }
    [[nodiscard]] int Get() const noexcept { return m_value; }
    /// It is the caller's to close now.
    [[nodiscard]] int Release() noexcept { return std::exchange(m_value, -1); }

private:
    int m_value;
};

} // namespace qvxsys::platform
