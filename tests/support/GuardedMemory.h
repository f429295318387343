#pragma once
// Memory between two pages that may not be touched, so that reading or writing one byte too far ends the test.

#include <cstddef>
#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>

class GuardedMemory
{
public:
    explicit GuardedMemory(std::size_t bytes)
        : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))), size_((bytes + page_ - 1) / page_ * page_)
    {
        void* const all = mmap(nullptr, size_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (all == MAP_FAILED) {
            throw std::runtime_error("mmap");
        }
        begin_ = static_cast<char*>(all) + page_;
        if (mprotect(begin_, size_, PROT_READ | PROT_WRITE) != 0) {
            throw std::runtime_error("mprotect");
        }
    }
    ~GuardedMemory() { munmap(begin_ - page_, size_ + 2 * page_); }
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
