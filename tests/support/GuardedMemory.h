#pragma once
// Memory between two pages that may not be touched, so that reading or writing one byte too far ends the test.

#include <cstddef>

class GuardedMemory
{
public:
    explicit GuardedMemory(std::size_t bytes);
    ~GuardedMemory();
    GuardedMemory(GuardedMemory const&) = delete;
    GuardedMemory& operator=(GuardedMemory const&) = delete;

    template<class T = char>
    T* Begin() const
    {
        return reinterpret_cast<T*>(begin_);
    }

    /// Room for `count` objects that ends where the memory ends.
    template<class T = char>
    T* Last(std::size_t count) const
    {
        return reinterpret_cast<T*>(begin_ + size_ - count * sizeof(T));
    }

private:
    std::size_t page_;
    std::size_t size_;
    char* begin_ = nullptr;
};
