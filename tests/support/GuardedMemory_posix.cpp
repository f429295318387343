#include "support/GuardedMemory.h"

#include <stdexcept>

#include <sys/mman.h>
#include <unistd.h>

GuardedMemory::GuardedMemory(std::size_t bytes)
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

GuardedMemory::~GuardedMemory()
{
    munmap(begin_ - page_, size_ + 2 * page_);
}
